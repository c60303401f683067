#include "json/JsonValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "json/JsonParser.h"
#include "tests/json/JsonSupport.h"

using namespace Tovrin::JSON;
using namespace std::string_literals;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t kMinInt64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMaxInt64 = std::numeric_limits<std::int64_t>::max();

JsonValue* Unsigned(std::uint64_t value) {
  return new JsonInteger(JsonInteger::Unsigned{}, value);
}
JsonValue* Text(const std::string& text) {
  return new JsonString(text);
}
JsonValue* Real(double value) {
  return new JsonReal(value);
}

// --- Counting ---

TEST(JsonValue, IsDestroyedByItsLastRelease) {
  JsonValue* value = new JsonNull;
  EXPECT_EQ(value->UseCount(), 1);
  value->AddRef();
  EXPECT_EQ(value->UseCount(), 2);
  EXPECT_FALSE(value->Release());
  EXPECT_TRUE(value->Release());
}

TEST(JsonValue, LiteralsAreFreshEachTime) {
  const Node a(new JsonTrue), b(new JsonTrue);
  EXPECT_NE(a.Get(), b.Get());
  EXPECT_TRUE(*a == *b);
}

TEST(JsonValue, ANodeMayHaveTwoParents) {
  const Node shared(new JsonString("shared"));
  auto* left = new JsonArray;
  auto* right = new JsonObject;
  left->AppendShared(shared.Get());
  right->SetShared("s", shared.Get());
  EXPECT_EQ(shared->UseCount(), 3);
  left->Release();
  EXPECT_EQ(shared->UseCount(), 2);
  EXPECT_EQ(Compact(*right), R"({"s":"shared"})");
  right->Release();
  EXPECT_EQ(shared->UseCount(), 1);
}

TEST(JsonValue, TypesHaveFixedNumbersAndNames) {
  EXPECT_EQ(kJsonTypeNames[JsonValue::TypeString], "String");
  EXPECT_EQ(kJsonTypeNames[1], "Integer");
  EXPECT_EQ(kJsonTypeNames[2], "Real");
  EXPECT_EQ(kJsonTypeNames[3], "Object");
  EXPECT_EQ(kJsonTypeNames[4], "CompiledObject");
  EXPECT_EQ(kJsonTypeNames[5], "Array");
  EXPECT_EQ(kJsonTypeNames[6], "True");
  EXPECT_EQ(kJsonTypeNames[7], "False");
  EXPECT_EQ(kJsonTypeNames[JsonValue::TypeNull], "Null");
  EXPECT_EQ(Node(NewJsonBool(true))->GetType(), 6U);
  EXPECT_EQ(Node(NewJsonBool(false))->GetType(), 7U);
}

TEST(JsonValue, ObjectCountersSayThatTheyAreOff) {
  testing::internal::CaptureStdout();
  ReportObjectCounters();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "*** Object counters not activated\n");
}

// --- Conversions ---

struct ConversionRow {
  const char* name;
  JsonValue* value;
  int asBool;  // -1: fails
  bool isInt64;
  std::int64_t asInt64;
  bool isDouble;
  double asDouble;
  std::string asString;
};

