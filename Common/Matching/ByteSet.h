#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace Matching {

// A set of byte values. A plain value: copied, compared and hashed by its 256 bits.
class ByteSet {
public:
  static constexpr std::size_t kWordCount = 4;

  constexpr ByteSet() = default;

  constexpr void Add(unsigned char byte) { fWords[byte >> 6] |= Bit(byte); }

  constexpr void Add(const ByteSet& other) {
    for (std::size_t i = 0; i < kWordCount; ++i) fWords[i] |= other.fWords[i];
  }

  constexpr void Invert() {
    for (auto& word : fWords) word = ~word;
  }

  [[nodiscard]] constexpr bool Contains(unsigned char byte) const {
    return (fWords[byte >> 6] & Bit(byte)) != 0;
  }

  [[nodiscard]] constexpr std::size_t Count() const {
    std::size_t count = 0;
    for (const auto word : fWords) count += static_cast<std::size_t>(std::popcount(word));
    return count;
  }

  // The smallest byte of a set that has one.
  [[nodiscard]] constexpr unsigned char First() const {
    std::size_t i = 0;
    while (fWords[i] == 0) ++i;
    return static_cast<unsigned char>(i * 64 +
                                      static_cast<std::size_t>(std::countr_zero(fWords[i])));
  }

  [[nodiscard]] constexpr std::size_t Hash() const {
    std::uint64_t hash = 0;
    for (const auto word : fWords) hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(hash ^ hash >> 32);
  }

  friend constexpr bool operator==(const ByteSet&, const ByteSet&) = default;

private:
  static constexpr std::uint64_t Bit(unsigned char byte) { return std::uint64_t{1} << (byte & 63); }

  std::array<std::uint64_t, kWordCount> fWords{};
};

}  // namespace Matching
