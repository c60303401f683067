#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Tovrin::JSON {

// 64-bit FNV-1a over the bytes of a key.
//
// The hash is fixed and has no secret in it: who chooses the keys of an object can put all of them
// into one bucket, and a parse of n such keys takes n squared steps.
constexpr std::uint64_t HashJsonKey(std::string_view key) {
  std::uint64_t hash = 14695981039346656037U;
  for (const char byte : key) hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
  return hash;
}

// Finds the position of a key in a list that the owner keeps: a chained table with 8 buckets to
// begin with and at most one key a bucket on average.
//
// The owner tells the key at a position by a callable, so the index stores no text. Positions are
// given out in order from 0 by Add and never move; Remove leaves a hole.
class JsonKeyIndex {
public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  template <class KeyAt>
  std::size_t Find(std::string_view key, KeyAt keyAt) const {
    if (fBuckets.empty()) return kNone;
    const std::uint64_t hash = HashJsonKey(key);
    for (std::size_t at = fBuckets[Bucket(hash)]; at != kNone; at = fLinks[at].next) {
      if (fLinks[at].hash == hash && keyAt(at) == key) return at;
    }
    return kNone;
  }

  // The next position is this key's.
  void Add(std::string_view key);
  void Remove(std::size_t position);
  void Reserve(std::size_t count);

private:
  struct Link {
    std::uint64_t hash;
    std::size_t next;  // in the same bucket, or kNone
  };

  // The count of buckets is a power of two.
  std::size_t Bucket(std::uint64_t hash) const { return hash & (fBuckets.size() - 1); }
  void Rehash(std::size_t bucketCount);

  std::vector<std::size_t> fBuckets;  // first position of each chain, or kNone
  std::vector<Link> fLinks;           // by position
};

}  // namespace Tovrin::JSON
