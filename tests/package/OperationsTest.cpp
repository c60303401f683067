// The page for operators against the sources: it has to name every setting that they read, and
// every message that they have for somebody's log.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/package/Page.h"
#include "tests/support/SharedData.h"

namespace {

using Texts = std::vector<std::string>;

// All sources below these folders, without the lines that are comments.
std::string SourcesOf(const Texts& folders) {
  std::string all;
  for (const auto& folder : folders) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(SourceDir() / folder)) {
      const auto extension = entry.path().extension();
      if (extension != ".cpp" && extension != ".h") continue;
      for (const std::string& line : ReadLines(entry.path())) {
        if (!line.starts_with("//")) all += line + '\n';
      }
    }
  }
  return all;
}

// What stands in the expression's group, wherever the text matches it.
Texts AllOf(const std::string& text, const char* expression) {
  const std::regex compiled(expression);
  Texts found;
  for (std::sregex_iterator at(text.begin(), text.end(), compiled), end; at != end; ++at) {
    found.push_back((*at)[1].str());
  }
  return found;
}

std::string Section(const std::string& heading) {
  const std::string page = ReadWholeFile(SourceDir() / "docs/operations.md");
  const std::size_t start = page.find("\n## " + heading + "\n");
  if (start == std::string::npos) throw std::runtime_error("no section " + heading);
  return page.substr(start, page.find("\n## ", start + 1) - start);
}

// The texts in backticks of the first column.
Texts FirstColumn(const std::string& section) {
  Texts cells;
  std::istringstream lines(section);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with("| `")) continue;
    const Texts texts = AllOf(line.substr(2, line.find(" | ", 2) - 2), "`([^`]*)`");
    cells.insert(cells.end(), texts.begin(), texts.end());
  }
  return cells;
}

bool HasWords(const std::string& text) {
  return std::ranges::any_of(text, [](unsigned char c) { return std::isalpha(c) != 0; });
}

TEST(Operations, NamesEverySetting) {
  const std::string sources =
      SourcesOf({"Common", "Libs", "host", "json", "memory", "module", "tools/tovrin"});
  const Texts read = AllOf(sources, R"re((?:getenv|EnvironmentSaysYes)\("(\w+)"\))re");
  EXPECT_GT(read.size(), 5u);
  const Texts named = FirstColumn(Section("Settings"));
  EXPECT_EQ(std::set<std::string>(named.begin(), named.end()),
            std::set<std::string>(read.begin(), read.end()));
  const std::string manual = ReadWholeFile(SourceDir() / "tools/tovrin/tovrin.1");
  for (const std::string& name : read) EXPECT_NE(manual.find(name), std::string::npos) << name;
}

// Rows of the catalogue that the sources use, with "..." for the values. One without words of its
// own says what its reporter says.
TEST(Operations, ExplainsEveryRowOfTheCatalogueThatIsUsed) {
  const Texts used = AllOf(SourcesOf({"Common", "json", "module"}), R"re(ErrorId::(\w+))re");
  const std::string rows = ReadWholeFile(SourceDir() / "Common/ErrorCatalogueRows.inc");
  const Texts messages = FirstColumn(Section("Messages and what to do"));
  std::size_t count = 0;
  for (const std::string& id : std::set<std::string>(used.begin(), used.end())) {
    const std::string row = "qxErrorRow(" + id + ", \"";
    const std::size_t start = rows.find(row);
    if (start == std::string::npos) continue;
    const std::size_t from = start + row.size();
    const std::string text = std::regex_replace(rows.substr(from, rows.find("\")", from) - from),
                                                std::regex(R"(\$\w+\$)"), "0");
    if (!HasWords(text)) continue;
    ++count;
    EXPECT_TRUE(std::ranges::any_of(messages, [&](const std::string& message) {
      return HasWords(message) && IsShown(message + "\n", text + "\n");
    })) << text;
  }
  EXPECT_GT(count, 8u);
}

// The words that a line opens with, before its first value.
TEST(Operations, ExplainsEveryOtherLineOfTheLog) {
  const std::string section = Section("Messages and what to do");
  const std::string sources = SourcesOf({"Common", "json", "memory", "module"});
  std::size_t count = 0;
  for (const char* expression : {R"re(qxDebugPrint\(\s*\d,\s*"[^"]*",\s*"([^"]*)")re",
                                 R"re(\{"msg", "([^"]*)")re", R"re(AbortWith\("([^"]*)\\n")re"}) {
    for (std::string words : AllOf(sources, expression)) {
      words.erase(words.find_last_not_of(" '") + 1);
      if (!HasWords(words)) continue;
      ++count;
      EXPECT_NE(section.find("`" + words), std::string::npos) << words;
    }
  }
  EXPECT_GT(count, 15u);
}

TEST(Operations, ExplainsWhatIsWrongWithAModule) {
  const std::string section = Section("Messages and what to do");
  std::size_t count = 0;
  for (const char* file : {"CFunctionTable.cpp", "CModule.cpp", "Definition.cpp"}) {
    const std::string source = ReadWholeFile(SourceDir() / "tools/tovrin" / file);
    for (std::string words : AllOf(source, R"re((?:Error|Fail)\(\s*fmt::format\(\s*"([^"]*)")re")) {
      words = std::regex_replace(words, std::regex(R"(\{\})"), "...");
      words = std::regex_replace(words, std::regex("^module '...': "), "");
      if (!HasWords(words)) continue;
      ++count;
      EXPECT_NE(section.find(words + "`"), std::string::npos) << words;
    }
  }
  EXPECT_GT(count, 10u);
}

}  // namespace
