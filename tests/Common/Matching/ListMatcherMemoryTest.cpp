// What a list matcher says that it takes, held against what it has allocated.

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <variant>
#include <vector>

#include "Common/Matching/Expression.h"
#include "Common/Matching/LazyDfa.h"
#include "Common/Matching/ListMatcher.h"
#include "tests/support/AllocationCount.h"

namespace {

using Matching::ListMatcher;
using Matching::ListScanner;
using Strings = std::vector<std::string>;

// A scanner for each ten elements, which are made by their numbers.
template <class Element>
Strings PatternsOf(std::size_t count, const std::string& before, Element element) {
  Strings patterns;
  for (std::size_t i = 0; i < count; i += 10) {
    std::string merged = before + "(";
    for (std::size_t j = i; j < i + 10; ++j) {
      merged += (j == i ? "(" : "|(") + element(std::to_string(j)) + ")";
    }
    patterns.push_back(merged + ")");
  }
  return patterns;
}

TEST(ListMatcherMemory, IsWhatWasAllocated) {
  const std::pair<const char*, Strings> rows[] = {
      {"ends", PatternsOf(20'000, ".*", [](auto n) { return "\\.name" + n + "\\.example\\.tld"; })},
      {"whole texts", PatternsOf(5'000, "", [](auto n) { return n + "\\.tld"; })},
      {"beginnings", PatternsOf(5'000, "", [](auto n) { return "www" + n + "\\..*"; })},
      {"inside", PatternsOf(5'000, "", [](auto n) { return ".*/path" + n + "/.*"; })},
      {"pieces", PatternsOf(5'000, "", [](auto n) { return ".*/path" + n + ".*\\.js.*"; })},
      {"required", PatternsOf(5'000, "", [](auto n) { return ".*key" + n + "=\\d+"; })},
      {"always", PatternsOf(1'000, "", [](auto n) { return "\\d{" + n + "}"; })},
  };
  for (const auto& [name, patterns] : rows) {
    std::vector<ListScanner> scanners;
    for (const std::string& pattern : patterns) scanners.push_back({pattern, 2, 10});
    const long before = AllocatedBytes();
    const auto matcher = std::make_unique<const ListMatcher>(scanners);
    const auto allocated = static_cast<double>(AllocatedBytes() - before);
    EXPECT_NEAR(static_cast<double>(matcher->MemorySize()), allocated, allocated / 50) << name;
  }
}

Matching::Captures CapturesOf(const Matching::Expression& expression, const std::string& text) {
  Matching::Captures captures;
  expression.SearchCaptures(text, 0, {}, captures);
  return captures;
}

std::unique_ptr<Matching::Expression> Compiled(const std::string& pattern,
                                               const Matching::Expression::Options& options = {}) {
  return std::get<0>(Matching::Expression::Compile(pattern, options));
}

// Memory that fails in the middle of an answer breaks that answer off, and no other.
TEST(EngineMemory, AnswersTheSameBehindAFailedAllocation) {
  const Strings texts = {"xabcdef", "qf", "xxabab", "aabbcc", "f", "", "b1", "ab ba ab", "ef"};
  for (const char* const pattern : {"(?:a|b|(ab))*c", "((a|b)*?|ab)\\b(c|$)", "(?=.*(b))[ab]*c?",
                                    "(?!(?=a)b)(?:.b|a.)*", "x((((a?b)?c)?d)?e)?f"}) {
    for (const std::size_t budget : {std::size_t{0}, std::size_t{1} << 20}) {
      std::vector<Matching::Captures> expected;
      const auto undisturbed = Compiled(pattern, {.automatonBudget = budget, .useLiterals = false});
      for (const std::string& text : texts) expected.push_back(CapturesOf(*undisturbed, text));
      for (long which = 1; which < 200; ++which) {
        const auto expression =
            Compiled(pattern, {.automatonBudget = budget, .useLiterals = false});
        bool hasFailed = false;
        for (const std::string& text : texts) {
          const AllocationFault fault(which);
          try {
            CapturesOf(*expression, text);
            (void)expression->IsMatch(text);
          } catch (const std::bad_alloc&) {
          }
          hasFailed = hasFailed || fault.HasFailed();
        }
        for (std::size_t i = 0; i < texts.size(); ++i) {
          ASSERT_EQ(CapturesOf(*expression, texts[i]), expected[i]) << pattern << " " << which;
        }
        if (!hasFailed) break;
      }
    }
  }
}

// The budget that others take of, too, has room for just the states that the texts need.
TEST(EngineMemory, IsNotTakenForStatesThatCouldNotBeMade) {
  const Strings texts = {"xabcdef", "qf", "xxabab", "aabbcc", "b1 ef ab"};
  const auto ask = [&texts](const Matching::Expression& expression) {
    for (const std::string& text : texts) {
      (void)expression.IsMatch(text);
      (void)expression.Search(text);
    }
  };
  for (const char* const pattern : {"((a|b)*?|ab)\\b(c|$)", "(?=.*(b))[ab]*c?"}) {
    const auto undisturbed = Compiled(pattern, {.useLiterals = false});
    ask(*undisturbed);
    const std::size_t needed = undisturbed->AutomatonMemory();
    bool hasFailed = true;
    for (long which = 1; hasFailed; ++which) {
      Matching::MemoryAllowance allowance(needed);
      const auto expression = Compiled(pattern, {.allowance = &allowance, .useLiterals = false});
      {
        const AllocationFault fault(which);
        try {
          ask(*expression);
        } catch (const std::bad_alloc&) {
        }
        hasFailed = fault.HasFailed();
      }
      ask(*expression);
      ASSERT_EQ(expression->AutomatonMemory(), needed) << pattern << " " << which;
      ASSERT_EQ(allowance.Taken(), needed) << pattern << " " << which;
    }
  }
}

// What an automaton has taken is there for others when it is gone.
TEST(EngineMemory, IsGivenBackToThoseWhoShareIt) {
  constexpr std::size_t kAll = 100'000;
  Matching::MemoryAllowance allowance(kAll);
  {
    const auto expression = Compiled("(a|b)*a(?:a|b){6}c?", {.allowance = &allowance});
    (void)expression->IsMatch("abbabaabababbabbbabaabbababbabab");
    CapturesOf(*expression, "abbabaabab");  // by a matcher that is kept
    EXPECT_GT(expression->AutomatonMemory(), 0U);
    EXPECT_GT(allowance.Taken(), expression->AutomatonMemory());
  }
  EXPECT_EQ(allowance.Taken(), 0U);
}

// A long match needs many threads of many groups, and the next one seldom does.
TEST(EngineMemory, IsNotKeptBehindALargeMatch) {
  std::string pattern = "(?=a)";
  for (int i = 0; i < 300; ++i) pattern += "(a|b)?";
  const auto expression = Compiled(pattern + "c", {.automatonBudget = 0, .useBacktracking = false});
  const std::string text(400, 'a');
  EXPECT_TRUE(CapturesOf(*expression, "").empty());
  const long before = AllocatedBytes();
  EXPECT_FALSE(CapturesOf(*expression, text + "c").empty());
  EXPECT_LT(AllocatedBytes() - before, 1 << 20);
}

}  // namespace
