// CRegex as its callers see it: construction, the fast path, matching, replacing and walking. What
// std::regex makes of an expression is held against std::regex in CRegexDifferentialTest.cpp.

#include "Common/CRegex.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/Common/QuestionedHost.h"

using namespace std::string_view_literals;

namespace {

CRegexPtr Expression(std::string_view text) {
  return CRegex::Create(text, false);
}

CRegexPtr Wildcard(std::string_view text) {
  return CRegex::Create(text, true);
}

std::string Replaced(std::string_view expression, std::string_view text, std::string_view format,
                     bool all) {
  const CRegexPtr regex = Expression(expression);
  std::string out = "old content";
  if (regex) regex->Replace(text, format, out, all);
  return out;
}

std::vector<std::string> AllMatches(std::string_view expression, std::string_view text) {
  CRegexScan scan;
  const CRegexPtr regex = Expression(expression);
  regex->ScanAll(text, scan);
  std::vector<std::string> matches;
  for (std::string_view match; scan.Next(match);) {
    matches.push_back(std::string(match) + "@" + std::to_string(match.data() - text.data()));
  }
  return matches;
}

// ---- construction

TEST(CRegex, KeepsWhatItWasMadeFrom) {
  const CRegexPtr wildcard = Wildcard("A*.b");
  EXPECT_EQ(wildcard->Source(), "A*.b");
  EXPECT_EQ(wildcard->Pattern(), R"(^A.*\.b$)");
  EXPECT_TRUE(wildcard->IsWildcard());
  EXPECT_FALSE(wildcard->HasAffix());

  const CRegexPtr expression = Expression("A*.b");
  EXPECT_EQ(expression->Source(), "A*.b");
  EXPECT_EQ(expression->Pattern(), "A*.b");
  EXPECT_FALSE(expression->IsWildcard());
}

TEST(CRegex, StartsWithOneReference) {
  CRegexPtr regex = Expression("a");
  EXPECT_EQ(regex->UseCount(), 1u);
  CRegexPtr second = regex;
  EXPECT_EQ(regex->UseCount(), 2u);
  EXPECT_FALSE(second.Detach()->Release());
  EXPECT_TRUE(regex.Detach()->Release());
}

TEST(CRegex, TakesEitherTextFormAsAValue) {
  EXPECT_FALSE(CRegex::CreateFromValue("regex(a.c)")->IsWildcard());
  EXPECT_EQ(CRegex::CreateFromValue("regex(a.c)")->Source(), "a.c");
  EXPECT_TRUE(CRegex::CreateFromValue("a.c")->IsWildcard());
  EXPECT_TRUE(CRegex::CreateFromValue("REGEX(a)")->IsWildcard());
  EXPECT_TRUE(CRegex::CreateFromValue("REGEX(a)")->Matches("regex(A)"));
  EXPECT_EQ(CRegex::CreateFromValue("regex()")->Source(), "");
  EXPECT_FALSE(CRegex::CreateFromValue("regex(()"));
  EXPECT_TRUE(CRegex::CreateFromRegexForm("regex(a*)", true)->IsWildcard());
  EXPECT_EQ(CRegex::CreateFromRegexForm("regex(a*)", true)->Source(), "a*");
  EXPECT_EQ(CRegex::CreateFromRegexForm("regex(a*)", false)->FastMode(), CRegexFastMode::FastNone);
}

TEST(CRegex, RemovesCaseMarks) {
  const struct {
    std::string_view text;
    bool isWildcard;
    std::string_view source;
    bool compiles;
  } rows[] = {
      {"(?i)abc", false, "abc", true},
      {"a(?i)b(?i)c", false, "abc", true},
      {"(?i)(?i)abc", false, "abc", true},
      {"(?i)abc", true, "abc", true},
      {"(?i)", false, "", true},
      {"(?i)", true, "", true},
      // Contract: a mark that only a removal brings together stays, and does not compile.
      {"((?i)?i)a", false, "(?i)a", false},
      {"((?i)?i)a", true, "(?i)a", true},
      // Contract: a backslash in front saves nothing, and is left over.
      {R"(\(?i))", false, "\\", false},
      {R"(\(?i)a)", false, R"(\a)", true},
      {"(?I)a", false, "(?I)a", false},
      {"[(?i)]", false, "[]", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const CRegexPtr regex = CRegex::Create(row.text, row.isWildcard);
    ASSERT_EQ(static_cast<bool>(regex), row.compiles);
    if (regex) {
      EXPECT_EQ(regex->Source(), row.source);
    }
  }
}

TEST(CRegex, TellsTheDebugLogWhyAnExpressionIsBad) {
  const HostInSlot host(Gates{});
  EXPECT_FALSE(Expression("(?i)a("));
  EXPECT_FALSE(CRegex::CreateFromValue("regex([)"));
  EXPECT_TRUE(Expression("a"));
  ASSERT_EQ(host->fPrinted.size(), 2u);
  const PrintedLine& line = host->fPrinted[0];
  EXPECT_EQ(line.level, 3u);
  EXPECT_EQ(line.className, "CRegex");
  EXPECT_EQ(line.function, "Create");
  EXPECT_EQ(line.file, "Common\\CRegex");
  const std::string start = "String is not a valid regex: '(?i)a(' - error: ";
  EXPECT_TRUE(line.message.starts_with(start)) << line.message;
  EXPECT_GT(line.message.size(), start.size());
  EXPECT_TRUE(host->fPrinted[1].message.starts_with("String is not a valid regex: '[' - error: "));
}

TEST(CRegex, TellsNothingBehindAClosedGate) {
  const HostInSlot host(Gates{.level = false});
  EXPECT_FALSE(Expression("("));
  EXPECT_TRUE(host->fPrinted.empty());
}

TEST(CRegex, ClonesThePattern) {
  const CRegexPtr wildcard = Wildcard("a*");
  const CRegexPtr clone = wildcard->Clone();
  EXPECT_EQ(clone->Source(), "^a.*$");
  EXPECT_EQ(clone->FastMode(), CRegexFastMode::FastNone);
  EXPECT_FALSE(clone->IsWildcard());
  EXPECT_NE(clone, wildcard);
  for (const char* text : {"", "a", "A", "ab", "ba"}) {
    EXPECT_EQ(clone->Matches(text), wildcard->Matches(text)) << text;
  }
  // Contract: the fast path goes over a line end, and the engine does not.
  EXPECT_TRUE(wildcard->Matches("a\n"));
  EXPECT_FALSE(clone->Matches("a\n"));
}

TEST(CRegex, TakesAffixInfo) {
  const CRegexPtr regex = Expression("a");
  regex->SetAffixInfo(true, 3);
  EXPECT_TRUE(regex->HasAffix());
  EXPECT_EQ(regex->AffixGroups(), 3u);
  regex->SetAffixInfo(false, 0);
  EXPECT_FALSE(regex->HasAffix());
}

TEST(CRegex, CountsGroups) {
  EXPECT_EQ(Expression("")->GetCaptureCount(), 0u);
  EXPECT_EQ(Expression("(?:a)")->GetCaptureCount(), 0u);
  EXPECT_EQ(Expression("(a)((b)|(c))")->GetCaptureCount(), 4u);
  EXPECT_EQ(Wildcard("(a)")->GetCaptureCount(), 0u);
}

// ---- the fast path

struct FastRow {
  std::string_view wildcard;
  CRegexFastMode mode;
  std::string_view literal;
};

constexpr FastRow kFastRows[] = {
    {"", CRegexFastMode::FastNone, ""},
    {"*", CRegexFastMode::FastAny, ""},
    {"***", CRegexFastMode::FastAny, ""},
    {"abc", CRegexFastMode::FastExact, "abc"},
    {"ABC", CRegexFastMode::FastExact, "abc"},
    {"a", CRegexFastMode::FastExact, "a"},
    {"abc*", CRegexFastMode::FastPrefix, "abc"},
    {"a**", CRegexFastMode::FastPrefix, "a"},
    {"*abc", CRegexFastMode::FastSuffix, "abc"},
    {"**a", CRegexFastMode::FastSuffix, "a"},
    {"*abc*", CRegexFastMode::FastContains, "abc"},
    {"**a**", CRegexFastMode::FastContains, "a"},
    {"*a*b", CRegexFastMode::FastNone, ""},
    {"a*b", CRegexFastMode::FastNone, ""},
    {"a?c", CRegexFastMode::FastNone, ""},
    {"a[bc]", CRegexFastMode::FastNone, ""},
    {"*?", CRegexFastMode::FastNone, ""},
    {R"(a\*c*)", CRegexFastMode::FastPrefix, "a*c"},
    {R"(\[)", CRegexFastMode::FastExact, "["},
    {R"(\?)", CRegexFastMode::FastExact, "?"},
    {R"(\\)", CRegexFastMode::FastExact, "\\"},
    {R"(\\*)", CRegexFastMode::FastPrefix, "\\"},
    {R"(\\\*x)", CRegexFastMode::FastExact, R"(\*x)"},
    {R"(a\bc)", CRegexFastMode::FastNone, ""},
    {R"(\])", CRegexFastMode::FastNone, ""},
    {R"(a\)", CRegexFastMode::FastNone, ""},
    // Contract: the star behind this backslash counts as a trailing star, and the backslash is
    // last.
    {R"(a\*)", CRegexFastMode::FastNone, ""},
    {"]", CRegexFastMode::FastExact, "]"},
    {"a.b+c$", CRegexFastMode::FastExact, "a.b+c$"},
    {"(a|b){2}^", CRegexFastMode::FastExact, "(a|b){2}^"},
    {"\xC3\x84*", CRegexFastMode::FastPrefix, "\xC3\x84"},
    {"a\0B*"sv, CRegexFastMode::FastPrefix, "a\0b"sv},
};

TEST(CRegex, FindsTheFastPathOfSimpleWildcards) {
  for (const FastRow& row : kFastRows) {
    SCOPED_TRACE(row.wildcard);
    const CRegexPtr regex = Wildcard(row.wildcard);
    ASSERT_TRUE(regex);
    EXPECT_EQ(regex->FastMode(), row.mode);
    EXPECT_EQ(regex->Literal(), row.literal);
  }
  EXPECT_EQ(Expression("abc")->FastMode(), CRegexFastMode::FastNone);
}

TEST(CRegex, AnswersTheSameOnTheFastPathAsTheEngine) {
  const std::string_view texts[] = {
      "",
      "a",
      "A",
      "abc",
      "ABC",
      "aBcd",
      "xabc",
      "xabcx",
      "ab",
      "b",
      "a*c",
      "a*cd",
      "a\\bc",
      "[",
      "?",
      "\\",
      "\\x",
      "\\*x",
      "]",
      "axb",
      "xaxb",
      "a.b+c$",
      "A.B+C$x",
      "\xC3\x84",
      "\xC3\x84xx",
      "\xC3\xA4",
      "\xE4",
      "abca",
      "aabc",
      "abcabc",
      "a\0b"sv,
      "a\0Bc"sv,
      "\0"sv,
      "(A|b){2}^",
      "\xFF\xFE"
      "a",
      "a\t b",
  };
  for (const FastRow& row : kFastRows) {
    const CRegexPtr regex = Wildcard(row.wildcard);
    const CRegexPtr engine = regex->Clone();
    for (const std::string_view text : texts) {
      EXPECT_EQ(regex->Matches(text), engine->Matches(text)) << row.wildcard << " on " << text;
    }
  }
}

TEST(CRegex, MatchesWholeTextsOnTheFastPath) {
  EXPECT_TRUE(Wildcard("***")->Matches(""));
  EXPECT_TRUE(Wildcard("*")->Matches("\n\r\0"sv));
  EXPECT_TRUE(Wildcard("abc")->Matches("ABC"));
  EXPECT_FALSE(Wildcard("abc")->Matches("abcd"));
  EXPECT_FALSE(Wildcard("abc")->Matches("ab"));
  EXPECT_FALSE(Wildcard("a*")->Matches(""));
  EXPECT_FALSE(Wildcard("*a")->Matches(""));
  EXPECT_FALSE(Wildcard("*a*")->Matches(""));
  EXPECT_TRUE(Wildcard("*b*")->Matches("aBc"));
  EXPECT_TRUE(Wildcard("")->Matches(""));
  EXPECT_FALSE(Wildcard("")->Matches("a"));
}

TEST(CRegex, LeavesTheFastPathToMatches) {
  const CRegexPtr regex = Wildcard("ab*");
  EXPECT_TRUE(regex->Matches("ab\n"));
  CRegexCaptures captures;
  EXPECT_FALSE(regex->MatchCaptures("ab\n", captures));
  EXPECT_FALSE(regex->Search("ab\n"));
  EXPECT_TRUE(regex->Search("abc"));
  EXPECT_FALSE(regex->Search("xabc"));
}

// ---- matching

TEST(CRegex, MatchesWholeTextsAndSearchesParts) {
  const CRegexPtr regex = Expression("b+");
  EXPECT_TRUE(regex->Matches("BB"));
  EXPECT_FALSE(regex->Matches("abb"));
  EXPECT_TRUE(regex->Search("abbc"));
  EXPECT_FALSE(regex->Search("ac"));
  EXPECT_FALSE(regex->Matches(std::string_view()));
}

TEST(CRegex, TakesZeroBytesLikeAnyOther) {
  EXPECT_TRUE(Expression("a\0b"sv)->Matches("A\0B"sv));
  EXPECT_FALSE(Expression("a\0b"sv)->Matches("a"));
  EXPECT_TRUE(Expression("a.b")->Matches("a\0b"sv));
  EXPECT_TRUE(Expression("b")->Search("a\0b"sv));
  EXPECT_TRUE(Expression(R"(\0)")->Matches("\0"sv));
}

TEST(CRegex, HandsOutCaptures) {
  const CRegexPtr regex = Expression("(a+)(x)?(b*)");
  CRegexCaptures captures;
  const std::string_view text = "--AAc!";
  ASSERT_TRUE(regex->SearchCaptures(text, captures));
  ASSERT_EQ(captures.Size(), 4u);
  EXPECT_EQ(captures[0].Text(), "AA");
  EXPECT_EQ(captures[0].Text().data(), text.data() + 2);
  EXPECT_EQ(captures[1].Text(), "AA");
  EXPECT_FALSE(captures[2].matched);
  EXPECT_EQ(captures[2].Text(), "");
  EXPECT_TRUE(captures[3].matched);
  EXPECT_EQ(captures[3].Text(), "");
  EXPECT_EQ(captures.Prefix(), "--");
  EXPECT_EQ(captures.Suffix(), "c!");

  ASSERT_TRUE(regex->MatchCaptures("ab", captures));
  ASSERT_EQ(captures.Size(), 4u);
  EXPECT_EQ(captures[0].Text(), "ab");
  EXPECT_EQ(captures.Prefix(), "");
  EXPECT_EQ(captures.Suffix(), "");

  EXPECT_FALSE(regex->MatchCaptures("ab!", captures));
  EXPECT_TRUE(captures.Empty());
  EXPECT_EQ(captures.Prefix(), "");
}

TEST(CRegex, FindsNothingInAnEmptyViewUnlessItMatchesNothing) {
  CRegexCaptures captures;
  EXPECT_FALSE(Expression("a")->SearchCaptures({}, captures));
  ASSERT_TRUE(Expression("a*")->SearchCaptures({}, captures));
  EXPECT_EQ(captures[0].Text(), "");
  EXPECT_TRUE(captures[0].matched);
}

// ---- replacing

TEST(CRegex, ReplacesInSedFormat) {
  const struct {
    std::string_view expression, text, format, all, first;
  } rows[] = {
      {"X", "aXbXc", "[&]", "a[X]b[X]c", "a[X]bXc"},
      {"X", "aXbxc", "-", "a-b-c", "a-bxc"},
      {"X", "aXb", R"(\0)", "aXb", "aXb"},
      {"X", "aXb", "&&", "aXXb", "aXXb"},
      {"X", "aXb", R"(\&)", "a&b", "a&b"},
      {"X", "aXb", R"(\\)", R"(a\b)", R"(a\b)"},
      {"(X)", "aXb", R"(<\1>)", "a<X>b", "a<X>b"},
      {"X", "aXb", R"(\9)", "ab", "ab"},
      {"X", "aXbXc", R"(\9)", "abc", "abXc"},
      {"(X)", "aXb", R"(\2\3)", "ab", "ab"},
      {"(X)", "aXb", R"(\10)", "aX0b", "aX0b"},
      {"X", "aXb", R"(\10)", "a0b", "a0b"},
      {"X", "aXb", R"(\n\q)", "anqb", "anqb"},
      {"X", "aXb", "$&$1$$", "a$X$1$$b", "a$X$1$$b"},
      {"(X)|(b)", "aXb", R"([\2])", "a[][b]", "a[]b"},
      {"X", "aXb", "", "ab", "ab"},
      {"Y", "aXb", "-", "aXb", "aXb"},
      {"X", "", "-", "", ""},
      // Empty matches.
      {"x*", "axxc", "-", "-a--c-", "-axxc"},
      {"", "abc", "-", "-a-b-c-", "-abc"},
      {R"(\b)", "ab cd", "|", "|ab| |cd|", "|ab cd"},
      // Contract: a backslash at the end stands for nothing; two are one.
      {"X", "aXbXc", R"(q\)", "aqbqc", "aqbXc"},
      {"X", "aXb", R"(\)", "ab", "ab"},
      {"X", "aXb", R"(q\\)", R"(aq\b)", R"(aq\b)"},
      {"X", "aXb", R"(\\\)", R"(a\b)", R"(a\b)"},
      {"X", "aXb", R"(\\\\)", R"(a\\b)", R"(a\\b)"},
      {"X", "aXb", "\0&"sv, "a\0Xb"sv, "a\0Xb"sv},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.expression) + " on " + std::string(row.text) + " by " +
                 std::string(row.format));
    EXPECT_EQ(Replaced(row.expression, row.text, row.format, true), row.all);
    EXPECT_EQ(Replaced(row.expression, row.text, row.format, false), row.first);
  }
}

