#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "Common/CVariant.h"
#include "Common/CVariantReports.h"
#include "Common/CVariantStore.h"
#include "Common/CVariantTypeTable.h"

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

// Recurses into the shorter side and loops on the longer, which changes nothing in the result and
// keeps the depth below the logarithm of the length.
template <class E>
void QuickSort(typename E::Stored* elements, std::int64_t low, std::int64_t high) {
  while (low < high) {
    const std::int64_t middle = Partition<E>(elements, low, high);
    if (middle - low < high - middle) {
      QuickSort<E>(elements, low, middle - 1);
      low = middle + 1;
    } else {
      QuickSort<E>(elements, middle + 1, high);
      high = middle - 1;
    }
  }
}

// Sorts by the library where that must give the one result that the quicksort would give too:
// where elements that are equal are alike. False, and nothing done, where it need not.
template <class E>
bool SortIfUnique(std::span<typename E::Stored> elements) {
  std::vector<typename E::Stored> sorted(elements.begin(), elements.end());
  std::sort(sorted.begin(), sorted.end(), IsLess<E>());
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
    if (!IsInOrder<E>(elements)) std::sort(elements.begin(), elements.end(), IsLess<E>());
  } else {
    if (E::HasTotalOrder(elements, elementType)) {
      if (IsInOrder<E>(elements)) return;
      if constexpr (E::kOrder == ElementOrder::EqualsMayDiffer) {
        if (SortIfUnique<E>(elements)) return;
      }
    }
    QuickSort<E>(elements.data(), 0, static_cast<std::int64_t>(elements.size()) - 1);
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
  VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E>) {
      SortElements<E>({Elements<E>(), count}, TypeInfo(fType).fBaseType);
    }
  });
  DropCaches();
}

void CVariant::SetSorted(bool sorted) {
  if (sorted == fSorted || fFrozen) return;
  fSorted = sorted;
  if (sorted) SortList();
}
