#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/SharedData.h"
#include "tests/tools/TovrinProgram.h"

namespace {

std::string Page() {
  return ReadWholeFile(SourceDir() / "docs" / "rule-functions.md");
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
