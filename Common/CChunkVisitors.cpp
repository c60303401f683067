#include "Common/CChunkVisitors.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <utility>

#include "Common/CVariantTypeTable.h"
#include "Common/DebugLog.h"
#include "Common/EncodingRegistry.h"
#include "Common/ErrorCatalogue.h"

qxSource("Common\\CChunkVisitors");

namespace {

constexpr std::size_t kGroupSize = 64;

bool IsBytesAsTheyStand(std::uint32_t encoding) {
  return encoding < Charset::Latin1 || encoding == Charset::Raw;
}

void ReportNoList(const char* complaint, Selvane::IVariant* value) {
  const char* type = value ? PrintedTypeName(value->GetType()) : "NULL";
  qxReportError(ErrorId::InternalError, "CSearchVisitor::CSearchVisitor",
                {{"msg", complaint + std::string(type)}});
}

std::string InUtf8(Selvane::IUnicodeString& text) {
  const char* utf8 = text.GetUtf8();
  return utf8 ? utf8 : "";
}

}  // namespace

void CSearchVisitor::Searcher::BuildPrefix() {
  prefix.assign(length, 0);
  std::uint64_t matched = 0;
  for (std::uint64_t i = 1; i < length; ++i) {
    while (matched > 0 && pattern[i] != pattern[matched]) matched = prefix[matched - 1];
    if (pattern[i] == pattern[matched]) ++matched;
    prefix[i] = matched;
  }
}

bool CSearchVisitor::Searcher::Step(unsigned char byte) {
  while (state != 0 && pattern[state] != byte) state = prefix[state - 1];
  if (pattern[state] == byte) ++state;
  return state == length;
}

std::size_t CSearchVisitor::Searcher::Run(const unsigned char* data, std::size_t from,
                                          std::size_t size) {
  while (from < size) {
    if (Step(data[from++]) || state == 0) break;
  }
  return from;
}

CSearchVisitor::CSearchVisitor(const void* const* patterns, Selvane::IVariant* lengths) {
  const std::uint64_t count = lengths && lengths->IsListType() ? lengths->GetListSize() : 0;
  bool isList = lengths && lengths->IsListType();
  for (std::uint64_t i = 0; isList && i < count; ++i) {
    const std::int64_t length = lengths->GetLongListElem(static_cast<std::int64_t>(i), isList);
    if (!isList || length < 0) break;
    Searcher searcher;
    searcher.pattern = static_cast<const unsigned char*>(patterns[i]);
    searcher.length = searcher.pattern ? static_cast<std::uint64_t>(length) : 0;
    AddSearcher(std::move(searcher));
  }
  if (!isList) {
    ReportNoList("Cannot create searcher. patternLengths is not a long list but a ", lengths);
    return;
  }
  Prepare();
}

CSearchVisitor::CSearchVisitor(Selvane::IVariant* patterns) {
  bool isList = patterns && patterns->IsListType();
  const std::uint64_t count = isList ? patterns->GetListSize() : 0;
  for (std::uint64_t i = 0; isList && i < count; ++i) {
    CUsePtr<Selvane::IUnicodeString> text(
        patterns->GetStringListElem(static_cast<std::int64_t>(i), isList));
    if (!isList) break;
    Searcher searcher;
    if (text && !text->IsEmpty()) {
      const bool isTaken = IsBytesAsTheyStand(EncodingId(text->GetEncodingName()));
      if (!isTaken) searcher.owned = InUtf8(*text);
      searcher.length = isTaken ? text->GetByteSize() : searcher.owned.size();
      if (isTaken) searcher.pattern = reinterpret_cast<const unsigned char*>(text->GetBytes());
      searcher.holder = std::move(text);
    }
    AddSearcher(std::move(searcher));
  }
  if (!isList) {
    ReportNoList("Cannot create searcher. patterns is not a string list but a ", patterns);
    return;
  }
  Prepare();
}

