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

// Collects all hits of a search for one pattern in one pass. A hit leaves the search as fresh as a
// new one, so going on behind it is starting again there.
class COccurrenceVisitor final : public AChunkVisitor {
public:
  COccurrenceVisitor(CSearchVisitor& search, std::size_t patternLength, std::uint64_t start,
                     std::uint64_t length, std::vector<std::size_t>& offsets)
      : fSearch(search),
        fPatternLength(patternLength),
        fPosition(start),
        fRemaining(length),
        fOffsets(offsets) {}

  void Visit(const void* data, std::size_t length, std::size_t, bool& more) override {
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

private:
  // Up to the end of the bytes or of the first hit; how many that were.
  std::size_t SearchOne(const char* bytes, std::size_t length) {
    bool more = true;
    fSearch.Reset();
    fSearch.Visit(bytes, length, length, more);
    if (more) return length;
    bool found = false;
    int index = 0;
    std::size_t offset = 0;  // wraps around for a hit that began in an earlier piece
    fSearch.GetResult(found, index, offset);
    fOffsets.push_back(fPosition + offset);
    // Contract: only what lies before a hit comes off the range, not the hit itself.
    const bool isEndless = fRemaining > std::numeric_limits<std::uint64_t>::max() - fPatternLength;
    if (!isEndless) fRemaining += fPatternLength;
    return offset + fPatternLength;
  }

  CSearchVisitor& fSearch;
  const std::size_t fPatternLength;
  std::uint64_t fPosition;   // in the buffer
  std::uint64_t fRemaining;  // of the range
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
  COccurrenceVisitor occurrences(*search, patternLength, start,
                                 std::min<std::uint64_t>(length, size - start), offsets);
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
