// cmake/setup.sh on machines that lack what a build needs; every program that it could call is one
// of the test's own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/ChildProcess.h"
#include "tests/support/SharedData.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

// A machine with a shell, and with the programs that a test puts on it.
class Setup : public ::testing::Test {
protected:
  // The program writes down how it was called, and then does what the script says.
  void Add(const std::string& name, const std::string& script) {
    const auto path = fPrograms.Write(
        name, "#!/bin/sh\necho \"" + name + " $*\" >>'" + Calls().string() + "'\n" + script + "\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  }
  void AddUser(int id) { Add("id", "echo " + std::to_string(id)); }
  void AddPackages(const std::string& script = "") {
    Add("apt-get", script);
    Add("env", "exec /usr/bin/env \"$@\"");
  }

  ChildResult Run() {
    std::filesystem::remove(Calls());
    ChildCall call;
    call.command = {"/bin/sh", "-c",
                    "PATH='" + fPrograms.Path().string() + "' exec /bin/sh '" +
                        (SourceDir() / "cmake/setup.sh").string() + "'"};
    return RunChild(call);
  }
  bool IsInstalled() const {
    if (!std::filesystem::exists(Calls())) return false;
    const auto calls = ReadLines(Calls());
    return std::ranges::any_of(calls, [](const std::string& line) {
      return line.starts_with("apt-get install -y --no-install-recommends g++ cmake ");
    });
  }

  // The refusal is one line that can be copied, and the words around it.
  static void ExpectTheLine(const ChildResult& result) {
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, HasSubstr("run this line as root, then make again:\n"
                                         "  apt-get update && apt-get install -y "
                                         "--no-install-recommends g++ cmake "));
  }

private:
  std::filesystem::path Calls() const { return fCalls.Path() / "calls"; }

  const CTemporaryFolder fPrograms;
  const CTemporaryFolder fCalls;
};

TEST_F(Setup, InstallsAsRoot) {
  AddUser(0);
  AddPackages();
  const ChildResult result = Run();
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.errors, StartsWith("installing: g++ cmake "));
  EXPECT_TRUE(IsInstalled());
}

TEST_F(Setup, InstallsThroughSudoWhichMayAsk) {
  AddUser(1000);
  AddPackages();
  Add("sudo", "[ \"$1\" != -n ] || exit 1\nexec \"$@\"");  // -n: fail where it would have to ask
  EXPECT_EQ(Run().status, 0);
  EXPECT_TRUE(IsInstalled());
}

TEST_F(Setup, PrintsTheLineWhereSudoRefuses) {
  AddUser(1000);
  AddPackages();
  Add("sudo", "exit 1");
  ExpectTheLine(Run());
  EXPECT_FALSE(IsInstalled());
}

TEST_F(Setup, PrintsTheLineWithoutSudo) {
  AddUser(1000);
  AddPackages();
  ExpectTheLine(Run());
  EXPECT_FALSE(IsInstalled());
}

TEST_F(Setup, PrintsTheLineWhereThePackagesCannotBeHad) {
  AddUser(0);
  for (const char* step : {"update", "install"}) {
    AddPackages(std::string("[ \"$1\" != ") + step + " ] || exit 100");
    ExpectTheLine(Run());
  }
}

TEST_F(Setup, NamesWhatIsMissingWhereThereIsNoAptGet) {
  AddUser(0);
  const ChildResult result = Run();
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, StartsWith("missing on this machine: g++ cmake "));
}

TEST_F(Setup, AsksOnlyForWhatIsMissing) {
  AddUser(1000);
  AddPackages();
  for (const char* program : {"g++", "cmake", "ninja", "ccache", "pkg-config"}) Add(program, "");
  const ChildResult result = Run();
  // The headers are those of the machine; a machine that lacks some is told of these alone.
  for (const char* package : {"g++", "cmake", "ninja", "ccache", "pkg-config"}) {
    EXPECT_THAT(result.errors, Not(HasSubstr(package)));
  }
}

}  // namespace
