#include "Common/Matching/FloatingLiterals.h"

#include <limits>
#include <numeric>

#include "Common/Matching/Avx2.h"
#include "Common/Matching/LiteralChance.h"

namespace Matching {

namespace {

// How often a run was taken before, by its hash.
std::uint32_t& LoadOf(std::vector<std::uint32_t>& load, std::uint32_t hash) {
  return load[hash >> 4 & (load.size() - 1)];
}

}  // namespace

FloatingLiterals::FloatingLiterals(const FloatingOptions& options) : fOptions(options) {
  fOptions.useFew = options.useFew && NibbleScan::IsSupported();
  fOptions.useVectors = options.useVectors && HasAvx2();
}

bool FloatingLiterals::Add(std::string_view folded, std::uint32_t id) {
  if (folded.empty()) return false;
  const std::uint32_t literal = fLiterals.Add(folded);
  if (literal == LiteralPool::kNone) return false;
  fAdded.push_back({literal, id});
  return true;
}

// Takes the runs that cost least: a comparison for each literal that has one, wherever it turns up.
template <class Kind>
void FloatingLiterals::AddRuns(std::uint32_t literal, std::vector<std::uint32_t>& load,
                               std::vector<Run>& runs) const {
  const std::string_view bytes = fLiterals[literal];
  const auto hashAt = [bytes](std::size_t at) {
    return RunFilter::HashOfRun<Kind::kRun>(bytes.data() + at);
  };
  const std::size_t choices = std::min(bytes.size() - kShortest<Kind> + 1, kMostRunAt);
  std::array<double, Kind::kStride> costs{};  // of one choice's runs, by place
  double best = std::numeric_limits<double>::max();
  std::size_t chosen = 0;
  for (std::size_t at = 0; at < choices + Kind::kStride - 1; ++at) {
    costs[at % Kind::kStride] =
        ChanceOf(bytes.substr(at, Kind::kRun)) * (1.0 + LoadOf(load, hashAt(at)));
    const double sum = std::accumulate(costs.begin(), costs.end(), 0.0);
    if (at + 1 < Kind::kStride || sum >= best) continue;
    best = sum;
    chosen = at + 1 - Kind::kStride;
  }
  for (std::size_t at = chosen; at < chosen + Kind::kStride; ++at) {
    const std::uint32_t hash = hashAt(at);
    ++LoadOf(load, hash);
    runs.push_back({hash, EntryOf(literal, at, Kind::kRun)});
  }
}

// Checks the bytes that say most beyond the run.
FloatingLiterals::Entry FloatingLiterals::EntryOf(std::uint32_t literal, std::size_t at,
                                                  std::size_t runSize) const {
  const std::string_view bytes = fLiterals[literal].substr(0, kMostRunAt);
  const auto bitsOf = [&](std::size_t i) {
    return i >= at && i < at + runSize ? 0.0F : BitsOf(bytes[i]);
  };
  float bits = 0;  // of the last kCheck bytes
  float best = -1;
  std::size_t chosen = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bits += bitsOf(i);
    if (i + 1 < kCheck) continue;
    const std::size_t begin = i + 1 - kCheck;
    if (bits > best) {
      best = bits;
      chosen = begin;
    }
    bits -= bitsOf(begin);
  }
  std::uint32_t check = 0;
  std::memcpy(&check, bytes.data() + chosen, sizeof check);
  Entry entry{literal, check | RunFilter::kLoose};
  entry.checkAt = static_cast<std::int16_t>(static_cast<int>(chosen) - static_cast<int>(at));
  entry.at = at & 0x7FFF;
  return entry;
}

void FloatingLiterals::AddShort(std::uint32_t literal, std::vector<Run>& runs) {
  const std::string_view bytes = fLiterals[literal];
  char padded[kWindow] = {};
  bytes.copy(padded, kShortRun);
  const std::uint64_t window = WindowAt(padded);
  runs.push_back({RunFilter::HashOf(Part(window, 0, bytes.size())), Entry{literal}});
  if (bytes.size() == 1) {
    fIsSingle[static_cast<unsigned char>(bytes.front())] = true;
    return;
  }
  fPairs.resize(kPairCount);
  fPairs[PairIndex(window, 0)] |= static_cast<std::uint8_t>(1U << bytes.size());
}

// Up to which size literals are looked for many places at a time: all of them, or all that one or
// more of the slower passes would be made for, or none.
std::size_t FloatingLiterals::ChooseFew() {
  if (!fOptions.useFew) return 0;
  std::size_t refused = kNone;  // so many were too many
  for (const std::size_t size : {kNone, kShortest<Long> - 1, kShortRun, std::size_t{1}}) {
    std::vector<FewLiterals::Literal> few;
    for (std::uint32_t i = 0; i < fLiterals.Count() && few.size() < refused; ++i) {
      if (fLiterals[i].size() <= size) few.push_back({i, fLiterals[i]});
    }
    if (few.size() == refused) continue;
    if (fFew.Choose(few)) return size;
    refused = few.size();
  }
  return 0;
}

