#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "Common/Matching/NibbleScan.h"
#include "Common/Matching/PaddedText.h"
#include "Common/Matching/RunFilter.h"

namespace Matching {

// Finds the places where one of a few literals may stand, many places at a time (NibbleScan), by
// the rarest bytes of each.
//
// How few depends on them: literals share the scan's buckets such that as few places as possible
// are to be compared, and where these would be too many, guessed from how frequent single bytes
// are, they are refused.
//
// Filled by Choose, and from then on read by any thread.
class FewLiterals {
public:
  // One of the literals: whoever looks for it knows it by the number.
  struct Literal {
    std::uint32_t number;
    std::string_view folded;  // not empty
  };
  // False when they are too many; then nothing is found.
  bool Choose(const std::vector<Literal>& literals);

  [[nodiscard]] bool IsEmpty() const { return fEntries.empty(); }
  [[nodiscard]] std::size_t MemorySize() const { return fEntries.capacity() * sizeof(Entry); }

  // Calls onPlace(number, place, before) for each place to which a literal's rarest bytes may
  // belong, of which so many bytes stand before them, until one call gives true; gives whether one
  // did. In the order of the text.
  template <class OnPlace>
  bool Visit(const PaddedText& text, OnPlace onPlace) const {
    NibbleScan::Places places;
    for (std::size_t from = 0; fScan.Next(text, from, places);) {
      for (std::uint32_t bits = places.bits; bits != 0; bits &= bits - 1) {
        const auto k = static_cast<std::size_t>(std::countr_zero(bits));
        const std::size_t place = places.first + k;
        const unsigned buckets = places.BucketsAt(k);
        if ((buckets & fShortBuckets) == 0 && !Passes(text.From(place, kWindow))) continue;
        if (VisitBuckets(buckets, place, onPlace)) return true;
      }
    }
    return false;
  }

private:
  struct Entry {
    std::uint32_t number;
    std::uint32_t before;
  };
  class Bucket;
  struct String;

  static bool Share(std::vector<String>& strings);
  void Enter(std::vector<String> strings);

  // A bit for each string of kWindow bytes, by their hash: the buckets' halves of bytes let through
  // many times as much.
  static constexpr std::size_t kWindow = NibbleScan::kMostBytes;
  static std::uint32_t BitOf(const char* window) {
    return RunFilter::HashOfRun<kWindow>(window) >> (32 - kFilterBits);
  }
  bool Passes(const char* window) const {
    const std::uint32_t bit = BitOf(window);
    return (fFilter[bit / 64] >> bit % 64 & 1) != 0;
  }

  template <class OnPlace>
  bool VisitBuckets(unsigned buckets, std::size_t place, OnPlace& onPlace) const {
    for (; buckets != 0; buckets &= buckets - 1) {
      const auto bucket = static_cast<std::size_t>(std::countr_zero(buckets));
      for (std::size_t i = fBegins[bucket]; i < fBegins[bucket + 1]; ++i) {
        if (onPlace(fEntries[i].number, place, fEntries[i].before)) return true;
      }
    }
    return false;
  }

  static constexpr unsigned kFilterBits = 12;

  NibbleScan fScan;
  unsigned fShortBuckets = 0;  // those with strings of less than kWindow bytes, a bit each
  std::array<std::uint64_t, (std::size_t{1} << kFilterBits) / 64> fFilter{};
  std::vector<Entry> fEntries;                                        // by bucket
  std::array<std::uint32_t, NibbleScan::kBucketCount + 1> fBegins{};  // in fEntries
};

}  // namespace Matching
