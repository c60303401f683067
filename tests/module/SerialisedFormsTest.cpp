// How values of the two types are saved and restored, seen as a host sees it.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/IJSON.h"
#include "tests/module/ModuleCalls.h"

using namespace Tovrin;

namespace {

using Object = AutoRefPtr<IUserDefinedType>;
using Json = AutoRefPtr<IJSON>;

Object Create(const char* factory, TypeId type) {
  return Object(ModuleSymbolAs<IUserDefinedType*(std::uint32_t)>(factory)(type));
}
Object NewTessarin() {
  return Create("tovrin_module_CreateTessarin", kTestTessarinId);
}
Object NewList() {
  return Create("tovrin_module_CreateTessarinList", kTestListId);
}
AutoRefPtr<TestVariant> Argument(const Object& object) {
  const bool isList = std::string(object->GetName()) == "Tessarin.List";
  return TestVariant::Object(isList ? kTestListId : kTestTessarinId, object);
}

// JSON of the module's making, since the host of these tests has none.
Json JsonOf(const std::string& text) {
  Json json = NewTessarin()->Serialize();
  EXPECT_TRUE(json->Parse(text.c_str())) << text;
  return json;
}

std::string Saved(const Object& object) {
  const Json json = object->Serialize();
  return json ? json->ToString("") : "none";
}
std::string Text(const Object& object) {
  return Call("tovrin_module_RegExToString", {Argument(object)}).Text();
}
bool Matches(const Object& object, const char* text) {
  const bool isList = std::string(object->GetName()) == "Tessarin.List";
  return Call(isList ? "tovrin_module_MatchesInList" : "tovrin_module_RegExMatches",
              {Argument(object), ::Text(text)})
      .result->GetBoolean();
}
std::string Joined(const Object& list) {
  return Call("tovrin_module_RegExListToString", {Argument(list), ::Text("|")}).Text();
}
double Size(const Object& list) {
  return Call("tovrin_module_Size", {Argument(list)}).result->GetNumber();
}
void Add(const Object& list, const std::string& text) {
  EXPECT_EQ(CallWithoutResult("tovrin_module_AddToRegExList", {Argument(list), ::Text(text)}), 0u);
}

extern "C" FunctionStatus AnswerYes(std::uint32_t, IVariant* const*, IVariant* result, IModuleInfo*,
                                    IContext*) {
  result->AssignBoolean(true);
  return 0;
}

// A transaction of a host that says the policy is a customer's, or that has no such function.
class PolicyContext final : public NeutralContext {
public:
  explicit PolicyContext(bool isCustomers) : fIsCustomers(isCustomers) {}

private:
  std::uint64_t Interface_GetTovrinInstanceId() const override { return fIsCustomers ? 71 : 72; }
  IVariant* Interface_CreateInstance(TypeId type) override { return new TestVariant(type); }
  ModuleFunction Interface_GetFunction(const char* name, std::uint32_t, const char* const*,
                                       IModuleInfo**, std::uint32_t) override {
    EXPECT_STREQ(name, "QRX.InCustomerControlledPolicy");
    return fIsCustomers ? &AnswerYes : nullptr;
  }

  const bool fIsCustomers;
};

bool Load(const Object& object, const std::string& text, bool isCustomers = false) {
  const AutoRefPtr<IContext> context(new PolicyContext(isCustomers));
  return object->Deserialize(JsonOf(text).get(), context.get());
}

TEST(SerialisedForms, AnExpressionIsAnObjectWithOneMember) {
  const Object object = NewTessarin();
  EXPECT_EQ(Saved(object), R"({"value":""})");
  EXPECT_TRUE(Load(object, R"({"value":"a\"\\\\d"})"));
  EXPECT_EQ(Text(object), "a\"\\\\d");
  EXPECT_EQ(Saved(object), R"({"value":"a\"\\\\d"})");
}

TEST(SerialisedForms, ExpressionsComeBackAsTheyWere) {
  const std::string texts[] = {"a",      "\"",       "\\\\",
                               "a\tb\n", "\x01\x1f", "\xC3\xA9",
                               "x\"],",  "[a-z]+",   std::string(5000, 'a')};
  for (const std::string& text : texts) {
    SCOPED_TRACE(text);
    const Object saved = Expression(text)->GetUserDefined();
    const Object restored = NewTessarin();
    EXPECT_TRUE(restored->Deserialize(saved->Serialize().get()));
    EXPECT_EQ(Text(restored), text);
    EXPECT_TRUE(saved->IsEqual(restored.get()));
  }
}

