#pragma once

#include <cstdint>
#include <utility>
#include <vector>

// The sort of a variant's lists as its contract writes it down, on plain values: the oracle of what
// is made faster. Where elements are in no order, two that were swapped can come back to where they
// were: these are gone past.
template <class T, class LessOrEqual>
void WrittenSort(std::vector<T>& list, std::int64_t low, std::int64_t high, LessOrEqual isLE) {
  while (low < high) {
    const T pivot = list[high];
    std::int64_t i = low, j = high - 1;
    std::pair<std::int64_t, std::int64_t> swapped(-1, -1);
    for (;;) {
      while (i < high && isLE(list[i], pivot)) ++i;
      while (j > low && isLE(pivot, list[j])) --j;
      if (i >= j) break;
      if (swapped == std::pair(i, j)) {
        ++i;
        --j;
        continue;
      }
      std::swap(list[i], list[j]);
      swapped = {i, j};
    }
    if (!isLE(list[i], pivot)) std::swap(list[i], list[high]);
    if (i != 0) WrittenSort(list, low, i - 1, isLE);
    low = i + 1;
  }
}
