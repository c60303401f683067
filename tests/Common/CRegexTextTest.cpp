// The text forms of CRegex and their conversions.

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "Common/CRegex.h"
#include "tests/support/SharedData.h"
#include "tests/support/TsvRows.h"

using namespace std::string_view_literals;

namespace {

std::string Glob(std::string_view glob, bool anchored, std::size_t start = 0) {
  std::string out = "old content";
  CRegex::GlobToExpression(glob, anchored, out, start);
  return out;
}

std::string Escape(std::string_view source, bool anchors, std::size_t start = 0) {
  std::string out = "old content";
  CRegex::EscapeForRegex(source, anchors, start, out);
  return out;
}

TEST(CRegexText, TellsTheRegexFormFromWildcards) {
  const struct {
    std::string_view text;
    bool isRegex;
    std::string_view inner;
  } rows[] = {
      {"regex()", true, ""},     {"regex(a)", true, "a"},
      {"regex(a))", true, "a)"}, {"regex(\n)", true, "\n"},
      {"regex(", false, ""},     {"regex", false, ""},
      {"", false, ""},           {"r", false, ""},
      {"Regex(a)", false, ""},   {"REGEX(a)", false, ""},
      {"regex(a) ", false, ""},  {" regex(a)", false, ""},
      {"regex a)", false, ""},   {"regex(a\0)"sv, true, "a\0"sv},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(CRegex::IsRegexForm(row.text), row.isRegex);
    EXPECT_EQ(CRegex::IsWildcardForm(row.text), !row.isRegex);
    EXPECT_EQ(CRegex::StripRegexForm(row.text), row.inner);
  }
}

TEST(CRegexText, KnowsFourteenMetaCharacters) {
  for (int byte = 0; byte < 256; ++byte) {
    const char character = static_cast<char>(byte);
    const bool isMeta = R"($()*+.?[\]^{|})"sv.find(character) != std::string_view::npos;
    EXPECT_EQ(CRegex::IsRegexMetaChar(character), isMeta) << byte;
  }
}

TEST(CRegexText, ConvertsGlobs) {
  const struct {
    std::string_view glob;
    std::string_view anchored;
    std::string_view loose;
  } rows[] = {
      {"*.txt", R"(^.*\.txt$)", R"(.*\.txt)"},
      {"a?c", "^a.c$", "a.c"},
      {"[!ab]*", "^[^ab].*$", "[^ab].*"},
      {"[!!a]", "^[^^a]$", "[^^a]"},
      {"[!]a]", "^[^]a]$", "[^]a]"},
      {"[a!]", "^[a!]$", "[a!]"},
      {"[]a]", "^[]a]$", "[]a]"},
      {"[]", "^[]$", "[]"},
      {"[", "^[$", "["},
      {"[!", "^[^$", "[^"},
      {"a[", "^a[$", "a["},
      {"[abc", "^[abc$", "[abc"},
      {"[*?.\\]x*", R"(^[*?.\]x.*$)", R"([*?.\]x.*)"},
      {"[a]]", R"(^[a]\]$)", R"([a]\])"},
      {R"(a\*b)", R"(^a\*b$)", R"(a\*b)"},
      {R"(a\?\[b)", R"(^a\?\[b$)", R"(a\?\[b)"},
      {R"(\[)", R"(^\[$)", R"(\[)"},
      {R"(\\)", R"(^\\$)", R"(\\)"},
      {R"(a\b)", "^ab$", "ab"},
      {R"(a\)", "^a$", "a"},
      {"]", R"(^\]$)", R"(\])"},
      {"a+b", R"(^a\+b$)", R"(a\+b)"},
      {"{x}", R"(^\{x\}$)", R"(\{x\})"},
      {"$()+.^{|}", R"(^\$\(\)\+\.\^\{\|\}$)", R"(\$\(\)\+\.\^\{\|\})"},
      {"***", "^.*.*.*$", ".*.*.*"},
      {"", "^$", ""},
      {"a\0b"sv, "^a\0b$"sv, "a\0b"sv},
      {"\xC3\xA4*", "^\xC3\xA4.*$", "\xC3\xA4.*"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.glob);
    EXPECT_EQ(Glob(row.glob, true), row.anchored);
    EXPECT_EQ(Glob(row.glob, false), row.loose);
  }
}

TEST(CRegexText, ConvertsGlobsFromAStart) {
  EXPECT_EQ(Glob("*a.b", true, 1), R"(^a\.b$)");
  EXPECT_EQ(Glob("*a.b", false, 1), R"(a\.b)");
  EXPECT_EQ(Glob("*", true, 1), "^$");
  EXPECT_EQ(Glob("*", false, 1), "");
  EXPECT_EQ(Glob("", true, 1), "^$");
  EXPECT_EQ(Glob("ab", true, 9), "^$");
}

TEST(CRegexText, ConvertsATextInPlace) {
  std::string text = "*.txt";
  CRegex::GlobToExpression(text, true, text);
  EXPECT_EQ(text, R"(^.*\.txt$)");
  CRegex::EscapeForRegex(text, false, 0, text);
  EXPECT_EQ(text, R"(\^\.\*\\\.txt\$)");
}

TEST(CRegexText, EscapesWhatIsMeant) {
  EXPECT_EQ(Escape("", false), "");
  EXPECT_EQ(Escape("", true), "^$");
  EXPECT_EQ(Escape("a.b", true), R"(^a\.b$)");
  EXPECT_EQ(Escape(R"($()*+.?[\]^{|}-)", false), R"(\$\(\)\*\+\.\?\[\\\]\^\{\|\}-)");
  EXPECT_EQ(Escape("*a*", true, 1), R"(^a\*$)");
  EXPECT_EQ(Escape("a", true, 5), "^$");
  EXPECT_EQ(Escape("a\0b"sv, false), "a\0b"sv);
}

TEST(CRegexText, AnEscapedTextMatchesItselfAlone) {
  std::string every;
  for (int byte = 0; byte < 256; ++byte) every += static_cast<char>(byte);
  const CRegexPtr regex = CRegex::Create(Escape(every, true), false);
  ASSERT_TRUE(regex);
  EXPECT_TRUE(regex->Matches(every));
  EXPECT_FALSE(regex->Matches(every + "a"));
}

TEST(CRegexText, NormalizesEmptyAlternatives) {
  const struct {
    std::string_view inner;
    std::string_view normal;
  } rows[] = {
      // The ends, which ask for neither escape nor bracket.
      {"|a|", "(a)?"},
      {"|a", "(a)?"},
      {"a|", "(a)?"},
      {"|", "()?"},
      {"||", "()?"},
      {"|||", "()?"},
      {R"(a\|)", R"((a\)?)"},
      // "|)" becomes ")?", or takes the "?" that follows.
      {"(a|)", "(a)?"},
      {"(a|)?", "(a)?"},
      {"(a|)*", "(a)?*"},
      {"(a|)(b|)", "(a)?(b)?"},
      {"(a|)?(b|)", "(a)?(b)?"},
      {"((a|)|)", "((a)?)?"},
      // "(|" loses its bar, and the empty alternative with it.
      {"(|a)", "(a)"},
      {"(||a)", "(|a)"},
      {"(|a)(|b)", "(a)(b)"},
      // "||" loses one.
      {"a||b", "a|b"},
      {"a|||b", "a||b"},
      {"a||||b", "a||b"},
      // What is escaped or in a bracket is not real; a bracket without an end is none.
      {R"((a\|))", R"((a\|))"},
      {R"(\(|a)x)", R"(\(|a)x)"},
      {R"(a\||b)", R"(a\||b)"},
      {"[|)]", "[|)]"},
      {"[(|]", "[(|]"},
      {"[||]", "[||]"},
      {"[a](|b)", "[a](b)"},
      {"[(|a)", "[(a)"},
      {"[a||b]c||d", "[a||b]c|d"},
      {"abc", "abc"},
      {"(a|b)", "(a|b)"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.inner);
    const std::string value = "regex(" + std::string(row.inner) + ")";
    EXPECT_EQ(CRegex::NormalizeEmptyAlternatives(value), "regex(" + std::string(row.normal) + ")");
  }
}

TEST(CRegexText, NormalizesNothingElse) {
  for (const char* value : {"", "|", "a||b", "regex()", "regex(|", "REGEX(|a)"}) {
    EXPECT_EQ(CRegex::NormalizeEmptyAlternatives(value), value);
  }
}

// The public glob suites: where they and this conversion part, the conversion is what counts.
TEST(CRegexText, AgreesWithThePublicGlobSuites) {
  for (const char* name : {"agree", "deviates"}) {
    const auto path = SharedPath("testdata/glob/" + std::string(name) + ".tsv");
    if (!path) continue;
    for (const TsvRow& row : ReadTsv(*path)) {
      SCOPED_TRACE(row["glob"] + " on " + row["text"]);
      const bool isDeviation = row.Has("converted");
      if (isDeviation) {
        EXPECT_EQ(Glob(row["glob"], true), row["converted"]);
      }
      const std::string expected = row[isDeviation ? "spec_conversion_says" : "matches"];
      if (expected != "0" && expected != "1") {
        EXPECT_FALSE(CRegex::Create(row["glob"], true)) << expected;
        continue;
      }
      const CRegexPtr regex = CRegex::Create(row["glob"], true);
      EXPECT_EQ(regex && regex->Matches(row["text"]), expected == "1");
    }
  }
}

}  // namespace