// Contract: JSON refuses text that is not UTF-8, so the member is missing, which no object is
// restored from; the setter takes a text up to its zero byte.
TEST(SerialisedForms, WhatJsonCannotHoldIsNotSaved) {
  for (const char* text : {"\xff", "a\xC3", "\x80", "[\x80-\xBF]"}) {
    SCOPED_TRACE(testing::PrintToString(text));
    const auto argument = Expression(text);
    const Json json = argument->GetUserDefined()->Serialize();
    EXPECT_EQ(json->GetErrorStatus(), IJSON::StatusError) << "a host can see it";
    EXPECT_EQ(json->GetErrorMessage(),
              "Can't set key/value pair into JSON, value for key \"value\" is not a valid "
              "UTF8-string");
    EXPECT_EQ(json->ToString(""), "{}");
    const Object restored = Expression("before")->GetUserDefined();
    EXPECT_FALSE(restored->Deserialize(json.get()));
    EXPECT_EQ(Text(restored), "before");
    EXPECT_EQ(Text(argument->GetUserDefined()), text) << "what cannot be saved works all the same";
  }
  EXPECT_EQ(Saved(Expression(std::string("a\0b", 3))->GetUserDefined()), R"({"value":"a"})");
}

TEST(SerialisedForms, AnExpressionIsNotReadFromAnythingElse) {
  const Object object = NewTessarin();
  EXPECT_TRUE(Load(object, R"({"value":"old"})"));
  for (const char* text : {"[]", "null", "\"old\"", "{}", R"({"Value":"x"})", R"({"value":5})",
                           R"({"value":null})", R"({"value":["x"]})"}) {
    EXPECT_FALSE(Load(object, text)) << text;
    EXPECT_EQ(Text(object), "old");
    EXPECT_TRUE(Matches(object, "old"));
  }
  EXPECT_FALSE(object->Deserialize(nullptr));
}

