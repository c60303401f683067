#include "tools/tovrin/CLineBlocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace RefHost {
namespace {

TEST(CLineBlocks, CutsBetweenLinesWhateverTheReadSize) {
  const CTemporaryFolder folder;
  for (const std::string text :
       {"", "\n", "a", "a\n", "a\nb", "\n\n\nabc\n\n", "one\ntwo and more\nthree\n\nfour"}) {
    const auto path = folder.Write("input", text);
    for (std::size_t readSize = 1; readSize <= text.size() + 1; ++readSize) {
      SCOPED_TRACE(text + " by " + std::to_string(readSize));
      CInputStream input(path);
      CLineBlocks blocks(input, readSize);
      std::string all;
      std::uint64_t line = 1;
      LineBlock block;
      while (blocks.Next(block)) {
        EXPECT_TRUE(all.empty() || all.back() == '\n');
        EXPECT_EQ(block.firstLine, line);
        line +=
            static_cast<std::uint64_t>(std::count(block.bytes.begin(), block.bytes.end(), '\n'));
        all += block.bytes;
      }
      EXPECT_EQ(all, text);
    }
  }
}

TEST(CLineBlocks, GivesAllLinesAndNoMore) {
  const struct {
    std::string_view text;
    std::vector<std::string_view> lines;
  } rows[] = {{"", {}}, {"\n", {""}}, {"a", {"a"}}, {"a\n", {"a"}}, {"a\n\nb", {"a", "", "b"}}};
  for (const auto& row : rows) {
    std::vector<std::string_view> lines;
    ForEachLine(row.text, [&](std::string_view line) {
      lines.push_back(line);
      return true;
    });
    EXPECT_EQ(lines, row.lines) << row.text;
  }
}

TEST(CLineBlocks, StopsWhenToldTo) {
  int count = 0;
  ForEachLine("a\nb\nc\n", [&](std::string_view) { return ++count < 2; });
  EXPECT_EQ(count, 2);
}

TEST(CInputStream, IsAtItsEndOnceItIsStopped) {
  const CTemporaryFolder folder;
  CInputStream input(folder.Write("input", "12345"));
  char buffer[3];
  EXPECT_EQ(input.Read(buffer, 3), 3u);
  input.Stop();
  EXPECT_EQ(input.Read(buffer, 3), 0u);
  EXPECT_EQ(input.Read(buffer, 3), 0u);
}

TEST(CInputStream, TellsTheSizeOfAFile) {
  const CTemporaryFolder folder;
  EXPECT_EQ(CInputStream(folder.Write("input", "12345")).Size(), 5u);
  EXPECT_FALSE(CInputStream("/dev/null").Size());
  EXPECT_THROW(CInputStream(folder.Path() / "missing"), std::system_error);
}

}  // namespace
}  // namespace RefHost
