#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Common/CRegexCaptures.h"

class RegexEngine;
namespace Matching {
class Expression;
class MemoryAllowance;
}  // namespace Matching

// One expression as CRegex asks it: what std::regex with the flags ECMAScript and icase says of it,
// answered by the linear-time engine of Common/Matching.
//
// The engine reads expressions as the library does in the classic locale. Where the global locale
// of the moment of construction is another one, std::regex itself answers, behind its guard.
//
// What answers is built at the first question: a list asks for groups and validity of very many
// expressions that it never matches. Two threads may both build; one is published by
// compare-and-swap, the other deleted. Any number of threads may ask at once.
class CompiledRegex {
public:
  // A view: the text of the expression must outlive this object. The allowance is what its automata
  // take memory of together with others'; null where they stand alone. Throws std::regex_error,
  // with the library's own words, when it is no expression.
  explicit CompiledRegex(std::string_view expression,
                         std::shared_ptr<Matching::MemoryAllowance> allowance = nullptr);
  CompiledRegex(const CompiledRegex&) = delete;
  CompiledRegex& operator=(const CompiledRegex&) = delete;
  ~CompiledRegex();

  // All throw std::regex_error when the expression is too complex for the text.

  bool Match(std::string_view text) const;
  bool Match(std::string_view text, CRegexCaptures& captures) const;
  bool Search(std::string_view text) const;
  bool Search(std::string_view text, CRegexCaptures& captures) const;
  // The format is the library's sed format.
  std::string Replace(std::string_view text, std::string_view format, bool all) const;
  std::uint64_t MarkCount() const { return fMarkCount; }

  // A walk over all matches of a text; both that and the expression must outlive it.
  class Walk {
  public:
    Walk(const CompiledRegex& regex, std::string_view text);
    ~Walk();

    bool Next(std::string_view& match);

  private:
    struct Linear;
    struct Library;

    std::unique_ptr<Linear> fLinear;  // one of the two
    std::unique_ptr<Library> fLibrary;
  };

private:
  const Matching::Expression& Linear() const;

  const std::string_view fExpression;
  const std::shared_ptr<Matching::MemoryAllowance> fAllowance;  // may be null
  std::uint64_t fMarkCount = 0;
  std::unique_ptr<const RegexEngine> fLibrary;  // in another locale; null in the classic one
  mutable std::atomic<const Matching::Expression*> fLinear{nullptr};  // null until it is needed
};
