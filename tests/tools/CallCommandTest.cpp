#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tools/TovrinProgram.h"

namespace {

ChildResult Call(const std::string& statements) {
  return TovrinWith("sound", {"call", statements});
}

TEST(CallCommand, PrintsTheLastResultAsOneLineOfJson) {
  const struct {
    const char* statements;
    const char* output;
  } rows[] = {
      {"true", "true\n"},
      {"1", "1\n"},
      {"1.0", "1\n"},
      {"-0", "0\n"},
      {"0.25", "0.25\n"},
      {"1e20", "100000000000000000000\n"},
      {"\"a\\\"b\\\\\\n\\u0001\"", "\"a\\\"b\\\\\\n\\u0001\"\n"},
      {"r\"\\d\"", "\"\\\\d\"\n"},
      {"r\"a\nb\"", "\"a\\nb\"\n"},
      {"[]", "[]\n"},
      {"[\"a\",r\"b\"]", "[\"a\",\"b\"]\n"},
      {"[1,2.5]", "[1,2.5]\n"},
      {"[ToBox(\"x\")]", "[\"x\"]\n"},
      {"Letters(\"abc\")", "[\"a\",\"b\",\"c\"]\n"},
      {"Length(\"a\\u0000b\")", "3\n"},
      {"Count([])", "0\n"},
      {"Count(Letters(\"four\"))", "4\n"},
      {"1; 2; \"three\";", "\"three\"\n"},
      {"not Same(\"a\", \"b\") and (false or Same(\"c\",\"c\"))", "true\n"},
      {"ToBox(\"text\")", "\"text\"\n"},
      {"NoBox()", "null\n"},
      {"FunctionName()", "\"Sample: FunctionName\"\n"},
      {"HasHost()", "true\n"},
      {"# a comment\n 1", "1\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.statements);
    const ChildResult result = Call(row.statements);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, row.output);
    EXPECT_EQ(result.errors, "");
  }
}

TEST(CallCommand, PrintsNothingForAProcedure) {
  const ChildResult result = Call("let b = ToBox(\"a\"); Box.Add(b, \"b\")");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "");
}

TEST(CallCommand, KeepsTheObjectAndNotACopy) {
  EXPECT_EQ(Call("let b = ToBox(\"a\"); let c = b; Box.Add(c, \"b\"); Box.Add(b, \"c\"); b").output,
            "\"abc\"\n");
}

TEST(CallCommand, LetsANameBeDefinedAgain) {
  EXPECT_EQ(Call("let x = \"a\"; let y = x; let x = \"b\"; [y, x]").output, "[\"a\",\"b\"]\n");
}

TEST(CallCommand, PicksTheOverloadThatTheTypesFit) {
  EXPECT_EQ(Call("Kind(\"a\", \"b\")").output, "\"text, text\"\n");
  EXPECT_EQ(Call("Kind(\"a\", 1)").output, "\"text, number\"\n");
  EXPECT_EQ(Call("Kind(ToBox(\"a\"), 1)").output, "\"box, number\"\n");
}

TEST(CallCommand, CallsTheOverloadWithTheMostFittingLeadingArgumentsWhereNoneFits) {
  // One of (STRING,...) twice: the first in the order of the text.
  EXPECT_EQ(Call("Kind(\"a\", true)").output, "\"text, text\"\n");
  EXPECT_EQ(Call("Kind(\"a\", 1, 2)").output, "\"text, number\"\n");
  EXPECT_EQ(Call("Kind(ToBox(\"a\"))").output, "\"box, number\"\n");
  EXPECT_EQ(Call("Kind(true)").output, "\"text, text\"\n");
}

TEST(CallCommand, TurnsAFailureStatusIntoWordsAndStatusThree) {
  const struct {
    const char* statements;
    const char* errors;
  } rows[] = {
      {"Fail(1, 2)", "invalid parameter 1 in function 'Fail'\n"},
      {"Fail(12, 2)", "invalid parameter 12 in function 'Fail'\n"},
      {"Fail(3, 4)", "invalid object used for parameter 3 in function 'Fail'\n"},
      {"Fail(2, 1)", "runtime error from function 'Fail'\n"},
      {"Fail(300, 7)", "runtime error from function 'Fail'\n"},
      {"FailStep(1, 2)", "invalid parameter 1 in procedure 'FailStep'\n"},
      {"Length(Fail(1, 2))", "invalid parameter 1 in function 'Fail'\n"},
      {"Box.Add(NoBox(), \"x\")", "invalid object used for parameter 1 in procedure 'Box.Add'\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.statements);
    const ChildResult result = Call(row.statements);
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, row.errors);
  }
}

