#include "Common/PrefixSuffixCollector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/Common/QuestionedHost.h"
#include "tests/support/AllocationCount.h"

namespace {

using Strings = std::vector<std::string>;

struct Collected : PrefixSuffixCollector {
  explicit Collected(const Strings& expressions, bool optimize, bool measure = false)
      : PrefixSuffixCollector(measure) {
    for (const std::string& expression : expressions) Add(expression, "<" + expression + ">");
    Calculate(optimize);
  }
  Strings Prefixes() {
    Strings prefixes;
    for (const PrefixGroup& group : Groups()) {
      prefixes.push_back(group.Prefix());
      EXPECT_EQ(group.Suffix(), "");
    }
    return prefixes;
  }
  // "prefix: rest<source> ..." for each group.
  Strings Contents() {
    Strings contents;
    for (const PrefixGroup& group : Groups()) {
      std::string line = group.Prefix() + ":";
      for (const auto& item : group.Items()) line += " " + item.fExpression + item.fSource;
      contents.push_back(line);
    }
    return contents;
  }
};

// That many expressions which begin alike and differ from there on.
Strings Alike(const std::string& beginning, int count) {
  Strings expressions;
  for (int i = 0; i < count; ++i) expressions.push_back(beginning + std::string(1, char('A' + i)));
  return expressions;
}

TEST(PrefixGroup, TakesWhatBeginsAndEndsAsItDoes) {
  PrefixGroup group("ab", "yz");
  EXPECT_TRUE(group.TryAddToGroup("abcyz", "1"));
  EXPECT_TRUE(group.TryAddToGroup("abyz", "2"));
  EXPECT_FALSE(group.TryAddToGroup("abz", "short of both affixes together"));
  EXPECT_FALSE(group.TryAddToGroup("xbcyz", "other beginning"));
  EXPECT_FALSE(group.TryAddToGroup("ABcyz", "other case"));
  EXPECT_FALSE(group.TryAddToGroup("abcyx", "other end"));
  ASSERT_EQ(group.Items().size(), 2u);
  EXPECT_EQ(group.Items()[0].fExpression, "c");
  EXPECT_EQ(group.Items()[0].fSource, "1");
  EXPECT_EQ(group.Items()[1].fExpression, "");
  EXPECT_TRUE(group.HasAffix());

  // Contract: nothing asks whether the beginning ends at a token.
  PrefixGroup cut("abc", "");
  EXPECT_TRUE(cut.TryAddToGroup("abc|x", "3"));
  EXPECT_EQ(cut.Items()[0].fExpression, "|x");

  PrefixGroup rest("", "");
  EXPECT_FALSE(rest.HasAffix());
  EXPECT_TRUE(rest.TryAddToGroup("", "takes everything"));
}

TEST(PrefixSuffixCollector, KeepsOneGroupWithoutTheOptimisation) {
  Collected collected(Alike("abc", 20), false);
  EXPECT_EQ(collected.Prefixes(), (Strings{""}));
  EXPECT_EQ(collected.Groups()[0].Items().size(), 20u);
  EXPECT_EQ(collected.Groups()[0].Items()[3].fExpression, "abcD");
  EXPECT_TRUE(collected.Tree().IsEmpty());
  EXPECT_TRUE(collected.TokenLists().empty());
}

TEST(PrefixSuffixCollector, SortsIntoTheGroupWithTheLongestPrefixThatFits) {
  Strings expressions = Alike("abcd", 10);
  for (const auto& more : Alike("ab", 10)) expressions.push_back(more);
  for (const auto& more : Alike("x", 2)) expressions.push_back(more);
  Collected collected(expressions, true);
  EXPECT_EQ(collected.Prefixes(), (Strings{"abcd", "ab", "x", ""}));
  const Strings contents = collected.Contents();
  EXPECT_TRUE(contents[0].starts_with("abcd: A<abcdA> B<abcdB>")) << contents[0];
  EXPECT_TRUE(contents[1].starts_with("ab: A<abA> B<abB>")) << contents[1];
  EXPECT_EQ(contents[3], ":");
}

TEST(PrefixSuffixCollector, OrdersLongPrefixesFirstAndEqualOnesByBytes) {
  Collected collected({"b", "a", "ccc", "a"}, true);
  EXPECT_EQ(collected.Prefixes(), (Strings{"ccc", "a", "b", ""}));
  EXPECT_EQ(collected.Contents()[1], "a: <a> <a>");
}

// Contract: the splitter loses a single byte in front of a quantified one, so the tree names "b*c"
// as a beginning of "ab*c". Nothing begins like that, and its group stays empty.
TEST(PrefixSuffixCollector, ComparesEveryPrefixWithTheExpressionItself) {
  Collected collected({"ab*c"}, true);
  EXPECT_EQ(collected.Contents(), (Strings{"b*c:", ": ab*c<ab*c>"}));
}

TEST(PrefixSuffixCollector, MeasuresEachStepOnlyWhenAsked) {
  EXPECT_TRUE(Collected({"a"}, true).Measurements().empty());
  const auto names = [](const PrefixSuffixCollector& collected) {
    Strings names;
    for (const std::string& line : collected.Measurements()) {
      const std::string time = line.substr(line.find(':') + 1);
      EXPECT_EQ(time.find_first_not_of("0123456789"), time.size() - 3) << line;  // whole ones
      EXPECT_TRUE(time.ends_with(" ms")) << line;
      names.push_back(line.substr(0, line.find(':')));
    }
    return names;
  };
  EXPECT_EQ(names(Collected({"a"}, true, true)),
            (Strings{"RegexSplitter", "RadixTree", "PrefixSuffixCollection"}));
  EXPECT_EQ(names(Collected({"a"}, false, true)), (Strings{"PrefixSuffixCollection"}));
}

TEST(PrefixSuffixCollector, SamplesAboveFiveThousandExpressions) {
  Strings expressions;
  for (int i = 0; i < 5000; ++i) expressions.push_back("common" + std::to_string(i));
  EXPECT_EQ(Collected(expressions, true).TokenLists().size(), 5000u);

  while (expressions.size() < 20000) {
    expressions.push_back("common" + std::to_string(expressions.size()));
  }
  Collected sampled(expressions, true);
  // A quarter of them, give or take what the generator draws.
  EXPECT_GT(sampled.TokenLists().size(), 4000u);
  EXPECT_LT(sampled.TokenLists().size(), 6000u);
  std::size_t items = 0;
  for (const PrefixGroup& group : sampled.Groups()) {
    items += group.Items().size();
    EXPECT_EQ(group.HasAffix(), !group.Items().empty());
  }
  EXPECT_EQ(items, 20000u);
}

// Contract: an expression is in the sample when what is drawn for it is no more than the share of
// the sample, both counted to that bound.
TEST(PrefixSuffixCollector, DrawsTheSampleFromFifteenBits) {
  const Strings expressions(32767, "a");  // so that the share is a number that can be drawn
  for (unsigned seed = 1;; ++seed) {
    std::size_t within = 0, onTheBound = 0;
    std::srand(seed);
    for (std::size_t i = 0; i < expressions.size(); ++i) {
      const int drawn = std::rand() & 0x7fff;
      within += drawn <= 5000;
      onTheBound += drawn == 5000;
    }
    if (onTheBound == 0) continue;
    std::srand(seed);
    EXPECT_EQ(Collected(expressions, true).TokenLists().size(), within);
    break;
  }
}

// Whatever the grouping meets: the log is told in these words, and the build goes on without it.
TEST(PrefixSuffixCollector, GoesOnWithOneGroupWhenTheGroupingFails) {
  const struct {
    AllocationFault::Throw fails;
    std::string words;
  } rows[] = {
      {[] { throw std::out_of_range("x"); }, "out_of_range: x"},
      {[] { throw std::length_error("y"); }, "y"},
      {nullptr, std::bad_alloc().what()},
      {[] { throw 7; }, "unkown"},
  };
  const Strings expressions = Alike("a beginning that no small buffer holds", 20);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.words);
    const HostInSlot host(Gates{.level = false});  // lets level 1 through alone
    PrefixSuffixCollector collector(false);
    for (const std::string& expression : expressions) collector.Add(expression, expression);
    {
      const AllocationFault fault(50, row.fails);  // while prefixes are looked for
      collector.Calculate(true);
      EXPECT_TRUE(fault.HasFailed());
    }
    ASSERT_EQ(host->fPrinted.size(), 1u);
    EXPECT_EQ(host->fPrinted[0].className, "PrefixSuffixCollector");
    EXPECT_EQ(host->fPrinted[0].function, "Calculate");
    EXPECT_EQ(host->fPrinted[0].message, "'CRadixTree::insert(): exception: " + row.words + "'");
    ASSERT_EQ(collector.Groups().size(), 1u);
    EXPECT_FALSE(collector.Groups()[0].HasAffix());
    ASSERT_EQ(collector.Groups()[0].Items().size(), expressions.size());
    EXPECT_EQ(collector.Groups()[0].Items()[7].fExpression, expressions[7]);
  }
}

