#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/SharedData.h"

namespace {

// One command of a page, and what the page says it prints.
struct Command {
  std::size_t line = 0;
  std::string words;
  std::string printed;
};

// The commands stand in blocks between ``` lines, each behind "$ ", with what they print below.
std::vector<Command> CommandsOf(const std::string& page) {
  std::vector<Command> commands;
  std::istringstream text(page);
  bool isInBlock = false;
  std::size_t number = 0;
  for (std::string line; std::getline(text, line);) {
    ++number;
    if (line.starts_with("```")) {
      isInBlock = !isInBlock;
    } else if (isInBlock && line.starts_with("$ ")) {
      commands.push_back({number, line.substr(2), {}});
    } else if (isInBlock && !commands.empty()) {
      commands.back().printed += line + '\n';
    }
  }
  return commands;
}

// Runs the page's commands, one after the other, in a folder.
void ExpectWhatThePageSays(const std::string& name, const std::filesystem::path& folder) {
  const auto commands = CommandsOf(ReadWholeFile(SourceDir() / "docs" / name));
  ASSERT_GE(commands.size(), 4u);
  for (const Command& command : commands) {
    SCOPED_TRACE(command.line);
    const std::string shell = "PATH='" + BinDir().string() + "':\"$PATH\"; " + command.words;
    ChildCall call;
    call.command = {"/bin/sh", "-c", shell};
    call.folder = folder;
    const ChildResult result = RunChild(call);
    EXPECT_EQ(result.output + result.errors, command.printed) << command.words;
  }
}

TEST(ListsPage, EveryCommandPrintsWhatThePageSays) {
  ExpectWhatThePageSays("lists.md", SourceDir());
}

TEST(BuffersPage, EveryCommandPrintsWhatThePageSays) {
  const CTemporaryFolder folder;
  ExpectWhatThePageSays("buffers-and-files.md", folder.Path());
}

}  // namespace
