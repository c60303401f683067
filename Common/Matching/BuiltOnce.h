#pragma once

#include <atomic>
#include <memory>

namespace Matching {

// What the slot holds, or else what make() gives as a unique_ptr. Any number of threads may come
// first: one object is published by compare-and-swap, the others are deleted. Whoever owns the slot
// deletes that one.
template <class T, class Make>
const T& BuiltOnce(std::atomic<const T*>& slot, Make make) {
  // The acquires pair with the release of the one who published it.
  const T* built = slot.load(std::memory_order_acquire);
  if (built != nullptr) return *built;

  std::unique_ptr<const T> fresh = make();
  if (slot.compare_exchange_strong(built, fresh.get(), std::memory_order_acq_rel,
                                   std::memory_order_acquire)) {
    return *fresh.release();
  }
  return *built;
}

}  // namespace Matching
