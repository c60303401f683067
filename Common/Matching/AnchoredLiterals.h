#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Common/Matching/ByteFold.h"

namespace Matching {

// Which of very many literals is a text, or begins or ends it? Answered in one pass from the
// anchored side that is no longer than the longest literal, with one look into a bit filter for
// each place where a literal can end, and a look into a hash table where the filter says so. A text
// that begins, on that side, like none of them costs one look at its first byte.
//
// Letters of either case are equal. Filled by Add, closed by Freeze, and from then on read by any
// thread. Two literals of one kind with the same text keep the smaller id.
//
// A table looks from one side: Side::Tail serves whole texts and ends, Side::Head serves
// beginnings. Names are its daily bread, "name" beside ".name": an end that begins with a dot is
// kept without it, as a literal that must have the dot in front of it, so both are one entry and
// one look.
//
// Perf: the pass goes by words of eight bytes, and nothing on it waits for the memory behind a
// look: what is no hit is mostly predicted as such. See list_bench, names_behind_stars.
class AnchoredLiterals {
public:
  enum class Side : std::uint8_t { Tail, Head };

  explicit AnchoredLiterals(Side side) : fSide(side) {}

  // Literals in folded form (FoldText), not empty; a whole text is for a tail table. False for one
  // that the table has no room for: longer than kMaxLiteralSize, or past 1 TiB of them.
  bool AddWhole(std::string_view folded, std::uint32_t id);
  bool AddAnchored(std::string_view folded, std::uint32_t id);
  void Freeze();

  static constexpr std::size_t kMaxLiteralSize = (std::size_t{1} << 22) - 1;

  std::size_t Count() const { return fCount; }
  std::size_t MemorySize() const;

  // Calls onHit(id, size) for each literal of that size which is the text (size is then the text's)
  // or stands at its anchored side, shorter ones first, until one call gives true; gives whether
  // one did.
  template <class OnHit>
  bool Visit(std::string_view text, OnHit onHit) const {
    return fSide == Side::Tail ? VisitFrom<Side::Tail>(text, onHit)
                               : VisitFrom<Side::Head>(text, onHit);
  }

private:
  static constexpr char kSeparator = '.';

  // How a literal may stand in the text.
  static constexpr std::uint64_t kWhole = 1;      // it is all of it
  static constexpr std::uint64_t kAnywhere = 2;   // the rest of the text is free
  static constexpr std::uint64_t kSeparated = 4;  // the separator stands before it

  // Bits of fBytes.
  static constexpr std::uint8_t kEndsLiteral = 1;    // a kAnywhere literal has its far end here
  static constexpr std::uint8_t kBeginsLiteral = 2;  // some literal has it on the anchored side

  struct Record {
    std::uint64_t place = 0;  // offset in fArena << 25 | size << 3 | how it may stand; 0: no record
    std::uint32_t id = 0;
    std::uint32_t tag = 0;  // of the hash; once it stands in the table

    std::size_t Size() const { return place >> 3 & kMaxLiteralSize; }
  };

  static constexpr std::uint64_t kSeed = 0x2545F4914F6CDD1DULL;
  static std::uint64_t Step(std::uint64_t hash, std::uint64_t word) {
    const std::uint64_t product = (hash ^ word) * 0x9E3779B97F4A7C15ULL;
    return product ^ product >> 32;
  }

  bool Add(std::string_view folded, std::uint32_t id, std::uint64_t how);
  void Enter(Record record);
  void Mark(char folded, std::uint8_t what);  // in fBytes, for both cases
  std::uint64_t HashOf(std::string_view folded) const;
  std::string_view LiteralOf(const Record& record) const {
    return std::string_view(fArena).substr(record.place >> 25, record.Size());
  }

  // A pass over a text that stops at each place where a literal may have its far end. Texts are
  // read eight bytes at a time from the anchored side, as words with the first byte lowest; zeros
  // stand behind the last. What is up to a place within a word is hashed by what comes before the
  // word, and the word cut there.
  //
  // A set of places of a word is their marks: the top bit of byte r is the place in front of it.
  struct Pass {
    const char* data;
    std::size_t textSize;
    std::size_t reach;  // bytes that the pass may take
    // The word.
    std::size_t base = 0;         // bytes in front of it
    std::size_t behind = 0;       // bytes in front of the next one
    std::uint64_t state = kSeed;  // hash of the words in front of it
    std::uint64_t word = 0;
    std::uint64_t separated = 0;  // marks where the separator follows
    std::uint64_t anywhere = 0;   // marks behind a byte with kEndsLiteral
    std::uint64_t carry = 0;      // such marks of the next word
    std::uint64_t open = 0;       // marks of the places that are still to be looked at
    // The place where the pass stands.
    std::size_t size = 0;    // bytes up to it
    std::uint64_t hash = 0;  // theirs
    std::uint64_t how = 0;   // how a literal of that size would stand
  };
  template <Side kSide>
  bool Next(Pass& pass) const;  // false at the end
  std::uint64_t EndsIn(std::uint64_t word) const;

  template <Side kSide, class OnHit>
  bool VisitFrom(std::string_view text, OnHit& onHit) const {
    if (fTable.empty() || text.empty()) return false;
    const char first = kSide == Side::Tail ? text.back() : text.front();
    if ((fBytes[static_cast<unsigned char>(first)] & kBeginsLiteral) == 0) return false;
    Pass pass{text.data(), text.size(), std::min(text.size(), fLongest)};
    while (Next<kSide>(pass)) {
      if (Probe<kSide>(pass, onHit)) return true;
    }
    return false;
  }

  bool PassesFilter(std::uint64_t hash) const {
    const std::uint64_t bit = hash >> fFilterShift;
    return (fFilter[bit >> 6] >> (bit & 63) & 1) != 0;
  }

  template <Side kSide, class OnHit>
  bool Probe(const Pass& pass, OnHit& onHit) const {
    const char* start = pass.data;
    if (kSide == Side::Tail) start += pass.textSize - pass.size;
    const auto tag = static_cast<std::uint32_t>(pass.hash);
    for (std::size_t i = pass.hash >> fTableShift; fTable[i].place != 0; i = (i + 1) & fTableMask) {
      const Record& record = fTable[i];
      if (record.tag != tag || (record.place & pass.how) == 0 || record.Size() != pass.size) {
        continue;
      }
      if (!EqualsFolded(start, fArena.data() + (record.place >> 25), pass.size)) continue;
      const bool separated = (record.place & pass.how & (kWhole | kAnywhere)) == 0;
      if (onHit(record.id, separated ? pass.size + 1 : pass.size)) return true;
    }
    return false;
  }

  Side fSide;
  std::string fArena;                  // the literals, one behind the other
  std::vector<Record> fAdded;          // until Freeze
  std::vector<Record> fTable;          // open addressing, at most three quarters full
  std::vector<std::uint64_t> fFilter;  // a bit for each hash that is in the table
  std::array<std::uint8_t, 256> fBytes{};
  std::uint64_t fHow = 0;    // all the ways in which literals may stand
  std::size_t fCount = 0;    // records in the table
  std::size_t fLongest = 0;  // bytes of the longest literal
  std::size_t fTableMask = 0;
  unsigned fTableShift = 63;
  unsigned fFilterShift = 63;
};

}  // namespace Matching
