#include "Common/CaseMapping.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/SharedData.h"
#include "tests/support/TsvRows.h"

namespace {

constexpr char32_t kBeyondAll = 0x110000;

// Where the distribution's package of the Unicode data puts it. The tables are of one version, and
// another one is not asked.
const std::filesystem::path kUnicodeData = "/usr/share/unicode";

bool HasUnicodeData() {
  return std::filesystem::exists(kUnicodeData / "UnicodeData.txt") &&
         ReadLines(kUnicodeData / "CaseFolding.txt").front() == "# CaseFolding-15.0.0.txt";
}

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields;
  std::istringstream stream(line);
  for (std::string field; std::getline(stream, field, ';');) {
    const std::size_t first = field.find_first_not_of(' ');
    fields.push_back(first == std::string::npos ? "" : field.substr(first));
  }
  return fields;
}

char32_t CodePoint(const std::string& hex) {
  return static_cast<char32_t>(std::stoul(hex, nullptr, 16));
}

std::u32string Folded(char32_t value) {
  const FoldedCase folded = FoldCase(value);
  return {folded.values, folded.count};
}

TEST(CaseMapping, MapsEveryCodePointAsTheUnicodeDataDoes) {
  if (!HasUnicodeData()) GTEST_SKIP() << "the package unicode-data is not installed";
  std::map<char32_t, char32_t> upper, lower;
  for (const std::string& line : ReadLines(kUnicodeData / "UnicodeData.txt")) {
    const auto fields = Fields(line);
    if (fields.size() < 14) continue;
    if (!fields[12].empty()) upper[CodePoint(fields[0])] = CodePoint(fields[12]);
    if (!fields[13].empty()) lower[CodePoint(fields[0])] = CodePoint(fields[13]);
  }
  EXPECT_EQ(upper.size(), 1450U);
  EXPECT_EQ(lower.size(), 1433U);
  for (char32_t value = 0; value < kBeyondAll; ++value) {
    const auto up = upper.find(value);
    ASSERT_EQ(UpperCase(value), up == upper.end() ? value : up->second);
    const auto low = lower.find(value);
    ASSERT_EQ(LowerCase(value), low == lower.end() ? value : low->second);
  }
}

TEST(CaseMapping, FoldsEveryCodePointAsTheUnicodeDataDoes) {
  if (!HasUnicodeData()) GTEST_SKIP() << "the package unicode-data is not installed";
  std::map<char32_t, std::u32string> folding;
  for (const std::string& line : ReadLines(kUnicodeData / "CaseFolding.txt")) {
    const auto fields = Fields(line.substr(0, line.find('#')));
    if (fields.size() < 3 || (fields[1] != "C" && fields[1] != "F")) continue;
    std::istringstream codes(fields[2]);
    for (std::string code; codes >> code;) folding[CodePoint(fields[0])] += CodePoint(code);
  }
  EXPECT_EQ(folding.size(), 1530U);
  for (char32_t value = 0; value < kBeyondAll; ++value) {
    const auto entry = folding.find(value);
    ASSERT_EQ(Folded(value), entry == folding.end() ? std::u32string(1, value) : entry->second);
  }
}

// The same data as a table, for machines without the package. Mappings of another kind (Turkish and
// simple folding) are not to be in use.
TEST(CaseMapping, AgreesWithThePublicCases) {
  const auto full = SharedPath("testdata/unicode/casefold_full.tsv");
  const auto other = SharedPath("testdata/unicode/casefold_other.tsv");
  const auto simple = SharedPath("testdata/unicode/simple_case.tsv");
  if (!full || !other || !simple) GTEST_SKIP() << "the public tables are not here";
  for (const TsvRow& row : ReadTsv(*full)) {
    std::u32string folded;
    std::istringstream codes(row["folded"]);
    for (std::string code; codes >> code;) folded += CodePoint(code);
    EXPECT_EQ(Folded(CodePoint(row["code"])), folded) << row["code"];
  }
  for (const TsvRow& row : ReadTsv(*other)) {
    EXPECT_NE(Folded(CodePoint(row["code"])), std::u32string(1, CodePoint(row["folded"])))
        << row["code"];
  }
  for (const TsvRow& row : ReadTsv(*simple)) {
    const char32_t value = CodePoint(row["code"]);
    const auto mapped = [&](const char* column) {
      return row[column].empty() ? value : CodePoint(row[column]);
    };
    EXPECT_EQ(UpperCase(value), mapped("upper")) << row["code"];
    EXPECT_EQ(LowerCase(value), mapped("lower")) << row["code"];
  }
}

// What the tests above found equal to the data: a change of a table shows here on any machine.
TEST(CaseMapping, KeepsItsTables) {
  std::uint64_t hash = 14695981039346656037U;
  const auto add = [&hash](char32_t value) { hash = (hash ^ value) * 1099511628211U; };
  for (char32_t value = 0; value < kBeyondAll; ++value) {
    add(UpperCase(value));
    add(LowerCase(value));
    for (const char32_t folded : Folded(value)) add(folded);
  }
  EXPECT_EQ(hash, 7742700760851492494U);
}

TEST(CaseMapping, FoldsOneToThreeCodePoints) {
  EXPECT_EQ(Folded(U'A'), U"a");
  EXPECT_EQ(Folded(U'@'), U"@");
  EXPECT_EQ(Folded(U'['), U"[");
  EXPECT_EQ(Folded(0xB5), U"\u03BC");
  EXPECT_EQ(Folded(0xDF), U"ss");
  EXPECT_EQ(Folded(0x130), U"i\u0307");
  EXPECT_EQ(Folded(0x131), U"\u0131");
  EXPECT_EQ(Folded(0x1E9E), U"ss");
  EXPECT_EQ(Folded(0xFB03), U"ffi");
  EXPECT_EQ(Folded(0x212A), U"k");
  EXPECT_EQ(Folded(0x13F8), U"\u13F0");
  EXPECT_EQ(Folded(0x1C90), U"\u10D0") << "younger than the table's first form";
  EXPECT_EQ(Folded(0x10400), U"\U00010428");
  EXPECT_EQ(Folded(0x1E921), U"\U0001E943");
  EXPECT_EQ(Folded(0x1E922), U"\U0001E922");
  EXPECT_EQ(Folded(0x10FFFF), U"\U0010FFFF");
}

TEST(CaseMapping, TakesAnyValue) {
  for (const char32_t value : {0x110000U, 0xFFFFFFFFU, 0xD800U}) {
    EXPECT_EQ(UpperCase(value), value);
    EXPECT_EQ(LowerCase(value), value);
    EXPECT_EQ(Folded(value), std::u32string(1, value));
  }
}

}  // namespace
