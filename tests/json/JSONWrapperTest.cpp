#include "json/JSONWrapper.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "host/Data.h"
#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "tests/support/HostContext.h"
#include "tests/support/HostJSON.h"

namespace Tovrin::JSON {

// The operations as the host calls them, where the convenience forms hide the buffer.
struct JSONWrapperTestPeer {
  static std::size_t ToString(const JSONWrapper& json, const char* indent, char* buffer,
                              std::size_t size) {
    return json.Interface_ToString(indent, buffer, size);
  }
  static std::size_t GetString(const JSONWrapper& json, const char* key, char* buffer,
                               std::size_t size, bool* ok) {
    return json.Interface_GetString(key, buffer, size, ok);
  }
  static std::size_t AsString(const JSONWrapper& json, char* buffer, std::size_t size, bool* ok) {
    return json.Interface_AsString(buffer, size, ok);
  }
  static std::size_t GetErrorMessage(const JSONWrapper& json, char* buffer, std::size_t size,
                                     bool* ok) {
    return json.Interface_GetErrorMessage(buffer, size, ok);
  }
};

namespace {

using Wrapper = AutoRefPtr<JSONWrapper>;
using Json = AutoRefPtr<IJSON>;
using Lines = std::vector<std::string>;

constexpr auto kOk = IJSON::StatusOk;
constexpr auto kWarning = IJSON::StatusWarning;
constexpr auto kError = IJSON::StatusError;

Wrapper Of(const char* text) {
  Wrapper wrapper = JSONWrapper::FromString(text);
  EXPECT_TRUE(wrapper) << text;
  return wrapper;
}
Wrapper None() {
  return Wrapper(new JSONWrapper(std::shared_ptr<JSONData>()));
}
// An array of a null pointer, which no text spells, and 7.
Wrapper ArrayWithHole() {
  CUsePtr<JsonValue> seven(new JsonInteger(7));
  return Wrapper(new JSONWrapper(new JsonArray({nullptr, seven.Get()})));
}
const JsonCompiledSchema& Schema() {
  static const JsonCompiledSchema schema = [] {
    JsonCompiledSchema built;
    built.AddKey("first", KeyNumber);
    built.AddKey("second", KeyNumber);
    return built;
  }();
  return schema;
}
Wrapper Compiled() {
  auto* object = new JsonCompiledObject(&Schema());
  object->SetInteger(std::size_t{1}, 8);
  return Wrapper(new JSONWrapper(object));
}

void ExpectError(const IJSON& json, IJSON::Status status, const std::string& message) {
  EXPECT_EQ(json.GetErrorStatus(), status);
  EXPECT_EQ(json.GetErrorMessage(), message);
}
void ExpectClean(const IJSON& json) {
  ExpectError(json, kOk, "");
}

TEST(JSONWrapper, ConstructorsMakeWhatTheySay) {
  EXPECT_EQ(JSONWrapper::CreateNull()->ToString(), "null");
  EXPECT_EQ(JSONWrapper::CreateObject()->ToString(), "{}");
  EXPECT_EQ(JSONWrapper::CreateArray()->ToString(), "[]");
  EXPECT_EQ(Wrapper(new JSONWrapper(static_cast<JsonValue*>(nullptr)))->ToString(), "null");
  EXPECT_EQ(Wrapper(new JSONWrapper("[1]"))->ToString(), "[1]");

  const Wrapper bad(new JSONWrapper("["));
  EXPECT_EQ(bad->GetErrorStatus(), kError);
  EXPECT_EQ(bad->ToString(), "null");

  JsonValue* node = new JsonArray;
  const CUsePtr<JsonValue> held(node);
  const Wrapper shares(new JSONWrapper(held));
  EXPECT_EQ(node->UseCount(), 2);
  shares->PushBack(true);
  EXPECT_EQ(static_cast<JsonArray*>(node)->Size(), 1u);
}

TEST(JSONWrapper, ACopyIsDeepAndTakesTheErrorAlong) {
  const Wrapper source = Of("[1]");
  EXPECT_FALSE(source->At(5));
  const Wrapper copy(new JSONWrapper(source.get()));
  ExpectError(*copy.get(), kError, "Index is out of bounds");
  copy->PushBack(true);
  EXPECT_EQ(source->ToString(), "[1]");

  const Wrapper ofNothing(new JSONWrapper(static_cast<const JSONWrapper*>(nullptr)));
  ExpectError(*ofNothing.get(), kError, "Can't copy NULL object");
  EXPECT_TRUE(ofNothing->IsNull());

  const Wrapper shared(new JSONWrapper(source->SharedData()));
  shared->PushBack(false);
  EXPECT_EQ(source->ToString(), "[1,false]");
}

TEST(JSONWrapper, FromStringIsEmptyForWhatIsNoJSON) {
  EXPECT_FALSE(JSONWrapper::FromString(nullptr));
  EXPECT_FALSE(JSONWrapper::FromString(""));
  EXPECT_FALSE(JSONWrapper::FromString("{"));
  EXPECT_FALSE(JSONWrapper::FromString(std::string(), false));
  EXPECT_EQ(JSONWrapper::FromString(R"({"b":1,"a":2})")->ToString(), R"({"b":1,"a":2})");
  EXPECT_TRUE(JSONWrapper::FromString(std::string("{}"), false));
}

TEST(JSONWrapper, WithoutAValueEveryOperationIsNeutral) {
  const Wrapper none = None();
  const Wrapper other = Of("1");
  bool truth = true;
  double real = 1;
  std::int64_t integer = 1;
  std::string text = "x";
  char bytes[16] = {};
  EXPECT_FALSE(none->ParseText("1", true));
  EXPECT_FALSE(none->LessThan(other.get()) || none->Equals(other.get()));
  EXPECT_FALSE(other->LessThan(none.get()) || other->Equals(none.get()));
  EXPECT_EQ(none->ToString(), "");
  EXPECT_FALSE(none->FindNodePath("") || none->ElementMatching("a", "b") || none->Get("a"));
  EXPECT_EQ(none->Size(), 0u);
  EXPECT_TRUE(none->Empty());
  EXPECT_FALSE(none->GetBoolean("a", &truth) || truth);
  EXPECT_FALSE(none->AsDouble(&real) || real != 0);
  EXPECT_FALSE(none->AsInt64(&integer) || integer != 0);
  EXPECT_FALSE(none->AsString(text) || !text.empty());
  EXPECT_FALSE(none->Has("a") || none->At(0) || none->PushBack(true) || none->PushBack("a"));
  EXPECT_FALSE(none->PushBack(other.get()) || none->ReplaceAt(0, other.get()));
  EXPECT_FALSE(none->Remove(std::size_t{0}) || none->Remove("a"));
  EXPECT_FALSE(none->IsNull() || none->IsInt() || none->Set("a", true) || none->SetNull("a"));
  EXPECT_FALSE(none->ForEach([](const char*, const IJSON*, void*) { return true; }, nullptr));
  EXPECT_FALSE(none->Clone());
  EXPECT_EQ(none->Serialize(bytes, sizeof bytes), 8);
  EXPECT_EQ(none->Deserialize(bytes, 8), -1);
  EXPECT_FALSE(none->FromData(nullptr));
  EXPECT_EQ(AutoRefPtr<IDataRef>(none->ToMsgPack())->GetSize(), 0u);
  EXPECT_FALSE(other->PushBack(none.get()));
  ExpectError(*none.get(), kError, "");
}

TEST(JSONWrapper, ParseReplacesTheValueOrKeepsItWithAMessage) {
  const Wrapper json = Of("[1]");
  EXPECT_TRUE(json->Parse(nullptr));
  EXPECT_EQ(json->ToString(), "[1]");
  EXPECT_FALSE(json->Parse("{"));
  ExpectError(*json.get(), kError, "JSON parse error in line 0: illegal object");
  EXPECT_EQ(json->ToString(), "[1]");
  ExpectClean(*json.get());
  EXPECT_FALSE(json->Parse("\n\n["));
  EXPECT_EQ(json->GetErrorMessage().find("JSON parse error in line 2: "), 0u);
  EXPECT_FALSE(json->Parse(""));
  EXPECT_EQ(json->GetErrorMessage().find("JSON parse error in line 0: "), 0u);
  EXPECT_TRUE(json->Parse(R"({"z":1,"a":2})"));
  EXPECT_EQ(json->ToString(), R"({"z":1,"a":2})");
}

TEST(JSONWrapper, TextsTellTheirSizeAndAreCopiedWhereTheyFit) {
  const Wrapper json = Of("[1,2]");
  for (const std::size_t size : {0u, 5u, 6u}) {
    SCOPED_TRACE(size);
    char buffer[8] = "xxxxxxx";
    EXPECT_EQ(JSONWrapperTestPeer::ToString(*json.get(), nullptr, buffer, size), 6u);
    EXPECT_STREQ(buffer, size == 6 ? "[1,2]" : "xxxxxxx");
  }
  EXPECT_EQ(JSONWrapperTestPeer::ToString(*json.get(), nullptr, nullptr, 0), 6u);
  EXPECT_EQ(JSONWrapperTestPeer::ToString(*json.get(), nullptr, nullptr, 100), 6u);
  EXPECT_EQ(json->ToString("  "), "[\n  1,\n  2\n]");
  EXPECT_EQ(json->ToCachedString(nullptr), "[1,2]");
}

TEST(JSONWrapper, TextGettersAnswerLengthAndOneAndTellFailuresApart) {
  using Peer = JSONWrapperTestPeer;
  const Wrapper json = Of(R"({"a":"four"})");
  char buffer[8] = "xxxxxxx";
  bool ok = false;
  EXPECT_EQ(Peer::GetString(*json.get(), "a", buffer, 4, &ok), 5u);
  EXPECT_TRUE(ok);
  EXPECT_STREQ(buffer, "xxxxxxx");
  EXPECT_EQ(Peer::GetString(*json.get(), "a", buffer, 5, nullptr), 5u);
  EXPECT_STREQ(buffer, "four");
  EXPECT_EQ(Peer::GetString(*json.get(), "b", buffer, 0, &ok), 1u);
  EXPECT_FALSE(ok);
  EXPECT_STREQ(buffer, "four");
  EXPECT_EQ(Peer::GetString(*json.get(), "b", buffer, 1, nullptr), 1u);
  EXPECT_STREQ(buffer, "");
  ok = true;
  EXPECT_EQ(Peer::AsString(*None().get(), buffer, 1, &ok), 1u);
  EXPECT_FALSE(ok);
  EXPECT_EQ(Peer::AsString(*json.get(), nullptr, 0, &ok), 13u);
  EXPECT_TRUE(ok);
  EXPECT_FALSE(json->At(0));
  EXPECT_EQ(Peer::GetErrorMessage(*json.get(), nullptr, 0, &ok), 1u);
  EXPECT_TRUE(ok);
}

TEST(JSONWrapper, LongTextsComeWholeThroughTheConvenienceForms) {
  for (const std::size_t size : {1021u, 1022u, 1023u, 1024u, 5000u}) {
    SCOPED_TRACE(size);
    const std::string text(size, 'y');
    const Wrapper json = JSONWrapper::CreateArray();
    json->PushBack(text.c_str());
    EXPECT_EQ(json->ToString(), "[\"" + text + "\"]");
    std::string read;
    EXPECT_TRUE(json->At(0)->AsString(read));
    EXPECT_EQ(read, text);
  }
  std::string cut;
  EXPECT_TRUE(Of(R"("a\u0000b")")->AsString(cut));
  EXPECT_EQ(cut, "a");
}

TEST(JSONWrapper, ComparesOnlyWithItsOwnKind) {
  const Wrapper one = Of("1");
  EXPECT_TRUE(one->Equals(Of("1").get()));
  EXPECT_FALSE(one->Equals(Of("1.0").get()));
  EXPECT_TRUE(one->LessThan(Of("\"10\"").get()));
  EXPECT_FALSE(one->LessThan(one.get()));
  EXPECT_TRUE(Of("\"a\"")->LessThan(Of("\"\u00e9\"").get()));
  const Json foreign(new TextJSON("1"));
  EXPECT_FALSE(one->Equals(foreign.get()) || one->LessThan(foreign.get()));
  EXPECT_FALSE(one->Equals(nullptr) || one->LessThan(nullptr));
}

TEST(JSONWrapper, PathsLeadToNodesOrSayWhereTheyEnd) {
  const struct {
    const char* json;
    const char* path;
    const char* found;  // null for none
    IJSON::Status status;
    const char* message;
  } kRows[] = {
      {"[1]", "", "[1]", kOk, ""},
      {"[1]", "/", "[1]", kOk, ""},
      {R"({"a":[5,{"b":6}]})", "a/1/b", "6", kOk, ""},
      {R"({"a":[5,{"b":6}]})", "/a/0", "5", kOk, ""},
      {R"({"a":[5]})", "a//0", "5", kOk, ""},
      {R"({"a":[5]})", "a/", "[5]", kOk, ""},
      {R"({"":{"":3}})", "//", "3", kOk, ""},
      {R"({"a":[5]})", "a/0x", "5", kOk, ""},
      {"[1]", "x", nullptr, kWarning, "Couldn't find JSON node, array index is not a number"},
      {"[1]", "-1", nullptr, kWarning, "Couldn't find JSON node, array index is not a number"},
      {"[1]", "1", nullptr, kWarning, "Couldn't find JSON node, array index out of bounds"},
      {"[1]", "99999999999999999999", nullptr, kWarning,
       "Couldn't find JSON node, array index out of bounds"},
      {"{}", "a", nullptr, kError, "Error while fetching subnode"},
      {"{}", "a/b", nullptr, kError, "Error while fetching subnode"},
      {"[1]", "0/b", nullptr, kWarning, "Couldn't find JSON node, JSON subnode not found"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.json) + " " + row.path);
    const Wrapper json = Of(row.json);
    const Json node = json->FindNodePath(row.path);
    EXPECT_EQ(static_cast<bool>(node), row.found != nullptr);
    if (node && row.found) {
      EXPECT_EQ(node->ToString(), row.found);
    }
    ExpectError(*json.get(), row.status, row.message);
  }
  const Wrapper hole = ArrayWithHole();
  EXPECT_FALSE(hole->FindNodePath("0"));
  ExpectError(*hole.get(), kError, "Error while fetching array subnode");
  EXPECT_FALSE(Compiled()->FindNodePath("second"));
  EXPECT_FALSE(hole->FindNodePath(nullptr));
}

TEST(JSONWrapper, ElementsAreFoundByAMember) {
  const Wrapper json = Of(R"([3,{"id":"5"},{"id":6,"n":null},{"id":" 7x"},{"id":true},{"id":5}])");
  EXPECT_EQ(json->ElementMatching("id", 5.0)->ToString(), R"({"id":"5"})");
  EXPECT_EQ(json->ElementMatching("id", "6")->ToString(), R"({"id":6,"n":null})");
  EXPECT_EQ(json->ElementMatching("id", 7.0)->ToString(), R"({"id":" 7x"})");
  EXPECT_EQ(json->ElementMatching("id", "true")->ToString(), R"({"id":true})");
  EXPECT_FALSE(json->ElementMatching("n", 0.0));
  EXPECT_FALSE(json->ElementMatching("id", 0.0));
  EXPECT_FALSE(json->ElementMatching("id", "8"));
  EXPECT_FALSE(json->ElementMatching("id", static_cast<const char*>(nullptr)));
  ExpectClean(*json.get());
  EXPECT_FALSE(json->ElementMatching(nullptr, "8"));
  ExpectError(*json.get(), kWarning, "JSON object is not an array");
  EXPECT_FALSE(Of("{}")->ElementMatching("id", 1.0));
  EXPECT_FALSE(ArrayWithHole()->ElementMatching("id", 1.0));
}

TEST(JSONWrapper, SizeAndEmptinessGoByType) {
  const struct {
    const char* json;
    std::size_t size;
    bool isEmpty;
  } kRows[] = {{"[]", 0, true},          {"[1,2]", 2, false}, {"{}", 0, true},
               {R"({"a":1})", 1, false}, {"null", 0, true},   {"\"\"", 0, true},
               {"0", 0, false},          {"false", 0, false}, {"\"a\"", 0, false}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.json);
    EXPECT_EQ(Of(row.json)->Size(), row.size);
    EXPECT_EQ(Of(row.json)->Empty(), row.isEmpty);
  }
  EXPECT_EQ(Compiled()->Size(), 1u);
}

