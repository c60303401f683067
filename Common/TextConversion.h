#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Conversion between character sets. A call uses its own converter, so any thread may convert at
// any time; the answer does not depend on the locale of the process.

enum class ConversionMode {
  // What cannot be read is dropped; what the target does not have is written as something like it,
  // or as "?", or dropped.
  Lenient,
  // Nothing is lost: there is an answer only if every character arrives.
  Exact,
};

// The text in another encoding, or nothing when one of the two is RAW or is no encoding that can be
// converted, or, in exact mode, when something would be lost. Takes memory in proportion to the
// text.
//
// "UTF-16" and "UTF-32" are read by their byte order mark, as big-endian without one, and written
// as a mark and big-endian.
std::optional<std::string> ConvertText(std::string_view bytes, std::uint32_t from, std::uint32_t to,
                                       ConversionMode mode = ConversionMode::Lenient);

// The text as code points; surrogates and values beyond the last code point are dropped. Nothing
// when it cannot be converted.
std::optional<std::u32string> WideText(std::string_view bytes, std::uint32_t from);

// Whether 7-bit text is the same bytes in that encoding and in ASCII.
bool IsAsciiCompatible(std::uint32_t id);
