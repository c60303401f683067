#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "Common/CVariant.h"
#include "Common/CVariantReader.h"
#include "Common/CVariantReports.h"
#include "Common/CVariantStore.h"
#include "Common/CVariantTypeTable.h"

qxSource("Common\\CVariant");

namespace {

using enum VariantType;

// List types that take a value of type T.
template <class T>
constexpr VariantTypeSet kTakes{};
template <>
constexpr VariantTypeSet kTakes<std::int64_t> =
    TypeFamily::IntegerLists | VariantTypeSet{Dimension, MixedList, NumberList};
template <>
constexpr VariantTypeSet kTakes<double>{DoubleList, MixedList, NumberList};
template <>
constexpr VariantTypeSet kTakes<bool>{BooleanList, MixedList};
template <>
constexpr VariantTypeSet kTakes<CStringImpl*> = TypeFamily::StringLists | TypeFamily::AddressLists |
                                                VariantTypeSet{MixedList, HostAndCertificateList};

// Lists out of which one element can be taken, and whose order can be turned round.
constexpr VariantTypeSet kEditable = TypeFamily::NumberLists | TypeFamily::StringLists |
                                     TypeFamily::VariantLists |
                                     VariantTypeSet{BooleanList, IPList, HostAndCertificateList};

// What an element is compared as, whether it lies in a store or travels between lists.
CStringImpl* StoredForm(const CStringPtr& text) {
  return text.Get();
}
template <class T>
T StoredForm(T element) {
  return element;
}

}  // namespace

void CVariant::FinishListChange() {
  DropCaches();
  if (fSorted) SortList();
}

void CVariant::Reserve(std::uint64_t count) {
  const CVariantTypeInfo& row = TypeInfo(fType);
  if (!row.fIsList || fFrozen) return;
  if (count > std::numeric_limits<std::uint64_t>::max() / row.fElementSize) throw std::bad_alloc();
  const std::uint64_t size = count * row.fElementSize;
  if (size <= fStorage.Capacity()) return;
  VisitElements(KindOf(fType), [&](auto kind) { GrowKeeping<decltype(kind)>(size); });
}

// ---- adding

// At the end of a list whose type takes the value.
template <class Value>
void CVariant::AppendElement(Value value) {
  VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E> && CanMake<E, Value>) {
      const std::uint64_t size = fStorage.Size() + sizeof(typename E::Stored);
      if (size > fStorage.Capacity()) {
        GrowKeeping<E>(fStorage.GrownCapacity(size, sizeof(typename E::Stored)));
      }
      E::Make(Elements<E>() + fStorage.Size() / sizeof(typename E::Stored), {value});
      fStorage.SetSize(size);
    }
  });
  FinishListChange();
}

void CVariant::AddToList(std::int64_t value) {
  if (!kTakes<std::int64_t>.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::AddToList",
             WrongFormat(fType, "CVariant: addToList", "Adding Long value to List",
                         "of Type NumberList, HexList or LongList"));
    return;
  }
  AppendElement(value);
}

void CVariant::AddToList(double value) {
  if (!kTakes<double>.Has(fType)) {
    qxReport(
        ErrorId::FormatError, "CVariant::AddToList",
        WrongFormat(fType, "CVariant: addToList", "Adding Double value", "of Type DoubleList"));
    return;
  }
  AppendElement(value);
}

void CVariant::AddToList(bool value) {
  if (!kTakes<bool>.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::AddToList",
             WrongFormat(fType, "CVariant: addToList", "Adding Boolean value to List",
                         "of Type BoolList"));
    return;
  }
  AppendElement(value);
}

void CVariant::AddToList(CStringImpl* value) {
  if (!kTakes<CStringImpl*>.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::AddToList",
             WrongFormat(fType, "CVariant: addToList", "Adding String value to List",
                         "of Type StringList"));
    return;
  }
  AppendElement(value);
}

void CVariant::AddToList(Selvane::IUnicodeString* value) {
  AddToList(TextOf(value).Get());
}

