#include "Common/Matching/AnchoredLiterals.h"

#include <algorithm>
#include <bit>

namespace Matching {

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

std::uint64_t AnchoredLiterals::HashOf(std::string_view folded) const {
  std::uint64_t hash = kSeed;
  if (fSide == Side::Head) {
    for (const char c : folded) hash = Step(hash, static_cast<unsigned char>(c));
  } else {
    for (auto c = folded.rbegin(); c != folded.rend(); ++c) {
      hash = Step(hash, static_cast<unsigned char>(*c));
    }
  }
  return hash;
}

void AnchoredLiterals::Freeze() {
  if (fAdded.empty()) return;
  std::stable_sort(fAdded.begin(), fAdded.end(),
                   [](const Record& a, const Record& b) { return a.id < b.id; });
  const std::size_t slots = std::bit_ceil(fAdded.size() * 4 / 3 + 1);
  fTable.assign(slots, Record());
  fTableMask = slots - 1;
  fTableShift = 64 - static_cast<unsigned>(std::countr_zero(slots));
  const std::size_t filterBits = std::max<std::size_t>(std::bit_ceil(fAdded.size() * 16), 64);
  fFilter.assign(filterBits / 64, 0);
  fFilterShift = 64 - static_cast<unsigned>(std::countr_zero(filterBits));

  for (const Record& record : fAdded) Enter(record);
  fAdded = {};
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

  fLongest = std::max(fLongest, literal.size());
  const bool isTail = fSide == Side::Tail;
  Mark(isTail ? literal.back() : literal.front(), kBeginsLiteral);
  if (how & kAnywhere) Mark(isTail ? literal.front() : literal.back(), kEndsLiteral);
  if (how & kSeparated) Mark(kSeparator, kSeparates);
}

void AnchoredLiterals::Mark(char folded, std::uint16_t what) {
  const auto lower = static_cast<unsigned char>(folded);
  fBytes[lower] |= what;
  if (lower >= 'a' && lower <= 'z') fBytes[lower - 'a' + 'A'] |= what;
}

std::size_t AnchoredLiterals::MemorySize() const {
  return sizeof *this + fArena.capacity() + fTable.capacity() * sizeof(Record) +
         fFilter.capacity() * sizeof(std::uint64_t);
}

}  // namespace Matching
