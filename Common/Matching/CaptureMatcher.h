#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Common/Matching/LazyDfa.h"
#include "Common/Matching/MergedWays.h"
#include "Common/Matching/Program.h"
#include "Common/Matching/Simulation.h"
#include "Common/Matching/Subject.h"

namespace Matching {

// What one run of a matcher that knows positions is asked.
struct CaptureQuery {
  const Subject& subject;
  const LookAheadTable* table = nullptr;  // for programs with look-aheads
  StateId start = 0;                      // of the program, or of one of its look-aheads
  std::size_t firstStart = 0;             // a match begins at one of these places,
  std::size_t lastStart = 0;              // the earlier the better
  std::size_t end = 0;                    // nothing behind it is consumed
  bool mustReachEnd = false;              // only a match that ends there counts
  bool refusesEmpty = false;
  // Knows from which states of the program the text matches up to `end`. Only where the match is
  // known to begin at firstStart and to end there; null where nothing knows.
  const LazyDfa* suffixes = nullptr;
  // Has read the text up to `end`, with Goal Any. Not with the former.
  ATrail* trail = nullptr;
  MergedWays* ways = nullptr;  // of look-aheads along this trail; null for what is around them
};

// Finds where the groups of a match stand: the match that the order of the ways prefers, which is
// the standard library's. Takes time in proportion to the text and the program.
//
// In short texts ways are tried one after the other. A longer match whose ends are known is read
// from its end first, by an automaton, which tells at each place what leads on; then its way is
// gone without a wrong step. The same goes for the many matches of a walk, for which the whole text
// was read. What is left goes all ways at once.
//
// The program must be free of back-references and of counted passes (UnrollEmptyPasses). Slots are
// positions, kNowhere for those never written; those behind the groups' hold for each look-ahead of
// the program the place at which the match passed it last.
//
// Belongs to one thread at a time; keeps the memory that it works in.
class CaptureMatcher {
public:
  CaptureMatcher(const Program& program, const SyntaxTree& tree);

  [[nodiscard]] std::size_t SlotCount() const { return fSlotCount; }
  [[nodiscard]] std::size_t FirstLookAheadSlot() const { return fFirstLookAheadSlot; }

  // On success slots holds SlotCount positions. Throws std::regex_error(error_complexity) when the
  // groups of so large a program do not fit the memory that a run may take.
  bool Run(const CaptureQuery& query, std::vector<std::size_t>& slots);

  // Bytes of what runs have left for the next one to work in.
  [[nodiscard]] std::size_t MemoryKept() const;

  // A test may close the first of these ways.
  void ForbidBacktracking() { fMayBacktrack = false; }

private:
  // Perf: one word says what is pending, since two that are read back as one stall the processor.
  class Pending {
  public:
    static Pending Way(StateId id, std::size_t pos) { return {std::uint64_t{id} << 1, pos}; }
    static Pending Restore(std::size_t slot, std::size_t value) {
      return {std::uint64_t{slot} << 1 | 1, value};
    }

    [[nodiscard]] bool IsRestore() const { return (fWhat & 1) != 0; }
    [[nodiscard]] StateId Id() const { return static_cast<StateId>(fWhat >> 1); }
    [[nodiscard]] std::size_t Slot() const { return static_cast<std::size_t>(fWhat >> 1); }
    [[nodiscard]] std::size_t Value() const { return fValue; }  // a place, or what the slot held

  private:
    Pending(std::uint64_t what, std::size_t value) : fWhat(what), fValue(value) {}

    std::uint64_t fWhat;
    std::size_t fValue;
  };
  struct Threads {
    std::vector<StateId> ids;
    std::vector<std::size_t> slots;  // fSlotCount a thread
    void Clear() {
      ids.clear();
      slots.clear();
    }
  };

  // Goes the preferred way from firstStart along a trail; false when it leads nowhere.
  bool Follow(const CaptureQuery& query, ATrail& trail, std::vector<std::size_t>& slots);
  bool Backtrack(const CaptureQuery& query, std::vector<std::size_t>& slots);
  bool BacktrackFrom(const CaptureQuery& query, std::size_t start, std::vector<std::size_t>& slots);
  bool RunThreads(const CaptureQuery& query, std::vector<std::size_t>& slots);
  void AddThread(const CaptureQuery& query, StateId id, std::size_t pos,
                 std::vector<std::size_t>& slots, Threads& threads);
  // Goes through the states that are reached from id without consuming, in the order of the ways
  // and each but once since fInNow was emptied, until onLeaf(id) gives true for one that consumes
  // or accepts. The slots are those of the way to that state.
  template <class OnLeaf>
  bool VisitLeaves(const CaptureQuery& query, StateId id, std::size_t pos,
                   std::vector<std::size_t>& slots, OnLeaf onLeaf);
  bool Visit(StateId id, std::size_t pos);
  [[nodiscard]] bool AcceptsAt(const CaptureQuery& query, std::size_t start,
                               std::size_t pos) const {
    return !(query.mustReachEnd && pos != query.end) && !(query.refusesEmpty && pos == start);
  }
  // The slot that passing this state writes, or kNowhere.
  [[nodiscard]] std::size_t SlotOf(const State& state) const {
    if (state.op == Op::Save) return state.value;
    if (state.op == Op::LookAhead) return fFirstLookAheadSlot + state.value;
    return kNowhere;
  }

  static constexpr std::size_t kMaxVisitBits = std::size_t{1} << 21;  // 256 KiB
  static constexpr std::size_t kMaxThreadSlots = std::size_t{1}
                                                 << 23;  // 64 MiB, in each of two lists

  const Program& fProgram;
  const SyntaxTree& fTree;
  std::size_t fFirstLookAheadSlot = 0;
  std::size_t fSlotCount = 0;
  // States that can be reached in more than one way, by number; visiting one of them twice at one
  // place is in vain. The others are visited no more often than the one in front of them.
  std::vector<std::uint32_t> fVisitNumber;
  std::uint32_t fVisitCount = 0;
  bool fMayBacktrack = true;

  std::vector<std::uint64_t> fVisited;
  std::size_t fVisitBase = 0;
  LazyDfa::Trail fTrail;
  std::vector<Pending> fPending;
  Threads fNow;
  Threads fNext;
  StateSet fInNow;
  StateSet fInNext;
  std::vector<std::size_t> fScratch;
};

}  // namespace Matching
