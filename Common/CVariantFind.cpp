#include <algorithm>
#include <memory>
#include <numeric>

#include "Common/CVariant.h"
#include "Common/CVariantReader.h"
#include "Common/CVariantReports.h"
#include "Common/CVariantStore.h"
#include "Common/CVariantTypeTable.h"

qxSource("Common\\CVariant");

namespace {

using enum VariantType;

constexpr std::uint64_t kIndexedSize = 65;     // elements from which on searches are counted
constexpr std::uint32_t kIndexingLookup = 10;  // the search that builds the index

// List types that are searched for a value of type T.
template <class T>
constexpr VariantTypeSet kSearched{};
template <>
constexpr VariantTypeSet kSearched<std::int64_t> =
    TypeFamily::NumberLists | VariantTypeSet{Dimension};
template <>
constexpr VariantTypeSet kSearched<double>{DoubleList, NumberList};
template <>
constexpr VariantTypeSet kSearched<bool>{BooleanList, MixedList};
template <>
constexpr VariantTypeSet kSearched<AddressRecord> = TypeFamily::AddressLists;
template <>
constexpr VariantTypeSet kSearched<CStringImpl*> =
    TypeFamily::StringLists | TypeFamily::AddressLists;

// First position from start on whose element satisfies the test, or -1.
template <class Stored, class Test>
std::int64_t FirstFrom(std::span<const Stored> elements, std::int64_t start, Test test) {
  // As an unsigned number a start below 0 lies beyond every end.
  const auto begin = std::min<std::uint64_t>(static_cast<std::uint64_t>(start), elements.size());
  const auto found =
      std::find_if(elements.begin() + static_cast<std::ptrdiff_t>(begin), elements.end(), test);
  return found == elements.end() ? -1 : found - elements.begin();
}

// The first entry of an ordered index that is not before, by the test.
//
// Perf: CVariant_FindIndexed. A step waits for memory, three times in a row, so the elements of
// both places where the search may look next are asked for while this one is compared.
template <class E, class IsBefore>
const std::uint64_t* FirstNotBefore(std::span<const typename E::Stored> elements,
                                    const std::uint64_t* index, IsBefore isBefore) {
  std::uint64_t low = 0, count = elements.size();  // the answer is in [low, low + count]
  while (count > 0) {
    const std::uint64_t half = count / 2, middle = low + half;
    const std::uint64_t rest = count - half - 1;
    if (rest > 0) {
      E::Prefetch(elements[index[low + half / 2]]);
      E::Prefetch(elements[index[middle + 1 + rest / 2]]);
    }
    if (isBefore(index[middle])) {
      low = middle + 1;
      count = rest;
    } else {
      count = half;
    }
  }
  return index + low;
}

// The index lists element numbers in the order of the elements, equal ones by their number. The run
// of those that are equal in order to the wanted one, and not before start, is looked through for
// one that is equal indeed: IPv6 addresses may be ordered alike and differ.
//
// An index that was turned round answers anything in range, or -1.
template <class E>
std::int64_t FindIndexed(std::span<const typename E::Stored> elements, const std::uint64_t* index,
                         std::uint64_t start, const typename E::Stored& wanted) {
  const auto isBefore = [&](std::uint64_t number) {
    if (!E::IsLessOrEqual(wanted, elements[number])) return true;
    return number < start && E::IsLessOrEqual(elements[number], wanted);
  };
  const std::uint64_t* const end = index + elements.size();
  const std::uint64_t* entry = FirstNotBefore<E>(elements, index, isBefore);
  for (; entry != end && E::IsLessOrEqual(elements[*entry], wanted); ++entry) {
    if (*entry >= start && E::IsEqual(elements[*entry], wanted)) {
      return static_cast<std::int64_t>(*entry);
    }
  }
  return -1;
}

}  // namespace

template <class E>
std::int64_t CVariant::FindElement(std::int64_t start, const typename E::Stored& wanted) const {
  return FirstFrom(Elements<E>(), start,
                   [&](const auto& element) { return E::IsEqual(element, wanted); });
}

// ---- the index

// Counts a search of a long list; the tenth builds the index. The count is never reset, so that a
// list which is changed afterwards is searched one by one for good.
template <class E>
void CVariant::CountLookup() const {
  std::uint32_t count = fLookupCount.load(std::memory_order_relaxed);
  do {
    if (count == kIndexingLookup) return;
  } while (!fLookupCount.compare_exchange_weak(count, count + 1, std::memory_order_relaxed));
  if (count + 1 == kIndexingLookup) BuildIndex<E>();
}

// An index only saves time, so one that cannot be made is none.
template <class E>
void CVariant::BuildIndex() const {
  if (fIndex.load(std::memory_order_acquire)) return;
  const auto elements = Elements<E>();
  std::unique_ptr<std::uint64_t[]> index;
  try {
    index.reset(new std::uint64_t[elements.size()]);
    std::uint64_t* const end = index.get() + elements.size();
    std::iota(index.get(), end, std::uint64_t{0});
    std::sort(index.get(), end, [&](std::uint64_t left, std::uint64_t right) {
      if (!E::IsLessOrEqual(elements[right], elements[left])) return true;
      return left < right && E::IsLessOrEqual(elements[left], elements[right]);
    });
  } catch (...) {  // protects a search, which needs no index, from texts that cannot be converted
    return;
  }
  std::uint64_t* none = nullptr;  // a loser's index goes with the pointer
  if (fIndex.compare_exchange_strong(none, index.get(), std::memory_order_acq_rel)) {
    index.release();
  }
}

