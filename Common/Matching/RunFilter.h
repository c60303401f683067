#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "Common/Matching/PaddedText.h"

namespace Matching {

// Where in a text may one of very many runs of a few bytes stand? A set of hashes of which each has
// two bits of a word, so that few of what is not in it have both (B. H. Bloom, "Space/time
// trade-offs in hash coding with allowable errors", 1970, here with both bits in one word).
//
// Runs are compared loosely: letters of both cases become one, and some other bytes too.
//
// Filled by Add, and from then on read by any thread.
class RunFilter {
public:
  RunFilter() = default;
  explicit RunFilter(std::size_t runCount);

  // Letters of both cases become one, and some other bytes too: good enough to look up by.
  static constexpr std::uint32_t kLoose = 0x20202020;

  // Of four bytes, or of the number that stands for less, and of a byte behind them.
  static constexpr std::uint32_t HashOf(std::uint32_t loose, std::uint32_t looseNext = 0) {
    return loose * kFactor + looseNext * kNextFactor;
  }
  // Of the bytes of a run.
  template <std::size_t kRun>
  static std::uint32_t HashOfRun(const char* run) {
    static_assert(kRun == 4 || kRun == 5);
    std::uint32_t bytes;
    std::memcpy(&bytes, run, sizeof bytes);
    const std::uint32_t next = kRun == 4 ? 0 : static_cast<unsigned char>(run[kRun - 1]) | 0x20U;
    return HashOf(bytes | kLoose, next);
  }

  void Add(std::uint32_t hash) { fWords[hash >> fShift] |= 1U << First(hash) | 1U << Second(hash); }
  [[nodiscard]] bool Passes(std::uint32_t hash) const {
    const std::uint32_t word = fWords[hash >> fShift];
    return (word >> First(hash) & word >> Second(hash) & 1) != 0;
  }

  // A bit for each kStride-th place from the first on, kPlaces of them, where a run may begin.
  static constexpr std::size_t kStride = 4;
  static constexpr std::size_t kPlaces = 64;
  template <std::size_t kRun>
  [[nodiscard]] std::uint64_t Collect(const PaddedText& text, std::size_t first,
                                      bool useVectors) const;

  [[nodiscard]] std::size_t MemorySize() const { return fWords.capacity() * sizeof(std::uint32_t); }

private:
  static constexpr std::uint32_t kFactor = 0x9E3779B1;
  static constexpr std::uint32_t kNextFactor = 0x85EBCA77;
  static constexpr unsigned kFirstShift = 13;
  static constexpr unsigned kSecondShift = 8;

  static constexpr unsigned First(std::uint32_t hash) { return hash >> kFirstShift & 31; }
  static constexpr unsigned Second(std::uint32_t hash) { return hash >> kSecondShift & 31; }

  template <std::size_t kRun>
  [[nodiscard]] std::uint64_t CollectMany(const PaddedText& text, std::size_t first,
                                          std::size_t count) const;

  std::vector<std::uint32_t> fWords;
  unsigned fShift = 31;
};

}  // namespace Matching
