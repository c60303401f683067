#pragma once

#include <cstdint>
#include <optional>
#include <vector>

// The frame of the quicksort of a variant's lists. partition(low, high) parts a range and answers
// where the one element between the parts stands, or nothing when the range needs no more.
//
// Recurses into the shorter part and loops on the longer, which changes nothing in the result and
// keeps the depth below the logarithm of the length.
template <class Partition>
void SortByParts(std::int64_t low, std::int64_t high, Partition& partition) {
  while (low < high) {
    const std::optional<std::int64_t> middle = partition(low, high);
    if (!middle) return;
    if (*middle - low < high - *middle) {
      SortByParts(low, *middle - 1, partition);
      low = *middle + 1;
    } else {
      SortByParts(*middle + 1, high, partition);
      high = *middle - 1;
    }
  }
}

// What the quicksort of a variant's lists does to a row of elements, worked out from their ranks
// alone: the rank is the place in the order, and elements that are equal in order have one rank.
// Answers for each place which element comes there.
//
// The quicksort takes the last element of a range as its pivot, which needs n * n steps where many
// elements are equal or the row runs backwards, and yet where equal elements end up follows from
// its very steps. Here a tree over the ranks answers at once where a scan would stop, so that it
// takes n * log n * log n steps whatever the row is.
std::vector<std::uint32_t> ReplayQuickSort(const std::vector<std::uint32_t>& ranks);
