#include "Common/CBufferMemImpl.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>

#include "Common/CChunkVisitors.h"
#include "memory/Allocator.h"

namespace {

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kLargestBlock = PTRDIFF_MAX;  // no allocator gives more
constexpr std::uint64_t kSmallBlock = 8192;           // what a buffer keeps although it is empty

std::uint64_t Sum(std::uint64_t a, std::uint64_t b) {
  return a > kMost - b ? kMost : a + b;  // the largest number stands for all above it
}

}  // namespace

bool AppendStretch(ABufferStore& target, ABufferStore& source, std::uint64_t offset,
                   std::uint64_t length) {
  char block[kStoreBlockSize];
  while (length > 0) {
    const std::uint64_t wanted = std::min<std::uint64_t>(length, sizeof block);
    if (source.ReadAt(offset, block, wanted) != wanted || !target.Append(block, wanted)) {
      return false;
    }
    offset += wanted;
    length -= wanted;
  }
  return true;
}

CBufferMemImpl::CBufferMemImpl(void* external, std::uint64_t size)
    : fSize(size), fCapacity(size), fData(static_cast<char*>(external)), fExternal(true) {}

void CBufferMemImpl::DropBlock() {
  if (!fExternal) std::free(fData);
  fData = nullptr;
  fCapacity = 0;
  fHeadOffset = 0;
  fExternal = false;
}

bool CBufferMemImpl::NeedsRoom(std::uint64_t extra) const {
  return Sum(Sum(extra, kRoomAsked), fSize + fHeadOffset) >= fCapacity;
}

// Keeps the head where that wastes little, else makes a new one. On failure the word for what
// failed, and the size.
bool CBufferMemImpl::Enlarge(std::uint64_t extra, const char*& word, std::uint64_t& need) {
  need = Sum(Sum(fSize, extra), kHeadReserve + kRoomAsked);
  if (fData && !fExternal && fHeadOffset < need / 4) {
    word = "realloc";
    need = Sum(fHeadOffset, need);
    void* block = need <= kLargestBlock ? std::realloc(fData, need) : nullptr;
    if (!block) return false;
    fData = static_cast<char*>(block);
  } else {
    word = "malloc";
    void* block = need <= kLargestBlock ? std::malloc(need) : nullptr;
    if (!block) return false;
    if (fSize > 0) std::memcpy(static_cast<char*>(block) + kHeadReserve, Payload(), fSize);
    DropBlock();
    fData = static_cast<char*>(block);
    fHeadOffset = kHeadReserve;
  }
  fCapacity = need;
  return true;
}

bool CBufferMemImpl::TryReserve(std::uint64_t extra) {
  const char* word = "";
  std::uint64_t need = 0;
  return (!fExternal && !NeedsRoom(extra)) || Enlarge(extra, word, need);
}

void CBufferMemImpl::Reserve(std::uint64_t extra) {
  const char* word = "";
  std::uint64_t need = 0;
  if (!fExternal && !NeedsRoom(extra)) return;
  if (!Enlarge(extra, word, need)) MemoryFailure(word, need);
}

// Perf: twice as much as there is, so that many small pieces are not moved each time
// (cbuffer_bench, AppendPieces).
void CBufferMemImpl::Grow(std::uint64_t length) {
  if (fExternal || NeedsRoom(length)) Reserve(std::max(length, fSize));
}

void CBufferMemImpl::Own() {
  if (fExternal) Reserve(0);
}

void CBufferMemImpl::Resize(std::uint64_t capacity) {
  void* block = std::realloc(fData, capacity);
  if (!block) MemoryFailure("realloc", capacity);
  fData = static_cast<char*>(block);
  fCapacity = capacity;
}

std::uint64_t CBufferMemImpl::ReadAt(std::uint64_t offset, void* destination,
                                     std::uint64_t length) {
  if (offset >= fSize) return 0;
  const std::uint64_t count = std::min(length, fSize - offset);
  std::memcpy(destination, Payload() + offset, count);
  return count;
}

