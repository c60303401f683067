// What the allocator does to its process: how it starts, and how it ends.

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "memory/Platform.h"
#include "tests/support/ChildProcess.h"

namespace {

// An environment variable for the time of one child.
class CEnvironmentValue {
public:
  CEnvironmentValue(const char* name, const char* value) : fName(name) {
    value ? setenv(name, value, 1) : unsetenv(name);
  }
  ~CEnvironmentValue() { unsetenv(fName); }
  CEnvironmentValue(const CEnvironmentValue&) = delete;
  CEnvironmentValue& operator=(const CEnvironmentValue&) = delete;

private:
  const char* fName;
};

ChildResult Probe(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), TESSARIN_MEMORY_PROBE);
  return RunChild({.command = arguments, .input = "", .folder = {}});
}

std::string SetsForAllProcessors() {
  return std::to_string(std::min(Memory::ProcessorCount(), 8));
}

struct SettingRow {
  const char* value;  // null: unset
  std::string shown;
};

TEST(MemorySettings, ForceTheNumberOfBucketSets) {
  const std::string all = SetsForAllProcessors();
  const SettingRow rows[] = {
      {nullptr, all},
      {"", all},
      {"0", all},
      {"x", all},
      {"-0", all},
      {"0x5", all},
      {" ", all},
      {"1", "1"},
      {"3", "3"},
      {" 3", "3"},
      {"+3", "3"},
      {"3 sets", "3"},
      {"3.9", "3"},
      {"8", "8"},
      {"9", "8"},
      {"99", "8"},
      {"4294967295", "8"},
      {"4294967296", "8"},
      {"99999999999999999999999", "8"},
      // Contract: a negative number leaves it at 1, and the processors uncounted.
      {"-1", "1"},
      {"-99999999999999999999999", "1"},
  };
  for (const auto& row : rows) {
    const CEnvironmentValue value("QRX_MM_FORCE_BUCKETS", row.value);
    EXPECT_EQ(Probe({"settings"}).output, row.shown + " own\n") << (row.value ? row.value : "-");
  }
}

TEST(MemorySettings, UseOtherBucketsForYesAlone) {
  const CEnvironmentValue sets("QRX_MM_FORCE_BUCKETS", "2");
  const SettingRow rows[] = {
      {nullptr, "own"}, {"YES", "others"}, {"yes", "others"}, {"yEs", "others"}, {"", "own"},
      {"true", "own"},  {"1", "own"},      {"YES ", "own"},   {" YES", "own"},   {"YE", "own"},
      {"yeah", "own"},  {"9es", "own"},    {"y\xE5s", "own"},
  };
  for (const auto& row : rows) {
    const CEnvironmentValue value("QRX_MM_USE_OTHER_BUCKETS", row.value);
    EXPECT_EQ(Probe({"settings"}).output, "2 " + row.shown + "\n") << (row.value ? row.value : "-");
  }
}

TEST(MemorySettings, AreOverruledByACallAtAnyTime) {
  const CEnvironmentValue sets("QRX_MM_FORCE_BUCKETS", "5");
  EXPECT_EQ(Probe({"settings", "0"}).output, "5 own\n5 own\n");
  EXPECT_EQ(Probe({"settings", "20", "3", "0", "1", "8"}).output,
            "5 own\n8 own\n3 own\n3 own\n1 own\n8 own\n");
  // A call before start-up reads the environment.
  const CEnvironmentValue three("PROBE_EARLY_COUNT", "3");
  EXPECT_EQ(Probe({"settings"}).output, "3 own\n");
  const CEnvironmentValue none("PROBE_EARLY_COUNT", "0");
  EXPECT_EQ(Probe({"settings"}).output, "5 own\n");
}

TEST(MemorySettings, SpreadThreadsOverTheSets) {
  // With threads on stacks as the system makes them: each set that a thread meets makes a slab.
  for (const auto& [sets, slabs] : {std::pair{"1", "1\n"}, {"2", "2\n"}, {"8", "8\n"}}) {
    const CEnvironmentValue value("QRX_MM_FORCE_BUCKETS", sets);
    EXPECT_EQ(Probe({"threads", "8"}).output, slabs) << sets;
  }
}

// The other sets are asked once the own list has two slabs, and all of them, also where one is
// used.
TEST(MemorySettings, LetASetTakeFromTheOthersBeforeItsThirdSlab) {
  EXPECT_EQ(Probe({"one-set-runs-out"}).output, "8 9 9 16 17 ");
  const CEnvironmentValue others("QRX_MM_USE_OTHER_BUCKETS", "YES");
  EXPECT_EQ(Probe({"one-set-runs-out"}).output, "8 9 9 9 10 ");
  // In turn from the next one on.
  EXPECT_EQ(Probe({"sets-that-serve-one"}).output, "0 1 2 3 4 5 6 7 ");
}

constexpr int kAborted = 128 + SIGABRT;

TEST(MemoryCorruption, AbortsWithALineForASecondFree) {
  const ChildResult result = Probe({"free-twice"});
  EXPECT_EQ(result.status, kAborted);
  EXPECT_EQ(result.errors, "memory: a block is freed that is free already\n");
}

// What the word before the block does not show, the one before that one mostly does.
TEST(MemoryCorruption, AbortsWithALineForWhatIsNoBlock) {
  std::vector<const char*> actions{"free-twice-below"};
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // nothing lies before theirs
  actions.push_back("free-foreign");
#endif
  for (const char* action : actions) {
    const ChildResult result = Probe({action});
    EXPECT_EQ(result.status, kAborted) << action;
    EXPECT_EQ(result.errors,
              "memory: what is freed is no block of this allocator, or free already\n");
  }
}

