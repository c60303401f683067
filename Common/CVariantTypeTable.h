#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "Common/CVariant.h"
#include "Common/VariantElements.h"
#include "Common/VariantType.h"

// What each type of a variant is. The row of a type has its number.
struct CVariantTypeInfo {
  VariantType fType;
  std::uint32_t fElementSize;  // bytes of an element of a list, or of the value
  bool fOwnsObjects;           // elements have to be copied and destroyed one by one
  bool fIsList;
  VariantType fBaseType;  // whose representation this row reuses; the element's type for a list
  const char* fName;
};

inline constexpr std::array<CVariantTypeInfo, kVariantTypeCount> kVariantTypeTable = [] {
  using enum VariantType;
  constexpr std::uint32_t kWord = 8;
  constexpr std::uint32_t kVariant = sizeof(CVariant);
  constexpr std::uint32_t kAddress = sizeof(AddressRecord);
  constexpr std::uint32_t kHost = sizeof(HostRecord);
  constexpr bool kOwns = true, kPlain = false, kList = true, kSingle = false;
  return std::array<CVariantTypeInfo, kVariantTypeCount>{{
      {Empty, 0, kPlain, kSingle, Empty, "Empty"},
      {Double, kWord, kPlain, kSingle, Empty, "Double"},
      {Long, kWord, kPlain, kSingle, Empty, "Long"},
      {String, kWord, kOwns, kSingle, Empty, "String"},
      {Boolean, 1, kPlain, kSingle, Empty, "Boolean"},
      {LongList, kWord, kPlain, kList, Long, "LongList"},
      {DoubleList, kWord, kPlain, kList, Double, "DoubleList"},
      {StringList, kWord, kOwns, kList, String, "StringList"},
      {BooleanList, 1, kPlain, kList, Boolean, "BooleanList"},
      {MixedList, kVariant, kOwns, kList, Empty, "MixedList"},
      {NumberList, sizeof(TNumber), kPlain, kList, Empty, "NumberList"},
      {Dimension, kWord, kPlain, kList, Long, "Dimension"},
      {DimensionList, kVariant, kOwns, kList, Dimension, "DimensionList"},
      {IP, kAddress, kPlain, kSingle, Empty, "IP"},
      {IPList, kAddress, kPlain, kList, IP, "IPList"},
      {IPRange, kAddress, kPlain, kList, IP, "IPRange"},
      {IPRangeList, kVariant, kOwns, kList, IPRange, "IPRangeList"},
      {Category, kWord, kPlain, kSingle, Long, "Category"},
      {Regex, kWord, kOwns, kSingle, String, "Regex"},
      {Hex, kWord, kPlain, kSingle, Long, "Hex"},
      {CategoryList, kWord, kPlain, kList, Category, "CategoryList"},
      {RegexList, kWord, kOwns, kList, Regex, "RegexList"},
      {HexList, kWord, kPlain, kList, Hex, "HexList"},
      {MediaType, kWord, kOwns, kSingle, String, "MediaType"},
      {MediaTypeList, kWord, kOwns, kList, MediaType, "MediaTypeList"},
      {HostAndCertificate, kHost, kOwns, kSingle, Empty, "HostAndCertificate"},
      {HostAndCertificateList, kHost, kOwns, kList, HostAndCertificate, "HostAndCertificateList"},
      {DLPCategory, kWord, kPlain, kSingle, Long, "DLPCategory"},
      {DLPCategoryList, kWord, kPlain, kList, DLPCategory, "DLPCategoryList"},
      {Map, sizeof(MapHeader), kOwns, kSingle, Empty, "Map"},
      {SSOConnector, kWord, kOwns, kSingle, String, "SSOConnector"},
      {SSOConnectorList, kWord, kOwns, kList, SSOConnector, "SSOConnectorList"},
  }};
}();

// The row of a known type.
constexpr const CVariantTypeInfo& TypeInfo(VariantType type) {
  return kVariantTypeTable[static_cast<std::size_t>(type)];
}

// For reports and texts, which do not report themselves: "-invalid-" for an unknown type.
constexpr const char* PrintedTypeName(VariantType type) {
  return IsKnownType(type) ? TypeInfo(type).fName : "-invalid-";
}

// The public form: reports an unknown type and answers null.
const char* GetTypeName(VariantType type);

// The lower-case word of a type's family, empty where it has none; true for a list.
bool GetFamilyName(VariantType type, std::string_view& word);

// The type of that name; "Number" is Long, and an unknown name Empty.
VariantType TypeByName(std::string_view name);

// The kind that the rows' sizes and bases lead to.
constexpr ElementKind DeriveElementKind(VariantType type) {
  const CVariantTypeInfo& row = TypeInfo(type);
  if (row.fElementSize == sizeof(CVariant)) return ElementKind::Variant;
  if (row.fBaseType != VariantType::Empty) return DeriveElementKind(row.fBaseType);
  switch (type) {
    case VariantType::Double:
      return ElementKind::Double;
    case VariantType::Long:
      return ElementKind::Long;
    case VariantType::String:
      return ElementKind::Text;
    case VariantType::Boolean:
      return ElementKind::Boolean;
    case VariantType::NumberList:
      return ElementKind::Number;
    case VariantType::IP:
      return ElementKind::Address;
    case VariantType::HostAndCertificate:
      return ElementKind::Host;
    case VariantType::Map:
      return ElementKind::Map;
    default:
      return ElementKind::None;
  }
}

inline constexpr std::array<ElementKind, kVariantTypeCount> kElementKinds = [] {
  std::array<ElementKind, kVariantTypeCount> kinds{};
  for (const CVariantTypeInfo& row : kVariantTypeTable) {
    kinds[static_cast<std::size_t>(row.fType)] = DeriveElementKind(row.fType);
  }
  return kinds;
}();

constexpr ElementKind KindOf(VariantType type) {
  return kElementKinds[static_cast<std::size_t>(type)];
}

// The table and the structs describe the same bytes.
constexpr bool TypeTableFitsElements() {
  for (std::size_t i = 0; i < kVariantTypeTable.size(); ++i) {
    const CVariantTypeInfo& row = kVariantTypeTable[i];
    const bool fits = VisitElements(kElementKinds[i], [&](auto element) {
      using E = decltype(element);
      if (row.fType == VariantType::Empty) return row.fElementSize == 0;
      return row.fElementSize == sizeof(typename E::Stored) && row.fOwnsObjects == E::kOwnsObjects;
    });
    if (!fits || static_cast<std::size_t>(row.fType) != i) return false;
  }
  return true;
}
static_assert(TypeTableFitsElements());
