#pragma once

#include <cstddef>

// A lock of the operating system that its holder may take again.
//
// Not copyable, not movable. Any thread may lock; the one that locked unlocks, as often as it
// locked. The two operations have the names that std::lock_guard and its kin ask for.
//
// Should the system refuse to make one, the failure is reported and the object guards nothing: both
// operations return at once. A constructor that threw would end start-up in a library that can run.
class CCriticalSection {
public:
  // Told when a lock could not be made: the system call's contractual name, and the system's code.
  using FailureReporter = void (*)(const char* function, int code);

  CCriticalSection();
  ~CCriticalSection();
  CCriticalSection(const CCriticalSection&) = delete;
  CCriticalSection& operator=(const CCriticalSection&) = delete;

  void lock();
  void unlock();

  // This layer knows no log: the one above says who is told. Returns the one who was told before;
  // null drops the news.
  static FailureReporter SetFailureReporter(FailureReporter reporter);

private:
  static void ReportFailure(int code);

  // Holds the platform's lock; the unit behind this header asserts that it fits.
  alignas(std::max_align_t) std::byte fNative[64];
  bool fIsUsable;  // the lock was made; constant from then on
};
