// One thread: sizes, places, statistics. Small classes may hold free blocks of earlier tests of the
// same process, so slabs are counted from a point where the next block makes one.

#include "memory/Allocator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "memory/Slab.h"

namespace {

struct Statistics {
  std::uint32_t largeCount = 7;
  std::uint32_t slabs = 7;
  std::uint64_t payloadBytes = 7;
  std::uint32_t largeBytes = 7;
};

Statistics Now() {
  Statistics now;
  GetMemoryStatistics(&now.largeCount, &now.slabs, &now.payloadBytes, &now.largeBytes);
  return now;
}

// Alone: the other statistics look at every list.
std::uint32_t SlabsMade() {
  std::uint32_t slabs = 0;
  GetMemoryStatistics(nullptr, &slabs, nullptr, nullptr);
  return slabs;
}

void* Allocate(std::size_t size) {
  return AllocateBlock(size, nullptr);
}

// Blocks that are freed at its end.
class CBlocks {
public:
  ~CBlocks() {
    for (void* block : fBlocks) FreeBlock(block);
  }
  void* Take(std::size_t size) { return fBlocks.emplace_back(Allocate(size)); }

private:
  std::vector<void*> fBlocks;
};

// Takes blocks up to the first of a new slab, which it answers.
void* TakeUpToANewSlab(CBlocks& blocks, std::size_t size) {
  const std::uint32_t before = SlabsMade();
  for (;;) {
    void* const block = blocks.Take(size);
    if (SlabsMade() != before) return block;
  }
}

std::uintptr_t HeaderOf(const void* payload) {
  return static_cast<const std::uintptr_t*>(payload)[-1];
}

// What the formula gives, written down the other way round.
std::uint32_t ExpectedClass(std::size_t size) {
  std::uint32_t classValue = 8;
  while (classValue < size) classValue += 16;
  return classValue;
}

TEST(Allocator, PutsEachSizeIntoTheNextClass) {
  for (std::size_t size = 0; size <= 600; ++size) {
    SCOPED_TRACE(size);
    EXPECT_EQ(Memory::ClassOf(size), ExpectedClass(size));
  }
}

TEST(Allocator, CutsSmallSizesFromSlabsAndCountsTheirClass) {
  for (std::size_t size = 0; size <= 600; ++size) {
    SCOPED_TRACE(size);
    const Statistics before = Now();
    void* const block = Allocate(size);
    ASSERT_NE(block, nullptr);
    const Statistics after = Now();
    EXPECT_EQ(after.payloadBytes - before.payloadBytes, size <= 264 ? ExpectedClass(size) : 0);
    EXPECT_EQ(after.largeCount - before.largeCount, size <= 264 ? 0 : 1);
    EXPECT_EQ(after.largeBytes, 0u);
    FreeBlock(block);
    EXPECT_EQ(Now().payloadBytes, before.payloadBytes);
    EXPECT_EQ(Now().largeCount, before.largeCount);
  }
}

TEST(Allocator, AlignsEveryPayloadToSixteen) {
  CBlocks blocks;
  for (std::size_t size = 0; size <= 600; ++size) {
    for (int round = 0; round < 3; ++round) {
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks.Take(size)) % 16, 0u) << size;
    }
  }
}

TEST(Allocator, GivesBlocksThatHoldWhatTheClassPromises) {
  for (std::size_t size = 0; size <= 600; ++size) {
    void* const first = Allocate(size);
    void* const second = Allocate(size);
    const std::size_t usable = size <= 264 ? ExpectedClass(size) : size;
    std::memset(first, 0x11, usable);
    std::memset(second, 0x22, usable);
    const std::string expected(usable, '\x11');
    EXPECT_EQ(std::memcmp(first, expected.data(), usable), 0) << size;
    FreeBlock(second);
    FreeBlock(first);
  }
}

