#include "Common/TextConversion.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <clocale>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Common/EncodingRegistry.h"
#include "Common/Utf8.h"
#include "tests/support/SharedData.h"
#include "tests/support/TsvRows.h"

using namespace std::string_view_literals;

namespace {

constexpr std::string_view kMixed = "a\xC3\xA9\xE2\x82\xAC\xF0\x90\x90\x80";  // U+61 E9 20AC 10400

struct Row {
  const char* name;
  std::string_view text;
  std::uint32_t from, to;
  std::string_view converted;
};

const Row kRows[] = {
    {"Utf16LE", "a\xC3\xA9", 1, 6, "a\0\xE9\0"sv},
    {"Utf16BE", "a\xC3\xA9", 1, 7, "\0a\0\xE9"sv},
    {"Utf32BE", "a", 1, 4, "\0\0\0a"sv},
    {"Utf32LE", "\xF0\x90\x90\x80", 1, 3, "\0\x04\x01\0"sv},
    {"Gb18030", "\xE4\xB8\xAD", 1, 9, "\xD6\xD0"},
    {"FromGb18030", "\xD6\xD0\x81\x30\x81\x30", 9, 1, "\xE4\xB8\xAD\xC2\x80"},
    {"Latin1", "\xC3\xA9", 1, 2, "\xE9"},
    {"Same", "\xC3\xA9", 1, 1, "\xC3\xA9"},

    // The order of bytes by the mark, big-endian without one; always written with one.
    {"MarkBig", "\xFE\xFF\0a"sv, 8, 1, "a"},
    {"MarkLittle",
     "\xFF\xFE"
     "a\0"sv,
     8, 1, "a"},
    {"NoMark", "\0a"sv, 8, 1, "a"},
    {"MarkAlone", "\xFE\xFF", 8, 1, ""},
    {"WriteMark16", "a", 1, 8, "\xFE\xFF\0a"sv},
    {"Mark32Big", "\0\0\xFE\xFF\0\0\0a"sv, 5, 1, "a"},
    {"Mark32Little", "\xFF\xFE\0\0a\0\0\0"sv, 5, 1, "a"},
    {"NoMark32", "\0\0\0a"sv, 5, 1, "a"},
    {"WriteMark32", "a", 1, 5, "\0\0\xFE\xFF\0\0\0a"sv},
    {"OrderedHasNoMark",
     "\xFF\xFE"
     "a\0"sv,
     6, 1,
     "\xEF\xBB\xBF"
     "a"},
    {"Utf8KeepsItsMark",
     "\xEF\xBB\xBF"
     "a",
     1, 6,
     "\xFF\xFE"
     "a\0"sv},

    // What the target lacks is written as something like it, whatever the locale.
    {"NothingLikeIt", "\xC3\xA9", 1, 0, "?"},
    {"SomethingLikeIt", "\xE2\x82\xAC", 1, 0, "EUR"},
    {"LongerThanSized", "\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC", 1, 2, "EUREUREUR"},

    // What cannot be read is dropped, with nothing else.
    {"BadUtf8",
     "a\xFF"
     "b\x80"
     "c",
     1, 6, "a\0b\0c\0"sv},
    {"CutUtf8", "a\xE2\x82", 1, 6, "a\0"sv},
    {"BadUtf8ToWide",
     "a\xFF"
     "b\xE2\x82",
     1, 3, "a\0\0\0b\0\0\0"sv},
    {"LoneSurrogates",
     "a\0\0\xD8"
     "b\0\0\xDC"
     "c\0"sv,
     6, 1, "abc"},
    {"CutUtf16", "a\0b"sv, 6, 1, "a"},
    {"CutUtf32", "a\0\0\0b"sv, 3, 1, "a"},
    {"BeyondTheLast", "\0\0\x11\0a\0\0\0"sv, 3, 1, "a"},
    {"SurrogateUnits", "\0\xD8\0\0a\0\0\0"sv, 3, 2, "a"},
    {"TheLast", "\xFF\xFF\x10\0"sv, 3, 1, "\xF4\x8F\xBF\xBF"},
    {"HighAscii",
     "a\x80"
     "b",
     0, 1, "ab"},
    {"BadGb18030",
     "a\xFF"
     "b",
     9, 1, "ab"},
    {"BeyondTheLastToUtf16",
     "a\xF4\x90\x80\x80"
     "b",
     1, 6, "a\0b\0"sv},
    {"FiveBytesToLatin1",
     "a\xF8\x88\x80\x80\x80"
     "b",
     1, 2, "ab"},
    {"SixBytesToGb18030",
     "a\xFC\x84\x80\x80\x80\x80"
     "b",
     1, 9, "ab"},
    {"OverlongToAscii",
     "a\xC0\x80"
     "b",
     1, 0, "ab"},
    {"SurrogateToUtf16",
     "a\xED\xA0\x80"
     "b",
     1, 6, "a\0b\0"sv},
    {"BeyondTheLastFromBigUnits", "\0\x11\0\0\0\0\0a"sv, 4, 2, "a"},
    {"Utf8OutOfItself",
     "a\xF4\x90\x80\x80"
     "b\xFF",
     1, 1, "ab"},
    {"Zero", "a\0b"sv, 1, 6, "a\0\0\0b\0"sv},
    {"Empty", "", 1, 6, ""},

    // No character, no mark.
    {"EmptyHasNoMark", "", 1, 8, ""},
    {"NothingReadHasNoMark", "\xFF", 1, 5, ""},
    {"MarkAloneHasNone", "\xFE\xFF", 8, 5, ""},
};

TEST(ConvertText, GivesTheBytesOfTheRow) {
  for (const Row& row : kRows) {
    const auto converted = ConvertText(row.text, row.from, row.to);
    ASSERT_TRUE(converted) << row.name;
    EXPECT_EQ(*converted, row.converted) << row.name;
  }
}

TEST(ConvertText, ComesBackFromEveryEncodingThatHoldsAll) {
  for (const std::uint32_t first : {1, 3, 4, 5, 6, 7, 8, 9}) {
    for (const std::uint32_t second : {1, 3, 4, 5, 6, 7, 8, 9}) {
      const auto there = ConvertText(kMixed, Charset::Utf8, first);
      ASSERT_TRUE(there);
      const auto across = ConvertText(*there, first, second);
      ASSERT_TRUE(across);
      EXPECT_EQ(ConvertText(*across, second, Charset::Utf8), kMixed) << first << " " << second;
      EXPECT_EQ(WideText(*across, second), U"a\u00E9\u20AC\U00010400") << first << " " << second;
    }
  }
}

TEST(ConvertText, ConvertsRegisteredNames) {
  EXPECT_EQ(ConvertText("\x80", EncodingId("windows-1252"), Charset::Utf8), "\xE2\x82\xAC");
  EXPECT_EQ(ConvertText("\xE4\xB8\xAD", Charset::Utf8, EncodingId("BIG5")), "\xA4\xA4");
  // An encoding with shift states ends in the first one.
  EXPECT_EQ(ConvertText("\xE4\xB8\xAD", Charset::Utf8, EncodingId("ISO-2022-JP")),
            "\x1B$BCf\x1B(B");
}

// Values that are no characters, out of an encoding whose converter lets them through.
TEST(ConvertText, DropsWhatIsNoCharacterFromRegisteredNames) {
  const std::uint32_t ucs4 = EncodingId("UCS-4");
  constexpr std::string_view kUnits = "\0\0\0a\0\x11\0\0\0\0\xD8\0\x7F\xFF\xFF\xFF\0\0\0b"sv;
  EXPECT_EQ(ConvertText(kUnits, ucs4, Charset::Utf8), "ab");
  EXPECT_EQ(ConvertText(kUnits, ucs4, Charset::Latin1), "ab");
  EXPECT_EQ(ConvertText(kUnits, ucs4, Charset::Utf8, ConversionMode::Exact), std::nullopt);
}

TEST(ConvertText, TellsWhichEncodingsWriteAMark) {
  for (std::uint32_t id = 0; id < 11; ++id) {
    EXPECT_EQ(WritesByteOrderMark(id), id == Charset::Utf16 || id == Charset::Utf32) << id;
  }
  EXPECT_TRUE(WritesByteOrderMark(EncodingId("UNICODE")));
  for (const char* name : {"windows-1252", "ISO-2022-JP", "UTF-16le", "no such encoding"}) {
    EXPECT_FALSE(WritesByteOrderMark(EncodingId(name))) << name;
  }
}

TEST(ConvertText, RefusesWhatIsNoEncoding) {
  const std::uint32_t unknown = EncodingId("no such encoding");
  for (const std::uint32_t id : {Charset::Raw, unknown, std::uint32_t{99999}}) {
    EXPECT_EQ(ConvertText("a", id, Charset::Utf8), std::nullopt);
    EXPECT_EQ(ConvertText("a", Charset::Utf8, id), std::nullopt);
    EXPECT_EQ(WideText("a", id), std::nullopt);
  }
}

TEST(ConvertText, LosesNothingInExactMode) {
  const auto exact = [](std::string_view text, std::uint32_t from, std::uint32_t to) {
    return ConvertText(text, from, to, ConversionMode::Exact);
  };
  EXPECT_EQ(exact("\xC3\xA9", 1, 2), "\xE9");
  EXPECT_EQ(exact("\xC3\xA9", 1, 0), std::nullopt);
  EXPECT_EQ(exact("\xE2\x82\xAC", 1, 2), std::nullopt);
  EXPECT_EQ(exact("a\xFF", 1, 6), std::nullopt);
  EXPECT_EQ(exact("a\xE2\x82", 1, 6), std::nullopt);
  EXPECT_EQ(exact("\x80", 0, 1), std::nullopt);
  EXPECT_EQ(exact("plain", 0, 2), "plain");
  // Forms of UTF-8 that are no characters, though converters take them for such.
  EXPECT_EQ(exact("a\xF4\x90\x80\x80", 1, 1), std::nullopt);
  EXPECT_EQ(exact("a\xF8\x88\x80\x80\x80", 1, 3), std::nullopt);
  EXPECT_EQ(exact("\0\0\x11\0"sv, 3, 1), std::nullopt);
  EXPECT_EQ(exact("a\0\0\0b"sv, 3, 1), std::nullopt);
  // Converters drop a language tag without a word, and write a yen sign as a backslash.
  EXPECT_EQ(exact("a\xF3\xA0\x81\x81", 1, 0), std::nullopt);
  EXPECT_EQ(exact("a\xF3\xA0\x81\x81", 1, 2), std::nullopt);
  EXPECT_EQ(exact("\xF3\xA0\x81\x81", 1, 9), "\xD3\x36\x9C\x33");
  EXPECT_EQ(exact("\xC2\xA5", 1, EncodingId("EUC-JP")), std::nullopt);
}

// Every code point is refused by an encoding, or comes back from it.
TEST(ConvertText, BringsBackWhatItWroteExactly) {
  for (const std::uint32_t id :
       {Charset::Ascii, Charset::Latin1, Charset::Gb18030, EncodingId("windows-1252")}) {
    std::u32string lost;
    for (char32_t value = 0; value <= kLastCodePoint; value += value < 0x500 ? 1 : 509) {
      if (const auto narrow = NarrowText({&value, 1}, id, ConversionMode::Exact)) {
        if (WideText(*narrow, id) != std::u32string(1, value)) lost += value;
      }
    }
    EXPECT_TRUE(lost.empty()) << id;
  }
}

// Most of the locales that would change an answer are not on a build machine; the setting is made
// all the same, and the answer must stay.
TEST(ConvertText, DoesNotFollowTheLocale) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  for (const char* name : {"C.UTF-8", "de_DE.UTF-8", "tr_TR.UTF-8", "C"}) {
    if (!std::setlocale(LC_ALL, name)) continue;
    EXPECT_EQ(ConvertText("\xC3\xA9\xE2\x82\xAC", 1, 0), "?EUR") << name;
  }
  std::setlocale(LC_ALL, before.c_str());
}

