#include "memory/Allocator.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "memory/AllocatorState.h"
#include "memory/HardwareAccess.h"
#include "memory/SlabLists.h"

namespace Memory {
namespace {

constexpr std::size_t kLargestSize = PTRDIFF_MAX;  // above it, a size with its header wraps round
constexpr std::uintptr_t kFreedMark = 0x55555555;
constexpr std::uintptr_t kReallocatingMark = 0xAAAAAAAA;

static_assert(alignof(std::max_align_t) >= 16, "malloc must align slabs for the double-word swap");

// Which bucket set serves the calling thread. Its place on the stack tells threads apart for
// nothing: no storage of the thread's own, no system call. The frame, not a variable: a sanitizer
// moves variables away. Inlined, so that the frame is the allocating routine's.
[[gnu::always_inline]] inline std::uint32_t BucketSetOfThisThread() {
  const auto place =
      static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)));
  return (place >> kStackDistanceBits) % gBucketSetCount.load(std::memory_order_relaxed);
}

// Asks the other sets, those behind the own one first. All of them: which are used has no bearing.
// Out of line: hardly ever called, and the road past it stays short.
[[gnu::noinline]] Block* TakeFromOtherSets(std::uint32_t ownSet, std::uint32_t classValue) {
  for (std::uint32_t step = 1; step < kMaxBucketSets; ++step) {
    SlabList& list = gBucketSets[(ownSet + step) % kMaxBucketSets][classValue];
    Slab* const first = list.head.load(std::memory_order_acquire);
    if (Block* const block = TakeFromSlabs<HardwareAccess>(first).block) return block;
  }
  return nullptr;
}

// Out of line, so that the common case saves no registers.
[[gnu::noinline]] void* AllocateByWalk(std::uint32_t set, std::uint32_t classValue) {
  const auto elsewhere = [&](Slab* first) -> Block* {
    const bool hasTwoSlabs = first && first->next.load(std::memory_order_relaxed);
    if (!hasTwoSlabs || !gUsesOtherBuckets.load(std::memory_order_relaxed)) return nullptr;
    return TakeFromOtherSets(set, classValue);
  };
  SlabList& list = gBucketSets[set][classValue];
  Block* const block = TakeFromList<HardwareAccess>(list, classValue, elsewhere);
  return block ? block->Payload() : nullptr;
}

void* AllocateSmall(std::size_t size) {
  const std::uint32_t classValue = ClassOf(size);
  const std::uint32_t set = BucketSetOfThisThread();
  Block* const block = TakeFromFirstSlab<HardwareAccess>(gBucketSets[set][classValue]);
  return block ? block->Payload() : AllocateByWalk(set, classValue);
}

template <class Routine>
std::uintptr_t AddressOf(Routine* routine) {
  return reinterpret_cast<std::uintptr_t>(routine);
}

LargeHeader* LargeHeaderOf(Block* block) {
  return reinterpret_cast<LargeHeader*>(block + 1) - 1;
}

// A caller whose address could be that of the slab that a block at this place lies in gets its top
// bit flipped.
std::uintptr_t Disguised(std::uintptr_t caller, const Block* block) {
  constexpr std::uintptr_t kTopBit = std::uintptr_t{1} << 63;
  return IsWithinSlabBelow(caller, block) ? caller ^ kTopBit : caller;
}

[[gnu::noinline]] void* AllocateLarge(std::size_t size, const void* caller) {
  auto* const header = static_cast<LargeHeader*>(std::malloc(size + sizeof(LargeHeader)));
  if (!header) return nullptr;

  gLargeBlocks.alive.fetch_add(1, std::memory_order_relaxed);
  Block* const block = Block::OfPayload(header + 1);
  header->magic.store(AddressOf(&AllocateBlock), std::memory_order_relaxed);
  block->header.store(Disguised(reinterpret_cast<std::uintptr_t>(caller), block),
                      std::memory_order_relaxed);
  return block->Payload();
}