TEST(Allocator, FillsASlabBeforeItMakesAnother) {
  for (std::uint32_t classValue = 8; classValue <= 264; classValue += 16) {
    SCOPED_TRACE(classValue);
    const std::size_t count = 0x44000 / (classValue + 8);
    if (classValue == 8) {
      EXPECT_EQ(count, 17408u);
    }
    CBlocks blocks;
    TakeUpToANewSlab(blocks, classValue);
    const std::uint32_t slabs = SlabsMade();
    for (std::size_t taken = 1; taken < count; ++taken) blocks.Take(classValue);
    EXPECT_EQ(SlabsMade(), slabs);
    blocks.Take(classValue);
    EXPECT_EQ(SlabsMade(), slabs + 1);
  }
}

TEST(Allocator, HandsOutAFreshSlabInTheOrderOfItsAddresses) {
  CBlocks blocks;
  auto* const first = static_cast<std::byte*>(TakeUpToANewSlab(blocks, 40));
  EXPECT_EQ(HeaderOf(first), reinterpret_cast<std::uintptr_t>(first) - 64);
  for (std::ptrdiff_t index = 1; index < 100; ++index) {
    EXPECT_EQ(blocks.Take(40), first + index * 48);
  }
}

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
// Headers at one and the same place of their pages would share one set of the cache's lines.
TEST(Allocator, BeginsItsSlabsAllOverTheirPages) {
  constexpr std::uintptr_t kPage = 4096;
  constexpr std::uintptr_t kCacheLine = 64;
  CBlocks blocks;
  std::set<std::uintptr_t> lines;
  for (std::size_t size = 8; size <= 264; size += 16) {
    lines.insert(HeaderOf(TakeUpToANewSlab(blocks, size)) % kPage / kCacheLine);
  }
  EXPECT_GT(lines.size(), 8U);
}
#endif

TEST(Allocator, TakesTheBlockThatWasFreedLast) {
  void* const first = Allocate(100);
  void* const second = Allocate(100);
  FreeBlock(first);
  FreeBlock(second);
  EXPECT_EQ(Allocate(100), second);
  EXPECT_EQ(Allocate(100), first);
  FreeBlock(first);
  FreeBlock(second);
}

