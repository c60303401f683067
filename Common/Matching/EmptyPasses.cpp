#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <utility>

#include "Common/Matching/Program.h"

namespace Matching {
namespace {

constexpr std::uint32_t kNoLoop = 0xFFFFFFFF;
constexpr std::uint32_t kPassLimit = 2;       // passes at one place; a third is not tried
constexpr std::uint32_t kMaxLoops = 31;       // of one knot; their counters share 64 bits
constexpr std::size_t kMaxGrowth = 8;         // times the size of the program
constexpr std::size_t kMinStateLimit = 4096;  // small programs may grow more

bool Consumes(const State& state) {
  return state.op == Op::Bytes || state.op == Op::BackReference || state.op == Op::Accept;
}

// The knots of a program: states that reach each other without consuming anything.
//
// Tarjan's strongly connected components with a stack of its own.
class Knots {
public:
  explicit Knots(const Program& program)
      : fProgram(program),
        fKnotOf(program.states.size(), kNone),
        fOrder(program.states.size(), kNone),
        fLow(program.states.size(), 0) {
    for (StateId id = 0; id < program.states.size(); ++id) {
      if (fOrder[id] == kNone) Walk(id);
    }
  }

  [[nodiscard]] std::uint32_t Of(StateId id) const { return fKnotOf[id]; }

private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;
  struct Visit {
    StateId id;
    int way;  // the next way to look at
  };

  void Walk(StateId root) {
    std::vector<Visit> visits;
    Enter(visits, root);
    while (!visits.empty()) {
      const StateId id = visits.back().id;
      const int way = visits.back().way++;
      const State& state = fProgram.states[id];
      const int ways = Consumes(state) ? 0 : state.op == Op::Split ? 2 : 1;
      if (way < ways) {
        const StateId target = way == 0 ? state.next : state.other;
        if (fOrder[target] == kNone) {
          Enter(visits, target);
        } else if (fKnotOf[target] == kNone) {
          fLow[id] = std::min(fLow[id], fOrder[target]);
        }
        continue;
      }
      visits.pop_back();
      if (!visits.empty()) {
        const StateId parent = visits.back().id;
        fLow[parent] = std::min(fLow[parent], fLow[id]);
      }
      if (fLow[id] == fOrder[id]) Tie(id);
    }
  }

  void Enter(std::vector<Visit>& visits, StateId id) {
    fOrder[id] = fLow[id] = fNextOrder++;
    fOpen.push_back(id);
    visits.push_back({id, 0});
  }

  void Tie(StateId root) {
    for (;;) {
      const StateId id = fOpen.back();
      fOpen.pop_back();
      fKnotOf[id] = fKnotCount;
      if (id == root) break;
    }
    ++fKnotCount;
  }

  const Program& fProgram;
  std::vector<std::uint32_t> fKnotOf;
  std::vector<std::uint32_t> fOrder;
  std::vector<std::uint32_t> fLow;
  std::vector<StateId> fOpen;
  std::uint32_t fNextOrder = 0;
  std::uint32_t fKnotCount = 0;
};

// Writes out pairs of a state and the counters of the loops in its knot. A counter outside its knot
// is of no account, since no way leads back without consuming, and what is consumed resets it.
class Unroller {
public:
  explicit Unroller(const Program& program)
      : fProgram(program),
        fKnots(program),
        fLoopOf(program.states.size(), kNoLoop),
        fStateLimit(std::max(kMinStateLimit, kMaxGrowth * program.states.size())) {}

  // False: there are too many loops in one knot.
  bool NumberLoops() {
    std::unordered_map<std::uint32_t, std::uint32_t> counts;  // by knot
    for (StateId id = 0; id < fProgram.states.size(); ++id) {
      const State& state = fProgram.states[id];
      if (!state.isLoop) continue;
      const StateId body = state.isGreedy ? state.next : state.other;
      if (fKnots.Of(body) != fKnots.Of(id)) continue;
      fLoopOf[id] = counts[fKnots.Of(id)]++;
      if (fLoopOf[id] >= kMaxLoops) return false;
      fHasLoops = true;
    }
    return true;
  }

  [[nodiscard]] bool HasLoops() const { return fHasLoops; }

  std::optional<Program> Unroll() {
    Program out;
    out.hasAssertions = fProgram.hasAssertions;
    out.hasWordBoundaries = fProgram.hasWordBoundaries;
    out.lookAheads = fProgram.lookAheads;
    for (LookAheadPart& part : out.lookAheads) {
      if (!UnrollFrom(part.start, out)) return std::nullopt;
      part.end = static_cast<StateId>(out.states.size());
    }
    out.start = fProgram.start;
    if (!UnrollFrom(out.start, out)) return std::nullopt;
    return out;
  }

private:
  using Counters = std::uint64_t;  // two bits a loop
  using Pair = std::pair<StateId, Counters>;
  struct HashPair {
    std::size_t operator()(const Pair& pair) const {
      const std::uint64_t hash = (pair.second + pair.first * 0x9E3779B97F4A7C15U);
      return static_cast<std::size_t>((hash ^ hash >> 29) * 0xBF58476D1CE4E5B9U);
    }
  };

  // Writes what is reached from the state, and gives it its new number. False: it grows too large.
  bool UnrollFrom(StateId& start, Program& out) {
    start = NumberOf(start, 0);
    while (out.states.size() < fPairs.size()) {
      if (fPairs.size() > fStateLimit) return false;
      const auto [id, counters] = fPairs[out.states.size()];
      out.states.push_back(Translate(id, counters));
    }
    return true;
  }

  StateId NumberOf(StateId id, Counters counters) {
    const auto [place, isNew] =
        fNumbers.emplace(Pair{id, counters}, static_cast<StateId>(fPairs.size()));
    if (isNew) fPairs.emplace_back(id, counters);
    return place->second;
  }

  // Where the way from id to target leads, the counters being what they are.
  StateId Follow(StateId id, StateId target, Counters counters) {
    return NumberOf(target, fKnots.Of(id) == fKnots.Of(target) ? counters : 0);
  }

  State Translate(StateId id, Counters counters) {
    State state = fProgram.states[id];
    if (Consumes(state)) {
      if (state.op != Op::Accept) state.next = NumberOf(state.next, 0);
      return state;
    }
    if (fLoopOf[id] == kNoLoop) {
      state.next = Follow(id, state.next, counters);
      if (state.op == Op::Split) state.other = Follow(id, state.other, counters);
      return state;
    }
    const auto shift = 2 * fLoopOf[id];
    const StateId exit = Follow(id, state.isGreedy ? state.other : state.next, counters);
    if ((counters >> shift & 3) >= kPassLimit) return {.op = Op::Jump, .next = exit};
    const StateId body =
        Follow(id, state.isGreedy ? state.next : state.other, counters + (Counters{1} << shift));
    state.next = state.isGreedy ? body : exit;
    state.other = state.isGreedy ? exit : body;
    return state;
  }

  const Program& fProgram;
  const Knots fKnots;
  std::vector<std::uint32_t> fLoopOf;  // a loop's number in its knot, or kNoLoop
  const std::size_t fStateLimit;
  bool fHasLoops = false;
  std::vector<Pair> fPairs;
  std::unordered_map<Pair, StateId, HashPair> fNumbers;
};

}  // namespace

std::optional<Program> UnrollEmptyPasses(const Program& program) {
  Unroller unroller(program);
  if (!unroller.NumberLoops()) return std::nullopt;
  if (!unroller.HasLoops()) return program;
  return unroller.Unroll();
}

}  // namespace Matching
