#include "Common/TextDump.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <string_view>

using namespace std::string_literals;

namespace {

std::string Hex(std::string_view bytes) {
  return std::string(HexDump(CText(bytes, Charset::Raw), Charset::Utf8).Bytes());
}

std::string Mem(std::string_view bytes) {
  return std::string(MemDump(CText(bytes, Charset::Raw), Charset::Utf8).Bytes());
}

TEST(HexDump, ShowsSixteenBytesALine) {
  EXPECT_EQ(Hex("0123456789abcdef"),
            "00000000  30 31 32 33 34 35 36 37  38 39 61 62 63 64 65 66  |0123456789abcdef|\n"
            "00000010\n");
  EXPECT_EQ(Hex("0123456789abcdefg"),
            "00000000  30 31 32 33 34 35 36 37  38 39 61 62 63 64 65 66  |0123456789abcdef|\n"
            "00000010  67                                                |g|\n"
            "00000011\n");
}

TEST(HexDump, PadsTheShortLine) {
  EXPECT_EQ(Hex("0123456"),
            "00000000  30 31 32 33 34 35 36                              |0123456|\n00000007\n");
  EXPECT_EQ(Hex("01234567"),
            "00000000  30 31 32 33 34 35 36 37                           |01234567|\n00000008\n");
  EXPECT_EQ(Hex("012345678"),
            "00000000  30 31 32 33 34 35 36 37  38                       |012345678|\n00000009\n");
}

TEST(HexDump, PutsTheBarAtOneColumn) {
  for (const std::size_t size : {1, 7, 8, 9, 15, 16, 17, 32}) {
    const std::string dump = Hex(std::string(size, 'x'));
    EXPECT_EQ(dump.find('|'), 60U) << size;
    char closing[16];
    std::snprintf(closing, sizeof closing, "%8.8llx\n", static_cast<unsigned long long>(size));
    EXPECT_TRUE(dump.ends_with(std::string("|\n") + closing)) << dump;
  }
}

// The oracle: the whole line by its printing form.
TEST(HexDump, AgreesWithThePrintingForm) {
  for (int first = 0; first < 256; first += 16) {
    std::string bytes;
    for (int i = 0; i < 16; ++i) bytes += static_cast<char>(first + i);
    std::string line = "00000000  ";
    for (int i = 0; i < 16; ++i) {
      char text[8];
      std::snprintf(text, sizeof text, "%2.2x ", first + i);
      line += text;
      if (i % 8 == 7) line += ' ';
    }
    line += '|';
    for (int i = first; i < first + 16; ++i)
      line += i >= 0x20 && i <= 0x7E ? static_cast<char>(i) : '.';
    EXPECT_EQ(Hex(bytes), line + "|\n00000010\n");
  }
}

TEST(HexDump, TellsNothingFromNoBytes) {
  const CText none = HexDump(CText(), Charset::Utf8);
  ASSERT_NE(none.Impl(), nullptr);
  EXPECT_EQ(none.Bytes(), "");
  EXPECT_EQ(HexDump(CText(""), Charset::Utf8).Bytes(), "00000000\n");
}

TEST(HexDump, TakesTheBytesOfTheNamedEncoding) {
  EXPECT_EQ(HexDump(CText("\xC3\xA9"), Charset::Latin1).Bytes(),
            "00000000  e9                                                |.|\n00000001\n");
  EXPECT_EQ(HexDump(CText("\xC3\xA9", Charset::Raw), Charset::Latin1).Bytes(),
            "00000000  c3 a9                                             |..|\n00000002\n");
  EXPECT_EQ(HexDump(CText("a"), Charset::Utf8).Encoding(), Charset::Ascii);
}

TEST(MemDump, IsASource) {
  constexpr auto head = "const unsigned char memDump[] = {\n";
  const std::string full =
      "0x61, 0x61, 0x61, 0x61, 0x61, 0x61, 0x61, 0x61, 0x61, 0x61, 0x61, 0x61, 0x61, 0x61, 0x61, "
      "0x61";
  const std::pair<std::string, std::string> rows[] = {
      {"", "};\nconst size_t memDumpSize = 0"},
      {"\x80", "0x80\n};\nconst size_t memDumpSize = 1"},
      {"\x7F\xFF"s + '\0', "0x7f, 0xff, 0x00\n};\nconst size_t memDumpSize = 3"},
      {std::string(16, 'a'), full + "\n};\nconst size_t memDumpSize = 16"},
      {std::string(17, 'a'), full + ",\n0x61\n};\nconst size_t memDumpSize = 17"},
      {std::string(32, 'a'), full + ",\n" + full + "\n};\nconst size_t memDumpSize = 32"},
  };
  for (const auto& [bytes, source] : rows) EXPECT_EQ(Mem(bytes), head + source);
  EXPECT_EQ(MemDump(CText(), Charset::Utf8).Bytes(), "");
}

}  // namespace
