#include "Common/RegexSplitter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// In the namespace of RegexToken, where GoogleTest looks for it.
void PrintTo(const RegexToken& token, std::ostream* out) {
  *out << RegexTokenKindName(token.kind) << ':' << token.text;
}

namespace {

using Tokens = std::vector<RegexToken>;

RegexToken U(const char* text) {
  return {RegexTokenKind::Unit, text};
}
RegexToken B(const char* text) {
  return {RegexTokenKind::Literal, text};
}

// One expression, its tokens, and whether it could be read.
struct Row {
  const char* expression;
  Tokens tokens;
  bool readable = true;
};

Tokens SplitOne(const std::string& expression, bool* readable = nullptr) {
  RegexSplitter splitter(1);
  const bool result = splitter.Split(expression);
  if (readable) *readable = result;
  std::vector<Tokens> lists;
  splitter.TakeTokens(lists);
  EXPECT_EQ(lists.size(), 1u);
  return lists.at(0);
}

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = {
      // Runs, groups and brackets.
      {"", {}},
      {"abc", {B("abc")}},
      {"a", {B("a")}},
      {"ab(c|d)+ef", {B("ab"), U("(c|d)+"), B("ef")}},
      {"(a|b)", {U("(a|b)")}},
      {"[abc]x", {U("[abc]"), B("x")}},
      {"x[a\\]b]+?y", {B("x"), U("[a\\]b]+?"), B("y")}},
      {"[]a", {U("[]"), B("a")}},
      {"^a.$", {B("^a.$")}},
      {"a\\(b\\|c", {B("a\\(b\\|c")}},
      {"((a)(b[)])c\\))*d", {U("((a)(b[)])c\\))*"), B("d")}},

      // Quantified atoms. A single byte in front of one is in no token.
      {"abc*d", {B("ab"), U("c*"), B("d")}},
      {"ab*d", {U("b*"), B("d")}},
      {"a*b", {U("a*"), B("b")}},
      {"ab**c", {U("b*"), B("*c")}},
      {"abc+?d", {B("ab"), U("c+?"), B("d")}},
      {"abc++d", {B("ab"), U("c++"), B("d")}},
      {"abc*?+d", {B("ab"), U("c*?"), B("+d")}},
      {"ab\\.*d", {B("ab"), U("\\.*"), B("d")}},
      {"a\\.*d", {U("\\.*"), B("d")}},
      {"xab*yc*", {B("xa"), U("b*"), U("c*")}},
      {"*", {B("*")}},

      // Counts behind an atom.
      {"abc{2}d", {B("ab"), U("c{2}"), B("d")}},
      {"abc{2,3}d", {B("ab"), U("c{2,3}"), B("d")}},
      {"abc{2,3}?d", {B("ab"), U("c{2,3}?"), B("d")}},
      {"abc{2xd", {B("ab"), U("c{2"), B("xd")}},
      {"abc{2+d", {B("ab"), U("c{2+"), B("d")}},
      {"a{2,}b", {B("a{2,}b")}},
      {"a{2,3xb", {B("a{2,3xb")}},
      {"a{2,", {B("a{2,")}},
      {"a{2", {B("a{2")}},
      {"a{", {B("a{")}},
      {"a{x}", {B("a{x}")}},
      {"ab{c*d", {B("ab{"), U("c*"), B("d")}},

      // Counts behind a group or bracket.
      {"(a){2}b", {U("(a){2}"), B("b")}},
      {"(a){2}+b", {U("(a){2}+"), B("b")}},
      {"(a){2,3}b", {U("(a){2,3}"), B("b")}},
      {"(a){2xb", {U("(a){2"), B("xb")}},
      {"(a){2+b", {U("(a){2+"), B("b")}},
      {"[a]{2}?b", {U("[a]{2}?"), B("b")}},
      {"(a){", {U("(a){")}, false},
      {"(a){x}", {U("(a){x}")}, false},
      {"(a){2", {U("(a){2")}, false},
      {"(a){2,", {U("(a){2,")}, false},
      {"(a){2,}", {U("(a){2,}")}, false},
      {"(a){2,3", {U("(a){2,3")}, false},
      {"(a){2,3x", {U("(a){2,3x")}, false},
      {"[a]{x}", {U("[a]{x}")}, false},
      {"((a){2,})b", {U("((a){2,})b")}, false},

      // An alternation at top level is taken whole, and is no failure.
      {"a|b", {U("a|b")}},
      {"(a)b|c", {U("(a)b|c")}},
      {"|", {U("|")}},

      // What cannot be read is taken whole.
      {"a)b", {U("a)b")}, false},
      {")", {U(")")}, false},
      {"a]b", {U("a]b")}, false},
      {"(a", {U("(a")}, false},
      {"((a)", {U("((a)")}, false},
      {"(]a)", {U("(]a)")}, false},
      {"[a", {U("[a")}, false},
      {"[a\\", {U("[a\\")}, false},
      {"[a\\]", {U("[a\\]")}, false},
      {"([a)", {U("([a)")}, false},
      {"a\\", {U("a\\")}, false},
      {"(a\\", {U("(a\\")}, false},
      // A class inside a bracket leaves a "]" behind.
      {"[[:alpha:]]", {U("[[:alpha:]]")}, false},
      {"[]a]", {U("[]a]")}, false},
  };
  return rows;
}

TEST(RegexSplitter, GivesTheTokensOfTheRows) {
  for (const Row& row : Rows()) {
    SCOPED_TRACE(row.expression);
    bool readable = false;
    EXPECT_EQ(SplitOne(row.expression, &readable), row.tokens);
    EXPECT_EQ(readable, row.readable);
  }
}

TEST(RegexSplitter, KeepsOneListForEachCallInOrder) {
  RegexSplitter splitter(2);
  EXPECT_TRUE(splitter.Split("ab"));
  EXPECT_FALSE(splitter.Split("("));
  EXPECT_TRUE(splitter.Split(""));
  std::vector<Tokens> lists = {{B("old")}};
  splitter.TakeTokens(lists);
  EXPECT_EQ(lists, (std::vector<Tokens>{{B("ab")}, {U("(")}, {}}));
}

TEST(RegexSplitter, ReadsAnyDepthOnASmallStack) {
  const std::size_t depth = 1'000'000;
  const std::string nested = std::string(depth, '(') + "a" + std::string(depth, ')');
  EXPECT_EQ(SplitOne(nested), Tokens{U(nested.c_str())});
  bool readable = true;
  SplitOne(std::string(depth, '('), &readable);
  EXPECT_FALSE(readable);
}

TEST(RegexTokenKind, PrintsLettersForTheKindsAndAQuestionMarkForOthers) {
  EXPECT_STREQ(RegexTokenKindName(RegexTokenKind::Unit), "U");
  EXPECT_STREQ(RegexTokenKindName(RegexTokenKind::Literal), "B");
  EXPECT_STREQ(RegexTokenKindName(static_cast<RegexTokenKind>(4)), "X");
  EXPECT_STREQ(RegexTokenKindName(static_cast<RegexTokenKind>(3)), "?");
}

}  // namespace
