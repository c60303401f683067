#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Tovrin::JSON {

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The same byte in all eight places.
constexpr std::uint64_t Repeated(unsigned char byte) {
  return 0x0101010101010101U * byte;
}

inline std::uint64_t LoadWord(const char* at) {
  std::uint64_t word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

// Whether the byte ends a run of plain string text: a quote, a backslash or a control byte.
constexpr bool IsSpecial(char c) {
  return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
}

constexpr bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// The first byte that is no digit, or end.
//
// Perf: eight bytes at a time (bench/json, parsing canada). A digit is below 10 once '0' is taken
// out of it, and 0x76 more sets the top bit of all others; what that carries goes upwards, so that
// the lowest hit is right.
inline const char* SkipDigits(const char* at, const char* end) {
  if constexpr (std::endian::native == std::endian::little) {
    for (; end - at >= 8; at += 8) {
      const std::uint64_t word = LoadWord(at) ^ Repeated('0');
      const std::uint64_t others = (word | (word + Repeated(0x76))) & Repeated(0x80);
      if (others != 0) return at + std::countr_zero(others) / 8;
    }
  }
  while (at != end && IsDigit(*at)) ++at;
  return at;
}

// The first special byte, or end.
//
// Perf: eight bytes at a time (bench/json, parsing and writing). In each of the three tests a byte
// that hits sets its top bit, and wrong hits stand only above a right one, so that the lowest hit
// of all is right.
inline const char* FindSpecial(const char* at, const char* end) {
  if constexpr (std::endian::native == std::endian::little) {
    constexpr std::uint64_t kOnes = Repeated(0x01);
    for (; end - at >= 8; at += 8) {
      const std::uint64_t word = LoadWord(at);
      const std::uint64_t quotes = word ^ Repeated('"');
      const std::uint64_t slashes = word ^ Repeated('\\');
      const std::uint64_t hits = (((word - Repeated(0x20)) & ~word) | ((quotes - kOnes) & ~quotes) |
                                  ((slashes - kOnes) & ~slashes)) &
                                 Repeated(0x80);
      if (hits != 0) return at + std::countr_zero(hits) / 8;
    }
  }
  while (at != end && !IsSpecial(*at)) ++at;
  return at;
}

// Where a reader of text stands.
struct JsonTextCursor {
  const char* at;
  const char* end;
  std::uint64_t line = 0;  // line ends passed
  const char* lineStart;   // first byte behind the last of them

  bool AtEnd() const { return at == end; }
  bool StartsWith(std::string_view word) const {
    return std::string_view(at, end).starts_with(word);
  }
  // Contract: a mark that is all that is left is not stepped over unless it stands whole below the
  // end, which three bytes just do.
  void SkipByteOrderMark() {
    if (StartsWith(kByteOrderMark)) at += kByteOrderMark.size();
  }

  // White space is tab, line feed, carriage return and blank, nothing else.
  void SkipWhiteSpace() {
    for (; at != end; ++at) {
      const char c = *at;
      if (c == '\n' || c == '\r') {
        SkipLineEnd();
      } else if (c != ' ' && c != '\t') {
        return;
      }
    }
  }

private:
  // Leaves at on the last byte of the line end, and steps over the blanks of an indent.
  void SkipLineEnd() {
    const char other = *at == '\n' ? '\r' : '\n';
    if (end - at > 1 && at[1] == other) ++at;
    ++line;
    lineStart = at + 1;
    while (end - at > 8 && LoadWord(at + 1) == Repeated(' ')) at += 8;
  }
};

}  // namespace Tovrin::JSON
