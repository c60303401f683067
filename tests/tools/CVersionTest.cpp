#include "tools/tovrin/CVersion.h"

#include <gtest/gtest.h>

namespace RefHost {
namespace {

TEST(CVersion, ComparesNumberByNumber) {
  const struct {
    const char* less;
    const char* greater;
  } rows[] = {{"1.18.0", "1.20.16.0"}, {"1.9", "1.10"}, {"1", "1.0.0.1"}, {"0", "1"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.less);
    EXPECT_TRUE(*CVersion::Parse(row.less) < *CVersion::Parse(row.greater));
    EXPECT_FALSE(*CVersion::Parse(row.greater) < *CVersion::Parse(row.less));
  }
}

TEST(CVersion, TakesAMissingNumberForZero) {
  EXPECT_FALSE(*CVersion::Parse("1.2") < *CVersion::Parse("1.2.0.0"));
  EXPECT_FALSE(*CVersion::Parse("1.2.0.0") < *CVersion::Parse("1.2"));
}

TEST(CVersion, RefusesWhatIsNoVersion) {
  for (const char* text : {"", ".", "1.", ".1", "1..2", "a", "1.b", "1-2", "-1", "99999999999"}) {
    EXPECT_FALSE(CVersion::Parse(text)) << text;
  }
}

TEST(CVersionRange, IncludesItsEnds) {
  const struct {
    const char* range;
    const char* version;
    bool contains;
  } rows[] = {
      {"[1.18.0-]", "1.20.16.0", true},    {"[1.18.0-]", "1.18", true},
      {"[1.18.0-]", "1.17.9", false},      {"[1.18-1.20]", "1.20", true},
      {"[1.18-1.20]", "1.20.16.0", false}, {"[-1.20.16.0]", "1.20.16.0", true},
      {"[-1.20.15]", "1.20.16.0", false},  {"[-]", "0", true},
      {"[2.0.0-]", "1.20.16.0", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.range) + " " + row.version);
    const auto range = CVersionRange::Parse(row.range);
    ASSERT_TRUE(range);
    EXPECT_EQ(range->Contains(*CVersion::Parse(row.version)), row.contains);
  }
}

TEST(CVersionRange, RefusesWhatIsNoRange) {
  for (const char* text : {"", "[", "[]", "1.18-", "[1.18.0]", "[1.x-]", "[1-2-3]", "[1.18-"}) {
    EXPECT_FALSE(CVersionRange::Parse(text)) << text;
  }
}

}  // namespace
}  // namespace RefHost
