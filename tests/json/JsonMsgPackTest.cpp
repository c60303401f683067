#include "json/JsonMsgPack.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "tests/json/JsonSupport.h"
#include "tests/support/TsvRows.h"

using namespace Tovrin::JSON;
using namespace std::string_literals;

namespace {

std::string Packed(const JsonValue& value) {
  std::string bytes = "cleared";
  EXPECT_TRUE(ToMsgPack(value, bytes));
  return bytes;
}

TEST(JsonMsgPackWriter, WritesTheShortestForm) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    JsonValue* value;
    const char* hex;
  } rows[] = {
      {new JsonNull, "c0"},
      {new JsonFalse, "c2"},
      {new JsonTrue, "c3"},
      {new JsonInteger(0), "00"},
      {new JsonInteger(127), "7f"},
      {new JsonInteger(128), "cc80"},
      {new JsonInteger(255), "ccff"},
      {new JsonInteger(256), "cd0100"},
      {new JsonInteger(65535), "cdffff"},
      {new JsonInteger(65536), "ce00010000"},
      {new JsonInteger(4294967295), "ceffffffff"},
      {new JsonInteger(4294967296), "cf0000000100000000"},
      {new JsonInteger(INT64_MAX), "cf7fffffffffffffff"},
      {new JsonInteger(JsonInteger::Unsigned{}, 9223372036854775808U), "cf8000000000000000"},
      {new JsonInteger(-1), "ff"},
      {new JsonInteger(-32), "e0"},
      {new JsonInteger(-33), "d0df"},
      {new JsonInteger(-128), "d080"},
      {new JsonInteger(-129), "d1ff7f"},
      {new JsonInteger(-32768), "d18000"},
      {new JsonInteger(-32769), "d2ffff7fff"},
      {new JsonInteger(-2147483648LL), "d280000000"},
      {new JsonInteger(-2147483649LL), "d3ffffffff7fffffff"},
      {new JsonInteger(INT64_MIN), "d38000000000000000"},
      {new JsonReal(0.5), "ca3f000000"},
      {new JsonReal(0.1), "cb3fb999999999999a"},
      {new JsonReal(-0.0), "ca80000000"},
      {new JsonReal(infinity), "ca7f800000"},
      {new JsonReal(-infinity), "caff800000"},
      {new JsonReal(1e300), "cb7e37e43c8800759c"},
      {new JsonReal(std::numeric_limits<double>::quiet_NaN()), "cb7ff8000000000000"},
      {new JsonReal("1.50", 3), "ca3fc00000"},
      {new JsonString(""), "a0"},
      {new JsonString("abc"), "a3616263"},
      {new JsonArray, "90"},
      {new JsonObject, "80"},
      {new JsonCompiledObject(nullptr), "80"},
      {new JsonArray({nullptr, nullptr}), "92c0c0"},
  };
  for (const auto& row : rows) {
    const Node value(row.value);
    EXPECT_EQ(Packed(*value), FromHex(row.hex)) << Compact(*value);
  }
}

TEST(JsonMsgPackWriter, PicksTheHeadByLength) {
  const struct {
    std::size_t size;
    const char *text, *array, *map;
  } rows[] = {{15, "af", "9f", "8f"},
              {16, "b0", "dc0010", "de0010"},
              {31, "bf", "dc001f", "de001f"},
              {32, "d920", "dc0020", "de0020"},
              {255, "d9ff", "dc00ff", "de00ff"},
              {256, "da0100", "dc0100", "de0100"},
              {65535, "daffff", "dcffff", "deffff"},
              {65536, "db00010000", "dd00010000", "df00010000"}};
  for (const auto& row : rows) {
    const Node text(new JsonString(std::string(row.size, 't')));
    EXPECT_EQ(Packed(*text), FromHex(row.text) + std::string(row.size, 't'));
    const CUsePtr<JsonArray> array(new JsonArray);
    for (std::size_t i = 0; i < row.size; ++i) array->AppendBool(true);
    EXPECT_EQ(Packed(*array), FromHex(row.array) + std::string(row.size, '\xC3'));
    const CUsePtr<JsonObject> map(new JsonObject);
    for (std::size_t i = 0; i < row.size; ++i) map->SetBool(std::to_string(i), true);
    const std::string bytes = Packed(*map);
    EXPECT_TRUE(bytes.starts_with(FromHex(row.map)));
    for (const JsonValue* value :
         std::initializer_list<const JsonValue*>{text.Get(), array.Get(), map.Get()}) {
      const Node back(ParseMsgPack(Packed(*value)));
      ASSERT_TRUE(back);
      EXPECT_TRUE(*back == *value);
    }
  }
}