void CVariant::AddToList(const IVariant* value) {
  if (!value) {
    qxReport(ErrorId::ObjNotInitialized, "CVariant::AddToList",
             NotInitialized("CVariant: addToList", "right hand side of operator 'add to list'"));
    return;
  }
  AddVariant(*value, "CVariant::AddToList", "CVariant: AddToList");
}

void CVariant::AddToList_Ref(const IVariant& value) {
  AddVariant(value, "CVariant::AddToList_Ref", "CVariant: AddToList_Ref");
}

void CVariant::AddVariant(const IVariant& value, const char* function, const char* onPosition) {
  // Contract: a list of variants takes any of them, whatever its own elements are.
  if (TypeFamily::VariantLists.Has(fType)) {
    CVariant copy;  // made before the list grows, for the value may be an element of it
    copy.Assign(&value);
    AppendElement(&copy);
    return;
  }
  const CVariantReader reader(value);
  const VariantType type = reader.Type();
  if (type == Double) {
    AddToList(value.GetDouble());
  } else if (TypeFamily::IntegerScalars.Has(type)) {
    AddToList(value.GetLong());
  } else if (TypeFamily::TextScalars.Has(type)) {
    AddToList(reader.Text().Get());
  } else {
    // Contract: so is a Boolean, even on a BooleanList.
    qxReport(ErrorId::UnknownType, function, UnknownElementType(onPosition, fType, type));
  }
}

// ---- replacing

// On a list whose type takes the value. Contract: the list kind in the report is the overload's,
// not this list's.
template <class Value>
void CVariant::ReplaceElement(std::int64_t index, Value value, const char* objName) {
  if (!HasPosition(index)) {
    qxReport(ErrorId::IndexOutOfBounds, "CVariant::SetListElem",
             {{"onPosition", "CVariant: setListElem"}, {"objName", objName}, {"pos", index}});
    return;
  }
  VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E> && CanMake<E, Value>) {
      NewElement<E> made(value);
      auto& element = Elements<E>()[index];
      E::Destroy(element);
      made.MoveTo(&element);
    }
  });
  FinishListChange();
}

void CVariant::SetListElem(std::int64_t index, std::int64_t value) {
  if (!kTakes<std::int64_t>.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::SetListElem",
             WrongFormat(fType, "CVariant: setListElem", "Setting Long to NumberList",
                         "of number list type"));
    return;
  }
  ReplaceElement(index, value, "LongList element");
}

void CVariant::SetListElem(std::int64_t index, double value) {
  if (!kTakes<double>.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::SetListElem",
             WrongFormat(fType, "CVariant: setListElem", "Setting Double to DoubleList",
                         "of Type DoubleList"));
    return;
  }
  ReplaceElement(index, value, "DoubleList element");
}

void CVariant::SetListElem(std::int64_t index, bool value) {
  if (!kTakes<bool>.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::SetListElem",
             WrongFormat(fType, "CVariant: setListElem", "Setting Bool to BoolList",
                         "of Type BoolList"));
    return;
  }
  ReplaceElement(index, value, "BoolList element");
}

void CVariant::SetListElem(std::int64_t index, CStringImpl* value) {
  if (!kTakes<CStringImpl*>.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::SetListElem",
             WrongFormat(fType, "CVariant: setListElem", "Setting String to StringList",
                         "of Type StringList"));
    return;
  }
  ReplaceElement(index, value, "StringList element");
}

void CVariant::SetListElem(std::int64_t index, Selvane::IUnicodeString* value) {
  SetListElem(index, TextOf(value).Get());
}

void CVariant::SetListElem(std::int64_t index, const IVariant* value) {
  if (!value) {
    qxReport(
        ErrorId::ObjNotInitialized, "CVariant::SetListElem",
        NotInitialized("CVariant: setListElem", "right hand side of operator 'set list element'"));
    return;
  }
  if (TypeFamily::VariantLists.Has(fType)) {
    CVariant copy;
    copy.Assign(value);
    ReplaceElement(index, &copy, "MixedList element");
    return;
  }
  const CVariantReader reader(*value);
  const VariantType type = reader.Type();
  if (type == Double) {
    SetListElem(index, value->GetDouble());
  } else if (TypeFamily::IntegerScalars.Has(type)) {
    SetListElem(index, value->GetLong());
  } else if (TypeFamily::TextScalars.Has(type)) {
    SetListElem(index, reader.Text().Get());
  } else {
    qxReport(ErrorId::UnknownType, "CVariant::SetListElem",
             UnknownElementType("CVariant: setListElem", fType, type));
  }
}

