// Binds the allocator to operator new and operator delete of whatever this is linked into: the
// module, and nothing else, since in a program the operators would serve the whole process.
//
// The forms that do not throw come through these. The forms with an alignment stay as they are, a
// pair of their own: aligned_alloc and free know nothing of our headers.

#include <cstddef>
#include <new>

#include "memory/Allocator.h"

namespace {

// Inlined, so that the address is that of the operator's caller.
[[gnu::always_inline]] inline void* Allocate(std::size_t size) {
  void* const block = AllocateBlock(size, __builtin_return_address(0));
  if (!block) [[unlikely]] {
    MemoryFailure("new", size);
  }
  return block;
}

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
  return Allocate(size);
}
[[gnu::noinline]] void* operator new[](std::size_t size) {
  return Allocate(size);
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
  FreeBlock(block);
}
[[gnu::noinline]] void operator delete[](void* block) noexcept {
  FreeBlock(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
  FreeBlock(block);
}
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept {
  FreeBlock(block);
}