TEST(SerialisedForms, ABadExpressionIsKeptAsTextAlone) {
  const Object object = NewTessarin();
  EXPECT_TRUE(Load(object, R"({"value":"old"})"));
  EXPECT_FALSE(Load(object, R"({"value":"("})"));
  EXPECT_EQ(Text(object), "(");
  EXPECT_FALSE(Matches(object, "("));
  EXPECT_FALSE(Matches(object, "old"));
}

TEST(SerialisedForms, TheEmptyExpressionLoadsAsItCompiles) {
  const Object object = NewTessarin();
  const bool isCompiled = Matches(Expression("")->GetUserDefined(), "");
  EXPECT_EQ(Load(object, R"({"value":""})"), isCompiled);
}

TEST(SerialisedForms, OnlyTheFormsWithoutAContextSaveAndOnlyAListLoadsWithoutOne) {
  // Contract: each type has one form of the two of its own.
  const AutoRefPtr<IContext> context(new PolicyContext(false));
  const Json one = JsonOf(R"({"value":"a"})");
  const Json many = JsonOf(R"({"entries":[{"value":"a"}]})");
  EXPECT_FALSE(NewTessarin()->Serialize(nullptr));
  EXPECT_FALSE(NewList()->Serialize(nullptr));
  EXPECT_TRUE(NewTessarin()->Serialize(context.get()));
  EXPECT_TRUE(NewList()->Serialize(context.get()));
  EXPECT_FALSE(NewTessarin()->Deserialize(one.get(), nullptr));
  EXPECT_TRUE(NewTessarin()->Deserialize(one.get()));
  EXPECT_TRUE(NewList()->Deserialize(many.get()));
  EXPECT_TRUE(NewList()->Deserialize(many.get(), nullptr));
}

TEST(SerialisedForms, AListIsItsTypeAndItsTexts) {
  const Object list = NewList();
  EXPECT_EQ(Saved(list), R"({"type":"Tessarin.List","entries":[]})");
  Add(list, "*.example.com");
  Add(list, "regex(^a$)");
  EXPECT_EQ(Saved(list), R"x({"type":"Tessarin.List","entries":[{"value":"*.example.com"},)x"
                         R"x({"value":"regex(^a$)"}]})x");
}

TEST(SerialisedForms, AListsTextsAreWrittenWithoutEscapes) {
  // Contract: a text that this breaks is refused, and what was there stays.
  for (const char* text : {"a\"b", "\\d", "a\tb", "\xff"}) {
    SCOPED_TRACE(testing::PrintToString(text));
    const Object breaking = NewList();
    Add(breaking, text);
    EXPECT_EQ(Saved(breaking), "{}");
    EXPECT_EQ(breaking->Serialize()->GetErrorStatus(), IJSON::StatusError);
  }
  const auto cut = Call("tovrin_module_AppendToRegExList",
                        {Argument(NewList()), ::Text(std::string_view("a\0b", 3))});
  EXPECT_EQ(Saved(cut.Object()), "{}") << "a zero byte ends the text in the middle";
  const Object escaped = NewList();
  Add(escaped, R"(a\"b)");
  const Object restored = NewList();
  EXPECT_TRUE(restored->Deserialize(escaped->Serialize().get()));
  EXPECT_EQ(Joined(restored), "a\"b");
  const Object injecting = NewList();
  Add(injecting, R"(a"},{"value":"b)");
  EXPECT_TRUE(restored->Deserialize(injecting->Serialize().get()));
  EXPECT_EQ(Size(restored), 2);
}

TEST(SerialisedForms, ALoadedListWrapsItsTextsOnceMore) {
  const Object list = NewList();
  Add(list, "a+");
  EXPECT_TRUE(Matches(list, "a+"));
  EXPECT_FALSE(Matches(list, "aa"));
  const Object restored = NewList();
  EXPECT_TRUE(restored->Deserialize(list->Serialize().get()));
  EXPECT_EQ(Joined(restored), "a+");
  EXPECT_TRUE(Matches(restored, "aa"));  // Contract: a wildcard has become an expression

  const Object anchored = NewList();
  Add(anchored, "regex(^a$)");
  EXPECT_TRUE(Matches(anchored, "a"));
  const Object twice = NewList();
  EXPECT_TRUE(twice->Deserialize(anchored->Serialize().get()));
  EXPECT_EQ(Joined(twice), "regex(^a$)");
  // Contract: now the matcher reads "regex(^a$)" as an expression.
  EXPECT_FALSE(Matches(twice, "a"));
}

TEST(SerialisedForms, AListTakesTheEntriesThatItCanRead) {
  const struct {
    const char* json;
    double size;
    bool isLoaded;
  } kRows[] = {
      {R"({"entries":[]})", 0, true},
      {R"({"entries":[{"value":"a"},{"value":"b"}]})", 2, true},
      // What the matcher is built with is a text like any other, and this matches it.
      {R"({"entries":[{"value":"thisis.*"}]})", 1, true},
      {R"({"entries":[{"value":"a"},5]})", 1, false},
      {R"({"entries":[{"value":"a"},{},{"value":1},[],{"value":"b"}]})", 2, false},
      {R"({"entries":{"value":"a"}})", 0, false},
      {R"({"entries":5})", 0, false},
      {R"({})", 0, false},
      {R"([])", 0, false},
      {R"({"entries":[{"value":"("}]})", 1, false},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.json);
    for (const bool isCustomers : {false, true}) {
      const Object list = NewList();
      Add(list, "before");
      // Contract: in a customer's policy nothing fails.
      EXPECT_EQ(Load(list, row.json, isCustomers), row.isLoaded || isCustomers);
      EXPECT_EQ(Size(list), row.size);
      EXPECT_FALSE(Matches(list, "before"));
    }
  }
  const Object list = NewList();
  Add(list, "before");
  EXPECT_FALSE(list->Deserialize(nullptr));
  EXPECT_EQ(Size(list), 0);
}

TEST(SerialisedForms, AThousandEntriesComeBack) {
  const Object list = NewList();
  for (int i = 0; i < 1000; ++i) Add(list, "entry" + std::to_string(i));
  const Object restored = NewList();
  EXPECT_TRUE(restored->Deserialize(list->Serialize().get()));
  EXPECT_EQ(Joined(restored), Joined(list));
  EXPECT_TRUE(Matches(restored, "entry999"));
  EXPECT_EQ(Saved(restored), Saved(list));
}

}  // namespace
