#include "Common/Matching/LiteralFilter.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Common/Matching/CharacterClasses.h"
#include "Common/Matching/LiteralForms.h"

namespace Matching {
namespace {

// Bytes of host names, URLs and header values, from the most frequent on. What is not in it is
// rare.
constexpr std::string_view kFrequent = "eta/osi.nrcd-pmlh1w02ugb3f4:56v789k_y=%xjq&?z ,;+";

std::size_t Rarity(char byte) {
  return std::min(kFrequent.find(byte), kFrequent.size());
}

}  // namespace

LiteralFilter::LiteralFilter(const SyntaxTree& tree) {
  std::vector<std::string> literals = LiteralForms(tree).Required({tree.Root()});
  if (literals.size() > kMaxLiterals) return;
  for (std::string& folded : literals) {
    const auto rare = std::ranges::max_element(folded, {}, Rarity);
    const auto index = static_cast<std::size_t>(rare - folded.begin());
    fLiterals.push_back({std::move(folded), index});
  }
}

bool LiteralFilter::MayMatch(std::string_view text, std::size_t from) const {
  if (fLiterals.empty()) return true;
  text.remove_prefix(from);
  return std::ranges::any_of(fLiterals, [text](const Literal& literal) {
    const auto lower = static_cast<unsigned char>(literal.folded[literal.rare]);
    const unsigned char upper = ToUpper(lower);
    return Contains(text, literal, lower) || (upper != lower && Contains(text, literal, upper));
  });
}

// Perf: the library's memchr looks at many bytes at once; see ExpressionBench, Search.
bool LiteralFilter::Contains(std::string_view text, const Literal& literal, unsigned char rare) {
  const std::string& folded = literal.folded;
  if (text.size() < folded.size()) return false;
  // The rare byte of an occurrence stands between these two.
  const char* at = text.data() + literal.rare;
  const char* const end = text.data() + text.size() - folded.size() + literal.rare + 1;
  while (at < end) {
    at = static_cast<const char*>(std::memchr(at, rare, static_cast<std::size_t>(end - at)));
    if (at == nullptr) return false;
    const char* const first = at - literal.rare;
    const bool isEqual = std::equal(folded.begin(), folded.end(), first, [](char a, char b) {
      return static_cast<unsigned char>(a) == ToLower(static_cast<unsigned char>(b));
    });
    if (isEqual) return true;
    ++at;
  }
  return false;
}

}  // namespace Matching
