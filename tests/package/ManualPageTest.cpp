#include <gtest/gtest.h>

#include <regex>

#include "tests/package/HelpText.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/SharedData.h"

namespace {

std::string PagePath() {
  return (SourceDir() / "tools/tovrin/tovrin.1").string();
}

// The page's text as its readers see the words: hyphens and backslashes are escaped in the source.
std::string Page() {
  return std::regex_replace(ReadWholeFile(PagePath()), std::regex(R"(\\-)"), "-");
}

std::set<std::string> OptionsOfThePage() {
  static const std::regex kOption(R"((^|[ "])(--?[a-z][a-z-]*))");
  const std::string page = Page();
  std::set<std::string> options;
  std::istringstream lines(page.substr(0, page.find(".SH RULES FILES")));
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with(".B") && !line.starts_with("\\fB")) continue;
    line = std::regex_replace(line, std::regex(R"(\\f[BIR])"), " ");
    for (std::sregex_iterator match(line.begin(), line.end(), kOption), end; match != end;
         ++match) {
      options.insert((*match)[2]);
    }
  }
  return options;
}

TEST(ManualPage, NamesEveryCommand) {
  const std::string page = Page();
  for (const std::string& name : Subcommands()) {
    const std::regex heading("\\.TP\n\\.(B " + name + "\n|BI \"" + name + " )");
    EXPECT_TRUE(std::regex_search(page, heading)) << name;
  }
}

TEST(ManualPage, NamesEveryOptionAndNoOther) {
  std::set<std::string> options = OptionsOf("");
  for (const std::string& name : Subcommands()) options.merge(OptionsOf(name));
  EXPECT_EQ(OptionsOfThePage(), options);
}

TEST(ManualPage, IsFormattedWithoutAWarning) {
  if (RunChild({{"/bin/sh", "-c", "command -v groff"}, {}, false, {}}).status != 0) {
    GTEST_SKIP() << "no groff here";
  }
  const ChildResult result =
      RunChild({{"/bin/sh", "-c", "groff -ww -man -Tascii '" + PagePath() + "'"}, {}, false, {}});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_NE(result.output, "");
}

}  // namespace
