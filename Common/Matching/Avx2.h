#pragma once

// For sources with code for processors that have AVX2 beside the code for all others: such code is
// there where TESSARIN_HAS_AVX2_CODE is, its functions are TESSARIN_AVX2, and HasAvx2 says whether
// they may be called.

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>

#include <cstdint>

#define TESSARIN_HAS_AVX2_CODE 1
#define TESSARIN_AVX2 __attribute__((target("avx2")))
#endif

namespace Matching {

#if TESSARIN_HAS_AVX2_CODE

inline bool HasAvx2() {
  return __builtin_cpu_supports("avx2");
}

TESSARIN_AVX2 inline __m256i ReadBytes(const void* bytes) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(bytes));
}

#else

inline bool HasAvx2() {
  return false;
}

#endif

}  // namespace Matching