TEST(ConvertText, TakesLongTexts) {
  std::string text;
  std::string wide;
  while (text.size() < (1 << 20)) {
    text += "caf\xC3\xA9 \xFF";  // with something to drop everywhere
    wide += "c\0a\0f\0\xE9\0 \0"sv;
  }
  EXPECT_TRUE(ConvertText(text, Charset::Utf8, Charset::Utf16LE) == wide);
  std::string expanded;
  for (int i = 0; i < 100000; ++i) expanded += "EUR";
  std::string euros;
  for (int i = 0; i < 100000; ++i) euros += "\xE2\x82\xAC";
  EXPECT_TRUE(ConvertText(euros, Charset::Utf8, Charset::Latin1) == expanded);
}

// ---- the own decoder beside iconv, which drops the same

std::u32string DecodedByIconv(std::string_view bytes) {
  const iconv_t converter = iconv_open("UTF-32LE//IGNORE", "UTF-8");
  std::u32string wide(bytes.size() + 1, U'\0');
  std::string in(bytes);
  char* at = in.data();
  std::size_t left = in.size();
  char* out = reinterpret_cast<char*>(wide.data());
  std::size_t room = wide.size() * 4;
  iconv(converter, &at, &left, &out, &room);
  iconv_close(converter);
  wide.resize(wide.size() - room / 4);
  return wide;
}