// Atomic stores throughout: a plain one right before free would be optimised away.
void* ReallocateLarge(Block* block, std::size_t size) {
  LargeHeader* const old = LargeHeaderOf(block);
  old->magic.store(AddressOf(&AllocateBlock) ^ kReallocatingMark, std::memory_order_relaxed);
  auto* const header = static_cast<LargeHeader*>(std::realloc(old, size + sizeof(LargeHeader)));
  if (!header) return nullptr;

  header->magic.store(AddressOf(&ReallocateBlock), std::memory_order_relaxed);
  // The caller remains the first one, but what it could be taken for depends on the place.
  Block* const moved = Block::OfPayload(header + 1);
  const auto caller = moved->header.load(std::memory_order_relaxed);
  moved->header.store(Disguised(caller, moved), std::memory_order_relaxed);
  return moved->Payload();
}

// Whether the word stands before a large block that is alive, also one whose reallocation failed.
bool IsMagic(std::uintptr_t word) {
  return word == AddressOf(&AllocateBlock) || word == AddressOf(&ReallocateBlock) ||
         word == (AddressOf(&AllocateBlock) ^ kReallocatingMark);
}

[[gnu::noinline]] void FreeLarge(Block* block) {
  LargeHeader* const header = LargeHeaderOf(block);
  // Also for most small blocks that are free already: their link says nothing of a slab.
  if (!IsMagic(header->magic.load(std::memory_order_relaxed))) {
    AbortWith("memory: what is freed is no block of this allocator, or free already\n");
  }
  gLargeBlocks.alive.fetch_sub(1, std::memory_order_relaxed);
  header->magic.store(AddressOf(&AllocateBlock) ^ kFreedMark, std::memory_order_relaxed);
  std::free(header);
}

void FreeSmall(Block* block, std::uintptr_t header) {
  if (header & kFreeBit) AbortWith("memory: a block is freed that is free already\n");

  Slab* const slab = SlabOf(header);
  __builtin_prefetch(slab, 1);
  // Relaxed: for a second free of the same block, which is a mistake in the same thread as a rule.
  block->header.store(header | kFreeBit, std::memory_order_relaxed);
  GiveToSlab<HardwareAccess>(*slab, *block);
  if (gIsShuttingDown.load(std::memory_order_acquire)) ReclaimSlab(slab);
}

void* ReallocateSmall(Block* block, Slab* slab, std::size_t size, const void* caller) {
  if (slab->classValue >= size) return block->Payload();

  void* const moved = AllocateBlock(size, caller);
  if (!moved) return nullptr;
  std::memcpy(moved, block->Payload(), slab->classValue);
  FreeSmall(block, reinterpret_cast<std::uintptr_t>(slab));
  return moved;
}

}  // namespace

Slab* HardwareAccess::MakeSlab(std::uint32_t classValue) {
  // Perf: the first lines of all slabs in one set of the cache cost a third of a pair's time
  // (Churn).
  static constinit std::atomic_flag areSpread;
  if (!areSpread.test_and_set(std::memory_order_relaxed)) SpreadBlocksOverPages(kSlabBytes);

  auto* const slab = static_cast<Slab*>(std::malloc(kSlabBytes));
  if (!slab) return nullptr;
  FormatSlab(*slab, classValue, kSlabPayload / StrideOf(classValue));
  gSlabCounts[classValue].fetch_add(1, std::memory_order_relaxed);
  return slab;
}

}  // namespace Memory

using namespace Memory;

void* AllocateBlock(std::size_t size, const void* caller) {
  if (size <= kLargestSmallSize) return AllocateSmall(size);
  return size <= kLargestSize ? AllocateLarge(size, caller) : nullptr;
}

void* ReallocateBlock(void* payload, std::size_t size, const void* caller) {
  if (!payload) return AllocateBlock(size, caller);
  if (size == 0) {
    FreeBlock(payload);
    return nullptr;
  }
  if (size > kLargestSize) return nullptr;

  Block* const block = Block::OfPayload(payload);
  const auto header = block->header.load(std::memory_order_relaxed);
  if (!IsWithinSlabBelow(header, block)) return ReallocateLarge(block, size);
  if (header & kFreeBit) AbortWith("memory: a block is reallocated that is free already\n");
  return ReallocateSmall(block, SlabOf(header), size, caller);
}

void FreeBlock(void* payload) {
  if (!payload) return;

  Block* const block = Block::OfPayload(payload);
  const auto header = block->header.load(std::memory_order_relaxed);
  IsWithinSlabBelow(header, block) ? FreeSmall(block, header) : FreeLarge(block);
}
