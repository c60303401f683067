// Equality, order, and whether a list has what another value is.

#include <algorithm>
#include <concepts>
#include <utility>

#include "Common/CRegex.h"
#include "Common/CUnicodeString.h"
#include "Common/CVariant.h"
#include "Common/CVariantReader.h"
#include "Common/CVariantReports.h"
#include "Common/CVariantStore.h"
#include "Common/CVariantTypeTable.h"

qxSource("Common\\CVariant");

namespace {

using enum VariantType;

template <class T>
std::int32_t Order(const T& left, const T& right) {
  return left < right ? -1 : (right < left ? 1 : 0);
}

// The whole address, unlike the order of lists and ranges. IPv4 before IPv6.
std::int32_t OrderOfAddresses(const AddressRecord& left, const AddressRecord& right) {
  if (left.fIsIPv6 != right.fIsIPv6) return left.fIsIPv6 ? 1 : -1;
  if (!left.fIsIPv6) {
    return Order(static_cast<std::uint32_t>(left.fLow), static_cast<std::uint32_t>(right.fLow));
  }
  const std::int32_t byHigh = Order(left.fHigh, right.fHigh);
  return byHigh ? byHigh : Order(left.fLow, right.fLow);
}

TNumber NumberOf(const Selvane::IVariant& value) {
  return value.GetType() == Double ? TNumber::Of(value.GetDouble()) : TNumber::Of(value.GetLong());
}

// Whether one is an address and the other one a text.
bool AreAddressAndText(VariantType left, VariantType right) {
  return (left == IP && TypeFamily::StringScalars.Has(right)) ||
         (right == IP && TypeFamily::StringScalars.Has(left));
}

bool AreBoth(VariantTypeSet family, VariantType left, VariantType right) {
  return family.Has(left) && family.Has(right);
}

CErrorParameters CannotCompare(VariantType self, VariantType other) {
  return FailedOperation("CVariant: compare", "operator 'less than' of Variant",
                         UnsupportedTypes(self, other));
}

// What can be looked for in a list that is not one of whole variants.
constexpr VariantTypeSet kSoughtValues =
    TypeFamily::Numbers | TypeFamily::StringScalars | VariantTypeSet{Boolean, IP};

// Lists that an expression is run over; on any other its text is looked for.
constexpr VariantTypeSet kMatchedLists{StringList, MediaTypeList, SSOConnectorList};

// Lists that are searched for the elements of another one of their type.
constexpr VariantTypeSet kSearchedByElement =
    TypeFamily::StringLists | TypeFamily::VariantLists | VariantTypeSet{BooleanList, IPList};

struct ShareNames {
  const char* fFunction;
  const char* fOnPosition;
  const char* fObjName;
};

const ShareNames& NamesOf(CVariant::Share share) {
  static constexpr ShareNames kAll{"CVariant::ContainsAll", "CVariant: containsAll",
                                   "operator 'containsAll' of Variant"};
  static constexpr ShareNames kAtLeastOne{"CVariant::ContainsAtLeastOne",
                                          "CVariant: containsAtLeastOne",
                                          "operator 'containsAtLeastOne' of Variant"};
  return share == CVariant::Share::All ? kAll : kAtLeastOne;
}

// The address of an IP, or the one that a text is read as.
AddressRecord AddressOf(const CVariantReader& value) {
  if (value.Peer()) return value.Peer()->Addresses().front();
  return ParseAddress(Utf8Of(value.Text().Get()));
}

}  // namespace

// ---- elements of the other side

// Calls use with an element of a list of kind E. A foreign one is read through its interface as
// what elements of the kind travel as. False when there is none, else what use answers.
template <class E, class Use>
bool CVariant::WithElement(const CVariantReader& list, std::int64_t index, Use use) {
  if (const CVariant* peer = list.Peer()) {
    const auto elements = peer->Elements<E>();
    const auto position = static_cast<std::uint64_t>(index);
    return position < elements.size() && use(elements[position]);
  }
  typename E::Joined value{};
  if (!list.Read(index, value)) return false;
  if constexpr (std::is_same_v<E, TextElement>) {
    return use(value.Get());
  } else if constexpr (std::is_same_v<E, AddressElement>) {
    return use(ParseAddress(Utf8Of(value.Get())));
  } else if constexpr (std::is_same_v<E, HostElement>) {
    return !value.Hosts().empty() && use(value.Hosts().front());
  } else {
    static_assert(std::convertible_to<const typename E::Joined&, const typename E::Stored&>);
    return use(value);
  }
}

