#include "memory/Slab.h"

#include <chrono>

namespace Memory {

void FormatSlab(Slab& slab, std::uint32_t classValue, std::size_t blockCount) {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  slab.classValue = classValue;
  slab.created = {static_cast<std::uint64_t>(std::chrono::nanoseconds(now).count()), 0, 0};

  const auto linkTo = [&](std::size_t index) {
    return reinterpret_cast<std::uintptr_t>(slab.BlockAt(index)) | kFreeBit;
  };
  // Relaxed: whoever publishes the slab does so by a release.
  constexpr auto kRelaxed = std::memory_order_relaxed;
  slab.next.store(nullptr, kRelaxed);
  slab.inUse.store(0, kRelaxed);
  slab.free.changes.store(0, kRelaxed);
  slab.free.first.store(linkTo(0), kRelaxed);
  for (std::size_t index = 0; index + 1 < blockCount; ++index) {
    slab.BlockAt(index)->header.store(linkTo(index + 1), kRelaxed);
  }
  slab.BlockAt(blockCount - 1)->header.store(kFreeBit, kRelaxed);
}

}  // namespace Memory
