// CRegex on CUnicodeString. Where it must not answer as it does on bytes, a row says so.

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "Common/CRegex.h"
#include "Common/CRegexException.h"
#include "Common/CUnicodeString.h"
#include "tests/Common/QuestionedHost.h"

using namespace std::string_view_literals;

namespace {

CUnicodeString Text(std::string_view utf8) {
  return CUnicodeString(utf8);
}

bool MatchesWide(const CRegexPtr& regex, std::string_view utf8) {
  const CUnicodeString text(utf8);
  return regex->Matches(&text);
}

TEST(CRegexWide, AsksForTheRegexFormWithoutRegardToCase) {
  struct Row {
    std::string_view text;
    bool isWideForm, isNarrowForm;
  };
  constexpr Row kRows[] = {
      {"regex(a)", true, true},  {"REGEX(a)", true, false},   {"ReGeX()", true, false},
      {"regex()", true, true},   {"regex(", false, false},    {"regex)", false, false},
      {"regex(a", false, false}, {"xregex(a)", false, false}, {"", false, false},
      {"(", false, false},       {"regex(a) ", false, false},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(CRegex::IsRegexForm(Text(row.text)), row.isWideForm) << row.text;
    EXPECT_EQ(CRegex::IsRegexForm(row.text), row.isNarrowForm) << row.text;
  }
  EXPECT_TRUE(CRegex::IsRegexForm(CUnicodeString("REGEX(a)", Charset::Raw)));
  EXPECT_TRUE(CRegex::IsRegexForm(CUnicodeString("R\0E\0G\0E\0X\0(\0)\0"sv, Charset::Utf16LE)));
}

TEST(CRegexWide, CreatesFromEitherForm) {
  const CUnicodeString expression("REGEX(a+(?i))");
  const CRegexPtr regex = CRegex::CreateFromValue(&expression);
  ASSERT_TRUE(regex);
  EXPECT_FALSE(regex->IsWildcard());
  EXPECT_EQ(regex->Pattern(), "a+");
  EXPECT_TRUE(CRegex::CreateFromValue("REGEX(a+(?i))")->IsWildcard()) << "as bytes";

  const CUnicodeString wildcard("a\xC3\xA9*");
  EXPECT_EQ(CRegex::CreateFromValue(&wildcard)->FastMode(), CRegexFastMode::FastPrefix);

  const CUnicodeString latin("regex(\xE9)", Charset::Latin1);
  EXPECT_EQ(CRegex::CreateFromValue(&latin)->Pattern(), "\xC3\xA9");
  const CUnicodeString raw("regex(\xE9)", Charset::Raw);
  EXPECT_EQ(CRegex::CreateFromValue(&raw)->Pattern(), "\xE9");

  const CUnicodeString bad("Regex(()");
  EXPECT_FALSE(CRegex::CreateFromValue(&bad));
  EXPECT_EQ(CRegex::CreateFromValue(static_cast<const CUnicodeString*>(nullptr))->Pattern(), "^$");
}

// The question about the form passes over bytes that are no characters, and so does what takes the
// expression out of it; those inside stay.
TEST(CRegexWide, TakesTheExpressionOutOfAFormWithUnreadableBytes) {
  struct Row {
    std::string_view value;
    std::uint32_t encoding;
    std::string_view pattern;
  };
  constexpr Row kRows[] = {
      {"\xFFregex(a)", Charset::Utf8, "a"},
      {"regex(a)\xFF", Charset::Utf8, "a"},
      {"re\xFFgex(a)", Charset::Utf8, "a"},
      {"\xFF\xFFRegex\xE2\x82(a(b)c)\xC3", Charset::Utf8, "a(b)c"},
      {"regex(\xFF"
       "a\xFF)",
       Charset::Utf8,
       "\xFF"
       "a\xFF"},
      {"\x80regex(a)", Charset::Ascii, "a"},
  };
  for (const Row& row : kRows) {
    const CUnicodeString value(row.value, row.encoding);
    EXPECT_TRUE(CRegex::IsRegexForm(value));
    const CRegexPtr regex = CRegex::CreateFromValue(&value);
    ASSERT_TRUE(regex) << testing::PrintToString(row.value);
    EXPECT_EQ(regex->Pattern(), row.pattern);
    EXPECT_FALSE(regex->IsWildcard());
  }
}

// The literal twice: as a text where the fast path has one, and never in a clone.
TEST(CRegexWide, MatchesOnTheFastPath) {
  struct Row {
    std::string_view wildcard;
    CRegexFastMode mode;
    std::string_view text;
    bool matches;
  };
  constexpr Row kRows[] = {
      {"abc", CRegexFastMode::FastExact, "ABC", true},
      {"abc", CRegexFastMode::FastExact, "abcd", false},
      {"abc", CRegexFastMode::FastExact, "", false},
      {"ab*", CRegexFastMode::FastPrefix, "ABx", true},
      {"ab*", CRegexFastMode::FastPrefix, "a", false},
      {"*ab", CRegexFastMode::FastSuffix, "xAB", true},
      {"*ab", CRegexFastMode::FastSuffix, "abx", false},
      {"*ab*", CRegexFastMode::FastContains, "xABx", true},
      {"*ab*", CRegexFastMode::FastContains, "axb", false},
      {"**", CRegexFastMode::FastAny, "", true},
      {"**", CRegexFastMode::FastAny, "line\nline", true},
      // A zero byte is like any other here, and ends nothing.
      {"a*", CRegexFastMode::FastPrefix, "a\0b"sv, true},
      {"*b", CRegexFastMode::FastSuffix, "a\0b"sv, true},
      {"a", CRegexFastMode::FastExact, "a\0b"sv, false},
  };
  for (const Row& row : kRows) {
    const CRegexPtr regex = CRegex::Create(row.wildcard, true);
    EXPECT_EQ(regex->FastMode(), row.mode) << row.wildcard;
    EXPECT_EQ(MatchesWide(regex, row.text), row.matches) << row.wildcard << " " << row.text;
    EXPECT_EQ(regex->Matches(row.text), row.matches) << row.wildcard << " " << row.text;
  }
}

TEST(CRegexWide, ComparesALiteralThatIsNoTextAsBytes) {
  for (const char* wildcard : {"\xE9", "\xE9*", "*\xE9", "*\xE9*"}) {
    const CRegexPtr regex = CRegex::Create(wildcard, true);
    for (const char* text : {"", "hello", "caf"}) {
      const CUnicodeString wide(text);
      EXPECT_FALSE(regex->Matches(&wide)) << text;
      EXPECT_FALSE(regex->Matches(text)) << text;
    }
    const CUnicodeString same("\xE9");
    EXPECT_TRUE(regex->Matches(&same));
    EXPECT_FALSE(regex->Matches(static_cast<const CUnicodeString*>(nullptr)));
  }
}

// Forms that look like UTF-8 and are no characters are no text either: a literal of them would have
// nothing to compare, and every text would match.
TEST(CRegexWide, ComparesFormsThatAreNoCharactersAsBytes) {
  for (const std::string_view form :
       {"\xC0\x80"sv, "\xED\xA0\x80"sv, "\xF4\x90\x80\x80"sv, "\xF8\x88\x80\x80\x80"sv}) {
    for (const bool before : {false, true}) {
      for (const bool behind : {false, true}) {
        const std::string stars[] = {before ? "*" : "", behind ? "*" : ""};
        const CRegexPtr regex = CRegex::Create(stars[0] + std::string(form) + stars[1], true);
        EXPECT_FALSE(MatchesWide(regex, "hello"));
        EXPECT_FALSE(MatchesWide(regex, ""));
        EXPECT_TRUE(MatchesWide(regex, form));
      }
    }
  }
}

TEST(CRegexWide, FoldsALiteralWithAZeroByte) {
  const CRegexPtr regex = CRegex::Create("\xC3\xA9\0*"sv, true);
  EXPECT_TRUE(MatchesWide(regex, "\xC3\x89\0z"sv));
  EXPECT_FALSE(MatchesWide(regex, "\xC3\x89z"));
}

TEST(CRegexWide, FoldsWhatBytesDoNot) {
  struct Row {
    std::string_view wildcard, text;
  };
  constexpr Row kRows[] = {
      {"\xC3\xA9", "\xC3\x89"},
      {"*\xC3\xA9", "caf\xC3\x89"},
      {"stra\xC3\x9F"
       "e*",
       "STRASSE 1"},
      {"*SS*",
       "stra\xC3\x9F"
       "e"},
  };
  for (const Row& row : kRows) {
    const CRegexPtr regex = CRegex::Create(row.wildcard, true);
    EXPECT_TRUE(MatchesWide(regex, row.text)) << row.wildcard;
    EXPECT_FALSE(regex->Matches(row.text)) << row.wildcard;
  }
}

TEST(CRegexWide, TakesNullForTheEmptyText) {
  const CUnicodeString* const none = nullptr;
  for (const std::string_view wildcard : {"a", "a*", "*a", "*a*"}) {
    EXPECT_FALSE(CRegex::Create(wildcard, true)->Matches(none)) << wildcard;
  }
  EXPECT_TRUE(CRegex::Create("*", true)->Matches(none));
  EXPECT_TRUE(CRegex::Create("", true)->Matches(none));
  EXPECT_TRUE(CRegex::Create("x*", false)->Matches(none));
  EXPECT_FALSE(CRegex::Create("x+", false)->Matches(none));
}

TEST(CRegexWide, ShowsTheEngineTheTextUpToAZeroByte) {
  const CRegexPtr regex = CRegex::Create("ab?", false);
  EXPECT_TRUE(MatchesWide(regex, "ab\0cd"sv));
  EXPECT_FALSE(regex->Matches("ab\0cd"sv));
  EXPECT_TRUE(MatchesWide(CRegex::Create("", false), "\0a"sv));
}

TEST(CRegexWide, ConvertsForTheEngine) {
  const CRegexPtr regex = CRegex::Create("caf\xC3\xA9.?", false);
  const CUnicodeString latin("caf\xE9", Charset::Latin1);
  EXPECT_TRUE(regex->Matches(&latin));
  const CUnicodeString utf16("c\0a\0f\0\xE9\0s\0"sv, Charset::Utf16LE);
  EXPECT_TRUE(regex->Matches(&utf16));
  EXPECT_FALSE(MatchesWide(regex, "caf\xC3\x89")) << "the engine folds bytes";
}

TEST(CRegexWide, SaysThatTheEngineFailed) {
  const HostInSlot quiet(Gates{.active = false});
  const CRegexPtr regex = CRegex::Create("(x*)\\1(a|b)*[c-w]", false);
  const CUnicodeString text(std::string(2'000'000, 'a'));
  try {
    regex->Matches(&text);
    ADD_FAILURE() << "an answer";
  } catch (const CRegexException& failure) {
    EXPECT_EQ(failure.Reason(),
              "Internal error in regex matching: "
              "'Complexity of regex match exceeded implementation limits'");
  }
  EXPECT_TRUE(MatchesWide(regex, "aaac"));
}

struct ValidRow {
  std::string_view value;
  bool isValid;
};

TEST(CRegexWide, TellsWhetherAValueCompiles) {
  constexpr ValidRow kRows[] = {
      {"regex(a+)", true},
      {"regex(()", false},
      {"regex(a(?i)b)", true},
      {"[abc", false},
      {"*.txt", true},
      {"", true},
      {"(?i)abc", true},
      {"[(?i)]", true},
      // Contract: only an expression loses its case marks.
      {"[a-(?i)b]", false},
      {"regex([a-(?i)b])", true},
      {"regex([)", false},
      {"regex(", true},
      // Contract: the question about bytes, so these are wildcards.
      {"REGEX(()", true},
      {"Regex([a)", false},
  };
  for (const ValidRow& row : kRows) {
    const CUnicodeString value(row.value);
    EXPECT_EQ(CRegex::IsValid(&value), row.isValid) << row.value;
  }
  EXPECT_TRUE(CRegex::IsValid(nullptr));
}

TEST(CRegexWide, LogsWhyAValueDoesNotCompile) {
  const HostInSlot host(Gates{});
  const CUnicodeString value("regex(()");
  EXPECT_FALSE(CRegex::IsValid(&value));
  ASSERT_EQ(host->fPrinted.size(), 1U);
  const PrintedLine& line = host->fPrinted.front();
  EXPECT_EQ(line.level, 3U);
  EXPECT_EQ(line.className, "CRegex");
  EXPECT_EQ(line.function, "IsValid");
  EXPECT_EQ(line.file, "Common\\CRegex");
  EXPECT_TRUE(line.message.starts_with("String is not a valid regex: 'regex(()' - error: "))
      << line.message;
}

}  // namespace