#if !defined(__SANITIZE_ADDRESS__)  // it sees the second free by itself
TEST(MemoryCorruption, AbortsForASecondFreeOfALargeBlock) {
  EXPECT_EQ(Probe({"free-large-twice"}).status, kAborted);
}
#endif

TEST(MemoryCorruption, AbortsWithALineForReallocatingAFreeBlock) {
  const ChildResult result = Probe({"reallocate-freed"});
  EXPECT_EQ(result.status, kAborted);
  EXPECT_EQ(result.errors, "memory: a block is reallocated that is free already\n");
}

TEST(MemoryFork, LeavesEveryListUsableInTheChild) {
  const ChildResult result = Probe({"fork-under-lock"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "child: 3\nparent: 1\n");
}

TEST(MemoryShutdown, GivesBackFreeSlabsAtOnceAndOthersWithTheirLastBlock) {
  const ChildResult result = Probe({"shut-down"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output,
            "before: kept kept\n"
            "after: gone kept\n"
            "one freed: kept\n"
            "both freed: gone\n"
            "late block: kept\n"
            "late block freed: gone\n");
}

TEST(MemoryShutdown, AbortsWithALineTheSecondTime) {
  const ChildResult result = Probe({"shut-down-twice"});
  EXPECT_EQ(result.status, kAborted);
  EXPECT_EQ(result.errors, "memory: the allocator is shut down a second time\n");
}

TEST(MemoryShutdown, AbortsWithALineWhenTwoThreadsGiveSlabsBackAtOnce) {
  const ChildResult result = Probe({"free-from-two-threads-after-the-shutdown"});
  EXPECT_EQ(result.status, kAborted);
  EXPECT_EQ(result.errors,
            "memory: two threads give slabs back at once, after the allocator's shutdown\n");
}

TEST(MemoryShutdown, LeavesASlabAloneThatIsInNoList) {
  const ChildResult result = Probe({"free-the-last-block-of-a-slab-in-no-list"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "1\n");
}

#if !defined(__SANITIZE_ADDRESS__)  // it would call the blocks leaked, which they are
TEST(MemoryShutdown, PassesWithBlocksAlive) {
  const ChildResult result = Probe({"leave-with-blocks"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "1\n");
}
#endif

// Whether such a process ends well is nobody's promise: its slabs go while they are in use. It
// ends, which is that RunChild comes back.
TEST(MemoryShutdown, DoesNotHangWhileOthersAllocate) {
  for (int round = 0; round < 5; ++round) {
    EXPECT_GE(Probe({"leave-while-others-allocate"}).status, 0);
  }
}

TEST(MemoryShutdown, IsNoMatterOfThreads) {
  EXPECT_EQ(Probe({"end-thread"}).output, "0 0\n");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // they take more address space
TEST(MemoryFailure, EndsAnExhaustedProcessWithStatus42) {
  for (const char* size : {"8", "264", "265", "1000000", "9223372036854775808"}) {
    const ChildResult result = Probe({"exhaust", size});
    EXPECT_EQ(result.status, 42);
    EXPECT_EQ(result.errors, "new (" + std::string(size) + ")\n");
  }
}

TEST(MemoryFailure, LeavesALargeBlockFreeable) {
  const ChildResult result = Probe({"free-large-whose-reallocation-failed"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "1\n");
}
#endif

TEST(MemoryFailure, ReportsWordAndSizeToWhoeverTakesIt) {
  const std::string line = "wwww (18446744073709551615)\n";
  ChildResult result = Probe({"fail", "prints", "4", "18446744073709551615"});
  EXPECT_EQ(result.status, 42);
  EXPECT_EQ(result.output, "reported: " + line);
  EXPECT_EQ(result.errors, "");

  for (const char* reporter : {"none", "declines"}) {
    result = Probe({"fail", reporter, "4", "18446744073709551615"});
    EXPECT_EQ(result.status, 42);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, line);
  }
}

TEST(MemoryFailure, LeavesTheSizeOutWhereTheTextHasNoRoom) {
  // 255 bytes and the end fit; " (1)" takes four.
  EXPECT_EQ(Probe({"fail", "prints", "251", "1"}).output,
            "reported: " + std::string(251, 'w') + " (1)\n");
  EXPECT_EQ(Probe({"fail", "prints", "252", "1"}).output,
            "reported: " + std::string(252, 'w') + "\n");
  EXPECT_EQ(Probe({"fail", "prints", "1000", "1"}).output,
            "reported: " + std::string(1000, 'w') + "\n");
  EXPECT_EQ(Probe({"fail", "prints", "0", "1"}).output, "reported:  (1)\n");
}

TEST(MemoryFailure, HasATextForANullWord) {
  const ChildResult result = Probe({"fail", "prints", "null"});
  EXPECT_EQ(result.status, 42);
  EXPECT_EQ(result.output, "reported: unspecified memory management error\n");
}

TEST(MemoryFailure, ReportsOnceWhenItFailsAgain) {
  const ChildResult result = Probe({"fail", "fails", "4", "7"});
  EXPECT_EQ(result.status, 42);
  EXPECT_EQ(result.output, "reported: wwww (7)\n");
  EXPECT_EQ(result.errors, "");
}

}  // namespace
