// Children of a node: what leads to them, reads, adds, replaces and takes them away.

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "json/JsonScalars.h"
#include "tests/json/JSONWrapperSupport.h"
#include "tests/support/HostJSON.h"

namespace Tovrin::JSON {
namespace {

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

}  // namespace
}  // namespace Tovrin::JSON
