#include "Common/CCachedSubBuffer.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

std::uint64_t SizeOf(const CUsePtr<CBuffer>& buffer) {
  return buffer ? buffer->GetSize() : 0;
}

}  // namespace

CCachedSubBuffer::CSubBuffer::CSubBuffer(CUsePtr<CBuffer> buffer, std::uint64_t start,
                                         std::uint64_t end, Lock lock)
    : fLock(lock ? std::move(lock) : Lock(new std::recursive_mutex)),
      fBuffer(std::move(buffer)),
      fStart(start),
      fEnd(end == CBuffer::kNone ? SizeOf(fBuffer) : end) {}

std::uint64_t CCachedSubBuffer::CCache::Read(CBuffer& buffer, std::uint64_t offset,
                                             char* destination, std::uint64_t length) {
  if (length >= kStretch) return buffer.ReadAt(offset, destination, length);
  const auto begin = static_cast<std::uint64_t>(fIndex);
  const bool isHere = fIndex >= 0 && offset >= begin && offset + length <= begin + fText.size();
  if (!isHere) {
    fText.resize(kStretch);
    fText.resize(buffer.ReadAt(offset, fText.data(), fText.size()));
    fIndex = static_cast<std::int64_t>(offset);
  }
  const std::uint64_t skipped = offset - static_cast<std::uint64_t>(fIndex);
  const std::uint64_t count = std::min<std::uint64_t>(length, fText.size() - skipped);
  std::memcpy(destination, fText.data() + skipped, count);
  return count;
}

CCachedSubBuffer::CCachedSubBuffer(CUsePtr<CBuffer> buffer)
    : fRange(MakeUseCounted<CSubBuffer>(std::move(buffer), 0, CBuffer::kNone, CSubBuffer::Lock())),
      fCache(MakeUseCounted<CCache>()) {}

CCachedSubBuffer::CCachedSubBuffer(CCachedSubBuffer& source, std::uint64_t start, std::uint64_t end)
    : fIsWhole(false) {
  const CSubBuffer& whole = *source.fRange;
  {
    const std::lock_guard guard(*whole.Mutex());
    const std::uint64_t size = whole.End() - whole.Start();
    start = std::min(start, size);
    end = std::clamp(end, start, size);
    fRange = MakeUseCounted<CSubBuffer>(whole.SharedBuffer(), whole.Start() + start,
                                        whole.Start() + end, whole.Mutex());
    source.fIsWhole = false;
  }
  const std::lock_guard guard(source.fCache->Mutex());
  fCache = source.fCache;
}

CCachedSubBuffer::~CCachedSubBuffer() = default;

std::uint64_t CCachedSubBuffer::GetSize() const {
  return fRange->End() - fRange->Start();
}

std::uint64_t CCachedSubBuffer::Read(std::uint64_t offset, void* destination,
                                     std::uint64_t length) const {
  if (offset >= GetSize() || !fRange->Buffer()) return 0;
  const std::lock_guard buffer(*fRange->Mutex());
  const std::lock_guard cache(fCache->Mutex());
  return fCache->Read(*fRange->Buffer(), fRange->Start() + offset, static_cast<char*>(destination),
                      std::min(length, GetSize() - offset));
}
