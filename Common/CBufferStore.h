#pragma once

#include <cstddef>
#include <cstdint>

#include "Common/CFSPath.h"

class AChunkVisitor;

// Where a buffer keeps its bytes. One thread at a time.
//
// A change that fails leaves the bytes as they were. Offsets are within the payload.
class ABufferStore {
public:
  virtual ~ABufferStore() = default;

  virtual std::uint64_t GetSize() const = 0;
  // The whole payload in one piece, until the next change; null when that cannot be.
  virtual void* GetPointer() = 0;
  // Copies as many of the bytes as there are; tells how many.
  virtual std::uint64_t ReadAt(std::uint64_t offset, void* destination, std::uint64_t length) = 0;
  // Writes over what is there, and behind it; the offset is not behind the end.
  virtual bool WriteAt(std::uint64_t offset, const void* data, std::uint64_t length) = 0;
  virtual bool Append(const void* data, std::uint64_t length) = 0;
  virtual bool Assign(const void* data, std::uint64_t length) = 0;
  virtual void RemoveFront(std::uint64_t count) = 0;  // not more than there are
  virtual void Clear(std::uint64_t keepBytes) = 0;
  virtual void Visit(AChunkVisitor& visitor, std::uint64_t start, std::uint64_t length) = 0;

protected:
  ABufferStore() = default;
  ABufferStore(const ABufferStore&) = delete;
  ABufferStore& operator=(const ABufferStore&) = delete;
};

// How much is copied at once between stores.
inline constexpr std::size_t kStoreBlockSize = std::size_t{64} << 10;

// Appends a stretch of one store to another. False when not all of it came over.
bool AppendStretch(ABufferStore& target, ABufferStore& source, std::uint64_t offset,
                   std::uint64_t length);
