#include "Common/TextDetection.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Common/EncodingRegistry.h"
#include "tests/support/SharedData.h"
#include "tests/support/TsvRows.h"

using namespace std::string_view_literals;

namespace {

// ---- the oracle: the rules word for word, byte by byte

bool SlowUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    if (lead == 0) return false;
    if (lead < 128) continue;
    if (!(lead & 0x40) || lead >= 0xFE) return false;
    for (int bit = 6; lead >> bit & 1; --bit) {
      if (++i == text.size() || (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return false;
    }
  }
  return true;
}

bool SlowGb18030(std::string_view text) {
  const auto at = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : -1;
  };
  for (std::size_t i = 0; i < text.size();) {
    if (at(i) <= 127) {
      i += 1;
    } else if (at(i) < 129 || at(i) > 254) {
      return false;
    } else if (at(i + 1) >= 64 && at(i + 1) <= 254 && at(i + 1) != 127) {
      i += 2;
    } else if (at(i + 1) >= 48 && at(i + 1) <= 57 && at(i + 2) >= 129 && at(i + 2) <= 254 &&
               at(i + 3) >= 48 && at(i + 3) <= 57) {
      i += 4;
    } else {
      return false;
    }
  }
  return true;
}

int SlowDetection(std::string_view text, bool withGb18030) {
  for (const char byte : text) {
    if (byte == 0) return 3;
    if (static_cast<unsigned char>(byte) < 128) continue;
    if (SlowUtf8(text)) return 1;
    return withGb18030 && SlowGb18030(text) ? 2 : 3;
  }
  return 0;
}

// What the environment of this run says; only "no" and "yes" in some spelling are in use here.
bool IsDisabledHere() {
  const char* value = std::getenv("QRX_DISABLE_GB18030");
  return value && (*value == 'y' || *value == 'Y');
}

void ExpectAgreement(std::string_view text) {
  ASSERT_EQ(IsValidUtf8(text.data(), text.size()), SlowUtf8(text)) << testing::PrintToString(text);
  ASSERT_EQ(IsGb18030(text.data(), text.size()), SlowGb18030(text)) << testing::PrintToString(text);
  ASSERT_EQ(DetectEncoding(text.data(), text.size()), SlowDetection(text, !IsDisabledHere()))
      << testing::PrintToString(text);
}

// ---- rows

TEST(TextDetection, TakesUtf8ByItsFormAlone) {
  struct Row {
    const char* name;
    std::string_view text;
    bool isValid;
  };
  constexpr Row kRows[] = {
      {"Empty", "", true},
      {"Ascii", "abc", true},
      {"Zero", "a\0b"sv, false},
      {"TwoBytes", "\xC3\xA9", true},
      {"ThreeBytes", "\xE2\x82\xAC", true},
      {"FourBytes", "\xF0\x90\x90\x80", true},
      {"FiveBytes", "\xF8\x88\x80\x80\x80", true},
      {"SixBytes", "\xFC\x84\x80\x80\x80\x80", true},
      {"Overlong", "\xC0\x80", true},
      {"Surrogate", "\xED\xA0\x80", true},
      {"StrayFollowUp", "a\x80", false},
      {"LeadFE", "\xFE\x80\x80\x80\x80\x80\x80", false},
      {"LeadFF", "\xFF", false},
      {"CutTwo", "\xC3", false},
      {"CutSix", "\xFC\x84\x80\x80\x80", false},
      {"WrongFollowUp",
       "\xE2\x82"
       "a",
       false},
      {"LeadAsFollowUp", "\xC3\xC3\xA9", false},
      {"ZeroBehindASequence", "\xC3\xA9\0"sv, false},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(IsValidUtf8(row.text.data(), row.text.size()), row.isValid) << row.name;
  }
}

TEST(TextDetection, DecidesByTheFirstByteThatIsNotPlain) {
  const int gb18030 = IsDisabledHere() ? 3 : 2;
  struct Row {
    std::string_view text;
    int detected;
  };
  const Row kRows[] = {
      {"", 0},
      {"abc", 0},
      {"\xC3\xA9", 1},
      {"\xC3", 3},
      {"a\0\xC3\xA9"sv, 3},
      {"\xC3\xA9\0"sv, gb18030},
      {"\xB0\xA1\xB0\xA2", gb18030},
      {"\x81\x30\x81\x30", gb18030},
      {"\x81\x30\x81", 3},
      {"\x81\x7F", 3},
      {"t\xE9t\xE9", 3},
      {"\x80", 3},
      {"\xFF\x40", 3},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(DetectEncoding(row.text.data(), row.text.size()), row.detected)
        << testing::PrintToString(row.text);
  }
}

