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
#include "Common/Matching/NibbleScan.h"

namespace Matching {

// Which of very many literals stand somewhere in a text? The cost is a few instructions a byte,
// whatever the number of literals, and a comparison for each run of bytes that the text and a
// literal share.
//
// A long literal is entered with as many runs as its stride, which begin at neighbouring places of
// it, the rarest that it has: then it is enough to look at every fourth or second place of the
// text, for at just one of them one of those runs begins. A short one is found by a pair of its
// bytes, looked for at every place, and one of a single byte by that. Each of these passes is made
// only when there is such a literal; where only a few literals ask for the slower ones, they are
// looked for at 32 places together instead (NibbleScan).
//
// Letters of either case are equal. Filled by Add, closed by Freeze, and from then on read by any
// thread.
class FloatingLiterals {
public:
  explicit FloatingLiterals(bool useNibbles = true)
      : fUseNibbles(useNibbles && NibbleScan::IsSupported()) {}

  // In folded form (FoldText), not empty. False when there is no room: more than 4 GiB of literals.
  bool Add(std::string_view folded, std::uint32_t id);
  void Freeze();

  bool IsEmpty() const { return fLiterals.empty(); }
  std::size_t Count() const { return fLiterals.size(); }
  std::size_t MemorySize() const;

  // Calls onHit(id, position) for each place where a literal stands, until one call gives true;
  // gives whether one did. In the order of the text for each kind of literal alone.
  template <class OnHit>
  bool Visit(std::string_view text, OnHit onHit) const {
    if (fLiterals.empty()) return false;
    if (!fFew.empty() && VisitFew(text, onHit)) return true;
    if (!fHasMany) return false;
    // Windows of eight bytes are read in place as far as the text has them, and then from here.
    char tail[2 * kWindow] = {};
    const std::size_t tailBegin =
        text.size() < kWindow ? 0 : (text.size() - kWindow + 1) & ~(kStep - 1);
    text.copy(tail, sizeof tail, tailBegin);
    const Windows windows{text, tail, tailBegin};
    return (!fLong.IsEmpty() && VisitStrides<Long>(fLong, windows, onHit)) ||
           (!fMedium.IsEmpty() && VisitStrides<Medium>(fMedium, windows, onHit)) ||
           (!fPairs.empty() && VisitShort(windows, onHit)) ||
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

  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  static constexpr std::size_t kWindow = sizeof(std::uint64_t);
  static constexpr std::size_t kStep = 4;  // places looked at together in one window

  struct Literal {
    std::uint32_t offset;  // in fArena
    std::uint32_t size;
    std::uint32_t id;
  };
  static bool IsMedium(const Literal& literal) {
    return literal.size >= kShortest<Medium> && literal.size < kShortest<Long>;
  }
  // One run of a literal.
  struct Entry {
    std::uint32_t literal;
    std::uint32_t at : 31;     // where in the literal the run begins
    std::uint32_t isLast : 1;  // of those with the same run
  };
  struct Slot {
    std::uint32_t tag;
    std::uint32_t first;  // of its entries + 1; 0 is a free slot
  };
  // The runs of one length.
  struct Table {
    std::vector<std::uint64_t> filter;
    std::vector<Slot> slots;  // open addressing, at most three quarters full
    std::vector<Entry> entries;
    unsigned filterShift = 63;
    unsigned slotShift = 63;

    bool IsEmpty() const { return entries.empty(); }
    bool Passes(std::uint64_t hash) const { return Holds(filter[hash >> filterShift], hash); }
  };
  // Two bits of a word of the filter stand for a run: few of what is not there has both.
  static constexpr std::uint64_t BitsOf(std::uint64_t hash) {
    return std::uint64_t{1} << (hash >> 45 & 63) | std::uint64_t{1} << (hash >> 39 & 63);
  }
  static constexpr bool Holds(std::uint64_t word, std::uint64_t hash) {
    return (~word & BitsOf(hash)) == 0;
  }
  struct Run {
    std::uint64_t hash;
    Entry entry;
  };

  // One of the few literals that are found by a string of its bytes.
  struct Few {
    std::uint32_t literal;
    std::uint32_t at;  // where in the literal the string stands
  };
  static constexpr std::size_t kMostFew = 24;

  // Letters of both cases become one, and some other bytes too: good enough to look up by.
  static constexpr std::uint64_t kLoose = 0x2020202020202020ULL;

  static std::uint64_t WindowAt(const char* bytes) {
    std::uint64_t window;
    std::memcpy(&window, bytes, sizeof window);
    return window | kLoose;
  }
  // The eight bytes from a place on, zero behind the end of the text.
  struct Windows {
    std::string_view text;
    const char* tail;
    std::size_t tailBegin;  // a multiple of kStep

    std::uint64_t At(std::size_t place) const {
      return WindowAt(place < tailBegin ? text.data() + place : tail + (place - tailBegin));
    }
  };
  // What stands in the window from its byte `at` on, so many bytes.
  template <std::size_t kSize>
  static constexpr std::uint64_t Part(std::uint64_t window, std::size_t at = 0) {
    constexpr unsigned kRest = 64 - 8 * kSize;
    return std::endian::native == std::endian::little
               ? (window >> (8 * at)) & (~std::uint64_t{0} >> kRest)
               : (window << (8 * at)) >> kRest;
  }
  // Different runs have different ones.
  static constexpr std::uint64_t HashOf(std::uint64_t run) { return run * 0x9E3779B97F4A7C15ULL; }
  static constexpr std::uint32_t TagOf(std::uint64_t hash) {
    return static_cast<std::uint32_t>(hash >> 16);
  }
  // A window over a literal, and the run of a literal as Part would give it.
  std::uint64_t WindowOf(const Literal& literal, std::size_t at, std::size_t size) const;
  std::uint64_t RunOf(const Literal& literal, std::size_t at, std::size_t size) const;

  std::size_t LongestOfFew() const;
  void AddFew(const std::vector<std::uint32_t>& few);
  template <class Kind>
  void AddRuns(std::uint32_t literal, std::vector<std::uint32_t>& load,
               std::vector<Run>& runs) const;
  void AddShort(std::uint32_t literal, std::vector<Run>& runs);
  static void Fill(Table& table, std::vector<Run>& runs);

  // Perf: all of the first byte of the pair at that byte of a window, and the bits of the second
  // that tell letters apart; one shift finds them. See list_bench, user_agents.
  static constexpr std::size_t kPairCount = std::size_t{1} << 13;
  static constexpr std::size_t PairIndex(std::uint64_t window, std::size_t at) {
    if constexpr (std::endian::native == std::endian::little) {
      return window >> (8 * at) & (kPairCount - 1);
    } else {
      const std::uint64_t pair = Part<2>(window, at);
      return pair >> 8 | (pair & 0x1F) << 8;
    }
  }

  // The next place from there on, in strides, at which a run of a literal of that kind may begin,
  // or kNone.
  template <class Kind>
  static std::size_t NextRun(const Table& table, const Windows& windows, std::size_t from);
  // The same in steps, for the pairs of short literals, of which one may begin at any of kStep
  // places.
  std::size_t NextPairs(const Windows& windows, std::size_t from) const;

  template <class OnHit>
  bool VisitFew(std::string_view text, OnHit& onHit) const {
    NibbleScan::Places places;
    for (std::size_t from = 0; fNibbles.Next(text, from, places);) {
      for (std::uint32_t bits = places.bits; bits != 0; bits &= bits - 1) {
        const auto k = static_cast<std::size_t>(std::countr_zero(bits));
        if (VisitBuckets(places.buckets[k], text, places.first + k, onHit)) return true;
      }
    }
    return false;
  }

  template <class OnHit>
  bool VisitBuckets(unsigned buckets, std::string_view text, std::size_t at, OnHit& onHit) const {
    for (; buckets != 0; buckets &= buckets - 1) {
      const auto bucket = static_cast<std::size_t>(std::countr_zero(buckets));
      for (std::size_t i = fBucketBegins[bucket]; i < fBucketBegins[bucket + 1]; ++i) {
        const Literal& literal = fLiterals[fFew[i].literal];
        const std::size_t before = fFew[i].at;
        if (IsAt(literal, text, at, before) && onHit(literal.id, at - before)) return true;
      }
    }
    return false;
  }

  template <class Kind, class OnHit>
  bool VisitStrides(const Table& table, const Windows& windows, OnHit& onHit) const {
    for (std::size_t i = 0; (i = NextRun<Kind>(table, windows, i)) != kNone; i += Kind::kStride) {
      const std::uint64_t hash = HashOf(Part<Kind::kRun>(windows.At(i)));
      if (Compare(table, hash, windows.text, i, onHit)) return true;
    }
    return false;
  }

  template <class OnHit>
  bool VisitShort(const Windows& windows, OnHit& onHit) const {
    for (std::size_t i = 0; (i = NextPairs(windows, i)) != kNone; i += kStep) {
      const std::uint64_t window = windows.At(i);
      for (std::size_t k = 0; k < kStep; ++k) {
        const std::uint8_t kinds = fPairs[PairIndex(window, k)];
        if (kinds != 0 && VisitPair(kinds, window, k, windows.text, i, onHit)) return true;
      }
    }
    return false;
  }

  // kinds says which lengths of runs begin with the pair that stands at byte k of the window.
  template <class OnHit>
  bool VisitPair(std::uint8_t kinds, std::uint64_t window, std::size_t k, std::string_view text,
                 std::size_t i, OnHit& onHit) const {
    const auto look = [&](std::size_t run, std::uint64_t bytes) {
      if ((kinds >> run & 1) == 0) return false;
      const Table& table = fShort[run - 2];
      const std::uint64_t hash = HashOf(bytes);
      return table.Passes(hash) && Compare(table, hash, text, i + k, onHit);
    };
    return look(4, Part<4>(window, k)) || look(3, Part<3>(window, k)) ||
           look(2, Part<2>(window, k));
  }

  template <class OnHit>
  bool VisitSingles(std::string_view text, OnHit& onHit) const {
    for (std::size_t i = 0; i < text.size(); ++i) {
      const unsigned char byte = FoldByte(text[i]);
      if (fIsSingle[byte] && Compare(fSingles, HashOf(byte | 0x20U), text, i, onHit)) return true;
    }
    return false;
  }

  template <class OnHit>
  bool Compare(const Table& table, std::uint64_t hash, std::string_view text, std::size_t at,
               OnHit& onHit) const {
    const std::size_t mask = table.slots.size() - 1;
    for (std::size_t s = hash >> table.slotShift; table.slots[s].first != 0; s = (s + 1) & mask) {
      if (table.slots[s].tag != TagOf(hash)) continue;
      for (const Entry* entry = &table.entries[table.slots[s].first - 1];; ++entry) {
        const Literal& literal = fLiterals[entry->literal];
        if (IsAt(literal, text, at, entry->at) && onHit(literal.id, at - entry->at)) return true;
        if (entry->isLast) break;
      }
    }
    return false;
  }

  bool IsAt(const Literal& literal, std::string_view text, std::size_t at,
            std::size_t before) const {
    return at >= before && text.size() - (at - before) >= literal.size &&
           EqualsFolded(text.data() + (at - before), fArena.data() + literal.offset, literal.size);
  }

  std::string fArena;
  std::vector<Literal> fLiterals;
  Table fLong;
  Table fMedium;
  std::array<Table, kShortRun - 1> fShort;  // runs of two bytes and more
  Table fSingles;
  std::vector<std::uint8_t> fPairs;  // by PairIndex, a bit for each length of runs; or empty
  std::array<bool, 256> fIsSingle{};
  bool fUseNibbles;
  bool fHasMany = false;  // literals that are not in fFew
  NibbleScan fNibbles;
  std::vector<Few> fFew;                                                  // by bucket
  std::array<std::size_t, NibbleScan::kBucketCount + 1> fBucketBegins{};  // in fFew
};

}  // namespace Matching