TEST(JsonValue, ConvertsByTheTable) {
  const ConversionRow rows[] = {
      {"null", new JsonNull, -1, false, 0, false, 0.0, "null"},
      {"true", new JsonTrue, 1, true, 1, true, 1.0, "true"},
      {"false", new JsonFalse, 0, true, 0, true, 0.0, "false"},
      {"array", new JsonArray, -1, false, 0, false, 0.0, "[]"},
      {"object", new JsonObject, -1, false, 0, false, 0.0, "{}"},
      {"compiled", new JsonCompiledObject(nullptr), -1, false, 0, false, 0.0, "{}"},
      {"zero", new JsonInteger(0), 0, true, 0, true, 0.0, "0"},
      {"minus one", new JsonInteger(-1), 1, true, -1, true, -1.0, "-1"},
      {"least", new JsonInteger(kMinInt64), 1, true, kMinInt64, true, -9223372036854775808.0,
       "-9223372036854775808"},
      {"greatest", new JsonInteger(kMaxInt64), 1, true, kMaxInt64, true, 9223372036854775808.0,
       "9223372036854775807"},
      {"2^63", Unsigned(9223372036854775808U), 1, false, 0, true, 9223372036854775808.0,
       "9223372036854775808"},
      {"2^64-1", Unsigned(UINT64_MAX), 1, false, 0, true, 18446744073709551616.0,
       "18446744073709551615"},
      {"unsigned 5", Unsigned(5), 1, true, 5, true, 5.0, "5"},
      {"real", Real(-1.9), 1, true, -1, true, -1.9, "-1.9"},
      {"real zero", Real(0.0), 0, true, 0, true, 0.0, "0.0"},
      {"real 9.3e18", Real(9.3e18), 1, false, 0, true, 9.3e18, "9300000000000000000.0"},
      {"real -2^63", Real(-9223372036854775808.0), 1, true, kMinInt64, true, -9223372036854775808.0,
       "-9223372036854775808.0"},
      // Contract: the double nearest to 2^63-1 is 2^63, and counts as in range.
      {"real 2^63", Real(9223372036854775808.0), 1, true, kMinInt64, true, 9223372036854775808.0,
       "9223372036854775808.0"},
      {"real 1e20", Real(1e20), 1, false, 0, true, 1e20, "100000000000000000000.0"},
      {"real -1e20", Real(-1e20), 1, false, 0, true, -1e20, "-100000000000000000000.0"},
      {"empty string", Text(""), 0, false, 0, false, 0.0, ""},
      {"string of blank and digit", Text(" 5"), 1, false, 0, false, 0.0, " 5"},
      {"string of a sign", Text("-"), 1, false, 0, false, 0.0, "-"},
      {"string -5", Text("-5"), 1, true, -5, true, -5.0, "-5"},
      {"string 1.9", Text("1.9"), 1, true, 1, true, 1.9, "1.9"},
      {"string 1e400", Text("1e400"), 1, false, 0, false, 0.0, "1e400"},
      {"string 0123", Text("0123"), 1, true, 0, true, 0.0, "0123"},
      {"string 12abc", Text("12abc"), 1, true, 12, true, 12.0, "12abc"},
      {"string 2^64-1", Text("18446744073709551615"), 1, false, 0, true, 18446744073709551616.0,
       "18446744073709551615"},
  };
  for (const ConversionRow& row : rows) {
    SCOPED_TRACE(row.name);
    const Node value(row.value);
    bool asBool = true;
    EXPECT_EQ(value->AsBool(asBool), row.asBool >= 0);
    EXPECT_EQ(asBool, row.asBool == 1);
    std::int64_t asInt64 = 77;
    EXPECT_EQ(value->AsInt64(asInt64), row.isInt64);
    EXPECT_EQ(asInt64, row.asInt64);
    double asDouble = 77;
    EXPECT_EQ(value->AsDouble(asDouble), row.isDouble);
    EXPECT_EQ(asDouble, row.asDouble);
    std::string asString = "before";
    EXPECT_TRUE(value->AsString(asString));
    EXPECT_EQ(asString, row.asString);
  }
}

TEST(JsonValue, ANaNHasNoInteger) {
  const Node nan(Real(kNaN));
  std::int64_t asInt64 = 77;
  EXPECT_FALSE(nan->AsInt64(asInt64));
  EXPECT_EQ(asInt64, 0);
  bool asBool = false;
  EXPECT_TRUE(nan->AsBool(asBool));
  EXPECT_TRUE(asBool);
}

// The narrow ones inherit the refusal of what lies above 2^63-1.
TEST(JsonValue, NarrowsWithinTheRangeAlone) {
  const struct {
    std::int64_t number;
    bool isInt, isUInt, isUInt64;
  } rows[] = {{0, true, true, true},
              {-1, true, false, false},
              {2147483647, true, true, true},
              {2147483648, false, true, true},
              {-2147483648LL, true, false, false},
              {-2147483649LL, false, false, false},
              {4294967295, false, true, true},
              {4294967296, false, false, true},
              {kMaxInt64, false, false, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.number);
    const Node value(new JsonInteger(row.number));
    std::int32_t asInt = 7;
    EXPECT_EQ(value->AsInt(asInt), row.isInt);
    EXPECT_EQ(asInt, row.isInt ? row.number : 0);
    std::uint32_t asUInt = 7;
    EXPECT_EQ(value->AsUInt(asUInt), row.isUInt);
    EXPECT_EQ(asUInt, row.isUInt ? row.number : 0);
    std::uint64_t asUInt64 = 7;
    EXPECT_EQ(value->AsUInt64(asUInt64), row.isUInt64);
    EXPECT_EQ(asUInt64, row.isUInt64 ? static_cast<std::uint64_t>(row.number) : 0U);
  }
  std::uint64_t wide = 7;
  EXPECT_FALSE(Node(Unsigned(9223372036854775808U))->AsUInt64(wide));
  EXPECT_EQ(wide, 0U);
}

