#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "Common/CVariant.h"
#include "Common/CVariantReports.h"
#include "Common/CVariantStore.h"
#include "Common/CVariantTypeTable.h"
#include "Common/SortReplay.h"

qxSource("Common\\CVariant");

namespace {

constexpr VariantTypeSet kSortable =
    TypeFamily::NumberLists | TypeFamily::StringLists |
    VariantTypeSet{VariantType::BooleanList, VariantType::DimensionList, VariantType::IPRangeList,
                   VariantType::IPList, VariantType::HostAndCertificateList};

// An object and not a function, so that sorting has it inlined.
template <class E>
struct IsLess {
  bool operator()(const typename E::Stored& left, const typename E::Stored& right) const {
    return !E::IsLessOrEqual(right, left);
  }
};

template <class E>
bool IsInOrder(std::span<const typename E::Stored> elements) {
  return std::adjacent_find(elements.begin(), elements.end(),
                            [](const auto& left, const auto& right) {
                              return !E::IsLessOrEqual(left, right);
                            }) == elements.end();
}

// Parts the range by its last element, and answers where that element belongs.
//
// Contract: where equal elements end up follows from these very steps, and stored lists rely on it.
template <class E>
std::int64_t Partition(typename E::Stored* elements, std::int64_t low, std::int64_t high) {
  const auto& pivot = elements[high];  // stays there during the scan
  std::int64_t i = low, j = high - 1;
  std::int64_t lastI = -1, lastJ = -1;
  for (;;) {
    while (i < high && E::IsLessOrEqual(elements[i], pivot)) ++i;
    while (j > low && E::IsLessOrEqual(pivot, elements[j])) --j;
    if (i >= j) break;
    if (i == lastI && j == lastJ) {
      // Only what is in no order, such as a NaN, comes back to where it was swapped: go past it.
      ++i;
      --j;
      continue;
    }
    SwapElements<E>(elements[i], elements[j]);
    lastI = i;
    lastJ = j;
  }
  if (i != high && !E::IsLessOrEqual(elements[i], pivot)) {
    SwapElements<E>(elements[i], elements[high]);
  }
  return i;
}

// Brings to each place of the row the element that stood at the place given for it.
template <class E>
void Permute(std::span<typename E::Stored> elements, std::vector<std::uint32_t>& from) {
  for (std::uint32_t start = 0; start < from.size(); ++start) {
    std::uint32_t place = start;
    while (from[place] != start) {
      SwapElements<E>(elements[place], elements[from[place]]);
      place = std::exchange(from[place], place);
    }
    from[place] = place;
  }
}

// The quicksort's result by other means, for elements that are in a total order.
template <class E>
void SortByRanks(std::span<typename E::Stored> elements) {
  std::vector<std::uint32_t> places(elements.size()), ranks(elements.size());
  std::iota(places.begin(), places.end(), std::uint32_t{0});
  std::sort(places.begin(), places.end(), [&](std::uint32_t left, std::uint32_t right) {
    return IsLess<E>()(elements[left], elements[right]);
  });
  for (std::size_t i = 1; i < places.size(); ++i) {
    const bool isNext = IsLess<E>()(elements[places[i - 1]], elements[places[i]]);
    ranks[places[i]] = ranks[places[i - 1]] + (isNext ? 1 : 0);
  }
  std::vector<std::uint32_t> order = ReplayQuickSort(ranks);
  Permute<E>(elements, order);
}

// Elements in a total order never take n * n steps: when those that a well-behaved row needs are
// used up, what is left is sorted to the same result by its ranks.
template <class E>
void QuickSort(std::span<typename E::Stored> elements, bool hasTotalOrder) {
  constexpr std::int64_t kStepsPerLevel = 4;  // an element; random rows need about 1.4
  const auto count = static_cast<std::int64_t>(elements.size());
  const bool isBounded = hasTotalOrder && count <= std::numeric_limits<std::uint32_t>::max();
  std::int64_t steps = kStepsPerLevel * count * std::bit_width(elements.size());
  auto partition = [&](std::int64_t low, std::int64_t high) -> std::optional<std::int64_t> {
    steps -= high - low;
    if (!isBounded || steps >= 0) return Partition<E>(elements.data(), low, high);
    SortByRanks<E>(
        elements.subspan(static_cast<std::size_t>(low), static_cast<std::size_t>(high - low + 1)));
    return std::nullopt;
  };
  SortByParts(0, count - 1, partition);
}

// Sorts by the library, which puts equal elements anywhere. A list that is kept in order gets one
// new element at a time, at its end.
template <class E>
void SortAlike(std::span<typename E::Stored> elements) {
  const auto end = std::is_sorted_until(elements.begin(), elements.end(), IsLess<E>());
  if (end == elements.end()) return;
  if (end + 1 == elements.end()) {
    std::rotate(std::upper_bound(elements.begin(), end, *end, IsLess<E>()), end, elements.end());
  } else {
    std::sort(elements.begin(), elements.end(), IsLess<E>());
  }
}

// Sorts by the library where that must give the one result that the quicksort would give too:
// where elements that are equal are alike. False, and nothing done, where it need not.
template <class E>
bool SortIfUnique(std::span<typename E::Stored> elements) {
  std::vector<typename E::Stored> sorted(elements.begin(), elements.end());
  SortAlike<E>(sorted);
  const auto differing = [](const auto& left, const auto& right) {
    return E::IsLessOrEqual(right, left) && !E::AreAlike(left, right);
  };
  if (std::adjacent_find(sorted.begin(), sorted.end(), differing) != sorted.end()) return false;
  std::copy(sorted.begin(), sorted.end(), elements.begin());
  return true;
}

template <class E>
void SortElements(std::span<typename E::Stored> elements, VariantType elementType) {
  if constexpr (E::kOrder == ElementOrder::EqualsAreAlike) {
    SortAlike<E>(elements);
  } else {
    const bool hasTotalOrder = E::HasTotalOrder(elements, elementType);
    if (hasTotalOrder) {
      if (IsInOrder<E>(elements)) return;
      if constexpr (E::kOrder == ElementOrder::EqualsMayDiffer) {
        if (SortIfUnique<E>(elements)) return;
      }
    }
    QuickSort<E>(elements, hasTotalOrder);
  }
}

}  // namespace

void CVariant::SortList() {
  if (!kSortable.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::SortList",
             WrongFormat(fType, "CVariant: sort", "Sorting List", "a valid list"));
    return;
  }
  const std::uint64_t count = SizeOfList();
  if (count <= 1) return;
  DropCaches();  // first, for sorting may fail half-way
  VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E>) {
      SortElements<E>({Elements<E>(), count}, TypeInfo(fType).fBaseType);
    }
  });
}

void CVariant::SetSorted(bool sorted) {
  if (sorted == fSorted || fFrozen) return;
  fSorted = sorted;
  if (sorted) SortList();
}