// An element of one of the number lists.
bool CVariant::ReadNumber(const CVariantReader& list, std::int64_t index, TNumber& number) {
  const auto take = [&number](const auto& element) {
    if constexpr (requires { TNumber::Of(element); }) {
      number = TNumber::Of(element);
    } else {
      number = element;
    }
    return true;
  };
  if (list.Type() == DoubleList) return WithElement<DoubleElement>(list, index, take);
  if (list.Type() == NumberList) return WithElement<NumberElement>(list, index, take);
  return WithElement<LongElement>(list, index, take);
}

// ---- equality

bool CVariant::IsEqual(const IVariant* other) const {
  if (!other) {
    qxReport(ErrorId::ObjNotInitialized, "CVariant::IsEqual",
             NotInitialized("CVariant: eq", "right hand side of operator 'equals'."));
    return false;
  }
  return IsEqualTo(CVariantReader(*other));
}

bool CVariant::IsEqual(const CVariant& other) const {
  return IsEqualTo(CVariantReader(other));
}

bool CVariant::IsEqualTo(const CVariantReader& other) const {
  if (IsNumberType() && other.Source().IsNumberType()) {
    return DoNumberComparison(other.Source(), NumberRelation::Equal);
  }
  const VariantType type = other.Type();
  // Contract: an address and a text meet behind the interface alone, and then as texts.
  if (!other.Peer() && AreAddressAndText(fType, type)) {
    return TextElement::IsEqual(GetText().Get(), other.Text().Get());
  }
  if (fType != type && AreBoth(TypeFamily::NumberLists, fType, type)) return AreNumbersEqual(other);
  if ((fType != type && !AreBoth(TypeFamily::StringScalars, fType, type)) || fType == Empty) {
    qxReport(ErrorId::ErrorDuringOperation, "CVariant::IsEqual",
             FailedOperation("CVariant: eq", "operator 'equals' of Variant",
                             UnsupportedTypes(fType, type)));
    return false;
  }
  const bool isOne = OwnsVariants() || !IsListType();
  if (isOne && other.Peer()) return IsSameValue(*other.Peer());
  if (IsListType()) return AreElementsEqual(other);
  CVariant copy;
  copy.Assign(&other.Source());
  return KindOf(copy.fType) == KindOf(fType) && IsSameValue(copy);
}

// Of a scalar, or of what holds variants, of the same kind.
bool CVariant::IsSameValue(const CVariant& other) const {
  if (OwnsVariants()) return AreVariantsEqual(other);
  return VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E>) {
      const auto* mine = Scalar<E>();
      const auto* others = other.Scalar<E>();
      return mine && others && E::IsEqual(*mine, *others);
    } else {
      return false;
    }
  });
}

// Of lists of the same type.
bool CVariant::AreElementsEqual(const CVariantReader& other) const {
  if (other.Size() != SizeOfList()) return false;
  return VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E>) {
      const auto elements = Elements<E>();
      if (other.Peer()) {
        return std::equal(elements.begin(), elements.end(), other.Peer()->Elements<E>().begin(),
                          E::IsEqual);
      }
      std::int64_t i = 0;
      return std::all_of(elements.begin(), elements.end(), [&](const auto& mine) {
        return WithElement<E>(other, i++,
                              [&mine](const auto& element) { return E::IsEqual(mine, element); });
      });
    } else {
      return false;
    }
  });
}

// Of number lists of different types.
bool CVariant::AreNumbersEqual(const CVariantReader& other) const {
  if (other.Size() != SizeOfList()) return false;
  const CVariantReader self(*this);
  const auto count = static_cast<std::int64_t>(SizeOfList());
  for (std::int64_t i = 0; i < count; ++i) {
    TNumber left{}, right{};
    if (!ReadNumber(self, i, left) || !ReadNumber(other, i, right)) return false;
    if (!NumberElement::IsEqual(left, right)) return false;
  }
  return true;
}

bool CVariant::DoNumberComparison(const IVariant& other, NumberRelation relation) const {
  if (!IsNumberType()) {
    qxReport(ErrorId::ErrorDuringOperation, "CVariant::DoNumberComparison",
             FailedOperation("CVariant: doNumberComparison", "number types of Variant",
                             UnsupportedTypes(fType, other.GetType())));
    return false;
  }
  if (!TypeFamily::Numbers.Has(other.GetType())) {
    qxReport(ErrorId::FormatError, "CVariant::DoNumberComparison",
             WrongFormat(other.GetType(), "CVariant: doNumberComparison", "calling", "Number"));
    return false;
  }
  const TNumber left = NumberOf(*this), right = NumberOf(other);
  if (relation == NumberRelation::Equal) return NumberElement::IsEqual(left, right);
  if (left.IsInteger() && right.IsInteger()) return left.Long() < right.Long();
  return left.Double() < right.Double();
}

// ---- order

std::int32_t CVariant::Compare(const IVariant* other) const {
  if (!other) {
    qxReport(ErrorId::ObjNotInitialized, "CVariant::Compare",
             NotInitialized("CVariant: lt", "right hand side of operator 'less than'."));
    return 0;
  }
  return CompareTo(CVariantReader(*other));
}

