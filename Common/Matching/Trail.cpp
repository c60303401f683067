#include "Common/Matching/Trail.h"

#include <algorithm>
#include <utility>

namespace Matching {

bool SteppedTrail::Read(const Subject& subject) {
  fSubject = subject;
  fBegin = subject.from;
  fEnd = subject.text.size();
  fStepper.Begin(fKernel);
  fMarks.assign(1, {fEnd, fKernel});
  std::size_t ids = 0;  // of the block so far, and of the marks
  std::size_t markIds = 0;
  for (std::size_t pos = fEnd; pos > fBegin; --pos) {
    Step(pos);
    ids += fKernel.states.size();
    const std::size_t place = pos - 1;
    const bool isFull = ids > kMostIds || fMarks.back().pos - place >= kMostPlaces;
    if (!isFull || (place - fBegin) % kGrain != 0) continue;
    markIds += fKernel.states.size();
    if (markIds > kMostMarkIds) return false;
    fMarks.push_back({place, fKernel});
    ids = 0;
  }
  return true;
}

// Consumes the byte in front of a place.
void SteppedTrail::Step(std::size_t pos) {
  fStepper.Step(fKernel, fSubject.BoundaryAt(pos), fSubject.At(pos - 1), fNext);
  std::swap(fKernel, fNext);
}

const SteppedTrail::Block& SteppedTrail::BlockOf(std::size_t pos) {
  for (const std::size_t which : {fLast, 1 - fLast}) {
    const std::size_t mark = fBlocks[which].mark;
    if (mark == kNowhere || pos >= fMarks[mark].pos) continue;
    if (mark + 1 < fMarks.size() && pos < fMarks[mark + 1].pos) continue;
    fLast = which;
    return fBlocks[which];
  }
  // The last of the marks, which descend, that is behind the place.
  const auto below = std::ranges::lower_bound(
      fMarks, pos, [](std::size_t mark, std::size_t place) { return mark > place; }, &Mark::pos);
  fLast = 1 - fLast;
  ReadBlock(static_cast<std::size_t>(below - fMarks.begin()) - 1, fBlocks[fLast]);
  return fBlocks[fLast];
}

void SteppedTrail::ReadBlock(std::size_t mark, Block& block) {
  block.mark = kNowhere;  // should memory fail
  block.ids.clear();
  block.ends.clear();
  block.matched.clear();
  fKernel = fMarks[mark].kernel;
  const std::size_t first = mark + 1 < fMarks.size() ? fMarks[mark + 1].pos : fBegin;
  for (std::size_t pos = fMarks[mark].pos; pos > first; --pos) {
    Step(pos);
    block.ids.insert(block.ids.end(), fKernel.states.begin(), fKernel.states.end());
    block.ends.push_back(block.ids.size());
    block.matched.push_back(fKernel.matched);
  }
  block.mark = mark;
}

std::span<const StateId> SteppedTrail::At(std::size_t pos) {
  const Block& block = BlockOf(pos);
  return block.At(fMarks[block.mark].pos - 1 - pos);
}

std::size_t SteppedTrail::NextMatch(std::size_t pos) {
  for (; pos <= fEnd; ++pos) {
    const Block& block = BlockOf(pos - 1);
    if (block.matched[fMarks[block.mark].pos - pos]) return pos;
  }
  return kNowhere;
}

}  // namespace Matching
