#include "Common/Matching/SuffixTruth.h"

#include <algorithm>

namespace Matching {

SuffixTruth::SuffixTruth(const Program& program, const SyntaxTree& tree, Goal goal)
    : fProgram(program),
      fTree(tree),
      fGoal(goal),
      fBeforeOf(program.states.size()),
      fTruth(program.states.size()),
      fTruthAtBegin(program.states.size()),
      fHolds(program.lookAheads.size(), false) {
  // A part is compiled from its accepting state on, one part behind the other. Unrolled passes are
  // in no such order: a program with them has no look-aheads, and so but one part.
  const auto size = static_cast<StateId>(program.states.size());
  if (program.lookAheads.empty()) fParts.push_back({0, size, program.start, 0, false});
  for (StateId id = 0; id < size; ++id) {
    const Op op = program.states[id].op;
    if (op == Op::Accept && program.lookAheads.empty()) {
      fParts.back().accept = id;
    } else if (op == Op::Accept) {
      if (!fParts.empty()) fParts.back().end = id;
      const std::size_t number = fParts.size();
      const bool isLookAhead = number < program.lookAheads.size();
      fParts.push_back(
          {id, size, isLookAhead ? program.lookAheads[number].start : program.start, id, false});
    }
    const bool asks = op == Op::LineBegin || op == Op::WordBoundary || op == Op::NotWordBoundary;
    fParts.back().asksForBegin |= asks;
  }

  const auto visitWays = [&](auto visit) {
    for (StateId id = 0; id < size; ++id) {
      const State& state = program.states[id];
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
  // Contract: a look-ahead takes its own beginning for the beginning of the text.
  Boundary begin = at;
  begin.isBegin = true;
  begin.isWordLeft = false;
  for (std::size_t i = 0; i < fParts.size(); ++i) {
    const Part& part = fParts[i];
    Spread(part, from, at, fTruth, &fTrue);
    if (i == fHolds.size()) break;
    fHolds[i] = fTruth.Contains(part.start);
    if (!part.asksForBegin) continue;
    fTruthAtBegin.Clear();
    Spread(part, from, begin, fTruthAtBegin, nullptr);
    fHolds[i] = fTruthAtBegin.Contains(part.start);
  }
}

void SuffixTruth::Spread(const Part& part, const Kernel& from, const Boundary& at, StateSet& truth,
                         std::vector<StateId>* found) {
  fStack.clear();
  const auto mark = [&](StateId id) {
    if (!truth.Insert(id)) return;
    fStack.push_back(id);
    if (found != nullptr) found->push_back(id);
  };
  // Only where the reading began does a whole match end.
  const bool isWhole = &part == &fParts.back() && fGoal == Goal::Whole;
  const bool isAtEnd = !from.states.empty() && from.states.back() == kRestart;
  if (!isWhole || isAtEnd) mark(part.accept);
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
