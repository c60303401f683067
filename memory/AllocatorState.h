#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "memory/Slab.h"

// The tables and settings of the process that the allocator's units share. All of them are there
// before any code runs, since the first initialisers allocate already.
namespace Memory {

inline constexpr std::uint32_t kMaxBucketSets = 8;

// Indexed by the class value itself: most entries stay empty, and those in use lie on cache lines
// of their own.
using BucketSet = std::array<SlabList, kClassCount>;
extern std::array<BucketSet, kMaxBucketSets> gBucketSets;

// Written by start-up and by SetBucketCount, read by every allocation. Relaxed: any value serves.
extern std::atomic<std::uint32_t> gBucketSetCount;  // 1 to kMaxBucketSets; 1 at first
extern std::atomic<bool> gUsesOtherBuckets;         // take from other sets before making a slab

extern std::array<std::atomic<std::uint32_t>, kClassCount> gSlabCounts;  // ever made

// Each large block writes it, so it keeps away from what each request reads.
struct alignas(64) LargeBlocks {
  std::atomic<std::int32_t> alive{0};
};
extern LargeBlocks gLargeBlocks;

// Written once, by ShutdownAllocator.
extern std::atomic<bool> gIsShuttingDown;

// After the shutdown: gives the slab back if all its blocks are free.
void ReclaimSlab(Slab* slab);

}  // namespace Memory
