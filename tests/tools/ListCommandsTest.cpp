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
  std::string List(const std::string& text, const std::string& name = "test.list") {
    return fFolder.Write(name, text).string();
  }
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
      {"ABC\nabc\n", "test.list:2: abc: says the same as 'ABC' in line 1"},
      {"*q*\n*Q*\n", "test.list:2: *Q*: says the same as '*q*' in line 1"},
      {"*\n**\n", "test.list:2: **: says the same as '*' in line 1"},
      {"a\n*\n", "test.list:1: a: is covered by '*' in line 2"},
      {"a.com\n*.a.com\n", nullptr},
      {"ab*\n*ab\n", nullptr},
      {"*ab*\nab?\n", nullptr},
      {"regex(\\d)\nregex(\\D)\n", nullptr},
      {"(?i)abc\nabc\n", nullptr},
      {"regex((?i)abc)\n", nullptr},
  };
  for (const Row& row : rows) {
    const std::string output = Check(row.list).output;
    const testing::Matcher<std::string> wanted =
        row.finding ? testing::Matcher<std::string>(HasSubstr(row.finding))
                    : testing::Matcher<std::string>(Not(HasSubstr("test.list:")));
    EXPECT_THAT(output, wanted) << row.list;
  }
}

// Of two elements that say the same, one stays.
TEST_F(ListCommands, CheckNamesOnlyOneOfTwoEqualElements) {
  const std::string output = Check("*q*\n*Q*\nabq\n").output;
  EXPECT_THAT(output, HasSubstr("test.list:2: "));
  EXPECT_THAT(output, HasSubstr("test.list:3: abq: is covered by '*q*' in line 1"));
  EXPECT_THAT(output, Not(HasSubstr("test.list:1: ")));
}

// From how many elements of a kind on shared beginnings are looked for, by what the environment
// says when the process starts.
TEST_F(ListCommands, TheEnvironmentSaysFromWhichSizeOnBeginningsAreShared) {
  struct Row {
    const char* value;  // null: not set
    int size;           // of the list
    bool isGrouped;
  };
  const Row rows[] = {
      {nullptr, 40, false},
      {"", 1, true},
      {"0", 1, true},
      {"-1", 40, false},
      {"-9223372036854775808", 40, false},
      {"abc", 1, true},
      {"12x", 12, true},
      {"12x", 11, false},
      {" 5", 5, true},
      {" 5", 4, false},
      {"\t+5", 5, true},
      {"99999999999999999999999999", 40, false},
      {"-99999999999999999999999999", 40, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.value ? row.value : "not set");
    std::string list;
    for (int i = 0; i < row.size; ++i) list += "regex(abc" + std::to_string(i) + ")\n";
    ChildCall call;
    call.command = {"/usr/bin/env", "-u", "QRX_REGEX_OPTIMIZE_MIN_LIST_SIZE"};
    if (row.value) {
      call.command.push_back(std::string("QRX_REGEX_OPTIMIZE_MIN_LIST_SIZE=") + row.value);
    }
    for (const std::string& word : {(BinDir() / "tovrin").string(), std::string("check"),
                                    std::string("--prefixes"), List(list)}) {
      call.command.push_back(word);
    }
    const ChildResult result = RunChild(call);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output.find("'abc") != std::string::npos, row.isGrouped) << result.output;
  }
}

TEST_F(ListCommands, CheckPrintsWhatTheListWasBuiltFrom) {
  const std::string output = Check("*.a.com\nregex(\\d+)\n", {"--scanners", "--prefixes", "--tree",
                                                              "--tokens", "--times", "--plan"})
                                 .output;
  for (const char* part : {"Generated merged scanners: #2 entries:\n^.*((\\.a\\.com))$\n((\\d+))\n",
                           "Extracted [prefix, suffix] elements:\n", "Radix Tree data:\n",
                           "Splitted regexes:\n", "Time Measurements:\nCollector #1:\n",
                           "end\t*.a.com\t.a.com\n", "shared\tregex(\\d+)\t\n"}) {
    EXPECT_THAT(output, HasSubstr(part));
  }
}

TEST_F(ListCommands, CheckPlansEachElement) {
  const std::string output =
      Check(
          "*.a.com\nname\nstart*\n*in*\n*one*two*\nregex((a|b)cd)\nregex(.*key\\d)\n"
          "regex(\\d+)\nregex((.)\\1)\nregex((x)\\1.*longer)\n",
          {"--plan"})
          .output;
  for (const char* part : {
           "end\t*.a.com\t.a.com\n",
           "exact\tname\tname\n",
           "beginning\tstart*\tstart\n",
           "inside\t*in*\tin\n",
           "pieces\t*one*two*\ttwo\n",
           "literals\tregex((a|b)cd)\tacd bcd\n",
           "required\tregex(.*key\\d)\tkey\n",
           "shared\tregex(\\d+)\t\n",
           "always\tregex((.)\\1)\t\tits scanner is asked: it refers back\n",
           "required\tregex((x)\\1.*longer)\tlonger\tits scanner is asked: it refers back\n",
           "exact: 1\nend: 1\nbeginning: 1\ninside: 1\npieces: 1\nliterals: 1\nrequired: 2\n"
           "shared: 1\nalways: 1\nmemory: ",
           "likely to cost most:\n  always\tregex((.)\\1)\n  shared\tregex(\\d+)\n"
           "  required\tregex(.*key\\d)\n  required\tregex((x)\\1.*longer)\n",
       }) {
    EXPECT_THAT(output, HasSubstr(part));
  }
  EXPECT_THAT(Check("*.a.com\n", {"--plan"}).output,
              HasSubstr("no element needs more than its literals\n"));
}

TEST_F(ListCommands, CheckMeasuresAListOnASample) {
  const std::string texts = List("key\nkey1\r\nkey2\nother\n\n", "texts");
  const std::string output =
      Check("regex(.*key\\d)\nregex((?=\\d).+)\nregex(\\w)\n*.a.com\n", {"--sample", texts}).output;
  EXPECT_THAT(output, HasSubstr("sample: 5 texts, 2 match; the first pass took "));
  EXPECT_THAT(output, HasSubstr(" ns (median), "));
  EXPECT_THAT(output, HasSubstr(" ns (99.9 %), "));
  EXPECT_THAT(output, HasSubstr("run most often in vain (and with a match):\n"
                                "  5 (0)\tregex((?=\\d).+)\n  1 (2)\tregex(.*key\\d)\n"));
  EXPECT_THAT(Check("*.a.com\n", {"--sample", texts}).output,
              HasSubstr("no element was run in vain\n"));
  const std::string hard = List(std::string(1'200'000, 'a') + "\n", "hard");
  EXPECT_THAT(Check("regex((x*)\\1(?:a|b)*[0-9])\n", {"--sample", hard}).output,
              HasSubstr("1 texts were too much for an expression\n"));

  const ChildResult missing = Tovrin({"check", "--sample", "/nowhere/texts", List("a\n")});
  EXPECT_EQ(missing.status, 2);
  EXPECT_THAT(missing.errors, HasSubstr("/nowhere/texts"));
}

TEST_F(ListCommands, CheckSaysWhatItCannotRead) {
  const ChildResult result = Tovrin({"check", "/nowhere/list"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("/nowhere/list"));
}

}  // namespace