TEST(JsonMsgPackWriter, DeliversOnceAndInOrder) {
  std::string target = "head";
  {
    JsonMsgPackWriter writer(target);
    for (int i = 0; i < 20; ++i) writer.WriteString(std::string(700, static_cast<char>('a' + i)));
    EXPECT_EQ(target, "head");
    writer.Flush();
    writer.WriteNull();
  }
  std::string expected = "head";
  for (int i = 0; i < 20; ++i) {
    expected += FromHex("da02bc") + std::string(700, static_cast<char>('a' + i));
  }
  EXPECT_EQ(target, expected + '\xC0');
}

TEST(JsonMsgPackWriter, DeliversNothingOnceALengthDoesNotFit) {
  std::string target;
  {
    JsonMsgPackWriter writer(target);
    writer.WriteNull();
    EXPECT_TRUE(writer.BeginArray(4294967295));
    EXPECT_FALSE(writer.BeginArray(4294967296));
    EXPECT_FALSE(writer.Ok());
    writer.WriteNull();
  }
  EXPECT_EQ(target, "");
}

TEST(JsonMsgPackWriter, WritesObjectsOfBothKinds) {
  const Node object(Parse(R"({"a":1,"b":2})"));
  JsonTestPeer::ForgetFirstValue(*ToObject(object.Get()));
  EXPECT_EQ(Packed(*object), FromHex("82a161c0a16202"));

  JsonCompiledSchema schema;
  for (const char* key : {"a", "b", "c"}) schema.AddKey(key, 0);
  const Node compiled(Parse(R"({"c":{"x":[]},"a":1})", nullptr, &schema));
  JsonCompiledObject& places = *ToCompiledObject(compiled.Get());
  EXPECT_EQ(Packed(*compiled), FromHex("82a16101a16381a17890"));
  // Whatever the count claims, the head is true.
  JsonTestPeer::SetCount(places, 4);
  EXPECT_EQ(Packed(*compiled), FromHex("84a16101a16381a17890a0c0a0c0"));
  JsonTestPeer::SetCount(places, 1);
  EXPECT_EQ(Packed(*compiled), FromHex("81a16101"));
  JsonTestPeer::DropSchema(places);
  EXPECT_EQ(Packed(*compiled), FromHex("80"));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they need more address space
TEST(JsonMsgPackWriterDeathTest, EndsTheProcessWhenMemoryIsOut) {
  const auto write = [] {
    const std::string text(64 << 20, 'x');
    std::string target;
    JsonMsgPackWriter writer(target);
    const rlimit limit{1 << 20, 1 << 20};  // less than is in use
    setrlimit(RLIMIT_AS, &limit);
    writer.WriteString(text);
  };
  EXPECT_EXIT(write(), testing::ExitedWithCode(42), "malloc \\(67109864\\)");
}
#endif

// --- Reading ---

struct ReadRow {
  std::string hex;
  std::string text;  // compact form, or the message
  std::uint64_t position;
};

void ExpectReads(const std::vector<ReadRow>& rows, const JsonCompiledSchema* schema = nullptr,
                 JsonParseContext context = {}) {
  for (const ReadRow& row : rows) {
    SCOPED_TRACE(row.hex);
    const Node root(ParseMsgPack(FromHex(row.hex), &context, schema));
    EXPECT_EQ(root ? Compact(*root) : context.ErrorMessage, row.text);
    EXPECT_EQ(context.Position, row.position);
    EXPECT_EQ(context.ParseSucceeded, static_cast<bool>(root));
  }
}

TEST(JsonMsgPackReader, ReadsEveryForm) {
  ExpectReads({
      {"00", "0", 1},
      {"7f", "127", 1},
      {"e0", "-32", 1},
      {"ff", "-1", 1},
      {"cc05", "5", 2},
      {"cd0005", "5", 3},
      {"ce00000005", "5", 5},
      {"cf0000000000000005", "5", 9},
      {"cfffffffffffffffff", "18446744073709551615", 9},
      {"d080", "-128", 2},
      {"d18000", "-32768", 3},
      {"d280000000", "-2147483648", 5},
      {"d38000000000000000", "-9223372036854775808", 9},
      {"d30000000000000005", "5", 9},
      {"ca3f000000", "0.5", 5},
      {"cb3fb999999999999a", "0.1", 9},
      {"c0", "null", 1},
      {"c2", "false", 1},
      {"c3", "true", 1},
      {"a0", "\"\"", 1},
      {"d90161", "\"a\"", 3},
      {"da000161", "\"a\"", 4},
      {"db0000000161", "\"a\"", 6},
      {"90", "[]", 1},
      {"dc000101", "[1]", 4},
      {"dd0000000101", "[1]", 6},
      {"80", "{}", 1},
      {"de0001a16101", R"({"a":1})", 6},
      {"df00000001d9016101", R"({"a":1})", 9},
      {"81da00016101", R"({"a":1})", 6},
      {"81db000000016101", R"({"a":1})", 8},
      {"82a16101a16102", R"({"a":2})", 7},
      {"01090a0d20", "1", 5},
  });
}

TEST(JsonMsgPackReader, RefusesWithTheTextAndPlace) {
  ExpectReads({
      {"", "empty input", 0},
      {"c1", "unsupported MsgPack type code", 0},
      {"91c1", "unsupported MsgPack type code", 1},
      {"91", "unexpected end of input", 1},
      {"9201", "unexpected end of input", 2},
      {"81", "string expected", 1},
      {"82a16101", "string expected", 4},
      {"8101", "string expected", 1},
      {"81a1", "unexpected end of input", 2},
      {"81d9", "unexpected end of input", 2},
      {"81d903aaaa", "unexpected end of input", 5},
      {"81a161", "unexpected end of input", 3},
      {"a3aaaa", "unexpected end of input", 3},
      {"ddffffffff01", "unexpected end of input", 6},
      {"dfffffffffa16101", "string expected", 8},
      {"dbffffffff61", "unexpected end of input", 6},
      {"0100", "illegal trailing characters after value", 1},
      {"012000", "illegal trailing characters after value", 2},
  });
  for (const char* code :
       {"c1", "c4", "c5", "c6", "c7", "c8", "c9", "d4", "d5", "d6", "d7", "d8"}) {
    ExpectReads({{code, "unsupported MsgPack type code", 0},
                 {"9200"s + code + "00000000", "unsupported MsgPack type code", 2}});
  }
}

// Every byte alone, and every cut of whole values, from a block that ends where
// the input ends.
TEST(JsonMsgPackReader, NeverReadsBehindTheEnd) {
  for (const char* hex :
       {"cc05", "cd0005", "ce00000005", "cf0000000000000005", "ca3f000000", "cb3fb999999999999a",
        "d080", "d18000", "d280000000", "d38000000000000000", "a3616263", "d903616263",
        "da0003616263", "db00000003616263", "dc000101", "dd0000000101", "de0001a16101",
        "df00000001a16101"}) {
    const std::string bytes = FromHex(hex);
    for (std::size_t size = 1; size < bytes.size(); ++size) {
      std::string cut(bytes, 0, size);
      cut.shrink_to_fit();
      JsonParseContext context;
      EXPECT_EQ(ParseMsgPack(cut, &context), nullptr);
      EXPECT_EQ(context.Position, size);
    }
  }
  for (int code = 0; code < 256; ++code) {
    JsonParseContext context;
    const Node root(ParseMsgPack(std::string(1, static_cast<char>(code)), &context));
    const bool isWhole = code <= 0x80 || code == 0x90 || code == 0xA0 || code == 0xC0 ||
                         code == 0xC2 || code == 0xC3 || code >= 0xE0;
    EXPECT_EQ(static_cast<bool>(root), isWhole) << code;
  }
}

// Contract: no error for texts, and keys drop their member.
TEST(JsonMsgPackReader, InvalidTextsBecomeEmpty) {
  ExpectReads({{"92a1ffa161", R"(["","a"])", 5}, {"82a1ff01a16102", R"({"a":2})", 7}});
  JsonParseContext trusting;
  trusting.AssumeValidUtf8 = true;
  ExpectReads({{"91a1ff", "[\"\xFF\"]", 3}, {"81a1ff01", "{}", 4}}, nullptr, trusting);
  JsonParseContext rejecting;
  rejecting.RejectDuplicateKeys = true;
  ExpectReads({{"81a1ff01", "duplicate key", 4}, {"82a16101a16102", R"({"a":2})", 7}}, nullptr,
              rejecting);
}

TEST(JsonMsgPackReader, ChecksTypesAgainstTheFlags) {
  const char* values[] = {"a0", "01", "ca00000000", "c2", "c3", "c0", "90", "80"};
  const unsigned masks[] = {0x1, 0x2, 0x2, 0x4, 0x4, 0x8, 0xF0, 0x100};
  for (unsigned flags = 0; flags <= 0x7FF; flags += flags < 0x20 ? 1 : 0x31) {
    JsonCompiledSchema schema;
    schema.Keys = {"a"};
    schema.KeyIndex.Add("a");
    schema.Flags = {static_cast<std::uint16_t>(flags)};
    schema.Children = {nullptr};
    for (std::size_t i = 0; i < std::size(values); ++i) {
      JsonParseContext context;
      const Node root(ParseMsgPack(FromHex("81a161"s + values[i]), &context, &schema));
      EXPECT_EQ(static_cast<bool>(root), flags == 0 || (flags & masks[i])) << flags << values[i];
      if (root) continue;
      EXPECT_EQ(context.ErrorMessage, "value is not of expected type");
      EXPECT_EQ(context.Position, 3U);
    }
  }
}

TEST(JsonMsgPackReader, ReadsMapsBySchema) {
  JsonCompiledSchema child, schema;
  child.AddKey("x", KeyNumber);
  schema.AddKey("c", KeyCompiledObject, &child);
  schema.AddKey("p", KeyObject, &child);
  schema.AddKey("l", KeyArray, &child);
  schema.AddKey("r", KeyRequired);
  ExpectReads({{"81a16381a17805", R"({"c":{"x":5}})", 7},
               // Contract: read with the child's schema, and refused then.
               {"81a17081a17805", "value is not of expected type", 3},
               {"81a16c9181a17805", R"({"l":[{"x":5}]})", 8},
               {"81a16c9105", R"({"l":[5]})", 5},
               // Contract: only required means that nothing fits.
               {"81a17205", "value is not of expected type", 3},
               {"82a17a9105a16381a17805", R"({"c":{"x":5}})", 11},
               {"82a16380a16381a17805", R"({"c":{"x":5}})", 10}},
              &schema);
  JsonParseContext rejecting;
  rejecting.RejectDuplicateKeys = true;
  ExpectReads({{"81a17a05", "{}", 4}}, &schema, rejecting);
}

TEST(JsonMsgPackReader, TypedFormsAnswerTheirTypeAlone) {
  JsonParseContext context;
  EXPECT_EQ(ParseMsgPackArray("\x80", &context), nullptr);
  EXPECT_EQ(context.ErrorMessage, "");
  EXPECT_EQ(ParseMsgPackObject("\x90"), nullptr);
  EXPECT_EQ(ParseMsgPackCompiledObject("\x80"), nullptr);
  JsonCompiledSchema schema;
  EXPECT_TRUE(CUsePtr(ParseMsgPackArray("\x90")));
  EXPECT_TRUE(CUsePtr(ParseMsgPackObject("\x80")));
  EXPECT_TRUE(CUsePtr(ParseMsgPackCompiledObject("\x80", nullptr, &schema)));
}

TEST(JsonMsgPackReader, ConvertingLosesTheDigits) {
  const Node root(Parse("[1.50]"));
  const Node back(ParseMsgPack(Packed(*root)));
  EXPECT_EQ(Compact(*back), "[1.5]");
  EXPECT_EQ(Compact(*root), "[1.5]");
}

}  // namespace
