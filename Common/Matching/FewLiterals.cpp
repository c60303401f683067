#include "Common/Matching/FewLiterals.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Common/Matching/CharacterClasses.h"
#include "Common/Matching/LiteralChance.h"
#include "Common/Matching/LiteralChoice.h"

namespace Matching {
namespace {

constexpr std::size_t kMostLiterals = 128;
constexpr double kMostCompared = 0.06;  // literals that are compared for each byte of a text

// The bytes that a literal is looked for by, which a very long one has near its start; others where
// many are looked for by the rarest.
std::string_view BestBytes(std::string_view literal, const LiteralChoice& choice) {
  literal = literal.substr(0, 256);
  std::string_view best = literal.substr(0, NibbleScan::kMostBytes);
  double bestCost = std::numeric_limits<double>::max();
  for (std::size_t at = 0; at == 0 || at + NibbleScan::kMostBytes <= literal.size(); ++at) {
    const std::string_view bytes = literal.substr(at, NibbleScan::kMostBytes);
    const double cost = choice.CostOf(bytes);
    if (cost >= bestCost) continue;
    best = bytes;
    bestCost = cost;
  }
  return best;
}

}  // namespace

// What the scan lets through for the sake of some strings.
class FewLiterals::Bucket {
public:
  [[nodiscard]] Bucket With(std::string_view string) const {
    Bucket more = *this;
    ++more.fCount;
    double chance = 1;
    for (std::size_t i = 0; i < fBytes.size(); ++i) {
      Halves& halves = more.fBytes[i];
      if (i < string.size()) {
        halves.Add(static_cast<unsigned char>(string[i]));
        halves.Add(ToUpper(static_cast<unsigned char>(string[i])));
      } else {
        halves = {0xFFFF, 0xFFFF};
      }
      chance *= halves.Chance();
    }
    more.fCompared = chance * more.fCount;
    return more;
  }
  // Strings that are compared for a byte of a text.
  [[nodiscard]] double Compared() const { return fCompared; }

private:
  // The lower and the upper halves that a byte may have, a bit each.
  struct Halves {
    std::uint16_t low = 0;
    std::uint16_t high = 0;

    void Add(unsigned char byte) {
      low = static_cast<std::uint16_t>(low | 1U << (byte & 15));
      high = static_cast<std::uint16_t>(high | 1U << (byte >> 4));
    }
    [[nodiscard]] double Chance() const {
      double chance = 0;
      for (unsigned h = high; h != 0; h &= h - 1) {
        const auto upper = static_cast<unsigned>(std::countr_zero(h)) << 4;
        for (unsigned l = low; l != 0; l &= l - 1) {
          chance +=
              ChanceOfByte(static_cast<char>(upper | static_cast<unsigned>(std::countr_zero(l))));
        }
      }
      return chance;
    }
  };

  std::array<Halves, NibbleScan::kMostBytes> fBytes{};
  int fCount = 0;
  double fCompared = 0;
};

// The bytes that a literal is looked for by.
struct FewLiterals::String {
  std::string_view bytes;
  Entry entry;
  std::size_t bucket;
};

bool FewLiterals::Choose(const std::vector<Literal>& literals) {
  if (literals.size() > kMostLiterals) return false;
  std::vector<String> strings;
  LiteralChoice choice;
  for (const Literal& literal : literals) {
    const std::string_view bytes = BestBytes(literal.folded, choice);
    choice.Take(bytes);
    const auto before = static_cast<std::uint32_t>(bytes.data() - literal.folded.data());
    strings.push_back({bytes, {literal.number, before}, 0});
  }
  std::ranges::stable_sort(strings, std::greater(),
                           [](const String& s) { return ChanceOf(s.bytes); });
  if (!Share(strings)) return false;
  Enter(std::move(strings));
  return true;
}

// Each goes where it makes least to compare, those that turn up most first. False when all of them
// make too much.
bool FewLiterals::Share(std::vector<String>& strings) {
  std::array<Bucket, NibbleScan::kBucketCount> buckets;
  double compared = 0;
  for (String& string : strings) {
    double least = std::numeric_limits<double>::max();
    Bucket chosen;
    for (std::size_t i = 0; i < buckets.size(); ++i) {
      const Bucket with = buckets[i].With(string.bytes);
      const double more = with.Compared() - buckets[i].Compared();
      if (more >= least) continue;
      least = more;
      chosen = with;
      string.bucket = i;
    }
    buckets[string.bucket] = chosen;
    compared += least;
    if (compared > kMostCompared) return false;
  }
  return true;
}

void FewLiterals::Enter(std::vector<String> strings) {
  std::ranges::stable_sort(strings, {}, &String::bucket);
  fEntries.reserve(strings.size());
  for (const String& string : strings) {
    fScan.Add(string.bytes, string.bucket);
    fEntries.push_back(string.entry);
    ++fBegins[string.bucket + 1];
    if (string.bytes.size() < kWindow) {
      fShortBuckets |= 1U << string.bucket;
    } else {
      const std::uint32_t bit = BitOf(string.bytes.data());
      fFilter[bit / 64] |= std::uint64_t{1} << bit % 64;
    }
  }
  for (std::size_t i = 0; i < NibbleScan::kBucketCount; ++i) fBegins[i + 1] += fBegins[i];
}

}  // namespace Matching
