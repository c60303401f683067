#include "Common/Matching/NibbleScan.h"

#include "Common/Matching/Avx2.h"
#include "Common/Matching/CharacterClasses.h"

namespace Matching {

void NibbleScan::AddByte(Masks& masks, unsigned char byte, std::uint8_t bucket) {
  masks.low[byte & 15] |= bucket;
  masks.high[byte >> 4] |= bucket;
}

void NibbleScan::Add(std::string_view folded, std::size_t bucket) {
  Octet& octet = fOctets[bucket / 8];
  const auto bit = static_cast<std::uint8_t>(1U << bucket % 8);
  fHasSecond = fHasSecond || bucket >= 8;
  for (std::size_t i = 0; i < kMostBytes; ++i) {
    if (i < folded.size()) {
      const auto byte = static_cast<unsigned char>(folded[i]);
      AddByte(octet[i], byte, bit);
      AddByte(octet[i], ToUpper(byte), bit);
    } else {
      for (unsigned half = 0; half < 16; ++half) {
        AddByte(octet[i], static_cast<unsigned char>(half << 4 | half), bit);
      }
    }
  }
}

bool NibbleScan::IsSupported() {
  return HasAvx2();
}

#if TESSARIN_HAS_AVX2_CODE

namespace {

using Table = std::array<std::uint8_t, 16>;

TESSARIN_AVX2 __m256i ReadTwice(const Table& table) {
  return _mm256_broadcastsi128_si256(
      _mm_load_si128(reinterpret_cast<const __m128i*>(table.data())));
}

// The buckets that a byte's halves leave of these.
TESSARIN_AVX2 __m256i Narrowed(__m256i buckets, const Table& byLow, __m256i low,
                               const Table& byHigh, __m256i high) {
  const __m256i both = _mm256_and_si256(_mm256_shuffle_epi8(ReadTwice(byLow), low),
                                        _mm256_shuffle_epi8(ReadTwice(byHigh), high));
  return _mm256_and_si256(buckets, both);
}

TESSARIN_AVX2 void Write(std::array<std::uint8_t, 32>& to, __m256i bytes) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(to.data()), bytes);
}

}  // namespace

template <bool kHasSecond>
TESSARIN_AVX2 bool NibbleScan::NextOf(const PaddedText& text, std::size_t& from,
                                      Places& places) const {
  constexpr std::size_t kStep = 32;
  constexpr std::size_t kReach = kStep + kMostBytes - 1;  // bytes that decide about kStep places
  static_assert(kReach <= PaddedText::kMostSize);
  const __m256i half = _mm256_set1_epi8(15);
  const std::size_t size = text.Text().size();
  for (std::size_t place = from; place < size; place += kStep) {
    const char* const bytes = text.From(place, kReach);
    __m256i first = _mm256_set1_epi8(-1);
    __m256i second = first;
    for (std::size_t i = 0; i < kMostBytes; ++i) {
      const __m256i read = ReadBytes(bytes + i);
      const __m256i low = _mm256_and_si256(read, half);
      const __m256i high = _mm256_and_si256(_mm256_srli_epi16(read, 4), half);
      first = Narrowed(first, fOctets[0][i].low, low, fOctets[0][i].high, high);
      if (kHasSecond) second = Narrowed(second, fOctets[1][i].low, low, fOctets[1][i].high, high);
    }
    if (!kHasSecond) second = _mm256_setzero_si256();
    const __m256i any = _mm256_or_si256(first, second);
    const __m256i none = _mm256_cmpeq_epi8(any, _mm256_setzero_si256());
    std::uint32_t bits = ~static_cast<std::uint32_t>(_mm256_movemask_epi8(none));
    if (size - place < kStep) bits &= (std::uint32_t{1} << (size - place)) - 1;
    if (bits == 0) continue;
    from = place + kStep;
    places.first = place;
    places.bits = bits;
    Write(places.buckets[0], first);
    Write(places.buckets[1], second);
    return true;
  }
  return false;
}

bool NibbleScan::Next(const PaddedText& text, std::size_t& from, Places& places) const {
  return fHasSecond ? NextOf<true>(text, from, places) : NextOf<false>(text, from, places);
}

#else

bool NibbleScan::Next(const PaddedText&, std::size_t&, Places&) const {
  return false;
}

#endif

}  // namespace Matching
