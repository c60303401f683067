#pragma once

#include <cstddef>

namespace Tovrin::JSON {

// Unsigned numbers with the highest byte first, at any address. Compilers make one load or store of
// it.

template <class Number>
void StoreBigEndian(Number value, char* at) {
  for (std::size_t i = 0; i < sizeof value; ++i) {
    at[i] = static_cast<char>(static_cast<unsigned char>(value >> 8 * (sizeof value - 1 - i)));
  }
}

template <class Number>
Number LoadBigEndian(const char* at) {
  Number value = 0;
  for (std::size_t i = 0; i < sizeof value; ++i) {
    value = static_cast<Number>(value << 7 << 1 | static_cast<unsigned char>(at[i]));
  }
  return value;
}

}  // namespace Tovrin::JSON
