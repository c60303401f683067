#include "Common/Matching/Expression.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "tests/Common/Matching/ExpressionSupport.h"
#include "tests/Common/Matching/Oracle.h"
#include "tests/support/SmallStack.h"

using namespace std::string_literals;

namespace {

using Matching::Captures;
using Matching::Expression;
using Matching::Road;
using Options = Expression::Options;

// Every way of answering, so that each is held against the oracle.
struct NamedOptions {
  const char* name;
  Options options;
};

const NamedOptions kAllOptions[] = {
    {"everything", {}},
    {"automata with no memory", {.automatonBudget = 0}},
    {"automata with little memory", {.automatonBudget = 2000}},
    {"no literals", {.useLiterals = false}},
    {"no automata", {.useLiterals = false, .useAutomata = false}},
    {"threads alone", {.useLiterals = false, .useAutomata = false, .useBacktracking = false}},
    {"trails", {.useBacktracking = false}},
    {"one trail for a walk", {.searchesAlone = 0, .searchesAloneWithLookAheads = 0}},
    {"one trail from the second search on",
     {.useLiterals = false, .searchesAlone = 1, .searchesAloneWithLookAheads = 1}},
    {"one trail without an automaton",
     {.automatonBudget = 0, .searchesAlone = 0, .searchesAloneWithLookAheads = 0}},
    {"threads behind automata", {.useTrails = false, .useBacktracking = false}},
    {"the library's order",
     {.useLiterals = false, .useAutomata = false, .unrollEmptyPasses = false}},
};

constexpr std::size_t kMaxMatches = 64;  // of one text

std::string AllSpans(const Expression& expression, const std::string& text,
                     std::size_t most = kMaxMatches) {
  std::string spans;
  Matching::MatchIterator walk(expression, text);
  Captures captures;
  for (std::size_t i = 0; i < most && walk.Next(captures); ++i) {
    spans += Spans(captures) + "; ";
  }
  return spans;
}

// All answers of the oracle for one pair; nothing where it would run on for ages.
struct Answers {
  std::string match;  // spans, or "no"
  std::string search;
  std::string all;
};

std::optional<Answers> AskOracle(const std::regex& regex, const std::string& text) {
  Answers answers{"no", "no", ""};
  const Oracle::Pointer begin(text.data());
  const Oracle::Pointer end(text.data() + text.size());
  Oracle::Match match;
  Oracle::Pointer::steps = 0;
  try {
    if (std::regex_match(begin, end, match, regex)) {
      answers.match = Oracle::Spans(match, text.data());
    }
    if (std::regex_search(begin, end, match, regex)) {
      answers.search = Oracle::Spans(match, text.data());
    }
    std::size_t count = 0;
    for (Oracle::Walk walk(begin, end, regex), stop; walk != stop && count < kMaxMatches;
         ++walk, ++count) {
      answers.all += Oracle::Spans(*walk, text.data()) + "; ";
    }
  } catch (const std::regex_error&) {
    return std::nullopt;
  }
  return answers;
}

void ExpectAnswers(const Expression& expression, const std::string& text, const Answers& answers) {
  Captures captures;
  EXPECT_EQ(expression.IsMatch(text), answers.match != "no");
  EXPECT_EQ(expression.Search(text), answers.search != "no");
  EXPECT_EQ(expression.MatchCaptures(text, captures) ? Spans(captures) : "no", answers.match);
  EXPECT_EQ(expression.SearchCaptures(text, 0, {}, captures) ? Spans(captures) : "no",
            answers.search);
  EXPECT_EQ(AllSpans(expression, text), answers.all);
}

// Every road gives the oracle's answers for the expression and each text.
void ExpectTheOraclesAnswers(const std::string& pattern, const std::vector<std::string>& texts) {
  const auto oracle = Oracle::Compile(pattern);
  if (!oracle.regex) {
    EXPECT_EQ(Compile(pattern), nullptr) << Oracle::Show(pattern);
    return;
  }
  std::vector<std::optional<Answers>> answers;
  for (const auto& text : texts) answers.push_back(AskOracle(*oracle.regex, text));
  for (const auto& [name, options] : kAllOptions) {
    const auto expression = Compile(pattern, options);
    ASSERT_NE(expression, nullptr) << Oracle::Show(pattern);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      SCOPED_TRACE(Oracle::Show(pattern) + " on '" + Oracle::Show(texts[i]) + "', " + name);
      if (answers[i]) ExpectAnswers(*expression, texts[i], *answers[i]);
    }
    if (testing::Test::HasFailure()) return;
  }
}

