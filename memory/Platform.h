#pragma once

#include <cstddef>

// What the allocator asks of the operating system, beyond malloc and free.
namespace Memory {

// Stacks of different threads lie at least two to this power bytes apart, as the platform places
// them by default. The bits above tell threads apart, so a smaller number than the true one would
// let all of them meet: glibc's stacks of 8 MiB differ by multiples of 8 in their megabytes.
#if defined(__linux__)
inline constexpr unsigned kStackDistanceBits = 23;
#else
inline constexpr unsigned kStackDistanceBits = 20;
#endif

void YieldProcessor();

// Has the functions called around each fork of the process from now on: hold before it, release
// behind it, in the parent and in the child.
void CallAroundForks(void (*hold)(), void (*release)());

// Sees to it that blocks of this size from malloc begin at different places of their pages, as far
// as malloc can be brought to it. For what begins at the same place shares a few cells of the
// processor's cache.
void SpreadBlocksOverPages(std::size_t size);

int ProcessorCount();  // those in use; 0 or less when the system does not tell

// Writes the line to standard error without allocating, and aborts.
[[noreturn]] void AbortWith(const char* line);
// The end without static destructors.
[[noreturn]] void ExitAtOnce(int status);

}  // namespace Memory
