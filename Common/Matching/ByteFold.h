#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace Matching {

// The lower-case form of each byte, as matching without regard to case sees it: ASCII letters alone
// have one, whatever the locale.
inline constexpr std::array<unsigned char, 256> kFoldedByte = [] {
  std::array<unsigned char, 256> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    const bool upper = i >= 'A' && i <= 'Z';
    table[i] = static_cast<unsigned char>(upper ? i + ('a' - 'A') : i);
  }
  return table;
}();

constexpr unsigned char FoldByte(char c) {
  return kFoldedByte[static_cast<unsigned char>(c)];
}

inline std::string FoldText(std::string_view text) {
  std::string folded(text);
  for (char& c : folded) c = static_cast<char>(FoldByte(c));
  return folded;
}

// Folds eight bytes at once: a byte above 'A' - 1 and below 'Z' + 1, found by the carries into its
// top bit, gets the bit that tells the cases apart.
constexpr std::uint64_t FoldWord(std::uint64_t word) {
  constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
  constexpr std::uint64_t kTops = kOnes * 0x80;
  const std::uint64_t low = word & ~kTops;
  const std::uint64_t fromA = low + kOnes * (0x80 - 'A');
  const std::uint64_t pastZ = low + kOnes * (0x80 - 'Z' - 1);
  return word | ((fromA & ~pastZ & ~word & kTops) >> 2);
}

// Whether a text is this literal, which is folded already; both have the same size.
inline bool EqualsFolded(const char* text, const char* literal, std::size_t size) {
  const auto differs = [&](std::size_t at) {
    std::uint64_t left;
    std::uint64_t right;
    std::memcpy(&left, text + at, sizeof left);
    std::memcpy(&right, literal + at, sizeof right);
    return FoldWord(left) != right;
  };
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  if (size >= kWord) {
    for (std::size_t at = 0; at + kWord < size; at += kWord) {
      if (differs(at)) return false;
    }
    return !differs(size - kWord);  // overlaps the one before
  }
  for (std::size_t i = 0; i < size; ++i) {
    if (FoldByte(text[i]) != static_cast<unsigned char>(literal[i])) return false;
  }
  return true;
}

}  // namespace Matching
