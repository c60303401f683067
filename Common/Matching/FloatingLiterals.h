#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Common/Matching/ByteFold.h"
#include "Common/Matching/FewLiterals.h"
#include "Common/Matching/LiteralPool.h"
#include "Common/Matching/PaddedText.h"
#include "Common/Matching/RunFilter.h"

namespace Matching {

// What a test can do without. No answer depends on it.
struct FloatingOptions {
  bool useFew = true;
  bool useVectors = true;
  bool mergePasses = true;  // the pass for literals of five bytes and more finds the long ones, too
};

// Which of very many literals stand somewhere in a text? The cost is a few instructions a byte,
// whatever the number of literals, and a comparison for each run of bytes that the text and a
// literal share.
//
// A long literal is entered with as many runs as its stride, which begin at neighbouring places of
// it, the rarest that it has: then it is enough to look at every fourth or second place of the
// text, for at just one of them one of those runs begins. A short one is found by a pair of its
// bytes, looked for at every place, and one of a single byte by that. Each of these passes is made
// only when there is such a literal; where only a few literals ask for the slower ones, they are
// looked for at many places together instead (FewLiterals).
//
// Source: one hash for several neighbouring places, and what it finds compared, is the idea of
// S. Wu and U. Manber, "A fast algorithm for multi-pattern searching" (1994); the stride instead of
// a shift is ours.
//
// Letters of either case are equal. Filled by Add, closed by Freeze, and from then on read by any
// thread.
class FloatingLiterals {
public:
  explicit FloatingLiterals(const FloatingOptions& options = {});

  // In folded form (FoldText), not empty. False when there is no room: more than 4 GiB of literals.
  // The same literal may have many ids.
  bool Add(std::string_view folded, std::uint32_t id);
  void Freeze();

  std::size_t MemorySize() const;

  // Literals are numbered, from 0 on; equal ones are one, which has the ids of all.
  std::size_t Count() const { return fLiterals.Count(); }
  std::span<const std::uint32_t> IdsOf(std::uint32_t literal) const {
    const std::size_t begin = literal == 0 ? 0 : fIdEnds[literal - 1];
    return std::span(fIds).subspan(begin, fIdEnds[literal] - begin);
  }

  // Calls onHit(literal, position) for each place where a literal stands, until one call gives
  // true; gives whether one did.
  template <class OnHit>
  bool Visit(std::string_view text, OnHit onHit) const {
    if (fLiterals.Count() == 0) return false;
    const PaddedText padded(text);
    return (!fFew.IsEmpty() && VisitFew(padded, onHit)) ||
           (!fLong.IsEmpty() && VisitStrides<Long>(fLong, padded, onHit)) ||
           (!fMedium.IsEmpty() && VisitStrides<Medium>(fMedium, padded, onHit)) ||
           (!fPairs.empty() && VisitShort(padded, onHit)) ||
           (!fSingles.IsEmpty() && VisitSingles(text, onHit));
  }

private:
  // How the longer literals are looked up: runs of so many bytes at every stride-th place.
  struct Long {
    static constexpr std::size_t kRun = 5;
    static constexpr std::size_t kStride = 4;
  };
  struct Medium {
    static constexpr std::size_t kRun = 4;
    static constexpr std::size_t kStride = 2;
  };
  template <class Kind>
  static constexpr std::size_t kShortest = Kind::kRun + Kind::kStride - 1;  // literal of the kind
  static constexpr std::size_t kShortRun = 4;  // bytes of a short literal that are looked up
  static_assert(kShortest<Medium> == kShortRun + 1);
  // Runs and checks far inside a very long literal are no better than some near its start.
  static constexpr std::size_t kMostRunAt = 256;

  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  // One run of a literal, and some other bytes of it, which tell most places apart where the run
  // stands and the literal does not.
  struct Entry {
    std::uint32_t literal;
    std::uint32_t check = 0;       // kCheck bytes of the literal, loosely; none for a short one
    std::int16_t checkAt = 0;      // where they begin, from the run on
    std::uint16_t at : 15 = 0;     // where in the literal the run begins
    std::uint16_t isLast : 1 = 0;  // of those with the same run
  };
  static constexpr std::size_t kCheck = sizeof(std::uint32_t);
  struct Slot {
    std::uint32_t hash;
    std::uint32_t first;  // of its entries + 1; 0 is a free slot
  };
  // The runs of one length.
  struct Table {
    RunFilter filter;
    std::vector<Slot> slots;  // open addressing, at most three quarters full
    std::vector<Entry> entries;
    unsigned slotShift = 31;

