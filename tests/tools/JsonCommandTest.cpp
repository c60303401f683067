#include <gtest/gtest.h>

#include <string>

#include "tests/tools/TovrinProgram.h"

namespace {

TEST(JsonCommand, WritesTheInputInAnotherForm) {
  const struct {
    std::vector<std::string> options;
    std::string input;
    std::string output;
  } rows[] = {
      {{}, "{ \"b\" : [1, 2.50], \"a\" : null }\n", "{\"b\":[1,2.50],\"a\":null}\n"},
      {{"--to", "compact"}, "[ ]", "[]\n"},
      {{"--to", "indented"}, "[1]", "[\n  1\n]\n"},
      {{"--to", "indented", "--indent", "\t"}, "[1]", "[\n\t1\n]\n"},
      {{"--keep-order"}, "{\"b\":1,\"a\":2}", "{\"b\":1,\"a\":2}\n"},
      {{"--to", "msgpack"},
       "{\"a\":[1]}",
       "\x81\xa1"
       "a\x91\x01"},
      {{},
       "\x81\xa1"
       "a\x91\x01",
       "{\"a\":[1]}\n"},
      {{"--to", "msgpack", "--no-keep-order"}, "\x91\x01", "\x91\x01"},
      {{}, "7", "7\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.input);
    std::vector<std::string> arguments{"json"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    const ChildResult result = Tovrin(arguments, row.input);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, row.output);
    EXPECT_EQ(result.errors, "");
  }
}

TEST(JsonCommand, NamesTheLineOfAMistakeAsTheParserCounts) {
  const ChildResult first = Tovrin({"json"}, "{");
  EXPECT_EQ(first.status, 1);
  EXPECT_EQ(first.output, "");
  EXPECT_EQ(first.errors, "line 0: illegal object\n");
  const ChildResult third = Tovrin({"json"}, "\n\n{");
  EXPECT_EQ(third.status, 1);
  EXPECT_EQ(third.errors, "line 2: illegal object\n");
}

TEST(JsonCommand, RefusesAFormThatItDoesNotKnow) {
  EXPECT_EQ(Tovrin({"json", "--to", "xml"}, "1").status, 2);
}

ChildResult Call(const std::string& statements, bool isCustomers = false) {
  if (isCustomers) return Tovrin({"call", "--customer-policy", statements});
  return Tovrin({"call", statements});
}

TEST(SavedValues, ArePrintedInTheirSerialisedForm) {
  EXPECT_EQ(Call(R"(ToTessarin("a\"b"))").output, "{\"value\":\"a\\\"b\"}\n");
  EXPECT_EQ(Call(R"(ToTessarinList(["a"]))").output,
            "{\"type\":\"Tessarin.List\",\"entries\":[{\"value\":\"regex(^a$)\"}]}\n");
  EXPECT_EQ(Call(R"(JSON.FromString("[ 1 ]"))").output, "[1]\n");
  EXPECT_EQ(Call("JSON.CreateEmptyObject()").output, "{}\n");
  EXPECT_EQ(Call(R"(ToString(JSON.FromString("{ }")))").output, "\"{}\"\n");
}

TEST(SavedValues, ComeBackFromText) {
  EXPECT_EQ(Call(R"(Save(ToTessarin("a")))").output, "\"{\\\"value\\\":\\\"a\\\"}\"\n");
  EXPECT_EQ(Call(R"(let x = Load("Tessarin", Save(ToTessarin("a+"))); )"
                 R"(Tessarin.Matches(x, "aa"))")
                .output,
            "true\n");
  EXPECT_EQ(Call(R"(let x = Load("Tessarin.List", "{\"entries\":[{\"value\":\"a+\"}]}"); )"
                 R"(Size(x))")
                .output,
            "1\n");
  EXPECT_EQ(Call(R"(Load("JSON", "[1, 2]"))").output, "[1,2]\n");
}

TEST(SavedValues, ThatCannotBeLoadedAreFailures) {
  const char* const bad = R"(Load("Tessarin.List", "{\"entries\":[5]}"))";
  EXPECT_EQ(Call(bad).status, 3);
  EXPECT_EQ(Call(bad).errors, "a Tessarin.List cannot be loaded from this\n");
  // A customer's list never fails to load.
  EXPECT_EQ(Call(bad, true).status, 0);
  EXPECT_EQ(Call(bad, true).output, "{\"type\":\"Tessarin.List\",\"entries\":[]}\n");
  EXPECT_EQ(Call(R"(Load("Tessarin", "{"))").errors, "what is loaded is no JSON\n");
  EXPECT_EQ(Call(R"(Load("Tessarin", "{"))").status, 3);
  EXPECT_EQ(Call(R"(JSON.FromString("{"))").errors,
            "invalid parameter 1 in function 'JSON.FromString'\n");
}

TEST(SavedValues, AreAskedForInTheRightWords) {
  const struct {
    const char* statement;
    const char* errors;
  } rows[] = {
      {"Save()", "column 1: Save takes the value to save\n"},
      {"Save(1)", "column 6: a NUMBER has no saved form\n"},
      {"Load(\"Tessarin\")", "column 1: Load takes a type's name in quotes and the saved form\n"},
      {"Load(\"Pen\", \"{}\")", "column 6: there is no type 'Pen' to load\n"},
      {"Load(\"STRING\", \"{}\")", "column 6: there is no type 'STRING' to load\n"},
      {"Load(\"Tessarin\", 1)", "column 18: the saved form is a STRING\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Call(row.statement).errors, row.errors);
    EXPECT_EQ(Call(row.statement).status, 2);
  }
}

}  // namespace