// Wherever it fails, what it has found until then is no group.
TEST(PrefixSuffixCollector, KeepsNoGroupOfAGroupingThatFailed) {
  const HostInSlot host(Gates{.level = false});
  // Two beginnings: the group of the first may be there when the second fails.
  Strings expressions = Alike("a beginning that no small buffer holds", 10);
  for (const auto& more : Alike("one more, and as long as the first", 10)) {
    expressions.push_back(more);
  }
  std::size_t failures = 0;
  for (long which = 1;; ++which) {
    SCOPED_TRACE(which);
    host->fPrinted.clear();
    PrefixSuffixCollector collector(false);
    for (const std::string& expression : expressions) collector.Add(expression, expression);
    try {
      const AllocationFault fault(which);
      collector.Calculate(true);
      if (!fault.HasFailed()) break;
    } catch (const std::bad_alloc&) {
      continue;  // behind the grouping, and no concern of it
    }
    if (host->fPrinted.empty()) continue;  // a buffer that only saves time
    ++failures;
    EXPECT_EQ(collector.Groups().size(), 1u);
    EXPECT_EQ(collector.Groups().back().Items().size(), expressions.size());
  }
  EXPECT_GT(failures, 100u);
}

TEST(PrefixSuffixCollector, WarnsOnceOfWhatItCannotRead) {
  const HostInSlot host(Gates{.level = false});  // lets level 1 through alone
  Collected collected({"good", "(bad", "[worse"}, true);
  ASSERT_EQ(host->fPrinted.size(), 1u);
  EXPECT_EQ(host->fPrinted[0].className, "PrefixSuffixCollector");
  EXPECT_EQ(host->fPrinted[0].function, "Calculate");
  EXPECT_EQ(host->fPrinted[0].message,
            "'PrefixSuffixCollector::Calculate: failed parsing regex '(bad' "
            "continue w/o optimization'");
  // It goes on with the optimisation, as one unit.
  EXPECT_EQ(collected.TokenLists()[1], (std::vector<RegexToken>{{RegexTokenKind::Unit, "(bad"}}));
}

TEST(PrefixSuffixCollector, WarnsInASampleOfItsFirstExpressionAlone) {
  const HostInSlot host(Gates{.level = false});  // lets level 1 through alone
  Strings expressions(5001, "fine");
  expressions.back() = "(bad";
  Collected(expressions, true);
  EXPECT_TRUE(host->fPrinted.empty());
  Collected(Strings(5001, "(bad"), true);
  EXPECT_EQ(host->fPrinted.size(), 1u);
}

}  // namespace
