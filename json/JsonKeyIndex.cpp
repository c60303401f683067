#include "json/JsonKeyIndex.h"

#include <algorithm>
#include <bit>

namespace Tovrin::JSON {

namespace {

constexpr std::size_t kFirstBucketCount = 8;

}  // namespace

void JsonKeyIndex::Add(std::string_view key) {
  if (fLinks.size() >= fBuckets.size()) Rehash(std::max(kFirstBucketCount, 2 * fBuckets.size()));
  const std::uint64_t hash = HashJsonKey(key);
  std::size_t& first = fBuckets[Bucket(hash)];
  fLinks.push_back({hash, first});
  first = fLinks.size() - 1;
}

void JsonKeyIndex::Remove(std::size_t position) {
  std::size_t* at = &fBuckets[Bucket(fLinks[position].hash)];
  while (*at != position) at = &fLinks[*at].next;
  *at = fLinks[position].next;
  fLinks[position].next = position;  // marks the hole: nothing links to itself otherwise
}

void JsonKeyIndex::Reserve(std::size_t count) {
  fLinks.reserve(count);
  if (count > fBuckets.size()) Rehash(std::max(kFirstBucketCount, std::bit_ceil(count)));
}

void JsonKeyIndex::Rehash(std::size_t bucketCount) {
  fBuckets.assign(bucketCount, kNone);
  for (std::size_t position = 0; position < fLinks.size(); ++position) {
    Link& link = fLinks[position];
    if (link.next == position) continue;
    std::size_t& first = fBuckets[Bucket(link.hash)];
    link.next = first;
    first = position;
  }
}

}  // namespace Tovrin::JSON
