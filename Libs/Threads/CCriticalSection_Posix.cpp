#include <pthread.h>

#include <new>

#include "Libs/Threads/CCriticalSection.h"

namespace {

int MakeRecursive(pthread_mutex_t* mutex) {
  pthread_mutexattr_t attributes;
  if (const int code = pthread_mutexattr_init(&attributes); code != 0) return code;

  int code = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  if (code == 0) code = pthread_mutex_init(mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
  return code;
}

pthread_mutex_t* Native(std::byte* storage) {
  return std::launder(reinterpret_cast<pthread_mutex_t*>(storage));
}

}  // namespace

CCriticalSection::CCriticalSection() {
  static_assert(sizeof(pthread_mutex_t) <= sizeof fNative);

  const int code = MakeRecursive(::new (static_cast<void*>(fNative)) pthread_mutex_t);
  fIsUsable = code == 0;
  if (!fIsUsable) ReportFailure(code);
}

CCriticalSection::~CCriticalSection() {
  if (fIsUsable) pthread_mutex_destroy(Native(fNative));
}

void CCriticalSection::lock() {
  if (fIsUsable) pthread_mutex_lock(Native(fNative));
}

void CCriticalSection::unlock() {
  if (fIsUsable) pthread_mutex_unlock(Native(fNative));
}
