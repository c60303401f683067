// What a CRegex does where the engine behind it would overflow the stack or never come back.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "Common/CRegex.h"
#include "Common/CRegexException.h"
#include "Common/RegexEngineGuard.h"
#include "Common/RegexExpressionSize.h"
#include "tests/Common/QuestionedHost.h"
#include "tests/support/SmallStack.h"

namespace {

std::string Repeat(std::string_view unit, int count) {
  std::string text;
  while (count-- > 0) text += unit;
  return text;
}

// The reason of the exception that the call leaves with, or "" when it answers.
std::string FailureOf(const std::function<void()>& call) {
  try {
    call();
    return {};
  } catch (const CRegexException& failure) {
    return failure.Reason();
  }
}

// Every failure would be a line of the debug log.
class CRegexGuard : public testing::Test {
  const HostInSlot fHost{Gates{.active = false}};
};

// An answer, or the one failure that may stand in its place.
void ExpectAnswerOrFailure(const CRegex& regex, std::string_view text) {
  const std::string reason = FailureOf([&] { regex.Matches(text); });
  if (!reason.empty()) {
    EXPECT_TRUE(reason.starts_with("Runtime error in regex matching: '")) << reason;
  }
}

TEST_F(CRegexGuard, NamesTheOperationThatFailed) {
  // A back-reference: every way is followed, and each byte of the text leaves one behind.
  const CRegexPtr regex = CRegex::Create(R"((x*)\1(a|b)*[c-w])", false);
  const std::string text = Repeat("ab", 8 * 1024 * 1024);  // 16 MiB: more ways than there is room
  CRegexCaptures captures;
  std::string out = "kept";

  EXPECT_TRUE(
      FailureOf([&] { regex->Matches(text); }).starts_with("Runtime error in regex matching: '"));
  EXPECT_TRUE(FailureOf([&] {
                regex->MatchCaptures(text, captures);
              }).starts_with("Internal error in regex matching: '"));
  EXPECT_TRUE(
      FailureOf([&] { regex->Search(text); }).starts_with("Internal error in regex search: '"));
  EXPECT_TRUE(FailureOf([&] {
                regex->SearchCaptures(text, captures);
              }).starts_with("Internal error in regex search: '"));
  EXPECT_TRUE(FailureOf([&] {
                regex->Replace(text, "-", out, true);
              }).starts_with("Internal error in regex replace: '"));
  EXPECT_TRUE(FailureOf([&] { regex->Matches(text); }).ends_with("'"));
  EXPECT_TRUE(captures.Empty());
  EXPECT_EQ(out, "kept");

  // The object is as good as before.
  EXPECT_TRUE(regex->Matches("ababc"));
  EXPECT_FALSE(regex->Matches("abab"));
}

TEST_F(CRegexGuard, LetsTheEnginesOwnFailureOutOfAWalk) {
  const CRegexPtr regex = CRegex::Create(R"(x|(y*)\1(a|b)*[c-w])", false);
  CRegexScan scan;
  std::string_view match;
  const std::string text = "x" + Repeat("ab", 8 * 1024 * 1024);
  regex->ScanAll(text, scan);
  ASSERT_TRUE(scan.Next(match));
  EXPECT_EQ(match, "x");
  EXPECT_THROW(scan.Next(match), std::regex_error);
  EXPECT_FALSE(scan.Next(match));  // the walk is over
  EXPECT_THROW(regex->ScanAll(std::string_view(text).substr(1), scan), std::regex_error);
  EXPECT_FALSE(scan.Next(match));
}

TEST_F(CRegexGuard, GivesUpOnWhatWouldTakeYears) {
  const std::string text = Repeat("a", 28) + "!";
  EXPECT_FALSE(CRegex::Create("(a+)+$", false)->Matches(text));
  const CRegexPtr regex = CRegex::Create(R"((a+)+\1$)", false);
  const std::string reason = FailureOf([&] { regex->Matches(text); });
  EXPECT_TRUE(reason.starts_with("Runtime error in regex matching: '")) << reason;
  EXPECT_TRUE(regex->Matches("aaaa"));
  EXPECT_THROW(RegexEngine("(a+)+$").Match(text), std::regex_error);
}

TEST_F(CRegexGuard, GivesUpOnWaysThatTakeNoCharacter) {
  // Every way through the alternatives is empty, and none reaches the "b".
  EXPECT_THROW(RegexEngine("(?:|){40}b").Match(""), std::regex_error);
  EXPECT_FALSE(CRegex::Create("(?:|){40}b", false)->Matches(""));
}

TEST_F(CRegexGuard, CountsEachCallAnew) {
  // Some thousand steps a call: the sum goes far beyond what one call may take.
  const CRegexPtr regex = CRegex::Create("(a+)+$", false);
  const std::string text = Repeat("a", 10) + "!";
  for (int i = 0; i < 300; ++i) ASSERT_FALSE(regex->Matches(text));
  RegexEngineContext context(0);
  context.Begin();
  for (std::uint64_t i = 1; i < kRegexMaxSteps; ++i) context.Step();
  EXPECT_THROW(context.Step(), std::regex_error);
  context.Begin();
  context.Step();
}

TEST_F(CRegexGuard, SearchesLongTextsForLiterals) {
  const std::string text = Repeat("ab", 500'000) + "needle";
  OnASmallStack([&] {
    EXPECT_TRUE(CRegex::Create("NEEDLE", false)->Search(text));
    EXPECT_FALSE(CRegex::Create("needles", false)->Search(text));
    EXPECT_TRUE(CRegex::Create("*needle", true)->Matches(text));
  });
}

TEST_F(CRegexGuard, ComesBackOnASmallStack) {
  const char* const expressions[] = {
      ".*a",     ".*",         "[a-z]+", R"(\w+)",           "(a+)+",
      "(a|b)*c", "(?:a|b)*c",  "(ab)*",  "((x)|(y))*",       "((a)|(b))*",
      ".*?a",    "(.*)(.*)b",  "^.*$",   R"((a)\1*)",        "(?:(?=(a))[ab])*",
      "(a*)*",   "([ab]{2})*", "(|a)*b", R"((.*\.)?x\.com)",
  };
  OnASmallStack([&] {
    for (const int size : {100, 500, 1000, 5000, 150'000}) {
      const std::string text = Repeat("ab", size);
      for (const char* expression : expressions) {
        const CRegexPtr regex = CRegex::Create(expression, false);
        ASSERT_TRUE(regex) << expression;
        ExpectAnswerOrFailure(*regex, text);
      }
    }
    // Short texts have room here.
    EXPECT_TRUE(CRegex::Create("(a|b)*c", false)->Matches(Repeat("ab", 50) + "c"));
  });
}

// Not the text but the expression makes the engine recurse: it runs through all of this without
// taking a character.
TEST_F(CRegexGuard, ComesBackFromDeepExpressionsOnASmallStack) {
  OnASmallStack([] {
    for (const int count : {100, 1000, 3000}) {
      const std::string braces = "{" + std::to_string(count) + "}";
      const std::string expressions[] = {
          Repeat("a|", count) + "b",
          Repeat("a?", count),
          Repeat("(a)?", count),
          Repeat("(", count) + "a" + Repeat(")", count),
          Repeat("(", count) + "a" + Repeat(")*", count),
          Repeat("(?:", count) + "a" + Repeat("|)", count),
          Repeat("(?=", count) + "a" + Repeat(")", count),
          Repeat("^", count),
          Repeat(R"(\b)", count),
          "()" + Repeat(R"(\1)", count),
          "(?:|a)" + braces,
          "(a?)" + braces,
          "a{0," + std::to_string(count) + "}",
      };
      for (const std::string& expression : expressions) {
        const CRegexPtr regex = CRegex::Create(expression, false);
        if (!regex) continue;  // too deep to compile here
        ExpectAnswerOrFailure(*regex, "");
        ExpectAnswerOrFailure(*regex, "c");
        ExpectAnswerOrFailure(*regex, "aaab");
      }
    }
  });
}

TEST_F(CRegexGuard, CompilesNothingThatWouldNotFit) {
  const auto compileAll = [] {
    for (const char* unit : {"a", "(", "(a|", "(?:", "(?=a", "[a]", R"(\.)", "a?", "()"}) {
      const CRegexPtr regex = CRegex::Create(Repeat(unit, 20'000), false);
      if (regex) ExpectAnswerOrFailure(*regex, "a");
    }
    EXPECT_FALSE(CRegex::Create(Repeat("(", 100'000), false));
    const CRegexPtr literal = CRegex::Create(Repeat("a", 100'000), false);
    if (literal) ExpectAnswerOrFailure(*literal, "a");
  };
  compileAll();
  OnASmallStack(compileAll);
}

TEST_F(CRegexGuard, BoundsLookAheadsWithinLookAheads) {
  const auto nested = [](int depth) { return Repeat("(?=", depth) + "a" + Repeat(")", depth); };
  EXPECT_TRUE(RegexEngine(nested(100)).Search("a"));
  EXPECT_THROW(RegexEngine(nested(101)), std::regex_error);
  // Side by side there is no bound, and none at all where the library does not answer.
  EXPECT_TRUE(RegexEngine(Repeat("(?=a)", 500) + "a").Match("a"));
  EXPECT_TRUE(CRegex::Create(nested(101), false)->Search("a"));
}

TEST_F(CRegexGuard, RefusesNumbersThatTheLibraryCannotHold) {
  EXPECT_TRUE(CRegex::Create("a{4294967297}", false)->Matches("a"));  // wraps around to 1
  EXPECT_TRUE(CRegex::Create("a{0000000000000000000000001}", false)->Matches("a"));
  EXPECT_TRUE(CRegex::Create("a{9223372036854775807}", false));
  EXPECT_FALSE(CRegex::Create("a{9223372036854775808}", false));
  EXPECT_FALSE(CRegex::Create("a{1,80000000000000000000}", false));
  EXPECT_FALSE(CRegex::Create(R"((a)\80000000000000000000)", false));
}

TEST_F(CRegexGuard, RefusesNothingThatIsOrdinary) {
  OnASmallStack([] {
    const CRegexPtr literal = CRegex::Create(Repeat("a", 100), false);
    ASSERT_TRUE(literal);
    EXPECT_TRUE(literal->Matches(Repeat("A", 100)));
    const CRegexPtr groups = CRegex::Create(Repeat("(a|b)", 30), false);
    ASSERT_TRUE(groups);
    EXPECT_TRUE(groups->Matches(Repeat("B", 30)));
    const CRegexPtr hosts = CRegex::Create(Repeat(R"(((www\.)?example\.com)|)", 10) + "(x)", false);
    ASSERT_TRUE(hosts);
    EXPECT_TRUE(hosts->Matches("X"));
    EXPECT_EQ(hosts->GetCaptureCount(), 21u);
  });
}

TEST_F(CRegexGuard, MeasuresExpressions) {
  const struct {
    std::string_view expression;
    std::uint64_t openTerms, openGroups, emptySteps;
  } rows[] = {
      {"", 0, 0, 0},
      {"abc", 3, 0, 0},
      {"ab|c", 2, 0, 1},
      {"a|b|cde", 3, 0, 2},
      // A group ends with its frames, and is one term of what it stands in.
      {"(abc)d", 4, 1, 2},
      {"(a)(b)", 3, 1, 4},
      {"x(?:a(?:b))", 5, 2, 0},
      {"(?=a)(?!b)", 3, 1, 6},
      {"(?=(?=a))(?=(b))", 4, 2, 11},
      // Brackets and escapes are one term, whatever stands in them.
      {"[abc]d", 2, 0, 0},
      {R"([\]])", 1, 0, 0},
      {"[]a]", 3, 0, 0},
      {"[[:alpha:]]b", 2, 0, 0},
      {"[[.].]]b", 2, 0, 0},
      {R"([\c]]b)", 2, 0, 0},
      {R"(\.\(\c()", 3, 0, 0},
      {R"(\b\B^$)", 4, 0, 4},
      {R"((a)\1)", 2, 1, 3},
      // What a quantifier repeats is copied; a loop comes back twice at one place of the text.
      {"a?b", 2, 0, 2},
      {"a*", 1, 0, 6},
      {"(a)*", 2, 1, 12},
      {"a{3}", 1, 0, 6},
      {"(?:|a){5}", 2, 1, 15},
      {"a{2,4}", 1, 0, 8},
      {"a{2,}", 1, 0, 18},
      {"a{0}", 1, 0, 0},
      {"a{4294967297}", 1, 0, 2},
      {"a{2147483648}", 1, 0, 0},
      {R"((a)\1000b)", 3, 1, 3},
      // A fault ends the reading, since the compiler stops there too.
      {"a)bcd", 1, 0, 0},
      {"a[bcd", 2, 0, 0},
      {"a[[:b", 2, 0, 0},
      {"a{xbcd", 1, 0, 0},
      {"a\\", 2, 0, 0},
      {"((a", 3, 2, 4},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.expression);
    const RegexExpressionSize size = MeasureExpression(row.expression);
    EXPECT_EQ(size.openTerms, row.openTerms);
    EXPECT_EQ(size.openGroups, row.openGroups);
    EXPECT_EQ(size.emptySteps, row.emptySteps);
  }
}

}  // namespace
