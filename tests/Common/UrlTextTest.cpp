#include "Common/UrlText.h"

#include <gtest/gtest.h>

#include <cstdio>

using namespace std::string_view_literals;

namespace {

TEST(DecodePercent, ReplacesEveryEscape) {
  EXPECT_EQ(DecodePercent(""), "");
  EXPECT_EQ(DecodePercent("a+b"), "a+b");
  EXPECT_EQ(DecodePercent("%41%7a%7A"), "Azz");
  EXPECT_EQ(DecodePercent("%2541"), "%41");
  EXPECT_EQ(DecodePercent("a%00b"), "a\0b"sv);
  for (int byte = 0; byte < 256; ++byte) {
    char escape[4];
    std::snprintf(escape, sizeof escape, "%%%02x", byte);
    EXPECT_EQ(DecodePercent(escape), std::string(1, static_cast<char>(byte)));
  }
}

TEST(DecodePercent, RefusesWhatIsNoEscape) {
  for (const auto text : {"%"sv, "a%4"sv, "%4g"sv, "%g4"sv, "%%41"sv,
                          "%\xFF"
                          "1"sv,
                          "% 1"sv})
    EXPECT_EQ(DecodePercent(text), std::nullopt) << text;
}

struct Row {
  std::string_view input;
  bool decode, escapeBlanks;
  std::string_view out;
  std::uint32_t encoding;
  std::string_view inputAfter;
};

TEST(ToUrlText, GivesTheRows) {
  const Row rows[] = {
      // Contract: the blanks of input are escaped, those of out stay.
      {"a b %41 c", false, false, "a b %41 c", Charset::Ascii, "a b %41 c"},
      {"a b %41 c", false, true, "a b %41 c", Charset::Ascii, "a%20b%20%41%20c"},
      {"a b %41 c", true, false, "a b A c", Charset::Ascii, "a b %41 c"},
      {"a b %41 c", true, true, "a b A c", Charset::Ascii, "a%20b%20%41%20c"},
      {"  %20", true, true, "   ", Charset::Ascii, "%20%20%20"},
      {"", true, true, "", Charset::Ascii, ""},
      // Plain text takes the encoding of what its escapes stand for.
      {"%C3%A9", false, false, "%C3%A9", Charset::Ascii, "%C3%A9"},
      {"%C3%A9", true, false, "\xC3\xA9", Charset::Utf8, "%C3%A9"},
      {"t%E9t%E9 ", true, false, "t\xE9t\xE9 ", Charset::Latin1, "t%E9t%E9 "},
      {"%C4%E3%BA%C3", true, false, "\xC4\xE3\xBA\xC3", Charset::Gb18030, "%C4%E3%BA%C3"},
      {"a%00%FF", true, false, "a\0\xFF"sv, Charset::Latin1, "a%00%FF"},
      // Text that had an encoding keeps it.
      {"\xC3\xA9%41", true, false,
       "\xC3\xA9"
       "A",
       Charset::Utf8, "\xC3\xA9%41"},
      {"\xC3\xA9%E9 ", true, false, "\xC3\xA9\xE9 ", Charset::Utf8, "\xC3\xA9%E9 "},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.input));
    std::string input(row.input);
    CText out("what stood here before");
    std::uint32_t encoding = 99;
    EXPECT_TRUE(ToUrlText(input, out, &encoding, row.decode, row.escapeBlanks));
    EXPECT_EQ(out.Bytes(), row.out);
    EXPECT_EQ(out.Encoding(), row.encoding);
    EXPECT_EQ(encoding, row.encoding);
    EXPECT_EQ(input, row.inputAfter);
  }
}

TEST(ToUrlText, RefusesABadEscapeOnlyWhenItDecodes) {
  std::string input = "a b%4";
  CText out;
  EXPECT_FALSE(ToUrlText(input, out, nullptr, true, true));
  EXPECT_EQ(out.Bytes(), "a b%4");
  EXPECT_EQ(input, "a b%4");
  EXPECT_TRUE(ToUrlText(input, out, nullptr, false, true));
  EXPECT_EQ(input, "a%20b%4");
}

}  // namespace
