#pragma once

#include <cstddef>
#include <cstdint>

namespace Tovrin {

// Type ids of the host: the low two bits tell the container form.
using TypeId = std::uint32_t;
inline constexpr TypeId kTypeBoolean = 1, kTypeNumber = 5, kTypeString = 9, kTypeDataRef = 13,
                        kTypeStream = 17;
inline constexpr TypeId kFirstUserType = 21;
inline constexpr TypeId kVectorOf = 1, kNumberMapOf = 2, kStringMapOf = 3;  // added to a scalar id

}  // namespace Tovrin
