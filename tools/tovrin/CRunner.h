#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tools/tovrin/CLineBlocks.h"
#include "tools/tovrin/CProgress.h"

namespace RefHost {

// What became of one block of lines.
struct BlockResult {
  std::string output;                 // for standard output
  std::string errors;                 // for standard error
  std::vector<std::uint64_t> counts;  // lines a verdict
  std::uint64_t lines = 0;
  std::uint64_t failures = 0;  // lines on which the judging failed
  std::uint64_t bytes = 0;
  bool isLast = false;  // nothing after it counts
};

// Judges one block after another; each thread has one of its own.
using BlockJudge = std::function<BlockResult(const LineBlock&)>;

// Sums up a run, whose results come in the order of the input.
struct RunTotals {
  std::vector<std::uint64_t> counts;
  std::uint64_t lines = 0;
  std::uint64_t failures = 0;
  std::uint64_t bytes = 0;
  bool isOutputClosed = false;  // who read standard output went away
};

// Drives blocks of lines through judges on one or more threads and writes what they say in the
// order of the input, as soon as it is that block's turn. At most a few blocks a thread are in
// memory.
//
// Stops early when a result says so, when standard output is closed, or when a judge throws, and
// then waits for no more input.
class CRunner {
public:
  using Work = std::function<void()>;
  using StartThread = std::function<std::thread(Work)>;

  // makeJudge is called once on each thread that works. A thread that cannot be started leaves its
  // work to the others.
  CRunner(
      CLineBlocks& input, std::function<BlockJudge()> makeJudge, CProgress& progress,
      StartThread startThread = [](Work work) { return std::thread(std::move(work)); })
      : fInput(input),
        fMakeJudge(std::move(makeJudge)),
        fProgress(progress),
        fStartThread(std::move(startThread)) {}

  // Throws what a judge or the input throws, and std::system_error when standard output fails.
  RunTotals Run(std::size_t threadCount);

private:
  struct Job {
    std::uint64_t number = 0;
    LineBlock block;
  };

  void RunHere();
  void RunOnThreads(std::size_t threadCount);
  void Read(std::size_t mostWaiting);
  void JudgeBlocks();
  void StopReading();                                      // fLock is held
  void Deliver(std::uint64_t number, BlockResult result);  // fLock is held
  void Write(const BlockResult& result);
  void Abandon();  // from within a catch block

  CLineBlocks& fInput;
  const std::function<BlockJudge()> fMakeJudge;
  CProgress& fProgress;
  const StartThread fStartThread;

  // Guarded by fLock once threads run.
  std::mutex fLock;
  std::condition_variable fChanged;
  std::deque<Job> fJobs;                          // not taken yet
  std::map<std::uint64_t, BlockResult> fResults;  // done before their turn
  std::uint64_t fNextToWrite = 0;
  bool fIsInputDone = false;
  bool fIsStopped = false;
  std::exception_ptr fFailure;  // the first
  RunTotals fTotals;
};

}  // namespace RefHost
