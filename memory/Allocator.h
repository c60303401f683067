#pragma once

#include <cstddef>
#include <cstdint>

// The allocator of the module: many threads, many small objects.
//
// Requests up to 264 bytes are cut from slabs of one size class each, through lock-free free lists;
// larger ones go to malloc behind a header that tells the two apart without a look-up. Slabs are
// spread over up to 8 bucket sets, so that threads rarely meet on one list. A slab stays with its
// class until ShutdownAllocator: the aim is speed under contention, not giving memory back.
//
// Any thread may call anything at any time, also before static initialisation and after
// ShutdownAllocator. Every payload is aligned to 16 bytes. Nothing here throws.

// A block of at least this size, also for a size of 0, or null when there is no memory or the size
// is above PTRDIFF_MAX. The caller's address is kept in large blocks, for diagnosis; it may be
// null.
void* AllocateBlock(std::size_t size, const void* caller);

// The block with another size and its contents, in another place if need be; block itself stays as
// it is when the answer is null for want of memory. A null block is allocated, a size of 0 frees.
void* ReallocateBlock(void* block, std::size_t size, const void* caller);

// Null is accepted. Aborts for a block that is free already, as far as that shows: the block's
// place in the free list must lie above the block that became free before it.
void FreeBlock(void* block);

// Fixes how many bucket sets serve new requests: at most 8. 0 changes nothing. From then on
// neither the environment nor the number of processors counts.
void SetBucketCount(std::uint32_t count);

// Large blocks alive, slabs ever made, bytes in small blocks alive. Any pointer may be null.
// Contract: largeBytes is 0, whatever is alive.
void GetMemoryStatistics(std::uint32_t* largeCount, std::uint32_t* slabs,
                         std::uint64_t* payloadBytes, std::uint32_t* largeBytes);

// Gives back every slab that is wholly free, and from then on each other one as its last block is
// freed. Runs by itself at the end of the process or library, behind all static destructors; a
// second run aborts.
void ShutdownAllocator();

// The end of the process, with status 42, for want of memory: reports "word (size)" and does not
// come back. Allocates nothing. Only the first thread that comes here reports.
[[noreturn]] void MemoryFailure(const char* word, std::size_t size);

// Takes the text of a memory failure to where it is seen, and says whether it arrived there. May
// not throw, and should not allocate: there is no memory.
using MemoryFailureReporter = bool (*)(const char* text);

// Null, as at the start, or an answer of false: the text goes to standard error.
void SetMemoryFailureReporter(MemoryFailureReporter reporter);