std::int32_t CVariant::Compare(const CVariant& other) const {
  return CompareTo(CVariantReader(other));
}

std::int32_t CVariant::CompareTo(const CVariantReader& other) const {
  if (IsNumberType() && other.Source().IsNumberType()) {
    if (DoNumberComparison(other.Source(), NumberRelation::Equal)) return 0;
    return DoNumberComparison(other.Source(), NumberRelation::Less) ? -1 : 1;
  }
  const VariantType type = other.Type();
  const bool isForeign = !other.Peer();
  if (fType == IP || fType == IPRange) return CompareAddresses(other);
  if (AreBoth(TypeFamily::StringScalars, fType, type) ||
      (isForeign && AreAddressAndText(fType, type))) {
    return CompareHandles(GetText().Get(), other.Text().Get());
  }
  if (fType == type) {
    if (fType == Boolean) return Order(GetBool(), other.Source().GetBool());
    // Contract: a CategoryList has an order behind the interface alone.
    if (fType == Dimension || (fType == CategoryList && isForeign)) return CompareLongs(other);
    if (fType == MixedList) {
      return isForeign ? CompareForeignVariants(other) : CompareVariants(*other.Peer());
    }
  }
  qxReport(ErrorId::ErrorDuringOperation, "CVariant::Compare", CannotCompare(fType, type));
  return 0;
}

// The shorter list first; of equally long ones the first difference decides.
std::int32_t CVariant::CompareLongs(const CVariantReader& other) const {
  if (const std::int32_t byLength = Order(SizeOfList(), other.Size())) return byLength;
  std::int64_t i = 0;
  for (const std::int64_t mine : Elements<LongElement>()) {
    std::int64_t value = 0;
    other.Read(i++, value);
    if (const std::int32_t order = Order(mine, value)) return order;
  }
  return 0;
}

// The first difference decides, then the length.
std::int32_t CVariant::CompareForeignVariants(const CVariantReader& other) const {
  const auto elements = Variants();
  const std::uint64_t common = std::min<std::uint64_t>(elements.size(), other.Size());
  for (std::uint64_t i = 0; i < common; ++i) {
    std::int32_t order = 1;  // of something to nothing
    WithElement<VariantElement>(other, static_cast<std::int64_t>(i), [&](const CVariant& element) {
      order = elements[i].Compare(element);
      return true;
    });
    if (order) return order;
  }
  return Order<std::uint64_t>(elements.size(), other.Size());
}

// Of an IP or IPRange.
std::int32_t CVariant::CompareAddresses(const CVariantReader& other) const {
  const VariantType type = other.Type();
  // Contract: a foreign text counts as the address that it is read as.
  if (type != fType && (other.Peer() || !AreAddressAndText(fType, type))) {
    qxReport(ErrorId::UnknownType, "CVariant::Compare",
             {{"onPosition", "CVariant: compare"},
              {"typeName", PrintedTypeName(IPRange)},  // Contract: whatever this is
              {"objName", "Variant"},
              {"reason", UnsupportedTypes(fType, type)}});
    return 0;
  }
  const CVariantReader self(*this);
  if (fType == IP) return OrderOfAddresses(AddressOf(self), AddressOf(other));
  const auto mine = self.Bounds();
  const auto bounds = other.Bounds();
  if (SizeOfList() != 2 || other.Size() != 2 || !mine || !bounds) {
    qxReport(ErrorId::ErrorDuringOperation, "CVariant::Compare", CannotCompare(fType, type));
    return 0;
  }
  const std::int32_t byLow = OrderOfAddresses(mine->fLow, bounds->fLow);
  return byLow ? byLow : OrderOfAddresses(mine->fHigh, bounds->fHigh);
}

// ---- membership

// The element found, for a caller that asks for it.
void CVariant::DeliverElement(std::int64_t position, IVariant* outElement) const {
  CVariant element;
  if (outElement && ReadElement(position, element)) outElement->Assign(&element);
}

bool CVariant::Contains(const IVariant* other, IVariant* outElement) const {
  if (!other) {
    qxReport(ErrorId::ObjNotInitialized, "CVariant::Contains",
             NotInitialized("CVariant: contains", "right hand side of operator 'contains'."));
    return false;
  }
  const std::int64_t position = FindContained(CVariantReader(*other));
  if (position < 0) return false;
  DeliverElement(position, outElement);
  return true;
}