template <class E>
std::int64_t CVariant::FindCounted(std::int64_t start, const typename E::Stored& wanted) const {
  const auto elements = Elements<E>();
  if (elements.size() >= kIndexedSize) CountLookup<E>();
  if (static_cast<std::uint64_t>(start) >= elements.size()) return -1;
  if (const std::uint64_t* index = fIndex.load(std::memory_order_acquire)) {
    return FindIndexed<E>(elements, index, static_cast<std::uint64_t>(start), wanted);
  }
  return FindElement<E>(start, wanted);
}

// ---- by value

std::int64_t CVariant::FindFrom(std::int64_t start, std::int64_t value) const {
  if (!kSearched<std::int64_t>.Has(fType)) {
    qxReport(
        ErrorId::FormatError, "CVariant::Find",
        WrongFormat(
            fType, "CVariant: find", "Finding Long value in List",
            "of Type IntList, NumberList, CategoryList, DLPCategoryList, HexList or LongList"));
    return -1;
  }
  if (fType == DoubleList) return FindFrom(start, static_cast<double>(value));
  if (fType == NumberList) return FindElement<NumberElement>(start, TNumber::Of(value));
  return FindElement<LongElement>(start, value);
}

std::int64_t CVariant::FindFrom(std::int64_t start, double value) const {
  if (!kSearched<double>.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::Find",
             WrongFormat(fType, "CVariant: find", "Finding Double value in DoubleList",
                         "of Type DoubleList"));
    return -1;
  }
  if (fType == NumberList) return FindElement<NumberElement>(start, TNumber::Of(value));
  return FindElement<DoubleElement>(start, value);
}

std::int64_t CVariant::FindFrom(std::int64_t start, bool value) const {
  if (!kSearched<bool>.Has(fType)) {
    qxReport(
        ErrorId::FormatError, "CVariant::Find",
        WrongFormat(fType, "CVariant: find", "Finding Boolean value in List", "of Type BoolList"));
    return -1;
  }
  const auto isWanted = [value]<class E>(E, const typename E::Stored& element) {
    bool found = false;
    return E::As(element, found) && found == value;
  };
  if (fType == MixedList) {
    return FirstFrom(Elements<VariantElement>(), start,
                     [&](const CVariant& element) { return isWanted(VariantElement{}, element); });
  }
  return FirstFrom(Elements<BoolElement>(), start,
                   [&](std::uint8_t element) { return isWanted(BoolElement{}, element); });
}

std::int64_t CVariant::FindFrom(std::int64_t start, CStringImpl* value) const {
  if (!kSearched<CStringImpl*>.Has(fType)) {
    qxReport(
        ErrorId::FormatError, "CVariant::Find",
        WrongFormat(fType, "CVariant: find", "Finding String value in List", "of Type StringList"));
    return -1;
  }
  if (TypeFamily::AddressLists.Has(fType)) return FindFrom(start, ParseAddress(Utf8Of(value)));
  return FindCounted<TextElement>(start, value);
}

std::int64_t CVariant::FindFrom(std::int64_t start, const AddressRecord& value) const {
  if (!kSearched<AddressRecord>.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::Find",
             WrongFormat(fType, "CVariant: find", "Finding IP value in List", "of Type IPList"));
    return -1;
  }
  return FindCounted<AddressElement>(start, value);
}

std::int64_t CVariant::FindFrom(std::int64_t start, const IVariant* value) const {
  if (!value) {
    qxReport(ErrorId::ObjNotInitialized, "CVariant::Find",
             NotInitialized("CVariant: find", "right hand side of operator 'find'"));
    return -1;
  }
  const CVariantReader reader(*value);
  const VariantType type = reader.Type();
  if (TypeFamily::VariantLists.Has(fType)) {
    // What is many values behind an interface is read once, and not by each element.
    CVariant copy;
    if (!reader.Peer() && IsKnownType(type) && (TypeInfo(type).fIsList || type == Map)) {
      copy.Assign(value);
      value = &copy;
    }
    return FirstFrom(Variants(), start,
                     [&](const CVariant& element) { return element.IsEqual(value); });
  }
  if (type == Double) return FindFrom(start, value->GetDouble());
  if (type == Boolean) return FindFrom(start, value->GetBool());
  if (TypeFamily::IntegerScalars.Has(type)) return FindFrom(start, value->GetLong());
  if (TypeFamily::StringScalars.Has(type)) return FindFrom(start, reader.Text().Get());
  if (type == IP) {
    if (reader.Peer() && !reader.Peer()->Addresses().empty()) {
      return FindFrom(start, reader.Peer()->Addresses().front());
    }
    return FindFrom(start, reader.Text().Get());
  }
  qxReport(ErrorId::UnknownType, "CVariant::Find",
           UnknownElementType("CVariant: find", fType, type));
  return -1;
}

// ---- the interface's forms

std::int64_t CVariant::Find(std::int64_t value) const {
  return FindFrom(0, value);
}

std::int64_t CVariant::Find(double value) const {
  return FindFrom(0, value);
}

std::int64_t CVariant::Find(bool value) const {
  return FindFrom(0, value);
}

std::int64_t CVariant::Find(Selvane::IUnicodeString* value) const {
  return FindFrom(0, TextOf(value).Get());
}

std::int64_t CVariant::Find(const IVariant* value) const {
  return FindFrom(0, value);
}

std::int64_t CVariant::Find(Selvane::IUnicodeString* value, std::int64_t start) const {
  return FindFrom(start, TextOf(value).Get());
}
