#include "Common/CBase64.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "tests/support/SharedData.h"

using namespace std::string_view_literals;

namespace {

// One decoding case. The name is the row's identity in reports, so it says why the row exists, not
// what is in it.
struct DecodeRow {
  const char* name;
  std::string_view text;
  std::optional<std::string_view> bytes;  // nothing: Decode refuses
};

constexpr DecodeRow kDecodeRows[] = {
    // Well-formed text, one row per tail length.
    {"ThreeByteTail", "Zm9v", "foo"sv},
    {"TwoByteTail", "Zm8=", "fo"sv},
    {"OneByteTail", "QQ==", "A"sv},
    {"ZeroBytesSurvive", "AAEA", "\0\1\0"sv},
    {"BothSymbols", "+/+/", "\xFB\xFF\xBF"sv},

    // Length is the only ground for refusal.
    {"Empty", "", std::nullopt},
    {"OneTooMany", "QUJDR", std::nullopt},
    {"OneTooFew", "QUJ", std::nullopt},

    // Contract: characters outside the alphabet are merged, and shorten the last group only.
    {"OutsideFourthCutsOne", "QUI*", "AB"sv},
    {"OutsideThirdCutsTwo", "QQ*D", "A"sv},
    {"OutsideSecondCutsNone", "Q*==", "\x44\x10\x40"sv},
    {"PaddingSecondCutsNone", "Q===", "\x44\x10\x40"sv},
    {"NothingButPadding", "====", "\x04\x10\x40"sv},
    {"PaddingInTheMiddle", "QQ==QQ==", "\x41\x10\x40\x41"sv},
    {"OutsideInEarlierGroupMerges", "QUI*QQ==", "AB@A"sv},
    {"HighBytesAreOutside", "QU\xFF\x80", "A"sv},
};

TEST(CBase64, DecodesTheRows) {
  for (const DecodeRow& row : kDecodeRows) {
    SCOPED_TRACE(row.name);
    const auto bytes = CBase64::Decode(row.text);
    ASSERT_EQ(bytes.has_value(), row.bytes.has_value());
    if (bytes) {
      EXPECT_EQ(*bytes, *row.bytes);
    }
  }
}

TEST(CBase64, EncodesTheVectorsOfItsStandard) {
  const std::pair<const char*, const char*> rows[] = {
      {"f", "Zg=="},        {"fo", "Zm8="},        {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"},
  };
  for (const auto& [bytes, text] : rows) {
    EXPECT_EQ(CBase64::Encode(std::string_view(bytes)), text);
    EXPECT_EQ(CBase64::Decode(std::string_view(text)), bytes);
  }
}

TEST(CBase64, EncodesNothingToNoObject) {
  EXPECT_EQ(CBase64::Encode(""sv), std::nullopt);
  EXPECT_EQ(CBase64::Encode(CText()).Impl(), nullptr);
  EXPECT_EQ(CBase64::Encode(CText("")).Impl(), nullptr);
  EXPECT_EQ(CBase64::Decode(CText(), Charset::Raw).Impl(), nullptr);
}

TEST(CBase64, TextsGoInAsBytesAndComeOutInTheNamedEncoding) {
  const CText encoded = CBase64::Encode(CText("\xC3\xA9"));
  EXPECT_EQ(encoded.Bytes(), "w6k=");
  EXPECT_EQ(encoded.Encoding(), Charset::Ascii);

  const CText decoded = CBase64::Decode(encoded, Charset::Utf8);
  EXPECT_EQ(decoded.Encoding(), Charset::Utf8);
  EXPECT_EQ(decoded.Length(), 1U);
  EXPECT_EQ(CBase64::Decode(encoded, Charset::Raw).Length(), 2U);
}

TEST(CBase64, DecodesTextsOfOneByteACharacter) {
  EXPECT_EQ(CBase64::Decode(CText("Q\0Q\0=\0=\0"sv, Charset::Utf16LE), Charset::Ascii).Bytes(),
            "A");
  // Two bytes in UTF-8, one as a character: a group of four.
  EXPECT_EQ(CBase64::Decode(CText("QUI\xC3\xA9"), Charset::Ascii).Bytes(), "AB");
  EXPECT_EQ(CBase64::Decode(CText("QUI\xE9", Charset::Latin1), Charset::Ascii).Bytes(), "AB");
  EXPECT_EQ(CBase64::Decode(CText("QUI\xE9", Charset::Raw), Charset::Ascii).Bytes(), "AB");
  EXPECT_EQ(CBase64::Decode(CText("QUI\xE2\x82\xAC"), Charset::Ascii).Impl(), nullptr);
}

// The oracle: writes out every bit and cuts the line every six. Too slow to ship, and nothing in it
// can share a mistake with the table-driven code.
std::string EncodeBitByBit(std::string_view bytes) {
  constexpr auto digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"sv;
  std::string bits;
  for (const unsigned char byte : bytes) {
    for (int bit = 7; bit >= 0; --bit) bits += byte >> bit & 1 ? '1' : '0';
  }
  while (bits.size() % 6 != 0) bits += '0';

  std::string text;
  for (std::size_t pos = 0; pos < bits.size(); pos += 6) {
    text += digits[std::stoul(bits.substr(pos, 6), nullptr, 2)];
  }
  while (text.size() % 4 != 0) text += '=';
  return text;
}

// The oracle of the lenient decoder: the formula of each byte, as it is told.
std::string DecodeByFormula(std::string_view text) {
  constexpr auto digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"sv;
  std::string bytes;
  std::size_t values[4] = {};
  for (std::size_t pos = 0; pos < text.size(); pos += 4) {
    for (std::size_t i = 0; i < 4; ++i)
      values[i] = std::min<std::size_t>(digits.find(text[pos + i]), 64);
    const auto [a, b, c, d] = values;
    for (const std::size_t byte : {a << 2 | b >> 4, b << 4 | c >> 2, c << 6 | d})
      bytes += static_cast<char>(byte & 255);
  }
  if (values[1] == 64) return bytes;
  return bytes.substr(0, bytes.size() - (values[2] == 64 ? 2 : values[3] == 64 ? 1 : 0));
}

TEST(CBase64, AgreesWithTheOraclesAndComesBack) {
  std::mt19937 random(20240611);  // fixed seed: a failure repeats
  for (std::size_t size = 1; size <= 300; ++size) {
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());

    const auto text = CBase64::Encode(std::string_view(bytes));
    ASSERT_TRUE(text) << "size " << size;
    EXPECT_EQ(*text, EncodeBitByBit(bytes)) << "size " << size;
    EXPECT_EQ(text->size(), CBase64::EncodedSize(size));
    EXPECT_EQ(CBase64::Decode(std::string_view(*text)), bytes) << "size " << size;

    bytes.resize((size + 3) / 4 * 4, '=');
    EXPECT_EQ(CBase64::Decode(std::string_view(bytes)), DecodeByFormula(bytes)) << "size " << size;
  }
}

std::string FromHex(std::string_view hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
  return bytes;
}

TEST(CBase64, AgreesWithThePublicVectors) {
  const auto path = SharedPath("testdata/base64/cases.tsv");
  if (!path) GTEST_SKIP() << "the public vectors are not here";
  int read = 0;
  for (const std::string& line : ReadLines(*path)) {
    std::vector<std::string> fields(1);
    for (const char byte : line) byte == '\t' ? fields.emplace_back() : fields.back() += byte;
    if (fields.size() < 4 || fields[2].empty() || (fields[3] != "both" && fields[3] != "decode"))
      continue;
    SCOPED_TRACE(line);
    ++read;
    EXPECT_EQ(CBase64::Decode(std::string_view(fields[2])), FromHex(fields[1]));
    if (fields[3] == "both") {
      EXPECT_EQ(CBase64::Encode(std::string_view(FromHex(fields[1]))), fields[2]);
    }
  }
  EXPECT_GT(read, 20);
}

}  // namespace
