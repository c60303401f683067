#include "Common/Matching/MergedWays.h"

namespace Matching {

bool MergedWays::JoinAtMark(std::size_t mark, std::size_t pos, StateId id,
                            std::vector<std::size_t>& slots) {
  constexpr int kIdBits = 24;  // more than a program has states
  const std::uint64_t key = std::uint64_t{mark} << kIdBits | id;
  if (const auto found = fMarks.find(key); found != fMarks.end()) {
    const std::size_t first = found->second * slots.size();
    for (std::size_t slot = 0; slot < slots.size(); ++slot) {
      const std::size_t place = fSlots[first + slot];
      if (place != kNowhere && place >= pos) slots[slot] = place;
    }
    return true;
  }
  if (fMarksOfWay == 0 && (fMarks.size() >= kMostMarks || fSlots.size() >= kMostSlots)) {
    fMarks.clear();
    fSlots.clear();
    fWayCount = 0;
  }
  if (fMarksOfWay < kMostMarksOfWay) {
    fMarks.emplace(key, fWayCount);
    ++fMarksOfWay;
  }
  return false;
}

void MergedWays::End(const std::vector<std::size_t>& slots) {
  if (fMarksOfWay == 0) return;
  fSlots.insert(fSlots.end(), slots.begin(), slots.end());
  ++fWayCount;
}

}  // namespace Matching
