// What the holder answers, held against the plain truth: its own scanners on std::regex in their
// order, and each element by itself. Runs with shared beginnings looked for and without.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <regex>
#include <string>
#include <tuple>
#include <vector>

#include "tests/Common/HolderSupport.h"
#include "tests/Common/QuestionedHost.h"
#include "tests/Common/ScannersInTurn.h"

namespace {

using HolderSupport::ListOf;
using HolderSupport::Strings;

ScannerAnswer Named(const CRegexVectorHolder& holder, const std::string& text) {
  CUsePtr<CUnicodeString> source;
  if (!holder.Find(text, &source)) {
    EXPECT_FALSE(source);  // a miss leaves it alone
    return {};
  }
  return {true, std::string(source->Text().Utf8())};
}

// A scanner on the standard library.
class LibraryMatcher {
public:
  explicit LibraryMatcher(const std::string& pattern)
      : fRegex(pattern, std::regex::ECMAScript | std::regex::icase) {}

  std::optional<Strings> Match(const std::string& text) const {
    std::smatch captures;
    if (!std::regex_match(text, captures, fRegex)) return std::nullopt;
    return Strings(captures.begin(), captures.end());
  }

private:
  std::regex fRegex;
};

void ExpectScannersInTurn(const Strings& elements, const Strings& texts) {
  const CRegexVectorHolder holder(ListOf(elements));
  const ScannersInTurn<LibraryMatcher> truth(holder);
  for (const std::string& text : texts) {
    SCOPED_TRACE(testing::PrintToString(elements) + " on '" + text + "'");
    ASSERT_EQ(holder.Find(text, nullptr), truth.Matches(text));
    ASSERT_EQ(Named(holder, text), truth.Named(text));
  }
}

// Elements whose brackets reach out of their alternatives, each list with texts that tell.
TEST(HolderTruth, HoldsForElementsThatReadEachOther) {
  const std::pair<Strings, Strings> rows[] = {
      {Strings(10, "regex(abc|x)"), {"abc", "x", "abcabc", "", "ab"}},
      {{"x[b", "[]z)|(w)|(v]"}, {"v]", "w", "x]", "xb", "z", "v"}},
      {{"x[b", "[]z)|w|(v+]"}, {"vv]", "v]", "w", "x]", "z"}},
      {{"x[b", "[]z)|(w|(v]"}, {"v]", "w", "x]"}},
      // The first scanner matches and names nobody, so a later one does, with the same literals.
      {{"x[a", "[])y|(]", "*y", "regex(xay)"}, {"xay", "x)y", "]", "xy"}},
      {{"x[a", "[])y|(xay]", "*ay", "regex(xay)"}, {"xay", "x)y", "xay]", "ay"}},
      {{"x[a", "[])|(]", "*x", "regex(x)"}, {"x", "xa", "]", ""}},
      {{"a)|(b", "c"}, {"a", "b", "c", "ab"}},
      {{"a)|(b"}, {"a", "b", "c"}},
      {{"*a)|(b*", "*c"}, {"a", "xa", "b", "by", "xc", "bc"}},
      {{"*a)|.*(b", "*c"}, {"a", "xa", "b", "xb", "xc"}},
      {{"a(", ")b", "c"}, {"a", "b", "c", "a)|(b", "ab"}},
      {{"regex(a|b)", "regex()", "regex((c)|)"}, {"", "a", "b", "c"}},
      {{"", "*", "**", "?"}, {"", "a", "\n", "ab"}},
      {{"regex((?=(ab))x)", "regex(ab)"}, {"ab", "x"}},
      {{"regex((a*)*)", "regex((b)*)"}, {"", "a", "aa", "b", "ab"}},
      {{"regex(.*?ay.*)", "regex(.*?by.*)"}, {"ayby", "byay", "ay", "by"}},
  };
  for (const auto& [elements, texts] : rows) ExpectScannersInTurn(elements, texts);
}

// Beginnings that take what they can, or what they must.
TEST(HolderTruth, HoldsForSharedGaps) {
  const char* ends[] = {"ay.*", "by.*", "ab.*", "b", "a.*b", "ayb", "y", "yb.*", "aa", "bb"};
  for (const std::string gap :
       {".*", ".*?", ".+", ".?", "(.*)", "(.*?)", "(.*\\.)?", "^.*", "x.*"}) {
    Strings elements;
    for (const char* end : ends) elements.push_back("regex(" + gap + end + ")");
    ExpectScannersInTurn(elements,
                         {"ayby", "byay", "xayby", "ab", "aab", "abb", "xaybyay", "b", "xx", ".ab",
                          "a.ayb", "bb", "bbb", "ybyb", "y", "xy", "aa", "\nab", "ab\nab"});
    if (testing::Test::HasFatalFailure()) return;
  }
}

std::string RandomOf(std::mt19937& random, const Strings& parts, std::size_t most) {
  std::string text;
  for (std::size_t i = 1 + random() % most; i > 0; --i) text += parts[random() % parts.size()];
  return text;
}

bool Compiles(const std::string& expression) {
  return CRegex::Create(expression, false) != nullptr;
}

TEST(HolderTruth, HoldsForRandomLists) {
  const HostInSlot quiet(Gates{.level = false});
  std::mt19937 random(77);
  const Strings globs = {"a", "b", ".", "*", "?", "ab", "[ab]", "[", "]", "(", ")", "|", ")|(", ""};
  const Strings expressions = {"a",    "b",   "\\.",  ".*",    ".*?",      "[ab]", "()",
                               "(a|)", "a|b", "(?:b", "(?=a)", "(.*\\.)?", "a?",   "(a)\\1"};
  const Strings begins = {"", "", "abab", "(ab)", ".*", "a\\", "ab*"};
  const Strings texts = {"a", "B", ".", "ab", "\n", "b", "|", "]", "(", ""};
  int usable = 0;
  for (int round = 0; round < 400; ++round) {
    const std::string begin = begins[random() % begins.size()];
    Strings elements;
    for (std::size_t i = random() % 30; i > 0; --i) {
      const bool isGlob = random() % 3 == 0;
      std::string element = RandomOf(random, isGlob ? globs : expressions, 3);
      if (random() % 2) element.insert(0, begin);
      if (!isGlob && !Compiles(element)) continue;  // a bad one makes the rest pointless
      elements.push_back(isGlob ? element : "regex(" + element + ")");
    }
    Strings asked = {""};
    for (int i = 0; i < 30; ++i) asked.push_back(RandomOf(random, texts, 5));
    usable += !CRegexVectorHolder(ListOf(elements)).IsUnusable();
    ExpectScannersInTurn(elements, asked);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(usable, 100);
}

// ---- property: the plain truth, element by element

// The element that the list names, found by compiling each alone and trying them in the order of
// their kinds. For star wildcards that is not what is named, so they are told by the boolean alone.
struct Truth {
  bool matches = false;
  std::optional<std::string> name;  // where the order of the kinds decides it
};

class Plain {
public:
  explicit Plain(const Strings& elements) {
    for (int kind = 0; kind < 4; ++kind) {
      for (const std::string& element : elements) {
        if (!element.empty() && KindOf(element) == kind) Add(kind, element);
      }
    }
  }
  bool IsBad() const { return fBad; }
  Truth Ask(std::string_view text) const {
    Truth truth;
    for (const auto& [kind, element, regex] : fElements) {
      if (!regex->Matches(text)) continue;
      if (!truth.matches && kind != 2 && !text.empty()) truth.name = element;
      truth.matches = true;
    }
    return truth;
  }

private:
  static int KindOf(const std::string& element) {
    if (CRegex::IsWildcardForm(element)) return element.front() == '*' ? 2 : 1;
    return HasBackReference(CRegex::StripRegexForm(element)) ? 0 : 3;
  }
  void Add(int kind, const std::string& element) {
    std::string expression(CRegex::StripRegexForm(element));
    if (CRegex::IsWildcardForm(element)) CRegex::GlobToExpression(element, true, expression);
    CRegexPtr regex = CRegex::Create(expression, false);
    fBad = fBad || !regex;
    if (regex) fElements.emplace_back(kind, element, std::move(regex));
  }

  std::vector<std::tuple<int, std::string, CRegexPtr>> fElements;
  bool fBad = false;
};

TEST(HolderTruth, HoldsForEachElementByItself) {
  const bool isGrouped = GetRegexOptimizeMinListSize() == 0;
  std::mt19937 random(32);
  const Strings globs = {"a", "b", ".", "*", "?", "ab", "x.com", "[ab]"};
  const Strings expressions = {"a",   "b",     "\\.",      ".*", "[ab]",
                               "\\d", "(a|b)", "(.*\\.)?", "a?", "(a)\\1"};
  const Strings texts = {"a", "B", ".", "ab", "1", "x.com", "b", "\n"};
  for (int round = 0; round < 120; ++round) {
    Strings elements;
    for (std::size_t i = random() % 30; i > 0; --i) {
      elements.push_back(random() % 2 ? RandomOf(random, globs, 4)
                                      : "regex(" + RandomOf(random, expressions, 3) + ")");
    }
    const CRegexVectorHolder holder(ListOf(elements));
    const Plain plain(elements);
    ASSERT_EQ(holder.IsUnusable(), plain.IsBad());
    for (int i = 0; i < 40; ++i) {
      const std::string text = RandomOf(random, texts, 4);
      SCOPED_TRACE(testing::PrintToString(elements) + " on '" + text + "'");
      const Truth truth = plain.Ask(text);
      const auto found = HolderSupport::FindIn(holder, text);
      ASSERT_EQ(found.has_value(), truth.matches);
      // A shared beginning changes the order and leaves rests that may be empty.
      if (truth.name && !isGrouped) {
        ASSERT_EQ(*found, *truth.name);
      }
    }
  }
}

}  // namespace
