#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "memory/Allocator.h"
#include "memory/Platform.h"

namespace {

constexpr int kExhausted = 42;  // what the host sees as the exit status

constinit std::atomic<MemoryFailureReporter> gReporter{nullptr};
constinit std::atomic_flag gHasFailed;

void Report(const char* text) {
  const MemoryFailureReporter reporter = gReporter.load(std::memory_order_acquire);
  if (!reporter || !reporter(text)) std::fprintf(stderr, "%s\n", text);
}

}  // namespace

void SetMemoryFailureReporter(MemoryFailureReporter reporter) {
  gReporter.store(reporter, std::memory_order_release);
}

void MemoryFailure(const char* word, std::size_t size) {
  // A second failure comes from another thread, or from what exit runs below. It may neither return
  // nor start a second exit.
  if (gHasFailed.test_and_set(std::memory_order_relaxed)) Memory::ExitAtOnce(kExhausted);

  std::array<char, 256> text;
  if (!word) {
    word = "unspecified memory management error";
  } else {
    const int length = std::snprintf(text.data(), text.size(), "%s (%llu)", word,
                                     static_cast<unsigned long long>(size));
    if (length >= 0 && static_cast<std::size_t>(length) < text.size()) word = text.data();
  }
  Report(word);
  std::exit(kExhausted);
}
