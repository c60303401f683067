#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Common/Matching/LazyDfa.h"
#include "Common/Matching/Program.h"
#include "Common/Matching/Subject.h"

namespace Matching {

// Follows the ways of a program one after the other, as the standard library does, and so can do
// what the linear matchers cannot: back-references, which make what lies ahead depend on what was
// captured. Keeps its choices on the heap, within a budget of steps and memory; past it throws
// std::regex_error(error_complexity).
//
// Made for one operation; belongs to one thread.
class ExactMatcher {
public:
  struct Limits {
    std::uint64_t steps = 0;
    std::size_t bytes = std::size_t{64} << 20;
  };

  ExactMatcher(const Program& program, const SyntaxTree& tree, const Subject& subject,
               const Limits& limits);

  // A match that begins at start: the whole rest of the text, or any part of it.
  bool Run(std::size_t start, bool mustReachEnd, bool refusesEmpty);

  // Steps that all runs so far have taken.
  [[nodiscard]] std::uint64_t Steps() const { return fSteps; }
  // Two positions a group after a match, kNowhere for a group that took no part.
  [[nodiscard]] const std::vector<std::size_t>& Slots() const { return fSlots; }

private:
  // What to do when the way that is being followed has led to nothing.
  struct Pending {
    enum Kind : std::uint8_t {
      Way,          // go on with state `id` at place `value`
      Body,         // pass once more through loop `id` at place `value`
      RestoreSlot,  // slot `id` held `value`
      RestoreLoop,  // loop `id` had the mark of `value` and `count`
      LookAhead,    // the part of look-ahead state `id`, tried at place `value`, does not match
    };
    Kind kind;
    std::uint32_t count;
    std::uint32_t id;
    std::size_t value;
  };
  // A look-ahead whose part is being tried.
  struct OpenLookAhead {
    std::size_t pending;  // its place in fPending
    std::size_t pos;
    std::vector<std::size_t> slots;  // of the groups inside, as they were before
  };
  // When a loop's body was entered last.
  struct Mark {
    std::size_t pos = kNowhere;
    std::uint32_t count = 0;  // in a row at this place
  };

  // Takes the next pending way; false when there is none.
  bool Resume(StateId& id, std::size_t& pos);
  // Goes through one state; false when the way ends.
  bool Advance(StateId& id, std::size_t& pos);
  bool EnterBody(StateId loop, std::size_t pos, StateId& id);
  bool MatchBackReference(std::uint32_t group, std::size_t& pos);
  void EnterLookAhead(StateId id, std::size_t pos);
  // The part of the innermost open look-ahead matches; false when that ends the way.
  bool LeaveLookAhead(StateId& id, std::size_t& pos);
  void RestoreGroups(const LookAheadPart& part);
  // Where the match begins, or the innermost open look-ahead.
  [[nodiscard]] std::size_t Begin() const { return fOpen.empty() ? fStart : fOpen.back().pos; }
  [[nodiscard]] Boundary BoundaryAt(std::size_t pos) const;
  void Push(const Pending& pending);
  void PopLookAhead();

  const Program& fProgram;
  const SyntaxTree& fTree;
  const Subject& fSubject;
  const Limits fLimits;
  std::uint64_t fSteps = 0;
  bool fMustReachEnd = false;
  bool fRefusesEmpty = false;
  std::size_t fStart = 0;            // where the match begins
  bool fHasPrevious = false;         // the byte in front of it counts
  std::vector<OpenLookAhead> fOpen;  // from the outermost on
  std::size_t fOpenSlots = 0;        // of all of them
  std::vector<Pending> fPending;
  std::vector<Mark> fMarks;  // by state
  std::vector<std::size_t> fSlots;
};

}  // namespace Matching