void ExpectSameDecoding(const std::string& bytes) {
  ASSERT_TRUE(WideFromUtf8(bytes) == DecodedByIconv(bytes)) << testing::PrintToString(bytes);
  const std::size_t count = WideFromUtf8(bytes).size();
  ASSERT_EQ(CountUtf8(bytes), count) << testing::PrintToString(bytes);
  ASSERT_EQ(IsWellFormedUtf8(bytes), Utf8FromWide(WideFromUtf8(bytes)) == bytes)
      << testing::PrintToString(bytes);
  for (std::size_t characters = 0; characters <= count + 1; ++characters) {
    const std::size_t prefix = Utf8Prefix(bytes, characters);
    ASSERT_EQ(CountUtf8(std::string_view(bytes).substr(0, prefix)), std::min(characters, count))
        << testing::PrintToString(bytes);
    ASSERT_TRUE(prefix == bytes.size() || characters <= count) << testing::PrintToString(bytes);
  }
}

TEST(Utf8, DropsWhatTheConverterDrops) {
  constexpr std::string_view kBytes =
      "a\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xED\xEF\xF0\xF4\xF5\xF7\xF8\xFB\xFC\xFD\xFE"
      "\xFF";
  for (const char a : kBytes) {
    for (const char b : kBytes) {
      for (const char c : kBytes) ExpectSameDecoding({a, b, c, 'z'});
    }
  }
  std::mt19937 random(11);
  for (int round = 0; round < 3000; ++round) {
    std::string bytes(random() % 24, '\0');
    for (char& byte : bytes) byte = kBytes[random() % kBytes.size()];
    ExpectSameDecoding(bytes);
  }
}