// What a getter answers for the member, the value written, and the message.
template <class Out>
std::string Got(bool (IJSON::*getter)(const char*, Out*) const, const IJSON& json,
                const char* key) {
  Out out = 1;
  const bool isThere = (json.*getter)(key, &out);
  std::string line = isThere ? "yes " : "no ";
  line += Wrapper(new JSONWrapper(new JsonReal(static_cast<double>(out))))->ToString();
  return line + " " + json.GetErrorMessage();
}

TEST(JSONWrapper, MemberGettersConvertOrSayWhyNot) {
  const Wrapper json = Of(R"({"t":true,"n":5,"m":-1,"b":3000000000,"h":5000000000,"r":1.5,)"
                          R"("a":[],"s":"text","u":18446744073709551615})");
  const auto& j = *json.get();
  EXPECT_EQ(Got(&IJSON::GetBoolean, j, "t"), "yes 1.0 ");
  EXPECT_EQ(Got(&IJSON::GetBoolean, j, "a"), "no 0.0 Member 'a' is no boolean");
  EXPECT_EQ(Got(&IJSON::GetDouble, j, "r"), "yes 1.5 ");
  EXPECT_EQ(Got(&IJSON::GetDouble, j, "a"), "no 0.0 Member 'a' is no double");
  EXPECT_EQ(Got(&IJSON::GetInt, j, "m"), "yes -1.0 ");
  // Contract: the two messages stand for each other.
  EXPECT_EQ(Got(&IJSON::GetInt, j, "b"), "no 0.0 Member 'b' is no integer");
  EXPECT_EQ(Got(&IJSON::GetInt, j, "a"), "no 0.0 Member 'a' is no 32 bit integer");
  EXPECT_EQ(Got(&IJSON::GetUInt, j, "b"), "yes 3000000000.0 ");
  EXPECT_EQ(Got(&IJSON::GetUInt, j, "h"), "no 0.0 Member 'h' is no 32 bit unsigned integer");
  EXPECT_EQ(Got(&IJSON::GetUInt, j, "m"), "no 0.0 Member 'm' is no 32 bit unsigned integer");
  EXPECT_EQ(Got(&IJSON::GetUInt, j, "a"), "no 0.0 Member 'a' is no 32 bit unsigned integer");
  EXPECT_EQ(Got(&IJSON::GetInt64, j, "h"), "yes 5000000000.0 ");
  EXPECT_EQ(Got(&IJSON::GetInt64, j, "u"), "no 0.0 Member 'u' is no integer");
  EXPECT_EQ(Got(&IJSON::GetUInt64, j, "n"), "yes 5.0 ");
  EXPECT_EQ(Got(&IJSON::GetUInt64, j, "m"), "no 0.0 Member 'm' is no unsigned integer");
  EXPECT_EQ(Got(&IJSON::GetUInt64, j, "u"), "no 0.0 Member 'u' is no unsigned integer");
  EXPECT_EQ(Got(&IJSON::GetInt, j, "x"), "no 0.0 Could not find member 'x'");
  EXPECT_EQ(json->GetErrorStatus(), kWarning);
  EXPECT_EQ(Got(&IJSON::GetInt, j, nullptr), "no 0.0 ");
  EXPECT_FALSE(json->GetInt("n", nullptr));
  ExpectClean(j);

  std::string text;
  EXPECT_TRUE(json->GetString("n", text));
  EXPECT_EQ(text, "5");
  EXPECT_FALSE(json->GetString("x", text));
  const Wrapper array = Of("[1]");
  EXPECT_FALSE(array->GetString("x", text));
  ExpectError(*array.get(), kError,
              "Error while searching member 'x'. Type is Array but should be Object.");
  EXPECT_EQ(Got(&IJSON::GetInt, *Compiled().get(), "second"), "yes 8.0 ");
  EXPECT_EQ(Got(&IJSON::GetInt, *Compiled().get(), "first"),
            "no 0.0 Could not find member 'first'");
}

