#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "Common/Matching/SyntaxError.h"
#include "Common/Matching/SyntaxTree.h"

namespace Matching {

class MemoryAllowance;

// Where one group of a match stands in the text.
struct Span {
  std::size_t begin = 0;
  std::size_t end = 0;
  bool matched = false;

  friend bool operator==(const Span&, const Span&) = default;
};

using Captures = std::vector<Span>;  // the whole match, then the groups

// The flags of a search that the standard library's iterators use.
struct SearchFlags {
  bool hasPrevious = false;  // the byte in front of the first place counts: "^" does not hold there
  // Only a match that begins at the first place and is not empty will do: what an iterator tries
  // behind an empty match.
  bool onlyNonEmptyHere = false;
};

// Which engine answers; what a test or a diagnosis asks for.
enum class Road : std::uint8_t {
  Automaton,  // lazily built, and threads where positions are wanted
  Threads,    // look-aheads: an automaton for yes and no, else their places and then all ways
  Exact,      // back-references, and what only the library's own order of trying can tell
};

// One compiled expression: what std::regex with the flags ECMAScript and icase answers, in time
// that grows with the text and no faster, on a bounded stack and in bounded memory.
//
// Only an expression on Road::Exact can take more steps than its text has bytes. It has a budget;
// past it an operation throws std::regex_error(error_complexity), as every operation does whose
// memory would go beyond reason.
//
// Immutable to the outside; any number of threads may use one object at once, without a lock. The
// automata behind it learn from the texts, within budgets, and are built when they are first
// needed.
class Expression {
public:
  // Which ways an expression may take; all of them unless a test closes some. No answer depends on
  // it, but for the budgets.
  struct Options {
    std::size_t automatonBudget = std::size_t{1}
                                  << 20;  // bytes, for each of an expression's automata
    // For them, what is kept to work in, and that of others together; outlives the expression.
    MemoryAllowance* allowance = nullptr;
    bool useLiterals = true;  // texts without a literal that every match has are not looked into
    bool useAutomata = true;
    bool useTrails = true;  // to captures of matches whose ends are known
    // Of a walk, before the rest of the text is read for all. Look-aheads have it read at once for
    // their places, so that the second reading is no great matter.
    std::size_t searchesAlone = 64;
    std::size_t searchesAloneWithLookAheads = 4;
    bool useBacktracking = true;  // in the matcher of captures, over short texts
    bool unrollEmptyPasses = true;
    std::uint64_t maxSteps = 50'000'000;  // on Road::Exact, besides a few for each byte of the text
  };

  // The expression, or why it is none.
  static std::variant<std::unique_ptr<Expression>, SyntaxError> Compile(std::string_view pattern,
                                                                        const Options& options);
  static std::variant<std::unique_ptr<Expression>, SyntaxError> Compile(std::string_view pattern) {
    return Compile(pattern, Options());
  }

  // The expression of a tree, which holds no back-reference.
  static std::unique_ptr<Expression> FromTree(SyntaxTree tree, const Options& options);

  Expression(const Expression&) = delete;
  Expression& operator=(const Expression&) = delete;
  ~Expression();

  // The whole text matches.
  [[nodiscard]] bool IsMatch(std::string_view text) const;
  // Some part of the text matches.
  [[nodiscard]] bool Search(std::string_view text) const;
  // The same with the places of the groups; captures are left alone when the answer is no.
  bool MatchCaptures(std::string_view text, Captures& captures) const;
  bool SearchCaptures(std::string_view text, std::size_t from, const SearchFlags& flags,
                      Captures& captures) const;

  // Groups without the whole match.
  [[nodiscard]] std::size_t GroupCount() const;
  [[nodiscard]] const SyntaxTree& Tree() const;
  [[nodiscard]] Road RoadTaken() const;
  // Bytes that the automata have taken so far.
  [[nodiscard]] std::size_t AutomatonMemory() const;

private:
  friend class MatchIterator;
  class Engine;
  struct Notes;
  explicit Expression(std::unique_ptr<Engine> engine);

  std::unique_ptr<Engine> fEngine;
};

// Walks over all matches of a text, as std::regex_iterator does: behind an empty match a match that
// is not empty is tried at the same place, and then the walk moves on by one byte.
//
// What one search finds out about the rest of the text is kept for the next, so all of them
// together look at it but once.
//
// The expression and the text must outlive it. Belongs to one thread.
class MatchIterator {
public:
  MatchIterator(const Expression& expression, std::string_view text);
  MatchIterator(const MatchIterator&) = delete;
  MatchIterator& operator=(const MatchIterator&) = delete;
  ~MatchIterator();

  // The next match; false when there is none, and from then on.
  bool Next(Captures& captures);

private:
  bool FindNext(Captures& captures);
  bool Search(const SearchFlags& flags, Captures& captures);

  const Expression& fExpression;
  std::string_view fText;
  std::unique_ptr<Expression::Notes> fNotes;
  std::size_t fFrom = 0;      // where the last match ended
  bool fHasPrevious = false;  // from the second search on, but not while one place is tried again
  bool fIsFirst = true;
  bool fWasEmpty = false;  // the last match
  bool fIsDone = false;
};

}  // namespace Matching
