#include "tests/support/AllocationCount.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constinit thread_local long count = 0;
constinit thread_local long untilFault = 0;  // requests; 0 or less for none to come

}  // namespace

long AllocationCount() {
  return count;
}

AllocationFault::AllocationFault(long which) {
  untilFault = which;
}
AllocationFault::~AllocationFault() {
  untilFault = 0;
}
bool AllocationFault::HasFailed() const {
  return untilFault <= 0;
}

// The form without exceptions comes through these. Those for arrays would, too, but not in a
// sanitizer's runtime.
void* operator new(std::size_t size) {
  ++count;
  if (untilFault > 0 && --untilFault == 0) throw std::bad_alloc();
  if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void* operator new[](std::size_t size) {
  return ::operator new(size);
}
void operator delete[](void* block) noexcept {
  ::operator delete(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  ::operator delete(block);
}
