// Whole documents: round trips of generated trees, the public test suites,
// threads.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>
#include <vector>

#include "json/JsonMsgPack.h"
#include "json/JsonParser.h"
#include "tests/json/JsonSupport.h"
#include "tests/support/SharedData.h"
#include "tests/support/TsvRows.h"

using namespace Tovrin::JSON;

namespace {

// Makes trees of all types. No reals but those that MsgPack keeps, and no
// integers whose text has a leading zero.
class TreeMaker {
public:
  explicit TreeMaker(unsigned seed) : fRandom(seed) {}

  JsonValue* Make(int depth) {
    switch (fRandom() % (depth > 0 ? 9 : 7)) {
      case 0:
        return new JsonNull;
      case 1:
        return NewJsonBool(fRandom() % 2 == 0);
      case 2:
        return new JsonInteger(static_cast<std::int64_t>(fRandom()) >> fRandom() % 60);
      case 3:
        return new JsonInteger(-static_cast<std::int64_t>(fRandom() >> (1 + fRandom() % 60)));
      case 4:
        return new JsonInteger(JsonInteger::Unsigned{}, fRandom() | 1ULL << 63);
      case 5:
        return new JsonReal(static_cast<double>(fRandom() % 100000) / 64, 17);
      case 6:
        return new JsonString(Text());
      case 7: {
        auto* array = new JsonArray;
        for (auto count = fRandom() % 20; count > 0; --count) array->Append(Make(depth - 1));
        return array;
      }
      default: {
        auto* object = new JsonObject(true);
        for (auto count = fRandom() % 90; count > 0; --count) object->Set(Text(), Make(depth - 2));
        return object;
      }
    }
  }

private:
  std::string Text() {
    static const char* const kPieces[] = {
        "a",          "\"", "\\",  "\n", "\x01", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
        "plain text", "/",  "\x7F"};
    std::string text;
    for (auto count = fRandom() % 8; count > 0; --count) {
      text += kPieces[fRandom() % std::size(kPieces)];
    }
    return text;
  }