void CSearchVisitor::AddSearcher(Searcher searcher) {
  fSearchers.push_back(std::move(searcher));
}

// Once the list is complete, for the bytes of a short converted string move with its searcher.
void CSearchVisitor::Prepare() {
  fGroups.resize((fSearchers.size() + kGroupSize - 1) / kGroupSize);
  fEmptyPattern = fSearchers.size();
  for (std::size_t i = fSearchers.size(); i-- > 0;) {
    Searcher& searcher = fSearchers[i];
    if (!searcher.owned.empty()) {
      searcher.pattern = reinterpret_cast<const unsigned char*>(searcher.owned.data());
    }
    searcher.BuildPrefix();
    if (searcher.length == 0) {
      fEmptyPattern = i;
      continue;
    }
    AddBeginning(searcher, i);
    fGroups[i / kGroupSize].starts[searcher.pattern[0]] |= std::uint64_t{1} << (i % kGroupSize);
  }
  const auto& starts = fBeginnings[0];
  const auto isStart = [](std::uint64_t patterns) { return patterns != 0; };
  if (std::ranges::count_if(starts, isStart) == 1) {
    fOnlyStart = static_cast<int>(std::ranges::find_if(starts, isStart) - starts.begin());
  }
  fValid = true;
}

// Behind its end a pattern takes any byte.
void CSearchVisitor::AddBeginning(const Searcher& searcher, std::size_t position) {
  const std::uint64_t bit = std::uint64_t{1} << (position % kGroupSize);
  for (std::size_t i = 0; i < kLookAhead; ++i) {
    if (i < searcher.length) {
      fBeginnings[i][searcher.pattern[i]] |= bit;
    } else {
      for (std::uint64_t& patterns : fBeginnings[i]) patterns |= bit;
    }
  }
}

void CSearchVisitor::Reset() {
  fFoundOffset = ~std::uint64_t{0};
  fFoundIndex = -1;
  fChunkIndex = 0;
}

void CSearchVisitor::GetResult(bool& found, int& index, std::size_t& offset) const {
  found = fFoundIndex >= 0;
  if (!found) return;
  index = fFoundIndex;
  offset = fFoundOffset;
}

std::uint64_t CSearchVisitor::GetPatternLength(int index) const {
  return fSearchers[static_cast<std::size_t>(index)].length;
}

// Steps every pattern that the byte starts or that is under way: for all others it changes nothing.
bool CSearchVisitor::StepAll(unsigned char byte, std::size_t& winner) {
  fActiveGroups = 0;
  for (std::size_t g = 0; g < fGroups.size(); ++g) {
    Group& group = fGroups[g];
    std::uint64_t rest = group.active | group.starts[byte];
    while (rest != 0) {
      const int bit = std::countr_zero(rest);
      rest &= rest - 1;
      Searcher& searcher = fSearchers[g * kGroupSize + static_cast<std::size_t>(bit)];
      if (searcher.Step(byte)) {
        winner = g * kGroupSize + static_cast<std::size_t>(bit);
        return true;
      }
      const std::uint64_t mask = std::uint64_t{1} << bit;
      group.active = searcher.state != 0 ? group.active | mask : group.active & ~mask;
    }
    fActiveGroups += group.active != 0 ? 1 : 0;
  }
  return false;
}

// Perf: while no pattern is under way, a place where none of them begins changes nothing: whatever
// a byte there starts, the bytes behind it lead where they lead from nothing (cbuffer_bench,
// Find*). At the end of a piece, where those bytes are still to come, each place counts.
std::size_t CSearchVisitor::SkipIdle(const unsigned char* data, std::size_t from,
                                     std::size_t length) const {
  const std::size_t end = length - std::min(length, kLookAhead - 1);
  const auto& [first, second, third] = fBeginnings;
  while (from < end && (first[data[from]] & second[data[from + 1]] & third[data[from + 2]]) == 0) {
    ++from;
    if (fOnlyStart < 0 || data[from] == fOnlyStart) continue;
    const void* found = std::memchr(data + from, fOnlyStart, length - from);
    if (!found) return length;
    from = static_cast<std::size_t>(static_cast<const unsigned char*>(found) - data);
  }
  return from;
}

