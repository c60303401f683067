#pragma once

#include <cstdint>
#include <vector>

// What the quicksort of a variant's lists does to a row of elements, worked out from their ranks
// alone: the rank is the place in the order, and elements that are equal in order have one rank.
// Answers for each place which element comes there.
//
// The quicksort takes the last element of a range as its pivot, which needs n * n steps where many
// elements are equal or the row runs backwards, and yet where equal elements end up follows from
// its very steps. Here a tree over the ranks answers at once where a scan would stop, so that it
// takes n * log n * log n steps whatever the row is.
std::vector<std::uint32_t> ReplayQuickSort(const std::vector<std::uint32_t>& ranks);
