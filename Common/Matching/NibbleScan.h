#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Common/Matching/PaddedText.h"

namespace Matching {

// Looks at 32 places of a text together for strings of a few bytes, each of which belongs to one of
// sixteen buckets: tells at which places one of a bucket's strings may stand. A byte is judged by
// its two halves apart, so a bucket of many different strings lets more places through; it never
// misses one.
//
// Source: the Teddy algorithm of multiple string matching with byte shuffles, as described by
// G. Langdale and in "Hyperscan: A Fast Multi-pattern Regex Matcher for Modern CPUs" (NSDI 2019).
// Here for processors with AVX2; where there is none, IsSupported says so, and the caller has
// another way.
//
// Filled by Add, and from then on read by any thread.
class NibbleScan {
public:
  static bool IsSupported();

  static constexpr std::size_t kBucketCount = 16;
  static constexpr std::size_t kMostBytes = 4;  // of a string that are looked at

  // A string of one to kMostBytes bytes, folded: letters of either case are equal.
  void Add(std::string_view folded, std::size_t bucket);

  // Places from `first` on at which strings may stand: a bit a place, and its buckets a bit each.
  struct Places {
    std::size_t first;
    std::uint32_t bits;
    std::array<std::array<std::uint8_t, 32>, 2> buckets;  // the first eight, and the others

    unsigned BucketsAt(std::size_t k) const {
      return buckets[0][k] | static_cast<unsigned>(buckets[1][k]) << 8;
    }
  };
  // The next such places from there on, which is moved behind them; false when the text has no
  // more. Some may be so close to its end that no string has room there.
  bool Next(const PaddedText& text, std::size_t& from, Places& places) const;

private:
  struct Masks {
    alignas(16) std::array<std::uint8_t, 16> low{};   // by the lower half of a byte, its buckets
    alignas(16) std::array<std::uint8_t, 16> high{};  // by the upper half
  };
  using Octet = std::array<Masks, kMostBytes>;  // of eight buckets, by the byte's place

  static void AddByte(Masks& masks, unsigned char byte, std::uint8_t bucket);
  template <bool kHasSecond>
  bool NextOf(const PaddedText& text, std::size_t& from, Places& places) const;

  std::array<Octet, 2> fOctets;
  bool fHasSecond = false;  // strings in the second octet
};

}  // namespace Matching