TEST(JsonInteger, MarksWhatASignedNumberCannotHold) {
  const CUsePtr<JsonInteger> above(new JsonInteger(JsonInteger::Unsigned{}, 9223372036854775808U));
  EXPECT_TRUE(above->IsUnsigned());
  EXPECT_EQ(above->Value(), kMinInt64);
  const CUsePtr<JsonInteger> greatest(new JsonInteger(JsonInteger::Unsigned{}, kMaxInt64));
  EXPECT_FALSE(greatest->IsUnsigned());
}

TEST(JsonString, IsEmptiedWhenItIsNotUtf8) {
  bool valid = true;
  const CUsePtr<JsonString> broken(new JsonString("a\xFF", false, &valid));
  EXPECT_FALSE(valid);
  EXPECT_EQ(broken->Text(), "");
  const CUsePtr<JsonString> trusted(new JsonString("a\xFF", true, &valid));
  EXPECT_TRUE(valid);
  EXPECT_EQ(trusted->Text(), "a\xFF");
}

TEST(JsonReal, StaysTextUntilItIsAskedFor) {
  const CUsePtr<JsonReal> real(new JsonReal("1.50", 3));
  EXPECT_EQ(real->Text(), "1.50");
  EXPECT_EQ(Compact(*real), "1.50");
  EXPECT_EQ(real->Value(), 1.5);
  EXPECT_EQ(real->Text(), "");
  EXPECT_EQ(real->Precision(), 3);
  EXPECT_EQ(Compact(*real), "1.5");
  EXPECT_EQ(CUsePtr<JsonReal>(new JsonReal("", 3))->Value(), 0.0);
}

// --- Equality ---

bool Equal(const std::string& left, const std::string& right) {
  const Node a(Parse(left)), b(Parse(right));
  return *a == *b;
}

TEST(JsonValue, EqualsByTypeAndContent) {
  EXPECT_TRUE(Equal("[1,\"a\",true,false,null,{}]", "[1,\"a\",true,false,null,{}]"));
  EXPECT_FALSE(Equal("1", "1.0"));
  EXPECT_FALSE(Equal("true", "false"));
  EXPECT_FALSE(Equal("\"a\"", "\"ab\""));
  EXPECT_TRUE(Equal("1.5", "15e-1"));
  EXPECT_FALSE(Equal("1.5", "1.25"));
  EXPECT_FALSE(Equal("[1]", "[1,2]"));
  EXPECT_FALSE(Equal("[1,3]", "[1,2]"));
  EXPECT_TRUE(Equal(R"({"a":1,"b":[2]})", R"({"b":[2],"a":1})"));
  EXPECT_FALSE(Equal(R"({"a":1})", R"({"b":1})"));
  EXPECT_FALSE(Equal(R"({"a":1})", R"({"a":1,"b":1})"));
  EXPECT_FALSE(Equal(R"({"a":[{"b":1}]})", R"({"a":[{"b":2}]})"));
  EXPECT_FALSE(*Node(Unsigned(9223372036854775808U)) == *Node(new JsonInteger(kMinInt64)));
}

TEST(JsonValue, ComparingConvertsReals) {
  const CUsePtr<JsonReal> left(new JsonReal("1.50", 3)), right(new JsonReal("1.5", 2));
  EXPECT_TRUE(*left == *right);
  EXPECT_EQ(left->Text(), "");
  EXPECT_EQ(right->Text(), "");
}

TEST(JsonValue, ANaNEqualsItselfAlone) {
  const Node nan(Real(kNaN)), other(Real(kNaN));
  EXPECT_TRUE(*nan == *nan);
  EXPECT_FALSE(*nan == *other);
}

TEST(JsonValue, NullItemsAreEqualToEachOtherAlone) {
  const Node one(new JsonInteger(1));
  const Node a(new JsonArray({nullptr, one.Get()})), b(new JsonArray({nullptr, one.Get()})),
      c(new JsonArray({one.Get(), one.Get()}));
  EXPECT_TRUE(*a == *b);
  EXPECT_FALSE(*a == *c);
  EXPECT_FALSE(*c == *a);
}

TEST(JsonValue, CompiledObjectsOfTwoSchemasAreUnequal) {
  JsonCompiledSchema first, second;
  first.AddKey("a", KeyNumber);
  second.AddKey("a", KeyNumber);
  const Node a(Parse(R"({"a":1})", nullptr, &first)), b(Parse(R"({"a":1})", nullptr, &first)),
      c(Parse(R"({"a":1})", nullptr, &second));
  EXPECT_TRUE(*a == *b);
  EXPECT_FALSE(*a == *c);
}

// --- Clone ---

