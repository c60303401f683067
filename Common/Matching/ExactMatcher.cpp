#include "Common/Matching/ExactMatcher.h"

#include <algorithm>
#include <regex>

namespace Matching {
namespace {

constexpr std::uint32_t kPassLimit = 2;  // passes through a loop at one place
constexpr std::size_t kSlotsAStep = 8;   // copying so many takes as long as a step

}  // namespace

ExactMatcher::ExactMatcher(const Program& program, const SyntaxTree& tree, const Subject& subject,
                           const Limits& limits)
    : fProgram(program),
      fTree(tree),
      fSubject(subject),
      fLimits(limits),
      fMarks(program.states.size()),
      fSlots(2 * (std::size_t{tree.GroupCount()} + 1), kNowhere) {}

bool ExactMatcher::Run(std::size_t start, bool mustReachEnd, bool refusesEmpty) {
  fMustReachEnd = mustReachEnd;
  fRefusesEmpty = refusesEmpty;
  fStart = start;
  fHasPrevious = fSubject.hasPrevious || start > fSubject.from;
  fPending.clear();
  // A run that fails takes back what it captured, but for what its look-aheads leave.
  if (!fProgram.lookAheads.empty()) {
    std::ranges::fill(fSlots, kNowhere);
    fSteps += fSlots.size() / kSlotsAStep;
  }

  StateId id = fProgram.start;
  std::size_t pos = start;
  for (;;) {
    if (++fSteps > fLimits.steps) {
      throw std::regex_error(std::regex_constants::error_complexity);
    }
    if (fProgram.states[id].op == Op::Accept) {
      const bool isRefused = fRefusesEmpty && pos == Begin();
      if (!fOpen.empty()) {
        if (!isRefused && LeaveLookAhead(id, pos)) continue;
      } else if (!isRefused && !(fMustReachEnd && pos != fSubject.text.size())) {
        return true;
      }
    } else if (Advance(id, pos)) {
      continue;
    }
    if (!Resume(id, pos)) return false;
  }
}

bool ExactMatcher::Advance(StateId& id, std::size_t& pos) {
  const State& state = fProgram.states[id];
  switch (state.op) {
    case Op::Bytes:
      if (pos == fSubject.text.size() || !fTree.Set(state.value).Contains(fSubject.At(pos))) {
        return false;
      }
      ++pos;
      break;
    case Op::Split:
      if (!state.isLoop) {
        Push({Pending::Way, 0, state.other, pos});
        break;
      }
      if (state.isGreedy) {
        Push({Pending::Way, 0, state.other, pos});
        return EnterBody(id, pos, id);
      }
      Push({Pending::Body, 0, id, pos});
      break;
    case Op::Save:
      Push({Pending::RestoreSlot, 0, state.value, fSlots[state.value]});
      fSlots[state.value] = pos;
      break;
    case Op::BackReference:
      if (!MatchBackReference(state.value, pos)) return false;
      break;
    case Op::LookAhead:
    case Op::NotLookAhead:
      EnterLookAhead(id, pos);
      id = fProgram.lookAheads[state.value].start;
      return true;
    case Op::Jump:
    case Op::Accept:
      break;
    default:
      if (!Holds(state, BoundaryAt(pos), nullptr, pos)) return false;
      break;
  }
  id = state.next;
  return true;
}

bool ExactMatcher::Resume(StateId& id, std::size_t& pos) {
  while (!fPending.empty()) {
    const Pending pending = fPending.back();
    fPending.pop_back();
    switch (pending.kind) {
      case Pending::Way:
        id = pending.id;
        pos = pending.value;
        return true;
      case Pending::Body:
        pos = pending.value;
        if (EnterBody(pending.id, pos, id)) return true;
        break;
      case Pending::RestoreSlot:
        fSlots[pending.id] = pending.value;
        break;
      case Pending::RestoreLoop:
        fMarks[pending.id] = {pending.value, pending.count};
        break;
      case Pending::LookAhead: {
        const State& state = fProgram.states[pending.id];
        RestoreGroups(fProgram.lookAheads[state.value]);
        PopLookAhead();
        if (state.op == Op::LookAhead) break;
        id = state.next;
        pos = pending.value;
        return true;
      }
    }
  }
  return false;
}

void ExactMatcher::EnterLookAhead(StateId id, std::size_t pos) {
  const LookAheadPart& part = fProgram.lookAheads[fProgram.states[id].value];
  OpenLookAhead open{fPending.size(), pos, {}};
  if (part.HasGroups()) {
    open.slots.assign(fSlots.begin() + 2 * std::ptrdiff_t{part.firstGroup},
                      fSlots.begin() + 2 * std::ptrdiff_t{part.endGroup});
  }
  fSteps += open.slots.size() / kSlotsAStep;
  fOpenSlots += open.slots.size();
  if (fOpenSlots > fLimits.bytes / sizeof(std::size_t)) {
    throw std::regex_error(std::regex_constants::error_complexity);
  }
  fOpen.push_back(std::move(open));
  Push({Pending::LookAhead, 0, id, pos});
}

bool ExactMatcher::LeaveLookAhead(StateId& id, std::size_t& pos) {
  const std::size_t first = fOpen.back().pending;
  const State& state = fProgram.states[fPending[first].id];
  while (fPending.size() > first) {
    const Pending& pending = fPending.back();
    if (pending.kind == Pending::RestoreLoop) {
      fMarks[pending.id] = {pending.value, pending.count};
    }
    fPending.pop_back();
  }
  pos = fOpen.back().pos;
  // Contract: what a look-ahead has captured is never taken back, not even when the way that led
  // through it fails later, or at once because it should not have matched.
  PopLookAhead();
  id = state.next;
  return state.op == Op::LookAhead;
}

void ExactMatcher::PopLookAhead() {
  fOpenSlots -= fOpen.back().slots.size();
  fOpen.pop_back();
}

// The groups inside the innermost open look-ahead are again what they were before it.
void ExactMatcher::RestoreGroups(const LookAheadPart& part) {
  std::ranges::copy(fOpen.back().slots, fSlots.begin() + 2 * std::ptrdiff_t{part.firstGroup});
}

// Contract: a look-ahead takes its own beginning for the beginning of the text, unless bytes in
// front of the match count.
Boundary ExactMatcher::BoundaryAt(std::size_t pos) const {
  return Subject{fSubject.text, Begin(), fHasPrevious}.BoundaryAt(pos);
}

void ExactMatcher::Push(const Pending& pending) {
  if (fPending.size() >= fLimits.bytes / sizeof(Pending)) {
    throw std::regex_error(std::regex_constants::error_complexity);
  }
  fPending.push_back(pending);
}

bool ExactMatcher::EnterBody(StateId loop, std::size_t pos, StateId& id) {
  Mark& mark = fMarks[loop];
  const std::uint32_t count = mark.pos == pos ? mark.count : 0;
  if (count == kPassLimit) return false;
  Push({Pending::RestoreLoop, mark.count, loop, mark.pos});
  mark = {pos, count + 1};
  const State& state = fProgram.states[loop];
  id = state.isGreedy ? state.next : state.other;
  return true;
}

bool ExactMatcher::MatchBackReference(std::uint32_t group, std::size_t& pos) {
  const std::size_t begin = fSlots[2 * group];
  const std::size_t end = fSlots[2 * group + 1];
  if (end == kNowhere) return false;
  if (fSubject.text.size() - pos < end - begin) return false;
  for (std::size_t i = begin; i < end; ++i) {
    ++fSteps;
    if (ToLower(fSubject.At(i)) != ToLower(fSubject.At(pos + i - begin))) return false;
  }
  pos += end - begin;
  return true;
}

}  // namespace Matching
