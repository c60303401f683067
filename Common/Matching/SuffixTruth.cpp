#include "Common/Matching/SuffixTruth.h"

#include <algorithm>

namespace Matching {

SuffixTruth::SuffixTruth(const Program& program, const SyntaxTree& tree, Goal goal,
                         LookAheadRules rules)
    : fProgram(program),
      fTree(tree),
      fGoal(goal),
      fRules(rules),
      fBeforeOf(program.states.size()),
      fTruth(program.states.size()),
      fTruthAtBegin(program.states.size()),
      fHolds(program.lookAheads.size(), false) {
  StateId begin = 0;
  for (const LookAheadPart& part : program.lookAheads) {
    AddPart(begin, part.end, part.start);
    begin = part.end;
  }
  AddPart(begin, static_cast<StateId>(program.states.size()), program.start);
  IndexWays();
}

void SuffixTruth::AddPart(StateId begin, StateId end, StateId start) {
  Part part{.begin = begin, .end = end, .start = start, .hasOwnBegin = fRules.refuseEmpty};
  for (StateId id = begin; id < end; ++id) {
    const Op op = fProgram.states[id].op;
    if (op == Op::Accept) part.accept = id;
    const bool asks = op == Op::LineBegin || op == Op::WordBoundary || op == Op::NotWordBoundary;
    part.hasOwnBegin |= asks && !fRules.hasPrevious;
  }
  fParts.push_back(part);
}

void SuffixTruth::IndexWays() {
  const auto size = static_cast<StateId>(fProgram.states.size());
  const auto visitWays = [&](auto visit) {
    for (StateId id = 0; id < size; ++id) {
      const State& state = fProgram.states[id];
      if (state.op == Op::Accept) continue;
      visit(state.next, id, state.op == Op::Bytes);
      if (state.op == Op::Split && state.other != state.next) visit(state.other, id, false);
    }
  };
  // Counts first, then places.
  visitWays([&](StateId to, StateId, bool consumes) {
    ++fBeforeOf[to].end;
    if (!consumes) ++fBeforeOf[to].split;
  });
  std::uint32_t at = 0;
  for (Before& before : fBeforeOf) {
    before.begin = at;
    at += before.end;
    before.split += before.begin;
    before.end = before.split;
  }
  fBefore.resize(at);
  std::vector<std::uint32_t> fill(size);
  for (StateId id = 0; id < size; ++id) fill[id] = fBeforeOf[id].begin;
  visitWays([&](StateId to, StateId from, bool consumes) {
    fBefore[consumes ? fBeforeOf[to].end++ : fill[to]++] = from;
  });
}

void SuffixTruth::Begin(Kernel& kernel) {
  kernel.states.assign(1, kRestart);
}

void SuffixTruth::Step(const Kernel& from, const Boundary& at, unsigned char byte, Kernel& to) {
  Evaluate(from, at);
  to.states.clear();
  to.atEdge = false;
  to.isFresh = false;
  to.matched = fGoal == Goal::Any && fTruth.Contains(fProgram.start);
  bool isAlive = fGoal == Goal::Any;
  for (const StateId id : fTrue) {
    for (std::uint32_t i = fBeforeOf[id].split; i < fBeforeOf[id].end; ++i) {
      const StateId before = fBefore[i];
      if (!fTree.Set(fProgram.states[before].value).Contains(byte)) continue;
      to.states.push_back(before);
      isAlive = isAlive || before >= fParts.back().begin;
    }
  }
  if (!isAlive) return to.states.clear();
  std::ranges::sort(to.states);
  if (fGoal == Goal::Any) to.states.push_back(kRestart);
}

std::uint32_t SuffixTruth::FirstAccept(const Kernel& from, const Boundary& at) {
  Evaluate(from, at);
  return fTruth.Contains(fProgram.start) ? 0 : kNoAccept;
}

// Inner parts come first, so whether a look-ahead holds is known when a state asks.
void SuffixTruth::Evaluate(const Kernel& from, const Boundary& at) {
  fTruth.Clear();
  fTrue.clear();
  Boundary begin = at;
  if (!fRules.hasPrevious) {
    begin.isBegin = true;
    begin.isWordLeft = false;
  }
  for (std::size_t i = 0; i < fHolds.size(); ++i) {
    const Part& part = fParts[i];
    Spread(part, from, at, true, fTruth, &fTrue);
    fHolds[i] = fTruth.Contains(part.start);
    if (!part.hasOwnBegin) continue;
    fTruthAtBegin.Clear();
    Spread(part, from, begin, !fRules.refuseEmpty, fTruthAtBegin, nullptr);
    fHolds[i] = fTruthAtBegin.Contains(part.start);
  }
  // Only where the reading began does a whole match end.
  const bool isAtEnd = !from.states.empty() && from.states.back() == kRestart;
  Spread(fParts.back(), from, at, fGoal != Goal::Whole || isAtEnd, fTruth, &fTrue);
}

void SuffixTruth::Spread(const Part& part, const Kernel& from, const Boundary& at, bool mayEnd,
                         StateSet& truth, std::vector<StateId>* found) {
  fStack.clear();
  const auto mark = [&](StateId id) {
    if (!truth.Insert(id)) return;
    fStack.push_back(id);
    if (found != nullptr) found->push_back(id);
  };
  if (mayEnd) mark(part.accept);
  for (auto id = std::ranges::lower_bound(from.states, part.begin);
       id != from.states.end() && *id < part.end; ++id) {
    mark(*id);
  }
  while (!fStack.empty()) {
    const Before& before = fBeforeOf[fStack.back()];
    fStack.pop_back();
    for (std::uint32_t i = before.begin; i < before.split; ++i) {
      if (LeadsOn(fProgram.states[fBefore[i]], at)) mark(fBefore[i]);
    }
  }
}

bool SuffixTruth::LeadsOn(const State& state, const Boundary& at) const {
  if (!state.IsAssertion()) return true;
  if (state.op == Op::LookAhead) return fHolds[state.value];
  if (state.op == Op::NotLookAhead) return !fHolds[state.value];
  return Holds(state, at, nullptr, 0);
}

}  // namespace Matching
