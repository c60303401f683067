#include "Common/Matching/FloatingLiterals.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace Matching {

namespace {

// How common a byte is in names, paths and headers, from 0 for what is rare to 15: orders the runs
// of a literal where the list itself does not tell them apart.
constexpr std::array<std::uint8_t, 256> kCommonness = [] {
  std::array<std::uint8_t, 256> table{};
  constexpr std::string_view byRank =
      "eaotinsrclmdpu./hgbfwvky-1203_45xj=6789&%zq?:+;,";  // most common first
  for (std::size_t i = 0; i < byRank.size(); ++i) {
    table[static_cast<unsigned char>(byRank[i])] = static_cast<std::uint8_t>(15 - i * 15 / 48);
  }
  table[' '] = 12;
  return table;
}();

}  // namespace

bool FloatingLiterals::Add(std::string_view folded, std::uint32_t id) {
  constexpr std::size_t kRoom = std::numeric_limits<std::uint32_t>::max();
  if (folded.empty() || folded.size() > kRoom - fArena.size()) return false;
  fLiterals.push_back({static_cast<std::uint32_t>(fArena.size()),
                       static_cast<std::uint32_t>(folded.size()), 0, id});
  fArena.append(folded);
  return true;
}

// Takes the run that the fewest literals before took, and of those the one with the rarest bytes.
// "load" counts, by hash, how often a run was taken.
void FloatingLiterals::ChooseRun(Literal& literal, std::vector<std::uint32_t>& load) {
  const std::size_t run = RunSize(literal.size);
  const std::size_t mask = load.size() - 1;
  std::uint64_t best = std::numeric_limits<std::uint64_t>::max();
  std::size_t bestHash = 0;
  // A run far inside a very long literal is no better than one near its start.
  const std::size_t last = std::min<std::size_t>(literal.size - run, 255);
  for (std::size_t at = 0; at <= last; ++at) {
    const char* bytes = fArena.data() + literal.offset + at;
    std::uint64_t commonness = 0;
    for (std::size_t i = 0; i < run; ++i) {
      commonness += kCommonness[static_cast<unsigned char>(bytes[i])];
    }
    const std::size_t hash = HashOf(RunAt(bytes, run)) >> 40 & mask;
    const std::uint64_t cost = std::uint64_t{load[hash]} * 16 + commonness;
    if (cost >= best) continue;
    best = cost;
    bestHash = hash;
    literal.runAt = static_cast<std::uint32_t>(at);
  }
  ++load[bestHash];
}

void FloatingLiterals::Freeze() {
  if (fLiterals.empty()) return;
  std::vector<std::uint32_t> load(
      std::clamp<std::size_t>(std::bit_ceil(fLiterals.size() * 4), 1024, std::size_t{1} << 22));
  for (Literal& literal : fLiterals) ChooseRun(literal, load);

  const auto key = [this](const Literal& literal) {
    const std::size_t run = RunSize(literal.size);
    return std::pair(run, RunAt(fArena.data() + literal.offset + literal.runAt, run));
  };
  std::stable_sort(fLiterals.begin(), fLiterals.end(),
                   [&](const Literal& a, const Literal& b) { return key(a) < key(b); });
  for (std::size_t run = 1; run <= kRun; ++run) Fill(run);
  fLiterals.shrink_to_fit();
  fArena.shrink_to_fit();
}

// Builds the table of the runs of one length from the sorted literals.
void FloatingLiterals::Fill(std::size_t run) {
  std::vector<Slot> runs;
  for (std::uint32_t i = 0; i < fLiterals.size(); ++i) {
    const Literal& literal = fLiterals[i];
    if (RunSize(literal.size) != run) continue;
    const std::uint64_t bytes = RunAt(fArena.data() + literal.offset + literal.runAt, run);
    if (runs.empty() || runs.back().run != bytes) runs.push_back({bytes, i, 0});
    ++runs.back().count;
  }
  if (runs.empty()) return;

  Table& table = fTables[run - 1];
  const std::size_t slots = std::bit_ceil(runs.size() * 2);
  const std::size_t filterBits = std::clamp<std::size_t>(slots * 32, 64, std::size_t{1} << 31);
  table.slots.assign(slots, Slot{0, 0, 0});
  table.filter.assign(filterBits / 64, 0);
  table.slotShift = 64 - static_cast<unsigned>(std::countr_zero(slots));
  table.filterShift = 64 - static_cast<unsigned>(std::countr_zero(filterBits));
  for (const Slot& slot : runs) {
    const std::uint64_t hash = HashOf(slot.run);
    const std::uint64_t bit = hash >> table.filterShift;
    table.filter[bit >> 6] |= std::uint64_t{1} << (bit & 63);
    std::size_t s = hash >> table.slotShift;
    while (table.slots[s].count != 0) s = (s + 1) & (slots - 1);
    table.slots[s] = slot;
  }
}

std::size_t FloatingLiterals::MemorySize() const {
  std::size_t size = sizeof *this + fArena.capacity() + fLiterals.capacity() * sizeof(Literal);
  for (const Table& table : fTables) {
    size += table.filter.capacity() * sizeof(std::uint64_t) + table.slots.capacity() * sizeof(Slot);
  }
  return size;
}

}  // namespace Matching