TEST(CRegex, ReplacesWithinItsOwnOutput) {
  const CRegexPtr regex = Expression("X");
  std::string text = "aXbXc";
  regex->Replace(text, "[&]", text, true);
  EXPECT_EQ(text, "a[X]b[X]c");
  std::string format = "<&>";
  regex->Replace("aXb", format, format, false);
  EXPECT_EQ(format, "a<X>b");
}

TEST(CRegex, ReplacesByTheExpressionOfAWildcard) {
  std::string out;
  Wildcard("a*c")->Replace("abc", "<&>", out, true);
  EXPECT_EQ(out, "<abc>");
  Wildcard("abc")->Replace("abcd", "<&>", out, true);
  EXPECT_EQ(out, "abcd");
}

// ---- walking

TEST(CRegex, WalksOverAllMatches) {
  using Matches = std::vector<std::string>;
  EXPECT_EQ(AllMatches("a.", "abxaac"), (Matches{"ab@0", "aa@3"}));
  EXPECT_EQ(AllMatches("x*", "axxc"), (Matches{"@0", "xx@1", "@3", "@4"}));
  EXPECT_EQ(AllMatches("", "abc"), (Matches{"@0", "@1", "@2", "@3"}));
  EXPECT_EQ(AllMatches("a*", "baac"), (Matches{"@0", "aa@1", "@3", "@4"}));
  EXPECT_EQ(AllMatches("|a", "aa"), (Matches{"@0", "a@0", "@1", "a@1", "@2"}));
  EXPECT_EQ(AllMatches("^a", "aaa"), (Matches{"a@0"}));
  EXPECT_EQ(AllMatches("b", "aaa"), Matches{});
  EXPECT_EQ(AllMatches("b", "a\0b"sv), Matches{"b@2"});
}

