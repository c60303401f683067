#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/SharedData.h"
#include "tests/tools/TestModules.h"
#include "tests/tools/TovrinProgram.h"

namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

const char* const kReport = "[0-9]+ lines in [0-9.]+ s, [0-9]+ lines/s\n";

class RunCommand : public ::testing::Test {
protected:
  // Rules over an input, by the sound module of the tests.
  ChildResult Run(const std::string& rules, const std::string& input,
                  std::vector<std::string> options = {}) {
    std::vector<std::string> arguments = {"run", Rules(rules), "-"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return TovrinWith("sound", arguments, input);
  }
  std::string Path() const { return (fFolder.Path() / "test.rules").string(); }
  std::string Rules(const std::string& text) { return fFolder.Write("test.rules", text).string(); }

  const CTemporaryFolder fFolder;
};

TEST_F(RunCommand, PrintsVerdictTabLine) {
  const ChildResult result =
      Run("let a = \"one\";\n"
          "when Same(text, a) then \"first\";\n"
          "when Same(text, \"two\") or Same(text, a) then \"second\"; # not for one\n"
          "otherwise \"rest\";\n",
          "one\ntwo\n\nthree\tx\r\nlast");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "first\tone\nsecond\ttwo\nrest\t\nrest\tthree\tx\r\nrest\tlast\n");
  EXPECT_THAT(result.errors, MatchesRegex(kReport));
  EXPECT_THAT(result.errors, StartsWith("5 lines"));
}

TEST_F(RunCommand, CombinesConditions) {
  const ChildResult result = Run(
      "when not (Same(text, \"a\") or Same(text, \"b\")) and not Same(text, \"c\") then \"other\";"
      "when Same(text, \"c\") then \"c\";",
      "a\nb\nc\nd\n");
  EXPECT_EQ(result.output, "none\ta\nnone\tb\nc\tc\nother\td\n");
}

TEST_F(RunCommand, ReadsAFileAsWellAsStandardInput) {
  const std::string input = fFolder.Write("input", "x\ny\n");
  const std::string rules = Rules("otherwise \"v\";");
  EXPECT_EQ(TovrinWith("sound", {"run", rules, input}).output, "v\tx\nv\ty\n");
  EXPECT_EQ(TovrinWith("sound", {"run", rules}, "z\n").output, "v\tz\n");
  EXPECT_EQ(TovrinWith("sound", {"run", "-", input}, "otherwise \"w\";").output, "w\tx\nw\ty\n");
}

TEST_F(RunCommand, DropsByteOrderMarkAndCarriageReturnsOfRules) {
  EXPECT_EQ(Run("\xEF\xBB\xBF"
                "otherwise\r\n\"v\";\r\n",
                "x\n")
                .output,
            "v\tx\n");
}

TEST_F(RunCommand, LeavesTheBytesOfTheInputAlone) {
  const std::string line("\xEF\xBB\xBF\0\xFF x", 7);
  EXPECT_EQ(Run("otherwise \"v\";", line).output, "v\t" + line + "\n");
}

TEST_F(RunCommand, PrintsOnlyCountsInASummary) {
  const std::string rules =
      "when Same(text, \"a\") then \"x\"; when Same(text, \"b\") then \"y\";"
      "when Same(text, \"c\") then \"x\"; when Same(text, \"d\") then \"z\";";
  EXPECT_EQ(Run(rules, "a\nb\nc\nz\n", {"--summary"}).output, "x\t2\ny\t1\nz\t0\nnone\t1\n");
  EXPECT_EQ(Run("otherwise \"v\";", "", {"--summary"}).output, "v\t0\n");
}

TEST_F(RunCommand, CountsVerdictsOfTheRunAndOfTheFileUnderOneName) {
  const std::string rules =
      "when Same(text, \"a\") then \"error\"; when Same(text, \"b\") then \"none\";"
      "when not FailOn(text, \"bad\") then \"x\";";
  const ChildResult sound = Run(rules, "a\nb\nc\n", {"--summary"});
  EXPECT_EQ(sound.output, "error\t1\nnone\t2\nx\t0\n");
  EXPECT_EQ(sound.status, 0) << "the file's own verdict is no failure";
  const ChildResult failed = Run(rules, "a\nbad\n", {"--summary"});
  EXPECT_EQ(failed.output, "error\t2\nnone\t0\nx\t0\n");
  EXPECT_EQ(failed.status, 4);
}

TEST_F(RunCommand, ReadsARawTextOfSeveralLines) {
  const ChildResult result =
      Run("when Same(text, r\"a\nb\") then \"x\"; otherwise \"y\";\nwhen", "a\n");
  EXPECT_EQ(result.errors, Path() +
                               ":3:1: 'when' instead of the end: nothing can stand behind "
                               "'otherwise'\n");
}

