#include "Common/Punycode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "Common/UrlText.h"
#include "Common/Utf8.h"
#include "tests/support/SharedData.h"

namespace {

TEST(Punycode, CodesBothWays) {
  const std::pair<const char*, const char*> rows[] = {
      {"b\xC3\xBC"
       "cher",
       "xn--bcher-kva"},
      {"\xC3\xBC", "xn--tda"},
      {"\xF0\x9F\x92\xA9", "xn--ls8h"},
      {"Porqu\xC3\xA9nopuedensimplementehablarenEspa\xC3\xB1ol",
       "xn--PorqunopuedensimplementehablarenEspaol-fmd56a"},
      {"\xE4\xBB\x96\xE4\xBB\xAC\xE4\xB8\xBA\xE4\xBB\x80\xE4\xB9\x88\xE4\xB8\x8D\xE8\xAF\xB4"
       "\xE4\xB8\xAD\xE6\x96\x87",
       "xn--ihqwcrb4cv8a8dqg056pqjye"},
      {"3\xE5\xB9\xB4"
       "B\xE7\xB5\x84\xE9\x87\x91\xE5\x85\xAB\xE5\x85\x88\xE7\x94\x9F",
       "xn--3B-ww4c5e180e575a65lsy2b"},
  };
  for (const auto& [name, coded] : rows) {
    EXPECT_EQ(Punycode::EncodeLabel(name), coded);
    EXPECT_EQ(Punycode::DecodeLabel(coded), name);
  }
}

TEST(Punycode, DecodesTheOddLabels) {
  const std::pair<const char*, const char*> rows[] = {
      {"", ""},
      {"abc", "abc"},
      {"xn-", "xn-"},
      {"\xFF", "\xFF"},  // without the prefix nothing is looked at
      {"xn--", ""},
      {"xn---", ""},  // Contract: the delimiter is taken off, with nothing before it
      {"xn--abc-", "abc"},
      {"xn---tda", "\xC3\xBC"},
      {"XN--BCHER-KVA",
       "B\xC3\xBC"
       "CHER"},
      {"xN--bcher-KVA",
       "b\xC3\xBC"
       "cher"},
      {"xn---> $1.00 <--", "-> $1.00 <-"},
  };
  for (const auto& [label, name] : rows) EXPECT_EQ(Punycode::DecodeLabel(label), name) << label;
}

TEST(Punycode, RefusesWhatStandsForNothing) {
  const std::string rows[] = {
      "xn--bcher-kv",                   // ends inside a number
      "xn--a-!",                        // no digit
      "xn--a-\xC3\xBC",                 //
      "xn--\xC3\xBC-tda",               // a basic character that is none
      "xn--99999999",                   // beyond the last code point
      "xn--a-" + std::string(50, '9'),  // a number too large
      "xn--" + std::string(2048, 'a'),  // too long
  };
  for (const std::string& label : rows)
    EXPECT_EQ(Punycode::DecodeLabel(label), std::nullopt) << label;
  for (const char* label : {"\xFF", "a\xC3", "\xC0\x80", "\xED\xA0\x80"})
    EXPECT_EQ(Punycode::EncodeLabel(label), std::nullopt);
}

TEST(Punycode, RefusesSurrogatesAndNothingBesideThem) {
  EXPECT_EQ(Punycode::EncodeLabel("\xED\x9F\xBF"), "xn--hb9b");
  EXPECT_EQ(Punycode::DecodeLabel("xn--hb9b"), "\xED\x9F\xBF");  // U+D7FF
  EXPECT_EQ(Punycode::DecodeLabel("xn--ib9b"), std::nullopt);    // U+D800
  EXPECT_EQ(Punycode::DecodeLabel("xn--zy0c"), std::nullopt);    // U+DFFF
  EXPECT_EQ(Punycode::DecodeLabel("xn--0y0c"), "\xEE\x80\x80");  // U+E000
  EXPECT_EQ(Punycode::DecodeLabel("xn--dn32g"), "\xF4\x8F\xBF\xBF");
}

TEST(Punycode, LimitsTheLabelsThatItCodes) {
  const std::string plain(100000, 'a');
  EXPECT_EQ(Punycode::EncodeLabel(plain), plain);
  EXPECT_EQ(Punycode::DecodeLabel(plain), plain);
  EXPECT_EQ(Punycode::EncodeLabel(plain + "\xC3\xBC"), std::nullopt);
  const std::string longest(2000, 'a');
  const auto coded = Punycode::EncodeLabel(longest + "\xF4\x8F\xBF\xBF");
  ASSERT_TRUE(coded);
  EXPECT_EQ(Punycode::DecodeLabel(*coded), longest + "\xF4\x8F\xBF\xBF");
}

TEST(Punycode, CodesHostsLabelByLabel) {
  const std::pair<const char*, const char*> rows[] = {
      {"", ""},
      {".", "."},
      {"example.com.", "example.com."},
      {"b\xC3\xBC"
       "cher.example.\xC3\xBC",
       "xn--bcher-kva.example.xn--tda"},
      {"caf\xC3\xA9..com", "xn--caf-dma..com"},
  };
  for (const auto& [name, coded] : rows) {
    EXPECT_EQ(Punycode::EncodeHost(name), coded);
    EXPECT_EQ(Punycode::DecodeHost(coded), name);
  }
  EXPECT_EQ(Punycode::DecodeHost("good.xn--a-!.com"), std::nullopt);
  EXPECT_EQ(Punycode::EncodeHost("good.\xFF.com"), std::nullopt);
}

TEST(Punycode, KnowsItsPrefix) {
  for (const char* text : {"xn--", "XN--a", "xN--"}) EXPECT_TRUE(Punycode::HasPrefix(text)) << text;
  for (const char* text : {"", "xn-", "axn--", "xm--"}) EXPECT_FALSE(Punycode::HasPrefix(text));
}

TEST(Punycode, ComesBackFromEveryCodePoint) {
  std::mt19937 random(11);  // fixed seed: a failure repeats
  for (int i = 0; i < 3000; ++i) {
    std::u32string points;
    const std::size_t size = 1 + random() % 20;
    while (points.size() < size) {
      const char32_t limit = std::vector<char32_t>{0x80, 0x800, 0x10000, 0x110000}[random() % 4];
      const char32_t point = random() % limit;
      if (IsScalarValue(point)) points += point;
    }
    points += char32_t{0xFC};
    const std::string name = Utf8FromWide(points);
    const auto coded = Punycode::EncodeLabel(name);
    ASSERT_TRUE(coded);
    ASSERT_TRUE(std::all_of(coded->begin(), coded->end(), [](char c) { return (c & 0x80) == 0; }));
    ASSERT_EQ(Punycode::DecodeLabel(*coded), name) << *coded;
  }
}

std::vector<std::vector<std::string>> Table(const std::filesystem::path& path) {
  std::vector<std::vector<std::string>> rows;
  for (const std::string& line : ReadLines(path)) {
    if (line.starts_with('#')) continue;
    auto& fields = rows.emplace_back(1);
    for (const char byte : line) byte == '\t' ? fields.emplace_back() : fields.back() += byte;
  }
  return rows;
}

TEST(Punycode, AgreesWithThePublicSamples) {
  const auto path = SharedPath("testdata/punycode/samples.tsv");
  if (!path) GTEST_SKIP() << "the public vectors are not here";
  for (const auto& row : Table(*path)) {
    const std::string name = DecodePercent(row.at(2)).value();
    const std::string coded = DecodePercent(row.at(3)).value();
    SCOPED_TRACE(coded);
    if (row.at(4) == "host") {
      EXPECT_EQ(Punycode::EncodeHost(name), coded);
      EXPECT_EQ(Punycode::DecodeHost(coded), name);
      continue;
    }
    EXPECT_EQ(Punycode::DecodeLabel("xn--" + coded), name);
    const bool isPlain =
        std::all_of(name.begin(), name.end(), [](char c) { return (c & 0x80) == 0; });
    EXPECT_EQ(Punycode::EncodeLabel(name), isPlain ? name : "xn--" + coded);
  }
}

TEST(Punycode, AgreesWithThePublicLabels) {
  const auto path = SharedPath("testdata/punycode/idn_labels.tsv");
  if (!path) GTEST_SKIP() << "the public vectors are not here";
  for (const auto& row : Table(*path)) {
    const std::string name = DecodePercent(row.at(2)).value();
    EXPECT_EQ(Punycode::DecodeLabel(row.at(1)), name) << row.at(1);
    EXPECT_EQ(Punycode::EncodeLabel(name), row.at(1));
  }
}

}  // namespace
