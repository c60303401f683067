#include "tools/tovrin/SourceText.h"

#include <gtest/gtest.h>

#include "tests/support/ChildProcess.h"

namespace RefHost {
namespace {

TEST(SourceText, DropsTheByteOrderMarkAndCarriageReturnsOfLineEnds) {
  const struct {
    std::string text;
    std::string clean;
  } rows[] = {
      {"", ""},
      {"a\nb", "a\nb"},
      {"a\r\nb\r\n", "a\nb\n"},
      {"\xEF\xBB\xBF"
       "a",
       "a"},
      {"\xEF\xBB\xBF\r\n", "\n"},
      {"a\xEF\xBB\xBF", "a\xEF\xBB\xBF"},
      {"a\rb\r", "a\rb\r"},
      {"a\r\r\nb", "a\r\nb"},
  };
  for (const auto& row : rows) EXPECT_EQ(CleanSource(row.text), row.clean) << row.text;
}

TEST(SourceText, ReadsAllBytesOfAFile) {
  const CTemporaryFolder folder;
  std::string bytes(700'000, 'x');
  bytes[100] = '\0';
  EXPECT_EQ(ReadSource(folder.Write("file", bytes)), bytes);
  EXPECT_EQ(ReadSource(folder.Write("empty", "")), "");
}

TEST(SourceText, NamesAFileThatCannotBeRead) {
  const CTemporaryFolder folder;
  const std::string missing = folder.Path() / "missing";
  try {
    ReadSource(missing);
    ADD_FAILURE() << "was read";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(), "cannot read '" + missing + "': No such file or directory");
  }
  EXPECT_THROW(ReadSource(folder.Path()), std::runtime_error);
}

}  // namespace
}  // namespace RefHost
