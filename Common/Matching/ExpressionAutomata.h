#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "Common/Matching/LazyDfa.h"
#include "Common/Matching/Program.h"
#include "Common/Matching/SyntaxTree.h"

namespace Matching {

// The questions that an expression has an automaton for.
enum class AutomatonKind : std::uint8_t {
  WholeForward,
  AnyForward,
  FirstForward,          // the preferred match from any place on
  FirstForwardAnchored,  // the same, from the first place
  LongestBackward,
  WholeBySuffixes,  // with look-aheads
  AnyBySuffixes,
  UpToEndBySuffixes,        // of a match whose end is known, without look-aheads
  AllBySuffixes,            // of all matches of a text, bytes in front of which count
  AllOfNonEmptyBySuffixes,  // the same, where look-aheads refuse empty matches
};

// The automata of one expression, each built when it is first asked for (BuiltOnce). Any thread may
// ask.
class ExpressionAutomata {
public:
  // What they are built from, which outlives them. The unrolled program is needed for the kinds for
  // which the order of the ways matters.
  struct Source {
    const SyntaxTree& tree;
    const ByteClasses& classes;
    const LookAheadNumbers& lookAheadNumbers;
    const Program& program;
    const std::optional<Program>& unrolled;
  };

  // The budget is that of each in bytes, and the allowance as in LazyDfa::Setup.
  ExpressionAutomata(const Source& source, std::size_t budget, MemoryAllowance* allowance)
      : fSource(source), fBudget(budget), fAllowance(allowance) {}
  ExpressionAutomata(const ExpressionAutomata&) = delete;
  ExpressionAutomata& operator=(const ExpressionAutomata&) = delete;
  ~ExpressionAutomata();

  [[nodiscard]] const LazyDfa& Of(AutomatonKind kind) const;
  [[nodiscard]] static LookAheadRules RulesOf(AutomatonKind kind);
  // Bytes that all of them have taken so far.
  [[nodiscard]] std::size_t MemoryUsed() const;

private:
  static constexpr std::size_t kCount =
      std::size_t{1} + static_cast<std::size_t>(AutomatonKind::AllOfNonEmptyBySuffixes);

  [[nodiscard]] LazyDfa::Setup SetupOf(AutomatonKind kind) const;
  // Compiled at the first search that must find where a match begins.
  [[nodiscard]] const Program& BackwardProgram() const;

  const Source fSource;
  const std::size_t fBudget;
  MemoryAllowance* const fAllowance;
  mutable std::array<std::atomic<const LazyDfa*>, kCount> fAutomata{};
  mutable std::atomic<const Program*> fBackward{nullptr};
};

}  // namespace Matching