  std::mt19937_64 fRandom;
};

TEST(JsonTrees, ComeBackFromTextAndMsgPack) {
  for (unsigned seed = 1; seed <= 150; ++seed) {
    SCOPED_TRACE(seed);
    const Node tree(TreeMaker(seed).Make(6));
    const std::string text = Compact(*tree);
    JsonParseContext context;
    context.KeepKeyOrder = true;
    const Node fromText(Parse(text, &context));
    ASSERT_TRUE(fromText) << context.ErrorMessage << text;
    EXPECT_TRUE(*fromText == *tree);
    EXPECT_EQ(Compact(*Node(fromText->Clone())), Compact(*fromText));

    std::string bytes, again;
    ASSERT_TRUE(ToMsgPack(*fromText, bytes));
    const Node fromBytes(ParseMsgPack(bytes, &context));
    ASSERT_TRUE(fromBytes) << context.ErrorMessage;
    EXPECT_TRUE(*fromBytes == *tree);
    ASSERT_TRUE(ToMsgPack(*fromBytes, again));
    EXPECT_EQ(again, bytes);

    std::string pretty;
    WriteText(*tree, pretty, " ");
    EXPECT_EQ(Compact(*Node(Parse(pretty, &context))), text);
  }
}

// Every cut of a document fails in order, and leaks nothing.
TEST(JsonTrees, AnyCutOfATextFails) {
  const Node tree(TreeMaker(5).Make(5));
  const std::string text = "[" + Compact(*tree) + R"(,{"k":["\u0041",1.5,{"x":{}}]}])";
  for (std::size_t size = 0; size < text.size(); size += 1 + size / 300) {
    EXPECT_EQ(Parse(text.substr(0, size)), nullptr) << size;
  }
  std::string bytes;
  ASSERT_TRUE(ToMsgPack(*Node(Parse(text)), bytes));
  for (std::size_t size = 0; size < bytes.size(); size += 1 + size / 300) {
    EXPECT_EQ(ParseMsgPack(bytes.substr(0, size)), nullptr) << size;
  }
}

TEST(JsonTrees, TwoThreadsShareNodes) {
  const Node shared(Parse(R"({"list":[1,"two",{"three":[true,null]}]})"));
  const auto work = [&] {
    for (int i = 0; i < 300; ++i) {
      const Node own(Parse(R"([1,[2,{"a":"bcdefghijklmnopqrstuvw"}],"x"])"));
      JsonArray* array = ToArray(own.Get());
      for (int k = 0; k < 3; ++k) array->AppendShared(shared->FindChild("list"));
      const Node kept(own->FindPath("3/2"));
      EXPECT_EQ(Compact(*kept), R"({"three":[true,null]})");
      EXPECT_TRUE(*Node(own->Clone()) == *own);
    }
  };
  std::thread first(work), second(work);
  first.join();
  second.join();
  EXPECT_EQ(shared->FindChild("list")->UseCount(), 1);
}

// The last reference of one parse's nodes goes on two threads at once.
TEST(JsonTrees, TwoThreadsFreeTheHalvesOfOneParse) {
  for (int i = 0; i < 200; ++i) {
    std::string text = "[";
    for (int k = 0; k < 50; ++k) text += R"(["some text that is longer",{"a":1.25}],)";
    Node root(Parse(text + "0]"));
    std::vector<Node> first, second;
    for (int k = 0; k < 50; ++k) {
      (k % 2 ? first : second)
          .emplace_back(ToArray(root.Get())->Child(static_cast<std::size_t>(k)));
    }
    root.Reset();
    std::thread other([&] { first.clear(); });
    second.clear();
    other.join();
  }
}

// --- Public suites ---

TEST(JsonSuites, TheTextParserTakesAndRefusesAsTheSuiteSays) {
  const auto index = SharedPath("testdata/json/index.tsv");
  if (!index) GTEST_SKIP() << "no shared data";
  for (const TsvRow& row : ReadTsv(*index)) {
    SCOPED_TRACE(row["file"]);
    const std::string text = ReadWholeFile(index->parent_path() / "files" / row["file"]);
    JsonParseContext context;
    const Node root(Parse(text, &context));
    const std::string& says = row["suite_says"];
    if (says == "accept") {
      EXPECT_TRUE(root) << context.ErrorMessage;
    }
    if (says == "reject") {
      EXPECT_FALSE(root);
    }
    EXPECT_EQ(context.ErrorMessage.empty(), static_cast<bool>(root));
    if (!root) continue;
    // What was read can be written and is the same again.
    const Node again(Parse(Compact(*root)));
    ASSERT_TRUE(again);
    EXPECT_TRUE(*again == *root);
  }
}

TEST(JsonSuites, MsgPackValuesReadAsTheSuiteSays) {
  const auto values = SharedPath("testdata/msgpack/values.tsv");
  if (!values) GTEST_SKIP() << "no shared data";
  for (const TsvRow& row : ReadTsv(*values)) {
    SCOPED_TRACE(row["group"] + " " + row["value_json"] + " " + row["hex"]);
    JsonParseContext context;
    const std::string bytes = FromHex(row["hex"]);
    const Node root(ParseMsgPack(bytes, &context));
    const std::string& type = row["type"];
    if (type == "binary" || type == "ext" || type == "timestamp") {
      EXPECT_FALSE(root);
      EXPECT_EQ(context.ErrorMessage, "unsupported MsgPack type code");
      continue;
    }
    ASSERT_TRUE(root) << context.ErrorMessage;
    const Node expected(Parse(row["value_json"]));
    ASSERT_TRUE(expected);
    double left = 0, right = 0;
    if (root->GetType() != expected->GetType() && root->AsDouble(left) &&
        expected->AsDouble(right)) {
      EXPECT_EQ(left, right);  // a whole number in a real form
    } else {
      EXPECT_TRUE(*root == *expected) << Compact(*root);
    }
  }
}

TEST(JsonSuites, MsgPackStreamsReadValueByValue) {
  const auto streams = SharedPath("testdata/msgpack/streams.tsv");
  if (!streams) GTEST_SKIP() << "no shared data";
  for (const TsvRow& row : ReadTsv(*streams)) {
    std::string bytes = FromHex(row["hex_of_concatenated_values"]);
    const Node expected(Parse(row["value_list_json"]));
    ASSERT_TRUE(expected);
    // The values become one array by a head of its own.
    const std::size_t count = ToArray(expected.Get())->Size();
    bytes.insert(0, {'\xDC', static_cast<char>(count >> 8), static_cast<char>(count & 0xFF)});
    JsonParseContext context;
    const Node root(ParseMsgPack(bytes, &context));
    ASSERT_TRUE(root) << context.ErrorMessage;
    ASSERT_EQ(ToArray(root.Get())->Size(), count);
    for (std::size_t i = 0; i < count; ++i) {
      const JsonValue* value = ToArray(root.Get())->ChildAt(i);
      const JsonValue* wanted = ToArray(expected.Get())->ChildAt(i);
      double left = 0, right = 0;
      if (value->GetType() != wanted->GetType() && value->AsDouble(left) &&
          wanted->AsDouble(right)) {
        EXPECT_EQ(left, right);
      } else {
        EXPECT_TRUE(*value == *wanted) << i;
      }
    }
  }
}

}  // namespace
