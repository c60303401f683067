#pragma once

#include <cstdint>

#include "memory/Slab.h"

// The compare-and-swap of two neighbouring words, the one instruction that the free lists need
// beyond std::atomic. std::atomic of 16 bytes would go through a library that locks, or at best
// calls.
//
// Both kinds are full barriers. The list must be aligned to 16 bytes, or the processor faults.

#if defined(__x86_64__)
#if !defined(__GCC_HAVE_SYNC_COMPARE_AND_SWAP_16)
#error "memory/ needs cmpxchg16b: compile it with -mcx16"
#endif
#elif !defined(__aarch64__)
#error "memory/ needs a compare-and-swap of 16 bytes, and has none for this processor: add one here"
#endif

namespace Memory {

#if defined(__x86_64__)

inline bool SwapFreeList(FreeList& list, FreeListState expected, FreeListState desired) {
  __extension__ using Double [[gnu::may_alias]] = unsigned __int128;
  const auto join = [](FreeListState state) {
    return static_cast<Double>(state.changes) << 64 | state.first;
  };
  return __sync_bool_compare_and_swap(reinterpret_cast<Double*>(&list), join(expected),
                                      join(desired));
}

#else

// The exclusive pair that every AArch64 has, in one piece: a memory access that the compiler put
// between the two would make the store fail for ever. ThreadSanitizer does not see it.
inline bool SwapFreeList(FreeList& list, FreeListState expected, FreeListState desired) {
  std::uintptr_t first = 0;
  std::uintptr_t changes = 0;
  std::uint32_t isRefused = 1;
  asm volatile(
      "1: ldaxp %[first], %[changes], %[list]\n"
      "   cmp   %[first], %[expectedFirst]\n"
      "   ccmp  %[changes], %[expectedChanges], #0, eq\n"
      "   b.ne  2f\n"
      "   stlxp %w[refused], %[desiredFirst], %[desiredChanges], %[list]\n"
      "   cbnz  %w[refused], 1b\n"
      "   b     3f\n"
      "2: clrex\n"
      "3: dmb   ish\n"
      :
      [first] "=&r"(first), [changes] "=&r"(changes), [refused] "+&r"(isRefused), [list] "+Q"(list)
      : [expectedFirst] "r"(expected.first), [expectedChanges] "r"(expected.changes),
        [desiredFirst] "r"(desired.first), [desiredChanges] "r"(desired.changes)
      : "cc", "memory");
  return isRefused == 0;
}

#endif

}  // namespace Memory