TEST(Utf8, WritesWhatItReads) {
  for (char32_t value = 0; value <= 0x110010; value += value < 0x3000 ? 1 : 97) {
    const std::string bytes = Utf8FromWide({&value, 1});
    if (!IsScalarValue(value)) {
      EXPECT_EQ(bytes, "");
      continue;
    }
    EXPECT_EQ(bytes.size(), Utf8Size(value));
    ASSERT_EQ(WideFromUtf8(bytes), std::u32string(1, value));
  }
}

TEST(ConvertText, AgreesWithThePublicCases) {
  const auto path = SharedPath("testdata/charset/cases.tsv");
  if (!path) GTEST_SKIP() << "no public test data here";
  for (const TsvRow& row : ReadTsv(*path)) {
    const std::uint32_t id = EncodingId(row["encoding"].c_str());
    const std::string utf8 = FromHex(row["utf8_hex"]);
    const std::string& hex = row["encoded_hex"];
    SCOPED_TRACE(row["encoding"] + " " + row["utf8_hex"]);
    const auto exact = ConvertText(utf8, Charset::Utf8, id, ConversionMode::Exact);
    if (hex == "!") {
      EXPECT_FALSE(exact);
    } else {
      EXPECT_EQ(exact, FromHex(hex));
      EXPECT_EQ(ConvertText(FromHex(hex), id, Charset::Utf8), utf8);
    }
  }
}

}  // namespace
