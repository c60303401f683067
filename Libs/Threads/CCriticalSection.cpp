#include "Libs/Threads/CCriticalSection.h"

#include <atomic>

namespace {

constinit std::atomic<CCriticalSection::FailureReporter> reporterSlot{nullptr};

}  // namespace

CCriticalSection::FailureReporter CCriticalSection::SetFailureReporter(FailureReporter reporter) {
  return reporterSlot.exchange(reporter);
}

void CCriticalSection::ReportFailure(int code) {
  // Contract: the report names this call on every platform.
  if (const FailureReporter report = reporterSlot.load()) {
    report("InitializeCriticalSectionAndSpinCount", code);
  }
}