TEST(JSONWrapper, MembersAndItemsAreSharedWithTheirTree) {
  const Wrapper json = Of(R"({"a":{},"l":[[]],"n":null})");
  EXPECT_TRUE(json->Get("a")->Set("x", 1.5));
  EXPECT_TRUE(json->Get("l")->At(0)->PushBack(true));
  EXPECT_TRUE(json->Clone()->Set("y", true));
  const Json null = json->Get("n");
  EXPECT_TRUE(null->Set("z", true));
  EXPECT_EQ(null->ToString(), R"({"z":true})");
  EXPECT_EQ(json->ToString(), R"({"a":{"x":1.5},"l":[[true]],"n":null})");

  EXPECT_FALSE(json->Get("x") || json->Get(nullptr));
  ExpectClean(*json.get());
  const Wrapper text = Of("\"x\"");
  EXPECT_FALSE(text->Get("a"));
  ExpectError(*text.get(), kError,
              "Error while searching member 'a'. Type is String but should be Object.");
}

TEST(JSONWrapper, ItemsAreReachedByIndex) {
  const Wrapper json = ArrayWithHole();
  EXPECT_FALSE(json->At(0));
  ExpectError(*json.get(), kError, "Error while accessing element at given index");
  EXPECT_EQ(json->At(1)->ToString(), "7");
  ExpectClean(*json.get());
  EXPECT_FALSE(json->At(2));
  ExpectError(*json.get(), kError, "Index is out of bounds");
  const Wrapper object = Of("{}");
  EXPECT_FALSE(object->At(0));
  ExpectClean(*object.get());
}

