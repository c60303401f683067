#pragma once

#include <cstdint>

namespace Tovrin {

// The host's number of a type. The two low bits tell the container form: 1 the scalar, 2 the vector
// of it, 3 the map from number to it, 0 the map from text to it. 0 as a whole is no type.
using TypeId = std::uint32_t;

inline constexpr TypeId kTypeBoolean = 1;
inline constexpr TypeId kTypeNumber = 5;
inline constexpr TypeId kTypeString = 9;
inline constexpr TypeId kTypeDataRef = 13;
inline constexpr TypeId kTypeStream = 17;
inline constexpr TypeId kFirstUserType = 21;  // from here on the host hands out four ids a type

// Added to the id of a scalar.
inline constexpr TypeId kVectorOf = 1;
inline constexpr TypeId kNumberMapOf = 2;
inline constexpr TypeId kStringMapOf = 3;

constexpr bool IsVectorType(TypeId id) {
  return (id & 3) == 2;
}
constexpr bool IsNumberMapType(TypeId id) {
  return (id & 3) == 3;
}
constexpr bool IsStringMapType(TypeId id) {
  return id != 0 && (id & 3) == 0;
}

}  // namespace Tovrin
