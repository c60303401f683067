#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// UTF-8 read and written one code point at a time, strictly: surrogates, overlong forms and what
// lies beyond U+10FFFF are ill-formed.

inline constexpr char32_t kIllFormed = 0xFFFFFFFF;
inline constexpr char32_t kLastCodePoint = 0x10FFFF;

// A value that stands for a character: no surrogate, not beyond the last.
constexpr bool IsScalarValue(char32_t value) {
  return value < 0xD800 || (value > 0xDFFF && value <= kLastCodePoint);
}

// Reads the code point at a byte that is not 7-bit, and moves at behind it. Answers kIllFormed with
// at behind what cannot be read: the lead byte and its follow-up bytes, as far as they go. A
// converter that ignores what it cannot read drops the same bytes.
char32_t DecodeMultiByte(const char*& at, const char* end);

// As DecodeMultiByte, for any byte.
inline char32_t DecodeUtf8(const char*& at, const char* end) {
  const auto byte = static_cast<unsigned char>(*at);
  if (byte >= 0x80) return DecodeMultiByte(at, end);
  ++at;
  return byte;
}

// Bytes that a scalar value takes.
constexpr std::size_t Utf8Size(char32_t value) {
  if (value < 0x80) return 1;
  if (value < 0x800) return 2;
  return value < 0x10000 ? 3 : 4;
}

void AppendUtf8(char32_t value, std::string& out);

// Whole texts. What is ill-formed is dropped.
std::u32string WideFromUtf8(std::string_view bytes);
std::string Utf8FromWide(std::u32string_view wide);

// Whether nothing is.
bool IsWellFormedUtf8(std::string_view bytes);

// Bytes that so many characters take at the beginning of a text, with those between and in front of
// them that are ill-formed; all of them where there are fewer characters.
std::size_t Utf8Prefix(std::string_view bytes, std::size_t characters);

// Code points of a text as WideFromUtf8 would give them.
std::size_t CountUtf8(std::string_view bytes);
