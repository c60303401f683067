#include "Common/TextCompare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CaseMapping.h"
#include "Common/EncodingRegistry.h"
#include "Common/TextConversion.h"
#include "tests/support/AllocationCount.h"

using namespace std::string_view_literals;

namespace {

TextView View(std::string_view bytes, std::uint32_t encoding = Charset::Utf8) {
  return {bytes, encoding};
}

// ---- the oracle: everything converted, everything folded, then plain string functions

std::u32string SlowWide(TextView text) {
  return *WideText(text.bytes, text.encoding);
}

struct SlowFolded {
  std::u32string units;
  std::vector<std::uint64_t> origins;  // code point that each unit came from
};

SlowFolded Fold(TextView text) {
  SlowFolded folded;
  std::uint64_t index = 0;
  for (const char32_t value : SlowWide(text)) {
    const FoldedCase one = FoldCase(value);
    folded.units.append(one.values, one.count);
    folded.origins.insert(folded.origins.end(), one.count, index++);
  }
  return folded;
}

void ExpectAgreement(TextView text, TextView other) {
  SCOPED_TRACE(testing::PrintToString(text.bytes) + " in " + std::to_string(text.encoding) +
               " and " + testing::PrintToString(other.bytes) + " in " +
               std::to_string(other.encoding));
  const int order = SlowWide(text).compare(SlowWide(other));
  if (text.encoding != other.encoding || text.encoding == Charset::Utf32LE) {
    ASSERT_EQ(CompareTexts(text, other), order < 0 ? -1 : order > 0);
  }
  const SlowFolded folded = Fold(text);
  const SlowFolded wanted = Fold(other);
  ASSERT_EQ(EqualIgnoringCase(text, other), folded.units == wanted.units);
  ASSERT_EQ(StartsWithIgnoringCase(text, other), folded.units.starts_with(wanted.units));
  ASSERT_EQ(EndsWithIgnoringCase(text, other), folded.units.ends_with(wanted.units));
  const std::size_t at = folded.units.find(wanted.units);
  const std::uint64_t expected = at == std::u32string::npos ? kTextNotFound
                                 : wanted.units.empty()     ? 0
                                                            : folded.origins[at];
  ASSERT_EQ(FindIgnoringCase(text, other), expected);
}

// ---- rows

TEST(TextCompare, OrdersByCodePoint) {
  struct Row {
    std::string_view left;
    std::uint32_t leftEncoding;
    std::string_view right;
    std::uint32_t rightEncoding;
    int order;
  };
  const Row kRows[] = {
      {"", 1, "", 0, 0},
      {"", 1, "a", 1, -1},
      {"a", 1, "", 1, 1},
      {"a", 1, "b", 1, -1},
      {"a", 1, "A", 1, 1},
      {"ab", 1, "a", 1, 1},
      {"a\0"sv, 1, "a", 1, 1},
      {"\xE9", 2, "\xC3\xA9", 1, 0},
      {"\xE9", 2, "\xE9", 10, 0},
      {"\xC3\xA9", 1, "\xE9", 10, -1},  // bytes, and C3 is less than E9
      {"\xEF\xBF\xBF", 1, "\0\0\x01\0"sv, 3, -1},
      {"\x80", 0, "", 0, 1},  // bytes: both are ASCII by name
      {"\x80", 0, "", 1, 0},  // code points: there are none
      {"z", 1, "\xC3\xA9", 1, -1},
  };
  for (const Row& row : kRows) {
    const TextView left = View(row.left, row.leftEncoding);
    const TextView right = View(row.right, row.rightEncoding);
    EXPECT_EQ(CompareTexts(left, right), row.order) << row.left << " " << row.right;
    EXPECT_EQ(CompareTexts(right, left), -row.order) << row.left << " " << row.right;
  }
}

TEST(TextCompare, FoldsBeforeItCompares) {
  EXPECT_TRUE(EqualIgnoringCase(View("STRASSE"), View("stra\xC3\x9F"
                                                      "e")));
  EXPECT_TRUE(EqualIgnoringCase(View("\xE1\xBA\x9E"), View("sS")));
  EXPECT_TRUE(EqualIgnoringCase(View("\xEF\xAC\x83"), View("FFI")));
  EXPECT_TRUE(EqualIgnoringCase(View("\xE9", Charset::Latin1), View("\xC3\x89")));
  EXPECT_FALSE(EqualIgnoringCase(View("\xC4\xB0"), View("i")));
  EXPECT_TRUE(StartsWithIgnoringCase(View("\xC4\xB0"), View("i"))) << "folds to i and a dot";
  EXPECT_TRUE(EndsWithIgnoringCase(View("a\xC3\x9F"), View("S")));
  EXPECT_TRUE(EndsWithIgnoringCase(View("\xE2\x84\xAA"), View("k")));
  EXPECT_FALSE(EndsWithIgnoringCase(View("a"), View("aa")));
  EXPECT_TRUE(EndsWithIgnoringCase(View("\xCE\x90"), View("\xCE\xB9\xCC\x88\xCC\x81")));
}

TEST(TextCompare, FindsTheCharacterInWhichAnOccurrenceBegins) {
  EXPECT_EQ(FindIgnoringCase(View("abcABC"), View("Bc")), 1U);
  EXPECT_EQ(FindIgnoringCase(View("\xC3\xA9\xC3\xA9x"), View("X")), 2U);
  EXPECT_EQ(FindIgnoringCase(View("a\xC3\x9Fz"), View("SZ")), 1U) << "in the middle of one";
  EXPECT_EQ(FindIgnoringCase(View("aabaabaaab"), View("AAAB")), 6U);
  EXPECT_EQ(FindIgnoringCase(View("abc"), View("")), 0U);
  EXPECT_EQ(FindIgnoringCase(View(""), View("a")), kTextNotFound);
  EXPECT_EQ(FindIgnoringCase(View("aaa"), View("aaaa")), kTextNotFound);
  const std::string longOne(200, 'q');
  EXPECT_EQ(FindIgnoringCase(View("r" + longOne + "\xC3\x9F"), View(longOne + "SS")), 1U);
}

TEST(TextCompare, KnowsNoCaseButThatOfAsciiInRawBytes) {
  EXPECT_TRUE(EqualIgnoringCase(View("aB\xC3", Charset::Raw), View("Ab\xC3")));
  EXPECT_FALSE(EqualIgnoringCase(View("\xE9", Charset::Raw), View("\xC9", Charset::Latin1)));
  EXPECT_EQ(FindIgnoringCase(View("\xFF\xFEX", Charset::Raw), View("x")), 2U);
}

TEST(TextCompare, SearchesInOnePassHoweverOftenItIsLed) {
  const std::string text(1 << 20, 'a');
  const std::string wanted = std::string(1 << 19, 'A') + "b";
  EXPECT_EQ(FindIgnoringCase(View(text), View(wanted)), kTextNotFound);
}

// ---- against the oracle

TEST(TextCompare, AgreesOnRandomTexts) {
  constexpr std::string_view kPieces[] = {"a",
                                          "A",
                                          "s",
                                          "S",
                                          "\xC3\x9F",
                                          "\xC3\xA9",
                                          "\xC3\x89",
                                          "\xEF\xAC\x83",
                                          "f",
                                          "fi",
                                          "\xE2\x84\xAA",
                                          "k",
                                          "\xFF",
                                          "\xE2\x82",
                                          "\0"sv,
                                          "longer plain TEXT"};
  std::mt19937 random(3);
  const auto make = [&] {
    std::string text;
    for (std::size_t pieces = random() % 7; pieces != 0; --pieces) {
      text += kPieces[random() % std::size(kPieces)];
    }
    return text;
  };
  for (int round = 0; round < 3000; ++round) {
    const std::string left = make();
    const std::string right = make();
    const std::string wide = *ConvertText(right, Charset::Utf8, Charset::Utf32LE);
    ExpectAgreement(View(left), View(right));
    ExpectAgreement(View(left), View(wide, Charset::Utf32LE));
    ExpectAgreement(View(left, Charset::Latin1), View(right));
    ExpectAgreement(View(left, Charset::Ascii), View(right, Charset::Latin1));
    ExpectAgreement(View(right + left + right), View(left));
  }
}

// The odd byte at every place of texts that are longer than a step of the fast loops.
TEST(TextCompare, AgreesWhereverTextsDiffer) {
  for (std::size_t size = 0; size < 60; ++size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) text += static_cast<char>(0x20 + i * 7 % 0x5F);
    for (std::size_t at = 0; at < size; ++at) {
      for (const std::string_view odd : {"@"sv, "["sv, "`"sv, "{"sv, "\xC3\x9F"sv, "\x80"sv}) {
        std::string other = text;
        for (char& byte : other) byte = byte >= 'a' && byte <= 'z' ? byte - 32 : byte;
        ExpectAgreement(View(text), View(other));
        other.replace(at, 1, odd);
        ExpectAgreement(View(text), View(other));
        ExpectAgreement(View(text), View(std::string_view(other).substr(at)));
        ExpectAgreement(View(other), View(std::string_view(text).substr(at)));
      }
    }
  }
}

