// What would stall or end a process: expressions that run away, texts of many megabytes, nests
// without end, all on a small stack. No test looks at the clock; one that did not come back would
// meet the time limit of the whole program.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <random>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "Common/Matching/Expression.h"
#include "Common/Matching/ListMatcher.h"
#include "tests/Common/Matching/ExpressionSupport.h"
#include "tests/support/SmallStack.h"

namespace {

using Matching::Captures;
using Matching::Expression;
using Matching::Road;

// An answer of every operation, or the one failure that may stand in its place. The walk takes a
// few steps only: it is as many searches.
void ExpectAnswers(const Expression& expression, const std::string& text) {
  const auto guarded = [&expression](auto operation) {
    try {
      operation();
    } catch (const std::regex_error& error) {
      EXPECT_EQ(error.code(), std::regex_constants::error_complexity);
      EXPECT_EQ(expression.RoadTaken(), Road::Exact);
    }
  };
  Captures captures;
  guarded([&] { EXPECT_EQ(expression.IsMatch(text), expression.MatchCaptures(text, captures)); });
  guarded([&] {
    EXPECT_EQ(expression.Search(text), expression.SearchCaptures(text, 0, {}, captures));
  });
  guarded([&] {
    Matching::MatchIterator walk(expression, text);
    for (int i = 0; i < 20 && walk.Next(captures); ++i) {
      EXPECT_LE(captures[0].end, text.size());
    }
  });
}

constexpr const char* kRunaways[] = {"(a+)+$",
                                     "(a*)*b",
                                     "(a|aa)+$",
                                     "(a|a?)+$",
                                     "(.*a){12}b",
                                     ".*a",
                                     ".*x",
                                     ".*foo.*bar.*",
                                     "(.*)(.*)(.*)(.*)x",
                                     "^(([a-z])+.)+[A-Z]([a-z])+$",
                                     "(x+x+)+y",
                                     "(?:a|b)*c",
                                     "((x)|(y))*",
                                     "(|a)*b",
                                     "(?=(?:a+)+$)a",
                                     "(?:(?!b).)*b",
                                     "(?=.*(c))a",
                                     "\\b.*\\b",
                                     "a{0,500}a{0,500}b"};

TEST(Hostile, RunawaysComeBackOnASmallStack) {
  OnASmallStack([] {
    for (const char* const pattern : kRunaways) {
      SCOPED_TRACE(pattern);
      const auto expression = Compile(pattern);
      ASSERT_NE(expression, nullptr);
      for (const std::size_t size : {28, 1000, 100000}) {
        ExpectAnswers(*expression, std::string(size, 'a') + "!");
        ExpectAnswers(*expression, Repeated("foo", size / 3));
        ExpectAnswers(*expression, std::string(size, '\n'));
      }
    }
  });
}

TEST(Hostile, BackReferencesEndWithinTheirBudget) {
  OnASmallStack([] {
    for (const char* const pattern : {"(a+)+\\1c", "(a*)*\\1b", "(.*)\\1(.*)\\2x", "(a)*\\1",
                                      "(?:(?=(a+))a)*c", "(.)(.*)\\1\\2$"}) {
      SCOPED_TRACE(pattern);
      const auto expression = Compile(pattern, {.maxSteps = 100000});
      ASSERT_NE(expression, nullptr);
      EXPECT_EQ(expression->RoadTaken(), Road::Exact);
      for (const std::size_t size : {28, 1000, 100000}) {
        ExpectAnswers(*expression, std::string(size, 'a') + "!");
      }
    }
    EXPECT_THROW(
        {
          [[maybe_unused]] const bool answer = Compile("(a+)+\\1c")->IsMatch(std::string(40, 'a'));
        },
        std::regex_error);
    // The heap is bounded too: each byte of the text leaves a choice behind.
    EXPECT_THROW(
        {
          [[maybe_unused]] const bool answer =
              Compile("(x*)\\1(?:a|b)*c")->IsMatch(std::string(8 << 20, 'a'));
        },
        std::regex_error);
  });
}

TEST(Hostile, VeryLongTextsAreAnsweredOnASmallStack) {
  const std::size_t size = std::getenv("TESSARIN_LONG_TESTS") ? std::size_t{64} << 20 : 1 << 20;
  OnASmallStack([size] {
    const std::string text = std::string(size, 'a') + "b";
    Captures captures;
    const auto spans = [&](const char* pattern) {
      const auto expression = Compile(pattern);
      EXPECT_TRUE(expression->SearchCaptures(text, 0, {}, captures)) << pattern;
      return Spans(captures);
    };
    const std::string end = std::to_string(size);
    const std::string all = std::to_string(size + 1);
    EXPECT_EQ(spans("(a+)+b"), "0:" + all + " 0:" + end);
    EXPECT_EQ(spans("(a|b)*"), "0:" + all + " " + end + ":" + all);
    EXPECT_EQ(spans(".*(b)$"), "0:" + all + " " + end + ":" + all);
    EXPECT_EQ(spans("(?=.*(b))a"), "0:1 " + end + ":" + all);
    EXPECT_EQ(spans("b"), end + ":" + all);
    EXPECT_TRUE(Compile("(a|b)*")->IsMatch(text));
    EXPECT_FALSE(Compile("(?:(?:a+)+)$")->IsMatch(text));
    EXPECT_FALSE(Compile("a*c")->Search(text));
    EXPECT_FALSE(Compile("(?:(?!b).)*c")->Search(text));

    const auto walked = Compile("a");
    Matching::MatchIterator walk(*walked, text);
    std::size_t count = 0;
    while (walk.Next(captures)) ++count;
    EXPECT_EQ(count, size);
  });
}

TEST(Hostile, LargeExpressionsAreCompiledOrRefusedOnASmallStack) {
  OnASmallStack([] {
    const std::string rows[] = {Repeated("a", 90000),
                                Repeated("(", 20000) + "a" + Repeated(")", 20000),
                                Repeated("(", 20000) + "a" + Repeated(")*", 20000),
                                Repeated("(?:", 20000) + "a" + Repeated(")*", 20000),
                                Repeated("(?=", 20000) + "a" + Repeated(")", 20000),
                                Repeated("(?=a)", 10000) + "a",
                                "a" + Repeated("*", 50000),
                                Repeated("a|", 20000),
                                Repeated("(a|b)?", 5000),
                                Repeated("(|a)*", 2000),
                                Repeated("(", 100000) + Repeated(")", 100000),
                                std::string(1 << 20, 'a'),
                                "[" + Repeated("a-z", 1 << 18) + "]",
                                "(a{300}){300}",
                                "(?:a{0,300}){300}",
                                "((((((a{0,9}){0,9}){0,9}){0,9}){0,3}){0,3})",
                                "(?:" + Repeated("(?:", 29) + "a*" + Repeated(")*", 29) + ")*",
                                "(?:" + Repeated("(?:", 40) + "|a" + Repeated(")*", 40) + ")*b"};
    for (const std::string& pattern : rows) {
      SCOPED_TRACE(pattern.substr(0, 60));
      const auto expression = Compile(pattern, {.maxSteps = 1'000'000});
      if (!expression) continue;
      for (const char* const text : {"", "a", "b", "aaaaaaaaaaaaaaaaaaaaaaaaab"}) {
        ExpectAnswers(*expression, text);
      }
    }
  });
}

std::size_t CountMatches(const Expression& expression, const std::string& text) {
  Captures captures;
  Matching::MatchIterator walk(expression, text);
  std::size_t count = 0;
  while (walk.Next(captures)) ++count;
  return count;
}

// A walk is as many searches as the text has matches; what one of them finds out about the rest of
// the text must do for all.
TEST(Hostile, WalksLookAtTheTextOnce) {
  const std::size_t size = 1 << 17;
  const std::string lower(size, 'a');
  const std::string upper(size, 'A');
  for (const char* const pattern : {"a",
                                    "foo|a",
                                    "a|foo",
                                    "a(?=b)|a(?!b)",
                                    "(?=a)",
                                    "(?!b)a",
                                    "(a)(?=(a|$))",
                                    "(?=^|a)a",
                                    "a.*z|a",
                                    "(a)(.*z)?",
                                    "(a)(?:a*(z))?|(^)",
                                    "(?=a)(a.*z|a)",
                                    "(?!b)(a.*z|a)",
                                    "(?!(?=b|z)(?!c))(?:a.*z|(a))",
                                    "(?=(a.*z|a))a",
                                    "(?=(?=^|a)(a.*z|a))a",
                                    "(?=(a*))a",
                                    "(?=((?:aa)*))a",
                                    "(?=(a)a*(?=(a*|z)))a",
                                    "(?=(?:|a)*?\\b|a)(|a.*z|a)+?a(?!z)",
                                    "(?!b(?=^))(?=(?=(a.*z|a))a)(a|a.*y)"}) {
    SCOPED_TRACE(pattern);
    const auto expression = Compile(pattern);
    EXPECT_NE(expression->RoadTaken(), Road::Exact);
    EXPECT_EQ(CountMatches(*expression, lower), size);
    EXPECT_EQ(CountMatches(*expression, upper), size);
  }
  // What is tried behind an empty match is asked of the rest of the text, too.
  EXPECT_EQ(CountMatches(*Compile("(?=a)(?:a.*z|)"), lower), size);
  EXPECT_EQ(CountMatches(*Compile("(?=(a.*z|))"), lower), size + 1);
}

// The automata of these need more states than their budget has room for.
TEST(Hostile, WalksLookAtTheTextOnceWithoutAutomata) {
  std::mt19937 random(5);
  std::string text;
  while (text.size() < 1 << 17) text += "ab"[random() % 2];
  for (const char* const pattern :
       {"a[ab]*z|b[ab]{15}b|a|b", "(?=a|b)(?:a[ab]*z|b[ab]{15}b|a|b)",
        "(?=(a[ab]*z|b[ab]{15}b|a|b))[ab]", "(?=([ab]*))(?:a[ab]*z|b[ab]{15}b|a|b)"}) {
    SCOPED_TRACE(pattern);
    const auto expression = Compile(pattern);
    EXPECT_GT(CountMatches(*expression, text), text.size() / 17);
  }
}

// Scanners of lists that literals decide.
struct NoScanners {
  bool Matches(std::size_t, std::string_view) const { return false; }
  std::string_view Pattern(std::size_t) const { return ""; }
};

// A literal that the text nearly holds, everywhere.
TEST(Hostile, LiteralsAreNotComparedInVainForEver) {
  const std::string text(1 << 20, 'x');
  const std::string literal = std::string(20000, 'x') + "ex";
  EXPECT_FALSE(Compile(literal)->Search(text));
  EXPECT_EQ(CountMatches(*Compile(literal + "|ax"), text), 0U);
  EXPECT_FALSE(Compile(".*" + literal + ".*")->IsMatch(text));
  EXPECT_TRUE(Compile(".*" + literal + ".*")->IsMatch(text + literal));

  const std::string inside = "((.*" + literal + ".*)|(.*" + literal + "y.*))";
  const Matching::ListMatcher matcher({{inside, 2, 2}});
  EXPECT_FALSE(matcher.Matches(text, NoScanners()));
  EXPECT_TRUE(matcher.Matches(text + literal, NoScanners()));
}

// Ends of each other, behind a line end that is far from all of them.
TEST(Hostile, LineEndsAreLookedForOnceAText) {
  std::string merged;
  for (std::size_t size = 1; size <= 400; ++size) merged += "|(" + std::string(size, 'a') + ")";
  const std::string pattern = ".*(" + merged.substr(1) + ")";
  const Matching::ListMatcher matcher({{pattern, 2, 400}});
  const std::string front = std::string(1 << 22, 'x') + "\n";
  EXPECT_FALSE(matcher.Matches(front + std::string(3000, 'a'), NoScanners()));
  EXPECT_TRUE(matcher.Matches(std::string(3000, 'a'), NoScanners()));
}

// All searches of a walk have one budget.
TEST(Hostile, WalksWithBackReferencesEndWithinTheirBudget) {
  const auto walked = Compile("(a*)\\1b|a");
  EXPECT_EQ(CountMatches(*walked, std::string(200, 'a')), 200U);
  EXPECT_THROW(CountMatches(*walked, std::string(20000, 'a')), std::regex_error);
}

// What the groups in look-aheads held is kept beside each one that is open.
TEST(Hostile, OpenLookAheadsKeepNoMoreThanTheirBudget) {
  const std::string groups = Repeated("(a)", 6000);
  const std::string text(6001, 'a');
  EXPECT_TRUE(Compile(Repeated("(?=", 100) + groups + "\\1" + Repeated(")", 100))->Search(text));
  const std::string nested = Repeated("(?=", 6000) + groups + "\\1" + Repeated(")", 6000);
  EXPECT_THROW((void)Compile(nested)->Search(text), std::regex_error);
  const auto manyTimes = Compile("(?:(?=b" + groups + "\\1)c|a)*", {.maxSteps = 1'000'000});
  EXPECT_THROW((void)manyTimes->IsMatch(std::string(1 << 16, 'a') + "b"), std::regex_error);
}

// A glob of very many stars, and one that takes more than comparing.
TEST(Hostile, LoneGlobsOfManyStarsComeBack) {
  const std::string stars = "^" + Repeated(".*a", 6000);
  const std::string text(12000, 'a');
  EXPECT_TRUE(Compile(stars + "$")->IsMatch(text));
  EXPECT_FALSE(Compile(stars + "b$")->IsMatch(text));
  const std::string marks = "^" + Repeated(".*a.", 1000);
  const std::string shorter(2000, 'a');
  EXPECT_TRUE(Compile(marks + "$")->IsMatch(shorter));
  EXPECT_FALSE(Compile(marks + "a$")->IsMatch(shorter));
}

// Pieces of an element, one of which stands at every place of the text.
TEST(Hostile, ElementsOfPiecesAreComparedOnceAText) {
  const NoScanners scanners;
  const Matching::ListMatcher matcher({{"((.*aa.*b)|(.*aa.*a.*c))", 2, 2}});
  const std::string text(1 << 20, 'a');
  EXPECT_FALSE(matcher.Matches(text, scanners));
  EXPECT_TRUE(matcher.Matches(text + "b", scanners));
  EXPECT_EQ(matcher.FindFirst(text + "c", scanners)->group, 3U);
}

void AskFromEightThreads(const char* pattern) {
  const auto expression = Compile(pattern, {.automatonBudget = 20000});
  std::vector<std::string> texts;
  for (int i = 0; i < 200; ++i) {
    std::string text;
    for (unsigned bits = static_cast<unsigned>(i) * 2654435761U; bits != 0; bits >>= 2) {
      text += "abcx"[bits & 3];
    }
    texts.push_back(text);
  }
  const auto alone = Compile(pattern, {.useAutomata = false});
  std::vector<std::string> expected;
  Captures captures;
  for (const auto& text : texts) {
    expected.push_back(alone->SearchCaptures(text, 0, {}, captures) ? Spans(captures) : "no");
  }
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      Captures own;
      for (std::size_t i = 0; i < 2 * texts.size(); ++i) {
        const std::size_t which = (i * 7 + static_cast<std::size_t>(t) * 31) % texts.size();
        const bool found = expression->SearchCaptures(texts[which], 0, {}, own);
        if ((found ? Spans(own) : "no") != expected[which]) ++wrong;
        if (expression->Search(texts[which]) != found) ++wrong;
        if (expression->IsMatch(texts[which]) != expression->MatchCaptures(texts[which], own))
          ++wrong;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong.load(), 0);
  EXPECT_GT(expression->AutomatonMemory(), 0U);
}

TEST(Hostile, EightThreadsShareAFreshExpression) {
  for (const char* pattern : {
           "(?:[ab]*(a|b)c?[^d]{3}|x+y*)(\\b|z)",
           "(?=.*c)(?:[ab]*(a|b)c?[^d]{3}|x+y*)(?!ab).*",
           "(?!.*(xx|ca))([ab]+(?=c|x).)+[^d]*",
       }) {
    SCOPED_TRACE(pattern);
    AskFromEightThreads(pattern);
  }
}

}  // namespace
