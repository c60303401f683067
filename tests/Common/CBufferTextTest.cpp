// Lines out of a buffer.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Common/TextLines.h"
#include "tests/Common/CBufferSupport.h"

namespace {

class CBufferTextTest : public CBufferTest {};

std::string NextLine(CBuffer& buffer, int style, std::uint64_t* taken = nullptr,
                     bool* endAtData = nullptr) {
  CUnicodeString line("before");
  const std::uint64_t count = buffer.ReadText(&line, "UTF-8", style, endAtData);
  if (taken) *taken = count;
  return std::string(line.GetBytes(), line.GetByteSize());
}

TEST_F(CBufferTextTest, ReadsLines) {
  const std::string lineOf5000(5000, 'l');
  for (const auto& buffer : AllForms("one\r\n" + lineOf5000 + "\r\nthree\r\nrest")) {
    std::uint64_t taken = 0;
    EXPECT_EQ(NextLine(*buffer, 0, &taken), "one");
    EXPECT_EQ(taken, 5U);
    EXPECT_EQ(NextLine(*buffer, 0, &taken), lineOf5000);
    EXPECT_EQ(taken, 5002U);
    EXPECT_EQ(NextLine(*buffer, 2), "three");
    EXPECT_EQ(NextLine(*buffer, 1, &taken), "");
    EXPECT_EQ(taken, 0U) << "no line end, and nothing taken";
    EXPECT_EQ(buffer->GetReadPosition(), 5014);
  }
}

TEST_F(CBufferTextTest, PassesOverTheHalfOfALineEndThatComesLate) {
  for (const auto& buffer : AllForms("one\r")) {
    bool endAtData = false;
    EXPECT_EQ(NextLine(*buffer, 2, nullptr, &endAtData), "one");
    EXPECT_TRUE(endAtData);
    EXPECT_TRUE(Append(*buffer, "\ntwo\r\n"));
    EXPECT_EQ(NextLine(*buffer, 2, nullptr, &endAtData), "two");
    EXPECT_FALSE(endAtData);
  }
  CBuffer buffer("one\r", 4);
  EXPECT_EQ(NextLine(buffer, 2), "one");
  EXPECT_TRUE(Append(buffer, "two\n"));
  EXPECT_EQ(NextLine(buffer, 2), "two") << "nothing else is passed over";
}

TEST_F(CBufferTextTest, PassesOverNothingOnceItHasMoved) {
  for (const bool reads : {false, true}) {
    for (const auto& buffer : AllForms("one\r")) {
      EXPECT_EQ(NextLine(*buffer, 2), "one");
      EXPECT_TRUE(Append(*buffer, reads ? "x\ntwo\n" : "\ntwo\n"));
      char byte = 0;
      if (reads) {
        EXPECT_EQ(buffer->Read(&byte, 1), 1U);
      } else {
        EXPECT_EQ(buffer->SeekRead(0, 1), 4);
      }
      std::uint64_t taken = 0;
      EXPECT_EQ(NextLine(*buffer, 2, &taken), "") << "a line of its own";
      EXPECT_EQ(taken, 1U);
      EXPECT_EQ(NextLine(*buffer, 2), "two");
    }
  }
}

// Line ends of all kinds around the place where the first look ends.
TEST_F(CBufferTextTest, ReadsLinesAcrossItsWindow) {
  for (int style = 0; style < 3; ++style) {
    for (std::size_t length = 4090; length < 4100; ++length) {
      for (const char* end : {"\r\n", "\n", "\r", "\n\r", "\r\r\n", "\n\r\r"}) {
        const std::string text = std::string(length, 'l') + end + "next\r\n";
        CBuffer small(text.data(), text.size());
        CBuffer onFile(text.data(), text.size());
        ASSERT_TRUE(onFile.SwapOut());
        CText whole;
        char isOpen = 0;
        const auto expected = ExtractLine(whole, text.data(), text.size(), 1, style, &isOpen);
        for (CBuffer* buffer : {&small, &onFile}) {
          std::uint64_t taken = 0;
          ASSERT_EQ(NextLine(*buffer, style, &taken), whole.Bytes());
          ASSERT_EQ(taken, expected) << style << " " << length;
        }
      }
    }
  }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they need more address space
// A file of zeros, larger than what this process may have, in which no line ends.
TEST_F(CBufferTextTest, HasNoLineWhereItsEndIsBeyondAllMemory) {
  const std::string name = fFolder.Write("endless", "").string();
  std::filesystem::resize_file(name, std::uintmax_t{4} << 30);
  const int status = InChild([&] {
    CBuffer buffer(CFSPath(name), false);
    const rlimit limit{std::size_t{512} << 20, std::size_t{512} << 20};
    setrlimit(RLIMIT_AS, &limit);
    CUnicodeString line("before");
    const bool isNone = buffer.ReadText(&line, "UTF-8", kLineEndLazy, nullptr) == 0 &&
                        line.GetByteSize() == 0 && buffer.GetReadPosition() == 0;
    char byte = 'x';
    return isNone && buffer.Read(&byte, 1) == 1 && byte == '\0';
  });
  EXPECT_EQ(status, 0);
}
#endif

}  // namespace