    bool IsEmpty() const { return entries.empty(); }
  };
  struct Run {
    std::uint32_t hash;
    Entry entry;
  };

  // The eight bytes from a place on, loosely.
  static constexpr std::size_t kWindow = sizeof(std::uint64_t);
  static constexpr std::size_t kStep = 4;  // places of pairs looked at together in one window
  static std::uint64_t WindowAt(const char* bytes) {
    constexpr std::uint64_t kLoose = std::uint64_t{RunFilter::kLoose} << 32 | RunFilter::kLoose;
    std::uint64_t window;
    std::memcpy(&window, bytes, sizeof window);
    return window | kLoose;
  }
  // What stands in the window from its byte `at` on, so many bytes.
  static constexpr std::uint32_t Part(std::uint64_t window, std::size_t at, std::size_t size) {
    const std::size_t rest = 64 - 8 * size;
    return static_cast<std::uint32_t>(std::endian::native == std::endian::little
                                          ? window >> (8 * at) & (~std::uint64_t{0} >> rest)
                                          : window << (8 * at) >> rest);
  }

  void FreezeIds();
  std::size_t ChooseFew();
  template <class Kind>
  void AddRuns(std::uint32_t literal, std::vector<std::uint32_t>& load,
               std::vector<Run>& runs) const;
  Entry EntryOf(std::uint32_t literal, std::size_t at, std::size_t runSize) const;
  void AddShort(std::uint32_t literal, std::vector<Run>& runs);
  static void Fill(Table& table, std::vector<Run>& runs);

  // Perf: all of the first byte of the pair at that byte of a window, and the bits of the second
  // that tell letters apart; one shift finds them. See list_bench, user_agents.
  static constexpr std::size_t kPairCount = std::size_t{1} << 13;
  static constexpr std::size_t PairIndex(std::uint64_t window, std::size_t at) {
    if constexpr (std::endian::native == std::endian::little) {
      return window >> (8 * at) & (kPairCount - 1);
    } else {
      const std::uint32_t pair = Part(window, at, 2);
      return pair >> 8 | (pair & 0x1F) << 8;
    }
  }
  // The next place from there on, in steps, where a short literal may begin at any of kStep places;
  // or kNone.
  std::size_t NextPairs(const PaddedText& text, std::size_t from) const;

  template <class OnHit>
  bool VisitFew(const PaddedText& text, OnHit& onHit) const {
    return fFew.Visit(text, [&](std::uint32_t literal, std::size_t place, std::size_t before) {
      return IsAt(literal, text.Text(), place, before) && onHit(literal, place - before);
    });
  }

  template <class Kind, class OnHit>
  bool VisitStrides(const Table& table, const PaddedText& text, OnHit& onHit) const {
    constexpr std::size_t kBlock = RunFilter::kStride * RunFilter::kPlaces;
    for (std::size_t block = 0; block < text.Text().size(); block += kBlock) {
      for (std::size_t i = 0; i < RunFilter::kStride; i += Kind::kStride) {
        const std::size_t first = block + i;
        std::uint64_t bits = table.filter.Collect<Kind::kRun>(text, first, fOptions.useVectors);
        for (; bits != 0; bits &= bits - 1) {
          const auto k = static_cast<std::size_t>(std::countr_zero(bits));
          const std::size_t place = first + k * RunFilter::kStride;
          const auto hash = RunFilter::HashOfRun<Kind::kRun>(text.Text().data() + place);
          if (Compare<true>(table, hash, text.Text(), place, onHit)) return true;
        }
      }
    }
    return false;
  }

