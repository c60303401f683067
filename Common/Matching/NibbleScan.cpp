#include "Common/Matching/NibbleScan.h"

#include <cstring>

#include "Common/Matching/CharacterClasses.h"

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define TESSARIN_HAS_AVX2_CODE 1
#endif

namespace Matching {

void NibbleScan::AddByte(Masks& masks, unsigned char byte, std::uint8_t bucket) {
  masks.low[byte & 15] |= bucket;
  masks.high[byte >> 4] |= bucket;
}

void NibbleScan::Add(std::string_view folded, std::size_t bucket) {
  const auto bit = static_cast<std::uint8_t>(1U << bucket);
  for (std::size_t i = 0; i < kMostBytes; ++i) {
    if (i < folded.size()) {
      const auto byte = static_cast<unsigned char>(folded[i]);
      AddByte(fMasks[i], byte, bit);
      AddByte(fMasks[i], ToUpper(byte), bit);
    } else {
      for (unsigned half = 0; half < 16; ++half) {
        AddByte(fMasks[i], static_cast<unsigned char>(half << 4 | half), bit);
      }
    }
  }
}

#if TESSARIN_HAS_AVX2_CODE

bool NibbleScan::IsSupported() {
  return __builtin_cpu_supports("avx2");
}

namespace {

#define TESSARIN_AVX2 __attribute__((target("avx2")))

TESSARIN_AVX2 __m256i ReadTwice(const std::array<std::uint8_t, 16>& table) {
  return _mm256_broadcastsi128_si256(
      _mm_load_si128(reinterpret_cast<const __m128i*>(table.data())));
}

TESSARIN_AVX2 __m256i Read(const void* bytes) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(bytes));
}

}  // namespace

TESSARIN_AVX2 bool NibbleScan::Next(std::string_view text, std::size_t& from,
                                    Places& places) const {
  constexpr std::size_t kStep = 32;
  constexpr std::size_t kReach = kStep + kMostBytes - 1;  // bytes that decide about kStep places
  const __m256i half = _mm256_set1_epi8(15);
  while (from < text.size()) {
    const std::size_t first = from;
    const std::size_t rest = text.size() - first;
    char tail[kReach] = {};  // the end of the text, zero behind it
    const char* bytes = text.data() + first;
    if (rest < kReach) bytes = static_cast<const char*>(std::memcpy(tail, bytes, rest));
    __m256i buckets = _mm256_set1_epi8(-1);
    for (std::size_t i = 0; i < kMostBytes; ++i) {
      const __m256i read = Read(bytes + i);
      const __m256i low = _mm256_and_si256(read, half);
      const __m256i high = _mm256_and_si256(_mm256_srli_epi16(read, 4), half);
      const __m256i byLow = _mm256_shuffle_epi8(ReadTwice(fMasks[i].low), low);
      const __m256i byHigh = _mm256_shuffle_epi8(ReadTwice(fMasks[i].high), high);
      buckets = _mm256_and_si256(buckets, _mm256_and_si256(byLow, byHigh));
    }
    const __m256i none = _mm256_cmpeq_epi8(buckets, _mm256_setzero_si256());
    std::uint32_t bits = ~static_cast<std::uint32_t>(_mm256_movemask_epi8(none));
    if (rest < kStep) bits &= (std::uint32_t{1} << rest) - 1;
    from += kStep;
    if (bits == 0) continue;
    places.first = first;
    places.bits = bits;
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(places.buckets.data()), buckets);
    return true;
  }
  return false;
}

#else

bool NibbleScan::IsSupported() {
  return false;
}

bool NibbleScan::Next(std::string_view, std::size_t&, Places&) const {
  return false;
}

#endif

}  // namespace Matching
