#include "Common/Matching/FloatingLiterals.h"

#include <limits>
#include <numeric>
#include <utility>

#include "Common/Matching/LiteralChance.h"

namespace Matching {

namespace {

// How often a run was taken before, by its hash.
std::uint32_t& LoadOf(std::vector<std::uint32_t>& load, std::uint64_t hash) {
  return load[hash >> 40 & (load.size() - 1)];
}

}  // namespace

bool FloatingLiterals::Add(std::string_view folded, std::uint32_t id) {
  constexpr std::size_t kRoom = std::numeric_limits<std::uint32_t>::max();
  if (folded.empty() || folded.size() > kRoom - fArena.size()) return false;
  fLiterals.push_back(
      {static_cast<std::uint32_t>(fArena.size()), static_cast<std::uint32_t>(folded.size()), id});
  fArena.append(folded);
  return true;
}

std::uint64_t FloatingLiterals::WindowOf(const Literal& literal, std::size_t at,
                                         std::size_t size) const {
  std::uint64_t window = 0;
  std::memcpy(&window, fArena.data() + literal.offset + at, size);
  return window | kLoose;
}

std::uint64_t FloatingLiterals::RunOf(const Literal& literal, std::size_t at,
                                      std::size_t size) const {
  const std::uint64_t window = WindowOf(literal, at, size);
  switch (size) {
    case 1:
      return Part<1>(window);
    case 2:
      return Part<2>(window);
    case 3:
      return Part<3>(window);
    case 4:
      return Part<4>(window);
    default:
      return Part<Long::kRun>(window);
  }
}

// Takes the runs that cost least: a comparison for each literal that has one, wherever it turns up.
template <class Kind>
void FloatingLiterals::AddRuns(std::uint32_t literal, std::vector<std::uint32_t>& load,
                               std::vector<Run>& runs) const {
  const Literal& whole = fLiterals[literal];
  const std::string_view bytes = std::string_view(fArena).substr(whole.offset, whole.size);
  // Runs far inside a very long literal are no better than some near its start.
  const std::size_t choices = std::min<std::size_t>(whole.size - kShortest<Kind> + 1, 256);
  std::array<double, Kind::kStride> costs{};  // of one choice's runs, by place
  double best = std::numeric_limits<double>::max();
  std::size_t chosen = 0;
  for (std::size_t at = 0; at < choices + Kind::kStride - 1; ++at) {
    costs[at % Kind::kStride] = ChanceOf(bytes.substr(at, Kind::kRun)) *
                                (1.0 + LoadOf(load, HashOf(RunOf(whole, at, Kind::kRun))));
    const double sum = std::accumulate(costs.begin(), costs.end(), 0.0);
    if (at + 1 < Kind::kStride || sum >= best) continue;
    best = sum;
    chosen = at + 1 - Kind::kStride;
  }
  for (std::size_t at = chosen; at < chosen + Kind::kStride; ++at) {
    const std::uint64_t hash = HashOf(RunOf(whole, at, Kind::kRun));
    ++LoadOf(load, hash);
    runs.push_back({hash, {literal, static_cast<std::uint32_t>(at) & 0x7FFFFFFFU, 0}});
  }
}

void FloatingLiterals::AddShort(std::uint32_t literal, std::vector<Run>& runs) {
  const Literal& whole = fLiterals[literal];
  runs.push_back({HashOf(RunOf(whole, 0, whole.size)), {literal, 0, 0}});
  if (whole.size == 1) {
    fIsSingle[static_cast<unsigned char>(fArena[whole.offset])] = true;
    return;
  }
  fPairs.resize(kPairCount);
  fPairs[PairIndex(WindowOf(whole, 0, 2), 0)] |= static_cast<std::uint8_t>(1U << whole.size);
}

// Each by its rarest bytes; those that begin alike share a bucket.
void FloatingLiterals::AddFew(const std::vector<std::uint32_t>& few) {
  const auto bytesOf = [this](const Few& one) {
    const Literal& literal = fLiterals[one.literal];
    return std::string_view(fArena).substr(
        literal.offset + one.at, std::min<std::size_t>(literal.size, NibbleScan::kMostBytes));
  };
  for (const std::uint32_t literal : few) {
    Few best{literal, 0};
    for (Few other = best; other.at + NibbleScan::kMostBytes <= fLiterals[literal].size;
         ++other.at) {
      if (ChanceOf(bytesOf(other)) < ChanceOf(bytesOf(best))) best = other;
    }
    fFew.push_back(best);
  }
  std::ranges::sort(fFew, {}, bytesOf);
  for (std::size_t bucket = 0; bucket < NibbleScan::kBucketCount; ++bucket) {
    const std::size_t end = (bucket + 1) * fFew.size() / NibbleScan::kBucketCount;
    for (std::size_t i = fBucketBegins[bucket]; i < end; ++i) {
      fNibbles.Add(bytesOf(fFew[i]), bucket);
    }
    fBucketBegins[bucket + 1] = end;
  }
}

// Up to which size literals are few enough: all that a pass would be made for, or none.
std::size_t FloatingLiterals::LongestOfFew() const {
  if (!fUseNibbles) return 0;
  for (const std::size_t size : {kShortest<Long> - 1, kShortRun}) {
    const auto count = std::ranges::count_if(
        fLiterals, [size](const Literal& literal) { return literal.size <= size; });
    if (static_cast<std::size_t>(count) <= kMostFew) return size;
  }
  return 0;
}

void FloatingLiterals::Freeze() {
  if (fLiterals.empty()) return;
  std::vector<std::uint32_t> load(std::clamp<std::size_t>(
      std::bit_ceil(fLiterals.size() * 4 * Long::kStride), 1024, std::size_t{1} << 22));
  std::vector<Run> longRuns;
  std::vector<Run> mediumRuns;
  std::array<std::vector<Run>, kShortRun + 1> shortRuns;  // by length
  const std::size_t fewSize = LongestOfFew();
  // A pass for medium literals finds the long ones, too.
  const bool hasMedium = std::ranges::any_of(fLiterals, [fewSize](const Literal& literal) {
    return literal.size > fewSize && IsMedium(literal);
  });
  std::vector<std::uint32_t> few;
  for (std::uint32_t i = 0; i < fLiterals.size(); ++i) {
    const Literal& literal = fLiterals[i];
    if (literal.size <= fewSize) {
      few.push_back(i);
      continue;
    }
    fHasMany = true;
    if (literal.size >= kShortest<Long> && !hasMedium) {
      AddRuns<Long>(i, load, longRuns);
    } else if (literal.size >= kShortest<Medium>) {
      AddRuns<Medium>(i, load, mediumRuns);
    } else {
      AddShort(i, shortRuns[literal.size]);
    }
  }
  if (!few.empty()) AddFew(few);
  Fill(fLong, longRuns);
  Fill(fMedium, mediumRuns);
  Fill(fSingles, shortRuns[1]);
  for (std::size_t run = 2; run <= kShortRun; ++run) Fill(fShort[run - 2], shortRuns[run]);
  fLiterals.shrink_to_fit();
  fArena.shrink_to_fit();
}

// Perf: windows in place first, and those at the end of the text apart: the loops are as short as
// they get. See list_bench, user_agents.
template <class Kind>
std::size_t FloatingLiterals::NextRun(const Table& table, const Windows& windows,
                                      std::size_t from) {
  const std::uint64_t* const filter = table.filter.data();
  const unsigned shift = table.filterShift;
  const auto passes = [=](std::uint64_t window) {
    const std::uint64_t hash = HashOf(Part<Kind::kRun>(window));
    return Holds(filter[hash >> shift], hash);
  };
  const char* const text = windows.text.data();
  const std::size_t direct = windows.tailBegin;
  for (; from < direct; from += Kind::kStride) {
    if (passes(WindowAt(text + from))) return from;
  }
  const std::size_t size = windows.text.size();
  for (; from + Kind::kRun <= size; from += Kind::kStride) {
    if (passes(windows.At(from))) return from;
  }
  return kNone;
}
template std::size_t FloatingLiterals::NextRun<FloatingLiterals::Long>(const Table&, const Windows&,
                                                                       std::size_t);
template std::size_t FloatingLiterals::NextRun<FloatingLiterals::Medium>(const Table&,
                                                                         const Windows&,
                                                                         std::size_t);

std::size_t FloatingLiterals::NextPairs(const Windows& windows, std::size_t from) const {
  static_assert(kStep == 4);
  const std::uint8_t* const pairs = fPairs.data();
  const auto hasAny = [=](std::uint64_t window) {
    return (pairs[PairIndex(window, 0)] | pairs[PairIndex(window, 1)] |
            pairs[PairIndex(window, 2)] | pairs[PairIndex(window, 3)]) != 0;
  };
  const char* const text = windows.text.data();
  const std::size_t direct = windows.tailBegin;
  for (; from < direct; from += kStep) {
    if (hasAny(WindowAt(text + from))) return from;
  }
  const std::size_t size = windows.text.size();
  for (; from + 1 < size; from += kStep) {
    if (hasAny(windows.At(from))) return from;
  }
  return kNone;
}

void FloatingLiterals::Fill(Table& table, std::vector<Run>& runs) {
  if (runs.empty()) return;
  std::stable_sort(runs.begin(), runs.end(),
                   [](const Run& a, const Run& b) { return a.hash < b.hash; });
  const std::size_t slots = std::bit_ceil(runs.size() * 4 / 3 + 1);
  const std::size_t words = std::clamp<std::size_t>(slots / 4, 256, std::size_t{1} << 25);
  table.slots.assign(slots, Slot{0, 0});
  table.filter.assign(words, 0);
  table.slotShift = 64 - static_cast<unsigned>(std::countr_zero(slots));
  table.filterShift = 64 - static_cast<unsigned>(std::countr_zero(words));
  table.entries.reserve(runs.size());
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const std::uint64_t hash = runs[i].hash;
    table.entries.push_back(runs[i].entry);
    table.entries.back().isLast = i + 1 == runs.size() || runs[i + 1].hash != hash;
    if (i > 0 && runs[i - 1].hash == hash) continue;
    table.filter[hash >> table.filterShift] |= BitsOf(hash);
    std::size_t s = hash >> table.slotShift;
    while (table.slots[s].first != 0) s = (s + 1) & (slots - 1);
    table.slots[s] = {TagOf(hash), static_cast<std::uint32_t>(table.entries.size())};
  }
}

std::size_t FloatingLiterals::MemorySize() const {
  std::size_t size =
      sizeof *this + fArena.capacity() + fLiterals.capacity() * sizeof(Literal) + fPairs.capacity();
  const auto add = [&size](const Table& table) {
    size += table.filter.capacity() * sizeof(std::uint64_t) +
            table.slots.capacity() * sizeof(Slot) + table.entries.capacity() * sizeof(Entry);
  };
  size += fFew.capacity() * sizeof(Few);
  add(fLong);
  add(fMedium);
  add(fSingles);
  for (const Table& table : fShort) add(table);
  return size;
}

}  // namespace Matching