std::int64_t CVariant::FindContained(const CVariantReader& wanted) const {
  const VariantType type = wanted.Type();
  const bool isSought = TypeFamily::VariantLists.Has(fType) || kSoughtValues.Has(type);
  if (!IsListType() || !isSought) {
    qxReport(ErrorId::ErrorDuringOperation, "CVariant::Contains",
             FailedOperation("CVariant: contains", "operator 'contains' of Variant",
                             "Error: unsupported type-combination for 'contains()'! ListType: " +
                                 std::string(PrintedTypeName(fType)) +
                                 ", ElementType: " + PrintedTypeName(type)));
    return -1;
  }
  if (type == Double && (TypeFamily::IntegerLists.Has(fType) || fType == Dimension)) {
    qxReport(ErrorId::FormatError, "CVariant::Contains",
             WrongFormat(fType, "CVariant: contains", "Finding value in List",
                         "of Type NumberList, HexList or LongList"));
    return -1;
  }
  if (type == Regex && kMatchedLists.Has(fType)) {
    const CUnicodeString expression{CText(wanted.Text())};
    return FindMatching(CRegex::CreateFromValue(&expression).Get());
  }
  return FindFrom(0, &wanted.Source());
}

// ---- set operations

template <class Read>
bool CVariant::ContainsElements(const CVariantReader& other, Share share, IVariant* outElement,
                                Read read) const {
  const bool isAll = share == Share::All;
  const auto count = other.Count();
  if (!count) return false;
  bool answer = isAll;
  std::int64_t lastFound = -1;
  for (std::int64_t i = 0; i < *count && answer == isAll; ++i) {
    std::int64_t position = -1;  // also of a foreign element that cannot be read
    read(i, [&](const auto& element) {
      position = FindJoined(0, element);
      return true;
    });
    if (position >= 0) lastFound = position;
    answer = position >= 0;
  }
  // At last, for the caller may want it in one of the two lists.
  if (lastFound >= 0) DeliverElement(lastFound, outElement);
  return answer;
}

bool CVariant::ContainsAll(const IVariant* other, IVariant* outElement) const {
  return ContainsShare(other, Share::All, outElement);
}

bool CVariant::ContainsAtLeastOne(const IVariant* other, IVariant* outElement) const {
  return ContainsShare(other, Share::AtLeastOne, outElement);
}

bool CVariant::ContainsShare(const IVariant* other, Share share, IVariant* outElement) const {
  const ShareNames& names = NamesOf(share);
  if (!other) {
    qxReport(ErrorId::ObjNotInitialized, names.fFunction,
             NotInitialized(names.fOnPosition, "right hand side of operator 'contains'."));
    return false;
  }
  if (!IsListType()) {
    qxReport(ErrorId::FormatError, names.fFunction,
             WrongFormat(fType, names.fOnPosition, "Comparing Lists", "a valid list type"));
    return false;
  }
  const CVariantReader reader(*other);
  const VariantType type = reader.Type();
  if (AreBoth(TypeFamily::NumberLists, fType, type)) {
    return DoNumberListComparison(*other, share, outElement);
  }
  if (fType != type) {
    qxReport(ErrorId::ErrorDuringOperation, names.fFunction,
             FailedOperation(names.fOnPosition, names.fObjName, UnsupportedTypes(fType, type)));
    return false;
  }
  // Contract: no host list contains all of another, not even of an empty one.
  if (fType == HostAndCertificateList && share == Share::All) return false;
  // Contract: the bounds of a range are looked for one by one only when all are wanted.
  if (!kSearchedByElement.Has(fType) && !(fType == IPRange && share == Share::All)) {
    return IsEqualTo(reader);
  }
  return VisitElements(KindOf(fType), [&](auto kind) {
    using E = decltype(kind);
    if constexpr (IsListElement<E> && !std::is_same_v<E, HostElement>) {
      return ContainsElements(reader, share, outElement, [&](std::int64_t index, auto use) {
        return WithElement<E>(reader, index, use);
      });
    } else {
      return false;
    }
  });
}

bool CVariant::DoNumberListComparison(const IVariant& other, Share share,
                                      IVariant* outElement) const {
  const CVariantReader reader(other);
  for (const VariantType type : {fType, reader.Type()}) {
    if (TypeFamily::NumberLists.Has(type)) continue;
    qxReport(
        ErrorId::FormatError, "CVariant::DoNumberListComparison",
        WrongFormat(type, "CVariant: doNumberListComparison", "Finding Number value in NumberList",
                    "of list type Category, DLPCategory, Int, Hex, Long or Double"));
    return false;
  }
  // A search for a double in a list of integers reports; that is done for the first one alone.
  bool isReported = false;
  return ContainsElements(reader, share, outElement, [&](std::int64_t index, auto use) {
    TNumber number{};
    if (!ReadNumber(reader, index, number)) return false;
    if (!number.IsDouble() || !TypeFamily::IntegerLists.Has(fType)) return use(number);
    return std::exchange(isReported, true) || use(number);
  });
}
