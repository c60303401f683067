#include "Common/Matching/LiteralChance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "Common/Matching/ByteFold.h"

namespace Matching {
namespace {

// Bytes from the most frequent on, and how many bits the first one is worth: half as often is one
// bit more. It falls by a bit to the last one.
struct Frequency {
  std::string_view bytes;
  float bits;
};
constexpr Frequency kFrequencies[] = {{"etao/si", 4},
                                      {".rnpc-dmhlw ", 5},
                                      {"ubg1f02345678k9%", 6},
                                      {"vy:_=x();,", 7},
                                      {"j&zq?+", 8.5F}};
constexpr float kBitsOfOthers = 11;

// What many texts of one kind or another have.
constexpr std::string_view kWellKnown[] = {
    "https://www.",  ".com/",       ".net/",      ".org/",    ".html",  ".php?",   "index.",
    "tion",          "mozilla/5.0", "compatible", "windows ", "linux;", "android", "applewebkit/53",
    "khtml, like ",  "gecko",       "version/",   "chrome/",  "safari", " mobile", "build/",
    "http%3a%2f%2f", "javascript",  "static",     "google",   "image",  "content", "/ads"};
constexpr float kBitsOfWellKnown = 8;  // of its first three bytes together
constexpr float kBitsOfMore = 0.5F;    // of each byte more

constexpr double kPlaces = 80;  // bytes of a text

struct Byte {
  std::uint8_t number = 0;  // its own from 1 on, where it is frequent
  float bits = kBitsOfOthers;
};
constexpr std::array<Byte, 256> kBytes = [] {
  std::array<Byte, 256> table{};
  std::uint8_t number = 0;
  for (const Frequency& frequency : kFrequencies) {
    const auto size = static_cast<float>(frequency.bytes.size());
    for (std::size_t i = 0; i < frequency.bytes.size(); ++i) {
      const auto byte = static_cast<unsigned char>(frequency.bytes[i]);
      table[byte] = {++number, frequency.bits + static_cast<float>(i) / size};
    }
  }
  return table;
}();

constexpr const Byte& ByteOf(char c) {
  return kBytes[static_cast<unsigned char>(c)];
}

constexpr std::array<double, 256> kByteChances = [] {
  std::array<double, 256> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    constexpr double kOfCapitals = 0.1;
    const unsigned char folded = kFoldedByte[i];
    double chance = i == folded ? 1 : kOfCapitals;
    float bits = kBytes[folded].bits;
    for (; bits >= 1; bits -= 1) chance /= 2;
    table[i] = chance * (1 - bits / 2);  // straight between the powers of two
  }
  return table;
}();

constexpr std::size_t TripleOf(const char* bytes) {
  std::size_t triple = 0;
  for (int i = 0; i < 3; ++i) triple = triple << 6 | ByteOf(bytes[i]).number;
  return triple;
}

// A bit for each three bytes that stand in a well-known string.
constexpr std::array<std::uint64_t, (std::size_t{1} << 18) / 64> kTriples = [] {
  std::array<std::uint64_t, (std::size_t{1} << 18) / 64> bits{};
  for (const std::string_view text : kWellKnown) {
    for (std::size_t i = 0; i + 3 <= text.size(); ++i) {
      const std::size_t triple = TripleOf(text.data() + i);
      bits[triple >> 6] |= std::uint64_t{1} << (triple & 63);
    }
  }
  return bits;
}();

bool IsWellKnown(const char* bytes) {
  const std::size_t triple = TripleOf(bytes);
  return (kTriples[triple >> 6] >> (triple & 63) & 1) != 0;
}

}  // namespace

float BitsOf(char byte) {
  return ByteOf(byte).bits;
}

double ChanceOfByte(char byte) {
  return kByteChances[static_cast<unsigned char>(byte)];
}

double ChanceOf(std::string_view literal) {
  float bits = 0;
  for (std::size_t i = 0; i < literal.size();) {
    if (i + 3 > literal.size() || !IsWellKnown(literal.data() + i)) {
      bits += ByteOf(literal[i++]).bits;
      continue;
    }
    bits += kBitsOfWellKnown;
    for (i += 3; i < literal.size() && IsWellKnown(literal.data() + i - 2); ++i)
      bits += kBitsOfMore;
  }
  return std::min(1.0, kPlaces * std::exp2(-static_cast<double>(bits)));
}

double ChanceOfAny(const std::vector<std::string>& literals) {
  double chance = 0;
  for (const std::string& literal : literals) chance += ChanceOf(literal);
  return std::min(1.0, chance);
}

}  // namespace Matching
