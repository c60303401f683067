#pragma once

#include <cstring>

#include "Common/CBufferStore.h"

// The bytes of a buffer in one block, with room in front of and behind them: the line with the size
// and the line end of an HTTP chunk are written there, and the chunk goes out without a copy.
//
// Invariant: fHeadOffset + fSize is not above fCapacity. A block that came from outside is read
// only; the first change of bytes or capacity copies it.
//
// Running out of memory ends the process, as it does everywhere in the library.
class CBufferMemImpl final : public ABufferStore {
public:
  static constexpr std::uint64_t kHeadReserve = 18;  // 16 hexadecimal digits and a line end
  static constexpr std::uint64_t kTailReserve = 2;   // a line end

  CBufferMemImpl() = default;
  CBufferMemImpl(void* external, std::uint64_t size);  // borrowed for the life of this object
  ~CBufferMemImpl() override { DropBlock(); }

  std::uint64_t GetSize() const override { return fSize; }
  void* GetPointer() override { return Payload(); }
  std::uint64_t ReadAt(std::uint64_t offset, void* destination, std::uint64_t length) override;
  bool WriteAt(std::uint64_t offset, const void* data, std::uint64_t length) override;
  bool Append(const void* data, std::uint64_t length) override;
  bool Assign(const void* data, std::uint64_t length) override;
  void RemoveFront(std::uint64_t count) override;
  void Clear(std::uint64_t keepBytes) override;
  void Visit(AChunkVisitor& visitor, std::uint64_t start, std::uint64_t length) override;

  // Room for so many bytes behind the payload; exactly so many, if there is not enough.
  void Reserve(std::uint64_t extra);
  // The same for a size that may well be too much: false then.
  bool TryReserve(std::uint64_t extra);
  void Insert(std::uint64_t position, const void* data, std::uint64_t length);
  void Erase(std::uint64_t position, std::uint64_t length);  // within the payload
  // Free bytes behind the payload, the reserve not counted, and where they begin.
  std::uint64_t Spare() const;
  char* End() { return Payload() + fSize; }
  void Commit(std::uint64_t length) { fSize += length < Spare() ? length : Spare(); }
  // Puts the size line in front of the payload and the line end behind so many bytes of it; null
  // when there is no room for them.
  char* FrameChunk(std::size_t* frameLength, std::uint64_t payload);

  bool Holds(const void* pointer) const;  // a pointer into the block
  // Appends without growing, or does nothing and says so.
  bool AppendInPlace(const void* data, std::uint64_t length) {
    if (fExternal || fCapacity - fHeadOffset - fSize <= kRoomAsked + length) return false;
    std::memcpy(fData + fHeadOffset + fSize, data, length);
    fSize += length;
    return true;
  }

  std::uint64_t Capacity() const { return fCapacity; }
  std::uint64_t HeadOffset() const { return fHeadOffset; }

private:
  static constexpr std::uint64_t kRoomAsked = 6;  // kept free when bytes are added

  char* Payload() const { return fData ? fData + fHeadOffset : nullptr; }
  void Grow(std::uint64_t length);
  bool NeedsRoom(std::uint64_t extra) const;
  bool Enlarge(std::uint64_t extra, const char*& word, std::uint64_t& need);
  void Own();
  void Resize(std::uint64_t capacity);  // of the block, which is not external
  void DropBlock();

  std::uint64_t fSize = 0;
  std::uint64_t fCapacity = 0;
  std::uint64_t fHeadOffset = 0;  // where the payload begins in the block
  char* fData = nullptr;
  bool fExternal = false;  // the block is not freed here
};
