// What the allocator does when the C library has no memory, and what stands before a large block at
// the moments when nobody but the C library could look: while it is reallocated, and when it goes
// back. This program's calls are linked to the functions below, which look, and answer as told.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "memory/Allocator.h"

namespace {

// What the functions of the C library are to do, and have seen of one block.
struct Watch {
  bool hasNoMemory = false;
  const void* block = nullptr;  // as the C library knows it
  void* moveTo = nullptr;       // where realloc puts it; the test's own memory
  std::optional<std::uintptr_t> inRealloc, inFree;
};
Watch watch;

std::uintptr_t FirstWordAt(const void* block) {
  std::uintptr_t word;
  std::memcpy(&word, block, sizeof word);
  return word;
}

}  // namespace

// The linker gives these names: a call of free is one of __wrap_free, whose own way to it is
// __real_free.
extern "C" {
void* __real_malloc(std::size_t size);                // NOLINT(bugprone-reserved-identifier)
void __real_free(void* block);                        // NOLINT(bugprone-reserved-identifier)
void* __real_realloc(void* block, std::size_t size);  // NOLINT(bugprone-reserved-identifier)

void* __wrap_malloc(std::size_t size) {  // NOLINT(bugprone-reserved-identifier)
  return watch.hasNoMemory ? nullptr : __real_malloc(size);
}

void __wrap_free(void* block) {  // NOLINT(bugprone-reserved-identifier)
  if (block && block == watch.block) watch.inFree = FirstWordAt(block);
  if (!block || block != watch.moveTo) __real_free(block);
}

void* __wrap_realloc(void* block, std::size_t size) {  // NOLINT(bugprone-reserved-identifier)
  if (!block || block != watch.block) return __real_realloc(block, size);
  watch.inRealloc = FirstWordAt(block);
  if (watch.hasNoMemory) return nullptr;
  if (!watch.moveTo) return __real_realloc(block, size);
  std::memcpy(watch.moveTo, block, size);
  __real_free(block);
  return watch.moveTo;
}
}

