#include "Libs/Threads/CCriticalSection.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

// Stands in for the system's answer while it is not 0.
int mutexFailure = 0;

struct Report {
  std::string function;
  int code;
};
std::vector<Report> reports;

void KeepReport(const char* function, int code) {
  reports.push_back({function, code});
}

}  // namespace

// In front of the C library's own, for the program under test alone.
extern "C" [[gnu::visibility("default")]] int pthread_mutex_init(
    pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept {
  if (mutexFailure != 0) return mutexFailure;
  using Init = int (*)(pthread_mutex_t*, const pthread_mutexattr_t*);
  static const auto next = reinterpret_cast<Init>(dlsym(RTLD_NEXT, "pthread_mutex_init"));
  return next(mutex, attributes);
}

TEST(CCriticalSection, LetsItsHolderInAgain) {
  CCriticalSection lock;
  lock.lock();
  lock.lock();
  lock.unlock();
  lock.unlock();
}

TEST(CCriticalSection, KeepsOthersOutUntilTheLastUnlock) {
  CCriticalSection lock;
  int counter = 0;  // guarded by lock
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 1000; ++round) {
        const std::lock_guard outer(lock);
        const std::lock_guard inner(lock);
        ++counter;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(counter, 4000);
}

TEST(CCriticalSection, ReportsThatItCouldNotBeMadeAndGuardsNothing) {
  const auto before = CCriticalSection::SetFailureReporter(&KeepReport);
  mutexFailure = EAGAIN;
  CCriticalSection lock;
  mutexFailure = 0;
  CCriticalSection::SetFailureReporter(before);

  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].function, "InitializeCriticalSectionAndSpinCount");
  EXPECT_EQ(reports[0].code, EAGAIN);
  // Two threads are in at once: nobody waits for a lock that does not exist.
  lock.lock();
  std::thread([&] {
    lock.lock();
    lock.unlock();
  }).join();
  lock.unlock();
}

TEST(CCriticalSection, FailsInSilenceWithNobodyToTell) {
  const auto before = CCriticalSection::SetFailureReporter(nullptr);
  mutexFailure = ENOMEM;
  const CCriticalSection lock;
  mutexFailure = 0;
  EXPECT_EQ(CCriticalSection::SetFailureReporter(before), nullptr);
}
