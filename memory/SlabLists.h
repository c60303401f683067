#pragma once

#include <atomic>
#include <cstdint>

#include "memory/Slab.h"

// Taking blocks from lists of slabs and giving them back.
//
// All shared memory is touched through Access, whose functions are those of HardwareAccess (see
// HardwareAccess.h). A test puts a model in its place and drives these very functions through every
// interleaving of a few threads.
//
// What holds:
//  - A slab is never taken out of its list while the process runs, and never freed. So a walk needs
//    no lock: wherever it stands, the ground stays.
//  - A block's header word is written by the thread that owns the block, between taking it off the
//    free list and giving it back. Others read it only to throw the value away, when their
//    compare-and-swap fails.
//  - A list's next pointers and head change under its lock. A slab that moves to the front may hide
//    from a walk, or send it round again; but then the head has changed at the end, or the lock is
//    taken, and both make the walk start again.
namespace Memory {

struct TakenBlock {
  Block* block = nullptr;     // null: there is none
  bool isLastOfSlab = false;  // it left its slab without a free block
};

template <class Access>
[[gnu::always_inline]] inline TakenBlock TakeFromSlab(Slab& slab) {
  for (;;) {
    // Acquire, both: the block's word is to be read behind them. For first, because the word was
    // written before the block became first; for changes, because the word counts only if nothing
    // has changed between its reading and the swap.
    const auto changes = Access::Load(slab.free.changes, std::memory_order_acquire);
    const auto first = Access::Load(slab.free.first, std::memory_order_acquire);
    Block* const block = FirstFreeOf(first);
    if (!block) return {};

    // Relaxed: this may be another thread's block by now, and the swap then fails.
    const auto rest = Access::Load(block->header, std::memory_order_relaxed);
    if (!Access::SwapFreeList(slab.free, {first, changes}, {rest, changes + 1})) continue;

    // Relaxed: ours from here on; who gets the block from us gets it by means of his own.
    Access::Store(block->header, reinterpret_cast<std::uintptr_t>(&slab),
                  std::memory_order_relaxed);
    Access::Add(slab.inUse, 1);
    return {block, FirstFreeOf(rest) == nullptr};
  }
}

template <class Access>
void GiveToSlab(Slab& slab, Block& block) {
  for (;;) {
    // Relaxed, both: nothing behind them is read; the swap tells whether they were right.
    const auto changes = Access::Load(slab.free.changes, std::memory_order_relaxed);
    const auto first = Access::Load(slab.free.first, std::memory_order_relaxed);
    // Relaxed: the swap is the release that the next taker's acquire of first pairs with.
    Access::Store(block.header, first | kFreeBit, std::memory_order_relaxed);
    const FreeListState given{reinterpret_cast<std::uintptr_t>(&block), changes + 1};
    if (Access::SwapFreeList(slab.free, {first, changes}, given)) break;
  }
  Access::Add(slab.inUse, -1);
}

// The common case, and short: null where it takes more than that.
template <class Access>
inline Block* TakeFromFirstSlab(SlabList& list) {
  Slab* const first = Access::Load(list.head, std::memory_order_acquire);
  return first ? TakeFromSlab<Access>(*first).block : nullptr;
}

struct FoundBlock : TakenBlock {
  Slab* slab = nullptr;    // where the block was
  Slab* before = nullptr;  // the slab that led there; null for the first
};

// Takes a block from the first slab that has one, from this one on.
template <class Access>
FoundBlock TakeFromSlabs(Slab* first) {
  Slab* before = nullptr;
  // Acquire: a slab that moved to the front points to slabs that are newer than the walk's first
  // one, and whose making has to be seen.
  for (Slab* slab = first; slab; slab = Access::Load(slab->next, std::memory_order_acquire)) {
    const TakenBlock taken = TakeFromSlab<Access>(*slab);
    if (taken.block) return {taken, slab, before};
    before = slab;
  }
  return {};
}

// Where the next walk finds it at once; unless somebody else is changing the list, or has.
template <class Access>
void MoveToFront(SlabList& list, Slab* first, Slab* before, Slab* slab) {
  if (!Access::TryLock(list.lock)) return;
  // Relaxed loads: what they read was written under the lock. Release stores: for the acquires of
  // the walks, which hold no lock.
  if (Access::Load(list.head, std::memory_order_relaxed) == first &&
      Access::Load(before->next, std::memory_order_relaxed) == slab) {
    Slab* const behind = Access::Load(slab->next, std::memory_order_relaxed);
    Access::Store(before->next, behind, std::memory_order_release);
    Access::Store(slab->next, first, std::memory_order_release);
    Access::Store(list.head, slab, std::memory_order_release);
  }
  Access::Unlock(list.lock);
}

// Takes a block of the class from its list, or from elsewhere(first), which is asked before a new
// slab is made and may answer null; first is the list's head. Null when a slab is needed and there
// is no memory.
template <class Access, class Elsewhere>
Block* TakeFromList(SlabList& list, std::uint32_t classValue, const Elsewhere& elsewhere) {
  for (;;) {
    Slab* const first = Access::Load(list.head, std::memory_order_acquire);
    const FoundBlock found = TakeFromSlabs<Access>(first);
    if (found.block) {
      if (found.before && !found.isLastOfSlab) {
        MoveToFront<Access>(list, first, found.before, found.slab);
      }
      return found.block;
    }
    // Relaxed: compared, not followed.
    if (Access::Load(list.head, std::memory_order_relaxed) != first) continue;
    if (Block* const block = elsewhere(first)) return block;

    if (!Access::TryLock(list.lock)) {
      Access::Yield();
      continue;
    }
    // Again, now that nobody else can change it: two threads that come here at once need one slab.
    Slab* slab = nullptr;
    const bool isListAsWalked = Access::Load(list.head, std::memory_order_relaxed) == first;
    if (isListAsWalked) {
      slab = Access::MakeSlab(classValue);
      if (slab) {
        Access::Store(slab->next, first, std::memory_order_relaxed);
        Access::Store(list.head, slab, std::memory_order_release);
      }
    }
    Access::Unlock(list.lock);
    if (isListAsWalked && !slab) return nullptr;
  }
}

}  // namespace Memory