TEST(TextDetection, MapsItsAnswersToEncodings) {
  EXPECT_EQ(EncodingOfDetection(0), Charset::Ascii);
  EXPECT_EQ(EncodingOfDetection(1), Charset::Utf8);
  EXPECT_EQ(EncodingOfDetection(2), Charset::Gb18030);
  EXPECT_EQ(EncodingOfDetection(3), Charset::Latin1);
  EXPECT_EQ(EncodingOfDetection(-1), Charset::Latin1);
}

// ---- against the oracle

TEST(TextDetection, AgreesOnAllInputsOfOneAndTwoBytes) {
  for (int first = 0; first < 256; ++first) {
    ExpectAgreement(std::string(1, static_cast<char>(first)));
    for (int second = 0; second < 256; ++second) {
      ExpectAgreement(std::string{static_cast<char>(first), static_cast<char>(second)});
    }
  }
}

// The odd byte at every place of texts that are longer than a step of the fast loops.
TEST(TextDetection, AgreesWhereverTheOddByteStands) {
  for (const std::string_view odd : {"\0"sv, "\x80"sv, "\xC3\xA9"sv, "\xE2\x82\xAC"sv, "\xC3"sv,
                                     "\x81\x30\x81\x30"sv, "\xB0\xA1"sv, "\x01"sv}) {
    for (std::size_t size = 0; size < 80; ++size) {
      for (std::size_t at = 0; at <= size; ++at) {
        std::string text(size, 'x');
        text.insert(at, odd);
        ExpectAgreement(text);
        const std::size_t zeroOrHigh = odd == "\x01"sv ? text.size() : at;
        ASSERT_EQ(FindZeroOrNonAscii(text.data(), text.size()), zeroOrHigh);
        ASSERT_EQ(FindNonAscii(text.data(), text.size()), odd == "\0"sv ? text.size() : zeroOrHigh);
      }
    }
  }
}

TEST(TextDetection, AgreesOnRandomTexts) {
  constexpr std::string_view kPieces[] = {"a",
                                          "plain text ",
                                          "\xC3\xA9",
                                          "\xE2\x82\xAC",
                                          "\xF0\x90\x90\x80",
                                          "\xB0\xA1",
                                          "\x81\x30\x81\x30",
                                          "\x80",
                                          "\xC3",
                                          "\0"sv,
                                          "\xFC\x84\x80\x80\x80\x80"};
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (std::size_t pieces = random() % 8; pieces != 0; --pieces) {
      // Later pieces rarely: most texts should stay valid for a while.
      text += kPieces[std::min(random() % std::size(kPieces), random() % std::size(kPieces))];
    }
    ExpectAgreement(text);
  }
}

TEST(TextDetection, AgreesOnThePublicCases) {
  const auto path = SharedPath("testdata/utf8/cases.tsv");
  if (!path) GTEST_SKIP() << "no public test data here";
  for (const TsvRow& row : ReadTsv(*path)) {
    const std::string text = FromHex(row["bytes_hex"]);
    ExpectAgreement(text);
    if (row["python_strict"] == "1" && text.find('\0') == std::string::npos) {
      EXPECT_TRUE(IsValidUtf8(text.data(), text.size())) << "strictly valid: " << row["id"];
    }
  }
}

TEST(TextDetection, ReadsNothingBehindTheEnd) {
  // A heap block of just these bytes, so that the sanitizer sees one too many.
  for (std::size_t size = 1; size < 70; ++size) {
    const std::vector<char> plain(size, 'x');
    EXPECT_EQ(DetectEncoding(plain.data(), size), 0);
    std::vector<char> cut(size, 'x');
    cut.back() = '\xF0';
    EXPECT_EQ(DetectEncoding(cut.data(), size), 3);
    EXPECT_FALSE(IsGb18030(cut.data(), size));
  }
}

}  // namespace
