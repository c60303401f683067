#include "Common/Lookup3.h"

#include <bit>
#include <cstddef>

namespace {

constexpr std::size_t kBlockSize = 12;  // bytes: one word for each of a, b and c

struct State {
  std::uint32_t a, b, c;

  // Adds up to twelve bytes; what is missing counts as zero.
  void Add(std::string_view block) {
    std::uint32_t* const words[] = {&a, &b, &c};
    for (std::size_t i = 0; i < block.size(); ++i) {
      *words[i / 4] += std::uint32_t{static_cast<unsigned char>(block[i])} << (8 * (i % 4));
    }
  }

  // Reversible, so that no block loses what the ones before it gave.
  void MixBlock() {
    a -= c, a ^= std::rotl(c, 4), c += b;
    b -= a, b ^= std::rotl(a, 6), a += c;
    c -= b, c ^= std::rotl(b, 8), b += a;
    a -= c, a ^= std::rotl(c, 16), c += b;
    b -= a, b ^= std::rotl(a, 19), a += c;
    c -= b, c ^= std::rotl(b, 4), b += a;
  }

  // Makes every bit of c, and nearly so of b, depend on all bits.
  void MixLast() {
    c ^= b, c -= std::rotl(b, 14);
    a ^= c, a -= std::rotl(c, 11);
    b ^= a, b -= std::rotl(a, 25);
    c ^= b, c -= std::rotl(b, 16);
    a ^= c, a -= std::rotl(c, 4);
    b ^= a, b -= std::rotl(a, 14);
    c ^= b, c -= std::rotl(b, 24);
  }
};

}  // namespace

std::uint64_t Lookup3(std::string_view bytes, std::uint32_t seedC, std::uint32_t seedB) {
  const std::uint32_t start = 0xdeadbeef + static_cast<std::uint32_t>(bytes.size()) + seedC;
  State state{start, start, start + seedB};
  while (bytes.size() > kBlockSize) {
    state.Add(bytes.substr(0, kBlockSize));
    state.MixBlock();
    bytes.remove_prefix(kBlockSize);
  }
  if (!bytes.empty()) {  // else there was no block at all: the last one is never empty
    state.Add(bytes);
    state.MixLast();
  }
  return std::uint64_t{state.b} << 32 | state.c;
}
