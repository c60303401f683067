#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <random>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

// What the tests of the matching engine share: the standard library as the oracle, and a generator
// of expressions and texts.
namespace Oracle {

inline constexpr auto kFlags = std::regex::ECMAScript | std::regex::icase;

// What the standard library says about an expression.
struct Verdict {
  std::optional<std::regex> regex;  // there when the expression is valid
  int code = -1;
  std::string message;
};

inline Verdict Compile(const std::string& expression) {
  Verdict verdict;
  try {
    verdict.regex.emplace(expression, kFlags);
  } catch (const std::regex_error& error) {
    verdict.code = static_cast<int>(error.code());
    verdict.message = error.what();
  }
  return verdict;
}

// Printable form of any bytes, for messages.
inline std::string Show(std::string_view text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string shown;
  for (const char c : text.substr(0, 400)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F) {
      shown += c;
    } else {
      shown += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
  return shown;
}

// Walks a text for the library, and makes it give up where it would run on for ages.
class Pointer {
public:
  using iterator_category = std::bidirectional_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  Pointer() = default;
  explicit Pointer(const char* at) : fAt(at) {}

  reference operator*() const { return *fAt; }
  Pointer& operator++() { return ++fAt, *this; }
  Pointer& operator--() { return --fAt, *this; }
  Pointer operator++(int) { return Pointer(fAt++); }
  Pointer operator--(int) { return Pointer(fAt--); }
  friend bool operator==(const Pointer& a, const Pointer& b) {
    if (++steps > kMaxSteps) throw std::regex_error(std::regex_constants::error_complexity);
    return a.fAt == b.fAt;
  }

  static constexpr std::size_t kMaxSteps = 30000;
  static inline std::size_t steps = 0;  // since the test last cleared it

private:
  const char* fAt = nullptr;
};

using Match = std::match_results<Pointer>;
using Walk = std::regex_iterator<Pointer>;

// Spans as the public files write them: "begin:end" a group, "-" for one that took no part.
inline std::string Spans(const Match& match, const char* text) {
  std::string spans;
  for (std::size_t i = 0; i < match.size(); ++i) {
    if (i > 0) spans += ' ';
    if (!match[i].matched) {
      spans += '-';
      continue;
    }
    spans +=
        std::to_string(&*match[i].first - text) + ':' + std::to_string(&*match[i].second - text);
  }
  return spans;
}

// Makes expressions of the grammar out of a seed, mostly valid ones, over few letters, so that
// texts over the same letters come near them.
class Generator {
public:
  struct Options {
    bool backReferences = false;
    bool lookAheads = true;
    bool assertions = true;
    int depth = 4;
  };

  explicit Generator(std::uint32_t seed) : fRandom(seed) {}

  std::string Expression(const Options& options) {
    fGroups = 0;
    return Disjunction(options, options.depth);
  }

  // Any characters that mean something, in any order: mostly invalid.
  std::string Garbage(std::size_t length) {
    static constexpr std::string_view kParts[] = {
        "a",   "b",           "(",   ")",    "[",     "]",       "{",   "}",     "*",
        "+",   "?",           "|",   "^",    "$",     ".",       "\\",  "-",     ",",
        "1",   "2",           "9",   "(?:",  "(?=",   "(?!",     "(?",  "[^",    "\\b",
        "\\d", "\\W",         "\\1", "\\x4", "\\x41", "\\u0041", "\\c", "\\0",   "[:",
        ":]",  "[[:alpha:]]", "[.",  ".]",   "[=",    "=]",      "{2}", "{1,3}", "{0,}"};
    std::string text;
    for (std::size_t i = 0; i < length; ++i) text += kParts[Below(std::size(kParts))];
    return text;
  }

  std::string Text(std::size_t maxLength) {
    static constexpr std::string_view kLetters = "aabbcABd1_ -\n";
    std::string text;
    for (std::size_t left = Below(maxLength + 1); left > 0; --left) {
      text += kLetters[Below(kLetters.size())];
    }
    return text;
  }

  std::size_t Below(std::size_t bound) { return fRandom() % bound; }

private:
  std::string Disjunction(const Options& options, int depth) {
    std::string text = Alternative(options, depth);
    while (Below(4) == 0) text += "|" + Alternative(options, depth);
    return text;
  }

  std::string Alternative(const Options& options, int depth) {
    std::string text;
    for (std::size_t left = Below(4); left > 0; --left) text += Term(options, depth);
    return text;
  }

  std::string Term(const Options& options, int depth) {
    if (options.assertions && Below(10) == 0) {
      static constexpr std::string_view kAssertions[] = {"^", "$", "\\b", "\\B"};
      return std::string(kAssertions[Below(4)]);
    }
    if (depth > 0 && options.lookAheads && Below(12) == 0) {
      const char* const open = Below(2) == 0 ? "(?=" : "(?!";
      return open + Disjunction(options, depth - 1) + ")";
    }
    return Atom(options, depth) + Quantifier();
  }

  std::string Atom(const Options& options, int depth) {
    static constexpr std::string_view kAtoms[] = {"a",   "b",     "a",    "b",   "c",    "A",
                                                  ".",   "[ab]",  "[^a]", "\\w", "\\W",  "\\d",
                                                  "\\s", "[b-d]", "[]",   "[^]", "\\x61"};
    if (options.backReferences && fGroups > 0 && Below(4) == 0) {
      return "(?:\\" + std::to_string(1 + Below(fGroups)) + ")";
    }
    if (depth == 0 || Below(3) != 0) return std::string(kAtoms[Below(std::size(kAtoms))]);
    if (Below(3) == 0) return "(?:" + Disjunction(options, depth - 1) + ")";
    ++fGroups;
    return "(" + Disjunction(options, depth - 1) + ")";
  }

  std::string Quantifier() {
    static constexpr std::string_view kQuantifiers[] = {"*",   "+",     "?",     "*?",   "+?",
                                                        "??",  "{2}",   "{0,2}", "{1,}", "{1,2}?",
                                                        "{0}", "{2,}?", "**",    "+*"};
    if (Below(2) == 0) return "";
    return std::string(kQuantifiers[Below(Below(3) == 0 ? std::size(kQuantifiers) : 3)]);
  }

  std::mt19937 fRandom;
  std::size_t fGroups = 0;
};

}  // namespace Oracle