TEST(JSONWrapper, HasKnowsKeysAndItems) {
  EXPECT_TRUE(Of(R"({"a":null})")->Has("a"));
  EXPECT_FALSE(Of(R"({"a":null})")->Has("b"));
  EXPECT_TRUE(Of(R"(["a","b"])")->Has("b"));
  EXPECT_TRUE(Of("[1,2]")->Has("2"));
  EXPECT_TRUE(Of("[null]")->Has("null"));
  EXPECT_TRUE(Of(R"([{"a":1}])")->Has(R"({"a":1})"));
  EXPECT_FALSE(Of("[1,2]")->Has("1 "));
  EXPECT_TRUE(Compiled()->Has("second"));
  EXPECT_FALSE(Compiled()->Has("first") || ArrayWithHole()->Has("null"));
  EXPECT_FALSE(Of("1")->Has("1") || Of("{}")->Has(nullptr));
}

TEST(JSONWrapper, PushBackAppendsToArraysAlone) {
  const Wrapper json = JSONWrapper::CreateArray();
  EXPECT_TRUE(json->PushBack(true) && json->PushBack("x") && json->PushBack(1.5));
  EXPECT_TRUE(json->PushBack(json.get()));
  EXPECT_EQ(json->ToString(), R"([true,"x",1.5,[true,"x",1.5]])");
  // Contract: dropped, and no failure.
  EXPECT_TRUE(json->PushBack("\xff"));
  EXPECT_EQ(json->Size(), 4u);
  ExpectClean(*json.get());
  EXPECT_FALSE(json->PushBack(static_cast<const char*>(nullptr)));
  ExpectError(*json.get(), kWarning, "Couldn't push back invalid value to JSON array");
  EXPECT_FALSE(json->PushBack(static_cast<const IJSON*>(nullptr)));
  ExpectError(*json.get(), kWarning, "JSON object is not an array");
  const Json foreign(new TextJSON("1"));
  EXPECT_FALSE(json->PushBack(foreign.get()));
  ExpectClean(*json.get());

  const Wrapper object = Of("{}");
  for (const bool isDone : {object->PushBack(true), object->PushBack("x"), object->PushBack(1.0),
                            object->PushBack(static_cast<const char*>(nullptr))}) {
    EXPECT_FALSE(isDone);
  }
  ExpectError(*object.get(), kWarning,
              "Couldn't push back to JSON array, JSON object is not an array");
  EXPECT_FALSE(object->PushBack(json.get()));
  ExpectError(*object.get(), kWarning, "JSON object is not an array");
}

