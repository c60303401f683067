#pragma once

#include <atomic>
#include <cstdint>

#include "memory/DoubleWordSwap.h"
#include "memory/Platform.h"
#include "memory/Slab.h"

namespace Memory {

// The lists' way to memory that threads share: each function is one instruction, where there is
// one.
struct HardwareAccess {
  template <class T>
  static T Load(const std::atomic<T>& from, std::memory_order order) {
    return from.load(order);
  }
  template <class T>
  static void Store(std::atomic<T>& to, T value, std::memory_order order) {
    to.store(value, order);
  }
  // Relaxed: a statistic, which orders nothing.
  static void Add(std::atomic<std::uint32_t>& count, int difference) {
    count.fetch_add(static_cast<std::uint32_t>(difference), std::memory_order_relaxed);
  }
  static bool SwapFreeList(FreeList& list, FreeListState expected, FreeListState desired) {
    return Memory::SwapFreeList(list, expected, desired);
  }

  // Spin words. The acquire pairs with the release of the holder before.
  static bool TryLock(std::atomic<std::uint32_t>& lock) {
    std::uint32_t free = 0;
    return lock.compare_exchange_strong(free, 1, std::memory_order_acquire,
                                        std::memory_order_relaxed);
  }
  static void Unlock(std::atomic<std::uint32_t>& lock) { lock.store(0, std::memory_order_release); }
  static void Yield() { YieldProcessor(); }

  // Counts the slab, too. Null when there is no memory.
  static Slab* MakeSlab(std::uint32_t classValue);
};

}  // namespace Memory
