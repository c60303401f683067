#pragma once

#include <cstddef>
#include <cstdint>

// Where the calling thread's stack lies. A recursion whose depth the input decides asks here how
// far it may go.

// Addresses of a stack, its guard page not counted: [low, high). Both 0 where the system cannot
// say.
struct StackBounds {
  std::uintptr_t low = 0;
  std::uintptr_t high = 0;

  bool Holds(std::uintptr_t address) const { return low <= address && address < high; }
};

// Asks the system once a thread; every later call is a look into thread-local memory.
StackBounds CurrentThreadStack();

// An address in the frame of the function that this is inlined into, or near it.
inline std::uintptr_t CurrentFrameAddress() {
#if defined(__GNUC__)
  return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
#else
  volatile char local = 0;
  return reinterpret_cast<std::uintptr_t>(&local);
#endif
}
