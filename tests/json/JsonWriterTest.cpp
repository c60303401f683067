#include "json/JsonWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <locale>
#include <string>

#include "json/JsonParser.h"
#include "tests/json/JsonSupport.h"

using namespace Tovrin::JSON;

namespace {

std::string IntegerText(std::uint64_t value) {
  return Compact(*Node(new JsonInteger(JsonInteger::Unsigned{}, value)));
}
std::string RealText(double value, std::int32_t precision = 0) {
  return Compact(*Node(new JsonReal(value, precision)));
}
std::string Pretty(const JsonValue& value, const char* indent) {
  std::string text = "cleared";
  WriteText(value, text, indent);
  return text;
}

TEST(JsonWriter, WritesIntegers) {
  EXPECT_EQ(IntegerText(0), "0");
  EXPECT_EQ(IntegerText(UINT64_MAX), "18446744073709551615");
  EXPECT_EQ(IntegerText(INT64_MAX), "9223372036854775807");
  EXPECT_EQ(Compact(*Node(new JsonInteger(INT64_MIN))), "-9223372036854775808");
  EXPECT_EQ(Compact(*Node(new JsonInteger(-1))), "-1");
}

// Contract: the digits are counted by logarithm, which rounds up just below the
// larger powers.
TEST(JsonWriter, JustBelowAPowerOfTenALeadingZeroAppears) {
  std::uint64_t power = 1;
  for (int k = 1; k <= 19; ++k) {
    power *= 10;
    EXPECT_EQ(IntegerText(power), std::to_string(power));
    EXPECT_EQ(IntegerText(power - 1), (k >= 15 ? "0" : "") + std::to_string(power - 1));
  }
  EXPECT_EQ(Compact(*Node(new JsonInteger(-999999999999999))), "-0999999999999999");
}

TEST(JsonWriter, WritesRealsWithoutPrecision) {
  const struct {
    double value;
    const char* text;
  } rows[] = {{3.0, "3.0"},
              {-2.0, "-2.0"},
              {0.1, "0.1"},
              {1.5, "1.5"},
              {2.5e-7, "0.0"},
              {-2.5e-7, "-0.0"},
              {1e-10, "0.0"},
              {1e-7, "0.0"},
              {0.1234567, "0.123457"},
              {1e15 + 0.5, "1000000000000000.5"},
              {-0.0, "0.0"},
              {9223372036854775808.0, "9223372036854775808.0"},
              {-9223372036854775808.0, "-9223372036854775808.0"},
              {std::numeric_limits<double>::infinity(), "inf"},
              {-std::numeric_limits<double>::infinity(), "inf"},
              {std::numeric_limits<double>::quiet_NaN(), "nan"},
              {-std::numeric_limits<double>::quiet_NaN(), "nan"}};
  for (const auto& row : rows) EXPECT_EQ(RealText(row.value), row.text);
  EXPECT_EQ(RealText(1e300).size(), 303U);
  EXPECT_TRUE(RealText(1e300).ends_with(".0"));
}

// The oracle is the C library in the classic locale.
TEST(JsonWriter, WritesRealsWithPrecision) {
  for (const double value : {0.1, 1.5, 3.0, 100000.0, 1e22, 1e-5, 123456.789, -2.5e300, 5e-324}) {
    for (const int precision : {1, 2, 3, 5, 6, 7, 15, 16, 17, 20, 40, 767, 2000000000}) {
      char expected[2000];
      std::snprintf(expected, sizeof expected, "%.*g", std::min(precision, 1000), value);
      std::string text = expected;
      if (text.find_first_of(".eE") == std::string::npos) text += ".0";
      EXPECT_EQ(RealText(value, precision), text);
    }
  }
  EXPECT_EQ(RealText(100000, 1), "1e+05");
  EXPECT_EQ(RealText(100000, 7), "100000.0");
  EXPECT_EQ(RealText(0.1, 17), "0.10000000000000001");
  EXPECT_EQ(RealText(1e22, 23), "10000000000000000000000.0");
  EXPECT_EQ(RealText(std::numeric_limits<double>::infinity(), 3), "inf.0");
  EXPECT_EQ(RealText(-std::numeric_limits<double>::infinity(), 3), "-inf.0");
  EXPECT_EQ(RealText(std::numeric_limits<double>::quiet_NaN(), 3), "nan.0");
  EXPECT_EQ(RealText(1e-10, -1), "0.0") << "no precision";
}

TEST(JsonWriter, DoesNotFollowTheLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));
  EXPECT_EQ(RealText(1234567.5), "1234567.5");
  EXPECT_EQ(RealText(1234567.5, 8), "1234567.5");
  EXPECT_EQ(IntegerText(1234567), "1234567");
  std::locale::global(before);
}