void FloatingLiterals::Freeze() {
  fLiterals.Freeze();
  FreezeIds();
  const auto count = static_cast<std::uint32_t>(fLiterals.Count());
  std::vector<std::uint32_t> load(std::clamp<std::size_t>(
      std::bit_ceil(count * std::size_t{4} * Long::kStride), 1024, std::size_t{1} << 22));
  std::vector<Run> longRuns;
  std::vector<Run> mediumRuns;
  std::array<std::vector<Run>, kShortRun + 1> shortRuns;  // by length
  const std::size_t fewSize = ChooseFew();
  bool hasMedium = false;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t size = fLiterals[i].size();
    hasMedium =
        hasMedium || (size > fewSize && size >= kShortest<Medium> && size < kShortest<Long>);
  }
  const bool hasLong = !hasMedium || !fOptions.mergePasses;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t size = fLiterals[i].size();
    if (size <= fewSize) continue;
    if (size >= kShortest<Long> && hasLong) {
      AddRuns<Long>(i, load, longRuns);
    } else if (size >= kShortest<Medium>) {
      AddRuns<Medium>(i, load, mediumRuns);
    } else {
      AddShort(i, shortRuns[size]);
    }
  }
  Fill(fLong, longRuns);
  Fill(fMedium, mediumRuns);
  Fill(fSingles, shortRuns[1]);
  for (std::size_t run = 2; run <= kShortRun; ++run) Fill(fShort[run - 2], shortRuns[run]);
}

// Those of one literal in the order of their coming.
void FloatingLiterals::FreezeIds() {
  fIdEnds.assign(fLiterals.Count(), 0);
  for (const Added& added : fAdded) ++fIdEnds[added.literal];
  std::exclusive_scan(fIdEnds.begin(), fIdEnds.end(), fIdEnds.begin(), std::uint32_t{0});
  fIds.resize(fAdded.size());
  for (const Added& added : fAdded) fIds[fIdEnds[added.literal]++] = added.id;
  fAdded = std::vector<Added>();  // an empty list in braces would keep the memory
}

std::size_t FloatingLiterals::NextPairs(const PaddedText& text, std::size_t from) const {
  static_assert(kStep == 4);
  const std::uint8_t* const pairs = fPairs.data();
  const auto hasAny = [=](std::uint64_t window) {
    return (pairs[PairIndex(window, 0)] | pairs[PairIndex(window, 1)] |
            pairs[PairIndex(window, 2)] | pairs[PairIndex(window, 3)]) != 0;
  };
  const char* const bytes = text.Text().data();
  const std::size_t size = text.Text().size();
  for (; from + kWindow <= size; from += kStep) {
    if (hasAny(WindowAt(bytes + from))) return from;
  }
  for (; from + 1 < size; from += kStep) {
    if (hasAny(WindowAt(text.From(from, kWindow)))) return from;
  }
  return kNone;
}

void FloatingLiterals::Fill(Table& table, std::vector<Run>& runs) {
  if (runs.empty()) return;
  std::ranges::stable_sort(runs, {}, &Run::hash);
  const std::size_t slots = std::bit_ceil(runs.size() * 4 / 3 + 1);
  table.filter = RunFilter(runs.size());
  table.slots.assign(slots, Slot{0, 0});
  table.slotShift = 32 - static_cast<unsigned>(std::countr_zero(slots));
  table.entries.reserve(runs.size());
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const std::uint32_t hash = runs[i].hash;
    table.entries.push_back(runs[i].entry);
    table.entries.back().isLast = i + 1 == runs.size() || runs[i + 1].hash != hash;
    if (i > 0 && runs[i - 1].hash == hash) continue;
    table.filter.Add(hash);
    std::size_t s = hash >> table.slotShift;
    while (table.slots[s].first != 0) s = (s + 1) & (slots - 1);
    table.slots[s] = {hash, static_cast<std::uint32_t>(table.entries.size())};
  }
}

std::size_t FloatingLiterals::MemorySize() const {
  std::size_t size = sizeof *this + fLiterals.MemorySize() + fFew.MemorySize() + fPairs.capacity() +
                     (fIds.capacity() + fIdEnds.capacity()) * sizeof(std::uint32_t) +
                     fAdded.capacity() * sizeof(Added);
  const auto add = [&size](const Table& table) {
    size += table.filter.MemorySize() + table.slots.capacity() * sizeof(Slot) +
            table.entries.capacity() * sizeof(Entry);
  };
  add(fLong);
  add(fMedium);
  add(fSingles);
  for (const Table& table : fShort) add(table);
  return size;
}

}  // namespace Matching
