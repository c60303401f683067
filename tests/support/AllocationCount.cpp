#include "tests/support/AllocationCount.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constinit thread_local long count = 0;
constinit thread_local long bytes = 0;
constinit thread_local long untilFault = 0;  // requests; 0 or less for none to come
constinit thread_local AllocationFault::Throw throwInstead = nullptr;  // of a bad_alloc

// A block has its size in front.
constexpr std::size_t kFront = alignof(std::max_align_t);
static_assert(kFront >= sizeof(std::size_t));

}  // namespace

long AllocationCount() {
  return count;
}
long AllocatedBytes() {
  return bytes;
}

AllocationFault::AllocationFault(long which, Throw instead) {
  untilFault = which;
  throwInstead = instead;
}
AllocationFault::~AllocationFault() {
  untilFault = 0;
}
bool AllocationFault::HasFailed() const {
  return untilFault <= 0;
}

// The other forms come through the first two by default, but not in a sanitizer's runtime: all of
// them stand here, since a block that goes through one comes from another.
void* operator new(std::size_t size) {
  ++count;
  if (untilFault > 0 && --untilFault == 0) {
    if (throwInstead) throwInstead();
    throw std::bad_alloc();
  }
  auto* const front = static_cast<char*>(std::malloc(kFront + size));
  if (!front) throw std::bad_alloc();
  std::memcpy(front, &size, sizeof size);
  bytes += static_cast<long>(size);
  return front + kFront;
}
void operator delete(void* block) noexcept {
  if (!block) return;
  char* const front = static_cast<char*>(block) - kFront;
  std::size_t size;
  std::memcpy(&size, front, sizeof size);
  bytes -= static_cast<long>(size);
  std::free(front);
}
void operator delete(void* block, std::size_t) noexcept {
  ::operator delete(block);
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
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return ::operator new(size, tag);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  ::operator delete(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  ::operator delete(block);
}