// ---- taking away, turning round

void CVariant::Erase(std::int64_t index) {
  if (!kEditable.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::Erase",
             WrongFormat(fType, "CVariant: erase", "Erasing list element", "a valid list type"));
    return;
  }
  if (!HasPosition(index)) return;
  VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    auto* const element = Elements<E>() + index;
    auto* const end = Elements<E>() + fStorage.Size() / sizeof *element;
    E::Destroy(*element);
    RelocateElements<E>(element, element + 1, static_cast<std::uint64_t>(end - element - 1));
    fStorage.SetSize(fStorage.Size() - sizeof *element);
  });
  DropCaches();
}

bool CVariant::ReverseList() {
  if (!kEditable.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::ReverseList",
             WrongFormat(fType, "CVariant: reverse", "Reversing List", "a valid list"));
    return false;
  }
  // Contract: a list that is kept sorted has one order only, and says that it was reversed.
  if (fSorted) return true;

  const std::uint64_t count = SizeOfList();
  VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    auto* const elements = Elements<E>();
    for (std::uint64_t i = 0; i < count / 2; ++i) {
      SwapElements<E>(elements[i], elements[count - 1 - i]);
    }
  });
  // Contract: the index is turned round, its element numbers are not. It no longer fits, and stays
  // so until the next change.
  if (std::uint64_t* index = fIndex.load(std::memory_order_relaxed)) {
    std::reverse(index, index + count);
  }
  DropRegexHolder();
  fHash.store(0, std::memory_order_relaxed);
  return true;
}

// ---- list with list

// The elements of other that can be read as what lists of the kind take; false when there cannot be
// so many. They all are read before a caller changes anything, since other may be this list, a view
// of it, or of an element of it.
template <class E>
bool CVariant::ReadJoined(const CVariantReader& other, std::vector<typename E::Joined>& elements) {
  const auto count = other.Count();
  if (!count) return false;
  if (other.Peer()) elements.reserve(static_cast<std::size_t>(*count));
  for (std::int64_t i = 0; i < *count; ++i) {
    typename E::Joined element{};
    if (other.Read(i, element)) elements.push_back(std::move(element));
  }
  return true;
}

// Whether elements of the other type can be read as what this list's kind takes.
bool CVariant::CanJoin(VariantType other) const {
  if (fType == Dimension) return false;
  return VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E>) {
      return kReadableAs<typename E::Joined>.Has(other);
    } else {
      return false;
    }
  });
}

void CVariant::AddJoined(const TNumber& value) {
  if (value.IsDouble()) {
    AddToList(value.Double());
  } else {
    AddToList(value.Long());
  }
}

void CVariant::AddJoined(CVariant&& value) {
  if (TypeFamily::VariantLists.Has(fType)) {
    AppendElement(&value);
  } else {
    AddToList_Ref(value);
  }
}

bool CVariant::JoinLists(const IVariant* other) {
  if (!other) {
    qxReport(ErrorId::ObjNotInitialized, "CVariant::JoinLists",
             NotInitialized("CVariant: joinLists", "right hand side of operator 'join lists'"));
    return false;
  }
  const CVariantReader reader(*other);
  for (const VariantType type : {fType, reader.Type()}) {
    if (IsKnownType(type) && TypeInfo(type).fIsList) continue;
    qxReport(ErrorId::FormatError, "CVariant::JoinLists",
             WrongFormat(type, "CVariant: JoinLists", "Merging Lists", "a valid list"));
    return false;
  }
  if (!CanJoin(reader.Type())) {
    qxReport(
        ErrorId::ErrorDuringOperation, "CVariant::JoinLists",
        FailedOperation("CVariant: JoinLists", "Variant", UnsupportedTypes(fType, reader.Type())));
    return false;
  }
  return AddElementsOf(reader);
}

