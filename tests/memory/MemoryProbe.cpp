// A process for the tests to look at from outside: does what its first argument says with the
// allocator, and prints what it sees.

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <latch>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "memory/Allocator.h"
#include "memory/AllocatorState.h"

namespace {

using Arguments = std::vector<std::string>;

void* Allocate(std::size_t size) {
  return AllocateBlock(size, nullptr);
}

// Leaves without the allocator's own shutdown, for what has called it already.
[[noreturn]] void LeaveAtOnce() {
  std::fflush(stdout);
  _exit(0);
}

std::uint32_t SlabsMade() {
  std::uint32_t slabs = 0;
  GetMemoryStatistics(nullptr, &slabs, nullptr, nullptr);
  return slabs;
}

// The settings, and again after each SetBucketCount of the arguments.
void PrintSettings(const Arguments& arguments) {
  const auto print = [] {
    std::printf("%u %s\n", Memory::gBucketSetCount.load(),
                Memory::gUsesOtherBuckets ? "others" : "own");
  };
  print();
  for (const std::string& argument : arguments) {
    SetBucketCount(static_cast<std::uint32_t>(std::stoul(argument)));
    print();
  }
}

// Before start-up reads the settings.
struct EarlyCount {
  EarlyCount() {
    if (const char* count = std::getenv("PROBE_EARLY_COUNT")) SetBucketCount(std::atoi(count));
  }
};
[[gnu::init_priority(500)]] const EarlyCount gEarly;

// Has each of that many threads take a block of one class while the others have theirs, too. None
// allocates before the last is there: what malloc maps for a thread would come between the stacks.
void TakeABlockInEachOf(int count) {
  std::latch allAreThere(count);
  std::latch allHaveOne(count);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < count; ++thread) {
    threads.emplace_back([&] {
      allAreThere.arrive_and_wait();
      void* const block = Allocate(8);
      allHaveOne.arrive_and_wait();
      FreeBlock(block);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

void PrintSlabsOfThreads(const Arguments& arguments) {
  TakeABlockInEachOf(std::stoi(arguments.at(0)));
  std::printf("%u\n", SlabsMade());
}

constexpr int kBlocksASlab = 17408;  // of class 8

// Eight sets with a slab each, all free; from here on the first set serves every thread.
void MakeASlabInEachSet() {
  SetBucketCount(8);
  TakeABlockInEachOf(8);
  SetBucketCount(1);
}

// One set that needs more than it has.
void PrintSlabsWhileOneSetRunsOut(const Arguments&) {
  MakeASlabInEachSet();
  for (const int more : {kBlocksASlab, 1, kBlocksASlab - 1, 7 * kBlocksASlab, 1}) {
    for (int taken = 0; taken < more; ++taken) Allocate(8);
    std::printf("%u ", SlabsMade());
  }
  LeaveAtOnce();
}

std::size_t SetOf(const void* block) {
  const auto slab = static_cast<const std::uintptr_t*>(block)[-1];
  const auto hasIt = [slab](const Memory::BucketSet& set) {
    const Memory::Slab* here = set[8].head;
    while (here && reinterpret_cast<std::uintptr_t>(here) != slab) here = here->next;
    return here != nullptr;
  };
  return static_cast<std::size_t>(std::ranges::find_if(Memory::gBucketSets, hasIt) -
                                  Memory::gBucketSets.begin());
}

// The sets whose blocks the first one gets until all are used up, in this order.
void PrintSetsThatServeOne(const Arguments&) {
  MakeASlabInEachSet();
  std::vector<std::size_t> sets;
  for (int taken = 0; taken < 9 * kBlocksASlab; ++taken) {
    const std::size_t set = SetOf(Allocate(8));
    if (sets.empty() || sets.back() != set) sets.push_back(set);
  }
  for (const std::size_t set : sets) std::printf("%zu ", set);
}

// One of two neighbours that are free; its header links to the other one.
enum class LinkTo { Below, Above };
void* FreedBlock(LinkTo other) {
  void* const lower = Allocate(8);
  void* const upper = Allocate(8);
  void* const last = other == LinkTo::Below ? upper : lower;
  FreeBlock(last == upper ? lower : upper);
  FreeBlock(last);
  return last;
}

void FreeTwice(const Arguments&) {
  FreeBlock(FreedBlock(LinkTo::Below));
}

// A link above the block cannot be told from a large block's caller.
void FreeTwiceBelow(const Arguments&) {
  FreeBlock(FreedBlock(LinkTo::Above));
}

void FreeLargeTwice(const Arguments&) {
  void* const block = Allocate(100'000);
  Allocate(100'000);  // so that it does not go back to the system
  FreeBlock(block);
  FreeBlock(block);
}

void FreeForeign(const Arguments&) {
  FreeBlock(std::malloc(1000));
}

void FreeLargeWhoseReallocationFailed(const Arguments&) {
  void* const block = Allocate(1000);
  const rlimit limit{512u << 20, 512u << 20};
  setrlimit(RLIMIT_AS, &limit);
  std::printf("%d\n", ReallocateBlock(block, std::size_t{1} << 40, nullptr) == nullptr);
  FreeBlock(block);
}

// Forks while another thread holds the lock of a list that the child needs a slab of.
void ForkUnderLock(const Arguments&) {
  Memory::SlabList& list = Memory::gBucketSets[0][8];
  SetBucketCount(1);
  std::latch isHeld(1);
  std::thread holder([&] {
    list.lock.store(1);
    isHeld.count_down();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    list.lock.store(0);
  });
  isHeld.wait();
  const pid_t child = fork();
  if (child == 0) {
    alarm(30);
    _exit(Allocate(8) ? 3 : 4);
  }
  holder.join();
  int status = 0;
  waitpid(child, &status, 0);
  std::printf("child: %d\n", WIFEXITED(status) ? WEXITSTATUS(status) : -1);
  std::printf("parent: %d\n", Allocate(8) != nullptr);
}

void ReallocateFreed(const Arguments&) {
  ReallocateBlock(FreedBlock(LinkTo::Below), 100, nullptr);
}

const char* HasSlab(std::uint32_t classValue) {
  const bool hasOne = std::ranges::any_of(Memory::gBucketSets, [&](const Memory::BucketSet& set) {
    return set[classValue].head.load() != nullptr;
  });
  return hasOne ? "kept" : "gone";
}

void ShutDown(const Arguments&) {
  void* const empty = Allocate(24);
  void* const used = Allocate(40);
  void* const alsoUsed = Allocate(40);
  void* const large = Allocate(4000);
  FreeBlock(empty);
  std::printf("before: %s %s\n", HasSlab(24), HasSlab(40));
  ShutdownAllocator();
  std::printf("after: %s %s\n", HasSlab(24), HasSlab(40));
  FreeBlock(used);
  std::printf("one freed: %s\n", HasSlab(40));
  FreeBlock(alsoUsed);
  std::printf("both freed: %s\n", HasSlab(40));
  FreeBlock(large);
  void* const late = Allocate(24);
  std::printf("late block: %s\n", HasSlab(24));
  FreeBlock(late);
  std::printf("late block freed: %s\n", HasSlab(24));
  LeaveAtOnce();
}

// Behind the shutdown each free looks at the slab's blocks up to the first in use: here, at most of
// them.
void FreeFromTwoThreadsAfterTheShutdown(const Arguments&) {
  constexpr std::size_t kFreeBefore = kBlocksASlab / 2;
  SetBucketCount(1);
  std::vector<void*> blocks;
  for (int taken = 0; taken < kBlocksASlab; ++taken) blocks.push_back(Allocate(8));
  for (std::size_t index = 0; index < kFreeBefore; ++index) FreeBlock(blocks[index]);
  ShutdownAllocator();

  std::latch bothAreThere(2);
  const auto freeEverySecond = [&](std::size_t index) {
    bothAreThere.arrive_and_wait();
    for (; index + 2 < blocks.size(); index += 2) FreeBlock(blocks[index]);
  };
  std::thread other(freeEverySecond, kFreeBefore + 1);
  freeEverySecond(kFreeBefore);
  other.join();
  LeaveAtOnce();
}

void FreeTheLastBlockOfASlabInNoList(const Arguments&) {
  void* const block = Allocate(40);
  ShutdownAllocator();
  for (Memory::BucketSet& set : Memory::gBucketSets) set[40].head = nullptr;
  FreeBlock(block);
  std::printf("%d\n", static_cast<const std::uintptr_t*>(block)[-1] % 2 == 1);
  LeaveAtOnce();
}

void ShutDownTwice(const Arguments&) {
  ShutdownAllocator();
  ShutdownAllocator();
}

// The process ends as any does, with blocks alive in a slab and in malloc's own.
void LeaveWithBlocksAlive(const Arguments&) {
  std::printf("%d\n", Allocate(8) != nullptr && Allocate(4000) != nullptr);
}

void LeaveWhileOthersAllocate(const Arguments&) {
  for (int thread = 0; thread < 4; ++thread) {
    std::thread([] {
      for (std::size_t size = 0;; size = (size + 13) % 400) FreeBlock(Allocate(size));
    }).detach();
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

void EndAThreadWithBlocksAlive(const Arguments&) {
  std::vector<void*> blocks;
  std::thread([&] {
    for (std::size_t size = 0; size < 600; ++size) blocks.push_back(Allocate(size));
  }).join();
  for (void* block : blocks) FreeBlock(block);
  std::uint32_t large = 0;
  std::uint64_t bytes = 0;
  GetMemoryStatistics(&large, nullptr, &bytes, nullptr);
  std::printf("%u %llu\n", large, static_cast<unsigned long long>(bytes));
}

// Allocates blocks of one size until there are none.
void Exhaust(const Arguments& arguments) {
  const rlimit limit{512u << 20, 512u << 20};
  setrlimit(RLIMIT_AS, &limit);
  const std::size_t size = std::stoull(arguments.at(0));
  while (Allocate(size)) continue;
  MemoryFailure("new", size);
}

bool PrintReport(const char* text) {
  std::printf("reported: %s\n", text);
  return true;
}
bool DeclineReport(const char*) {
  return false;
}
bool FailWhileReporting(const char* text) {
  std::printf("reported: %s\n", text);
  std::fflush(stdout);
  MemoryFailure("again", 1);
}

// fail REPORTER LENGTH SIZE: a word of that length, or a null one for "null".
void Fail(const Arguments& arguments) {
  static const std::map<std::string, MemoryFailureReporter> reporters = {
      {"none", nullptr},
      {"prints", PrintReport},
      {"declines", DeclineReport},
      {"fails", FailWhileReporting}};
  SetMemoryFailureReporter(reporters.at(arguments.at(0)));
  if (arguments.at(1) == "null") MemoryFailure(nullptr, 1);
  const std::string word(std::stoul(arguments.at(1)), 'w');
  MemoryFailure(word.c_str(), std::stoull(arguments.at(2)));
}

}  // namespace

int main(int count, char** values) {
  static const std::map<std::string, std::function<void(const Arguments&)>> actions = {
      {"settings", PrintSettings},
      {"threads", PrintSlabsOfThreads},
      {"one-set-runs-out", PrintSlabsWhileOneSetRunsOut},
      {"sets-that-serve-one", PrintSetsThatServeOne},
      {"free-twice", FreeTwice},
      {"free-twice-below", FreeTwiceBelow},
      {"free-large-twice", FreeLargeTwice},
      {"free-foreign", FreeForeign},
      {"free-large-whose-reallocation-failed", FreeLargeWhoseReallocationFailed},
      {"fork-under-lock", ForkUnderLock},
      {"reallocate-freed", ReallocateFreed},
      {"shut-down", ShutDown},
      {"shut-down-twice", ShutDownTwice},
      {"free-from-two-threads-after-the-shutdown", FreeFromTwoThreadsAfterTheShutdown},
      {"free-the-last-block-of-a-slab-in-no-list", FreeTheLastBlockOfASlabInNoList},
      {"leave-with-blocks", LeaveWithBlocksAlive},
      {"leave-while-others-allocate", LeaveWhileOthersAllocate},
      {"end-thread", EndAThreadWithBlocksAlive},
      {"exhaust", Exhaust},
      {"fail", Fail},
  };
  if (count < 2) return 2;
  actions.at(values[1])(Arguments(values + 2, values + count));
  return 0;
}
