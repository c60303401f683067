#pragma once

#include <cstddef>
#include <cstdint>

#include "Common/CUseCounted.h"
#include "Common/IUnicodeString.h"
#include "Common/SelvaneIVariant.h"

namespace Selvane {

// A body of bytes, wherever it is kept. The order of the operations is the binary contract:
// IObject's three come first, and nothing is ever sorted or put in between.
//
// One thread at a time. What cannot be done answers 0, false, null or -1; the bytes are then what
// they were. A pointer into the bytes lives until the next call that may change them. What the
// operations do is told where they are implemented, at CBuffer.
class IBuffer : public IObject {
public:
  virtual void Destroy() = 0;  // destroys the object whatever its count
  virtual void* GetBufferPtr() = 0;
  virtual std::uint64_t GetSize() = 0;
  virtual void Clear(std::uint64_t keepBytes) = 0;
  virtual bool Append(const void* data, std::uint64_t length) = 0;
  virtual void RemoveFront(std::uint64_t count) = 0;
  virtual void Reserve(std::uint64_t extra) = 0;
  virtual bool Insert(std::uint64_t position, const void* data, std::uint64_t length) = 0;
  virtual std::uint64_t Erase(std::uint64_t position, std::uint64_t length) = 0;
  virtual bool Assign(const void* data, std::uint64_t length) = 0;
  virtual bool IFFindBinaryPatterns(std::size_t& offset, unsigned& index,
                                    const void* const* patterns, IVariant* lengths,
                                    std::size_t start, std::size_t length) = 0;
  virtual bool IFFindBinaryPatterns(std::size_t& offset, unsigned& index, IVariant* patterns,
                                    std::size_t start, std::size_t length) = 0;
  virtual bool Overwrite(std::uint64_t position, const void* data, std::uint64_t length) = 0;
  virtual bool Replace(const void* pattern, std::size_t patternLength, const void* replacement,
                       std::size_t replacementLength, std::size_t start, std::size_t length,
                       std::size_t* count) = 0;
  virtual void* GetWriteSpace(std::size_t* available, std::size_t need) = 0;
  virtual void CommitWrite(std::size_t length) = 0;
  virtual char* GetChunkFrame(std::size_t* frameLength, std::size_t payload) = 0;
  virtual std::int64_t GetReadPosition() = 0;
  virtual std::int64_t SeekRead(std::int64_t offset, int origin) = 0;
  virtual std::int64_t GetWritePosition() = 0;
  virtual std::int64_t SeekWrite(std::int64_t offset, int origin) = 0;
  virtual std::uint64_t Read(void* destination, std::uint64_t length) = 0;
  virtual std::uint64_t Write(const void* source, std::uint64_t length) = 0;
  virtual bool Freeze() = 0;
  virtual bool IsFrozen() = 0;
  virtual bool Thaw() = 0;
  virtual bool SwapOut() = 0;
  virtual bool SwapIn() = 0;
  virtual IUnicodeString* GetFileName() = 0;  // with a reference
  virtual void ReloadFrozen() = 0;
  virtual bool IsAtEnd() = 0;
  virtual std::uint64_t ReadText(IUnicodeString* target, const char* encoding, int style,
                                 bool* endAtData) = 0;
  virtual bool IsReadOnly() = 0;
  virtual void UnmapView() = 0;
  virtual bool IsInMemory() = 0;
  virtual ~IBuffer() = default;
};

}  // namespace Selvane
