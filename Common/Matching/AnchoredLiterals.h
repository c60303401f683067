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

  // Bits of fBytes above the folded byte.
  static constexpr std::uint16_t kEndsLiteral = 0x100;  // a kAnywhere literal has its far end here
  static constexpr std::uint16_t kSeparates = 0x200;  // this is the separator, and one is asked for
  static constexpr std::uint16_t kBeginsLiteral =
      0x400;                                        // some literal has it on the anchored side
  static constexpr std::uint16_t kTextEnd = 0x800;  // no byte, but what lies behind the last

  struct Record {
    std::uint64_t place = 0;  // offset in fArena << 25 | size << 3 | how it may stand; 0: no record
    std::uint32_t id = 0;
    std::uint32_t tag = 0;  // of the hash; once it stands in the table

    std::size_t Size() const { return place >> 3 & kMaxLiteralSize; }
  };

  static constexpr std::uint64_t kSeed = 0x2545F4914F6CDD1DULL;
  static std::uint64_t Step(std::uint64_t hash, unsigned char folded) {
    return (hash ^ folded) * 0x9E3779B97F4A7C15ULL;
  }

  bool Add(std::string_view folded, std::uint32_t id, std::uint64_t how);
  void Enter(Record record);
  void Mark(char folded, std::uint16_t what);  // in fBytes, for both cases
  std::uint64_t HashOf(std::string_view folded) const;
  std::string_view LiteralOf(const Record& record) const {
    return std::string_view(fArena).substr(record.place >> 25, record.Size());
  }

  template <Side kSide, class OnHit>
  bool VisitFrom(std::string_view text, OnHit& onHit) const {
    const std::size_t size = text.size();
    if (fTable.empty() || size == 0) return false;
    const auto at = [&](std::size_t k) {
      return fBytes[static_cast<unsigned char>(kSide == Side::Tail ? text[size - 1 - k] : text[k])];
    };
    std::uint16_t byte = at(0);
    if ((byte & kBeginsLiteral) == 0) return false;

    const std::size_t reach = size < fLongest ? size : fLongest;
    std::uint64_t hash = kSeed;
    for (std::size_t k = 1;; ++k) {  // so many bytes are in the hash
      hash = Step(hash, static_cast<unsigned char>(byte));
      const std::uint16_t next = k < size ? at(k) : kTextEnd;
      if (((byte & kEndsLiteral) | (next & (kSeparates | kTextEnd))) != 0 && PassesFilter(hash)) {
        const std::uint64_t how = (byte & kEndsLiteral ? kAnywhere : 0) |
                                  (next & kSeparates ? kSeparated : 0) |
                                  (next & kTextEnd ? kWhole : 0);
        if (Probe<kSide>(text, hash, k, how, onHit)) return true;
      }
      if (k == reach) return false;
      byte = next;
    }
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
    for (std::size_t i = hash >> fTableShift; fTable[i].place != 0; i = (i + 1) & fTableMask) {
      const Record& record = fTable[i];
      if (record.tag != tag || (record.place & how) == 0 || record.Size() != size) continue;
      if (!EqualsFolded(start, fArena.data() + (record.place >> 25), size)) continue;
      const bool separated = (record.place & how & (kWhole | kAnywhere)) == 0;
      if (onHit(record.id, separated ? size + 1 : size)) return true;
    }
    return false;
  }

  Side fSide;
  std::string fArena;                  // the literals, one behind the other
  std::vector<Record> fAdded;          // until Freeze
  std::vector<Record> fTable;          // open addressing, at most three quarters full
  std::vector<std::uint64_t> fFilter;  // a bit for each hash that is in the table
  std::array<std::uint16_t, 256> fBytes = [] {
    std::array<std::uint16_t, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = kFoldedByte[i];
    return table;
  }();
  std::size_t fCount = 0;    // records in the table
  std::size_t fLongest = 0;  // bytes of the longest literal
  std::size_t fTableMask = 0;
  unsigned fTableShift = 63;
  unsigned fFilterShift = 63;
};

}  // namespace Matching