TEST(CRegex, WalksNowhereWithoutAStart) {
  CRegexScan scan;
  std::string_view match = "untouched";
  EXPECT_FALSE(scan.Next(match));
  EXPECT_EQ(match, "untouched");
}

TEST(CRegex, WalksAgainWithAUsedState) {
  CRegexScan scan;
  std::string_view match;
  const CRegexPtr digits = Expression("[0-9]");
  digits->ScanAll("1", scan);
  EXPECT_TRUE(scan.Next(match));
  EXPECT_FALSE(scan.Next(match));
  EXPECT_FALSE(scan.Next(match));
  digits->ScanAll("23", scan);
  EXPECT_TRUE(scan.Next(match));
  EXPECT_EQ(match, "2");
}

// ---- threads

TEST(CRegex, ServesEightThreadsAtOnce) {
  const CRegexPtr expression = Expression("(a|b)+([0-9]{2})");
  const CRegexPtr wildcard = Wildcard("*b7*");
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([expression, wildcard] {
      CRegexCaptures captures;
      std::string out;
      for (int k = 0; k < 200; ++k) {
        EXPECT_TRUE(expression->Matches("abAB77"));
        EXPECT_TRUE(expression->SearchCaptures("xx aab78", captures));
        EXPECT_EQ(captures[2].Text(), "78");
        EXPECT_FALSE(expression->Search("ab7"));
        expression->Replace("a11", "<\\2>", out, true);
        EXPECT_EQ(out, "<11>");
        EXPECT_TRUE(wildcard->Matches("abB77"));
        EXPECT_TRUE(CRegex::Create("a{1,3}", false)->Matches("aa"));
        CRegexScan scan;
        expression->ScanAll("a11b22", scan);
        std::string_view match;
        EXPECT_TRUE(scan.Next(match) && scan.Next(match));
        EXPECT_EQ(match, "b22");
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(expression->UseCount(), 1u);
}

}  // namespace