TEST(JSONWrapper, ReplaceAtKeepsTheArraysLength) {
  const Wrapper json = Of("[1,2]");
  EXPECT_TRUE(json->ReplaceAt(1, Of("{}").get()));
  EXPECT_FALSE(json->ReplaceAt(2, Of("3").get()));
  ExpectClean(*json.get());
  EXPECT_FALSE(json->ReplaceAt(0, nullptr));
  ExpectError(*json.get(), kWarning, "JSON object is not an array");
  const Json foreign(new TextJSON("1"));
  EXPECT_FALSE(json->ReplaceAt(0, foreign.get()));
  ExpectClean(*json.get());
  EXPECT_EQ(json->ToString(), "[1,{}]");
  const Wrapper object = Of("{}");
  EXPECT_FALSE(object->ReplaceAt(0, json.get()));
  ExpectError(*object.get(), kWarning, "JSON object is not an array");
}

TEST(JSONWrapper, RemoveHandsOutWhatItTakes) {
  const Wrapper array = Of("[1,[2],3]");
  EXPECT_EQ(array->Remove(1)->ToString(), "[2]");
  EXPECT_EQ(array->ToString(), "[1,3]");
  EXPECT_FALSE(array->Remove(9));
  ExpectError(*array.get(), kWarning, "Couldn't remove element at position 9");
  EXPECT_FALSE(array->Remove("k"));
  ExpectError(*array.get(), kWarning,
              "Couldn't remove element with key k, JSON object is not an object");
  EXPECT_EQ(ArrayWithHole()->Remove(std::size_t{0})->ToString(), "null");

  const Wrapper object = Of(R"({"a":1,"b":2})");
  EXPECT_EQ(object->Remove("a")->ToString(), "1");
  EXPECT_EQ(object->ToString(), R"({"b":2})");
  EXPECT_FALSE(object->Remove("a"));
  ExpectError(*object.get(), kWarning, "Couldn't remove element with key a");
  EXPECT_FALSE(object->Remove(3));
  ExpectError(*object.get(), kWarning,
              "Couldn't remove element at position 3, JSON object is not an array");
  EXPECT_FALSE(object->Remove(static_cast<const char*>(nullptr)));
  EXPECT_FALSE(Compiled()->Remove("second"));
}