TEST(Expression, AnswersAsTheLibraryDoes) {
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      // Line ends and the borders of the text.
      {".*", {"", "ab", "a\nb", "a\rb", "a\v\f\x85"s + '\0'}},
      {"^a$", {"a", "a\n", "\na", "A"}},
      {"a[^x]b|a[^]b|a\\Wb|a[\\s\\S]b", {"a\nb", "a\rb", "axb"}},
      {"^", {"", "abc"}},
      {"$", {"", "abc"}},
      {"x|^", {"abx", "x"}},
      {"^a", {"aaa"}},
      {"\\b", {"", "ab cd", " a", "a "}},
      {"\\B", {"", "ab cd", "  "}},
      {"\\b|^a", {" ax", " a"}},
      {"^|b", {"abab"}},
      // The preferred alternative, and what backtracking makes of it.
      {"(a|ab)", {"ab", "a", "xab"}},
      {"(a|ab)(c|bcd)(d*)", {"abcd", "abcdd"}},
      {"a*?b|a", {"aab", "aaa"}},
      {"(a{1,2}?)(a*)", {"aaa"}},
      // Captures of a repeated group stay.
      {"((a)|(b))*", {"ab", "ba", ""}},
      {"(z)((a+)?(b+)?(c))*", {"zaacbbbcac"}},
      {"(a|b|(c))*", {"cab", "abc"}},
      // Empty passes.
      {"(a*)+", {"aa", "", "b"}},
      {"(a*)*", {"aa", "", "b"}},
      {"(|a)*", {"aa", "", "a"}},
      {"(|a)+", {"aa", "", "aaa"}},
      {"(a|)*b", {"aab", "b"}},
      {"(|a)*b", {"aab", "b"}},
      {"()*", {"", "a"}},
      {"(a?)*?b", {"aab", "b"}},
      {"((a*)*)*", {"aa", "ab", ""}},
      {"((|a)+|b)*c", {"abac", "c", "ab"}},
      {"(a*?)*?", {"aa", ""}},
      {"(?:(a)|b|)*", {"ab", "ba", "aab"}},
      {R"((a?b??)*)", {"abab", "b", "aa"}},
      {"((a?)(b?))*", {"ab", "ba", "abb"}},
      {"(a*)(|b)*(b)?", {"aabb", "b"}},
      // Empty matches of a walk.
      {"x*", {"axxc"}},
      {"", {"abc", ""}},
      {"a*", {"baac"}},
      {"|a", {"aa"}},
      {"a??", {"aa"}},
      {"(a|)", {"aba"}},
      // Look-aheads, whose captures stay even from a way that failed.
      {"(?=(a))a", {"a", "ba"}},
      {"(?:(?=(a))b|ac)", {"ac"}},
      {"(?=(a+))a*b\\1", {"aab", "baaabac"}},
      {"(?!a)b|(?!b)a", {"ab"}},
      {"a(?=^b)b", {"ab", "xab"}},
      {"a(?=\\bb)b", {"ab", "xab"}},
      {"a(?=\\B)b", {"ab"}},
      {"(?=^)x|b(?=^)", {"xb", "bx", "ab"}},
      {"(?=(?=(a)b)a)ab|a", {"ab", "ac"}},
      {"(?:(?=(a)|b).)*", {"ab", "ba", "aab"}},
      {"(?=)", {"ab"}},
      {"(?=a*)", {"aab"}},
      {"(?!(a))b|(?=(b))", {"b", "ab"}},
      {"^(?=.*\\d)(?=.*([a-z])).{4,8}$", {"abc1", "1abc", "abcd", "12345"}},
      // Look-aheads that are inside each other, repeated, or on no way at all.
      {"(?:(?!\\s|b)a){0}", {"", "a"}},
      {"(?:a(?!b)|b(?=a|$)){2,}", {"aab", "aba", "baa", "ab"}},
      {"(?!(?!a)|(?=ab)).+", {"a", "ab", "b", "ac"}},
      {"(?:(?!(?=a\\b)).)*(?!$)a", {"ba", "aab", "a"}},
      {"(?=$)|a(?!$)b?", {"", "ab", "aab", "a"}},
      // Back-references.
      {"(a)\\1", {"aA", "ab", "aa"}},
      {"(a)?\\1", {"", "aa", "a"}},
      {"(a*)\\1", {"aaaa", "aaa", ""}},
      {"((a)|\\2b)*", {"aab", "abab"}},
      {"(.+)\\1", {"abab", "xabcabcx"}},
      {"(?:(a)|b\\1)+", {"aba", "abab", "b"}},
      // Repetitions with counts.
      {"a{0}", {"", "a"}},
      {"a{2}{3}", {"aaaaaa", "aaaaa"}},
      {"(a{0,2}){2,}", {"aaaaa", ""}},
      {"(a|b{2}){1,3}?b", {"abbb", "bb", "aab"}},
      {"(?:a?){3}b", {"aab", "aaaab"}},
      // Bytes.
      {"\xC3\xA9", {"\xC3\xA9", "\xC3\x89"}},
      {"[\x80-\xFF]+", {"\xC3\xA9z"}},
      {"a\0b"s, {"a\0b"s, "ab"}},
      {"\\cJ|\\0", {"\n", "J", "\0"s}},
      {"[]", {"", "a"}},
      {"[^]*", {"a\nb"}},
  };
  for (const auto& [pattern, texts] : rows) ExpectTheOraclesAnswers(pattern, texts);
}

