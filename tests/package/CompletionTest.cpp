#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/package/HelpText.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/SharedData.h"

namespace {

using ::testing::IsSubsetOf;
using Words = std::set<std::string>;

// What bash offers when the tab key is pressed behind the last of these words.
Words Offered(const std::vector<std::string>& words) {
  std::string line = "source '" + (SourceDir() / "tools/tovrin/completion/tovrin.bash").string() +
                     "'; COMP_WORDS=('" + (BinDir() / "tovrin").string() + "'";
  for (const std::string& word : words) line += " '" + word + "'";
  const std::string before = words.size() > 1 ? words[words.size() - 2] : "tovrin";
  line += "); COMP_CWORD=" + std::to_string(words.size()) + "; _tovrin tovrin '" + words.back() +
          "' '" + before + "'; printf '%s\\n' \"${COMPREPLY[@]}\"";
  ChildCall call;
  call.command = {"/bin/bash", "-c", line};
  call.folder = SourceDir() / "examples";
  const ChildResult result = RunChild(call);
  EXPECT_EQ(result.errors, "");
  Words offered;
  std::istringstream lines(result.output);
  for (std::string word; std::getline(lines, word);) offered.insert(word);
  return offered;
}

class Completion : public ::testing::Test {
  void SetUp() override {
    if (!std::filesystem::exists("/bin/bash")) GTEST_SKIP() << "no bash here";
  }
};

TEST_F(Completion, OffersEveryCommand) {
  EXPECT_EQ(Offered({""}), Subcommands());
  EXPECT_EQ(Offered({"de"}), Words{"describe"});
  EXPECT_EQ(Offered({"--customer-policy", "de"}), Words{"describe"});
}

TEST_F(Completion, OffersTheOptionsOfTheProgramAndOfTheCommand) {
  EXPECT_EQ(Offered({"-"}), OptionsOf(""));
  for (const std::string& name : Subcommands()) {
    const Words offered = Offered({name, "-"});
    EXPECT_THAT(OptionsOf(name), IsSubsetOf(offered)) << name;
    EXPECT_THAT(OptionsOf(""), IsSubsetOf(offered)) << name;
  }
  EXPECT_EQ(Offered({"match", "--inv"}), Words{"--invert-match"});
}

TEST_F(Completion, OffersTheValuesOfAnOptionThatHasAList) {
  EXPECT_EQ(Offered({"json", "--to", ""}), (Words{"compact", "indented", "msgpack"}));
  EXPECT_EQ(Offered({"json", "--to", "m"}), Words{"msgpack"});
}

TEST_F(Completion, OffersFilesEverywhereElse) {
  EXPECT_EQ(Offered({"run", "gate"}), Words{"gateway.rules"});
  EXPECT_EQ(Offered({"run", "gateway.rules", "req"}), Words{"requests.txt"});
  EXPECT_EQ(Offered({"--module", "bl"}), Words{"blocked.list"});
}

}  // namespace
