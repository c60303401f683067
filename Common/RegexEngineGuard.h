#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <regex>
#include <string>
#include <string_view>

#include "Common/CRegexCaptures.h"
#include "Libs/Platform/ThreadStack.h"

// std::regex behind a guard, and the only place that uses it for matching.
//
// The library's matcher recurses once or more for every character that it takes, and tries every
// way through an expression: a long text overflows the stack, which ends the process, and a short
// one can keep it busy for years. So it runs over iterators that look at the stack and count its
// steps, and compiles nothing whose descent would not fit. What goes too far leaves as
// std::regex_error, with error_stack or error_complexity.

// Steps of one engine call, about a second for ten million of them. A step is a character that the
// engine looks at, or a position that it finds to be where it compares it to, as at the end.
inline constexpr std::uint64_t kRegexMaxSteps = 50'000'000;

// What one engine call may use. Belongs to one call on one thread; its iterators point to it.
class RegexEngineContext {
public:
  // emptySteps: see RegexExpressionSize, of the expression that will run.
  explicit RegexEngineContext(std::uint64_t emptySteps) : fEmptySteps(emptySteps) {}

  // Before each engine call, on the thread that makes it. Throws if there is no room even to begin.
  void Begin();

  // Throws when the engine has gone too far.
  void Step() {
    if (CurrentFrameAddress() < fStackLimit) ThrowStack();
    if (++fSteps > kRegexMaxSteps) ThrowComplexity();
  }

private:
  [[noreturn]] static void ThrowStack();
  [[noreturn]] static void ThrowComplexity();

  std::uint64_t fEmptySteps;
  std::uint64_t fSteps = 0;
  std::uintptr_t fStackLimit = 0;  // lowest frame that may go on; 0 where the stack is not known
};

// A pointer into the text that takes part in the guard.
//
// Every character that the engine takes is looked at here, and so is the end of the text, where it
// can go on trying without a character left to look at: both are steps.
class RegexTextIterator {
public:
  using iterator_category = std::random_access_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  RegexTextIterator() = default;
  RegexTextIterator(const char* position, RegexEngineContext* context)
      : fPosition(position), fContext(context) {}

  const char* Position() const { return fPosition; }

  reference operator*() const {
    if (fContext) fContext->Step();
    return *fPosition;
  }
  pointer operator->() const { return fPosition; }
  reference operator[](difference_type index) const { return fPosition[index]; }

  RegexTextIterator& operator++() { return *this += 1; }
  RegexTextIterator& operator--() { return *this -= 1; }
  RegexTextIterator operator++(int) {
    const RegexTextIterator old = *this;
    ++*this;
    return old;
  }
  RegexTextIterator operator--(int) {
    const RegexTextIterator old = *this;
    --*this;
    return old;
  }
  RegexTextIterator& operator+=(difference_type count) {
    fPosition += count;
    return *this;
  }
  RegexTextIterator& operator-=(difference_type count) {
    fPosition -= count;
    return *this;
  }
  friend RegexTextIterator operator+(RegexTextIterator it, difference_type count) {
    return it += count;
  }
  friend RegexTextIterator operator+(difference_type count, RegexTextIterator it) {
    return it += count;
  }
  friend RegexTextIterator operator-(RegexTextIterator it, difference_type count) {
    return it -= count;
  }
  friend difference_type operator-(const RegexTextIterator& left, const RegexTextIterator& right) {
    return left.fPosition - right.fPosition;
  }

  friend bool operator==(const RegexTextIterator& left, const RegexTextIterator& right) {
    if (left.fPosition != right.fPosition) return false;
    if (left.fContext) left.fContext->Step();
    return true;
  }
  friend auto operator<=>(const RegexTextIterator& left, const RegexTextIterator& right) {
    return left.fPosition <=> right.fPosition;
  }

private:
  const char* fPosition = nullptr;
  RegexEngineContext* fContext = nullptr;  // null for the engine's own default values
};

// One compiled expression, always ECMAScript and without regard to case. Immutable; any number of
// threads may match on it at once.
class RegexEngine {
public:
  explicit RegexEngine(std::string_view expression);  // throws std::regex_error

  bool Match(std::string_view text) const;
  bool Match(std::string_view text, CRegexCaptures& captures) const;
  bool Search(std::string_view text) const;
  bool Search(std::string_view text, CRegexCaptures& captures) const;
  // The format is the library's sed format.
  std::string Replace(std::string_view text, const std::string& format, bool all) const;
  std::uint64_t MarkCount() const { return fRegex.mark_count(); }

  // A walk over all matches of a text, which it shares with this object's owner.
  class Walk {
  public:
    Walk(const RegexEngine& engine, std::string_view text);

    bool Next(std::string_view& match);

  private:
    RegexEngineContext fContext;
    std::regex_iterator<RegexTextIterator> fNext;
    bool fIsFirst = true;  // fNext stands on a match that Next has not given yet
  };

private:
  std::uint64_t fEmptySteps;  // of the expression
  std::regex fRegex;
};
