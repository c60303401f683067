#include "tests/support/SmallStack.h"

#include <pthread.h>

#include <cstddef>
#include <stdexcept>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kStackSize = 1024 * 1024;
#else
constexpr std::size_t kStackSize = 256 * 1024;
#endif

void* Run(void* work) {
  (*static_cast<const std::function<void()>*>(work))();
  return nullptr;
}

}  // namespace

void OnASmallStack(const std::function<void()>& work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStackSize);
  pthread_t thread{};
  const int failed =
      pthread_create(&thread, &attributes, Run, const_cast<std::function<void()>*>(&work));
  pthread_attr_destroy(&attributes);
  if (failed != 0) throw std::runtime_error("cannot start a thread with a small stack");
  pthread_join(thread, nullptr);
}
