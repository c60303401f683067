// Fuzz target for the matching engine: any bytes are an expression and a text, and all roads of the
// engine give one answer, the standard library's wherever that answers in reasonable time.
//
// Input: an expression up to the first line end, and the text behind it. With clang it runs under
// libFuzzer (preset "fuzz"), otherwise ctest replays the corpus in fuzz/corpus/matching.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <variant>

#include "Common/Matching/Expression.h"
#include "Common/Matching/Parser.h"
#include "tests/Common/Matching/Oracle.h"

namespace {

using Matching::Captures;
using Matching::Expression;

// Ends the process where a sanitizer or libFuzzer sees it, naming the property that broke.
void Require(bool holds, const char* property, std::string_view pattern, std::string_view text) {
  if (holds) return;
  std::fprintf(stderr, "property failed: %s\nexpression: %s\ntext: %s\n", property,
               Oracle::Show(pattern).c_str(), Oracle::Show(text).c_str());
  std::abort();
}

std::string Spans(const Captures& captures) {
  std::string spans;
  for (const auto& span : captures) {
    if (!spans.empty()) spans += ' ';
    spans += span.matched ? std::to_string(span.begin) + ':' + std::to_string(span.end) : "-";
  }
  return spans;
}

// All answers of one road in a text; nothing when it says that the expression is too complex.
std::optional<std::string> AnswersOf(const Expression& expression, std::string_view text) {
  constexpr int kMaxMatches = 50;
  try {
    Captures captures;
    std::string answers;
    const bool matches = expression.MatchCaptures(text, captures);
    answers += matches ? Spans(captures) : "no";
    Require(expression.IsMatch(text) == matches, "both matches agree", "", text);
    const bool found = expression.SearchCaptures(text, 0, {}, captures);
    answers += '|' + (found ? Spans(captures) : "no");
    Require(expression.Search(text) == found, "both searches agree", "", text);
    Matching::MatchIterator walk(expression, text);
    for (int i = 0; i < kMaxMatches && walk.Next(captures); ++i) answers += '|' + Spans(captures);
    return answers;
  } catch (const std::regex_error&) {
    return std::nullopt;
  }
}

std::optional<std::string> AnswersOf(const std::regex& regex, std::string_view text) {
  constexpr int kMaxMatches = 50;
  const Oracle::Pointer begin(text.data());
  const Oracle::Pointer end(text.data() + text.size());
  Oracle::Pointer::steps = 0;
  try {
    Oracle::Match match;
    std::string answers;
    const bool matches = std::regex_match(begin, end, match, regex);
    answers += matches ? Oracle::Spans(match, text.data()) : "no";
    const bool found = std::regex_search(begin, end, match, regex);
    answers += '|' + (found ? Oracle::Spans(match, text.data()) : "no");
    Oracle::Walk walk(begin, end, regex);
    for (int i = 0; i < kMaxMatches && walk != Oracle::Walk(); ++i, ++walk) {
      answers += '|' + Oracle::Spans(*walk, text.data());
    }
    return answers;
  } catch (const std::regex_error&) {
    return std::nullopt;
  }
}

void CheckRoads(const std::string& pattern, std::string_view text, const std::regex* oracle) {
  std::optional<std::string> first = oracle ? AnswersOf(*oracle, text) : std::nullopt;
  const Expression::Options roads[] = {
      {.maxSteps = 100000},
      {.automatonBudget = 3000, .useLiterals = false, .maxSteps = 100000},
      {.useAutomata = false, .maxSteps = 100000},
      {.useAutomata = false, .useBacktracking = false, .maxSteps = 100000},
      {.useAutomata = false, .unrollEmptyPasses = false, .maxSteps = 100000}};
  for (const auto& options : roads) {
    auto compiled = Expression::Compile(pattern, options);
    const auto answers = AnswersOf(*std::get<std::unique_ptr<Expression>>(compiled), text);
    if (!answers) continue;
    if (!first) first = answers;
    Require(*answers == *first, "all roads agree", pattern, text);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 512) return 0;  // longer inputs cost time and reach no new code

  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::size_t lineEnd = std::min(input.find('\n'), size);
  const std::string pattern(input.substr(0, lineEnd));
  const std::string_view text = input.substr(std::min(lineEnd + 1, size));

  const auto parsed = Matching::Parse(pattern);
  // Large automata make the library recurse beyond its stack, and numbers overflow in it.
  constexpr std::uint64_t kMaxStates = 2000;
  const bool mayAsk = !parsed.error || (parsed.error->code != std::regex_constants::error_space &&
                                        pattern.find_first_of("{\\") == std::string::npos);
  Oracle::Verdict verdict;
  if (mayAsk && parsed.stateCount <= kMaxStates) {
    verdict = Oracle::Compile(pattern);
    Require(verdict.regex.has_value() == !parsed.error.has_value(), "both judge alike", pattern,
            text);
    if (parsed.error) Require(verdict.message == parsed.error->message, "one error", pattern, text);
  }
  constexpr std::uint64_t kMaxStatesHere = 20000;
  if (parsed.error || parsed.stateCount > kMaxStatesHere) return 0;
  CheckRoads(pattern, text, verdict.regex ? &*verdict.regex : nullptr);
  return 0;
}