TEST(CallCommand, SurvivesAnExceptionWithStatusFour) {
  const ChildResult result = Call("Throw(\"out of luck\")");
  EXPECT_EQ(result.status, 4);
  EXPECT_EQ(result.errors, "runtime error from function 'Throw': out of luck\n");
}

TEST(CallCommand, SurvivesWhatIsNoStandardException) {
  const ChildResult result = TovrinWith("throwing", {"call", "Odd(\"x\")"});
  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.errors, ::testing::HasSubstr(
                                 "runtime error from function 'Odd': not a standard exception\n"));
  EXPECT_EQ(TovrinWith("throwing", {"call", "Step()"}).status, 4);
}

TEST(CallCommand, SurvivesWhatAnObjectThrows) {
  const struct {
    const char* statements;
    const char* errors;
  } rows[] = {
      {"ToBomb(\"boom\")", "runtime error from type 'Bomb': boom\n"},
      {"[ToBomb(\"boom\")]", "runtime error from type 'Bomb': boom\n"},
      {"ToBomb(\"odd\")", "runtime error from type 'Bomb': not a standard exception\n"},
      {"Save(ToBomb(\"boom\"))", "runtime error from type 'Bomb': boom\n"},
      {"Save(ToBomb(\"odd\"))", "runtime error from type 'Bomb': not a standard exception\n"},
      {"Load(\"Bomb\", \"{}\")", "runtime error from type 'Bomb': will not load\n"},
      {"Load(\"Dud\", \"{}\")", "runtime error from type 'Dud': never made\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.statements);
    const ChildResult result = TovrinWith("throwing", {"call", row.statements});
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, ::testing::EndsWith(row.errors));  // behind what its stop throws
  }
}

TEST(CallCommand, PrintsJsonWhateverTheBytes) {
  EXPECT_EQ(Call("\"a\xFF\"").output, "\"a\xEF\xBF\xBD\"\n");
  EXPECT_EQ(Call("Letters(\"\xC3\xA9\")").output, "[\"\xEF\xBF\xBD\",\"\xEF\xBF\xBD\"]\n");
}

TEST(CallCommand, NamesTheColumnOfAMistakeAndEndsWithStatusTwo) {
  const struct {
    const char* statements;
    const char* errors;
  } rows[] = {
      {"", "column 1: the end instead of a value\n"},
      {"Length(\"a\"", "column 11: the end instead of ',' or ')'\n"},
      {"1; Lenth(\"a\")", "column 4: there is no function 'Lenth'\n"},
      {"Length(x)", "column 8: there is no variable 'x'\n"},
      {"x; let x = 1", "column 1: there is no variable 'x'\n"},
      {"Length", "column 1: 'Length' is a function and takes brackets\n"},
      {"let x = Box.Add(ToBox(\"a\"), \"b\")", "column 9: procedure 'Box.Add' has no result\n"},
      {"1 and true", "column 1: a condition is a BOOLEAN, and this is a NUMBER\n"},
      {"not \"a\"", "column 5: a condition is a BOOLEAN, and this is a STRING\n"},
      {"[1, \"a\"]", "column 5: a STRING in a vector of NUMBER\n"},
      {"[[]]", "column 2: a vector holds no containers\n"},
      {"1;\n  Lenth(1)", "line 2, column 3: there is no function 'Lenth'\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.statements);
    const ChildResult result = Call(row.statements);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, row.errors);
  }
}

TEST(CallCommand, FindsAMistakeBeforeAnythingHappens) {
  EXPECT_EQ(Call("Throw(\"x\"); Lenth(1)").status, 2);
}

TEST(CallCommand, ReadsTheLinesOfAFile) {
  const CTemporaryFolder folder;
  const std::string path = folder.Write("list",
                                        "\xEF\xBB\xBF"
                                        "a\r\n\nb c");
  EXPECT_EQ(Call("lines(r\"" + path + "\")").output, "[\"a\",\"\",\"b c\"]\n");
  EXPECT_EQ(Call("Count(lines(r\"" + folder.Write("none", "").string() + "\"))").output, "0\n");
}

TEST(CallCommand, ReportsAFileThatCannotBeRead) {
  const ChildResult result = Call("lines(\"/nowhere/at/all\")");
  EXPECT_EQ(result.status, 4);
  EXPECT_EQ(result.errors,
            "runtime error from function 'lines': cannot read '/nowhere/at/all': No such file or "
            "directory\n");
}

}  // namespace
