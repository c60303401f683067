// What --log and --log-file do, seen from outside of the program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/SharedData.h"
#include "tests/tools/TovrinProgram.h"
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

ChildResult CallWith(std::vector<std::string> options) {
  options.insert(options.begin(), {"call", kBadExpression});
  return Tovrin(options);
}

class LogFile {
public:
  std::string Path() const { return (fFolder.Path() / "log").string(); }
  std::vector<std::string> Lines() const { return ReadLines(Path()); }

private:
  const CTemporaryFolder fFolder;
};

}  // namespace

TEST(ModuleLog, IsClosedUnlessItIsAskedFor) {
  const ChildResult result = CallWith({});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
}

TEST(ModuleLog, PrintsLevelClassFunctionFileAndLine) {
  const ChildResult result = CallWith({"--log", "3"});
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
    const ChildResult result = CallWith({"--log", row.selection});
    EXPECT_EQ(result.status, 0) << row.selection;
    EXPECT_EQ(!result.errors.empty(), row.isPrinted) << row.selection << ": " << result.errors;
  }
}

TEST(ModuleLog, StandsBeforeTheCommandAsWell) {
  const ChildResult result = Tovrin({"--log=3", "call", kBadExpression});
  EXPECT_THAT(result.errors, ContainsRegex(kTrace));
}

TEST(ModuleLog, IsAppendedToAFile) {
  const LogFile file;
  for (int run = 0; run < 2; ++run) {
    const ChildResult result = CallWith({"--log", "3", "--log-file", file.Path()});
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
  const ChildResult result = CallWith({"--log", "3", "--log-file", "/no/such/folder/log"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "cannot write to log file '/no/such/folder/log': No such file or directory\n");
}

TEST(ModuleLog, RefusesASelectionThatItCannotRead) {
  for (const char* selection :
       {"", "x", "-1", "3x", "3,", "3,,Create", ",Create", "3 ,Create", "4294967296", "Create"}) {
    const ChildResult result = CallWith({"--log", selection});
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
