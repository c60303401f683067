#include "tests/support/AllocationCount.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constinit thread_local long count = 0;

}  // namespace

long AllocationCount() {
  return count;
}

// The forms for arrays and without exceptions come through these.
void* operator new(std::size_t size) {
  ++count;
  if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
