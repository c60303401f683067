// The lists of slabs under every interleaving of two and three threads. Slabs hold two blocks, so
// that each one runs full and empty, moves, and has a successor within a few steps.

#include "memory/SlabLists.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "tests/memory/Interleavings.h"

namespace {

using Model = CInterleavings<Defect::None>;
using Kind = Model::Kind;
using Program = Model::Program;

constexpr Model::Operation kTake{Kind::Take};
constexpr Model::Operation Give(std::size_t which) {
  return {Kind::Give, which};
}

// What the list is like when the threads begin.
const Program kNoSlab = {};
const Program kOneInUse = {kTake};
const Program kBothFree = {kTake, kTake, Give(1), Give(0)};
const Program kSecondSlabFree = {kTake,   kTake,   kTake,
                                 Give(0), Give(1), kTake};  // the first is full

struct Row {
  const char* name;
  Program before;
  std::vector<Program> programs;
  std::set<std::uint32_t> slabs;  // that may have been made at the end
};

void ExpectWholeInAnyOrder(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto result = Model::Explore(row.before, row.programs);
    EXPECT_EQ(result.fault, "");
    EXPECT_EQ(result.slabsMade, row.slabs);
    EXPECT_GT(result.states, 500u) << "too few to have gone through all orders";
    EXPECT_GT(result.ends, 0u);
  }
}

TEST(SlabLists, KeepEveryBlockOnceInAnyOrderOfTwoThreads) {
  ExpectWholeInAnyOrder({
      // One slab serves both, whoever makes it: nobody makes a second for having come late.
      {"two first takes", kNoSlab, {{kTake}, {kTake}}, {1}},
      {"take and give against the same", kOneInUse, {{kTake, Give(0)}, {kTake, Give(0)}}, {1, 2}},
      // A thread may sleep between the first block and its successor, while the other takes both
      // and gives back the first.
      {"the same block first again", kBothFree, {{kTake, kTake}, {kTake, kTake, Give(0)}}, {2}},
      {"gives against gives", kBothFree, {{kTake, Give(0), kTake}, {kTake, Give(0)}}, {1}},
      // The first take from the second slab moves it to the front.
      {"a move against a move", kSecondSlabFree, {{kTake}, {kTake}}, {2}},
      {"a move under walks", kSecondSlabFree, {{kTake, Give(0)}, {kTake, kTake}}, {2, 3}},
      {"a new slab against a move", kSecondSlabFree, {{kTake, kTake}, {kTake}}, {3}},
  });
}

TEST(SlabLists, KeepEveryBlockOnceInAnyOrderOfThreeThreads) {
  ExpectWholeInAnyOrder({
      {"three takes of two blocks", kBothFree, {{kTake}, {kTake}, {kTake}}, {2}},
      {"takes against a give", kOneInUse, {{kTake, Give(0)}, {kTake}, {kTake}}, {2}},
      {"a move under two walks", kSecondSlabFree, {{kTake}, {kTake}, {kTake}}, {3}},
  });
}

TEST(SlabLists, AnswerNullWithTheLockFreeWhenThereIsNoMemory) {
  const auto result = Model::Explore(kOneInUse, {{kTake, kTake}, {kTake, Give(0), kTake}}, 1);
  EXPECT_EQ(result.fault, "");
  EXPECT_EQ(result.slabsMade, std::set<std::uint32_t>{1});
}

// The change counter and the list lock are what holds the lists together; without either the model
// finds the order that breaks them.
TEST(SlabListsModel, FindsTheBlockThatIsFreeAndInUseWithoutTheChangeCounter) {
  using Broken = CInterleavings<Defect::IgnoresChanges>;
  constexpr Broken::Operation kBrokenTake{Broken::Kind::Take};
  constexpr Broken::Operation kGiveFirst{Broken::Kind::Give, 0};
  constexpr Broken::Operation kGiveSecond{Broken::Kind::Give, 1};
  const auto result =
      Broken::Explore({kBrokenTake, kBrokenTake, kGiveSecond, kGiveFirst},
                      {{kBrokenTake, kBrokenTake}, {kBrokenTake, kBrokenTake, kGiveFirst}});
  EXPECT_EQ(result.fault.substr(0, 22), "a free block is in use") << result.fault;
}

TEST(SlabListsModel, FindsTheLostSlabWithoutTheLock) {
  using Broken = CInterleavings<Defect::LocksAreFree>;
  constexpr Broken::Operation kBrokenTake{Broken::Kind::Take};
  const auto result = Broken::Explore({}, {{kBrokenTake}, {kBrokenTake}});
  EXPECT_EQ(result.fault.substr(0, 14), "a slab is lost") << result.fault;
}

}  // namespace
