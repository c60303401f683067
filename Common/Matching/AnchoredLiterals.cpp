#include "Common/Matching/AnchoredLiterals.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace Matching {

namespace {

constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::uint64_t kOnes = 0x0101010101010101ULL;
constexpr std::uint64_t kTops = kOnes * 0x80;

// A mark is the top bit of a byte.
constexpr std::uint64_t MarkAt(std::size_t place) {
  return std::uint64_t{0x80} << 8 * place;
}

constexpr std::uint64_t Reversed(std::uint64_t word) {
  word = (word & 0x00FF00FF00FF00FFULL) << 8 | (word >> 8 & 0x00FF00FF00FF00FFULL);
  word = (word & 0x0000FFFF0000FFFFULL) << 16 | (word >> 16 & 0x0000FFFF0000FFFFULL);
  return word << 32 | word >> 32;
}

// The byte at the lowest address is the lowest.
std::uint64_t Load(const char* bytes, std::size_t size) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, size);
  return std::endian::native == std::endian::big ? Reversed(word) : word;
}

// Up to eight bytes from the anchored side on behind the first `base`, the first of them lowest;
// zeros behind the last.
template <AnchoredLiterals::Side kSide>
inline std::uint64_t WordOf(const char* text, std::size_t size, std::size_t base) {
  constexpr bool kIsTail = kSide == AnchoredLiterals::Side::Tail;
  const std::size_t count = std::min(size - base, kWord);
  const std::size_t cut = 4 * (kWord - count);  // half of the bits that are not the word's
  std::uint64_t word;
  if (size >= kWord) {  // bytes in front of the base fill it up
    word =
        Load(kIsTail ? text + (size - base - count) : text + std::min(base, size - kWord), kWord);
  } else {
    word = Load(kIsTail ? text : text + base, count);
    if (!kIsTail) word = word << cut << cut;
  }
  return FoldWord(kIsTail ? Reversed(word << cut << cut) : word >> cut >> cut);
}

// Marks the bytes that are this one.
constexpr std::uint64_t MarksOf(char byte, std::uint64_t word) {
  const std::uint64_t other = word ^ kOnes * static_cast<unsigned char>(byte);
  return ~(((other & ~kTops) + ~kTops) | other | ~kTops);
}

}  // namespace

bool AnchoredLiterals::AddWhole(std::string_view folded, std::uint32_t id) {
  return Add(folded, id, kWhole);
}

bool AnchoredLiterals::AddAnchored(std::string_view folded, std::uint32_t id) {
  if (fSide == Side::Tail && folded.size() > 1 && folded.front() == kSeparator) {
    return Add(folded.substr(1), id, kSeparated);
  }
  return Add(folded, id, kAnywhere);
}

bool AnchoredLiterals::Add(std::string_view folded, std::uint32_t id, std::uint64_t how) {
  if (folded.empty() || folded.size() > kMaxLiteralSize) return false;
  // "name" and ".name" of one element come one behind the other, and share their record.
  if (!fAdded.empty() && fAdded.back().id == id && LiteralOf(fAdded.back()) == folded) {
    fAdded.back().place |= how;
    return true;
  }
  if (fArena.size() >> 39 != 0) return false;
  fAdded.push_back({fArena.size() << 25 | folded.size() << 3 | how, id, 0});
  fArena.append(folded);
  return true;
}

// As the pass hashes what is up to a place.
std::uint64_t AnchoredLiterals::HashOf(std::string_view folded) const {
  const auto wordAt = [this, folded](std::size_t base) {
    return fSide == Side::Tail ? WordOf<Side::Tail>(folded.data(), folded.size(), base)
                               : WordOf<Side::Head>(folded.data(), folded.size(), base);
  };
  std::uint64_t hash = Step(kSeed, 0);
  std::size_t base = 0;
  for (; base + kWord <= folded.size(); base += kWord) hash = Step(hash, wordAt(base));
  return Step(hash, wordAt(base));
}

void AnchoredLiterals::Freeze() {
  if (fAdded.empty()) return;
  const auto isBefore = [](const Record& a, const Record& b) { return a.id < b.id; };
  if (!std::is_sorted(fAdded.begin(), fAdded.end(), isBefore)) {
    std::stable_sort(fAdded.begin(), fAdded.end(), isBefore);
  }
  const std::size_t slots = std::bit_ceil(fAdded.size() * 4 / 3 + 1);
  fTable.assign(slots, Record());
  fTableMask = slots - 1;
  fTableShift = 64 - static_cast<unsigned>(std::countr_zero(slots));
  const std::size_t filterBits = std::max<std::size_t>(std::bit_ceil(fAdded.size() * 16), 64);
  fFilter.assign(filterBits / 64, 0);
  fFilterShift = 64 - static_cast<unsigned>(std::countr_zero(filterBits));

  for (const Record& record : fAdded) Enter(record);
  fAdded = std::vector<Record>();  // an empty list in braces would keep the memory
  fArena.shrink_to_fit();
}

