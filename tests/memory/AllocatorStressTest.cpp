// Many threads at once: blocks of mixed sizes, filled with patterns, and freed by whichever thread
// comes across them. Seeded, so that at least the requests are the same in every run.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "memory/Allocator.h"

namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int kRequestsAThread = 50'000;
#else
constexpr int kRequestsAThread = 1'000'000;
#endif
constexpr unsigned kThreads = 8;

struct Contents {
  std::uint32_t size;
  std::uint32_t seed;
};

// The first bytes say what the rest must be.
void* MakeFilled(std::uint32_t size, std::uint32_t seed) {
  auto* const block = static_cast<std::byte*>(AllocateBlock(size, nullptr));
  const Contents contents{size, seed};
  std::memcpy(block, &contents, sizeof contents);
  std::memset(block + sizeof contents, static_cast<int>(seed & 0xFF), size - sizeof contents);
  return block;
}

bool CheckAndFree(void* block) {
  if (!block) return true;
  Contents contents;
  std::memcpy(&contents, block, sizeof contents);
  const auto* bytes = static_cast<const unsigned char*>(block);
  bool isIntact = true;
  for (std::uint32_t at = sizeof contents; at < contents.size; ++at) {
    isIntact &= bytes[at] == (contents.seed & 0xFF);
  }
  FreeBlock(block);
  return isIntact;
}

// Places where threads leave blocks for each other.
using Exchange = std::array<std::atomic<void*>, 512>;

long DamagedBlocksOf(unsigned thread, Exchange& exchange) {
  std::mt19937 random(thread + 1);
  long damaged = 0;
  for (int request = 0; request < kRequestsAThread; ++request) {
    const std::uint32_t dice = random();
    // Mostly small; the very small ones share few lists, so that threads meet.
    const std::uint32_t size = dice % 64 == 0  ? 265 + dice / 64 % 2000
                               : dice % 2 == 0 ? 8 + dice / 64 % 24
                                               : 8 + dice / 64 % 257;
    void* block = MakeFilled(size, dice);
    if (dice % 16 == 1) {
      void* const larger = ReallocateBlock(block, size + dice / 64 % 300, nullptr);
      if (larger) block = larger;
    }
    // Release: what is in the block. Acquire: what the other thread has put into its own.
    auto& place = exchange[random() % exchange.size()];
    if (!CheckAndFree(place.exchange(block, std::memory_order_acq_rel))) ++damaged;
  }
  return damaged;
}

void ExchangeBlocksOver(std::uint32_t sets) {
  SetBucketCount(sets);
  std::uint32_t largeBefore = 0;
  std::uint64_t bytesBefore = 0;
  GetMemoryStatistics(&largeBefore, nullptr, &bytesBefore, nullptr);

  const auto exchange = std::make_unique<Exchange>();
  std::atomic<long> damaged{0};
  std::vector<std::thread> threads;
  for (unsigned thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] { damaged += DamagedBlocksOf(thread, *exchange); });
  }
  for (std::thread& thread : threads) thread.join();
  for (auto& place : *exchange) damaged += !CheckAndFree(place.exchange(nullptr));
  EXPECT_EQ(damaged, 0);

  std::uint32_t large = 0;
  std::uint64_t bytes = 0;
  GetMemoryStatistics(&large, nullptr, &bytes, nullptr);
  EXPECT_EQ(large, largeBefore);
  EXPECT_EQ(bytes, bytesBefore);
}

TEST(AllocatorStress, OneSet) {
  ExchangeBlocksOver(1);
}
TEST(AllocatorStress, TwoSets) {
  ExchangeBlocksOver(2);
}
TEST(AllocatorStress, EightSets) {
  ExchangeBlocksOver(8);
}

// Counts while others change what is counted: no value is promised, but none may crash or hang.
TEST(AllocatorStress, StatisticsWhileOthersAllocate) {
  std::atomic<bool> isOver{false};
  std::thread other([&] {
    while (!isOver.load(std::memory_order_relaxed)) {
      void* blocks[100];
      for (void*& block : blocks) block = AllocateBlock(48, nullptr);
      for (void* block : blocks) FreeBlock(block);
    }
  });
  for (int round = 0; round < 500; ++round) {
    std::uint64_t bytes = 0;
    GetMemoryStatistics(nullptr, nullptr, &bytes, nullptr);
    EXPECT_LE(bytes, 100u * 56u);
  }
  isOver.store(true, std::memory_order_relaxed);
  other.join();
}

}  // namespace
