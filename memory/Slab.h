#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

// How slabs and blocks lie in memory. Everything else in this folder works on these.
//
// Before every payload stands one header word. It says what the block is:
//  - small, in use: the address of its slab;
//  - small, free:   the next free block with bit 0 set, or 1 for the last one;
//  - large:         the caller's address, so altered where needed that it cannot be a slab's.
namespace Memory {

using Word = std::atomic<std::uintptr_t>;

inline constexpr std::size_t kSlabPayload = 0x44000;  // bytes of blocks in a slab
inline constexpr std::size_t kSlabHeader = 56;        // bytes before the first block
inline constexpr std::size_t kSlabBytes = kSlabPayload + kSlabHeader;
inline constexpr std::size_t kLargestSmallSize = 264;
inline constexpr std::size_t kClassCount = kLargestSmallSize + 1;  // lists are indexed by the class
inline constexpr std::uintptr_t kFreeBit = 1;

// The class of a small request is the payload of the blocks that serve it: 8, 24, 40 up to 264.
constexpr std::uint32_t ClassOf(std::size_t size) {
  return static_cast<std::uint32_t>(((size + 23) & ~std::size_t{15}) - 8);
}

// Bytes from one block of a class to the next: a header word and the payload.
constexpr std::size_t StrideOf(std::uint32_t classValue) {
  return classValue + sizeof(Word);
}

struct Block {
  Word header;

  void* Payload() { return this + 1; }
  static Block* OfPayload(void* payload) { return static_cast<Block*>(payload) - 1; }
};
static_assert(sizeof(Block) == 8);

// What the double-word compare-and-swap replaces as one: where the free list begins, and how often
// that has changed. Without the count, a thread that slept between reading the first block and its
// successor could install a successor that is in use by now.
struct FreeList {
  Word first;  // bit 0 may be set and means nothing here; 0 and 1 are the empty list
  Word changes;
};

// What a thread has read of a free list, or puts in its place.
struct FreeListState {
  std::uintptr_t first;
  std::uintptr_t changes;
};

struct Slab {
  FreeList free;                         // aligned to 16, as every slab is
  std::atomic<Slab*> next;               // in the list of its set and class
  std::uint32_t classValue;              // constant
  std::atomic<std::uint32_t> inUse;      // blocks handed out; for statistics alone
  std::array<std::uint64_t, 3> created;  // nanoseconds of the steady clock, for a reader of a dump

  std::size_t BlockCount() const { return kSlabPayload / StrideOf(classValue); }
  Block* BlockAt(std::size_t index) {
    auto* const bytes = reinterpret_cast<std::byte*>(this) + kSlabHeader;
    return reinterpret_cast<Block*>(bytes + index * StrideOf(classValue));
  }
};
static_assert(offsetof(Slab, free) == 0 && offsetof(Slab, next) == 16 &&
              offsetof(Slab, classValue) == 24 && offsetof(Slab, inUse) == 28 &&
              offsetof(Slab, created) == 32 && sizeof(Slab) == kSlabHeader);
static_assert((kSlabHeader + sizeof(Block)) % 16 == 0, "payloads of class 8 are aligned to 16");

// The slabs of one set and one class, newest or last used first.
struct SlabList {
  std::atomic<Slab*> head{nullptr};
  std::atomic<std::uint32_t> lock{0};  // 1 while a thread changes head or a next pointer
};

// What is before a large block's payload.
struct LargeHeader {
  Word magic;   // which routine made the block, or what became of it
  Word caller;  // the header word that Block means, too
};
static_assert(sizeof(LargeHeader) == 16);

// Whether the header word would be the address of the slab that a block at this place lies in. Also
// true for a free block whose successor in the free list lies below it, and not too far.
inline bool IsWithinSlabBelow(std::uintptr_t header, const Block* block) {
  const auto place = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(block));
  const auto slab = static_cast<std::int64_t>(header);
  return slab != 0 && slab < place && slab > place - static_cast<std::int64_t>(kSlabBytes);
}

// What the words mean as pointers. They carry bits beside the address, so they cannot be pointers.
// NOLINTBEGIN(performance-no-int-to-ptr)
inline Block* FirstFreeOf(std::uintptr_t first) {
  return reinterpret_cast<Block*>(first & ~kFreeBit);
}
inline Slab* SlabOf(std::uintptr_t header) {
  return reinterpret_cast<Slab*>(header);
}
// NOLINTEND(performance-no-int-to-ptr)

// Lays out a slab of one class with that many blocks, all free, in the order of their addresses.
// Nobody else knows the slab yet.
void FormatSlab(Slab& slab, std::uint32_t classValue, std::size_t blockCount);

}  // namespace Memory
