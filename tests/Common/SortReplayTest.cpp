#include "Common/SortReplay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "tests/Common/WrittenSort.h"
#include "tests/support/SmallStack.h"

namespace {

using Numbers = std::vector<std::uint32_t>;

// The oracle: the procedure itself, on places that are compared by their ranks.
Numbers Written(const Numbers& ranks) {
  Numbers places(ranks.size());
  std::iota(places.begin(), places.end(), 0u);
  WrittenSort(places, 0, static_cast<std::int64_t>(places.size()) - 1,
              [&](std::uint32_t left, std::uint32_t right) { return ranks[left] <= ranks[right]; });
  return places;
}

TEST(SortReplay, AgreesWithTheWrittenProcedureOnAllShortRows) {
  for (std::uint32_t count = 0; count <= 6; ++count) {
    Numbers ranks(count, 0);
    for (;;) {
      ASSERT_EQ(ReplayQuickSort(ranks), Written(ranks)) << testing::PrintToString(ranks);
      std::size_t place = 0;
      while (place < count && ++ranks[place] == 4) ranks[place++] = 0;
      if (place == count) break;
    }
  }
}

TEST(SortReplay, AgreesWithTheWrittenProcedureOnRandomRows) {
  std::mt19937 random(31);
  for (int round = 0; round < 3000; ++round) {
    const std::uint32_t kinds = 1 + random() % 60;
    Numbers ranks(random() % 120);
    for (std::uint32_t& rank : ranks) rank = random() % kinds;
    if (round % 3 == 0) std::ranges::sort(ranks, std::greater<>());
    ASSERT_EQ(ReplayQuickSort(ranks), Written(ranks)) << testing::PrintToString(ranks);
  }
}

TEST(SortReplay, NeedsLittleStackForAnyRow) {
  constexpr std::uint32_t kCount = 100'000;
  Numbers up(kCount), down(kCount), equal(kCount, 5), two(kCount);
  std::iota(up.begin(), up.end(), 0u);
  std::iota(down.rbegin(), down.rend(), 0u);
  for (std::uint32_t i = 0; i < kCount; ++i) two[i] = i % 2;
  OnASmallStack([&] {
    for (const Numbers& ranks : {up, down, equal, two}) {
      const Numbers order = ReplayQuickSort(ranks);
      EXPECT_TRUE(std::ranges::is_sorted(order, {}, [&](std::uint32_t i) { return ranks[i]; }));
    }
  });
}

}  // namespace