TEST(JsonWriter, EscapesWhatMustBeEscaped) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    char hex[16];
    std::snprintf(hex, sizeof hex, "\\u%04X", static_cast<unsigned>(byte));
    std::string expected = byte < 32 ? hex : text;
    switch (byte) {
      case '"':
        expected = "\\\"";
        break;
      case '\\':
        expected = "\\\\";
        break;
      case 8:
        expected = "\\b";
        break;
      case 9:
        expected = "\\t";
        break;
      case 10:
        expected = "\\n";
        break;
      case 12:
        expected = "\\f";
        break;
      case 13:
        expected = "\\r";
        break;
    }
    for (std::size_t around = 0; around < 20; ++around) {
      const std::string plain(around, 'p');
      std::string out = "kept";
      WriteEscaped(plain + text + plain, out);
      EXPECT_EQ(out, "kept" + plain + expected + plain);
    }
  }
}

TEST(JsonWriter, AppendsToWhatIsThere) {
  const Node root(Parse("[1,[2]]"));
  std::string out = "head ";
  root->ToCompactText(out);
  EXPECT_EQ(out, "head [1,[2]]");
  out = "head ";
  root->ToPrettyText(out, " ", "\n", 1);
  EXPECT_EQ(out, "head [\n  1,\n  [\n   2\n  ]\n ]");
  out = "head ";
  Node(new JsonTrue)->ToPrettyText(out, " ", "\n", 3);
  EXPECT_EQ(out, "head true");
  out = "head ";
  root->ToPrettyText(out, " ", "\r\n", -1);
  EXPECT_EQ(out, "head [\r\n1,\r\n[\r\n 2\r\n]\r\n]");
}

TEST(JsonWriter, WritesThePrettyForm) {
  const Node root(Parse(R"({"a":[1,2],"b":{},"c":[],"d":{"e":null}})"));
  EXPECT_EQ(Pretty(*root, "  "),
            "{\n  \"a\": [\n    1,\n    2\n  ],\n  \"b\": "
            "{},\n  \"c\": [],\n  \"d\": {\n    \"e\": "
            "null\n  }\n}");
  EXPECT_EQ(Pretty(*root, "\t").substr(0, 8), "{\n\t\"a\": ");
  EXPECT_EQ(Pretty(*root, ""), R"({"a":[1,2],"b":{},"c":[],"d":{"e":null}})");
  EXPECT_EQ(Pretty(*root, nullptr), Pretty(*root, ""));
  std::string text;
  WriteText(*root, text, std::string());
  EXPECT_EQ(text, Pretty(*root, ""));
  WriteText(*root, text, std::string("  "));
  EXPECT_EQ(text, Pretty(*root, "  "));
}

TEST(JsonWriter, SkipsNullPointers) {
  const Node one(new JsonInteger(1));
  const Node mixed(new JsonArray({nullptr, one.Get(), nullptr, one.Get()}));
  EXPECT_EQ(Compact(*mixed), "[1,1]");
  const Node nulls(new JsonArray({nullptr}));
  EXPECT_EQ(Compact(*nulls), "[]");
  EXPECT_EQ(Pretty(*nulls, " "), "[\n]");

  const Node object(Parse(R"({"a":1,"b":2})"));
  JsonTestPeer::ForgetFirstValue(*ToObject(object.Get()));
  EXPECT_EQ(Compact(*object), R"({"b":2})");
  EXPECT_EQ(Pretty(*object, " "), "{\n \"b\": 2\n}");
}

// Contract: no blank behind the colon of a compiled object.
TEST(JsonWriter, WritesCompiledObjects) {
  JsonCompiledSchema schema;
  for (const char* key : {"a", "b\n", "c"}) schema.AddKey(key, 0);
  const Node root(Parse(R"({"c":[],"b\n":2})", nullptr, &schema));
  EXPECT_EQ(Compact(*root), R"({"b\n":2,"c":[]})");
  EXPECT_EQ(Pretty(*root, "  "), "{\n  \"b\\n\":2,\n  \"c\":[]\n}");
  JsonTestPeer::DropSchema(*ToCompiledObject(root.Get()));
  EXPECT_EQ(Compact(*root), "{}");
  EXPECT_EQ(Pretty(*root, "  "), "{\n}");
}

}  // namespace
