#include <sched.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "memory/Platform.h"

namespace Memory {

void YieldProcessor() {
  sched_yield();
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
