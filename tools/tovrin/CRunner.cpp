#include "tools/tovrin/CRunner.h"

#include <algorithm>

#include "tools/tovrin/Output.h"

namespace RefHost {

RunTotals CRunner::Run(std::size_t threadCount) {
  if (threadCount <= 1) {
    RunHere();
  } else {
    RunOnThreads(threadCount);
  }
  if (fFailure) std::rethrow_exception(fFailure);
  return fTotals;
}

void CRunner::RunHere() {
  const BlockJudge judge = fMakeJudge();
  LineBlock block;
  for (std::uint64_t number = 0; !fIsStopped && fInput.Next(block); ++number) {
    Deliver(number, judge(block));
  }
}

void CRunner::RunOnThreads(std::size_t threadCount) {
  std::vector<std::thread> threads;
  threads.reserve(threadCount);
  try {
    while (threads.size() < threadCount) {
      threads.push_back(fStartThread([this] { JudgeBlocks(); }));
    }
  } catch (const std::exception&) {
    if (threads.empty()) return RunHere();  // the system has no more: those that run do the work
  }
  Read(threads.size() * 4);
  for (std::thread& thread : threads) thread.join();
}

void CRunner::Read(std::size_t mostWaiting) {
  std::exception_ptr failure;
  try {
    Job job;
    while (fInput.Next(job.block)) {
      std::unique_lock lock(fLock);
      fChanged.wait(lock, [&] { return fIsStopped || job.number < fNextToWrite + mostWaiting; });
      if (fIsStopped) break;
      fJobs.push_back({job.number++, std::move(job.block)});
      fChanged.notify_all();
    }
  } catch (const std::exception&) {
    failure = std::current_exception();
  }
  // What was read before a failure is still judged and written.
  const std::lock_guard lock(fLock);
  fIsInputDone = true;
  if (!fFailure) fFailure = failure;
  fChanged.notify_all();
}

void CRunner::JudgeBlocks() {
  try {
    const BlockJudge judge = fMakeJudge();
    std::unique_lock lock(fLock);
    while (true) {
      fChanged.wait(lock, [&] { return fIsStopped || fIsInputDone || !fJobs.empty(); });
      if (fIsStopped || fJobs.empty()) return;
      const Job job = std::move(fJobs.front());
      fJobs.pop_front();

      lock.unlock();
      BlockResult result = judge(job.block);
      lock.lock();
      Deliver(job.number, std::move(result));
      fChanged.notify_all();
    }
  } catch (const std::exception&) {
    Abandon();
  }
}

void CRunner::Abandon() {
  const std::lock_guard lock(fLock);
  if (!fFailure) fFailure = std::current_exception();
  StopReading();
  fChanged.notify_all();
}

void CRunner::Deliver(std::uint64_t number, BlockResult result) {
  fResults.emplace(number, std::move(result));
  for (auto next = fResults.begin(); next != fResults.end() && next->first == fNextToWrite;
       next = fResults.begin()) {
    if (!fIsStopped) Write(next->second);
    fResults.erase(next);
    ++fNextToWrite;
  }
}

void CRunner::Write(const BlockResult& result) {
  if (!result.output.empty() || !result.errors.empty()) fProgress.Hide();
  fTotals.isOutputClosed = !WriteOutput(result.output);
  WriteErrors(result.errors);

  fTotals.lines += result.lines;
  fTotals.failures += result.failures;
  fTotals.bytes += result.bytes;
  fTotals.counts.resize(std::max(fTotals.counts.size(), result.counts.size()));
  for (std::size_t i = 0; i < result.counts.size(); ++i) fTotals.counts[i] += result.counts[i];
  fProgress.Show(fTotals.bytes, fTotals.lines);
  if (result.isLast || fTotals.isOutputClosed) StopReading();
}

void CRunner::StopReading() {
  fIsStopped = true;
  fInput.Stop();  // who reads may be waiting for bytes that come late or never
}

}  // namespace RefHost
