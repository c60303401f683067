#pragma once

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
// each place where a literal can end, and a look into a hash table where the filter says so.
//
// Letters of either case are equal. Filled by Add, closed by Freeze, and from then on read by any
// thread. Two literals of one kind with the same text keep the smaller id.
//
// A table looks from one side: Side::Tail serves whole texts and ends, Side::Head serves
// beginnings. Names are its daily bread, "name" beside ".name": an end that begins with a dot is
// kept without it, as a literal that must have the dot in front of it, so both are one entry and
// one look.
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

  bool IsEmpty() const { return fRecords.empty(); }
  std::size_t Count() const { return fRecords.size(); }
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

  // Bits of fBytes above the folded byte.
  static constexpr std::uint16_t kEndsLiteral = 0x100;  // a kAnywhere literal has its far end here
  static constexpr std::uint16_t kSeparates = 0x200;  // this is the separator, and one is asked for

  struct Record {
    std::uint64_t place;  // offset in fArena << 25 | size << 3 | how it may stand
    std::uint32_t id;
  };
  struct Slot {
    std::uint32_t tag;
    std::uint32_t record;  // index + 1; 0 is a free slot
  };

  static constexpr std::uint64_t kSeed = 0x2545F4914F6CDD1DULL;
  static std::uint64_t Step(std::uint64_t hash, unsigned char folded) {
    return (hash ^ folded) * 0x9E3779B97F4A7C15ULL;
  }

  bool Add(std::string_view folded, std::uint32_t id, std::uint64_t how);
  std::uint64_t HashOf(std::string_view folded) const;
  std::string_view LiteralOf(const Record& record) const {
    return std::string_view(fArena).substr(record.place >> 25, record.place >> 3 & kMaxLiteralSize);
  }

  template <Side kSide, class OnHit>
  bool VisitFrom(std::string_view text, OnHit& onHit) const {
    if (fRecords.empty()) return false;
    const std::size_t size = text.size();
    const auto at = [&](std::size_t k) {
      return fBytes[static_cast<unsigned char>(kSide == Side::Tail ? text[size - 1 - k] : text[k])];
    };
    const std::size_t reach = size < fLongest ? size : fLongest;
    std::uint64_t hash = kSeed;
    for (std::size_t k = 0; k < reach; ++k) {
      const std::uint16_t byte = at(k);
      hash = Step(hash, static_cast<unsigned char>(byte));
      std::uint64_t how = byte & kEndsLiteral ? kAnywhere : 0;
      if (k + 1 == size) {
        how |= kWhole;
      } else if (at(k + 1) & kSeparates) {
        how |= kSeparated;
      }
      if (how == 0 || !PassesFilter(hash)) continue;
      if (Probe<kSide>(text, hash, k + 1, how, onHit)) return true;
    }
    return false;
  }

  bool PassesFilter(std::uint64_t hash) const {
    const std::uint64_t bit = hash >> fFilterShift;
    return (fFilter[bit >> 6] >> (bit & 63) & 1) != 0;
  }

  template <Side kSide, class OnHit>
  bool Probe(std::string_view text, std::uint64_t hash, std::size_t size, std::uint64_t how,
             OnHit& onHit) const {
    const char* start = kSide == Side::Tail ? text.data() + (text.size() - size) : text.data();
    const auto tag = static_cast<std::uint32_t>(hash);
    for (std::size_t i = hash >> fSlotShift; fSlots[i].record != 0; i = (i + 1) & fSlotMask) {
      if (fSlots[i].tag != tag) continue;
      const Record& record = fRecords[fSlots[i].record - 1];
      if ((record.place & how) == 0 || (record.place >> 3 & kMaxLiteralSize) != size) continue;
      if (!EqualsFolded(start, fArena.data() + (record.place >> 25), size)) continue;
      const bool separated = (record.place & how & (kWhole | kAnywhere)) == 0;
      if (onHit(record.id, separated ? size + 1 : size)) return true;
    }
    return false;
  }

  Side fSide;
  std::string fArena;  // the literals, one behind the other
  std::vector<Record> fRecords;
  std::vector<Slot> fSlots;            // open addressing, at most half full
  std::vector<std::uint64_t> fFilter;  // a bit for each hash that is in the table
  std::array<std::uint16_t, 256> fBytes = [] {
    std::array<std::uint16_t, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = kFoldedByte[i];
    return table;
  }();
  std::size_t fLongest = 0;  // bytes of the longest literal
  std::size_t fSlotMask = 0;
  unsigned fSlotShift = 63;
  unsigned fFilterShift = 63;
};

}  // namespace Matching
