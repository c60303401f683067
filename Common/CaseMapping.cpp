#include "Common/CaseMapping.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace {

// Every step-th code point from first to last moves by the distance.
struct CaseRule {
  std::uint32_t first;
  std::uint32_t last;
  std::uint32_t step;
  std::int32_t distance;
};

#include "Common/UnicodeCaseMapping.inc"

template <std::size_t kCount>
char32_t MapByRules(const CaseRule (&rules)[kCount], char32_t value) {
  const CaseRule* const rule =
      std::lower_bound(std::begin(rules), std::end(rules), value,
                       [](const CaseRule& entry, char32_t wanted) { return entry.last < wanted; });
  if (rule == std::end(rules) || value < rule->first || (value - rule->first) % rule->step != 0) {
    return value;
  }
  return value + static_cast<char32_t>(rule->distance);
}

// Records of a key, one to three folded code points, and a 0 behind one or two of them.
constexpr std::uint32_t kFoldingWords[] = {
#include "Common/UnicodeCaseFolding.inc"
};
constexpr std::size_t kWordCount = std::size(kFoldingWords);

constexpr std::uint32_t FoldedCountAt(std::size_t record) {
  return kFoldingWords[record + 2] == 0 ? 1 : kFoldingWords[record + 3] == 0 ? 2 : 3;
}
// A record has no end mark when nothing is left for one.
constexpr std::size_t RecordSizeAt(std::size_t record) {
  const std::uint32_t count = FoldedCountAt(record);
  return count == 3 ? 4 : count + 2;
}

// The index of the words: pages of 256 code points, and for each page with a key in it the position
// of every record, plus one; 0 stands for a code point that folds to itself.
constexpr std::size_t kPageSize = 256;

constexpr std::uint32_t LastKey() {
  std::uint32_t last = 0;
  for (std::size_t at = 0; at < kWordCount; at += RecordSizeAt(at)) last = kFoldingWords[at];
  return last;
}

constexpr std::size_t kPageCount = LastKey() / kPageSize + 1;

constexpr std::size_t UsedPages() {
  std::array<bool, kPageCount> used{};
  for (std::size_t at = 0; at < kWordCount; at += RecordSizeAt(at)) {
    used[kFoldingWords[at] / kPageSize] = true;
  }
  return static_cast<std::size_t>(std::count(used.begin(), used.end(), true));
}

struct FoldingIndex {
  std::array<std::uint8_t, kPageCount> pages{};  // 0: no key in this page
  std::array<std::array<std::uint16_t, kPageSize>, UsedPages() + 1> records{};
};

constexpr FoldingIndex kFoldingIndex = [] {
  FoldingIndex index;
  std::uint8_t used = 0;
  for (std::size_t at = 0; at < kWordCount; at += RecordSizeAt(at)) {
    std::uint8_t& page = index.pages[kFoldingWords[at] / kPageSize];
    if (page == 0) page = ++used;
    index.records[page][kFoldingWords[at] % kPageSize] = static_cast<std::uint16_t>(at + 1);
  }
  return index;
}();

}  // namespace

char32_t UpperCase(char32_t value) {
  return MapByRules(kUpperRules, value);
}

char32_t LowerCase(char32_t value) {
  return MapByRules(kLowerRules, value);
}

FoldedCase FoldCase(char32_t value) {
  if (value < 0x80) return {{FoldAscii(value)}, 1};
  if (value / kPageSize >= kPageCount) return {{value}, 1};

  const std::uint8_t page = kFoldingIndex.pages[value / kPageSize];
  const std::size_t record = kFoldingIndex.records[page][value % kPageSize];
  if (record == 0) return {{value}, 1};
  const std::uint32_t* const folded = kFoldingWords + record;
  const std::uint32_t count = FoldedCountAt(record - 1);
  return {{folded[0], count > 1 ? folded[1] : 0, count > 2 ? folded[2] : 0}, count};
}
