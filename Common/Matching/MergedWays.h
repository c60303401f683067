#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "Common/Matching/Program.h"
#include "Common/Matching/Trail.h"

namespace Matching {

// What the ways through look-aheads along one trail have in common. Where a way goes on from a
// place depends on its state there alone, so one that comes to a place as another did ends as that
// one did. Without this, all matches of "(?=(a*))a" would take time by the square of the text.
//
// Ways leave a mark at every so many places, so far ahead and so many as memory is granted. One
// that finds no mark goes to its end; the answer is the same.
//
// Belongs to one walk over a text, and one thread.
class MergedWays {
public:
  // The next way begins.
  void Begin() { fMarksOfWay = 0; }

  // The way has come to a place behind its beginning. True when another was there in this state:
  // what that one wrote from there on stands in the slots, and the way has ended. Slots hold
  // places.
  bool Join(std::size_t trailBegin, std::size_t pos, StateId id, std::vector<std::size_t>& slots) {
    const std::size_t places = pos - trailBegin;
    return places % kDistance == 0 && JoinAtMark(places / kDistance, pos, id, slots);
  }

  // The way has ended, by itself or by joining another. A way that has passed a mark always ends:
  // the trail has told that it leads on.
  void End(const std::vector<std::size_t>& slots);

private:
  static constexpr std::size_t kDistance = ATrail::kGrain;  // a block of a trail begins with a mark
  static constexpr std::size_t kMostMarks = std::size_t{1} << 18;
  static constexpr std::size_t kMostMarksOfWay = kMostMarks / 16;
  static constexpr std::size_t kMostSlots = std::size_t{1} << 21;  // 16 MiB

  bool JoinAtMark(std::size_t mark, std::size_t pos, StateId id, std::vector<std::size_t>& slots);

  std::unordered_map<std::uint64_t, std::uint32_t> fMarks;  // the number of the way that left it
  std::vector<std::size_t> fSlots;                          // of the ways that left marks
  std::uint32_t fWayCount = 0;                              // of those
  std::size_t fMarksOfWay = 0;                              // that the present one has left
};

}  // namespace Matching
