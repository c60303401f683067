#include "tools/tovrin/CRunner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <system_error>

#include "tests/support/ChildProcess.h"

namespace RefHost {
namespace {

// A judge that gives each block back as it came, after more or less work.
BlockJudge Echo() {
  return [](const LineBlock& block) {
    volatile std::uint64_t sum = 0;
    for (std::uint64_t i = 0; i < block.firstLine * 7919 % 5000; ++i) sum = sum + i;
    BlockResult result;
    result.output = block.bytes;
    result.lines =
        static_cast<std::uint64_t>(std::count(block.bytes.begin(), block.bytes.end(), '\n'));
    result.counts = {result.lines};
    return result;
  };
}

class CRunnerTest : public ::testing::Test {
protected:
  CRunnerTest() {
    for (int i = 0; i < 5000; ++i) fText += "line " + std::to_string(i) + '\n';
  }

  RunTotals Run(const std::function<BlockJudge()>& makeJudge, std::size_t threadCount,
                const CRunner::StartThread& startThread = StartAny) {
    CInputStream input(fFolder.Write("input", fText));
    CLineBlocks blocks(input, 100);
    CProgress progress(false, {});
    return CRunner(blocks, makeJudge, progress, startThread).Run(threadCount);
  }
  static std::thread StartAny(CRunner::Work work) { return std::thread(std::move(work)); }

  const CTemporaryFolder fFolder;
  std::string fText;
};

TEST_F(CRunnerTest, WritesInTheOrderOfTheInput) {
  for (const std::size_t threadCount : {1, 2, 8}) {
    ::testing::internal::CaptureStdout();
    const RunTotals totals = Run(Echo, threadCount);
    EXPECT_TRUE(::testing::internal::GetCapturedStdout() == fText) << threadCount;
    EXPECT_EQ(totals.lines, 5000u);
    EXPECT_EQ(totals.counts, std::vector<std::uint64_t>{5000});
  }
}

TEST_F(CRunnerTest, WritesNothingBehindTheLastResult) {
  for (const std::size_t threadCount : {1, 8}) {
    ::testing::internal::CaptureStdout();
    Run(
        [] {
          return [](const LineBlock& block) {
            BlockResult result = Echo()(block);
            result.isLast = block.bytes.find("line 1000\n") != std::string::npos;
            return result;
          };
        },
        threadCount);
    const std::string output = ::testing::internal::GetCapturedStdout();
    EXPECT_TRUE(fText.starts_with(output));
    EXPECT_NE(output.find("line 1000\n"), std::string::npos);
    EXPECT_EQ(output.find("line 1020\n"), std::string::npos);
  }
}

TEST_F(CRunnerTest, PassesOnWhatAJudgeThrows) {
  for (const std::size_t threadCount : {1, 8}) {
    ::testing::internal::CaptureStdout();
    EXPECT_THROW(Run(
                     [] {
                       return [](const LineBlock& block) -> BlockResult {
                         if (block.firstLine > 100) throw std::runtime_error("enough");
                         return Echo()(block);
                       };
                     },
                     threadCount),
                 std::runtime_error);
    ::testing::internal::GetCapturedStdout();
  }
}

// The system has room for so many threads; what there is does the work.
TEST_F(CRunnerTest, DoesWithTheThreadsThatStart) {
  for (const int room : {0, 1, 3}) {
    SCOPED_TRACE(room);
    int started = 0;
    const auto startSome = [&](CRunner::Work work) {
      if (started == room) throw std::system_error(EAGAIN, std::generic_category());
      ++started;
      return std::thread(std::move(work));
    };
    std::atomic<int> judges{0};
    ::testing::internal::CaptureStdout();
    const RunTotals totals = Run([&] { return ++judges, Echo(); }, 8, startSome);
    EXPECT_TRUE(::testing::internal::GetCapturedStdout() == fText);
    EXPECT_EQ(totals.lines, 5000u);
    EXPECT_EQ(judges, std::max(room, 1));
  }
}

TEST_F(CRunnerTest, MakesOneJudgeAThread) {
  std::atomic<int> count{0};
  ::testing::internal::CaptureStdout();
  Run([&] { return ++count, Echo(); }, 3);
  ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(count, 3);
}

}  // namespace
}  // namespace RefHost
