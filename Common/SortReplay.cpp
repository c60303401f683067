#include "Common/SortReplay.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <numeric>
#include <utility>

namespace {

// A row of numbers that knows where the next one above a limit stands: a binary tree, each node of
// which has the greatest number below it.
class CRow {
public:
  explicit CRow(std::size_t count) : fLeaves(std::bit_ceil(count)), fGreatest(2 * fLeaves, 0) {}

  void Set(std::size_t place, std::uint32_t number) {
    std::size_t node = fLeaves + place;
    fGreatest[node] = number;
    while (node /= 2) fGreatest[node] = std::max(fGreatest[2 * node], fGreatest[2 * node + 1]);
  }
  // The first place from start on with a number above the limit; the end of all places for none.
  std::size_t FirstAbove(std::size_t start, std::uint32_t limit) const {
    std::size_t node = fLeaves + start;
    while (fGreatest[node] <= limit) {
      while (node % 2 == 1) node /= 2;  // past all that the parents of a right child have
      if (node == 0) return fLeaves;
      ++node;
    }
    while (node < fLeaves) {
      node *= 2;
      if (fGreatest[node] <= limit) ++node;
    }
    return node - fLeaves;
  }

private:
  std::size_t fLeaves;  // a power of two
  std::vector<std::uint32_t> fGreatest;
};

class CReplay {
public:
  explicit CReplay(const std::vector<std::uint32_t>& ranks)
      : fRanks(ranks), fOrder(ranks.size()), fForward(ranks.size()), fBackward(ranks.size()) {
    std::iota(fOrder.begin(), fOrder.end(), std::uint32_t{0});
    for (std::size_t place = 0; place < fRanks.size(); ++place) Note(place);
  }

  void Sort() {
    auto partition = [this](std::int64_t low, std::int64_t high) -> std::optional<std::int64_t> {
      return Partition(low, high);
    };
    SortByParts(0, static_cast<std::int64_t>(fRanks.size()) - 1, partition);
  }

  std::vector<std::uint32_t>& Order() { return fOrder; }

private:
  std::int64_t Partition(std::int64_t low, std::int64_t high) {
    const std::uint32_t pivot = fRanks[static_cast<std::size_t>(high)];
    std::int64_t i = low, j = high - 1;
    for (;;) {
      i = std::min(FirstAbove(i, pivot), high);
      j = std::max(LastBelow(j, pivot), low);
      if (i >= j) break;
      Swap(i, j);
    }
    if (i != high) Swap(i, high);
    return i;
  }

  std::int64_t FirstAbove(std::int64_t start, std::uint32_t rank) const {
    return static_cast<std::int64_t>(fForward.FirstAbove(static_cast<std::size_t>(start), rank));
  }
  // Going down from start; -1 or less for none.
  std::int64_t LastBelow(std::int64_t start, std::uint32_t rank) const {
    const auto last = static_cast<std::int64_t>(fRanks.size()) - 1;
    return last - static_cast<std::int64_t>(
                      fBackward.FirstAbove(static_cast<std::size_t>(last - start), ~rank));
  }

  void Swap(std::int64_t left, std::int64_t right) {
    const auto i = static_cast<std::size_t>(left), j = static_cast<std::size_t>(right);
    std::swap(fRanks[i], fRanks[j]);
    std::swap(fOrder[i], fOrder[j]);
    Note(i);
    Note(j);
  }
  void Note(std::size_t place) {
    fForward.Set(place, fRanks[place]);
    fBackward.Set(fRanks.size() - 1 - place, ~fRanks[place]);
  }

  std::vector<std::uint32_t> fRanks;  // by place, as it is by now
  std::vector<std::uint32_t> fOrder;  // which element stands there
  CRow fForward;                      // the ranks
  CRow fBackward;                     // the last first, and the greatest rank as the least number
};

}  // namespace

std::vector<std::uint32_t> ReplayQuickSort(const std::vector<std::uint32_t>& ranks) {
  CReplay replay(ranks);
  replay.Sort();
  return std::move(replay.Order());
}
