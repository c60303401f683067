// Fuzz target for the list matcher: any lines are the elements of a list, any bytes a text, and the
// list answers as its scanners do one after the other on the engine's plainest matcher, whatever
// roads are open, and as its elements do one by one where none reaches into another.
//
// Input: an element a line up to an empty line, and the text behind it. With clang it runs under
// libFuzzer (preset "fuzz"), otherwise ctest replays the corpus in fuzz/corpus/list.

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
#include <vector>

#include "Common/CRegexVectorHolder.h"
#include "Common/Matching/Expression.h"
#include "Common/Matching/ListMatcher.h"
#include "tests/Common/HolderSupport.h"
#include "tests/Common/ScannersInTurn.h"

namespace {

using HolderSupport::Strings;
using Matching::Expression;
using Matching::ListMatcher;

struct Input {
  Strings elements;
  std::string text;
};

Input Read(std::string_view bytes) {
  Input input;
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size());
    const std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
    if (line.empty()) break;
    input.elements.emplace_back(line);
  }
  input.text = bytes;
  return input;
}

// Ends the process where a sanitizer or libFuzzer sees it, naming the property that broke.
void Require(bool holds, const char* property, const Input& input) {
  if (holds) return;
  std::fprintf(stderr, "property failed: %s\n", property);
  for (const std::string& element : input.elements) {
    std::fprintf(stderr, "element: %s\n", element.c_str());
  }
  std::fprintf(stderr, "text: %s\n", input.text.c_str());
  std::abort();
}

// An expression on the matcher that follows one way after the other, which needs neither literals
// nor automata. Throws std::regex_error for what takes it too long.
class PlainMatcher {
public:
  explicit PlainMatcher(const std::string& pattern) {
    constexpr Expression::Options kPlain{
        .useLiterals = false, .useAutomata = false, .unrollEmptyPasses = false, .maxSteps = 20000};
    auto compiled = Expression::Compile(pattern, kPlain);
    fExpression = std::move(std::get<std::unique_ptr<Expression>>(compiled));
  }

  std::optional<Strings> Match(const std::string& text) const {
    Matching::Captures captures;
    if (!fExpression->MatchCaptures(text, captures)) return std::nullopt;
    Strings groups;
    for (const auto& span : captures) {
      groups.push_back(text.substr(span.begin, span.end - span.begin));
    }
    return groups;
  }

private:
  std::unique_ptr<Expression> fExpression;
};

// The scanners for a matcher of the list.
struct PlainScanners {
  const std::vector<Matching::ListScanner>& list;
  const std::vector<PlainMatcher>& matchers;

  bool Matches(std::uint32_t scanner, std::string_view text) const {
    return matchers[scanner].Match(std::string(text)).has_value();
  }
  std::string_view Pattern(std::uint32_t scanner) const { return list[scanner].pattern; }
};

// Every road gives the first scanner that matches.
void CheckRoads(const CRegexVectorHolder& holder, const Input& input) {
  const auto list = holder.Scanners();
  std::vector<PlainMatcher> matchers;
  for (const auto& scanner : list) matchers.emplace_back(std::string(scanner.pattern));
  const PlainScanners scanners{list, matchers};
  std::optional<std::uint32_t> first;
  for (std::uint32_t i = 0; i < list.size() && !first; ++i) {
    if (scanners.Matches(i, input.text)) first = i;
  }
  const Matching::ListOptions roads[] = {{.useAnchored = false},
                                         {.useFloating = false},
                                         {.useRequired = false},
                                         {.useChance = false},
                                         {.useFew = false},
                                         {.useFew = false, .useVectors = false},
                                         {.useFew = false, .mergePasses = false},
                                         {.useAnchored = false, .useFloating = false}};
  for (const auto& options : roads) {
    const ListMatcher matcher(list, options);
    Require(matcher.Matches(input.text, scanners) == first.has_value(), "all roads agree", input);
    const auto hit = matcher.FindFirst(input.text, scanners);
    Require(hit.has_value() == first.has_value(), "all roads find", input);
    if (hit) Require(hit->scanner == *first, "all roads find the first", input);
  }
}

// Whether no element can reach into another: none of a list without shared beginnings whose
// wildcards have no brackets.
bool StandAlone(const Input& input) {
  return std::ranges::none_of(input.elements, [](const std::string& element) {
    return CRegex::IsWildcardForm(element) && element.find('[') != std::string::npos;
  });
}

bool AnyElementMatches(const Input& input) {
  return std::ranges::any_of(input.elements, [&input](const std::string& element) {
    std::string expression(CRegex::StripRegexForm(element));
    if (CRegex::IsWildcardForm(element)) CRegex::GlobToExpression(element, true, expression);
    const CRegexPtr alone = CRegex::Create(expression, false);  // which knows of case marks
    return alone && PlainMatcher(alone->Pattern()).Match(input.text).has_value();
  });
}

void Check(const Input& input) {
  const CRegexVectorHolder holder(HolderSupport::ListOf(input.elements));
  if (holder.IsUnusable()) return;

  const ScannersInTurn<PlainMatcher> truth(holder);
  const ScannerAnswer expected = truth.Named(input.text);  // first of all: ends what takes too long
  const bool matches = truth.Matches(input.text);
  if (StandAlone(input)) {
    Require(matches == AnyElementMatches(input), "scanners match as their elements", input);
  }
  for (int again = 0; again < 2; ++again) {  // the second time by what the first has learnt
    Require(holder.Find(input.text, nullptr) == matches, "the list matches", input);
    CUsePtr<CUnicodeString> source;
    Require(holder.Find(input.text, &source) == expected.found, "the list names", input);
    if (!expected.found) continue;
    const CUnicodeString name(expected.name);
    Require(source->Text().Utf8() == name.Text().Utf8(), "the list names the first", input);
  }
  CheckRoads(holder, input);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 512) return 0;  // longer inputs cost time and reach no new code

  const Input input = Read({reinterpret_cast<const char*>(data), size});
  try {
    Check(input);
  } catch (const std::regex_error&) {  // the plain matcher gives up
  }
  return 0;
}
