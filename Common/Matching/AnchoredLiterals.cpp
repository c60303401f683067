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
  if (!fRecords.empty() && fRecords.back().id == id && LiteralOf(fRecords.back()) == folded) {
    fRecords.back().place |= how;
    return true;
  }
  if (fArena.size() >> 39 != 0) return false;
  fRecords.push_back({fArena.size() << 25 | folded.size() << 3 | how, id});
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
  if (fRecords.empty()) return;
  std::stable_sort(fRecords.begin(), fRecords.end(),
                   [](const Record& a, const Record& b) { return a.id < b.id; });

  const std::size_t slots = std::bit_ceil(fRecords.size() * 2);
  fSlots.assign(slots, Slot{0, 0});
  fSlotMask = slots - 1;
  fSlotShift = 64 - static_cast<unsigned>(std::countr_zero(slots));
  const std::size_t filterBits = std::max<std::size_t>(slots * 8, 64);
  fFilter.assign(filterBits / 64, 0);
  fFilterShift = 64 - static_cast<unsigned>(std::countr_zero(filterBits));

  std::size_t kept = 0;
  for (const Record record : fRecords) {
    const std::string_view literal = LiteralOf(record);
    const std::uint64_t hash = HashOf(literal);
    const auto tag = static_cast<std::uint32_t>(hash);
    std::uint64_t how = record.place & (kWhole | kAnywhere | kSeparated);
    std::size_t i = hash >> fSlotShift;
    // A literal of a smaller id that may stand the same way hides this one.
    for (; how != 0 && fSlots[i].record != 0; i = (i + 1) & fSlotMask) {
      const Record& other = fRecords[fSlots[i].record - 1];
      if (fSlots[i].tag == tag && LiteralOf(other) == literal) how &= ~other.place;
    }
    if (how == 0) continue;
    fRecords[kept] = {(record.place & ~(kWhole | kAnywhere | kSeparated)) | how, record.id};
    fSlots[i] = {tag, static_cast<std::uint32_t>(++kept)};
    const std::uint64_t bit = hash >> fFilterShift;
    fFilter[bit >> 6] |= std::uint64_t{1} << (bit & 63);

    fLongest = std::max(fLongest, literal.size());
    if (how & kAnywhere) {
      const char far = fSide == Side::Tail ? literal.front() : literal.back();
      for (std::size_t c = 0; c < fBytes.size(); ++c) {
        if (kFoldedByte[c] == static_cast<unsigned char>(far)) fBytes[c] |= kEndsLiteral;
      }
    }
    if (how & kSeparated) fBytes[static_cast<unsigned char>(kSeparator)] |= kSeparates;
  }
  fRecords.resize(kept);
  fRecords.shrink_to_fit();
  fArena.shrink_to_fit();
}

std::size_t AnchoredLiterals::MemorySize() const {
  return sizeof *this + fArena.capacity() + fRecords.capacity() * sizeof(Record) +
         fSlots.capacity() * sizeof(Slot) + fFilter.capacity() * sizeof(std::uint64_t);
}

}  // namespace Matching