bool CBufferMemImpl::WriteAt(std::uint64_t offset, const void* data, std::uint64_t length) {
  const std::uint64_t end = Sum(offset, length);
  if (end > fSize) {
    Grow(end - fSize);
  } else {
    Own();
  }
  if (length > 0) std::memcpy(Payload() + offset, data, length);
  fSize = std::max(fSize, end);
  return true;
}

bool CBufferMemImpl::Append(const void* data, std::uint64_t length) {
  return WriteAt(fSize, data, length);
}

bool CBufferMemImpl::Assign(const void* data, std::uint64_t length) {
  if (fExternal) DropBlock();
  fSize = 0;
  if (fCapacity >= kHeadReserve) fHeadOffset = kHeadReserve;
  return Append(data, length);
}

void CBufferMemImpl::RemoveFront(std::uint64_t count) {
  fHeadOffset += count;
  fSize -= count;
  if (fSize == 0) {
    if (fCapacity > kSmallBlock) DropBlock();
    return;
  }
  if (fHeadOffset <= kHeadReserve || fHeadOffset < fSize - fSize / 2) return;

  Own();  // what came from outside has its head in order then
  std::memmove(fData + kHeadReserve, Payload(), fSize);
  fHeadOffset = kHeadReserve;
  if (fCapacity - kHeadReserve - fSize > kSmallBlock) {
    Resize(std::max(fSize + fSize / 2, fSize + kHeadReserve + kRoomAsked));
  }
}

void CBufferMemImpl::Clear(std::uint64_t keepBytes) {
  constexpr std::uint64_t kHeadless = 289;  // smaller blocks begin with their payload
  fSize = 0;
  if (fExternal) DropBlock();
  if (fCapacity <= keepBytes) {
    fHeadOffset = fCapacity < kHeadless ? 0 : kHeadReserve;
  } else if (keepBytes < kHeadReserve) {
    DropBlock();
  } else {
    fHeadOffset = kHeadReserve;
    if (fCapacity - keepBytes > keepBytes / 20) Resize(keepBytes);
  }
}

void CBufferMemImpl::Visit(AChunkVisitor& visitor, std::uint64_t start, std::uint64_t length) {
  if (fSize == 0 || start > fSize) return;
  const std::uint64_t count = std::min(length, fSize - start);
  bool more = true;
  visitor.Visit(Payload() + start, count, count, more);
}

void CBufferMemImpl::Insert(std::uint64_t position, const void* data, std::uint64_t length) {
  if (length == 0) return;
  Grow(length);
  char* place = Payload() + position;
  std::memmove(place + length, place, fSize - position);
  std::memcpy(place, data, length);
  fSize += length;
}

void CBufferMemImpl::Erase(std::uint64_t position, std::uint64_t length) {
  if (length == 0) return;
  Own();
  char* place = Payload() + position;
  std::memmove(place, place + length, fSize - position - length);
  fSize -= length;
}

std::uint64_t CBufferMemImpl::Spare() const {
  const std::uint64_t used = fHeadOffset + fSize + kTailReserve;
  return fExternal || fCapacity < used ? 0 : fCapacity - used;
}

char* CBufferMemImpl::FrameChunk(std::size_t* frameLength, std::uint64_t payload) {
  payload = std::min(payload, fSize);
  char line[kHeadReserve + 1];
  // Digits alone: no locale has a say here.
  const int written =
      std::snprintf(line, sizeof line, "%llX\r\n", static_cast<unsigned long long>(payload));
  const auto count = static_cast<std::uint64_t>(written);
  const bool hasRoom = !fExternal && fCapacity >= fHeadOffset + kTailReserve + payload &&
                       fHeadOffset >= count && fSize <= payload;
  if (!hasRoom) return nullptr;

  char* frame = fData + fHeadOffset - count;
  std::memcpy(frame, line, count);
  std::memcpy(Payload() + payload, "\r\n", kTailReserve);
  if (frameLength) *frameLength = count + kTailReserve + payload;
  return frame;
}

bool CBufferMemImpl::Holds(const void* pointer) const {
  const auto* byte = static_cast<const char*>(pointer);
  return fData && !std::less<>()(byte, fData) && std::less<>()(byte, fData + fCapacity);
}
