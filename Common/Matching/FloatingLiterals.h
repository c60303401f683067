#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "Common/Matching/ByteFold.h"

namespace Matching {

// Which of very many literals stand somewhere in a text? Each literal is found by the rarest of its
// runs of up to six bytes: one pass looks each run of the text up in a bit filter, and only where
// the filter has it in a table of the literals to compare. So the cost is a few instructions a
// byte, whatever the number of literals, and a comparison for each run that the text and a literal
// share.
//
// Letters of either case are equal. Filled by Add, closed by Freeze, and from then on read by any
// thread.
class FloatingLiterals {
public:
  // In folded form (FoldText), not empty. False when there is no room: more than 4 GiB of literals.
  bool Add(std::string_view folded, std::uint32_t id);
  void Freeze();

  bool IsEmpty() const { return fLiterals.empty(); }
  std::size_t Count() const { return fLiterals.size(); }
  std::size_t MemorySize() const;

  // Calls onHit(id, position) for each place where a literal stands, until one call gives true;
  // gives whether one did. The order follows the text, but for where in a literal its run lies.
  template <class OnHit>
  bool Visit(std::string_view text, OnHit onHit) const {
    if (fLiterals.empty()) return false;
    char folded[kChunk + kRun - 1 + sizeof(std::uint64_t)];
    for (std::size_t start = 0; start < text.size(); start += kChunk) {
      const std::size_t fill = std::min(text.size() - start, kChunk + kRun - 1);
      FoldBytes(text.data() + start, fill, folded);
      std::memset(folded + fill, 0, sizeof(std::uint64_t));  // a window reads past its run
      const std::size_t places = std::min(fill, kChunk);
      for (std::size_t run = kRun; run >= 1; --run) {
        if (fTables[run - 1].slots.empty()) continue;
        if (VisitRuns(run, folded, fill, places, text, start, onHit)) return true;
      }
    }
    return false;
  }

private:
  static constexpr std::size_t kRun = 6;  // longest run that is looked up
  // Of a literal of that size. There is none of five bytes: a pass for each length that occurs.
  static constexpr std::size_t RunSize(std::size_t size) {
    return size >= kRun ? kRun : std::min<std::size_t>(size, 4);
  }

  static constexpr std::size_t kChunk = 2048;  // places of a text handled at a time

  struct Literal {
    std::uint32_t offset;  // in fArena
    std::uint32_t size;
    std::uint32_t runAt;  // where in the literal its run lies
    std::uint32_t id;
  };
  struct Slot {
    std::uint64_t run;
    std::uint32_t first;  // of its literals
    std::uint32_t count;  // 0 is a free slot
  };
  // The runs of one length.
  struct Table {
    std::vector<std::uint64_t> filter;
    std::vector<Slot> slots;  // open addressing, at most half full
    unsigned filterShift = 63;
    unsigned slotShift = 63;
  };

  static std::uint64_t RunAt(const char* bytes, std::size_t size) {
    std::uint64_t run = 0;
    std::memcpy(&run, bytes, size);
    return run;
  }
  // The same out of the middle of a buffer with eight bytes to read.
  template <std::size_t kSize>
  static std::uint64_t WindowAt(const char* bytes) {
    std::uint64_t window;
    std::memcpy(&window, bytes, sizeof window);
    return std::endian::native == std::endian::little
               ? window & (~std::uint64_t{0} >> (64 - 8 * kSize))
               : RunAt(bytes, kSize);
  }
  static std::uint64_t HashOf(std::uint64_t run) { return run * 0x9E3779B97F4A7C15ULL; }

  void ChooseRun(Literal& literal, std::vector<std::uint32_t>& load);
  void Fill(std::size_t run);

  template <class OnHit>
  bool VisitRuns(std::size_t run, const char* folded, std::size_t fill, std::size_t places,
                 std::string_view text, std::size_t start, OnHit& onHit) const {
    switch (run) {
      case kRun:
        return VisitRunsOf<kRun>(folded, fill, places, text, start, onHit);
      case 4:
        return VisitRunsOf<4>(folded, fill, places, text, start, onHit);
      case 3:
        return VisitRunsOf<3>(folded, fill, places, text, start, onHit);
      case 2:
        return VisitRunsOf<2>(folded, fill, places, text, start, onHit);
      default:
        return VisitRunsOf<1>(folded, fill, places, text, start, onHit);
    }
  }

  template <std::size_t kSize, class OnHit>
  bool VisitRunsOf(const char* folded, std::size_t fill, std::size_t places, std::string_view text,
                   std::size_t start, OnHit& onHit) const {
    if (fill < kSize) return false;
    const Table& table = fTables[kSize - 1];
    const std::uint64_t* filter = table.filter.data();
    const std::size_t end = std::min(fill - kSize + 1, places);
    for (std::size_t i = 0; i < end; ++i) {
      const std::uint64_t run = WindowAt<kSize>(folded + i);
      const std::uint64_t hash = HashOf(run);
      const std::uint64_t bit = hash >> table.filterShift;
      if ((filter[bit >> 6] >> (bit & 63) & 1) == 0) continue;
      if (Compare(table, run, hash, text, start + i, onHit)) return true;
    }
    return false;
  }

  template <class OnHit>
  bool Compare(const Table& table, std::uint64_t run, std::uint64_t hash, std::string_view text,
               std::size_t at, OnHit& onHit) const {
    const std::size_t mask = table.slots.size() - 1;
    for (std::size_t s = hash >> table.slotShift; table.slots[s].count != 0; s = (s + 1) & mask) {
      const Slot& slot = table.slots[s];
      if (slot.run != run) continue;
      for (std::uint32_t i = slot.first; i < slot.first + slot.count; ++i) {
        const Literal& literal = fLiterals[i];
        if (at < literal.runAt) continue;
        const std::size_t position = at - literal.runAt;
        if (text.size() - position < literal.size) continue;
        if (!EqualsFolded(text.data() + position, fArena.data() + literal.offset, literal.size)) {
          continue;
        }
        if (onHit(literal.id, position)) return true;
      }
      return false;
    }
    return false;
  }

  std::string fArena;
  std::vector<Literal> fLiterals;  // once frozen: those of one run stand together
  std::array<Table, kRun> fTables;
};

}  // namespace Matching
