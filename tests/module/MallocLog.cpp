#include "tests/module/MallocLog.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <stdexcept>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}

namespace {

constexpr std::size_t kMaxEvents = 1 << 20;

constinit std::array<MallocLog::Event, kMaxEvents> events{};
constinit std::atomic<std::size_t> eventCount{0};
constinit std::atomic<bool> isOn{false};

void Note(const MallocLog::Event& event) {
  if (!isOn.load(std::memory_order_acquire)) return;
  const std::size_t index = eventCount.fetch_add(1, std::memory_order_relaxed);
  if (index < kMaxEvents) events[index] = event;
}

}  // namespace

namespace MallocLog {

void Start() {
  eventCount = 0;
  isOn = true;
}

std::vector<Event> Stop() {
  isOn = false;
  const std::size_t count = eventCount;
  if (count > kMaxEvents) throw std::length_error("more allocations than the log holds");
  return {events.begin(), events.begin() + static_cast<std::ptrdiff_t>(count)};
}

}  // namespace MallocLog

extern "C" {

__attribute__((visibility("default"))) void* malloc(std::size_t size) {
  void* const block = __libc_malloc(size);
  Note({block, nullptr, size, __builtin_return_address(0)});
  return block;
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size) {
  void* const block = __libc_calloc(count, size);
  Note({block, nullptr, count * size, __builtin_return_address(0)});
  return block;
}

__attribute__((visibility("default"))) void* realloc(void* old, std::size_t size) {
  void* const block = __libc_realloc(old, size);
  Note({block, old, size, __builtin_return_address(0)});
  return block;
}

__attribute__((visibility("default"))) void free(void* block) {
  // Before it is gone: another thread may have it at once.
  Note({nullptr, block, 0, __builtin_return_address(0)});
  __libc_free(block);
}

}  // extern "C"
