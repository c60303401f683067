// The operators, bound as in the module; here they serve the whole program.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <vector>

#include "memory/Allocator.h"

namespace {

std::uint64_t PayloadBytes() {
  std::uint64_t bytes = 0;
  GetMemoryStatistics(nullptr, nullptr, &bytes, nullptr);
  return bytes;
}

std::uint32_t LargeCount() {
  std::uint32_t count = 0;
  GetMemoryStatistics(&count, nullptr, nullptr, nullptr);
  return count;
}

struct FormRow {
  const char* name;
  void* (*take)(std::size_t size);
  void (*give)(void* block, std::size_t size);
};

constexpr FormRow kForms[] = {
    {"plain", [](std::size_t size) { return ::operator new(size); },
     [](void* block, std::size_t) { ::operator delete(block); }},
    {"array", [](std::size_t size) { return ::operator new[](size); },
     [](void* block, std::size_t) { ::operator delete[](block); }},
    {"sized", [](std::size_t size) { return ::operator new(size); },
     [](void* block, std::size_t size) { ::operator delete(block, size); }},
    {"sized array", [](std::size_t size) { return ::operator new[](size); },
     [](void* block, std::size_t size) { ::operator delete[](block, size); }},
    {"not throwing", [](std::size_t size) { return ::operator new(size, std::nothrow); },
     [](void* block, std::size_t) { ::operator delete(block, std::nothrow); }},
    {"array, not throwing", [](std::size_t size) { return ::operator new[](size, std::nothrow); },
     [](void* block, std::size_t) { ::operator delete[](block, std::nothrow); }},
};

TEST(OperatorNew, ReachesTheAllocatorInEveryFormWithoutAnAlignment) {
  for (const FormRow& form : kForms) {
    SCOPED_TRACE(form.name);
    const std::uint64_t bytes = PayloadBytes();
    void* const small = form.take(100);
    EXPECT_EQ(PayloadBytes(), bytes + 104);
    form.give(small, 100);
    EXPECT_EQ(PayloadBytes(), bytes);

    const std::uint32_t count = LargeCount();
    void* const large = form.take(100'000);
    EXPECT_EQ(LargeCount(), count + 1);
    form.give(large, 100'000);
    EXPECT_EQ(LargeCount(), count);

    void* const empty = form.take(0);
    EXPECT_NE(empty, nullptr);
    form.give(empty, 0);
    form.give(nullptr, 0);
    EXPECT_EQ(PayloadBytes(), bytes);
  }
}

TEST(OperatorNew, LeavesTheFormsWithAnAlignmentAPairOfTheirOwn) {
  const std::uint64_t bytes = PayloadBytes();
  const std::uint32_t count = LargeCount();
  for (const std::size_t alignment : {32, 64, 4096}) {
    for (const std::size_t size : {0, 8, 100, 264, 265, 100'000}) {
      void* const block = ::operator new (size, std::align_val_t{alignment});
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0U);
      EXPECT_EQ(PayloadBytes(), bytes);
      EXPECT_EQ(LargeCount(), count);
      ::operator delete (block, size, std::align_val_t{alignment});
    }
  }
  EXPECT_EQ(PayloadBytes(), bytes);
  EXPECT_EQ(LargeCount(), count);
}

[[gnu::noinline]] void* TakeLarge() {
  void* const block = ::operator new(5000);
  asm volatile("" : : "r"(block) : "memory");  // else the call becomes a jump
  return block;
}

TEST(OperatorNew, NotesItsCallerInALargeBlock) {
  void* const block = TakeLarge();
  const std::uintptr_t noted = static_cast<const std::uintptr_t*>(block)[-1];
  const auto caller = reinterpret_cast<std::uintptr_t>(&TakeLarge);
  EXPECT_GT(noted, caller);
  EXPECT_LT(noted, caller + 200);
  ::operator delete(block);
}

TEST(OperatorNew, ServesTheStandardLibrary) {
  const std::uint64_t bytes = PayloadBytes();
  {
    const std::vector<std::string> texts(100, std::string(50, 'x'));
    EXPECT_GE(PayloadBytes(), bytes + 100 * 50);
  }
  EXPECT_EQ(PayloadBytes(), bytes);
}

}  // namespace
