// Whole documents: round trips of generated trees, the public test suites,
// threads.

#include <gtest/gtest.h>

#include <map>
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

TEST(JsonTrees, TwoThreadsAskATextForItsItems) {
  for (int i = 0; i < 300; ++i) {
    const Node root(Parse("[1,2.50,-3]"));
    const JsonArray* array = ToArray(root.Get());
    const JsonValue* seen[2] = {};
    std::thread other([&] { seen[0] = array->ChildAt(1); });
    seen[1] = array->ChildAt(1);
    other.join();
    EXPECT_EQ(seen[0], seen[1]);
    EXPECT_EQ(array->Size(), 3U);
    EXPECT_EQ(Compact(*root), "[1,2.50,-3]");
  }
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

// What becomes of the cases that the suite leaves open: the text printed, or the message.
const std::map<std::string, std::string> kOpenCases = {
    // What lies out of a double's range is refused, too small included.
    {"i_number_double_huge_neg_exp.json", "real number out of double range"},
    {"i_number_huge_exp.json", "real number out of double range"},
    {"i_number_neg_int_huge_exp.json", "real number out of double range"},
    {"i_number_real_neg_overflow.json", "real number out of double range"},
    {"i_number_real_pos_overflow.json", "real number out of double range"},
    {"i_number_real_underflow.json", "real number out of double range"},
    // Halves of pairs without a partner stand as they are, from escapes and as bytes.
    {"i_string_1st_surrogate_but_2nd_missing.json", "[\"\xED\xAB\x9A\"]"},
    {"i_string_1st_valid_surrogate_2nd_invalid.json", "[\"\xED\xA2\x88\xE1\x88\xB4\"]"},
    {"i_string_UTF8_surrogate_U+D800.json", "[\"\xED\xA0\x80\"]"},
    {"i_string_incomplete_surrogate_and_escape_valid.json", "[\"\xED\xA0\x80\\n\"]"},
    {"i_string_invalid_lonely_surrogate.json", "[\"\xED\xA0\x80\"]"},
    {"i_string_inverted_surrogates_U+1D11E.json", "[\"\xED\xB4\x9E\xED\xA0\xB4\"]"},
    {"string_1_escaped_invalid_codepoint.json", "[\"\xED\xA0\x80\"]"},
    {"string_1_invalid_codepoint.json", "[\"\xED\xA0\x80\"]"},
    {"string_2_escaped_invalid_codepoints.json", "[\"\xED\xA0\x80\xED\xA0\x80\"]"},
    {"string_3_escaped_invalid_codepoints.json", "[\"\xED\xA0\x80\xED\xA0\x80\xED\xA0\x80\"]"},
    {"string_3_invalid_codepoints.json", "[\"\xED\xA0\x80\xED\xA0\x80\xED\xA0\x80\"]"},
    // Of UTF-8 the structure counts alone, with up to three bytes behind the first.
    {"i_string_not_in_unicode_range.json", "[\"\xF4\xBF\xBF\xBF\"]"},
    {"i_string_overlong_sequence_2_bytes.json", "[\"\xC0\xAF\"]"},
    {"i_string_overlong_sequence_6_bytes.json", "illegal UTF8 character found at position 0"},
    {"i_string_invalid_utf-8.json", "illegal UTF8 character found at position 0"},
    {"i_string_iso_latin_1.json", "illegal UTF8 character found at position 0"},
    {"i_string_lone_utf8_continuation_byte.json", "illegal UTF8 character found at position 0"},
    {"i_string_truncated-utf-8.json", "illegal UTF8 character found at position 0"},
    {"i_string_utf16BE_no_BOM.json", "not a JSON value"},
    {"i_structure_500_nested_arrays.json", std::string(60, '[')},  // no depth is too deep
    {"i_structure_UTF-8_BOM_empty_object.json", "{}"},
    // Numbers keep their text, but for the one whose fraction is longer than a double tells.
    {"number_-9223372036854775808.json", "[-9223372036854775808]"},
    {"number_1.000000000000000005.json", "[1.0]"},
    {"number_1000000000000000.json", "[1000000000000000]"},
    {"number_1e6.json", "[1E6]"},
    {"number_9223372036854775807.json", "[9223372036854775807]"},
    // Keys are bytes, and the last of equal ones counts.
    {"object_key_nfd_nfc.json", "{\"e\xCC\x81\":\"NFD\",\"\xC3\xA9\":\"NFC\"}"},
    {"object_same_key_same_value.json", R"({"a":1})"},
    {"object_same_key_unclear_values.json", R"({"a":0})"},
    {"string_with_escaped_NULL.json", R"(["A\u0000B"])"},
};

TEST(JsonSuites, TheTextParserTakesAndRefusesAsTheSuiteSays) {
  const auto index = SharedPath("testdata/json/index.tsv");
  if (!index) GTEST_SKIP() << "no shared data";
  for (const TsvRow& row : ReadTsv(*index)) {
    SCOPED_TRACE(row["file"]);
    const std::string text = ReadWholeFile(index->parent_path() / "files" / row["file"]);
    JsonParseContext context;
    const Node root(Parse(text, &context));
    const std::string& says = row["suite_says"];
    if (says == "either" || says == "transform") {
      const auto outcome = kOpenCases.find(row["file"]);
      ASSERT_NE(outcome, kOpenCases.end());
      EXPECT_EQ(root ? Compact(*root).substr(0, 60) : context.ErrorMessage, outcome->second);
    }
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