TEST(TextCompare, AgreesOnEveryPairOfAsciiLetters) {
  for (int left = 0; left < 128; ++left) {
    for (int right = 0; right < 128; ++right) {
      const std::string l(9, static_cast<char>(left));
      const std::string r(9, static_cast<char>(right));
      ASSERT_EQ(EqualIgnoringCase(View(l), View(r)),
                FoldAscii(static_cast<char32_t>(left)) == FoldAscii(static_cast<char32_t>(right)));
    }
  }
}

// ---- what it costs

TEST(TextCompare, AllocatesNothing) {
  const std::string plain(1000, 'x');
  const std::string upper(1000, 'X');
  const std::string mixed =
      "stra\xC3\x9F"
      "e " +
      plain;
  const long before = AllocationCount();
  EXPECT_TRUE(EqualIgnoringCase(View(plain), View(upper)));
  EXPECT_TRUE(StartsWithIgnoringCase(View(plain), View(std::string_view(upper).substr(1))));
  EXPECT_TRUE(EndsWithIgnoringCase(View(plain), View(std::string_view(upper).substr(1))));
  EXPECT_TRUE(EndsWithIgnoringCase(View(mixed), View(upper)));
  EXPECT_TRUE(StartsWithIgnoringCase(View(mixed), View("STRASSE")));
  EXPECT_EQ(FindIgnoringCase(View(mixed), View("SSE")), 4U);
  EXPECT_EQ(FindIgnoringCase(View(mixed), View(upper)), 7U) << "however long it is";
  EXPECT_EQ(FindIgnoringCase(View(plain, Charset::Raw), View(upper)), 0U);
  EXPECT_EQ(AllocationCount(), before);
}

}  // namespace