TEST(JSONWrapper, ConversionsAreThoseOfTheValue) {
  bool truth = false;
  double real = 0;
  std::int32_t i32 = 0;
  std::uint32_t u32 = 0;
  std::int64_t i64 = 1;
  std::uint64_t u64 = 1;
  EXPECT_TRUE(Of("true")->AsBool(&truth) && truth);
  EXPECT_TRUE(Of("1.5")->AsDouble(&real) && real == 1.5);
  EXPECT_TRUE(Of("-7")->AsInt(&i32) && i32 == -7);
  EXPECT_TRUE(Of("4294967295")->AsUInt(&u32) && u32 == 4294967295u);
  EXPECT_TRUE(Of("\"9\"")->AsInt64(&i64) && i64 == 9);
  EXPECT_TRUE(Of("9")->AsUInt64(&u64) && u64 == 9);
  const Wrapper most = Of("18446744073709551615");
  EXPECT_TRUE(most->IsInt64());
  EXPECT_FALSE(most->AsInt64(&i64) || i64 != 0);
  EXPECT_FALSE(most->AsUInt64(&u64) || u64 != 0);
  EXPECT_FALSE(most->AsInt64(nullptr) || most->AsBool(nullptr));
}

TEST(JSONWrapper, TypeTestsGoByTypeAndRange) {
  const struct {
    const char* json;
    const char* kinds;
  } kRows[] = {
      {"null", "null "},
      {"true", "bool "},
      {"false", "bool "},
      {"1.0", "number double "},
      {"1", "number int uint int64 uint64 "},
      {"-1", "number int int64 "},
      {"2147483648", "number uint int64 uint64 "},
      {"4294967296", "number int64 uint64 "},
      {"18446744073709551615", "number int64 "},
      {"\"1\"", "string "},
      {"[]", "array "},
      {"{}", "object "},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.json);
    const Wrapper json = Of(row.json);
    std::string kinds;
    if (json->IsNull()) kinds += "null ";
    if (json->IsBool()) kinds += "bool ";
    if (json->IsNumber()) kinds += "number ";
    if (json->IsDouble()) kinds += "double ";
    if (json->IsInt()) kinds += "int ";
    if (json->IsUInt()) kinds += "uint ";
    if (json->IsInt64()) kinds += "int64 ";
    if (json->IsUInt64()) kinds += "uint64 ";
    if (json->IsString()) kinds += "string ";
    if (json->IsArray()) kinds += "array ";
    if (json->IsObject()) kinds += "object ";
    EXPECT_EQ(kinds, row.kinds);
  }
  EXPECT_FALSE(Compiled()->IsObject());  // Contract: by this test it is none
}

TEST(JSONWrapper, SettersStoreInObjectsAndMakeThemOfNull) {
  const Wrapper json = JSONWrapper::CreateNull();
  EXPECT_TRUE(json->Set("a", true) && json->Set("b", 1.5) && json->Set("c", std::int32_t{-1}));
  EXPECT_TRUE(json->Set("d", std::uint32_t{4294967295}) && json->Set("e", std::int64_t{-5}));
  EXPECT_TRUE(json->Set("f", std::numeric_limits<std::uint64_t>::max()) && json->Set("g", "t\""));
  EXPECT_TRUE(json->Set("h", Of("[1]").get()) && json->SetNull("i"));
  EXPECT_EQ(json->ToString(), R"({"a":true,"b":1.5,"c":-1,"d":4294967295,"e":-5,)"
                              R"("f":18446744073709551615,"g":"t\"","h":[1],"i":null})");
  const Wrapper self = Of(R"({"a":1})");
  EXPECT_TRUE(self->Set("me", self.get()));
  EXPECT_EQ(self->ToString(), R"({"a":1,"me":{"a":1}})");
}

TEST(JSONWrapper, SettersSayWhatTheyRefuse) {
  constexpr const char* kText = nullptr;
  constexpr const IJSON* kJson = nullptr;
  constexpr char kPlain[] = "Can't set key/value pair into JSON";
  const Wrapper null = JSONWrapper::CreateNull();
  for (const bool isDone : {null->Set(nullptr, true), null->Set("a", kText), null->Set("a", kJson),
                            null->SetNull(nullptr)}) {
    EXPECT_FALSE(isDone);
    EXPECT_TRUE(null->SharedData()->Root->GetType() == JsonValue::TypeNull);
  }
  EXPECT_FALSE(null->Set("a", kText));
  ExpectError(*null.get(), kError, kPlain);
  EXPECT_FALSE(null->Set("a", kJson));
  ExpectError(*null.get(), kError, kPlain);
  EXPECT_FALSE(null->Set(nullptr, 1.0));
  ExpectError(*null.get(), kError, kPlain);
  const Json foreign(new TextJSON("1"));
  EXPECT_FALSE(null->Set("a", foreign.get()));
  ExpectClean(*null.get());

  const Wrapper array = Of("[1]");
  EXPECT_FALSE(array->Set("a", "b"));
  ExpectError(*array.get(), kError, std::string(kPlain) + ", JSON element is not a JSON object");
  EXPECT_EQ(array->ToString(), "[1]");
  EXPECT_FALSE(Compiled()->Set("first", 1.0));

  const Wrapper object = Of("{}");
  EXPECT_FALSE(object->Set("\xff", 1.0));
  ExpectError(*object.get(), kError, std::string(kPlain) + ", JSON key is not a valid UTF8-string");
  EXPECT_FALSE(object->Set("\xff", array.get()));
  ExpectError(*object.get(), kError, std::string(kPlain) + ", JSON key is not a valid UTF8-string");
  EXPECT_FALSE(object->Set("k", "\xff"));
  ExpectError(*object.get(), kError,
              std::string(kPlain) + ", value for key \"k\" is not a valid UTF8-string");
  EXPECT_FALSE(object->Set("\xff", "v"));
  ExpectError(*object.get(), kError,
              std::string(kPlain) + ", key and/or value is not a valid UTF8-string");
  EXPECT_EQ(object->ToString(), "{}");
}

