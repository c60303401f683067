#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Conversion between character sets, by way of code points. A call uses its own converter, so any
// thread may convert at any time; the answer does not depend on the locale of the process. Takes
// memory in proportion to the text.
//
// "UTF-16" and "UTF-32" are read by their byte order mark, as big-endian without one, and written
// as a mark and big-endian; a text without a character has no mark. What is read has no surrogates
// and nothing beyond U+10FFFF.

enum class ConversionMode {
  // What cannot be read is dropped; what the target does not have is written as something like it,
  // or as "?", or dropped.
  Lenient,
  // Nothing is lost: there is an answer only if every character arrives, and would come back.
  Exact,
};

// The text in another encoding, or nothing when one of the two is RAW or is no encoding that can be
// converted, or, in exact mode, when something would be lost.
std::optional<std::string> ConvertText(std::string_view bytes, std::uint32_t from, std::uint32_t to,
                                       ConversionMode mode = ConversionMode::Lenient);

// The two halves of a conversion.
std::optional<std::u32string> WideText(std::string_view bytes, std::uint32_t from,
                                       ConversionMode mode = ConversionMode::Lenient);
std::optional<std::string> NarrowText(std::u32string_view wide, std::uint32_t to,
                                      ConversionMode mode = ConversionMode::Lenient);

// The bytes of code points, as a text in UTF-32LE has them.
std::string_view BytesOfWide(std::u32string_view wide);

// Whether 7-bit text is the same bytes in that encoding and in ASCII.
bool IsAsciiCompatible(std::uint32_t id);

// Whether it is such text in such an encoding.
bool IsPlainAscii(std::string_view bytes, std::uint32_t id);

// Whether a text of that encoding begins with a mark that says how it is to be read, so that two of
// them put together are none.
bool WritesByteOrderMark(std::uint32_t id);
