#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "Common/CBuffer.h"
#include "Common/CUseCounted.h"

// A view of a range of a buffer that others look at as well: all views made of one another share
// the buffer, one lock for it and one cache of the bytes read last.
//
// A small value. Any number of threads may read through views of one buffer at once, each through
// its own. Nobody may change the buffer meanwhile.
class CCachedSubBuffer {
public:
  class CSubBuffer;
  class CCache;

  explicit CCachedSubBuffer(CUsePtr<CBuffer> buffer);  // all of it, as long as it is now
  // A range of another view, as far as that reaches; both views are parts from then on.
  CCachedSubBuffer(CCachedSubBuffer& source, std::uint64_t start, std::uint64_t end);
  CCachedSubBuffer(const CCachedSubBuffer& other) = default;
  CCachedSubBuffer& operator=(const CCachedSubBuffer& other) = default;
  ~CCachedSubBuffer();

  std::uint64_t GetSize() const;
  // Copies as many bytes of the range as there are, and tells how many.
  std::uint64_t Read(std::uint64_t offset, void* destination, std::uint64_t length) const;
  bool IsWhole() const { return fIsWhole; }  // was made for a buffer, and no part was taken

  const CSubBuffer& Range() const { return *fRange; }
  const CCache& Cache() const { return *fCache; }

private:
  bool fIsWhole = true;
  CUsePtr<CSubBuffer> fRange;
  CUsePtr<CCache> fCache;
};

// The range, and the lock of the buffer.
class CCachedSubBuffer::CSubBuffer : public CUseCounted {
public:
  using Lock = CUseCountedSharedPtr<std::recursive_mutex>;

  // An end of CBuffer::kNone is the buffer's present one; of no buffer that is 0.
  CSubBuffer(CUsePtr<CBuffer> buffer, std::uint64_t start, std::uint64_t end, Lock lock);

  CBuffer* Buffer() const { return fBuffer.Get(); }
  std::uint64_t Start() const { return fStart; }
  std::uint64_t End() const { return fEnd; }
  const Lock& Mutex() const { return fLock; }
  const CUsePtr<CBuffer>& SharedBuffer() const { return fBuffer; }

private:
  Lock fLock;
  CUsePtr<CBuffer> fBuffer;
  std::uint64_t fStart;
  std::uint64_t fEnd;
};

// A stretch of the buffer that was read last.
class CCachedSubBuffer::CCache : public CUseCounted {
public:
  static constexpr std::uint64_t kStretch = 4096;

  std::mutex& Mutex() { return fLock; }
  // Copies bytes at an offset of the buffer, from the stretch where they are in it. The caller
  // holds both locks.
  std::uint64_t Read(CBuffer& buffer, std::uint64_t offset, char* destination,
                     std::uint64_t length);

private:
  std::mutex fLock;
  std::string fText;         // the bytes
  std::int64_t fIndex = -1;  // where they begin in the buffer; -1 before the first read
};
