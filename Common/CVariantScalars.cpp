#include <array>
#include <cstring>

#include "Common/CVariant.h"
#include "Common/CVariantReader.h"
#include "Common/CVariantReports.h"
#include "Common/CVariantStore.h"
#include "Common/CVariantTypeTable.h"

qxSource("Common\\CVariant");

namespace {

// The types of value that a variant of each type may be declared to hold, besides its own.
// Contract: the gaps are settled. A StringList takes the scalar SSOConnector and not the list of
// them, and a MixedList takes no LongList.
struct HoldsRow {
  VariantType fType;
  VariantTypeSet fOthers;
  bool fEveryNumber;  // and whatever says of itself that it is a number
};

constexpr std::array kHoldsTable = [] {
  using enum VariantType;
  constexpr VariantTypeSet kStrings{String, IP, Regex, MediaType, SSOConnector};
  constexpr VariantTypeSet kTexts{StringList, IPList,        IPRange,
                                  RegexList,  MediaTypeList, SSOConnector};
  return std::array{
      HoldsRow{Double, TypeFamily::Numbers, false},
      HoldsRow{Long, TypeFamily::IntegerScalars, true},
      HoldsRow{Hex, TypeFamily::IntegerScalars, true},
      HoldsRow{Category, {}, true},
      HoldsRow{DLPCategory, {}, true},
      HoldsRow{String, kStrings, false},
      HoldsRow{Regex, kStrings, false},
      HoldsRow{LongList, {NumberList, Dimension, CategoryList, HexList, DLPCategoryList}, false},
      HoldsRow{HexList, {LongList, NumberList, Dimension, CategoryList}, false},
      HoldsRow{CategoryList, {LongList, NumberList, Dimension, DLPCategoryList}, false},
      HoldsRow{DLPCategoryList, {LongList, NumberList, Dimension, CategoryList}, false},
      HoldsRow{StringList, kTexts, false},
      HoldsRow{RegexList, kTexts, false},
      HoldsRow{NumberList, TypeFamily::NumberLists | VariantTypeSet{Dimension}, false},
      HoldsRow{MixedList,
               {DoubleList, DimensionList, IPRangeList, CategoryList, DLPCategoryList},
               false},
      HoldsRow{HostAndCertificateList, {HostAndCertificate}, false},
  };
}();

// A scalar is read as bytes: nothing has to be said of what object lies in the store.
template <class T>
T ReadBytes(const qzvector<char>& store) {
  T value{};
  if (store.Size() >= sizeof value) std::memcpy(&value, store.Data(), sizeof value);
  return value;
}

}  // namespace

void CVariant::SetDouble(double value) {
  NewElement<DoubleElement> element(value);
  SetElement(VariantType::Double, element);
}

double CVariant::GetDouble() const {
  if (fType != VariantType::Double) {
    qxReport(ErrorId::FormatError, "CVariant::GetDouble",
             WrongFormat(fType, "CVariant: GetDouble", "Getting Double value", "of Type Double"));
    return 0.0;
  }
  return ReadBytes<double>(fStorage);
}

void CVariant::SetLong(std::int64_t value) {
  NewElement<LongElement> element(value);
  SetElement(VariantType::Long, element);
}

void CVariant::SetLong(VariantType type, std::int64_t value) {
  if (!TypeFamily::IntegerScalars.Has(type)) {
    qxReport(ErrorId::FormatError, "CVariant::SetLong",
             WrongFormat(type, "CVariant: setLong", "Setting Long value", "of Type Long or Hex"));
    return;
  }
  NewElement<LongElement> element(value);
  SetElement(type, element);
}

std::int64_t CVariant::GetLong() const {
  if (!TypeFamily::IntegerScalars.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::GetLong",
             WrongFormat(fType, "CVariant: GetLong", "Getting Long value", "of Type Long or Hex"));
    return 0;
  }
  return ReadBytes<std::int64_t>(fStorage);
}

void CVariant::SetBool(bool value) {
  NewElement<BoolElement> element(value);
  SetElement(VariantType::Boolean, element);
}

bool CVariant::GetBool() const {
  // Contract: the one getter that takes a wrong type in silence.
  return fType == VariantType::Boolean && ReadBytes<std::uint8_t>(fStorage) != 0;
}

// ---- text

void CVariant::SetString(CStringImpl* text) {
  SetString(TypeFamily::TextScalars.Has(fType) ? fType : VariantType::String, text);
}

void CVariant::SetString(VariantType type, CStringImpl* text) {
  if (!TypeFamily::TextScalars.Has(type)) {
    qxReport(ErrorId::FormatError, "CVariant::SetString",
             WrongFormat(type, "CVariant: setString", "Setting String value",
                         "of Type String, Regex, IP or MediaType"));
    return;
  }
  VisitElements(KindOf(type), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (CanMake<E, CStringImpl*>) {
      NewElement<E> element(text);
      SetElement(type, element);
    }
  });
}

void CVariant::SetString(Selvane::IUnicodeString* text) {
  SetString(TextOf(text).Get());
}

void CVariant::SetString(VariantType type, Selvane::IUnicodeString* text) {
  SetString(type, TextOf(text).Get());
}

// The text of a type that has one; none for an empty store.
CStringPtr CVariant::ScalarText() const {
  CStringPtr text;
  VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (CanReadAs<E, CStringPtr>) {
      if (const auto* element = Scalar<E>()) E::As(*element, text);
    }
  });
  return text;
}

CStringPtr CVariant::GetText() const {
  if (!TypeFamily::TextScalars.Has(fType)) {
    qxReport(ErrorId::FormatError, "CVariant::GetString",
             WrongFormat(fType, "CVariant: GetString", "Getting String value",
                         "of Type String, Regex, IP or MediaType"));
    return nullptr;
  }
  return ScalarText();
}

Selvane::IUnicodeString* CVariant::GetString() const {
  // Contract: unlike GetText this reports nothing.
  return TypeFamily::TextScalars.Has(fType) ? NewUnicodeString(ScalarText()) : nullptr;
}

// ---- records

std::span<const AddressRecord> CVariant::Addresses() const {
  if (KindOf(fType) != ElementKind::Address) return {};
  return Elements<AddressElement>();
}

std::span<const HostRecord> CVariant::Hosts() const {
  if (KindOf(fType) != ElementKind::Host) return {};
  return Elements<HostElement>();
}

std::span<const CVariant> CVariant::Variants() const {
  if (!TypeFamily::VariantLists.Has(fType)) return {};
  return Elements<VariantElement>();
}

// ---- what may be held where

bool CVariant::CanHoldValueOf(const IVariant* other) const {
  if (!other) {
    qxReport(ErrorId::ObjNotInitialized, "CVariant::CanHoldValueOf",
             NotInitialized("CVariant: canHoldValueOf",
                            "right hand side of operator 'can hold value of'"));
    return false;
  }
  const CVariantReader reader(*other);
  if (reader.Type() == fType) return true;
  for (const HoldsRow& row : kHoldsTable) {
    if (row.fType != fType) continue;
    return row.fOthers.Has(reader.Type()) || (row.fEveryNumber && other->IsNumberType());
  }
  return false;
}