namespace {

constexpr std::size_t kSize = 2000;
const auto kAllocated = reinterpret_cast<std::uintptr_t>(&AllocateBlock);
const auto kReallocated = reinterpret_cast<std::uintptr_t>(&ReallocateBlock);

std::uintptr_t MagicOf(const void* payload) {
  return static_cast<const std::uintptr_t*>(payload)[-2];
}
std::uintptr_t CallerOf(const void* payload) {
  return static_cast<const std::uintptr_t*>(payload)[-1];
}

std::uint32_t LargeCount() {
  std::uint32_t count = 0;
  GetMemoryStatistics(&count, nullptr, nullptr, nullptr);
  return count;
}

std::uint32_t SlabsMade() {
  std::uint32_t slabs = 0;
  GetMemoryStatistics(nullptr, &slabs, nullptr, nullptr);
  return slabs;
}

void Look(const void* payload) {
  watch = Watch();
  watch.block = static_cast<const std::byte*>(payload) - 16;
}

TEST(LargeBlock, IsMarkedAsFreedWhenItGoes) {
  void* block = AllocateBlock(kSize, nullptr);
  Look(block);
  FreeBlock(block);
  EXPECT_EQ(watch.inFree, kAllocated ^ 0x55555555);

  block = ReallocateBlock(AllocateBlock(kSize, nullptr), 2 * kSize, nullptr);
  ASSERT_EQ(MagicOf(block), kReallocated);
  Look(block);
  FreeBlock(block);
  EXPECT_EQ(watch.inFree, kAllocated ^ 0x55555555) << "whoever made it";
}

TEST(LargeBlock, IsMarkedWhileItIsReallocated) {
  void* block = AllocateBlock(kSize, nullptr);
  for (int round = 0; round < 2; ++round) {
    Look(block);
    block = ReallocateBlock(block, kSize + 1000, nullptr);
    EXPECT_EQ(watch.inRealloc, kAllocated ^ 0xAAAAAAAA);
    EXPECT_EQ(MagicOf(block), kReallocated);
  }
  FreeBlock(block);
}

TEST(LargeBlock, KeepsTheMarkOfAReallocationThatFailed) {
  const std::uint32_t before = LargeCount();
  int caller = 0;
  void* const block = AllocateBlock(kSize, &caller);
  std::memset(block, 'x', kSize);
  Look(block);
  watch.hasNoMemory = true;
  EXPECT_EQ(ReallocateBlock(block, 2 * kSize, nullptr), nullptr);
  EXPECT_EQ(MagicOf(block), kAllocated ^ 0xAAAAAAAA);
  EXPECT_EQ(CallerOf(block), reinterpret_cast<std::uintptr_t>(&caller));
  EXPECT_EQ(static_cast<const char*>(block)[kSize - 1], 'x');
  EXPECT_EQ(LargeCount(), before + 1);

  Look(block);
  void* const moved = ReallocateBlock(block, 2 * kSize, nullptr);  // there is memory again
  EXPECT_EQ(MagicOf(moved), kReallocated);
  FreeBlock(moved);
  EXPECT_EQ(LargeCount(), before);
}

TEST(Allocator, AnswersNullWithoutMemoryAndGoesOnWhenThereIsSome) {
  const std::uint32_t largeCount = LargeCount();
  const std::uint32_t slabs = SlabsMade();
  watch = Watch();
  watch.hasNoMemory = true;
  EXPECT_EQ(AllocateBlock(kSize, nullptr), nullptr);
  EXPECT_EQ(AllocateBlock(136, nullptr), nullptr) << "a class that nobody has used";
  EXPECT_EQ(LargeCount(), largeCount);
  EXPECT_EQ(SlabsMade(), slabs);

  watch = Watch();
  void* const block = AllocateBlock(136, nullptr);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(SlabsMade(), slabs + 1);
  FreeBlock(block);
}

TEST(Allocator, LeavesASmallBlockThatCannotGrow) {
  auto* const block = static_cast<char*>(AllocateBlock(100, nullptr));
  std::memset(block, 'x', 104);
  watch = Watch();
  watch.hasNoMemory = true;
  EXPECT_EQ(ReallocateBlock(block, kSize, nullptr), nullptr);
  EXPECT_EQ(ReallocateBlock(block, 152, nullptr), nullptr) << "a class that nobody has used";
  EXPECT_EQ(ReallocateBlock(block, 104, nullptr), block);
  EXPECT_EQ(std::string(block, 104), std::string(104, 'x'));

  watch = Watch();
  auto* const moved = static_cast<char*>(ReallocateBlock(block, kSize, nullptr));
  ASSERT_NE(moved, nullptr);
  EXPECT_EQ(std::string(moved, 104), std::string(104, 'x')) << "all that its class holds";
  FreeBlock(moved);
}

// The first caller remains, and may lie where the block's slab would lie only in the new place.
TEST(LargeBlock, AltersACallerThatCouldBeItsSlabOnceItHasMoved) {
  constexpr std::uintptr_t kTopBit = std::uintptr_t{1} << 63;
  std::vector<std::byte> memory(400'000);  // far from where blocks of kSize are
  std::byte* const place = memory.data() + 300'000;
  for (const auto& [distance, couldBe] : {std::pair{1000, true}, {290'000, false}}) {
    SCOPED_TRACE(distance);
    const std::uint32_t before = LargeCount();
    const std::byte* const caller = place - distance;
    const auto noted = reinterpret_cast<std::uintptr_t>(caller);
    void* block = AllocateBlock(kSize, caller);
    ASSERT_EQ(CallerOf(block), noted) << "the first place is near the second one";
    Look(block);
    watch.moveTo = place;
    block = ReallocateBlock(block, 500, nullptr);
    ASSERT_EQ(block, place + 16);
    EXPECT_EQ(CallerOf(block), couldBe ? noted ^ kTopBit : noted);
    FreeBlock(block);
    EXPECT_EQ(LargeCount(), before);
  }
}

}  // namespace
