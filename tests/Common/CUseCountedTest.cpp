#include "Common/CUseCounted.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

struct Probe : CUseCounted {
  explicit Probe(int* deaths) : fDeaths(deaths) {}
  ~Probe() override { ++*fDeaths; }
  int* fDeaths;
};

struct ProbeValue {
  explicit ProbeValue(int* deaths) : fDeaths(deaths) {}
  ~ProbeValue() { ++*fDeaths; }
  int* fDeaths;
};

TEST(CUseCounted, StartsAtOneAndDiesWithTheLastReference) {
  int deaths = 0;
  auto* probe = new Probe(&deaths);
  EXPECT_EQ(probe->UseCount(), 1u);
  EXPECT_EQ(probe->AddRef(), 2u);
  EXPECT_FALSE(probe->Release());
  EXPECT_EQ(deaths, 0);
  EXPECT_TRUE(probe->Release());
  EXPECT_EQ(deaths, 1);
}

TEST(CUseCounted, CountsFromEightThreads) {
  int deaths = 0;
  auto* probe = new Probe(&deaths);
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([probe] {
      for (int k = 0; k < 10000; ++k) {
        probe->AddRef();
        probe->Release();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(probe->UseCount(), 1u);
  EXPECT_TRUE(probe->Release());
}

TEST(CUsePtr, AdoptsSharesAndHandsOn) {
  int deaths = 0;
  CUsePtr<Probe> first(new Probe(&deaths));
  CUsePtr<Probe> second = first;
  EXPECT_EQ(first->UseCount(), 2u);
  EXPECT_EQ(first, second);
  CUsePtr<Probe> moved = std::move(second);
  EXPECT_FALSE(second);
  EXPECT_EQ(moved->UseCount(), 2u);
  const CUsePtr<Probe>& itself = moved;
  moved = itself;
  EXPECT_EQ(first->UseCount(), 2u);
  Probe* raw = moved.Detach();
  EXPECT_EQ(raw->UseCount(), 2u);
  EXPECT_FALSE(raw->Release());
  const CUsePtr<Probe> shared = ShareUse(raw);
  first.Reset();
  EXPECT_EQ(deaths, 0);
  EXPECT_EQ(shared->UseCount(), 1u);
}

TEST(CUseCountedSharedPtr, DeletesTheValueWithTheLastCopy) {
  int deaths = 0;
  {
    CUseCountedSharedPtr<ProbeValue> first(new ProbeValue(&deaths));
    const CUseCountedSharedPtr<ProbeValue> copy = first;
    EXPECT_EQ(first.Get(), copy.Get());
    first = {};
    EXPECT_FALSE(first);
    EXPECT_EQ(deaths, 0);
  }
  EXPECT_EQ(deaths, 1);
}

}  // namespace
