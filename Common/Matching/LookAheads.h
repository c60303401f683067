#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "Common/Matching/LazyDfa.h"
#include "Common/Matching/Program.h"
#include "Common/Matching/Subject.h"

namespace Matching {

// Says of every place of a text which look-aheads of an expression hold there, by one backward run
// a look-ahead, inner ones first. So a matcher meets a look-ahead as it meets "^": as something
// that holds at a place or does not.
//
// Read-only once built, but for what its automata learn; any thread may ask.
class LookAheads {
public:
  // budget: bytes for the automata of all look-aheads together. allowance: as in LazyDfa::Setup.
  LookAheads(const SyntaxTree& tree, const LookAheadNumbers& numbers, const ByteClasses& classes,
             std::size_t budget, MemoryAllowance* allowance);

  [[nodiscard]] bool IsEmpty() const { return fItems.empty(); }
  [[nodiscard]] std::size_t AutomatonMemory() const;  // bytes

  // Contract: inside a look-ahead, its own beginning is the beginning of the text, unless bytes in
  // front of the subject count: "a(?=^b)b" matches "ab" as a whole. True when any look-ahead asks.
  [[nodiscard]] bool AskForBegin() const { return fAskForBegin; }

  // refusesEmpty is the operation's flag; it goes for the look-aheads' own matches too. Throws
  // std::regex_error(error_complexity) when there are too many for a text of this size.
  [[nodiscard]] LookAheadTable Evaluate(const Subject& subject, bool refusesEmpty) const;

private:
  struct Item {
    Program program;                     // backward
    std::unique_ptr<LazyDfa> automaton;  // absent when others stand inside, or there are too many
    bool asksForBegin = false;
  };

  void EvaluateOne(std::uint32_t number, const Subject& subject, bool refusesEmpty,
                   LookAheadTable& table) const;

  static constexpr std::size_t kMaxTableBits = std::size_t{1}
                                               << 28;  // a bit a place and look-ahead
  static constexpr std::size_t kMaxAutomata = 64;      // of more look-aheads, each is simulated

  const SyntaxTree& fTree;
  std::vector<Item> fItems;
  bool fAskForBegin = false;
};

}  // namespace Matching
