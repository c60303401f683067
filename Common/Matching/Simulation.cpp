#include "Common/Matching/Simulation.h"

#include <algorithm>

namespace Matching {

void Simulation::Begin(Kernel& kernel) {
  kernel.states.clear();
  fTaken.Clear();
  fIsCut = false;
  Take(fProgram.start, kernel);
  if (!fIsAnchored && !fIsCut) kernel.states.push_back(kRestart);
}

void Simulation::Step(const Kernel& from, const Boundary& at, unsigned char byte, Kernel& to,
                      const LookAheadTable* table, std::size_t pos) {
  to.states.clear();
  to.atEdge = false;
  to.isFresh = false;
  to.matched = false;
  fTaken.Clear();
  fIsCut = false;
  for (const StateId id : Resolve(from, at, table, pos)) {
    if (id == kRestart) {
      Take(fProgram.start, to);
      if (!fIsCut) to.states.push_back(kRestart);
      continue;
    }
    const State& state = fProgram.states[id];
    if (state.op == Op::Accept) {
      if (from.isFresh) continue;
      to.matched = fGoal != Goal::Whole;
      if (OrderMatters()) break;
      continue;
    }
    if (fTree.Set(state.value).Contains(byte)) Take(state.next, to);
  }
}

std::uint32_t Simulation::FirstAccept(const Kernel& from, const Boundary& at,
                                      const LookAheadTable* table, std::size_t pos) {
  std::uint32_t first = kNoAccept;
  if (from.isFresh) return first;
  for (const StateId id : Resolve(from, at, table, pos)) {
    if (id == kRestart) continue;
    const State& state = fProgram.states[id];
    if (state.op == Op::Accept) first = std::min(first, state.value);
  }
  return first;
}

// The kernel's states with the assertions gone through or gone.
const std::vector<StateId>& Simulation::Resolve(const Kernel& from, const Boundary& at,
                                                const LookAheadTable* table, std::size_t pos) {
  if (!fProgram.hasAssertions) return from.states;

  fStates.clear();
  fResolved.Clear();
  for (const StateId first : from.states) {
    if (first == kRestart) {
      fStates.push_back(first);
      continue;
    }
    fStack.assign(1, first);
    while (!fStack.empty()) {
      const StateId id = fStack.back();
      fStack.pop_back();
      if (!fResolved.Insert(id)) continue;
      const State& state = fProgram.states[id];
      if (state.op == Op::Bytes || state.op == Op::Accept) {
        fStates.push_back(id);
        continue;
      }
      if (state.IsAssertion() && !Holds(state, at, table, pos)) continue;
      if (state.op == Op::Split) fStack.push_back(state.other);
      fStack.push_back(state.next);
    }
  }
  return fStates;
}

// Adds the states that are reached from id without an assertion.
void Simulation::Take(StateId first, Kernel& to) {
  if (fIsCut) return;
  fStack.assign(1, first);
  while (!fStack.empty()) {
    const StateId id = fStack.back();
    fStack.pop_back();
    if (!fTaken.Insert(id)) continue;
    const State& state = fProgram.states[id];
    if (state.op == Op::Split) fStack.push_back(state.other);
    if (state.op == Op::Split || state.op == Op::Jump || state.op == Op::Save) {
      fStack.push_back(state.next);
      continue;
    }
    to.states.push_back(id);
    if (state.op == Op::Accept && OrderMatters() && !to.isFresh) {
      fIsCut = true;
      fStack.clear();
    }
  }
}

}  // namespace Matching