TEST_F(RunCommand, JudgesNothingOfAnEmptyInput) {
  const ChildResult result = Run("otherwise \"v\";", "");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, StartsWith("0 lines in "));
}

TEST_F(RunCommand, NamesFileLineAndColumnOfAMistake) {
  const struct {
    const char* rules;
    const char* errors;
  } rows[] = {
      {"# c\nwhen Same(text, ) then \"a\";", ":2:17: ')' instead of a value\n"},
      {"when Sane(text, \"a\") then \"a\";", ":1:6: there is no function 'Sane'\n"},
      {"when Length(text) then \"a\";", ":1:6: a condition is a BOOLEAN, and this is a NUMBER\n"},
      {"when Same(text, b) then \"a\"; let b = \"x\";", ":1:17: there is no variable 'b'\n"},
      {"let text = \"x\"; otherwise \"a\";", ":1:1: 'text' is the input line\n"},
      {"let a = 1; let a = 2; otherwise \"a\";", ":1:12: 'a' has a value already\n"},
      {"let a = text; otherwise \"a\";", ":1:9: there is no variable 'text'\n"},
      {"let a = 1;", ":1:11: the file has no rule\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rules);
    const ChildResult result = Run(row.rules, "x\n");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, Path() + row.errors);
  }
}

TEST_F(RunCommand, ReportsALetThatFailsWithItsPlace) {
  const std::string path = Path();
  const ChildResult status = Run("let a =\n  Fail(1, 2); otherwise \"a\";", "x\n");
  EXPECT_EQ(status.status, 3);
  EXPECT_EQ(status.errors, path + ":2:3: invalid parameter 1 in function 'Fail'\n");
  const ChildResult exception = Run("let a = Throw(\"no\"); otherwise \"a\";", "x\n");
  EXPECT_EQ(exception.status, 4);
  EXPECT_EQ(exception.errors, path + ":1:9: runtime error from function 'Throw': no\n");
}

TEST_F(RunCommand, GivesALineOnWhichARuleFailsTheVerdictErrorAndGoesOn) {
  const ChildResult result =
      Run("when Same(text, \"a\") then \"a\";\nwhen FailOn(text, \"bad\") then \"good\";",
          "x\nbad\na\nbad\ny\n");
  EXPECT_EQ(result.status, 4);
  EXPECT_EQ(result.output, "good\tx\nerror\tbad\na\ta\nerror\tbad\ngood\ty\n");
  const std::string rule = Path() + ":2: ";
  EXPECT_THAT(result.errors,
              StartsWith(rule + "input line 2: invalid parameter 2 in function 'FailOn'\n" + rule +
                         "input line 4: invalid parameter 2 in function 'FailOn'\n5 lines"));
}

TEST_F(RunCommand, StopsAtTheFirstFailureWhenAskedTo) {
  const ChildResult result = Run("when FailOn(text, \"bad\") then \"good\";", "x\nbad\na\nbad\n",
                                 {"--fail-fast", "--summary"});
  EXPECT_EQ(result.status, 4);
  EXPECT_EQ(result.output, "good\t1\nerror\t1\n");
  EXPECT_THAT(result.errors, HasSubstr("input line 2: "));
  EXPECT_THAT(result.errors, ::testing::Not(HasSubstr("input line 4: ")));
}

// Enough lines for many blocks, with failures among them: the output of any number of threads is
// that of one, to the byte.
TEST_F(RunCommand, KeepsTheOrderOnAnyNumberOfThreads) {
  std::string input;
  for (int i = 0; i < 60'000; ++i) {
    input += i % 20'011 == 7 ? "bad" : "line " + std::to_string(i) + std::string(i % 50, '.');
    input += '\n';
  }
  const std::string rules =
      "when FailOn(text, \"bad\") and Same(text, \"line 5.....\") then \"five\"; otherwise \"v\";";
  const ChildResult one = Run(rules, input);
  const ChildResult eight = Run(rules, input, {"--threads", "8"});
  EXPECT_EQ(one.status, 4);
  EXPECT_EQ(eight.status, 4);
  EXPECT_TRUE(one.output == eight.output);
  const auto words = [](const std::string& errors) {
    return errors.substr(0, errors.rfind('\n', errors.size() - 2));
  };
  EXPECT_EQ(words(one.errors), words(eight.errors));
  EXPECT_EQ(Run(rules, input, {"--threads", "3", "--summary"}).output,
            "five\t1\nv\t59996\nerror\t3\n");
}

