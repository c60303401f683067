#include "memory/AllocatorState.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string_view>

#include "memory/Allocator.h"
#include "memory/HardwareAccess.h"
#include "memory/Platform.h"

namespace Memory {

constinit std::array<BucketSet, kMaxBucketSets> gBucketSets{};
constinit std::atomic<std::uint32_t> gBucketSetCount{1};
constinit std::atomic<bool> gUsesOtherBuckets{false};
constinit std::array<std::atomic<std::uint32_t>, kClassCount> gSlabCounts{};
constinit LargeBlocks gLargeBlocks;
constinit std::atomic<bool> gIsShuttingDown{false};

namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;

constinit std::atomic<bool> gIsCountFixed{false};  // SetBucketCount has spoken
constinit std::atomic<std::uint32_t> gReclaimLock{0};

std::uint32_t LimitedToSets(std::uint32_t count) {
  return std::min(count, kMaxBucketSets);
}

// The number that text begins with, as atoi reads it; what no int holds is the nearest that does.
int LeadingNumber(const char* text) {
  return static_cast<int>(std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX));
}

bool SaysYes(const char* value) {
  if (!value) return false;
  const std::string_view text = value;
  const std::string_view yes = "yes";
  return std::equal(text.begin(), text.end(), yes.begin(), yes.end(),
                    [](char a, char lower) { return a == lower || a == lower - ('a' - 'A'); });
}

// At start-up. Threads that allocate already go on with whatever they read.
void ReadSettings() {
  gUsesOtherBuckets.store(SaysYes(std::getenv("QRX_MM_USE_OTHER_BUCKETS")), kRelaxed);

  const char* const forced = std::getenv("QRX_MM_FORCE_BUCKETS");
  int count = forced ? LeadingNumber(forced) : 0;
  // Contract: a negative number keeps the processors from being counted, and sets nothing.
  if (count == 0) count = ProcessorCount();
  if (count >= 1 && !gIsCountFixed.load(kRelaxed)) {
    gBucketSetCount.store(LimitedToSets(static_cast<std::uint32_t>(count)), kRelaxed);
  }
}

void Lock(SlabList& list) {
  while (!HardwareAccess::TryLock(list.lock)) HardwareAccess::Yield();
}

// A child process has but the thread that forked: a lock that another one held would never open
// there.
void HoldLists() {
  for (BucketSet& set : gBucketSets) {
    for (SlabList& list : set) Lock(list);
  }
}

void ReleaseLists() {
  for (BucketSet& set : gBucketSets) {
    for (SlabList& list : set) HardwareAccess::Unlock(list.lock);
  }
}

struct StartUp {
  StartUp() {
    ReadSettings();
    CallAroundForks(HoldLists, ReleaseLists);
  }
};
const StartUp gStartUp;

// A block in use shows by its header word; the count of the slab is for statistics.
bool IsWhollyFree(Slab& slab) {
  const std::size_t count = slab.BlockCount();
  for (std::size_t index = 0; index < count; ++index) {
    if ((slab.BlockAt(index)->header.load(kRelaxed) & kFreeBit) == 0) return false;
  }
  return true;
}

// The pointer of the list that leads to the slab; null when the list does not have it. Under the
// reclaim lock.
std::atomic<Slab*>* FindLink(SlabList& list, const Slab* slab) {
  for (std::atomic<Slab*>* link = &list.head;; link = &link->load(kRelaxed)->next) {
    Slab* const here = link->load(std::memory_order_acquire);
    if (here == slab) return link;
    if (!here) return nullptr;
  }
}

void FreeEmptySlabs(SlabList& list) {
  std::atomic<Slab*>* link = &list.head;
  while (Slab* const slab = link->load(std::memory_order_acquire)) {
    if (IsWhollyFree(*slab)) {
      link->store(slab->next.load(kRelaxed), std::memory_order_release);
      std::free(slab);
    } else {
      link = &slab->next;
    }
  }
}

std::uint64_t PayloadBytesOf(SlabList& list) {
  Lock(list);
  std::uint64_t bytes = 0;
  for (Slab* slab = list.head.load(kRelaxed); slab; slab = slab->next.load(kRelaxed)) {
    bytes += std::uint64_t{slab->inUse.load(kRelaxed)} * slab->classValue;
  }
  HardwareAccess::Unlock(list.lock);
  return bytes;
}

}  // namespace

void ReclaimSlab(Slab* slab) {
  if (!HardwareAccess::TryLock(gReclaimLock)) {
    AbortWith("memory: two threads give slabs back at once, after the allocator's shutdown\n");
  }
  if (IsWhollyFree(*slab)) {
    for (BucketSet& set : gBucketSets) {
      std::atomic<Slab*>* const link = FindLink(set[slab->classValue], slab);
      if (!link) continue;
      link->store(slab->next.load(kRelaxed), std::memory_order_release);
      std::free(slab);
      break;
    }
  }
  HardwareAccess::Unlock(gReclaimLock);
}

}  // namespace Memory

using namespace Memory;

void SetBucketCount(std::uint32_t count) {
  if (count == 0) return;
  gIsCountFixed.store(true, kRelaxed);
  gBucketSetCount.store(LimitedToSets(count), kRelaxed);
}

void GetMemoryStatistics(std::uint32_t* largeCount, std::uint32_t* slabs,
                         std::uint64_t* payloadBytes, std::uint32_t* largeBytes) {
  if (largeCount) *largeCount = static_cast<std::uint32_t>(gLargeBlocks.alive.load(kRelaxed));
  if (slabs) {
    *slabs = 0;
    for (const auto& count : gSlabCounts) *slabs += count.load(kRelaxed);
  }
  if (payloadBytes) {
    *payloadBytes = 0;
    for (BucketSet& set : gBucketSets) {
      for (SlabList& list : set) *payloadBytes += PayloadBytesOf(list);
    }
  }
  // Contract: large blocks are counted, their bytes are not.
  if (largeBytes) *largeBytes = 0;
}

// Behind every static destructor of the library, which is why no other kind of "at the end" will
// do.
[[gnu::destructor(101)]] void ShutdownAllocator() {
  if (gIsShuttingDown.load(kRelaxed) || !HardwareAccess::TryLock(gReclaimLock)) {
    AbortWith("memory: the allocator is shut down a second time\n");
  }
  gIsShuttingDown.store(true, std::memory_order_release);
  for (BucketSet& set : gBucketSets) {
    for (SlabList& list : set) FreeEmptySlabs(list);
  }
  HardwareAccess::Unlock(gReclaimLock);
}