TEST(Allocator, ReusesFreedBlocksBeforeItMakesASlab) {
  std::vector<void*> blocks;
  for (int index = 0; index < 50'000; ++index) blocks.push_back(Allocate(24));
  const std::uint32_t slabs = SlabsMade();
  for (int round = 0; round < 5; ++round) {
    for (void* block : blocks) FreeBlock(block);
    for (void*& block : blocks) block = Allocate(24);
  }
  EXPECT_EQ(SlabsMade(), slabs);
  for (void* block : blocks) FreeBlock(block);
}

TEST(Allocator, MovesTheSlabThatHadABlockToTheFront) {
  CBlocks blocks;
  TakeUpToANewSlab(blocks, 200);
  std::vector<void*> full;  // the rest of that slab: 1339 blocks of 208 bytes
  for (std::size_t taken = 1; taken < 0x44000 / 208; ++taken) full.push_back(Allocate(200));
  void* const newest = TakeUpToANewSlab(blocks, 200);
  for (std::size_t taken = 1; taken < 0x44000 / 208; ++taken) blocks.Take(200);
  // Both are full. Two blocks come free in the older one: the first that is taken brings it
  // forward.
  FreeBlock(full[0]);
  FreeBlock(full[1]);
  EXPECT_EQ(Allocate(200), full[1]);
  // One comes free in the newest, too; but the older slab is in front, and has one.
  FreeBlock(newest);
  EXPECT_EQ(Allocate(200), full[0]);
  EXPECT_EQ(Allocate(200), newest);  // which CBlocks frees
  for (void* block : full) FreeBlock(block);
}

TEST(Allocator, RefusesWhatNoPointerDifferenceHolds) {
  const Statistics before = Now();
  for (const std::size_t size : {std::size_t{PTRDIFF_MAX} + 1, SIZE_MAX - 23, SIZE_MAX - 15,
                                 SIZE_MAX - 7, SIZE_MAX - 1, SIZE_MAX}) {
    EXPECT_EQ(Allocate(size), nullptr) << size;
  }
  EXPECT_EQ(Now().largeCount, before.largeCount);
  EXPECT_EQ(Now().payloadBytes, before.payloadBytes);
}

TEST(Allocator, ReallocatesWithinTheClassInPlace) {
  for (std::size_t size = 1; size <= 264; ++size) {
    void* const block = Allocate(size);
    for (std::size_t other = 1; other <= ExpectedClass(size); ++other) {
      EXPECT_EQ(ReallocateBlock(block, other, nullptr), block) << size << " to " << other;
    }
    FreeBlock(block);
  }
}

struct ReallocateRow {
  const char* name;
  std::size_t from;
  std::size_t to;
  std::size_t kept;  // bytes
};

TEST(Allocator, KeepsTheContentsOfAReallocatedBlock) {
  const ReallocateRow rows[] = {
      {"small to next class", 8, 9, 8},
      {"small to small", 20, 200, 20},
      {"small to large", 264, 265, 264},
      {"small to very large", 100, 1 << 20, 100},
      {"large to larger", 300, 1 << 20, 300},
      {"large to smaller", 1 << 20, 300, 300},
      {"large to what would be small", 1000, 10, 10},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const Statistics before = Now();
    auto* const block = static_cast<unsigned char*>(Allocate(row.from));
    for (std::size_t at = 0; at < row.from; ++at) block[at] = static_cast<unsigned char>(at * 7);
    auto* const moved = static_cast<unsigned char*>(ReallocateBlock(block, row.to, nullptr));
    ASSERT_NE(moved, nullptr);
    bool isKept = true;
    for (std::size_t at = 0; at < row.kept; ++at) isKept &= moved[at] == (at * 7 & 0xFF);
    EXPECT_TRUE(isKept);
    std::memset(moved, 1, row.to);
    FreeBlock(moved);
    EXPECT_EQ(Now().payloadBytes, before.payloadBytes);
    EXPECT_EQ(Now().largeCount, before.largeCount);
  }
}

TEST(Allocator, KeepsALargeBlockLargeWhateverItShrinksTo) {
  const Statistics before = Now();
  void* const block = ReallocateBlock(Allocate(1000), 1, nullptr);
  EXPECT_EQ(Now().largeCount, before.largeCount + 1);
  EXPECT_EQ(Now().payloadBytes, before.payloadBytes);
  FreeBlock(block);
  EXPECT_EQ(Now().largeCount, before.largeCount);
}

TEST(Allocator, AllocatesForANullBlockAndFreesForASizeOfZero) {
  const Statistics before = Now();
  void* const small = ReallocateBlock(nullptr, 0, nullptr);  // null goes before zero
  void* const large = ReallocateBlock(nullptr, 5000, nullptr);
  ASSERT_NE(small, nullptr);
  ASSERT_NE(large, nullptr);
  EXPECT_EQ(Now().payloadBytes, before.payloadBytes + 8);
  EXPECT_EQ(Now().largeCount, before.largeCount + 1);
  EXPECT_EQ(ReallocateBlock(small, 0, nullptr), nullptr);
  EXPECT_EQ(ReallocateBlock(large, 0, nullptr), nullptr);
  EXPECT_EQ(Now().payloadBytes, before.payloadBytes);
  EXPECT_EQ(Now().largeCount, before.largeCount);
}

TEST(Allocator, LeavesTheBlockWhenItCannotBeReallocated) {
  for (const std::size_t size : {std::size_t{100}, std::size_t{1000}}) {
    auto* const block = static_cast<char*>(Allocate(size));
    std::memset(block, 'x', size);
    EXPECT_EQ(ReallocateBlock(block, SIZE_MAX, nullptr), nullptr);
    EXPECT_EQ(ReallocateBlock(block, std::size_t{PTRDIFF_MAX} + 1, nullptr), nullptr);
    EXPECT_EQ(std::string(block, size), std::string(size, 'x'));
    FreeBlock(block);
  }
}

TEST(Allocator, AcceptsNullInFree) {
  const Statistics before = Now();
  FreeBlock(nullptr);
  EXPECT_EQ(Now().largeCount, before.largeCount);
}

TEST(Allocator, AcceptsNullForAnyStatistic) {
  GetMemoryStatistics(nullptr, nullptr, nullptr, nullptr);
  std::uint32_t slabs = 77;
  void* const block = Allocate(8);
  GetMemoryStatistics(nullptr, &slabs, nullptr, nullptr);
  EXPECT_EQ(slabs, Now().slabs);
  FreeBlock(block);
}

std::uintptr_t MagicOf(const void* payload) {
  return static_cast<const std::uintptr_t*>(payload)[-2];
}

TEST(LargeBlock, TellsItsCallerAndItsMaker) {
  int caller = 0;
  void* block = AllocateBlock(1000, &caller);
  EXPECT_EQ(HeaderOf(block), reinterpret_cast<std::uintptr_t>(&caller));
  EXPECT_EQ(MagicOf(block), reinterpret_cast<std::uintptr_t>(&AllocateBlock));
  block = ReallocateBlock(block, 100'000, nullptr);
  EXPECT_EQ(HeaderOf(block), reinterpret_cast<std::uintptr_t>(&caller));
  EXPECT_EQ(MagicOf(block), reinterpret_cast<std::uintptr_t>(&ReallocateBlock));
  FreeBlock(block);
}

// The word before the payload would be taken for a slab when the caller lies shortly below the
// block.
constexpr std::uintptr_t kTopBit = std::uintptr_t{1} << 63;

#if !defined(__SANITIZE_ADDRESS__)  // it gives no block out again that was freed shortly before
TEST(LargeBlock, AltersACallerThatCouldBeItsSlab) {
  auto* const place = static_cast<std::byte*>(AllocateBlock(1000, nullptr));
  FreeBlock(place);
  for (const std::ptrdiff_t distance : {-9, -8, -7, 0, 1, 1000, 278'575, 278'576, 278'577}) {
    SCOPED_TRACE(distance);
    const auto caller = reinterpret_cast<std::uintptr_t>(place) - 8 - distance;
    void* const block = AllocateBlock(1000, reinterpret_cast<const void*>(caller));
    ASSERT_EQ(block, place) << "malloc gives the block elsewhere this time";
    const bool couldBe = distance > 0 && distance < 278'584;
    EXPECT_EQ(HeaderOf(block), couldBe ? caller ^ kTopBit : caller);
    const std::uint32_t before = Now().largeCount;
    FreeBlock(block);
    EXPECT_EQ(Now().largeCount, before - 1);
  }
}
#endif

TEST(LargeBlock, IsNoneWhereTheHeaderCouldBeItsSlab) {
  EXPECT_TRUE(Memory::IsWithinSlabBelow(1000, reinterpret_cast<Memory::Block*>(1008)));
  EXPECT_FALSE(Memory::IsWithinSlabBelow(1008, reinterpret_cast<Memory::Block*>(1008)));
  EXPECT_TRUE(Memory::IsWithinSlabBelow(1000'001, reinterpret_cast<Memory::Block*>(1278'584)));
  EXPECT_FALSE(Memory::IsWithinSlabBelow(1000'000, reinterpret_cast<Memory::Block*>(1278'584)));
  EXPECT_FALSE(Memory::IsWithinSlabBelow(kTopBit | 1000, reinterpret_cast<Memory::Block*>(1008)));
}

}  // namespace
