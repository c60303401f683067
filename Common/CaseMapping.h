#pragma once

#include <cstddef>
#include <cstdint>

// Case of single code points by the Unicode data, whatever the locale. Pure functions over constant
// tables that tools/unicode/ generates.

// Simple case mapping: one code point to one. What has no such case is its own.
char32_t UpperCase(char32_t value);
char32_t LowerCase(char32_t value);

// What a code point becomes when case does not count: itself or one to three others.
struct FoldedCase {
  char32_t values[3];
  std::uint32_t count;
};

// Full case folding. Texts that differ in nothing but case have the same folded code points.
FoldedCase FoldCase(char32_t value);

// Folding of a 7-bit code point or byte, which is one to one.
constexpr char32_t FoldAscii(char32_t value) {
  return value - U'A' < 26 ? value + 32 : value;
}
