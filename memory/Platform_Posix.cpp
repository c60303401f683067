#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "memory/Platform.h"

namespace Memory {

void YieldProcessor() {
  sched_yield();
}

void CallAroundForks(void (*hold)(), void (*release)()) {
  pthread_atfork(hold, release, release);  // goes with the library, when that is unloaded
}

// glibc maps a block of this size on its own, 16 bytes behind the beginning of a page, until a
// mapped block of the size has been freed: that tells it to expect more of them, and it cuts them
// from its heap, one behind the other. A host that has set its threshold by hand keeps it.
void SpreadBlocksOverPages(std::size_t size) {
  constexpr std::size_t kPage = 4096;
  void* volatile block = std::malloc(size + kPage);  // volatile, or the compiler drops the pair
  std::free(block);
}

int ProcessorCount() {
  return static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN));
}

void AbortWith(const char* line) {
  std::fputs(line, stderr);  // unbuffered, so nothing is allocated
  std::abort();
}

void ExitAtOnce(int status) {
  _exit(status);
}

}  // namespace Memory