struct Walked {
  Lines lines;
  std::size_t stopAt = SIZE_MAX;
};

bool NoteItem(const char* key, const IJSON* value, void* user) {
  auto& walked = *static_cast<Walked*>(user);
  walked.lines.push_back(std::string(key) + "=" + value->ToString());
  return walked.lines.size() <= walked.stopAt;
}

Lines LinesOf(const Wrapper& json) {
  Walked walked;
  EXPECT_TRUE(json->ForEach(&NoteItem, &walked));
  return walked.lines;
}

TEST(JSONWrapper, ForEachShowsChildrenInOrderUntilItIsToldToStop) {
  EXPECT_EQ(LinesOf(Of(R"({"b":1,"a":[2]})")), (Lines{"b=1", "a=[2]"}));
  EXPECT_EQ(LinesOf(ArrayWithHole()), (Lines{"0=null", "1=7"}));
  EXPECT_EQ(LinesOf(Compiled()), (Lines{"second=8"}));
  EXPECT_EQ(LinesOf(Of("[]")), Lines{});
  Walked none;
  EXPECT_FALSE(Of("1")->ForEach(&NoteItem, &none));
  EXPECT_FALSE(Of("1")->ForEach(&NoteItem, &none, nullptr));
  EXPECT_TRUE(none.lines.empty());

  Walked stopped{{}, 1};
  EXPECT_FALSE(Of("[1,2,3]")->ForEach(&NoteItem, &stopped));
  EXPECT_EQ(stopped.lines, (Lines{"0=1", "1=2"}));

  const Wrapper json = Of("[1]");
  json->At(4);
  Walked walked;
  json->ForEach(&NoteItem, &walked);
  ExpectError(*json.get(), kError, "Index is out of bounds");
}

TEST(JSONWrapper, ForEachMayChangeTheChildrenAndTheWrapper) {
  const Wrapper json = Of(R"({"a":1,"b":2})");
  const auto take = [](const char* key, const IJSON*, void* user) {
    static_cast<JSONWrapper*>(user)->Remove(key);
    return static_cast<JSONWrapper*>(user)->Parse("[1]");
  };
  EXPECT_TRUE(json->ForEach(take, json.get()));
  EXPECT_EQ(json->ToString(), "[1]");
}

bool Complain(const char* key, const IJSON*, void* user, char* error, std::size_t size) {
  EXPECT_EQ(size, 1024u);
  EXPECT_EQ(error[0], '\0');
  const std::string text = std::string("bad ") + key;
  if (text != "bad 1") text.copy(error, size);
  return text != *static_cast<const std::string*>(user);
}

TEST(JSONWrapper, ForEachGathersTheTextsThatItemsLeave) {
  const Wrapper json = Of("[0,0,0,0]");
  char errors[100];
  std::string stop = "never";
  EXPECT_TRUE(json->ForEach(&Complain, &stop, errors, sizeof errors));
  EXPECT_STREQ(
      errors, "Item '1' has error 'bad 0', Item '3' has error 'bad 2', Item '4' has error 'bad 3'");
  stop = "bad 2";
  EXPECT_FALSE(json->ForEach(&Complain, &stop, errors, sizeof errors));
  EXPECT_STREQ(errors, "Item '1' has error 'bad 0', Item '3' has error 'bad 2'");

  const std::string one = "Item '1' has error 'bad 0'";
  EXPECT_FALSE(json->ForEach(&Complain, &stop, errors, one.size() + 1));
  EXPECT_EQ(errors, one);
  EXPECT_FALSE(json->ForEach(&Complain, &stop, errors, one.size()));
  EXPECT_STREQ(errors, "");
  EXPECT_FALSE(json->ForEach(&Complain, &stop, nullptr, 0));
}

// Has the error that the callback gives it, as long as nobody clears it.
class FailingContext final : public NeutralContext {
public:
  std::string error;
  Lines raised;

private:
  bool Interface_HasError() const override { return !error.empty(); }
  const char* Interface_GetErrorMessage() const override { return error.c_str(); }
  void Interface_ClearError() override { ADD_FAILURE() << "nobody asked for that"; }
  void Interface_TriggerErrorHandler(ErrorSeverity severity, const char* moduleNamespace,
                                     const char* id, const char* message) override {
    EXPECT_EQ(severity, ErrorSeverity::Severity2);
    raised.push_back(std::string(moduleNamespace) + "|" + id + "|" + message);
  }
};

struct ContextWalk {
  AutoRefPtr<FailingContext> context{new FailingContext};
  std::size_t failFrom = 0;  // the context has an error from this item on
  std::string error = "e";
  std::size_t calls = 0;

  static bool Step(const char*, const IJSON*, void* user) {
    auto& walk = *static_cast<ContextWalk*>(user);
    if (walk.calls++ >= walk.failFrom) walk.context->error = walk.error;
    return false;
  }
};

Wrapper ArrayOf(std::size_t count) {
  const Wrapper json = JSONWrapper::CreateArray();
  for (std::size_t i = 0; i < count; ++i) json->PushBack(true);
  return json;
}