TEST(JsonValue, ACloneIsNewThroughout) {
  JsonParseContext context;
  context.KeepKeyOrder = true;
  const std::string text =
      R"({"z":[1,-2,18446744073709551615,1.50,1e10,"t",true,false,null,{"in":{}}],"a":""})";
  Node source(Parse(text, &context));
  const Node copy(source->Clone());
  EXPECT_TRUE(*copy == *source);
  const Node again(Parse(text, &context));
  const Node fresh(again->Clone());
  again->FindChild("z")->FindChild("0")->AddRef();
  again->FindChild("z")->FindChild("0")->Release();
  EXPECT_EQ(Compact(*fresh),
            Compact(*again));  // the text of reals is copied with them
  EXPECT_EQ(copy->UseCount(), 1);
  EXPECT_EQ(copy->FindChild("z")->UseCount(), 1);
  EXPECT_NE(copy->FindChild("z"), source->FindChild("z"));
  const std::string before = Compact(*copy);
  ToArray(source->FindChild("z"))->Remove(0, 5);
  source.Reset();
  EXPECT_EQ(Compact(*copy), before);
}

TEST(JsonValue, ACloneKeepsOrderSequencesAndSchema) {
  const CUsePtr<JsonObject> object(new JsonObject(true));
  for (const char* key : {"a", "b", "c", "d"}) object->SetInteger(key, 1);
  object->Remove("b");
  const Node copy(object->Clone());
  const JsonObject* copied = ToObject(copy.Get());
  EXPECT_TRUE(copied->KeepKeyOrder());
  EXPECT_EQ(copied->NextSequence(), 4U);
  EXPECT_EQ(copied->Size(), 3U);
  EXPECT_EQ(copied->Entries()[1].Sequence(), 2U);

  JsonCompiledSchema schema;
  schema.AddKey("a", 0);
  schema.AddKey("b", 0);
  const Node compiled(Parse(R"({"b":1})", nullptr, &schema));
  const Node compiledCopy(compiled->Clone());
  EXPECT_EQ(ToCompiledObject(compiledCopy.Get())->Schema(), &schema);
  EXPECT_EQ(ToCompiledObject(compiledCopy.Get())->Count(), 1U);
}

TEST(JsonValue, ACloneKeepsTextAndPrecisionOfReals) {
  const Node text(Node(new JsonReal("1.50", 3))->Clone());
  EXPECT_EQ(static_cast<const JsonReal&>(*text).Text(), "1.50");
  EXPECT_EQ(static_cast<const JsonReal&>(*text).Precision(), 3);
  const Node number(Node(new JsonReal(0.1, 17))->Clone());
  EXPECT_EQ(Compact(*number), "0.10000000000000001");
}

TEST(JsonValue, ACloneKeepsNullItems) {
  const Node array(new JsonArray({nullptr, nullptr}));
  const Node copy(array->Clone());
  EXPECT_EQ(ToArray(copy.Get())->Size(), 2U);
  EXPECT_TRUE(*copy == *array);
}

// --- Paths ---

TEST(JsonValue, FindsByPath) {
  const Node root(Parse(R"({"a":[{"b":7}],"":{"":8},"n":null})"));
  const struct {
    const char* path;
    const char* found;
  } rows[] = {{"a/0/b", "7"},     {"/a/0/b", "7"},           {"a/0", R"({"b":7})"},
              {"a/1", "(none)"},  {"a/", "(none)"},          {"a/x", "(none)"},
              {"n", "null"},      {"n/x", "(none)"},         {"//", "8"},
              {"a//0", "(none)"}, {"x", "(none)"},           {"a/0x/b", "7"},
              {"a/-1", "(none)"}, {"a/2147483647", "(none)"}};
  for (const auto& row : rows) {
    const Node found(root->FindPath(row.path));
    EXPECT_EQ(CompactOrNone(found.Get()), row.found) << row.path;
  }
  const Node itself(root->FindPath("")), also(root->FindPath("/"));
  EXPECT_EQ(itself.Get(), root.Get());
  EXPECT_EQ(also.Get(), root.Get());
  EXPECT_EQ(root->UseCount(), 3);
}

TEST(JsonArray, AnIndexBeyond32BitsThrows) {
  const Node root(Parse("[1]"));
  for (const char* key : {"99999999999", "2147483648"}) {
    try {
      root->FindPath(key);
      ADD_FAILURE() << key;
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "stoi argument out of range");
    }
  }
}

TEST(JsonCompiledObject, IsFoundByPath) {
  JsonCompiledSchema schema;
  schema.AddKey("a", 0);
  const Node root(Parse(R"({"a":[5]})", nullptr, &schema));
  EXPECT_EQ(CompactOrNone(Node(root->FindPath("a/0")).Get()), "5");
  EXPECT_EQ(root->FindPath("b"), nullptr);
}

}  // namespace