CSearchVisitor::Hit CSearchVisitor::MakeHit(std::size_t winner, std::size_t consumed) {
  for (Searcher& searcher : fSearchers) searcher.state = 0;
  for (Group& group : fGroups) group.active = 0;
  fActiveGroups = 0;
  const std::uint64_t length = fSearchers[winner].length;
  const bool isBefore = consumed < length;
  return {static_cast<int>(winner), isBefore ? length - consumed : consumed - length, isBefore};
}

// Perf: the only pattern there is needs no groups (cbuffer_bench, FindInZeros).
bool CSearchVisitor::SearchOnly(const unsigned char* data, std::size_t length, Hit& hit) {
  Searcher& only = fSearchers.front();
  for (std::size_t i = 0; i < length;) {
    if (only.state == 0) i = SkipIdle(data, i, length);
    i = only.Run(data, i, length);
    if (only.state < only.length) continue;
    hit = MakeHit(0, i);
    return true;
  }
  return false;
}

bool CSearchVisitor::Search(const unsigned char* data, std::size_t length, Hit& hit) {
  if (length == 0 || fSearchers.empty()) return false;
  std::size_t winner = 0;
  if (fEmptyPattern < fSearchers.size()) {  // decides at the first byte, behind those before it
    for (; winner < fEmptyPattern; ++winner) {
      if (!fSearchers[winner].Step(data[0])) continue;
      hit = MakeHit(winner, 1);
      return true;
    }
    hit = {0, 0, false};
    return true;
  }
  if (fSearchers.size() == 1) return SearchOnly(data, length, hit);
  for (std::size_t i = 0; i < length; ++i) {
    if (fActiveGroups == 0) {
      i = SkipIdle(data, i, length);
      if (i == length) return false;
    }
    if (StepAll(data[i], winner)) {
      hit = MakeHit(winner, i + 1);
      return true;
    }
  }
  return false;
}

void CSearchVisitor::Visit(const void* data, std::size_t length, std::size_t chunkSize,
                           bool& more) {
  Hit hit;
  more = !Search(static_cast<const unsigned char*>(data), length, hit);
  if (more) {
    ++fChunkIndex;
    return;
  }
  const std::uint64_t base = std::uint64_t{fChunkIndex} * chunkSize;
  fFoundOffset = hit.isBefore ? base - hit.distance : base + hit.distance;
  fFoundIndex = hit.index;
}

void AHitVisitor::ExtendRange(std::uint64_t length) {
  constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
  fRemaining = fRemaining > kMost - length ? kMost : fRemaining + length;
}

void AHitVisitor::Visit(const void* data, std::size_t length, std::size_t, bool& more) {
  const auto* bytes = static_cast<const char*>(data);
  while (length > 0 && fRemaining > 0) {
    const std::size_t count = SearchOne(bytes, std::min<std::uint64_t>(length, fRemaining));
    bytes += count;
    length -= count;
    fPosition += count;
    fRemaining -= count;
  }
  more = fRemaining > 0;
}

// Up to the end of the bytes or of the first hit; how many that were.
std::size_t AHitVisitor::SearchOne(const char* bytes, std::size_t length) {
  bool more = true;
  fSearch.Reset();
  fSearch.Visit(bytes, length, length, more);
  if (more) return length;
  bool found = false;
  Hit hit{};
  std::size_t offset = 0;  // wraps around for a hit that began in an earlier piece
  fSearch.GetResult(found, hit.index, offset);
  hit.offset = fPosition + offset;
  hit.length = fSearch.GetPatternLength(hit.index);
  const std::size_t count = offset + hit.length;
  if (OnHit(hit) && hit.length > 0) return count;
  fRemaining = count;
  return count;
}
