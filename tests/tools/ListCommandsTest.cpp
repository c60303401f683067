// The commands over list files, as a user starts them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/SharedData.h"
#include "tests/tools/TovrinProgram.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const char* const kInput = "www.example.com\n42\nads.x\nother\n";

class ListCommands : public testing::Test {
protected:
  std::string List(const std::string& text) { return fFolder.Write("test.list", text).string(); }
  ChildResult Match(const std::string& list, std::vector<std::string> options = {},
                    const std::string& input = kInput) {
    std::vector<std::string> arguments = {"match", List(list)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Tovrin(arguments, input);
  }
  ChildResult Check(const std::string& list, std::vector<std::string> options = {}) {
    std::vector<std::string> arguments = {"check", List(list)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Tovrin(arguments);
  }

  const CTemporaryFolder fFolder;
};

constexpr const char* kList = "# comment\n\n*.example.com\nregex(\\d+)\n  \t\nads.*\n";

TEST_F(ListCommands, MatchPrintsTheLinesThatMatchAsAWhole) {
  const ChildResult result = Match(kList);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "www.example.com\n42\nads.x\n");
  EXPECT_THAT(result.errors, IsEmpty());
  const ChildResult none = Match(kList, {}, "x42\nexample.com\n");
  EXPECT_EQ(none.status, 1);
  EXPECT_THAT(none.output, IsEmpty());
}

TEST_F(ListCommands, MatchHasTheHabitsOfGrep) {
  EXPECT_EQ(Match(kList, {"-v"}).output, "other\n");
  EXPECT_EQ(Match(kList, {"-c"}).output, "3\n");
  EXPECT_EQ(Match(kList, {"-vc"}).output, "1\n");
  EXPECT_EQ(Match(kList, {"-n"}).output, "1:www.example.com\n2:42\n3:ads.x\n");
  const ChildResult quiet = Match(kList, {"-q"});
  EXPECT_EQ(quiet.status, 0);
  EXPECT_THAT(quiet.output, IsEmpty());
  EXPECT_EQ(Match(kList, {"-q"}, "other\n").status, 1);
  EXPECT_EQ(Match(kList, {"-v"}, "42\n").status, 1);
  EXPECT_EQ(Match(kList, {"-c"}, "other\n").output, "0\n");
}

TEST_F(ListCommands, MatchNamesTheElement) {
  EXPECT_EQ(Match(kList, {"--which"}).output,
            "*.example.com\twww.example.com\nregex(\\d+)\t42\nads.*\tads.x\n");
  EXPECT_EQ(Match(kList, {"--which", "-n"}, "42\n").output, "1:regex(\\d+)\t42\n");
}

TEST_F(ListCommands, MatchAnchorsEveryLineAsAnExpression) {
  EXPECT_EQ(Match("a.c\nb\n", {"--anchor", "--which"}, "abc\nxabc\nb\n").output,
            "regex(^a.c$)\tabc\nregex(^b$)\tb\n");
}

TEST_F(ListCommands, MatchReadsFilesAndDropsMarksOfTheListAlone) {
  const std::string input = fFolder.Write("input", "a\nb\r\n").string();
  EXPECT_EQ(Tovrin({"match",
                    List("\xEF\xBB\xBF"
                         "a\r\nb\r\n"),
                    input})
                .output,
            "a\n");
  EXPECT_EQ(Tovrin({"match", "-", input}, "b*\n").output, "");
  EXPECT_EQ(Tovrin({"match", "-", input}, "[ab]*\n").output, "a\n");
}

TEST_F(ListCommands, MatchKeepsTheOrderOnManyThreads) {
  std::string input;
  std::string expected;
  for (int i = 0; i < 200'000; ++i) {
    const std::string line = std::to_string(i) + (i % 3 ? ".example.com" : ".example.org") + "\n";
    input += line;
    if (i % 3) expected += line;
  }
  EXPECT_EQ(Match("*.example.com\n", {"--threads", "8"}, input).output, expected);
}

TEST_F(ListCommands, MatchRefusesAListWithABadElement) {
  const ChildResult result = Match("good\nregex(()\n[b\n", {}, "good\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.output, IsEmpty());
  EXPECT_THAT(result.errors, HasSubstr("test.list:2: regex((): "));
  EXPECT_THAT(result.errors, HasSubstr("test.list:3: [b: "));
  EXPECT_THAT(result.errors, Not(HasSubstr("good")));
}

TEST_F(ListCommands, MatchSaysWhatItCannotRead) {
  for (const auto& arguments : {std::vector<std::string>{"match", "/nowhere/list"},
                                {"match", List("a\n"), "/nowhere/input"}}) {
    const ChildResult result = Tovrin(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("/nowhere/"));
  }
}

TEST_F(ListCommands, MatchAndRunNameTheOutputThatFails) {
  const std::string rules = fFolder.Write("test.rules", "otherwise \"v\";\n").string();
  for (const std::string& command : {"match " + List("a\n"), "run " + rules}) {
    ChildCall call;
    call.command = {"/bin/sh", "-c",
                    "'" + (BinDir() / "tovrin").string() + "' " + command + " > /dev/full"};
    call.input = "a\n";
    const ChildResult result = RunChild(call);
    EXPECT_NE(result.status, 0);
    EXPECT_THAT(result.errors, HasSubstr("cannot write 'standard output': "));
  }
}

TEST_F(ListCommands, CheckFindsNothingWrongWithAGoodList) {
  const ChildResult result = Check(kList);
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output,
              StartsWith("3 elements: 2 literal, 0 other wildcards, 1 expressions\n3 scanners"));
  EXPECT_THAT(result.output, HasSubstr("the list can be used\n"));
  EXPECT_THAT(result.errors, IsEmpty());
}

TEST_F(ListCommands, CheckNamesEachBadElement) {
  const ChildResult result = Check("good\nregex(()\n[b\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("test.list:2: regex((): Mismatched '(' and ')'"));
  EXPECT_THAT(result.output, HasSubstr("test.list:3: [b: "));
  EXPECT_THAT(result.output, HasSubstr("the list cannot be used\n"));
}

TEST_F(ListCommands, CheckNamesDuplicatesAndCoveredElements) {
  struct Row {
    const char* list;
    const char* finding;  // nothing: there is none
  };
  const Row rows[] = {
      {"a\nb\na\n", "test.list:3: a: stands in line 1 already"},
      {"www.a.com\n*.a.com\n", "test.list:1: www.a.com: is covered by '*.a.com' in line 2"},
      {"*.b.a.com\n*.a.com\n", "test.list:1: *.b.a.com: is covered by '*.a.com' in line 2"},
      {"abc*\nab*\n", "test.list:1: abc*: is covered by 'ab*' in line 2"},
      {"*xaby*\n*ab*\n", "test.list:1: *xaby*: is covered by '*ab*' in line 2"},
      {"ABc\n*B*\n", "test.list:1: ABc: is covered by '*B*' in line 2"},
      {"a\n*\n", "test.list:1: a: is covered by '*' in line 2"},
      {"a.com\n*.a.com\n", nullptr},
      {"ab*\n*ab\n", nullptr},
      {"*ab*\nab?\n", nullptr},
  };
  for (const Row& row : rows) {
    const std::string output = Check(row.list).output;
    const testing::Matcher<std::string> wanted =
        row.finding ? testing::Matcher<std::string>(HasSubstr(row.finding))
                    : testing::Matcher<std::string>(Not(HasSubstr("test.list:")));
    EXPECT_THAT(output, wanted) << row.list;
  }
}

TEST_F(ListCommands, CheckPrintsWhatTheListWasBuiltFrom) {
  const std::string output = Check("*.a.com\nregex(\\d+)\n", {"--scanners", "--prefixes", "--tree",
                                                              "--tokens", "--times", "--plan"})
                                 .output;
  for (const char* part :
       {"Generated merged scanners: #2 entries:\n^.*((\\.a\\.com))$\n((\\d+))\n",
        "Extracted [prefix, suffix] elements:\n", "Radix Tree data:\n", "Splitted regexes:\n",
        "Time Measurements:\nCollector #1:\n", "literal\t*.a.com\t.a.com\n",
        "always\tregex(\\d+)\t\n", "literal: 1\npieces: 0\nrequired: 0\nalways: 1\n"}) {
    EXPECT_THAT(output, HasSubstr(part));
  }
}

TEST_F(ListCommands, CheckSaysWhatItCannotRead) {
  const ChildResult result = Tovrin({"check", "/nowhere/list"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("/nowhere/list"));
}

}  // namespace