// Every match has a literal, and the text has it in either case, cut off, or not at all.
TEST(Expression, LooksForLiteralsFirst) {
  const std::vector<std::string> texts = {"",         "xabc",      "ABC=1",   "a-b",
                                          "foo/bar",  "FOO/BARb",  "fo/ba",   "r\nfoo",
                                          "abcabd1x", "bar?foo=9", "=Foo\x20"};
  for (const char* const pattern :
       {"abc", "[^x]*foo.*", "(foo|bar)/", ".*a-?b.*", "foo[/=](\\d|bar)?", "(?:x|(y))*bar",
        "(a)\\1?bc", "(?=.*foo)b", "foo$|^abd", "b+/|o{2}"}) {
    ExpectTheOraclesAnswers(pattern, texts);
  }
}

TEST(Expression, TakesTheRoadThatItsContentAllows) {
  EXPECT_EQ(Compile("(a|b)*c")->RoadTaken(), Road::Automaton);
  EXPECT_EQ(Compile("(|a)*")->RoadTaken(), Road::Automaton);
  EXPECT_EQ(Compile("(?=(a))b")->RoadTaken(), Road::Threads);
  EXPECT_EQ(Compile("(?:(?!a).)*")->RoadTaken(), Road::Threads);
  EXPECT_EQ(Compile("(?:(?=(a)).)*")->RoadTaken(), Road::Exact);
  EXPECT_EQ(Compile("(a)\\1")->RoadTaken(), Road::Exact);
}

// All expressions of up to so many characters against all texts of up to five.
void TryAllExpressions(std::size_t maxLength, std::size_t textStep) {
  constexpr std::string_view kCharacters = "ab.|*?()^$";
  constexpr std::string_view kLetters = "ab\n";
  std::vector<std::string> texts{""};
  for (std::size_t i = 0; i < texts.size() && texts[i].size() < 5; ++i) {
    for (const char c : kLetters) texts.push_back(texts[i] + c);
  }
  std::vector<std::string> patterns{""};
  std::size_t skip = 0;
  for (std::size_t i = 0; i < patterns.size(); ++i) {
    const std::string pattern = patterns[i];
    if (pattern.size() < maxLength) {
      for (const char c : kCharacters) patterns.push_back(pattern + c);
    }
    const auto oracle = Oracle::Compile(pattern);
    const auto expression = Compile(pattern);
    ASSERT_EQ(expression != nullptr, oracle.regex.has_value()) << pattern;
    if (!expression) continue;
    const bool isSampled = pattern.size() == maxLength;
    if (isSampled) skip = (skip + 7) % textStep;
    for (std::size_t t = isSampled ? skip : 0; t < texts.size(); t += isSampled ? textStep : 1) {
      const auto answers = AskOracle(*oracle.regex, texts[t]);
      if (!answers) continue;
      ExpectAnswers(*expression, texts[t], *answers);
      ASSERT_FALSE(testing::Test::HasFailure())
          << pattern << " on '" << Oracle::Show(texts[t]) << "'";
    }
  }
}

// A sanitizer slows the oracle down tenfold, and watches the same code on fewer expressions.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kSmallLength = 4;
#else
constexpr std::size_t kSmallLength = 5;
#endif

