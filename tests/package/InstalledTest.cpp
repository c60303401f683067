#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/package/Installation.h"
#include "tests/package/Page.h"
#include "tests/support/SharedData.h"

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST(Installed, ProgramFindsTheModuleThatCameWithIt) {
  const CInstallation installed;
  const std::string program = (installed.Prefix() / "bin/tovrin").string();
  const ChildResult version = RunChild({{program, "--version"}, {}, false, {}});
  EXPECT_THAT(version.output, StartsWith("tovrin " TESSARIN_VERSION ", "));
  EXPECT_THAT(version.output, HasSubstr("\nmodule "));

  const auto examples = installed.Find("gateway.rules").parent_path();
  const ChildResult run =
      RunChild({{program, "run", "gateway.rules", "requests.txt"}, {}, false, examples});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_THAT(run.output, StartsWith("allow\thttp://cdn.example.net/rss.xml\n"));
}

TEST(Installed, HasWhatAnAdministratorReads) {
  const CInstallation installed;
  EXPECT_EQ(installed.Find("tovrin.1"), installed.Prefix() / "share/man/man1/tovrin.1");
  EXPECT_TRUE(
      std::filesystem::exists(installed.Prefix() / "share/bash-completion/completions/tovrin"));
  for (const auto& page : std::filesystem::directory_iterator(SourceDir() / "docs")) {
    EXPECT_NO_THROW(installed.Find(page.path().filename().string())) << page.path();
  }
}

TEST(Installed, PagesLinkToPagesThatCameWithThem) {
  const CInstallation installed;
  std::size_t count = 0;
  for (const auto& name : FilesBelow(installed.Prefix())) {
    if (!name.ends_with(".md")) continue;
    EXPECT_THAT(DeadLinks(installed.Prefix() / name), IsEmpty()) << name;
    ++count;
  }
  EXPECT_EQ(count, AllPages().size());
}

// The example of a host makes an object and asks for one match.
constexpr const char* kHostPrints = "Tessarin\nstatus 0, it matches\n";

TEST(Installed, IsFoundByCMake) {
  const CInstallation installed;
  const CTemporaryFolder build;
  const std::string cmake = TESSARIN_CMAKE;
  const ChildResult made =
      Shell(cmake + " -S '" + installed.Find("host").string() + "' -B . -DCMAKE_PREFIX_PATH='" +
                installed.Prefix().string() + "' -DCMAKE_CXX_COMPILER='" TESSARIN_COMPILER "' && " +
                cmake + " --build .",
            build.Path());
  ASSERT_EQ(made.status, 0) << made.output;
  EXPECT_EQ(Shell("./host", build.Path()).output, kHostPrints);
}

TEST(Installed, IsFoundByCMakeInItsOwnVersionOnly) {
  const CInstallation installed;
  const CTemporaryFolder project;
  project.Write("CMakeLists.txt",
                "cmake_minimum_required(VERSION 3.25)\nproject(p LANGUAGES NONE)\n"
                "find_package(tessarin ${WANTED})\nmessage(STATUS \"found ${tessarin_FOUND}\")\n");
  const struct {
    const char* wanted;
    const char* found;
  } rows[] = {{TESSARIN_VERSION, "found 1"}, {"1.0", "found 1"}, {"2.0", "found 0"}};
  for (const auto& row : rows) {
    const ChildResult result =
        Shell(std::string(TESSARIN_CMAKE) + " -S . -B build -DWANTED=" + row.wanted +
                  " -DCMAKE_PREFIX_PATH='" + installed.Prefix().string() + "'",
              project.Path());
    EXPECT_THAT(result.output, HasSubstr(row.found)) << row.wanted;
  }
}

TEST(Installed, IsFoundByPkgConfig) {
  if (Shell("command -v pkg-config").status != 0) GTEST_SKIP() << "no pkg-config here";
  const CInstallation installed;
  const CTemporaryFolder build;
  const auto folder = installed.Find("tessarin.pc").parent_path();
  const ChildResult made =
      Shell("PKG_CONFIG_PATH='" + folder.string() + "' make -f '" +
                (installed.Find("host") / "Makefile").string() + "' VPATH='" +
                installed.Find("host").string() + "' CXX='" TESSARIN_COMPILER "' host",
            build.Path());
  ASSERT_EQ(made.status, 0) << made.output;
  EXPECT_EQ(Shell("./host", build.Path()).output, kHostPrints);
}

// What a host is built with must not want anything that was not handed out with it. Headers that
// include each other in turn have to work whichever comes first, so each of those is one file to
// compile, and another one includes all there are.
TEST(Installed, HeadersStandAlone) {
  const CInstallation installed;
  const CTemporaryFolder project;
  const auto folder = installed.Prefix() / "include/tessarin/host";
  std::string all;
  std::string sources = " all.cpp";
  for (const auto& header : std::filesystem::directory_iterator(folder)) {
    const std::string name = header.path().filename().string();
    const std::string line = "#include \"host/" + name + "\"\n";
    all += line;
    if (ReadWholeFile(header.path()).find("in turn") == std::string::npos) continue;
    project.Write(name + ".cpp", line);
    sources += " " + name + ".cpp";
  }
  project.Write("all.cpp", all);
  EXPECT_GT(std::ranges::count(all, '\n'), 25);
  EXPECT_GT(std::ranges::count(sources, ' '), 4);
  const ChildResult result =
      Shell("'" TESSARIN_COMPILER "' -std=c++20 -fsyntax-only -Wall -Wextra -Werror -I '" +
                (installed.Prefix() / "include/tessarin").string() + "'" + sources,
            project.Path());
  EXPECT_EQ(result.status, 0) << result.output;
}

}  // namespace
