#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/package/HelpText.h"
#include "tests/package/Page.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/SharedData.h"

namespace {

// Where the commands of one page run: the examples and the project's files under their names, and
// the program in the path.
class CPageFolder {
public:
  CPageFolder() {
    for (const auto& entry : std::filesystem::directory_iterator(SourceDir())) {
      const auto name = entry.path().filename();
      if (name != "build") std::filesystem::create_symlink(entry.path(), fFolder.Path() / name);
    }
    std::filesystem::create_directory(fFolder.Path() / "build");
    std::filesystem::create_symlink(BinDir().parent_path(), fFolder.Path() / "build" / "release");
  }

  void Run(const PageCommand& command) const {
    if (command.words.starts_with("cat ") && WritesFile(command)) return;
    std::string words = command.words;
    if (words.starts_with("make ")) {
      words = "make --dry-run --no-print-directory -C '" + SourceDir().string() + "' " +
              words.substr(5) + " >/dev/null";
    }
    ChildCall call;
    call.command = {"/bin/sh", "-c", "PATH='" + BinDir().string() + "':\"$PATH\"; " + words};
    call.folder = fFolder.Path();
    const ChildResult result = RunChild(call);
    const std::string printed = result.output + result.errors;
    EXPECT_TRUE(IsShown(command.printed, printed)) << command.words << "\nprints\n"
                                                   << printed << "and the page says\n"
                                                   << command.printed;
  }

private:
  bool WritesFile(const PageCommand& command) const {
    const std::string name = command.words.substr(4);
    if (name.find_first_of(" |<>") != std::string::npos) return false;
    if (std::filesystem::exists(fFolder.Path() / name)) return false;
    fFolder.Write(name, command.printed);
    return true;
  }

  CTemporaryFolder fFolder;
};

TEST(Pages, EveryCommandPrintsWhatThePageSays) {
  std::size_t count = 0;
  for (const auto& path : AllPages()) {
    const CPageFolder folder;
    const Page page = ReadPage(path);
    for (const PageCommand& command : page.commands) {
      SCOPED_TRACE(page.name + ":" + std::to_string(command.line));
      folder.Run(command);
      ++count;
    }
  }
  EXPECT_GE(count, 60u);
}

// "tovrin", a subcommand among other words, and options of the two.
void ExpectCommandLine(const std::string& line) {
  std::istringstream stream(line);
  const std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
  const std::set<std::string> subcommands = Subcommands();
  const auto command = std::ranges::find_if(
      words, [&](const std::string& word) { return subcommands.contains(word); });
  ASSERT_NE(command, words.end());
  std::set<std::string> options = OptionsOf("");
  options.merge(OptionsOf(*command));
  for (const std::string& word : words) {
    EXPECT_TRUE(word.front() != '-' || options.contains(word)) << word;
  }
}

// What the text names in backticks, where nothing runs it.
TEST(Pages, NameNoTargetCommandOrOptionThatIsNotThere) {
  static const std::regex kNamed(R"(`((make|tovrin) [^`\n]*)`)");
  const CPageFolder folder;
  std::set<std::string> named;
  for (const auto& path : AllPages()) {
    const std::string text = ReadWholeFile(path);
    for (std::sregex_iterator at(text.begin(), text.end(), kNamed), end; at != end; ++at) {
      named.insert((*at)[1]);
    }
  }
  EXPECT_GT(named.size(), 20u);
  for (const std::string& words : named) {
    SCOPED_TRACE(words);
    if (words.starts_with("make ")) {
      folder.Run({0, words, ""});
    } else {
      ExpectCommandLine(words);
    }
  }
}

TEST(Pages, EveryExcerptStandsInItsFile) {
  for (const auto& path : AllPages()) {
    const Page page = ReadPage(path);
    for (const PageExcerpt& excerpt : page.excerpts) {
      SCOPED_TRACE(page.name + ":" + std::to_string(excerpt.line));
      const std::string file = ReadWholeFile(SourceDir() / excerpt.file);
      EXPECT_NE(file.find(excerpt.text), std::string::npos) << excerpt.file;
    }
  }
}

TEST(Pages, EveryLinkHasItsPage) {
  for (const auto& path : AllPages()) EXPECT_THAT(DeadLinks(path), testing::IsEmpty()) << path;
}

// The mechanism itself: a comparison that lets everything pass would prove nothing.
TEST(Pages, AreComparedLineByLine) {
  const struct {
    const char* shown;
    const char* printed;
    bool isShown;
  } rows[] = {
      {"a\nb\n", "a\nb\n", true},
      {"a\nb\n", "a\n", false},
      {"a\n", "a\nb\n", false},
      {"a\n...\n", "a\nb\nc\n", true},
      {"...\nc\n", "a\nb\nc\n", true},
      {"...\nb\n", "a\nb\nc\n", false},
      {"a\n...\nc\n", "a\nc\n", true},
      {"a\n...\nd\n", "a\nc\n", false},
      {"in 0.003 s, 7 lines/s\n", "in 1.2 s, 99 lines/s\n", true},
      {"3 lines in 0.003 s\n", "4 lines in 0.003 s\n", false},
      {"a ... c\n", "a b c\n", true},
      {"a ... c\n", "a b c d\n", false},
      {"...: c ...\n", "b: c d\n", true},
      {"b ...\n", "a b c\n", false},
      {"", "", true},
      {"", "a\n", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(IsShown(row.shown, row.printed), row.isShown) << row.shown << "/" << row.printed;
  }
}

}  // namespace