TEST_F(RunCommand, EndsQuietlyWhenNobodyReadsItsOutput) {
  std::string input;
  for (int i = 0; i < 200'000; ++i) input += "some line of input\n";
  const std::string rules = Rules("otherwise \"v\";");
  for (const char* threads : {"1", "4"}) {
    ChildCall call;
    call.command = {(BinDir() / "tovrin").string(), "run", rules, "--threads", threads};
    call.input = input;
    call.isOutputClosed = true;
    const ChildResult result = RunChild(call);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
  }
}

// The input is a pipe from which nothing more comes: who waited for it would not end.
TEST_F(RunCommand, WaitsForNoMoreInputOnceItStops) {
  ChildCall call;
  call.command = {(BinDir() / "tovrin").string(), "run", "--threads", "3", "--module",
                  TestModule("sound").string()};
  call.isInputEndless = true;
  ChildCall failing = call;
  failing.command.insert(failing.command.end(),
                         {"--fail-fast", Rules("when FailOn(text, \"bad\") then \"good\";")});
  failing.input = "x\nbad\n";
  const ChildResult failed = RunChild(failing);
  EXPECT_EQ(failed.status, 4);
  EXPECT_EQ(failed.output, "good\tx\nerror\tbad\n");

  ChildCall unread = call;
  unread.command.push_back(Rules("otherwise \"v\";"));
  unread.input = "x\n";
  unread.isOutputClosed = true;
  const ChildResult quiet = RunChild(unread);
  EXPECT_EQ(quiet.status, 0);
  EXPECT_EQ(quiet.errors, "");
}

TEST_F(RunCommand, ShowsHowFarItIsOnATerminalWhenItTakesLonger) {
  ChildCall call;
  call.command = {(BinDir() / "tovrin").string(), "run", Rules("when Pause(1.1) then \"v\";"),
                  "--module", TestModule("sound").string()};
  call.input = "x\n";
  EXPECT_THAT(RunChild(call).errors, MatchesRegex(kReport)) << "no terminal";

  call.isErrorsTerminal = true;
  const ChildResult result = RunChild(call);
  EXPECT_EQ(result.output, "v\tx\n");
  const std::string bar =
      "\r[########################################] 100 %  1 lines, 1 lines/s\x1b[K";
  EXPECT_THAT(result.errors, StartsWith(bar + "\r\x1b[K1 lines in "))
      << "drawn, and gone before the report";
}

TEST_F(RunCommand, SaysWhatCannotBeRead) {
  const ChildResult rules = TovrinWith("sound", {"run", "/nowhere/x.rules"});
  EXPECT_EQ(rules.status, 1);
  EXPECT_EQ(rules.errors, "cannot read '/nowhere/x.rules': No such file or directory\n");
  const ChildResult input =
      TovrinWith("sound", {"run", Rules("otherwise \"v\";"), "/nowhere/input"});
  EXPECT_EQ(input.status, 1);
  EXPECT_EQ(input.errors, "cannot read '/nowhere/input': No such file or directory\n");
  EXPECT_EQ(TovrinWith("sound", {"run", Rules("otherwise \"v\";"), fFolder.Path().string()}).status,
            1);
}

TEST_F(RunCommand, RunsTheExamples) {
  const auto examples = SourceDir() / "examples";
  const std::string requests = (examples / "requests.txt").string();
  const ChildResult gateway =
      Tovrin({"run", (examples / "gateway.rules").string(), requests, "--summary"});
  EXPECT_EQ(gateway.status, 0);
  EXPECT_EQ(gateway.output,
            "malformed\t4\nintranet\t22\ntracker\t90\ndownload\t30\nbare address\t23\nleak\t5\n"
            "allow\t156\n");
  const ChildResult twenty =
      Tovrin({"run", (examples / "twenty.rules").string(), requests, "--threads", "2"});
  EXPECT_EQ(twenty.status, 0);
  EXPECT_EQ(std::count(twenty.output.begin(), twenty.output.end(), '\n'), 330);
}

TEST_F(RunCommand, RunsTwentyExpressionsOverRealAddresses) {
  const auto urls = SharedPath("data/urls-100k.txt");
  if (!urls) GTEST_SKIP() << "no shared data here";
  std::string input;
  for (const std::string& line : ReadLines(*urls)) {
    if (input.size() > 200'000) break;
    input += line + '\n';
  }
  const auto rules = SourceDir() / "examples" / "twenty.rules";
  const ChildResult result = Tovrin({"run", rules.string(), "--threads", "2"}, input);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'),
            std::count(input.begin(), input.end(), '\n'));
}

}  // namespace
