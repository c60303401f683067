#pragma once

// Asks for the memory at an address, which need not be valid, to be brought nearer: a hint, which a
// compiler that has no word for it leaves out.
#if defined(__GNUC__)
inline void PrefetchForRead(const void* address) {
  __builtin_prefetch(address);
}
#else
inline void PrefetchForRead(const void*) {}
#endif