// Adds each element of other that this list's kind can read.
bool CVariant::AddElementsOf(const CVariantReader& other) {
  return VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E>) {
      std::vector<typename E::Joined> elements;
      if (!ReadJoined<E>(other, elements)) return false;
      Reserve(SizeOfList() + elements.size());
      // One sort does for all where nobody can tell equal elements apart; with room for them,
      // adding them does not throw.
      const bool isSortedLast = E::kOrder == ElementOrder::EqualsAreAlike && !elements.empty();
      const bool wasSorted = fSorted;
      if (isSortedLast) fSorted = false;
      for (auto&& element : elements) {
        AddJoined(static_cast<typename E::Joined>(std::move(element)));
      }
      if (isSortedLast) SetSorted(wasSorted);
      return true;
    } else {
      return false;
    }
  });
}

// Takes out what is equal to one of the values, in one walk: such elements are found by their
// order.
template <class E>
void CVariant::EraseAlike(std::vector<typename E::Joined>& values) {
  const auto isLess = [](const auto& left, const auto& right) {
    return !E::IsLessOrEqual(StoredForm(right), StoredForm(left));
  };
  std::sort(values.begin(), values.end(), isLess);
  const std::uint64_t count = SizeOfList();
  auto* const elements = Elements<E>();
  std::uint64_t kept = 0;
  for (std::uint64_t i = 0; i < count; ++i) {
    if (std::binary_search(values.begin(), values.end(), elements[i], isLess)) {
      E::Destroy(elements[i]);
    } else {
      elements[kept++] = elements[i];
    }
  }
  if (kept == count) return;
  fStorage.SetSize(kept * sizeof *elements);
  DropCaches();
}

std::int64_t CVariant::FindJoined(std::int64_t start, const TNumber& value) const {
  return value.IsDouble() ? FindFrom(start, value.Double()) : FindFrom(start, value.Long());
}

bool CVariant::EraseFromList(const IVariant* other) {
  if (!other) {
    qxReport(
        ErrorId::ObjNotInitialized, "CVariant::EraseFromList",
        NotInitialized("CVariant: EraseFromList", "right hand side of operator 'erase from list'"));
    return false;
  }
  const CVariantReader reader(*other);
  if (!kEditable.Has(fType) || !CanJoin(reader.Type())) {
    // Contract: the misspelt position.
    qxReport(ErrorId::ErrorDuringOperation, "CVariant::EraseFromList",
             FailedOperation("CVariant: eraseFronList", "operator 'EraseFromList' of Variant",
                             UnsupportedTypes(fType, reader.Type())));
    return false;
  }
  return VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E>) {
      std::vector<typename E::Joined> elements;
      if (!ReadJoined<E>(reader, elements)) return false;
      if constexpr (E::kOrder == ElementOrder::EqualsAreAlike) {
        EraseAlike<E>(elements);
      } else {
        for (const auto& value : elements) {
          for (auto at = FindJoined(0, value); at >= 0; at = FindJoined(at, value)) Erase(at);
        }
      }
      return true;
    } else {
      return false;
    }
  });
}

bool CVariant::SetListFromArray(VariantType type, const void* data, std::uint64_t size) {
  constexpr std::uint64_t kItem = 8;  // a long, or a pointer to a text
  static_assert(sizeof(std::int64_t) == kItem && sizeof(const char*) == kItem);
  if (type != LongList && type != StringList) return false;
  if (size % kItem != 0 || (!data && size != 0) || fFrozen) return false;

  CVariant list(type);
  list.Reserve(size / kItem);
  if (type == LongList) {
    if (size) std::memcpy(list.fStorage.Data(), data, size);
    list.fStorage.SetSize(size);
  } else {
    const auto* texts = static_cast<const char* const*>(data);
    for (std::uint64_t i = 0; i < size / kItem; ++i) {
      list.AppendElement(MakeText(texts[i] ? texts[i] : "").Get());
    }
  }
  TakeFrom(list);
  return true;
}