TEST(Expression, AgreesOnAllSmallExpressions) {
  if (std::getenv("TESSARIN_LONG_TESTS")) {
    TryAllExpressions(6, 1);
  } else {
    TryAllExpressions(kSmallLength, 121);
  }
}

void TryGenerated(std::uint32_t seed, int rounds, const Oracle::Generator::Options& options) {
  Oracle::Generator generator(seed);
  for (int i = 0; i < rounds; ++i) {
    const std::string pattern = generator.Expression(options);
    std::vector<std::string> texts;
    for (int t = 0; t < 6; ++t) texts.push_back(generator.Text(10));
    ExpectTheOraclesAnswers(pattern, texts);
    if (testing::Test::HasFailure()) return;
  }
}

// Longer than what a trail keeps of a text at once.
TEST(Expression, AgreesOnLongMatches) {
  Oracle::Generator generator(15);
  const char* const patterns[] = {
      "((a)|(b)|[^])*",      "(?:(a+)(b?)|(\\W)|.|\n)*", "[^]*(b)(\\w)[^]*",
      "(\\b\\w+\\b|(\\W))+", "(?:a|(bc?)|[^](|d)?)*$",   "([^]*)(\\B[^]){3}[^]*",
  };
  for (const std::size_t size : {16384, 16385, 50000}) {
    std::string text;
    while (text.size() < size) text += generator.Text(50);
    text.resize(size);
    for (const char* const pattern : patterns) {
      SCOPED_TRACE(pattern);
      const auto byTrail = Compile(pattern, {.useBacktracking = false});
      const auto byThreads = Compile(pattern, {.useTrails = false, .useBacktracking = false});
      Captures trail;
      Captures threads;
      EXPECT_EQ(byTrail->MatchCaptures(text, trail), byThreads->MatchCaptures(text, threads));
      EXPECT_EQ(Spans(trail), Spans(threads));
      EXPECT_EQ(AllSpans(*byTrail, text), AllSpans(*byThreads, text));
    }
  }
}

// Ways of look-aheads far into the text, which run together or do not.
TEST(Expression, AgreesOnLongLookAheads) {
  Oracle::Generator generator(16);
  for (const char* const pattern :
       {"(?=([^]*)(b))a", "(?=((?:..)*))[^]", "(?=((?:[^][^][^])*)([^]*))(?:(\\w)|[^])",
        "(?=(?:a|b|\\W)*?(d.*|$))", "(?=[^]*?(\\w+)(?=([^]*?)(\\W|$)([^]*)))[^]",
        "(?=([^]{0,150}))\\w", "(?!\\W)(?=(\\b\\w+)([^]*)\\b)(\\w|)"}) {
    const auto byTrail = Compile(pattern, {.searchesAloneWithLookAheads = 0});
    const auto bySteps =
        Compile(pattern, {.automatonBudget = 2000, .searchesAloneWithLookAheads = 0});
    const auto byThreads = Compile(pattern, {.useTrails = false, .useBacktracking = false});
    EXPECT_EQ(byTrail->RoadTaken(), Road::Threads);
    for (const std::size_t size : {70, 300, 1000}) {
      SCOPED_TRACE(pattern);
      std::string text;
      while (text.size() < size) text += generator.Text(50);
      const std::string expected = AllSpans(*byThreads, text, size + 1);
      EXPECT_EQ(AllSpans(*byTrail, text, size + 1), expected);
      EXPECT_EQ(AllSpans(*bySteps, text, size + 1), expected);
    }
    std::string text;  // of several blocks of a trail, too many for threads at each of its places
    while (text.size() < 20000) text += generator.Text(50);
    EXPECT_EQ(AllSpans(*byTrail, text, text.size()), AllSpans(*bySteps, text, text.size()));
  }
}

int Rounds(int normal) {
  return std::getenv("TESSARIN_LONG_TESTS") ? 100 * normal : normal;
}

TEST(Expression, AgreesOnGeneratedExpressions) {
  TryGenerated(11, Rounds(1500), {.lookAheads = false, .depth = 3});
  TryGenerated(12, Rounds(500), {.lookAheads = false, .assertions = false, .depth = 3});
}

TEST(Expression, AgreesOnGeneratedLookAheads) {
  TryGenerated(13, Rounds(1500), {.depth = 3});
}

TEST(Expression, AgreesOnGeneratedBackReferences) {
  TryGenerated(14, Rounds(1500), {.backReferences = true, .depth = 3});
}

}  // namespace
