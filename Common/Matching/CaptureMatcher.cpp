#include "Common/Matching/CaptureMatcher.h"

#include <algorithm>
#include <regex>

namespace Matching {
namespace {

constexpr std::uint32_t kUnnumbered = 0xFFFFFFFF;

// Few states are looked through, many are searched.
bool Contains(std::span<const StateId> sorted, StateId id) {
  constexpr std::size_t kFew = 16;
  if (sorted.size() > kFew) return std::ranges::binary_search(sorted, id);
  return std::ranges::find(sorted, id) != sorted.end();
}

}  // namespace

CaptureMatcher::CaptureMatcher(const Program& program, const SyntaxTree& tree)
    : fProgram(program),
      fTree(tree),
      fFirstLookAheadSlot(2 * (std::size_t{tree.GroupCount()} + 1)),
      fSlotCount(fFirstLookAheadSlot + program.lookAheads.size()),
      fVisitNumber(program.states.size(), kUnnumbered),
      fInNow(program.states.size()),
      fInNext(program.states.size()) {
  std::vector<bool> isReached(program.states.size(), false);
  const auto reach = [&](StateId id) {
    if (isReached[id] && fVisitNumber[id] == kUnnumbered) fVisitNumber[id] = fVisitCount++;
    isReached[id] = true;
  };
  for (const State& state : program.states) {
    if (state.op == Op::Accept) continue;
    reach(state.next);
    if (state.op == Op::Split) reach(state.other);
  }
}

bool CaptureMatcher::Run(const CaptureQuery& query, std::vector<std::size_t>& slots) {
  if (query.trail != nullptr) {
    if (Follow(query, *query.trail, slots)) return true;
    if (query.lastStart == query.firstStart) return false;
    CaptureQuery later = query;
    later.firstStart = query.trail->NextMatch(query.firstStart + 1);
    return later.firstStart != kNowhere && Follow(later, *query.trail, slots);
  }
  const std::size_t places = query.end - query.firstStart + 1;
  if (fMayBacktrack && places <= kMaxVisitBits &&
      (fVisitCount == 0 || places <= kMaxVisitBits / fVisitCount)) {
    return Backtrack(query, slots);
  }
  if (query.suffixes != nullptr &&
      fTrail.Read(*query.suffixes, query.subject, query.firstStart, query.end)) {
    return Follow(query, fTrail, slots);
  }
  return RunThreads(query, slots);
}

std::size_t CaptureMatcher::MemoryKept() const {
  std::size_t slots = fScratch.capacity();
  for (const Threads* threads : {&fNow, &fNext}) slots += threads->slots.capacity();
  return slots * sizeof(std::size_t) + fPending.capacity() * sizeof(Pending) +
         fVisited.capacity() * sizeof(std::uint64_t);
}

bool CaptureMatcher::Follow(const CaptureQuery& query, ATrail& trail,
                            std::vector<std::size_t>& slots) {
  slots.assign(fSlotCount, kNowhere);
  StateId id = query.start;
  if (query.ways != nullptr) query.ways->Begin();
  for (std::size_t pos = query.firstStart;; ++pos) {
    if (query.ways != nullptr && pos > query.firstStart &&
        query.ways->Join(trail.Begin(), pos, id, slots)) {
      break;
    }
    const bool isAtEnd = pos == query.end;
    const auto leadingOn = isAtEnd ? std::span<const StateId>() : trail.At(pos);
    fInNow.Clear();
    StateId chosen = 0;
    const bool isFound = VisitLeaves(query, id, pos, slots, [&](StateId leaf) {
      chosen = leaf;
      return fProgram.states[leaf].op == Op::Accept ? AcceptsAt(query, query.firstStart, pos)
                                                    : Contains(leadingOn, leaf);
    });
    if (!isFound) return false;
    if (fProgram.states[chosen].op == Op::Accept) break;
    id = fProgram.states[chosen].next;
  }
  if (query.ways != nullptr) query.ways->End(slots);
  return true;
}

bool CaptureMatcher::Backtrack(const CaptureQuery& query, std::vector<std::size_t>& slots) {
  fVisitBase = query.firstStart;
  fVisited.clear();
  // A visit that led to nothing leads to nothing from a later start as well, so all share the
  // marks.
  for (std::size_t start = query.firstStart; start <= query.lastStart; ++start) {
    slots.assign(fSlotCount, kNowhere);  // a start that fails does not clear up behind itself
    if (BacktrackFrom(query, start, slots)) return true;
  }
  return false;
}

bool CaptureMatcher::Visit(StateId id, std::size_t pos) {
  const std::size_t bit = (pos - fVisitBase) * fVisitCount + fVisitNumber[id];
  const std::uint64_t mask = std::uint64_t{1} << (bit & 63);
  // As far as the match has come, and some more: a walk over a text is very many short runs.
  if (bit / 64 >= fVisited.size()) fVisited.resize(2 * (bit / 64) + 16, 0);
  if ((fVisited[bit / 64] & mask) != 0) return false;
  fVisited[bit / 64] |= mask;
  return true;
}

bool CaptureMatcher::BacktrackFrom(const CaptureQuery& query, std::size_t start,
                                   std::vector<std::size_t>& slots) {
  fPending.clear();
  fPending.push_back(Pending::Way(query.start, start));
  while (!fPending.empty()) {
    const Pending pending = fPending.back();
    fPending.pop_back();
    if (pending.IsRestore()) {
      slots[pending.Slot()] = pending.Value();
      continue;
    }
    StateId id = pending.Id();
    std::size_t pos = pending.Value();
    for (;;) {
      if (fVisitNumber[id] != kUnnumbered && !Visit(id, pos)) break;
      const State& state = fProgram.states[id];
      if (state.op == Op::Bytes) {
        if (pos == query.end || !fTree.Set(state.value).Contains(query.subject.At(pos))) break;
        ++pos;
      } else if (state.op == Op::Split) {
        fPending.push_back(Pending::Way(state.other, pos));
      } else if (state.op == Op::Accept) {
        if (AcceptsAt(query, start, pos)) return true;
        break;
      } else if (state.IsAssertion() &&
                 !Holds(state, query.subject.BoundaryAt(pos), query.table, pos)) {
        break;
      }
      if (const std::size_t slot = SlotOf(state); slot != kNowhere) {
        if (!fPending.empty()) fPending.push_back(Pending::Restore(slot, slots[slot]));
        slots[slot] = pos;
      }
      id = state.next;
    }
  }
  return false;
}

// All ways at once, each with its own slots, the preferred one first.
bool CaptureMatcher::RunThreads(const CaptureQuery& query, std::vector<std::size_t>& slots) {
  if (fSlotCount * fProgram.states.size() > kMaxThreadSlots) {
    throw std::regex_error(std::regex_constants::error_complexity);
  }
  bool isFound = false;
  fNow.Clear();
  fInNow.Clear();
  for (std::size_t pos = query.firstStart;; ++pos) {
    if (!isFound && pos <= query.lastStart) {
      fScratch.assign(fSlotCount, kNowhere);
      AddThread(query, query.start, pos, fScratch, fNow);
    }
    if (fNow.ids.empty() && (isFound || pos >= query.lastStart)) return isFound;

    fNext.Clear();
    std::swap(fInNow, fInNext);
    fInNow.Clear();
    for (std::size_t i = 0; i < fNow.ids.size(); ++i) {
      const State& state = fProgram.states[fNow.ids[i]];
      const auto own = fNow.slots.begin() + static_cast<std::ptrdiff_t>(i * fSlotCount);
      if (fNow.ids.size() == 1) {
        fScratch.swap(fNow.slots);  // the one thread takes its slots along
      } else {
        fScratch.assign(own, own + static_cast<std::ptrdiff_t>(fSlotCount));
      }
      if (state.op == Op::Accept) {
        slots.swap(fScratch);
        isFound = true;
        break;  // what stands behind it is not preferred
      }
      AddThread(query, state.next, pos + 1, fScratch, fNext);
    }
    std::swap(fNow, fNext);
    if (pos == query.end) return isFound;
  }
}

// Adds the states that are reached from id and consume what stands at pos, or accept there, unless
// they are there already.
void CaptureMatcher::AddThread(const CaptureQuery& query, StateId first, std::size_t pos,
                               std::vector<std::size_t>& slots, Threads& threads) {
  VisitLeaves(query, first, pos, slots, [&](StateId id) {
    const State& state = fProgram.states[id];
    const bool isAlive =
        state.op == Op::Accept
            ? AcceptsAt(query, query.firstStart, pos)
            : pos != query.end && fTree.Set(state.value).Contains(query.subject.At(pos));
    if (!isAlive) return false;
    threads.ids.push_back(id);
    threads.slots.insert(threads.slots.end(), slots.begin(), slots.end());
    return false;
  });
}

template <class OnLeaf>
bool CaptureMatcher::VisitLeaves(const CaptureQuery& query, StateId id, std::size_t pos,
                                 std::vector<std::size_t>& slots, OnLeaf onLeaf) {
  fPending.clear();
  for (;;) {
    while (fInNow.Insert(id)) {
      const State& state = fProgram.states[id];
      if (state.op == Op::Bytes || state.op == Op::Accept) {
        if (onLeaf(id)) return true;
        break;
      }
      if (state.op == Op::Split) {
        fPending.push_back(Pending::Way(state.other, pos));
      } else if (state.IsAssertion() &&
                 !Holds(state, query.subject.BoundaryAt(pos), query.table, pos)) {
        break;
      }
      if (const std::size_t slot = SlotOf(state); slot != kNowhere) {
        if (!fPending.empty()) fPending.push_back(Pending::Restore(slot, slots[slot]));
        slots[slot] = pos;
      }
      id = state.next;
    }
    for (;; fPending.pop_back()) {
      if (fPending.empty()) return false;
      const Pending& pending = fPending.back();
      if (!pending.IsRestore()) break;
      slots[pending.Slot()] = pending.Value();
    }
    id = fPending.back().Id();
    fPending.pop_back();
  }
}

}  // namespace Matching
