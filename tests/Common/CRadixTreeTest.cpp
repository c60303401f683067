#include "Common/CRadixTree.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/Common/WrittenRadixTree.h"
#include "tests/support/AllocationCount.h"
#include "tests/support/SmallStack.h"

namespace {

using Lines = std::vector<std::string>;
using Keys = std::vector<RadixKey>;

RadixKey L(std::string text) {
  return {std::move(text), kRadixLiteral};
}
RadixKey U(std::string text) {
  return {std::move(text), kRadixUnit};
}

struct Tree : CRadixTree {
  explicit Tree(const std::vector<Keys>& expressions) {
    for (const Keys& keys : expressions) insert(keys);
  }
  Lines List() const {
    Lines lines;
    GetList(lines);
    return lines;
  }
  Lines Nodes() const {
    Lines lines;
    GetTree(lines);
    return lines;
  }
  Lines Prefixes(float fraction) const {
    Lines prefixes;
    GetPrefixes(fraction, prefixes);
    return prefixes;
  }
};

TEST(CRadixTree, IsEmptyUntilAKeyComes) {
  Tree tree({});
  tree.insert({});
  EXPECT_TRUE(tree.IsEmpty());
  EXPECT_EQ(tree.List(), Lines());
  EXPECT_EQ(tree.Nodes(), Lines());
  EXPECT_EQ(tree.Prefixes(0.1f), Lines());
  EXPECT_EQ(tree.Compact(), "");
  EXPECT_FALSE(tree.Contains({L("a")}));
}

TEST(CRadixTree, SplitsTheRootAtTheCommonBeginning) {
  const Tree tree({{L("abcd")}, {L("abef")}});
  EXPECT_EQ(tree.List(), (Lines{"ab cd", "ab ef"}));
  EXPECT_EQ(tree.Nodes(), (Lines{"RI (3)/B(2) ab #2", " L  (4)/B(2) cd #1", " L  (4)/B(2) ef #1"}));
  EXPECT_EQ(tree.Compact(), "RI(3)/B(2)ab#2{L(4)/B(2)cd#1{}L(4)/B(2)ef#1{}}");
  // Both leaves qualify, and leave nothing uncovered for what they share.
  EXPECT_EQ(tree.Prefixes(0.1f), (Lines{"abcd", "abef"}));
}

TEST(CRadixTree, SplitsTheRootToAnEmptyLabel) {
  const Tree tree({{L("a")}, {L("b")}});
  EXPECT_EQ(tree.Nodes(), (Lines{"RI (3)/B(2)  #2", " L  (4)/B(2) a #1", " L  (4)/B(2) b #1"}));
  EXPECT_EQ(tree.Prefixes(1.0f), (Lines{""}));
}

TEST(CRadixTree, SplitsWhereAKeyEndsInsideALabel) {
  const Tree tree({{L("abcd")}, {L("ab")}});
  EXPECT_EQ(tree.Nodes(), (Lines{"RIL(7)/B(2) ab #2", " L  (4)/B(2) cd #1"}));
  EXPECT_EQ(tree.List(), (Lines{"ab", "ab cd"}));
}

TEST(CRadixTree, HangsALongerKeyBelowAWholeLabel) {
  const Tree tree({{L("ab")}, {L("abcd")}});
  EXPECT_EQ(tree.Nodes(), (Lines{"RIL(7)/B(2) ab #2", " L  (4)/B(2) cd #1"}));
}

TEST(CRadixTree, SplitsAnInnerNodeInItsPlace) {
  const Tree tree({{L("abcd")}, {L("abef")}, {L("abcx")}});
  EXPECT_EQ(tree.Nodes(), (Lines{"RI (3)/B(2) ab #3", " I  (2)/B(2) c #2", "  L  (4)/B(2) d #1",
                                 "  L  (4)/B(2) x #1", " L  (4)/B(2) ef #1"}));
}

TEST(CRadixTree, CountsTheSameExpressionTwice) {
  EXPECT_EQ(Tree({{L("ab")}, {L("ab")}}).Nodes(), (Lines{"RL (5)/B(2) ab #2"}));
  EXPECT_EQ(Tree({{L("ab")}, {L("ac")}, {L("ac")}}).Nodes(),
            (Lines{"RI (3)/B(2) a #3", " L  (4)/B(2) b #1", " L  (4)/B(2) c #2"}));
}

TEST(CRadixTree, CountsAnExpressionAtItsLastTokenOnly) {
  const Tree tree({{L("ab"), U("(c)"), L("d")}});
  EXPECT_EQ(tree.Nodes(),
            (Lines{"RI (3)/B(2) ab #1", " I  (2)/U(1) (c) #1", "  L  (4)/B(2) d #1"}));
}

TEST(CRadixTree, NamesWhatEnoughExpressionsShare) {
  std::vector<Keys> expressions;
  for (char c = 'a'; c < 'a' + 20; ++c) expressions.push_back({L(std::string("ab") + c + "x")});
  EXPECT_EQ(Tree(expressions).Prefixes(0.1f), (Lines{"ab"}));
  EXPECT_EQ(Tree(expressions).Prefixes(0.0f).size(), 20u);  // a minimum of 0 counts as 1
  EXPECT_EQ(Tree(expressions).Prefixes(0.5f), (Lines{"ab"}));
  EXPECT_EQ(Tree(expressions).Prefixes(1.0f), (Lines{"ab"}));
}

TEST(CRadixTree, PrefersDeepPrefixesToShallowOnes) {
  std::vector<Keys> expressions;
  for (char c = 'a'; c < 'a' + 10; ++c) {
    expressions.push_back({L(std::string("abcd") + c)});
    expressions.push_back({L(std::string("abX") + c)});
  }
  expressions.push_back({L("abq")});
  // The minimum is 4: both deep ones reach it, and the single one that is left for "ab" does not.
  EXPECT_EQ(Tree(expressions).Prefixes(0.2f), (Lines{"abX", "abcd"}));
}

TEST(CRadixTree, DoesNotCutAUnit) {
  const Tree tree({{U("(abc)")}, {U("(abd)")}});
  EXPECT_EQ(tree.Prefixes(1.0f), Lines());
  EXPECT_EQ(tree.Nodes(),
            (Lines{"RI (3)/U(1) (ab #2", " L  (4)/U(1) c) #1", " L  (4)/U(1) d) #1"}));
}

TEST(CRadixTree, CutsBehindAUnit) {
  const std::vector<Keys> two = {{U("(ab)"), L("cd")}, {U("(ab)"), L("ef")}};
  EXPECT_EQ(Tree(two).Prefixes(1.0f), (Lines{"(ab)"}));
  // With a minimum of 1 both leaves qualify first and cover it.
  EXPECT_EQ(Tree(two).Prefixes(0.1f), (Lines{"(ab)cd", "(ab)ef"}));

  std::vector<Keys> twenty;
  for (char c = 'a'; c < 'a' + 20; ++c) twenty.push_back({U("(ab)"), L(std::string(1, c))});
  EXPECT_EQ(Tree(twenty).Prefixes(0.1f), (Lines{"(ab)"}));
}

// Contract: Contains asks another question than whether a key was inserted.
TEST(CRadixTree, ContainsByItsOwnRule) {
  const Tree tokens({{L("ab"), U("(c)"), L("d")}});
  EXPECT_FALSE(tokens.Contains({L("ab"), U("(c)"), L("d")}));  // no key ended at "ab"
  EXPECT_TRUE(tokens.Contains({L("ab(c)d")}));
  const Tree whole({{L("abcd")}});
  EXPECT_TRUE(whole.Contains({L("ab")}));  // used up inside the label of a node where a key ends
  EXPECT_TRUE(whole.Contains({L("abcd")}));
  EXPECT_FALSE(whole.Contains({L("abcde")}));
  EXPECT_FALSE(whole.Contains({L("x")}));
  EXPECT_TRUE(whole.Contains({}));
}

TEST(CRadixTree, DumpsBothForms) {
  std::ostringstream out;
  Tree({{L("abcd")}, {L("abef")}}).Dump(out, "Title");
  EXPECT_EQ(out.str(),
            "Title\nList:\nab cd\nab ef\n\n\nTree:\nRI (3)/B(2) ab #2\n L  (4)/B(2) cd #1\n"
            " L  (4)/B(2) ef #1\n");
}

TEST(RadixKindName, KnowsThreeKinds) {
  EXPECT_STREQ(RadixKindName(0), "?");
  EXPECT_STREQ(RadixKindName(1), "U");
  EXPECT_STREQ(RadixKindName(2), "B");
  EXPECT_STREQ(RadixKindName(3), "X");
  EXPECT_STREQ(RadixKindName(4), "?");
}

// The oracle: what each path of the tree stands for, and how many expressions run through it, found
// by looking at every expression.
TEST(CRadixTree, CountsWhatRunsThroughEachNode) {
  std::mt19937 random(20);
  for (int round = 0; round < 300; ++round) {
    std::vector<Keys> expressions(1 + random() % 12);
    std::vector<std::string> wholes;
    for (Keys& keys : expressions) {
      std::string whole;
      for (std::size_t tokens = 1 + random() % 3; tokens > 0; --tokens) {
        std::string text;
        for (std::size_t size = 1 + random() % 3; size > 0; --size) text += "ab"[random() % 2];
        whole += text;
        keys.push_back({text, random() % 2 ? kRadixUnit : kRadixLiteral});
      }
      wholes.push_back(whole);
    }
    const Tree tree(expressions);
    SCOPED_TRACE(tree.Compact());

    std::map<std::size_t, std::string> pathAt;  // by depth
    for (const std::string& line : tree.Nodes()) {
      const std::size_t depth = line.find_first_not_of(' ');
      const std::size_t labelAt = line.find(") ", line.find("/")) + 2;
      const std::size_t countAt = line.rfind(" #");
      const std::string label = line.substr(labelAt, countAt - labelAt);
      pathAt[depth] = (depth == 0 ? "" : pathAt[depth - 1]) + label;
      std::size_t through = 0;
      for (const std::string& whole : wholes) through += whole.starts_with(pathAt[depth]) ? 1 : 0;
      EXPECT_EQ(std::stoul(line.substr(countAt + 2)), through) << pathAt[depth];
    }
    for (const std::string& prefix : tree.Prefixes(0.4f)) {
      std::size_t through = 0;
      for (const std::string& whole : wholes) through += whole.starts_with(prefix) ? 1 : 0;
      EXPECT_GE(through, std::max<std::size_t>(1, wholes.size() * 4 / 10)) << prefix;
    }
    for (const std::string& whole : wholes) EXPECT_TRUE(tree.Contains({L(whole)})) << whole;
  }
}

// Kinds and marks decide which beginnings may be cut: all of them as the contract has them.
TEST(CRadixTree, AgreesWithTheTreeAsItIsWritten) {
  std::mt19937 random(34);
  for (int round = 0; round < 2000; ++round) {
    Tree tree({});
    WrittenRadixTree written;
    std::string kinds;
    for (std::size_t i = 1 + random() % 8; i > 0; --i) {
      Keys keys;
      for (std::size_t tokens = random() % 4; tokens > 0; --tokens) {
        std::string text;
        for (std::size_t size = 1 + random() % 3; size > 0; --size) text += "ab\xE9"[random() % 3];
        keys.push_back({text, random() % 2 ? kRadixUnit : kRadixLiteral});
        kinds += RadixKindName(keys.back().kind) + (":" + text);
      }
      kinds += '/';
      tree.insert(keys);
      written.Insert(keys);
    }
    SCOPED_TRACE(kinds);
    ASSERT_EQ(tree.Nodes(), written.Nodes());
    for (const float fraction : {0.0f, 0.1f, 0.3f, 0.5f, 1.0f}) {
      ASSERT_EQ(tree.Prefixes(fraction), written.Prefixes(fraction)) << fraction;
    }
  }
}

// What ended its filling may have been the want of memory.
TEST(CRadixTree, IsDestroyedWithoutAskingForMemory) {
  auto tree = std::make_unique<Tree>(std::vector<Keys>{
      {L("ab"), U("(c)"), L("d")}, {L("ab"), U("(c)"), L("e")}, {L("abx")}, {L("q")}});
  EXPECT_EQ(tree->Nodes().size(), 7u);
  const AllocationFault fault(1);
  tree.reset();
  EXPECT_FALSE(fault.HasFailed());
}

TEST(CRadixTree, ServesATreeOfAnyDepth) {
  OnASmallStack([] {
    Tree tree({});
    Keys keys;
    for (int i = 0; i < 5000; ++i) keys.push_back(L("a"));
    tree.insert(keys);
    EXPECT_EQ(tree.Prefixes(0.1f), (Lines{std::string(5000, 'a')}));
    EXPECT_EQ(tree.List().size(), 1u);
    EXPECT_EQ(tree.Nodes().size(), 5000u);
  });
}

}  // namespace