void AnchoredLiterals::Enter(Record record) {
  constexpr std::uint64_t kHow = kWhole | kAnywhere | kSeparated;
  const std::string_view literal = LiteralOf(record);
  const std::uint64_t hash = HashOf(literal);
  record.tag = static_cast<std::uint32_t>(hash);
  std::uint64_t how = record.place & kHow;
  std::size_t i = hash >> fTableShift;
  // A literal of a smaller id that may stand the same way hides this one.
  for (; how != 0 && fTable[i].place != 0; i = (i + 1) & fTableMask) {
    if (fTable[i].tag == record.tag && LiteralOf(fTable[i]) == literal) how &= ~fTable[i].place;
  }
  if (how == 0) return;
  record.place = (record.place & ~kHow) | how;
  fTable[i] = record;
  ++fCount;
  const std::uint64_t bit = hash >> fFilterShift;
  fFilter[bit >> 6] |= std::uint64_t{1} << (bit & 63);

  fHow |= how;
  fLongest = std::max(fLongest, literal.size());
  const bool isTail = fSide == Side::Tail;
  Mark(isTail ? literal.back() : literal.front(), kBeginsLiteral);
  if (how & kAnywhere) Mark(isTail ? literal.front() : literal.back(), kEndsLiteral);
}

void AnchoredLiterals::Mark(char folded, std::uint8_t what) {
  const auto lower = static_cast<unsigned char>(folded);
  fBytes[lower] |= what;
  if (lower >= 'a' && lower <= 'z') fBytes[lower - 'a' + 'A'] |= what;
}

// Marks the bytes of a word that have kEndsLiteral.
std::uint64_t AnchoredLiterals::EndsIn(std::uint64_t word) const {
  std::uint64_t ends = 0;
  for (std::size_t i = 0; i < kWord; ++i) {
    if ((fBytes[static_cast<unsigned char>(word >> 8 * i)] & kEndsLiteral) != 0) ends |= MarkAt(i);
  }
  return ends;
}

template <AnchoredLiterals::Side kSide>
bool AnchoredLiterals::Next(Pass& pass) const {
  Pass now = pass;  // in registers
  for (;;) {
    while (now.open != 0) {
      const std::uint64_t mark = now.open & (~now.open + 1);
      now.open ^= mark;
      now.hash = Step(now.state, now.word & ((mark >> 7) - 1));
      if (!PassesFilter(now.hash)) continue;
      now.size = now.base + static_cast<std::size_t>(std::countr_zero(mark)) / 8;
      now.how = ((now.anywhere & mark) != 0 ? kAnywhere : 0) |
                ((now.separated & mark) != 0 ? kSeparated : 0) |
                (now.size == now.textSize ? kWhole : 0);
      pass = now;
      return true;
    }
    if (now.behind > now.reach) return false;
    now.state = Step(now.state, now.word);
    now.base = now.behind;
    now.behind += kWord;
    now.word = WordOf<kSide>(now.data, now.textSize, now.base);
    now.separated = MarksOf(kSeparator, now.word);
    if ((fHow & kSeparated) != 0) now.open = now.separated;
    if ((fHow & kAnywhere) != 0) {
      const std::uint64_t ends = EndsIn(now.word);
      now.anywhere = ends << 8 | now.carry;
      now.carry = ends >> 56;
      now.open |= now.anywhere;
    }
    if ((fHow & kWhole) != 0 && now.textSize < now.behind)
      now.open |= MarkAt(now.textSize - now.base);
    if (now.reach + 1 < now.behind) now.open &= MarkAt(now.reach + 1 - now.base) - 1;
    if (now.base == 0) now.open &= ~MarkAt(0);  // no bytes are no literal
  }
}

template bool AnchoredLiterals::Next<AnchoredLiterals::Side::Tail>(Pass&) const;
template bool AnchoredLiterals::Next<AnchoredLiterals::Side::Head>(Pass&) const;

std::size_t AnchoredLiterals::MemorySize() const {
  return sizeof *this + fArena.capacity() + fTable.capacity() * sizeof(Record) +
         fFilter.capacity() * sizeof(std::uint64_t);
}

}  // namespace Matching
