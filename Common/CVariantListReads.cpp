#include <utility>

#include "Common/CRefVariant.h"
#include "Common/CVariant.h"
#include "Common/CVariantReader.h"
#include "Common/CVariantReports.h"
#include "Common/CVariantStore.h"
#include "Common/CVariantTypeTable.h"

qxSource("Common\\CVariant");

bool CVariant::IsListType() const {
  return TypeInfo(fType).fIsList;
}

std::uint64_t CVariant::SizeOfList() const {
  const CVariantTypeInfo& row = TypeInfo(fType);
  if (row.fIsList) return fStorage.Size() / row.fElementSize;
  const VariantMap* entries = MapEntries();
  return entries ? entries->size() : 0;
}

std::uint64_t CVariant::GetListSize() const {
  if (!IsListType() && fType != VariantType::Map) {
    qxReport(ErrorId::FormatError, "CVariant::GetListSize",
             WrongFormat(fType, "CVariant: size", "Getting list size", "a valid list"));
  }
  return SizeOfList();
}

// The element as such a value. The type is one that can be read so; false for a position out of
// range, and for an element that is none.
template <class Value>
bool CVariant::ElementAs(std::int64_t index, Value& value) const {
  if (!HasPosition(index)) return false;
  return VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E> && CanReadAs<E, Value>) {
      return E::As(Elements<E>()[static_cast<std::size_t>(index)], value);
    } else {
      return false;
    }
  });
}

std::int64_t CVariant::GetLongListElem(std::int64_t index, bool& ok) const {
  std::int64_t value = 0;
  ok = false;
  if (!kReadableAs<std::int64_t>.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::GetLongListElem",
             WrongFormat(fType, "CVariant: GetLongListElem", "Getting LongList element",
                         "of number list type"));
    return value;
  }
  // Contract: a position out of range is silent here, and reported by the next two.
  ok = ElementAs(index, value);
  return value;
}

double CVariant::GetDoubleListElem(std::int64_t index, bool& ok) const {
  double value = 0.0;
  ok = kReadableAs<double>.Has(fType) && ElementAs(index, value);
  if (!ok) {
    qxReport(ErrorId::FormatError, "CVariant::GetDoubleListElem",
             WrongFormat(fType, "CVariant: GetDoubleListElem", "Getting DoubleList element",
                         "of Type DoubleList"));
  }
  return value;
}

bool CVariant::GetBoolListElem(std::int64_t index, bool& ok) const {
  bool value = false;
  ok = kReadableAs<bool>.Has(fType) && ElementAs(index, value);
  if (!ok) {
    qxReport(ErrorId::FormatError, "CVariant::GetBoolListElem",
             WrongFormat(fType, "CVariant: GetBoolListElem", "Getting BoolList element",
                         "of bool list type"));
  }
  return value;
}

CStringPtr CVariant::GetTextListElem(std::int64_t index, bool& ok) const {
  CStringPtr text;
  ok = false;
  if (!kReadableAs<CStringPtr>.Has(fType)) return text;
  if (fType == VariantType::IPRangeList) {
    if (!HasPosition(index)) return text;
    std::string range;
    Elements<VariantElement>()[static_cast<std::size_t>(index)].AppendText(", ", range);
    text = MakeText(range);
    ok = true;
  } else {
    ok = ElementAs(index, text);
  }
  return text;
}

Selvane::IUnicodeString* CVariant::GetStringListElem(std::int64_t index, bool& ok) const {
  const CStringPtr text = GetTextListElem(index, ok);
  return ok ? NewUnicodeString(text) : nullptr;
}

// ---- elements as variants

bool CVariant::ReadElement(std::int64_t index, CVariant& out) const {
  if (!kReadableAs<CVariant>.Has(fType) || !HasPosition(index)) return false;
  return VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E>) {
      return out.CopyElement<E>(Elements<E>()[static_cast<std::size_t>(index)],
                                TypeInfo(fType).fBaseType);
    } else {
      return false;
    }
  });
}

// Makes this, an Empty variant, a copy of an element of that type.
template <class E>
bool CVariant::CopyElement(const typename E::Stored& element, VariantType type) {
  if constexpr (std::is_same_v<E, VariantElement>) {
    CopyFrom(element);
  } else if constexpr (std::is_same_v<E, NumberElement>) {
    // Each number says itself what it is.
    if (element.IsDouble()) {
      SetDouble(element.Double());
    } else if (element.IsInteger()) {
      SetLong(element.fType, element.Long());
    } else {
      return false;
    }
  } else {
    ResizeForNewValue(sizeof element);
    E::Copy(Elements<E>(), element);
    fType = type;
  }
  return true;
}

// A copy of the element for a caller behind an interface, or null.
Selvane::IVariant* CVariant::NewElementCopy(std::int64_t index, bool& ok) const {
  auto copy = MakeUseCounted<CVariant>();
  ok = ReadElement(index, *copy);
  return ok ? copy.Detach() : nullptr;
}

Selvane::IVariant* CVariant::GetMixedListElem(std::int64_t index, bool& ok) const {
  ok = false;
  if (!kReadableAs<CVariant>.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::GetMixedListElem",
             WrongFormat(fType, "CVariant: GetMixedListElem", "Getting MixedList element",
                         "of mixed list type"));
    return nullptr;
  }
  if (TypeFamily::NumberLists.Has(fType)) return GetAnyNumberListElem(index, ok);
  return NewElementCopy(index, ok);
}

CRefVariant* CVariant::GetMixedListElemRef(std::int64_t index, bool& ok) const {
  // In silence for any other type and for a position out of range.
  ok = fType == VariantType::MixedList && HasPosition(index);
  if (!ok) return nullptr;
  auto& element = Elements<VariantElement>()[static_cast<std::size_t>(index)];
  // The interface lets a reader of the list write its elements: a view of one has setters.
  return new CRefVariant(const_cast<CVariant&>(element));
}

Selvane::IVariant* CVariant::GetNumberListElem(std::int64_t index, bool& ok) const {
  ok = false;
  if (fType != VariantType::NumberList) {
    qxDebugPrint(1, "CVariant::GetNumberListElem",
                 "Wrong type for CVariant::GetNumberListElem: " << PrintedTypeName(fType));
    return nullptr;
  }
  return NewElementCopy(index, ok);
}

Selvane::IVariant* CVariant::GetAnyNumberListElem(std::int64_t index, bool& ok) const {
  ok = false;
  if (!TypeFamily::NumberLists.Has(fType)) {
    qxDebugPrint(1, "CVariant::GetAnyNumberListElem",
                 "Wrong type for CVariant::GetAnyNumberListElem: " << PrintedTypeName(fType));
    return nullptr;
  }
  return NewElementCopy(index, ok);
}
