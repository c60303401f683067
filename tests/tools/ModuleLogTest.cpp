// What --log and --log-file do, seen from outside of the program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/SharedData.h"
#include "tests/tools/RunProgram.h"
#include "tools/tovrin/CModuleLog.h"

namespace {

using RefHost::LogSettings;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// An expression that does not compile, which the module says in its routine trace.
constexpr const char* kBadExpression = "ToTessarin(\"(\")";
// Level, class, function, file and line in front of the message.
constexpr const char* kTrace =
    "debug 3 in Tessarin, CRegex::Create \\(Common\\\\CRegex:[0-9]+\\): "
    "String is not a valid regex: '\\(' - error: .+";

ProgramResult CallWith(std::vector<std::string> options) {
  options.insert(options.begin(), {"call", kBadExpression});
  return RunProgram(options);
}

class LogFile {
public:
  LogFile()
      : fPath(std::filesystem::temp_directory_path() /
              ("tovrin_log_test_" + std::to_string(getpid()))) {}
  ~LogFile() { std::filesystem::remove(fPath); }
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  std::string Path() const { return fPath.string(); }
  std::vector<std::string> Lines() const { return ReadLines(fPath); }

private:
  const std::filesystem::path fPath;
};

}  // namespace

TEST(ModuleLog, IsClosedUnlessItIsAskedFor) {
  const ProgramResult result = CallWith({});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
}

TEST(ModuleLog, PrintsLevelClassFunctionFileAndLine) {
  const ProgramResult result = CallWith({"--log", "3"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.errors, ContainsRegex(kTrace));
  EXPECT_EQ(result.output, CallWith({}).output);
}

TEST(ModuleLog, LetsThroughWhatLevelAndFunctionsSelect) {
  const struct {
    const char* selection;
    bool isPrinted;
  } rows[] = {
      {"0", false},
      {"1", false},
      {"2", false},
      {"3", true},
      {"4000000000", true},
      {"3,Create", true},
      {"3,Search", false},
      {"3,Search,Create", true},
      {"3,CRegex::Create", true},
      // The gate does not know the class, the line does.
      {"3,CVariant::Create", false},
      {"3,CRegex::Search", false},
      {"2,Create", false},
      // Names are told apart by case, and are whole names.
      {"3,create", false},
      {"3,Creat", false},
  };
  for (const auto& row : rows) {
    const ProgramResult result = CallWith({"--log", row.selection});
    EXPECT_EQ(result.status, 0) << row.selection;
    EXPECT_EQ(!result.errors.empty(), row.isPrinted) << row.selection << ": " << result.errors;
  }
}

TEST(ModuleLog, StandsBeforeTheCommandAsWell) {
  const ProgramResult result = RunProgram({"--log=3", "call", kBadExpression});
  EXPECT_THAT(result.errors, ContainsRegex(kTrace));
}

TEST(ModuleLog, IsAppendedToAFile) {
  const LogFile file;
  for (int run = 0; run < 2; ++run) {
    const ProgramResult result = CallWith({"--log", "3", "--log-file", file.Path()});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
  }
  EXPECT_THAT(file.Lines(), ElementsAre(ContainsRegex(kTrace), ContainsRegex(kTrace)));
}

TEST(ModuleLog, MakesAnEmptyFileWhenNothingIsLogged) {
  const LogFile file;
  EXPECT_EQ(CallWith({"--log-file", file.Path()}).status, 0);
  EXPECT_THAT(file.Lines(), IsEmpty());
}

TEST(ModuleLog, NeedsAFileThatCanBeWritten) {
  const ProgramResult result = CallWith({"--log", "3", "--log-file", "/no/such/folder/log"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "cannot write to log file '/no/such/folder/log': No such file or directory\n");
}

TEST(ModuleLog, RefusesASelectionThatItCannotRead) {
  for (const char* selection :
       {"", "x", "-1", "3x", "3,", "3,,Create", ",Create", "3 ,Create", "4294967296", "Create"}) {
    const ProgramResult result = CallWith({"--log", selection});
    EXPECT_EQ(result.status, 2) << selection;
    EXPECT_THAT(result.errors, HasSubstr("--log")) << selection;
  }
}

TEST(LogSettings, ChangeOnlyWhenTheTextCanBeRead) {
  LogSettings settings;
  EXPECT_TRUE(settings.Select("7,One,C::Two"));
  EXPECT_FALSE(settings.Select("8,,"));
  EXPECT_EQ(settings.level, 7U);
  EXPECT_THAT(settings.functions, ElementsAre("One", "C::Two"));
  EXPECT_TRUE(settings.Select("8"));
  EXPECT_EQ(settings.level, 8U);
  EXPECT_THAT(settings.functions, IsEmpty());
}
