#include "Common/Matching/Parser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include "Common/Matching/CharacterClasses.h"
#include "tests/Common/Matching/ExpressionSupport.h"
#include "tests/Common/Matching/Oracle.h"
#include "tests/Common/Matching/PublicRows.h"
#include "tests/support/SmallStack.h"

using namespace std::string_literals;

namespace {

using Matching::Parse;

std::string DumpOf(const std::string& expression) {
  std::ostringstream out;
  Parse(expression).tree.Dump(out);
  return out.str();
}

// Verdict, error and groups are the library's.
void ExpectTheOraclesVerdict(const std::string& expression) {
  SCOPED_TRACE(Oracle::Show(expression));
  const auto oracle = Oracle::Compile(expression);
  const auto result = Parse(expression);
  const auto validated = Matching::Validate(expression);
  ASSERT_EQ(validated.error.has_value(), result.error.has_value());
  EXPECT_EQ(validated.stateCount, result.stateCount);
  if (result.error) {
    EXPECT_EQ(validated.error->message, result.error->message);
  } else {
    EXPECT_EQ(validated.tree.GroupCount(), result.tree.GroupCount());
    EXPECT_EQ(validated.tree.NodeCount(), 0U);
  }
  ASSERT_EQ(!result.error.has_value(), oracle.regex.has_value())
      << (result.error ? result.error->message : oracle.message);
  if (result.error) {
    EXPECT_EQ(static_cast<int>(result.error->code), oracle.code);
    EXPECT_EQ(result.error->message, oracle.message);
  } else {
    EXPECT_EQ(result.tree.GroupCount(), oracle.regex->mark_count());
  }
}

TEST(Parser, JudgesSpellingsAsTheLibraryDoes) {
  const std::string rows[] = {
      // Empty alternatives and groups.
      "", "|x", "x|", "|", "x||y", "(|a)", "(a|)", "(a||b)", "()", "(?:)", "(?:|a)",
      // The empty class and the class of all.
      "[]", "[]a]", "[^]", "[^]a]",
      // Braces.
      "a{2,}", "a{2}", "a{2,3}", "a{0}", "a{2}{3}", "a{2}?", "a{2}+", "a{,3}", "a{", "a{x}", "a{2",
      "a{2,", "a{2,1}", "a{}", "a{ 2}", "\\p{L}", "x{1}{", "a{00001}", "a{2147483648}",
      "a{2147483647}", "a{0,2147483648}", "a{99999999999}", "a{2147483648,5}", "a{4294967298}",
      // Nothing to repeat.
      "{", "{x}", "{2}", "*", "*a", "+", "?", "^*", "$*", "\\b*", "(?=x)*", "(*)", "a|*",
      // Closing signs that stand for themselves, and such that do not.
      "a}", "}", "]", "a]", "(", "((", ")", "a)", "(a", "(?", "(?)", "(?:", "(?=", "(?!a",
      // Stacked quantifiers.
      "a**", "a+*", "a*?", "a+?", "a??", "a*+", "a++", "a?+", "(a)++", "a???", "a{1}??", "a{2,}??",
      // Brackets.
      "[abc", "^[abc$", "[[:alpha:]", "[[", "[[:", "[[.", "[[=", "[[a]", "[", "[^", "[^a", "[a-",
      "[a-b", "[a-\\d]", "[\\d-z]", "[\\w-z]", "[\\d-]", "[-\\d]", "[a-]", "[-a]", "[--a]",
      "[a-z-9]", "[a--]", "[a--b]", "[---]", "[----]", "[a-b-c]", "[a-b-]", "[-a-b]", "[z-a]",
      "[a-Z]", "[A-z]", "[Z-a]", "[a-\\xff]", "[\\x00-\\xff]", "[a-\xE9]", "[\x80-\xFF]",
      "[\\x80-\\xff]", "[^\\x00-\\x7f]", "[\\1]", "[\\q]", "[\\.]", "[\\-]", "[\\]]", "[\\B]",
      "[\\b]", "[\\c]", "[\\cA]", "[a\\", "[a\\]", "[\\0]", "[\\00]", "[\\x41-\\x42]", "[a-\\x1]",
      "[\\w-a]", "[a-[:alpha:]]", "[a-[.z.]]", "[a-[=z=]]", "[[.a.]-z]", "[[=a=]-z]",
      "[[:alpha:]-z]", "[[:foo:]]", "[[:^alpha:]]", "[[::]]", "[[..]]", "[[==]]", "[[.ab.]]",
      "[[=ab=]]", "[[.a", "[[:a", "[[.a.", "[[:d:]x", "[[.-.]]", "[[.].]]", "[:alpha:]",
      "[[:ALPHA:]]", "[[:Alpha:]]", "[[:W:]]",
      // Groups of other grammars.
      "(?i)abc", "(?<=x)", "(?<!x)", "(?<n>x)", "(?P<n>x)", "(?#x)",
      // Back-references.
      "\\1", "(a)\\2", "\\1(a)", "(a)\\10", "\\8", "(\\1)", "(a\\1)", "(a)\\1",
      "(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)\\10", "(a)\\99999999999", "(a)\\4294967297", "\\4294967296",
      "\\1(?x", "(a)(?:\\1)*", "(a|(b))\\2",
      // Escapes.
      "\\0", "\\00", "\\cA", "\\ca", "\\c1", "\\c", "\\x41", "\\u0041", "\\u0141", "\\x4", "\\xg",
      "\\x", "\\u004", "\\e\\z\\A\\Z\\Q\\E\\q\\a\\k\\G\\h\\U\\<\\>\\_\\/\\-\\,", "\\", "a\\",
      "\\\\",
      // Bytes that are no text.
      "a\0b"s, "\0"s, "[\0]"s, "\xC3\xA9", "\xFF+",
      // The limit on states.
      "a{1000}", "[a-z]{20000}", "(a{100}){100}", "a{99995}", "a{99996}", "a{100000}",
      "(a{1000}){100}", "a{100001,5}", "a{50000}a{49990}", "(?=a{400}){2}"};
  for (const std::string& expression : rows) ExpectTheOraclesVerdict(expression);
}

TEST(Parser, KnowsTheNamesThatTheLibraryKnows) {
  static constexpr const char* kNames[] = {"d",
                                           "w",
                                           "s",
                                           "alnum",
                                           "alpha",
                                           "blank",
                                           "cntrl",
                                           "digit",
                                           "graph",
                                           "lower",
                                           "print",
                                           "punct",
                                           "space",
                                           "upper",
                                           "xdigit",
                                           "D",
                                           "ALNUM",
                                           "_",
                                           "word",
                                           "ascii",
                                           "x",
                                           "dd",
                                           "",
                                           " alpha",
                                           "NUL",
                                           "SOH",
                                           "alert",
                                           "tab",
                                           "newline",
                                           "vertical-tab",
                                           "form-feed",
                                           "carriage-return",
                                           "IS4",
                                           "space",
                                           "exclamation-mark",
                                           "dollar-sign",
                                           "hyphen",
                                           "hyphen-minus",
                                           "period",
                                           "full-stop",
                                           "slash",
                                           "solidus",
                                           "zero",
                                           "nine",
                                           "A",
                                           "z",
                                           "left-square-bracket",
                                           "reverse-solidus",
                                           "backslash",
                                           "circumflex",
                                           "circumflex-accent",
                                           "underscore",
                                           "low-line",
                                           "grave-accent",
                                           "left-curly-bracket",
                                           "left-brace",
                                           "vertical-line",
                                           "tilde",
                                           "DEL",
                                           "nul",
                                           "ab"};
  for (const std::string name : kNames) {
    ExpectTheOraclesVerdict("[[:" + name + ":]]");
    ExpectTheOraclesVerdict("[[." + name + ".]]");
    ExpectTheOraclesVerdict("[[=" + name + "=]]");
  }
  for (int byte = 0; byte < 256; ++byte) {
    ExpectTheOraclesVerdict("[[."s + static_cast<char>(byte) + ".]]");
  }
}

// The set that a bracket expression stands for, byte by byte.
TEST(Parser, ReadsTheSetsThatTheLibraryReads) {
  std::vector<std::string> rows = {"a",
                                   "\\.",
                                   ".",
                                   "\\d",
                                   "\\D",
                                   "\\w",
                                   "\\W",
                                   "\\s",
                                   "\\S",
                                   "[abc]",
                                   "[^abc]",
                                   "[]",
                                   "[^]",
                                   "[a-f]",
                                   "[A-F]",
                                   "[A-z]",
                                   "[Z-a]",
                                   "[W-c]",
                                   "[^W-c]",
                                   "[\\x80-\\xff]",
                                   "[^\\x00-\\x7f]",
                                   "[\xC3-\xE9]",
                                   "[\\w-]",
                                   "[-\\w]",
                                   "[\\d\\s]",
                                   "[\\D]",
                                   "[\\W\\d]",
                                   "[^\\S]",
                                   "[[=a=]]",
                                   "[[=A=]x]",
                                   "[[.hyphen.]]",
                                   "[[.A.]-Z]",
                                   "[--0]",
                                   "[+--]",
                                   "[\\b]",
                                   "[\\cA]",
                                   "\\cA",
                                   "\\c1",
                                   "\\x41",
                                   "\\u0141",
                                   "\\u0100",
                                   "\\0",
                                   "[\\0-\\x1f]",
                                   "[a-c-e]",
                                   "[@-\\[]",
                                   "[`-{]",
                                   "\\e",
                                   "\\q",
                                   "[[:alpha:]-]"};
  for (const char* name : {"d", "w", "s", "alnum", "alpha", "blank", "cntrl", "digit", "graph",
                           "lower", "print", "punct", "space", "upper", "xdigit"}) {
    rows.push_back("[[:"s + name + ":]]");
    rows.push_back("[^[:"s + name + ":]]");
  }
  for (int byte = 0; byte < 128; ++byte) {
    const std::string name = {'\\', 'x', "0123456789abcdef"[byte >> 4],
                              "0123456789abcdef"[byte & 15]};
    rows.push_back("[" + name + "-\\x7f]");
  }
  for (const std::string& expression : rows) {
    SCOPED_TRACE(expression);
    const std::regex oracle(expression, Oracle::kFlags);
    const auto result = Parse(expression);
    ASSERT_FALSE(result.error);
    const auto& root = result.tree[result.tree.Root()];
    ASSERT_EQ(root.kind, Matching::NodeKind::Bytes);
    for (int byte = 0; byte < 256; ++byte) {
      const std::string text(1, static_cast<char>(byte));
      EXPECT_EQ(result.tree.Set(root.value).Contains(static_cast<unsigned char>(byte)),
                std::regex_match(text, oracle))
          << byte;
    }
  }
}

TEST(Parser, BuildsTheTree) {
  EXPECT_EQ(DumpOf("a(?:b|)*?$"),
            "concat\n  bytes Aa\n  repeat 0, lazy\n    alternate\n      bytes Bb\n      empty\n"
            "  line-end\n");
  EXPECT_EQ(DumpOf("((x){2,3})(?!\\1\\b)"),
            "concat\n  group 1\n    repeat 2,3\n      group 2\n        bytes Xx\n"
            "  not-look-ahead\n    concat\n      back-reference 1\n      word-boundary\n");
  EXPECT_EQ(DumpOf("[a-f\\n]"), "bytes \\x0AA-Fa-f\n");
  EXPECT_EQ(DumpOf(""), "empty\n");
}

TEST(Parser, AgreesOnThePublicExpressions) {
  std::set<std::string> expressions;
  for (const auto& row : Oracle::ReadRows("corpus.tsv")) {
    const std::string& expression = row.at(1);
    if (!expressions.insert(expression).second) continue;
    SCOPED_TRACE(Oracle::Show(expression));
    const auto result = Parse(expression);
    ASSERT_EQ(!result.error.has_value(), row.at(3) == "ok");
    if (result.error) {
      EXPECT_EQ(result.error->message, row.at(10));
    } else {
      EXPECT_EQ(std::to_string(result.tree.GroupCount()), row.at(4));
    }
  }
  for (const char* name : {"suite_agree.tsv", "suite_deviates.tsv"}) {
    const std::size_t first = name == "suite_agree.tsv"s ? 2 : 3;
    for (const auto& row : Oracle::ReadRows(name)) {
      const std::string& expression = row.at(first);
      if (expressions.insert(expression).second) ExpectTheOraclesVerdict(expression);
    }
  }
}

TEST(Parser, AgreesOnGeneratedExpressions) {
  Oracle::Generator generator(1);
  for (int i = 0; i < 20000; ++i) {
    ExpectTheOraclesVerdict(generator.Garbage(1 + generator.Below(10)));
    if (HasFatalFailure()) return;
  }
  for (int i = 0; i < 2000; ++i) {
    ExpectTheOraclesVerdict(generator.Expression({.backReferences = true}));
    if (HasFatalFailure()) return;
  }
}

TEST(Parser, RefusesNumbersForWhichTheLibraryHasNoRoom) {
  EXPECT_FALSE(Parse("a{9223372036854775807}").error);
  EXPECT_FALSE(Parse("a{0000000000000000000000001}").error);
  EXPECT_EQ(Parse("a{9223372036854775808}").error->code, std::regex_constants::error_badbrace);
  EXPECT_EQ(Parse("a{1,80000000000000000000}").error->code, std::regex_constants::error_badbrace);
  EXPECT_EQ(Parse("(a)\\18446744073709551617").error->code, std::regex_constants::error_backref);
}

TEST(Parser, CountsStatesAsTheLibraryDoes) {
  // As many further states as fit make a valid expression, and one more is one too many.
  Oracle::Generator generator(2);
  const int rounds = std::getenv("TESSARIN_LONG_TESTS") ? 300 : 4;
  for (int i = 0; i < rounds; ++i) {
    std::string expression;
    std::uint64_t states = Matching::kStateLimit;
    for (int copies = 0; copies < 3; ++copies) {
      expression +=
          "(?:" + generator.Expression({}) + "){" + std::to_string(generator.Below(4)) + ",3}";
    }
    states = Parse(expression + "a{1}").stateCount;
    const auto fill = Matching::kStateLimit - states + 1;
    SCOPED_TRACE(expression);
    EXPECT_EQ(Parse(expression + "a{" + std::to_string(fill) + "}").stateCount,
              Matching::kStateLimit);
    ExpectTheOraclesVerdict(expression + "a{" + std::to_string(fill) + "}");
    ExpectTheOraclesVerdict(expression + "a{" + std::to_string(fill + 1) + "}");
  }
}

TEST(Parser, RefusesARunOfLiteralsForWhatComesFirst) {
  // The limit falls on each of the literals, and behind the last of them the text ends badly.
  for (auto fill = Matching::kStateLimit - 12; fill < Matching::kStateLimit; ++fill) {
    ExpectTheOraclesVerdict("a{" + std::to_string(fill) + "}bcdef\\");
  }
}

TEST(Parser, ReadsTheSameIntoMemoryThatWasUsedBefore) {
  Oracle::Generator generator(5);
  Matching::SyntaxTree storage;
  std::size_t mostSets = 0;
  for (int i = 0; i < 1000; ++i) {
    const std::string isNew = "[" + std::string(1, static_cast<char>('a' + i % 26)) +
                              static_cast<char>('0' + i / 26 % 10) + std::string(i / 260, '!') +
                              "]";
    const std::string expression = isNew + generator.Expression({}) + "Ab.c";
    SCOPED_TRACE(Oracle::Show(expression));
    auto result = Parse(expression, std::move(storage));
    if (result.error) continue;
    std::ostringstream out;
    result.tree.Dump(out);
    EXPECT_EQ(out.str(), DumpOf(expression));
    mostSets = std::max(mostSets, result.tree.Sets().size());
    storage = std::move(result.tree);
  }
  EXPECT_GT(mostSets, 50U);   // those of earlier trees are kept
  EXPECT_LT(mostSets, 400U);  // and not for ever
}

// No oracle here: the library itself overflows its stack on most of these.
TEST(Parser, SurvivesAnyLengthAndNestingOnASmallStack) {
  OnASmallStack([] {
    constexpr std::size_t kDeep = 100000;
    EXPECT_EQ(Parse(Repeated("(", kDeep) + Repeated(")", kDeep)).error->code,
              std::regex_constants::error_space);
    EXPECT_EQ(Parse(Repeated("(", 30000) + Repeated(")", 30000)).tree.GroupCount(), 30000U);
    EXPECT_FALSE(Parse(Repeated("(?:", 30000) + "a" + Repeated(")", 30000)).error);
    EXPECT_FALSE(Parse(Repeated("(?=", 30000) + "a" + Repeated(")", 30000)).error);
    EXPECT_EQ(Parse(Repeated("(?=", 350000)).error->code, std::regex_constants::error_paren);
    EXPECT_EQ(Parse(Repeated("(", 90000)).error->code, std::regex_constants::error_paren);
    EXPECT_EQ(Parse(Repeated("a", 1 << 20)).error->code, std::regex_constants::error_space);
    EXPECT_FALSE(Parse(Repeated("a", 99000)).error);
    EXPECT_FALSE(Parse("a" + Repeated("*", 90000)).error);
    EXPECT_EQ(Parse("a" + Repeated("*", 1 << 20)).error->code, std::regex_constants::error_space);
    EXPECT_FALSE(Parse("[" + Repeated("a-z", 1 << 18) + "]").error);
    EXPECT_FALSE(Parse(Repeated("a|", 20000)).error);
    EXPECT_EQ(Parse("a{" + Repeated("9", 1 << 20) + "}").error->code,
              std::regex_constants::error_badbrace);
    EXPECT_EQ(Parse("[[." + Repeated("a", 1 << 20)).error->code,
              std::regex_constants::error_collate);
    std::ostringstream deep;
    Parse(Repeated("(?=", 1000) + "a" + Repeated(")", 1000)).tree.Dump(deep);
    EXPECT_NE(deep.str().find("bytes"), std::string::npos);
  });
}

}  // namespace
