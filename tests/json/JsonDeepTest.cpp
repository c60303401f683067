// Nothing recurses with the depth of a tree: a million levels on a small stack.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "json/JsonMsgPack.h"
#include "json/JsonParser.h"
#include "json/JsonWriter.h"
#include "tests/json/JsonSupport.h"
#include "tests/support/SmallStack.h"

using namespace Tovrin::JSON;

namespace {

constexpr std::size_t kLevels = 1'000'000;

std::string Repeat(std::string_view text, std::size_t count) {
  std::string result;
  result.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

// Every operation on a tree that was read from that text.
void TryEverything(const std::string& text) {
  const Node root(Parse(text));
  ASSERT_TRUE(root);
  const Node copy(root->Clone());
  EXPECT_TRUE(*root == *copy);
  EXPECT_EQ(Compact(*copy), text);

  std::string pretty;
  root->ToPrettyText(pretty, "", "", 0);  // an indent would make it grow with the square
  const Node fromPretty(Parse(pretty));
  ASSERT_TRUE(fromPretty);
  EXPECT_TRUE(*fromPretty == *root);

  std::string bytes;
  EXPECT_TRUE(ToMsgPack(*root, bytes));
  const Node fromBytes(ParseMsgPack(bytes));
  ASSERT_TRUE(fromBytes);
  EXPECT_TRUE(*fromBytes == *root);
}

TEST(JsonDepth, ArraysOfAnyDepth) {
  OnASmallStack([] { TryEverything(Repeat("[", kLevels) + Repeat("]", kLevels)); });
}

TEST(JsonDepth, ObjectsOfAnyDepth) {
  OnASmallStack([] { TryEverything(Repeat("{\"a\":", kLevels) + "1" + Repeat("}", kLevels)); });
}

TEST(JsonDepth, ArraysThatAreCutOffFail) {
  OnASmallStack([] {
    JsonParseContext context;
    EXPECT_EQ(Parse(Repeat("[", kLevels), &context), nullptr);
    EXPECT_EQ(context.ErrorMessage, "illegal array");
    EXPECT_EQ(context.Position, kLevels);
  });
}

TEST(JsonDepth, EveryObjectAddsItsWordsToAFailure) {
  OnASmallStack([] {
    JsonParseContext context;
    EXPECT_EQ(Parse(Repeat("{\"a\":", kLevels), &context), nullptr);
    EXPECT_EQ(context.ErrorMessage,
              "unexpected end of input" + Repeat(" while parsing a value", kLevels));
  });
}

TEST(JsonDepth, MsgPackOfAnyDepthMayBeCutOff) {
  OnASmallStack([] {
    JsonParseContext context;
    EXPECT_EQ(ParseMsgPack(std::string(kLevels, '\x91'), &context), nullptr);
    EXPECT_EQ(context.ErrorMessage, "unexpected end of input");
    EXPECT_EQ(ParseMsgPack(Repeat("\x81\xA1z", kLevels), &context), nullptr);
    EXPECT_EQ(context.ErrorMessage, "unexpected end of input");
    EXPECT_EQ(context.Position, 3 * kLevels);
  });
}

TEST(JsonDepth, CompiledObjectsOfAnyDepth) {
  OnASmallStack([] {
    JsonCompiledSchema schema;
    schema.AddKey("a", KeyCompiledObject | KeyNumber, &schema);
    const std::string text = Repeat("{\"a\":", kLevels) + "{}" + Repeat("}", kLevels);
    const Node root(Parse(text, nullptr, &schema));
    ASSERT_TRUE(root);
    EXPECT_EQ(root->GetType(), JsonValue::TypeCompiledObject);
    const Node copy(root->Clone());
    EXPECT_TRUE(*root == *copy);
    EXPECT_EQ(Compact(*copy), text);

    std::string bytes;
    EXPECT_TRUE(ToMsgPack(*root, bytes));
    const Node fromBytes(ParseMsgPack(bytes, nullptr, &schema));
    ASSERT_TRUE(fromBytes);
    EXPECT_TRUE(*fromBytes == *root);

    JsonParseContext context;
    EXPECT_EQ(Parse(text.substr(0, text.size() / 2), &context, &schema), nullptr);
    EXPECT_TRUE(context.ErrorMessage.starts_with("illegal compiled object while parsing value"));
  });
}

}  // namespace
