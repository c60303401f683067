#include "Common/Matching/RunFilter.h"

#include <algorithm>
#include <bit>

#include "Common/Matching/Avx2.h"

namespace Matching {

RunFilter::RunFilter(std::size_t runCount) {
  const std::size_t words = std::bit_ceil(std::clamp<std::size_t>(runCount / 4 * 3, 512, 1U << 26));
  fWords.assign(words, 0);
  fShift = 32 - static_cast<unsigned>(std::countr_zero(words));
}

template <std::size_t kRun>
std::uint64_t RunFilter::Collect(const PaddedText& text, std::size_t first, bool useVectors) const {
  const std::size_t size = text.Text().size();
  if (size < first + kRun) return 0;
  const std::size_t count = std::min((size - first - kRun) / kStride + 1, kPlaces);
  if (useVectors) return CollectMany<kRun>(text, first, count);
  std::uint64_t bits = 0;
  const char* run = text.Text().data() + first;
  for (std::size_t i = 0; i < count; ++i, run += kStride) {
    bits |= std::uint64_t{Passes(HashOfRun<kRun>(run))} << i;
  }
  return bits;
}

#if TESSARIN_HAS_AVX2_CODE

// Eight places together.
template <std::size_t kRun>
TESSARIN_AVX2 std::uint64_t RunFilter::CollectMany(const PaddedText& text, std::size_t first,
                                                   std::size_t count) const {
  constexpr std::size_t kLanes = 8;
  constexpr std::size_t kReach = kLanes * kStride + (kRun == 5 ? 4 : 0);
  static_assert(kReach <= PaddedText::kMostSize && kStride == sizeof(std::uint32_t));
  const __m256i loose = _mm256_set1_epi8(0x20);
  const __m256i lowBits = _mm256_set1_epi32(31);
  const __m128i shift = _mm_cvtsi32_si128(static_cast<int>(fShift));
  const auto* words = reinterpret_cast<const int*>(fWords.data());
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < count; i += kLanes) {
    const char* const bytes = text.From(first + i * kStride, kReach);
    const __m256i run = _mm256_or_si256(ReadBytes(bytes), loose);
    __m256i hash = _mm256_mullo_epi32(run, _mm256_set1_epi32(static_cast<int>(kFactor)));
    if constexpr (kRun == 5) {
      const __m256i behind = _mm256_or_si256(ReadBytes(bytes + 4), loose);
      const __m256i next = _mm256_and_si256(behind, _mm256_set1_epi32(0xFF));
      hash = _mm256_add_epi32(
          hash, _mm256_mullo_epi32(next, _mm256_set1_epi32(static_cast<int>(kNextFactor))));
    }
    const __m256i word = _mm256_i32gather_epi32(words, _mm256_srl_epi32(hash, shift), 4);
    const __m256i one = _mm256_and_si256(_mm256_srli_epi32(hash, kFirstShift), lowBits);
    const __m256i other = _mm256_and_si256(_mm256_srli_epi32(hash, kSecondShift), lowBits);
    const __m256i both =
        _mm256_and_si256(_mm256_srlv_epi32(word, one), _mm256_srlv_epi32(word, other));
    const int passed = _mm256_movemask_ps(_mm256_castsi256_ps(_mm256_slli_epi32(both, 31)));
    bits |= static_cast<std::uint64_t>(passed) << i;
  }
  return bits & (~std::uint64_t{0} >> (kPlaces - count));
}

#else

template <std::size_t kRun>
std::uint64_t RunFilter::CollectMany(const PaddedText& text, std::size_t first, std::size_t) const {
  return Collect<kRun>(text, first, false);
}

#endif

template std::uint64_t RunFilter::Collect<4>(const PaddedText&, std::size_t, bool) const;
template std::uint64_t RunFilter::Collect<5>(const PaddedText&, std::size_t, bool) const;

}  // namespace Matching
