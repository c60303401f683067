#pragma once

#include <cstdint>
#include <initializer_list>

// The types of a variant. The numbers appear in stored and exchanged data and never change. A value
// from outside the table can be held, since foreign data may bring one.
enum class VariantType : std::uint8_t {
  Empty = 0,
  Double = 1,
  Long = 2,
  String = 3,
  Boolean = 4,
  LongList = 5,
  DoubleList = 6,
  StringList = 7,
  BooleanList = 8,
  MixedList = 9,
  NumberList = 10,
  Dimension = 11,  // a list in all but name
  DimensionList = 12,
  IP = 13,
  IPList = 14,
  IPRange = 15,  // a list of two addresses, low and high
  IPRangeList = 16,
  Category = 17,
  Regex = 18,
  Hex = 19,
  CategoryList = 20,
  RegexList = 21,
  HexList = 22,
  MediaType = 23,
  MediaTypeList = 24,
  HostAndCertificate = 25,
  HostAndCertificateList = 26,
  DLPCategory = 27,
  DLPCategoryList = 28,
  Map = 29,
  SSOConnector = 30,
  SSOConnectorList = 31,
};

inline constexpr std::uint32_t kVariantTypeCount = 32;

constexpr bool IsKnownType(VariantType type) {
  return static_cast<std::uint32_t>(type) < kVariantTypeCount;
}

// A set of types, as data. An unknown type is in no set.
class VariantTypeSet {
public:
  constexpr VariantTypeSet(std::initializer_list<VariantType> types) {
    for (const VariantType type : types) fBits |= BitOf(type);
  }

  constexpr bool Has(VariantType type) const { return (fBits & BitOf(type)) != 0; }
  constexpr VariantTypeSet operator|(VariantTypeSet other) const {
    other.fBits |= fBits;
    return other;
  }

private:
  static constexpr std::uint32_t BitOf(VariantType type) {
    return IsKnownType(type) ? std::uint32_t{1} << static_cast<std::uint32_t>(type) : 0;
  }

  std::uint32_t fBits = 0;
};

// The families that operations ask for.
namespace TypeFamily {
using enum VariantType;

inline constexpr VariantTypeSet IntegerScalars{Long, Category, Hex, DLPCategory};
inline constexpr VariantTypeSet Numbers = IntegerScalars | VariantTypeSet{Double};
inline constexpr VariantTypeSet StringScalars{String, Regex, MediaType, SSOConnector};
// What has a text that can be set and read.
inline constexpr VariantTypeSet TextScalars =
    StringScalars | VariantTypeSet{IP, HostAndCertificate};
inline constexpr VariantTypeSet StringLists{StringList, RegexList, MediaTypeList, SSOConnectorList};
// Without Dimension, which each operation treats in its own way.
inline constexpr VariantTypeSet IntegerLists{LongList, CategoryList, HexList, DLPCategoryList};
inline constexpr VariantTypeSet NumberLists =
    IntegerLists | VariantTypeSet{DoubleList, VariantType::NumberList};
inline constexpr VariantTypeSet VariantLists{MixedList, DimensionList, IPRangeList};
inline constexpr VariantTypeSet AddressLists{IPList, IPRange};
inline constexpr VariantTypeSet Regexes{Regex, RegexList};
}  // namespace TypeFamily
