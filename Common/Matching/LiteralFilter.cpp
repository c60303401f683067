#include "Common/Matching/LiteralFilter.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Common/Matching/CharacterClasses.h"
#include "Common/Matching/FormMatch.h"

namespace Matching {
namespace {

// Bytes of host names, URLs and header values, from the most frequent on. What is not in it is
// rare.
constexpr std::string_view kFrequent = "eta/osi.nrcd-pmlh1w02ugb3f4:56v789k_y=%xjq&?z ,;+";

std::size_t Rarity(char byte) {
  return std::min(kFrequent.find(byte), kFrequent.size());
}

}  // namespace

LiteralFilter::LiteralFilter(std::vector<std::string> literals) {
  if (literals.size() > kMaxLiterals) return;
  for (std::string& folded : literals) {
    const auto rare = std::ranges::max_element(folded, {}, Rarity);
    const auto index = static_cast<std::size_t>(rare - folded.begin());
    fLiterals.push_back({std::move(folded), index});
  }
}

// The places of a text from one up to another, and what was compared there in vain.
class LiteralFilter::Stretch {
public:
  Stretch(std::string_view text, std::size_t from, std::size_t to)
      : fText(text), fFrom(from), fTo(to) {}

  // The first place at which the literal begins, by either case of its rare byte; or kNowhere.
  std::size_t Find(const Literal& literal) {
    const auto lower = static_cast<unsigned char>(literal.folded[literal.rare]);
    const unsigned char upper = ToUpper(lower);
    const std::size_t first = Find(literal, lower);
    return upper == lower ? first : std::min(first, Find(literal, upper));
  }
  // More was compared than there are places: what Find said does not count.
  [[nodiscard]] bool IsTooSlow() const { return fInVain > 2 * (fTo - fFrom) + kFree; }
  // The same as Find, at a steady pace.
  std::size_t FindSteadily(const Literal& literal) const {
    const std::size_t size =
        std::min(fTo - fFrom + literal.folded.size() - 1, fText.size() - fFrom);
    const std::size_t found = FindPiece(fText.substr(fFrom, size), literal.folded);
    return found == kNowhere ? kNowhere : fFrom + found;
  }

private:
  static constexpr std::size_t kFree = 4096;

  // Perf: the library's memchr looks at many bytes at once; see ExpressionBench, Search.
  std::size_t Find(const Literal& literal, unsigned char rare) {
    const std::string& folded = literal.folded;
    if (fText.size() < folded.size()) return kNowhere;
    const std::size_t last = std::min(fTo, fText.size() - folded.size() + 1);  // behind the last
    for (std::size_t at = fFrom; at < last && !IsTooSlow(); ++at) {
      const char* const begin = fText.data() + at + literal.rare;
      const void* const found = std::memchr(begin, rare, last - at);
      if (found == nullptr) return kNowhere;
      at += static_cast<std::size_t>(static_cast<const char*>(found) - begin);
      const auto differs =
          std::ranges::mismatch(folded, fText.substr(at, folded.size()), [](char a, char b) {
            return static_cast<unsigned char>(a) == ToLower(static_cast<unsigned char>(b));
          });
      if (differs.in1 == folded.end()) return at;
      fInVain += static_cast<std::size_t>(differs.in1 - folded.begin()) + 1;
    }
    return kNowhere;
  }

  const std::string_view fText;
  const std::size_t fFrom;
  const std::size_t fTo;
  std::size_t fInVain = 0;
};

std::size_t LiteralFilter::Next(std::string_view text, std::size_t from) const {
  if (fLiterals.empty()) return text.size();
  // One stretch at a time, so that what is far away costs nothing where another literal is near.
  constexpr std::size_t kFirstStretch = 512;
  constexpr std::size_t kLongestStretch = std::size_t{1} << 16;
  for (std::size_t size = kFirstStretch; from <= text.size();
       size = std::min(2 * size, kLongestStretch)) {
    Stretch stretch(text, from, from + std::min(size, text.size() - from + 1));
    std::size_t found = kNowhere;
    for (const Literal& literal : fLiterals) found = std::min(found, stretch.Find(literal));
    if (stretch.IsTooSlow()) {
      found = kNowhere;
      for (const Literal& literal : fLiterals) {
        found = std::min(found, stretch.FindSteadily(literal));
      }
    }
    if (found != kNowhere) return found;
    from += size;
  }
  return kNowhere;
}

}  // namespace Matching
