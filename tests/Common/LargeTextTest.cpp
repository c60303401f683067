// Texts of 64 MiB, whole and hostile, through every room of the text layer: each answers, takes
// memory in proportion, and never reads past the end.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "Common/CRegex.h"
#include "Common/CText.h"
#include "Common/CUnicodeString.h"
#include "Common/TextConversion.h"
#include "Common/TextDetection.h"
#include "Common/TextLines.h"

namespace {

constexpr std::size_t kSize = std::size_t{64} << 20;

std::string Repeated(std::string_view piece) {
  std::string text;
  text.reserve(kSize);
  while (text.size() + piece.size() <= kSize) text += piece;
  text.resize(kSize, 'x');
  return text;
}

TEST(ALargeText, IsLookedAtAndCounted) {
  std::string text = Repeated("plain ");
  EXPECT_EQ(DetectEncoding(text.data(), text.size()), 0);
  text.back() = '\xC3';  // cut off by the end
  EXPECT_EQ(DetectEncoding(text.data(), text.size()), 3);
  EXPECT_FALSE(IsValidUtf8(text.data(), text.size()));
  text.back() = '\0';
  EXPECT_EQ(DetectEncoding(text.data(), text.size()), 3);
  EXPECT_EQ(CText(text).Length(), kSize);
}

TEST(ALargeText, IsConvertedBothWays) {
  const std::string text = Repeated("caf\xC3\xA9 ");
  CText own(text);
  EXPECT_EQ(own.Length(), kSize / 6 * 5 + kSize % 6);
  const auto utf16 = ConvertText(text, Charset::Utf8, Charset::Utf16LE);
  ASSERT_TRUE(utf16);
  EXPECT_EQ(utf16->size(), own.Length() * 2);
  EXPECT_TRUE(ConvertText(*utf16, Charset::Utf16LE, Charset::Utf8) == text);
}

TEST(ALargeText, OfBytesThatCannotBeReadIsDropped) {
  const std::string text(kSize, '\xFF');
  EXPECT_EQ(CText(text).Length(), 0U);
  EXPECT_EQ(ConvertText(text, Charset::Utf8, Charset::Utf16LE), "");
  EXPECT_EQ(ConvertText(text, Charset::Gb18030, Charset::Utf8), "");
  EXPECT_EQ(ConvertText(text, Charset::Ascii, Charset::Utf8), "");
}

TEST(ALargeText, IsComparedAndSearchedInPlace) {
  const std::string text(kSize, 'a');
  const std::string other(kSize, 'A');
  const TextView view{text, Charset::Utf8};
  EXPECT_TRUE(EqualIgnoringCase(view, {other, Charset::Utf8}));
  EXPECT_TRUE(EndsWithIgnoringCase(view, {other, Charset::Latin1}));
  const std::string wanted = other.substr(0, kSize / 2) + "b";
  EXPECT_EQ(FindIgnoringCase(view, {wanted, Charset::Utf8}), kTextNotFound);
}

TEST(ALargeText, MatchesAWildcardAsWideText) {
  const CUnicodeString text(std::string(kSize, 'a') + "needle");
  EXPECT_TRUE(CRegex::Create("*NEEDLE*", true)->Matches(&text));
  EXPECT_TRUE(CRegex::Create("*NEEDLE", true)->Matches(&text));
  EXPECT_FALSE(CRegex::Create("NEEDLE*", true)->Matches(&text));
}

TEST(ALargeText, IsOneLineOrManyOrNone) {
  CText line;
  std::string text(kSize, '\r');
  EXPECT_EQ(ExtractLine(line, text.data(), text.size(), Charset::Utf8, kLineEndStrict, nullptr),
            0U);
  text.back() = '\n';
  EXPECT_EQ(ExtractLine(line, text.data(), text.size(), Charset::Utf8, kLineEndStrict, nullptr),
            kSize);
  EXPECT_EQ(line.Bytes().size(), kSize - 2);
  EXPECT_EQ(
      ExtractLine(line, text.data(), text.size(), Charset::Utf8, kLineEndFirstOfEither, nullptr),
      kSize);
  EXPECT_EQ(line.Bytes().size(), 0U);
}

TEST(ALargeText, IsChangedInItsPlace) {
  CText text(std::string(kSize, 'a'));
  text.Append("b\xC3\xA9", 3, Charset::Utf8);
  text.Append("\xE9", 1, Charset::Latin1);
  text.Erase(0, kSize);
  EXPECT_EQ(text.Utf8(), "b\xC3\xA9\xC3\xA9");
}

}  // namespace
