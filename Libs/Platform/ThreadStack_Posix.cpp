#include "Libs/Platform/ThreadStack.h"

#include <pthread.h>

namespace {

StackBounds AskSystem() {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return {};

  void* low = nullptr;
  std::size_t size = 0;
  const bool isKnown = pthread_attr_getstack(&attributes, &low, &size) == 0;
  pthread_attr_destroy(&attributes);
  if (!isKnown) return {};

  const auto address = reinterpret_cast<std::uintptr_t>(low);
  return {address, address + size};
}

// No destructor: one would pin the library in memory for as long as the thread lives.
struct CachedBounds {
  StackBounds bounds;
  bool isAsked = false;
};

// Initial-exec, since it is read before every match: no call finds its address, and a library that
// is loaded late gets it from the room that the loader keeps for small ones. LeakSanitizer, too,
// reads beyond a block that such a library takes from the heap.
[[gnu::tls_model("initial-exec")]] constinit thread_local CachedBounds gCached;

}  // namespace

StackBounds CurrentThreadStack() {
  if (!gCached.isAsked) gCached = {AskSystem(), true};
  return gCached.bounds;
}