  template <class OnHit>
  bool VisitShort(const PaddedText& text, OnHit& onHit) const {
    for (std::size_t i = 0; (i = NextPairs(text, i)) != kNone; i += kStep) {
      const std::uint64_t window = WindowAt(text.From(i, kWindow));
      for (std::size_t k = 0; k < kStep; ++k) {
        const std::uint8_t kinds = fPairs[PairIndex(window, k)];
        if (kinds != 0 && VisitPair(kinds, window, k, text.Text(), i, onHit)) return true;
      }
    }
    return false;
  }

  // kinds says which lengths of runs begin with the pair that stands at byte k of the window.
  template <class OnHit>
  bool VisitPair(std::uint8_t kinds, std::uint64_t window, std::size_t k, std::string_view text,
                 std::size_t i, OnHit& onHit) const {
    for (std::size_t run = kShortRun; run >= 2; --run) {
      if ((kinds >> run & 1) == 0) continue;
      const Table& table = fShort[run - 2];
      const std::uint32_t hash = RunFilter::HashOf(Part(window, k, run));
      if (table.filter.Passes(hash) && Compare<false>(table, hash, text, i + k, onHit)) return true;
    }
    return false;
  }

  template <class OnHit>
  bool VisitSingles(std::string_view text, OnHit& onHit) const {
    for (std::size_t i = 0; i < text.size(); ++i) {
      const unsigned char byte = FoldByte(text[i]);
      if (!fIsSingle[byte]) continue;
      if (Compare<false>(fSingles, RunFilter::HashOf(byte | 0x20U), text, i, onHit)) return true;
    }
    return false;
  }

  template <bool kHasCheck, class OnHit>
  bool Compare(const Table& table, std::uint32_t hash, std::string_view text, std::size_t at,
               OnHit& onHit) const {
    const std::size_t mask = table.slots.size() - 1;
    for (std::size_t s = hash >> table.slotShift; table.slots[s].first != 0; s = (s + 1) & mask) {
      if (table.slots[s].hash != hash) continue;
      for (const Entry* entry = &table.entries[table.slots[s].first - 1];; ++entry) {
        if ((!kHasCheck || PassesCheck(*entry, text, at)) &&
            IsAt(entry->literal, text, at, entry->at) && onHit(entry->literal, at - entry->at)) {
          return true;
        }
        if (entry->isLast) break;
      }
      return false;
    }
    return false;
  }

  static bool PassesCheck(const Entry& entry, std::string_view text, std::size_t at) {
    const std::size_t place = at + static_cast<std::size_t>(std::ptrdiff_t{entry.checkAt});
    if (place > text.size() - kCheck) return false;  // in front of the text, too
    std::uint32_t bytes;
    std::memcpy(&bytes, text.data() + place, sizeof bytes);
    return (bytes | RunFilter::kLoose) == entry.check;
  }

  bool IsAt(std::uint32_t literal, std::string_view text, std::size_t at,
            std::size_t before) const {
    const std::string_view folded = fLiterals[literal];
    return at >= before && text.size() - (at - before) >= folded.size() &&
           EqualsFolded(text.data() + (at - before), folded.data(), folded.size());
  }

  // What was added: an id of a literal.
  struct Added {
    std::uint32_t literal;
    std::uint32_t id;
  };

  FloatingOptions fOptions;
  LiteralPool fLiterals;
  std::vector<Added> fAdded;           // until Freeze
  std::vector<std::uint32_t> fIds;     // by literal
  std::vector<std::uint32_t> fIdEnds;  // behind the last of each literal, in fIds
  FewLiterals fFew;
  Table fLong;
  Table fMedium;
  std::array<Table, kShortRun - 1> fShort;  // runs of two bytes and more
  Table fSingles;
  std::vector<std::uint8_t> fPairs;  // by PairIndex, a bit for each length of runs; or empty
  std::array<bool, 256> fIsSingle{};
};

}  // namespace Matching
