#include "Libs/Platform/StackTrace.h"

#include <gtest/gtest.h>

#include <array>
#include <span>

namespace {

std::uintptr_t AddressOf(std::size_t (*function)(std::span<std::uintptr_t>)) {
  return reinterpret_cast<std::uintptr_t>(function);
}

}  // namespace

// Exported by this program, so that the system knows its name.
[[gnu::noinline, gnu::visibility("default")]] std::size_t CaptureForTest(
    std::span<std::uintptr_t> frames) {
  const volatile std::size_t count = CaptureStack(frames);  // no tail call, which has no frame
  return count;
}

[[gnu::noinline]] int DescendForTest(int depth, std::span<std::uintptr_t> frames) {
  if (depth == 0) return static_cast<int>(CaptureStack(frames));
  const volatile int count = DescendForTest(depth - 1, frames);
  return count;
}

TEST(StackTrace, BeginsWithTheCallersOwnFrame) {
  std::array<std::uintptr_t, 61> frames{};
  ASSERT_GT(CaptureForTest(frames), 1U);
  const StackSymbol symbol = FindSymbol(frames[0]);
  EXPECT_EQ(symbol.address, AddressOf(&CaptureForTest));
  EXPECT_EQ(symbol.name.substr(0, symbol.name.find('(')), "CaptureForTest");
}

TEST(StackTrace, FillsNoMoreThanItIsGiven) {
  std::array<std::uintptr_t, 8> frames{};
  EXPECT_EQ(DescendForTest(100, std::span(frames).first(5)), 5);
  EXPECT_NE(frames[4], 0U);
  EXPECT_EQ(frames[5], 0U);
  EXPECT_EQ(DescendForTest(0, {}), 0);
}

TEST(StackTrace, KnowsNoSymbolOutsideOfTheProgram) {
  const StackSymbol symbol = FindSymbol(1);
  EXPECT_EQ(symbol.name, "");
  EXPECT_EQ(symbol.address, 0U);
}
