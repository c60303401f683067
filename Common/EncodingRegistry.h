#pragma once

#include <cstddef>
#include <cstdint>

// Character sets by small ids. A name is turned into an id once, and the id is what texts carry.
// Any thread may call any of this; only names outside the table take the registry's lock.

namespace Charset {

inline constexpr std::uint32_t Ascii = 0;
inline constexpr std::uint32_t Utf8 = 1;
inline constexpr std::uint32_t Latin1 = 2;
inline constexpr std::uint32_t Utf32LE = 3;  // the internal wide form
inline constexpr std::uint32_t Utf32BE = 4;
inline constexpr std::uint32_t Utf32 = 5;  // by byte order mark, else big-endian; written with one
inline constexpr std::uint32_t Utf16LE = 6;
inline constexpr std::uint32_t Utf16BE = 7;
inline constexpr std::uint32_t Utf16 = 8;  // as Utf32
inline constexpr std::uint32_t Gb18030 = 9;
inline constexpr std::uint32_t Raw = 10;  // bytes without meaning, converted to and from nothing
inline constexpr std::uint32_t FirstRegistered = 11;  // from here on names seen at run time

}  // namespace Charset

// The id of a name; null counts as empty, which is ASCII. Names outside the table are entered in
// the registry for good, supported or not: IsKnownEncoding is what refuses them.
//
// Contract: "UTF-16LE" and its kin are taken only with the suffix in capitals; "UTF-16le" goes to
// the registry.
std::uint32_t EncodingId(const char* name);

// The name of an id, valid as long as the library is loaded.
// Contract: an unknown id answers "ASCII" and is no error.
const char* EncodingName(std::uint32_t id);

// Whether texts of that encoding can be converted. False for an id that was never handed out.
bool IsKnownEncoding(std::uint32_t id);

// Whether a converter from that name to UTF-8 exists. A name of other characters than letters,
// digits and "-_.:" is none, whatever the C library would make of it.
bool IsEncodingSupported(const char* name);

// Bytes that one character may take in that encoding, the first guess when a conversion is sized.
// Contract: 1 for "UTF-16" and "UTF-32", odd as it looks; matching asks this table whether a text
// is of one byte a character.
std::size_t OutputBytesPerCharacter(std::uint32_t id);
