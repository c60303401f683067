#include "Common/CompiledRegex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <locale>
#include <regex>
#include <string>
#include <thread>
#include <vector>

namespace {

// A locale that is not the classic one, and says of letters what that says.
class OtherLocale {
public:
  OtherLocale()
      : fBefore(std::locale::global(std::locale(std::locale::classic(), new std::numpunct<char>))) {
  }
  ~OtherLocale() { std::locale::global(fBefore); }

private:
  std::locale fBefore;
};

// Every operation, in one text.
std::string AnswersOf(const CompiledRegex& regex, std::string_view text) {
  CRegexCaptures captures;
  std::string answers;
  answers += regex.Match(text) ? "match " : "no ";
  answers +=
      regex.Match(text, captures) ? std::string(captures[captures.Size() - 1].Text()) + " " : "no ";
  answers += regex.Search(text) ? "found " : "no ";
  answers += regex.Search(text, captures) ? std::string(captures[0].Text()) + " " : "no ";
  answers += regex.Replace(text, R"([&|\1|\&|\9])", true) + " ";
  answers += regex.Replace(text, "-", false) + " ";
  CompiledRegex::Walk walk(regex, text);
  for (std::string_view match; walk.Next(match);) answers += std::string(match) + ",";
  return answers + std::to_string(regex.MarkCount());
}

TEST(CompiledRegex, AnswersTheSameWhereTheLibraryMustAnswer) {
  for (const std::string pattern : {"(a+)b?", "x*", "(ab|cd)+", "[[:alpha:]](\\d)", "(a)\\1"}) {
    const CompiledRegex linear(pattern);
    const OtherLocale other;
    const CompiledRegex library(pattern);
    for (const char* const text : {"", "aab", "xAb1 aa", "cdab", "q1"}) {
      SCOPED_TRACE(pattern + " on " + text);
      EXPECT_EQ(AnswersOf(linear, text), AnswersOf(library, text));
    }
  }
}

TEST(CompiledRegex, RefusesInTheLibrarysWords) {
  for (const std::string pattern :
       {"(", "[z-a]", "a{2,1}", "\\1", "(?<n>x)", "a{100000}", "[[:foo:]]"}) {
    std::string words;
    try {
      std::regex(pattern, std::regex::ECMAScript | std::regex::icase);
    } catch (const std::regex_error& error) {
      words = error.what();
    }
    try {
      CompiledRegex{pattern};
      ADD_FAILURE() << pattern;
    } catch (const std::regex_error& error) {
      EXPECT_EQ(error.what(), words);
    }
  }
}

TEST(CompiledRegex, IsBuiltOnceByManyThreads) {
  const std::string pattern = "(a|b)*c";
  for (int round = 0; round < 20; ++round) {
    const CompiledRegex regex(pattern);
    std::atomic<int> matched{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([&] { matched += regex.Match("abac") ? 1 : 0; });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(matched, 4);
  }
}

}  // namespace
