#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/SharedData.h"
#include "tests/tools/TestModules.h"
#include "tests/tools/TovrinProgram.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(Program, TellsBothVersions) {
  const ChildResult result = TovrinWith("sound", {"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, StartsWith("tovrin "));
  EXPECT_THAT(result.output, HasSubstr("\nmodule 3.2.1, host interfaces 1.20.16.0-2\n"));
}

TEST(Program, UsesTheModuleBesideIt) {
  const ChildResult result = Tovrin({"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("\nmodule 1.0.0.0, "));
}

TEST(Program, LooksForItsModuleInTheLibFoldersNextToItsOwn) {
  std::vector<std::string> folders = {"bin", "lib"};
  const std::string triplet = TESSARIN_TRIPLET;
  if (!triplet.empty()) folders.push_back("lib/" + triplet);
  for (const std::string& folder : folders) {
    SCOPED_TRACE(folder);
    const CTemporaryFolder prefix;
    std::filesystem::create_directories(prefix.Path() / "bin");
    std::filesystem::create_directories(prefix.Path() / folder);
    const auto program = prefix.Path() / "bin" / "tovrin";
    std::filesystem::copy_file(BinDir() / "tovrin", program);
    const ChildResult lost = RunChild({{program.string(), "--version"}, {}, false, {}});
    EXPECT_EQ(lost.status, 1);
    EXPECT_THAT(lost.errors, StartsWith("no module at " + prefix.Path().string() + "/bin/"));
    EXPECT_THAT(lost.errors, HasSubstr(prefix.Path().string() + "/" + folder + "/libtessarin.so"));

    std::filesystem::copy_file(TestModule("sound"), prefix.Path() / folder / "libtessarin.so");
    const ChildResult found = RunChild({{program.string(), "--version"}, {}, false, {}});
    EXPECT_EQ(found.status, 0);
    EXPECT_THAT(found.output, HasSubstr("module 3.2.1"));
  }
}

TEST(Program, EndsWithStatusTwoForACommandLineThatItCannotRead) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                    {"dance"},
                                                    {"call"},
                                                    {"run"},
                                                    {"run", "--threads", "0", "x"},
                                                    {"describe", "--yaml"}}) {
    const ChildResult result = Tovrin(arguments);
    EXPECT_EQ(result.status, 2) << ::testing::PrintToString(arguments);
    EXPECT_NE(result.errors, "");
  }
  EXPECT_EQ(Tovrin({"--help"}).status, 0);
}

TEST(Program, SaysInOneLineWhatIsWrongWithAModule) {
  const struct {
    const char* module;
    const char* reason;
  } rows[] = {
      {"doubled_function", "'STRING Zero ()' is there already"},
      {"doubled_type", "type 'STRING' is there already"},
      {"failing_registration", "RegistrationDoneWithReturn answers 1"},
      {"missing_export", "no export 'sample_Absent'"},
      {"missing_factory", "no export 'sample_CreateAbsent'"},
      {"missing_getter", "no export 'GetState'"},
      {"null_getter", "GetState gives no text"},
      {"odd_version", "'1.18 or later' is not a range of host versions"},
      {"refusing_host", "Sample.SetIHost refuses the host"},
      {"refusing_start", "RegisterModule answers 3"},
      {"throwing_definition", "exception from GetModuleDefinition: no text"},
      {"throwing_host", "exception from Sample.SetIHost: no host"},
      {"throwing_start", "exception from RegisterModule: no start"},
      {"throwing_getter", "exception from GetState: no state"},
      {"throwing_registration", "exception from RegistrationDoneWithReturn: not today"},
      {"truncated_definition", "definition text, column 70: '(' expected, but the text ends"},
      {"unknown_type", "unknown type 'Basket' in 'NUMBER Count (Basket)'"},
      {"wrong_version", "it accepts host versions [2.0.0-], and this host is 1.20.16.0"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.module);
    const ChildResult result = TovrinWith(row.module, {"call", "1"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "module '" + TestModule(row.module).string() + "': " + row.reason + "\n");
  }
}

// What the caller closed stays closed: no file that is opened later takes its number.
TEST(Program, LeavesClosedStreamsClosed) {
  const CTemporaryFolder folder;
  const std::string rules = folder.Write("test.rules", "otherwise \"v\";");
  const std::string log = folder.Write("log", "");
  const struct {
    std::string arguments;
    int status;
    const char* errors;
  } rows[] = {
      {"call 1 >&-", 1, "cannot write 'standard output': Bad file descriptor\n"},
      {"describe >&-", 1, "cannot write 'standard output': Bad file descriptor\n"},
      {"--log 3 --log-file " + log + " call 1 >&-", 1,
       "cannot write 'standard output': Bad file descriptor\n"},
      {"run " + rules + " <&-", 1, "cannot read '-': Bad file descriptor\n"},
      {"run " + rules + " --threads 2 <&-", 1, "cannot read '-': Bad file descriptor\n"},
      {"call 1 2>&- >/dev/null", 0, ""},
      {"call 'Tessarin.Search()' 2>&- >/dev/null", 3, ""},
      {"call 1 >/dev/full", 1, "cannot write 'standard output': No space left on device\n"},
      {"--version >/dev/full", 1, "cannot write 'standard output': No space left on device\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.arguments);
    ChildCall call;
    call.command = {"/bin/sh", "-c", "'" + (BinDir() / "tovrin").string() + "' " + row.arguments};
    const ChildResult result = RunChild(call);
    EXPECT_EQ(result.status, row.status);
    EXPECT_EQ(result.errors, row.errors);
  }
  EXPECT_EQ(ReadWholeFile(log), "");
}

TEST(Program, SaysWhenThereIsNoModule) {
  const ChildResult result = Tovrin({"--module", "/nowhere/libnone.so", "call", "1"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, StartsWith("module '/nowhere/libnone.so': "));
}

}  // namespace
