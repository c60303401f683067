#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/SharedData.h"
#include "tests/tools/TovrinProgram.h"

namespace {

// One command of the page, and what the page says it prints.
struct Example {
  std::size_t line = 0;
  std::string statements;
  std::string printed;
};

std::string Page() {
  return ReadWholeFile(SourceDir() / "docs" / "rule-functions.md");
}

// The commands stand in blocks between ``` lines, each as $ tovrin call '...' with its output
// below.
std::vector<Example> Examples() {
  const std::string opening = "$ tovrin call '";
  std::vector<Example> examples;
  bool isInBlock = false;
  std::istringstream page(Page());
  std::size_t number = 0;
  for (std::string line; std::getline(page, line);) {
    ++number;
    if (line.starts_with("```")) {
      isInBlock = !isInBlock;
    } else if (isInBlock && line.starts_with(opening)) {
      examples.push_back(
          {number, line.substr(opening.size(), line.rfind('\'') - opening.size()), {}});
    } else if (isInBlock && !examples.empty()) {
      examples.back().printed += line + '\n';
    }
  }
  return examples;
}

TEST(RuleFunctions, EveryExamplePrintsWhatThePageSays) {
  const auto examples = Examples();
  ASSERT_GE(examples.size(), 34u);
  for (const Example& example : examples) {
    SCOPED_TRACE(example.line);
    const ChildResult result = Tovrin({"call", example.statements});
    EXPECT_EQ(result.output + result.errors, example.printed) << example.statements;
  }
}

TEST(RuleFunctions, EveryFunctionHasItsSection) {
  const std::string page = Page();
  std::istringstream table(Tovrin({"describe"}).output);
  std::size_t count = 0;
  for (std::string line; std::getline(table, line);) {
    if (!line.starts_with("CONST_FUNCTION") && !line.starts_with("PROCEDURE")) continue;
    std::string signature = line.substr(16, line.find(')') - 15);
    signature.erase(0, signature.find_first_not_of(' '));
    EXPECT_NE(page.find("\n### `" + signature + "`\n"), std::string::npos) << signature;
    ++count;
  }
  EXPECT_EQ(count, 34u);
}

}  // namespace
