#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "Common/Matching/MemoryAllowance.h"
#include "Common/Matching/Program.h"
#include "Common/Matching/Simulation.h"
#include "Common/Matching/Subject.h"
#include "Common/Matching/Trail.h"

namespace Matching {

inline constexpr std::uint32_t kOpenAccept = kNoAccept - 1;

// Keeps one object for the next user who asks, so that working memory is not made anew each time.
// Any thread may take and give; whoever finds nothing makes his own.
template <class T>
class SpareSlot {
public:
  SpareSlot() = default;
  SpareSlot(const SpareSlot&) = delete;
  SpareSlot& operator=(const SpareSlot&) = delete;
  ~SpareSlot() { delete fSpare.load(std::memory_order_relaxed); }

  std::unique_ptr<T> Take() { return std::unique_ptr<T>(fSpare.exchange(nullptr)); }
  void Give(std::unique_ptr<T> object) { delete fSpare.exchange(object.release()); }

private:
  std::atomic<T*> fSpare{nullptr};
};

// An automaton that knows at each byte all states that a program may be in, and keeps what it has
// learnt: a state is built when a text first leads there, and costs one look-up from then on.
//
// What it keeps stays within a budget. When that is spent, texts that need more are answered by the
// simulation of the program, which is slower and no different.
//
// Any thread may run it, without a lock. A state is immutable but for the ways out of it, each of
// which goes once from null to its target; both are published by compare-and-swap or a store with
// release, and read with acquire. States live as long as the automaton.
//
// The program, the tree and the classes must outlive it. A program with look-aheads is run from its
// end (asksSuffixes), and only for Whole and Any: what it answers at a byte depends on what
// follows.
class LazyDfa {
public:
  struct Setup {
    const Program& program;
    const SyntaxTree& tree;
    const ByteClasses& classes;
    Goal goal = Goal::Whole;
    bool isAnchored = true;
    Direction direction = Direction::Forward;  // of the run, and of the program
    bool asksSuffixes = false;                 // runs backward over a forward program (SuffixTruth)
    LookAheadRules lookAheads = {};            // of a program that has some, which asks suffixes
    std::size_t budget = 0;                    // bytes
    MemoryAllowance* allowance = nullptr;      // what others take of, too; outlives the automaton
  };

  explicit LazyDfa(const Setup& setup);
  LazyDfa(const LazyDfa&) = delete;
  LazyDfa& operator=(const LazyDfa&) = delete;
  ~LazyDfa();

  // Runs from start to the end of the text, or backward to its beginning, and yields what the goal
  // asks for: a place, or kNowhere for no match. For Whole and Any the place says nothing more.
  // isFresh: an empty match at start is none.
  [[nodiscard]] std::size_t Run(const Subject& subject, std::size_t start,
                                bool isFresh = false) const;

  // Goal Whole, forward: the smallest number of an Accept that the whole text leads to, or
  // kNoAccept. When the budget is spent and leaves it open: kOpenAccept.
  [[nodiscard]] std::uint32_t FirstAccept(std::string_view text) const;

  // Goal Every: marks each place at which a match ends as one where the look-ahead holds.
  void MarkEvery(const Subject& subject, std::size_t start, LookAheadTable& table,
                 std::uint32_t number) const;

  // What a backward run knew at each place of a stretch of text, for an automaton that asks
  // suffixes.
  class Trail;

  [[nodiscard]] std::size_t MemoryUsed() const { return fUsed.load(std::memory_order_relaxed); }
  [[nodiscard]] std::size_t StateCount() const {
    return fStateCount.load(std::memory_order_relaxed);
  }

private:
  struct DfaState;
  struct Workspace;
  class Lease;
  class Reservation;

  // Each calls onMatch with the places at which a match ends, until it says that this is enough.
  template <class OnMatch>
  void RunForward(const Subject& subject, std::size_t start, bool isFresh, OnMatch onMatch) const;
  template <class OnMatch>
  void RunBackward(const Subject& subject, std::size_t start, OnMatch onMatch) const;
  // Goes on from the workspace's kernel without the cache, to the place `last`.
  template <class OnMatch>
  void Simulate(Workspace& workspace, const Subject& subject, std::size_t pos, std::size_t last,
                OnMatch onMatch) const;

  // The state in front of the first byte; null when the budget is spent.
  [[nodiscard]] const DfaState* StartState(const Boundary& at, bool isFresh, Lease& lease) const;
  // The state behind one more byte; null when the budget is spent, the kernel then being in the
  // workspace.
  const DfaState* Grow(const DfaState& from, unsigned char byte, Workspace& workspace) const;
  void StepKernel(const Kernel& from, unsigned char byte, Kernel& to, Workspace& workspace) const;
  std::uint32_t AcceptAtEdge(const DfaState& state, Lease& lease) const;
  const DfaState* Intern(Kernel& kernel) const;
  [[nodiscard]] bool TakeMemory(std::size_t bytes) const;
  void GiveMemoryBack(std::size_t bytes) const;
  [[nodiscard]] Boundary Around(const Kernel& kernel, bool isWordAhead) const;
  [[nodiscard]] const DfaState* FindIn(const DfaState* from, const DfaState* end,
                                       const Kernel& kernel, std::size_t hash) const;

  static constexpr std::size_t kBucketCount = 128;
  static constexpr std::size_t kStartCount = 8;

  const Setup fSetup;
  mutable std::atomic<std::size_t> fUsed{0};
  mutable std::atomic<std::size_t> fStateCount{0};
  mutable std::atomic<bool> fIsFull{false};  // a state was refused
  // Chains of the states that exist; a new one is pushed in front by compare-and-swap.
  mutable std::array<std::atomic<DfaState*>, kBucketCount> fBuckets{};
  mutable std::array<std::atomic<const DfaState*>, kStartCount> fStarts{};  // by what is around
  mutable SpareSlot<Workspace> fSpare;
};

// The trail of a run, which the states of the automaton make.
class LazyDfa::Trail : public ATrail {
public:
  // Reads the stretch from its end, which is where the match must end. False when the budget is
  // spent: then no place may be asked for.
  bool Read(const LazyDfa& automaton, const Subject& subject, std::size_t begin, std::size_t end);

  std::span<const StateId> At(std::size_t pos) override;
  std::size_t NextMatch(std::size_t pos) override;

private:
  static constexpr std::size_t kBlock = std::size_t{1} << 14;  // places
  static_assert(kBlock % kGrain == 0);

  bool ReadBlock(std::size_t block);
  const DfaState& StateAt(std::size_t pos);

  const LazyDfa* fAutomaton = nullptr;
  std::string_view fText;
  std::vector<const DfaState*> fMarks;  // at the first place of each block, and at the end
  std::size_t fBlock = 0;               // the one that fStates are of
  std::vector<const DfaState*> fStates;
};

}  // namespace Matching