TEST(JSONWrapper, ForEachWithAContextGoesOnAndRaisesWhatItGathered) {
  ContextWalk walk;
  walk.failFrom = 1;
  EXPECT_FALSE(ArrayOf(3)->ForEach(&ContextWalk::Step, &walk, walk.context.get()));
  EXPECT_EQ(walk.calls, 3u);
  // Contract: the context's error is not cleared, so item 3 repeats that of item 2.
  EXPECT_EQ(walk.context->raised,
            (Lines{"Tovrin|Error.Tovrin.FunctionError|Item '2' has error 'e', "
                   "Item '3' has error 'e'"}));

  ContextWalk many;
  EXPECT_FALSE(ArrayOf(25)->ForEach(&ContextWalk::Step, &many, many.context.get()));
  EXPECT_EQ(many.calls, 20u);
  ASSERT_EQ(many.context->raised.size(), 1u);
  EXPECT_NE(many.context->raised[0].find("Item '20' has"), std::string::npos);

  ContextWalk large;
  large.error = std::string(4000, 'e');
  EXPECT_FALSE(ArrayOf(25)->ForEach(&ContextWalk::Step, &large, large.context.get()));
  EXPECT_EQ(large.calls, 20u);
  EXPECT_NE(large.context->raised.at(0).find("Item '2' has"), std::string::npos);
  EXPECT_EQ(large.context->raised.at(0).find("Item '3' has"), std::string::npos);

  ContextWalk plain;
  EXPECT_FALSE(ArrayOf(3)->ForEach(&ContextWalk::Step, &plain, nullptr));
  EXPECT_EQ(plain.calls, 3u);
}

TEST(JSONWrapper, SerialisedBytesCarryTheirLength) {
  const Wrapper json = Of(R"({"a":[1,2]})");
  char buffer[64];
  ASSERT_EQ(json->SerializedSize(), 19u);
  EXPECT_EQ(json->Serialize(buffer, 18), -1);
  EXPECT_EQ(json->Serialize(nullptr, 100), -1);
  ASSERT_EQ(json->Serialize(buffer, 19), 19);
  std::uint64_t length = 0;
  std::memcpy(&length, buffer, 8);
  EXPECT_EQ(length, 11u);

  const Wrapper back = JSONWrapper::CreateNull();
  EXPECT_EQ(back->Deserialize(buffer, sizeof buffer), 19);
  EXPECT_TRUE(back->Equals(json.get()));
  for (const std::size_t size : {0u, 7u, 8u, 18u}) EXPECT_EQ(back->Deserialize(buffer, size), -1);
  EXPECT_EQ(back->Deserialize(nullptr, 19), -1);
  for (const std::uint64_t bad : {std::uint64_t{12}, std::uint64_t{0}, ~std::uint64_t{0}}) {
    std::memcpy(buffer, &bad, 8);
    EXPECT_EQ(back->Deserialize(buffer, 19), -1) << bad;
  }
  EXPECT_TRUE(back->Equals(json.get()));
}

// A reference whose bytes do not lie in one piece, and that may have fewer than it says.
class Scattered final : public InterfaceImpl<IDataRef> {
public:
  Scattered(std::string bytes, std::size_t missing) : fBytes(std::move(bytes)), fMissing(missing) {}

private:
  std::size_t Interface_GetSize() const override { return fBytes.size() + fMissing; }
  void Interface_Assign(const void*, std::size_t) override {}
  std::size_t Interface_Read(void* buffer, std::size_t size, std::size_t offset) const override {
    if (offset >= fBytes.size()) return 0;
    return fBytes.copy(static_cast<char*>(buffer), size, offset);
  }
  std::uint8_t Interface_IsEqual(const IDataRef*) const override { return 0; }
  IDataRef* Interface_Clone() const override { return nullptr; }

  const std::string fBytes;
  const std::size_t fMissing;
};

TEST(JSONWrapper, MsgPackGoesThroughDataReferences) {
  const Wrapper json = Of(R"({"a":[1,"x"]})");
  const AutoRefPtr<IDataRef> data(json->ToMsgPack());
  const std::string bytes(static_cast<const char*>(data->GetData()), data->GetSize());
  EXPECT_EQ(bytes,
            "\x81\xa1"
            "a\x92\x01\xa1"
            "x");

  const Wrapper back = JSONWrapper::CreateNull();
  EXPECT_TRUE(back->FromData(data.get()));
  EXPECT_TRUE(back->Equals(json.get()));
  EXPECT_TRUE(back->Parse("1"));
  EXPECT_TRUE(back->FromData(AutoRefPtr<IDataRef>(new Scattered(bytes, 0)).get()));
  EXPECT_TRUE(back->Equals(json.get()));

  const Wrapper large = Of(("[\"" + std::string(200'000, 'x') + "\"]").c_str());
  const AutoRefPtr<IDataRef> packed(large->ToMsgPack());
  const std::string manyBytes(static_cast<const char*>(packed->GetData()), packed->GetSize());
  EXPECT_TRUE(back->FromData(AutoRefPtr<IDataRef>(new Scattered(manyBytes, 0)).get()));
  EXPECT_TRUE(back->Equals(large.get()));
  EXPECT_TRUE(back->FromData(data.get()));

  // A size that is a lie is no reason to make room for it.
  for (const std::size_t missing : {std::size_t{1}, SIZE_MAX - bytes.size()}) {
    EXPECT_FALSE(back->FromData(AutoRefPtr<IDataRef>(new Scattered(bytes, missing)).get()));
    ExpectError(*back.get(), kError, "reading from MsgPack failed");
  }
  EXPECT_FALSE(back->FromData(AutoRefPtr<IDataRef>(new Data("\xc1")).get()));
  ExpectError(*back.get(), kError, "reading from MsgPack failed");
  EXPECT_FALSE(back->FromData(nullptr));
  ExpectError(*back.get(), kError, "reading from MsgPack failed");
  EXPECT_TRUE(back->Equals(json.get()));
}

}  // namespace
}  // namespace Tovrin::JSON
