#include <algorithm>
#include <limits>
#include <string>

#include "Common/CBuffer.h"
#include "Common/CBufferFileImpl.h"
#include "Common/CBufferMemImpl.h"
#include "Common/CChunkVisitors.h"
#include "Common/CVariant.h"
#include "Common/CVariantTypeTable.h"
#include "Common/RaiseError.h"

qxSource("Common\\CBuffer");

namespace {

[[noreturn]] void FailSearch(const std::string& message) {
  qxRaiseError(ErrorId::InternalError, "CBuffer::IFFindBinaryPatterns", {{"msg", message}});
}

// Contract: only what lies before a hit comes off the range, not the hit itself.
class COccurrenceVisitor final : public AHitVisitor {
public:
  COccurrenceVisitor(CSearchVisitor& search, std::uint64_t start, std::uint64_t length,
                     std::vector<std::size_t>& offsets)
      : AHitVisitor(search, start, length), fOffsets(offsets) {}

private:
  bool OnHit(const Hit& hit) override {
    fOffsets.push_back(hit.offset);
    ExtendRange(hit.length);
    return true;
  }

  std::vector<std::size_t>& fOffsets;
};

bool FindFirst(CBuffer& buffer, CSearchVisitor& search, std::size_t& offset, unsigned& index,
               std::size_t start, std::size_t length) {
  buffer.VisitBuffer(search, start, length);
  bool found = false;
  int foundIndex = 0;
  search.GetResult(found, foundIndex, offset);
  if (found) index = static_cast<unsigned>(foundIndex);
  return found;
}

}  // namespace

void CBuffer::VisitBuffer(AChunkVisitor& visitor, std::size_t start, std::size_t length) {
  if (!fFrozen) fStore->Visit(visitor, start, length);
}

bool CBuffer::IFFindBinaryPatterns(std::size_t& offset, unsigned& index,
                                   const void* const* patterns, Selvane::IVariant* lengths,
                                   std::size_t start, std::size_t length) {
  if (fFrozen) return false;
  if (!patterns) FailSearch("Patterns is NULL.");
  if (!lengths) FailSearch("PatternLengths is NULL.");
  if (!lengths->IsListType()) FailSearch("Pattern is not a long-list.");
  const auto search = MakeUseCounted<CSearchVisitor>(patterns, lengths);
  if (!search->IsValid()) {
    FailSearch(std::string("Cannot create searcher for patternLengths of type '") +
               PrintedTypeName(lengths->GetType()) + "'");
  }
  return FindFirst(*this, *search, offset, index, start, length);
}

bool CBuffer::IFFindBinaryPatterns(std::size_t& offset, unsigned& index,
                                   Selvane::IVariant* patterns, std::size_t start,
                                   std::size_t length) {
  if (fFrozen) return false;
  if (!patterns) FailSearch("Patterns is NULL.");
  if (!patterns->IsListType()) FailSearch("Pattern is not a string-list.");
  const auto search = MakeUseCounted<CSearchVisitor>(patterns);
  if (!search->IsValid()) {
    FailSearch(std::string("Cannot create searcher for patterns of type '") +
               PrintedTypeName(patterns->GetType()) + "'");
  }
  return FindFirst(*this, *search, offset, index, start, length);
}

void CBuffer::GetAllOccurrences(std::vector<std::size_t>& offsets, const void* pattern,
                                std::size_t patternLength, std::size_t start, std::size_t length) {
  if (patternLength == 0) return;
  if (patternLength > static_cast<std::size_t>(std::numeric_limits<std::int64_t>::max())) {
    qxRaiseError(ErrorId::InternalError, "CBuffer::GetAllOccurrences",
                 {{"msg", "IVariant::Int cannot hold value from size_t"}});
  }
  const std::uint64_t size = GetSize();
  if (!pattern || start >= size) return;
  const auto lengths = MakeUseCounted<CVariant>(VariantType::LongList);
  lengths->AddToList(static_cast<std::int64_t>(patternLength));
  const auto search = MakeUseCounted<CSearchVisitor>(&pattern, lengths.Get());
  COccurrenceVisitor occurrences(*search, start, std::min<std::uint64_t>(length, size - start),
                                 offsets);
  VisitBuffer(occurrences, start, size - start);
}

bool CBuffer::Replace(const void* pattern, std::size_t patternLength, const void* replacement,
                      std::size_t replacementLength, std::size_t start, std::size_t length,
                      std::size_t* count) {
  if (fFrozen || fReadOnly || patternLength == 0) return false;
  std::vector<std::size_t> hits;
  GetAllOccurrences(hits, pattern, patternLength, start, length);
  if (count) *count = hits.size();
  if (hits.empty()) return true;
  if (!replacement && replacementLength > 0) return false;
  std::vector<char> copy;
  replacement = Detached(replacement, replacementLength, copy);
  if (!MakePrivate()) return false;
  if (patternLength != replacementLength) {
    return RebuildWith(hits, patternLength, replacement, replacementLength);
  }
  return std::ranges::all_of(
      hits, [&](std::size_t hit) { return fStore->WriteAt(hit, replacement, replacementLength); });
}

bool CBuffer::RebuildWith(const std::vector<std::size_t>& hits, std::size_t patternLength,
                          const void* replacement, std::size_t replacementLength) {
  const std::uint64_t size = GetSize();
  const std::uint64_t newSize =
      size - hits.size() * patternLength + hits.size() * replacementLength;
  const std::shared_ptr<ABufferStore> store = NewStore(newSize);
  if (!store) return false;
  std::uint64_t position = 0;
  for (const std::size_t hit : hits) {
    if (!AppendStretch(*store, *fStore, position, hit - position)) return false;
    if (replacementLength > 0 && !store->Append(replacement, replacementLength)) return false;
    position = hit + patternLength;
  }
  if (!AppendStretch(*store, *fStore, position, size - position)) return false;
  TakeStore(store);
  CutPlaces();
  return true;
}
