#pragma once

#include <optional>
#include <string_view>

#include "Common/Matching/ByteSet.h"

// What the classic locale says about single bytes, and the names under which an expression may ask
// for it. Bytes of 0x80 and above belong to no class and have no case.
namespace Matching {

constexpr unsigned char ToLower(unsigned char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

constexpr unsigned char ToUpper(unsigned char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<unsigned char>(byte - ('a' - 'A')) : byte;
}

constexpr bool IsDigit(unsigned char byte) {
  return byte >= '0' && byte <= '9';
}

constexpr bool IsWordByte(unsigned char byte) {
  const unsigned char lower = ToLower(byte);
  return (lower >= 'a' && lower <= 'z') || IsDigit(byte) || byte == '_';
}

// The byte in both its cases: what one literal of an expression matches.
constexpr ByteSet BothCases(unsigned char byte) {
  ByteSet set;
  set.Add(ToLower(byte));
  set.Add(ToUpper(byte));
  return set;
}

// What "." matches: every byte but those that end a line.
inline constexpr ByteSet kDotBytes = [] {
  ByteSet set;
  set.Add('\n');
  set.Add('\r');
  set.Invert();
  return set;
}();

// The class named in "[:name:]", or nothing for an unknown name. Names are read without regard to
// case, and "lower" and "upper" both mean any letter, since every expression here ignores case.
[[nodiscard]] std::optional<ByteSet> FindCharacterClass(std::string_view name);

// The byte whose name stands in "[.name.]" or "[=name=]", or nothing for an unknown name.
[[nodiscard]] std::optional<unsigned char> FindCollatingElement(std::string_view name);

}  // namespace Matching
