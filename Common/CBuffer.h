#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Common/CBufferStore.h"
#include "Common/CUseCounted.h"
#include "Common/IBuffer.h"

class CBufferFileImpl;
class CBufferMemImpl;

// A body of bytes that may be far larger than what should stay in memory. It begins in memory,
// moves itself to a temporary file when it passes its swap size, and comes back when somebody needs
// the bytes in one piece. Nothing brings it back just because it has shrunk.
//
// Reading and writing have a place each, which is none (-1) at first and counts as the beginning
// then. Changes of the bytes cut a place back to the new end.
//
// Frozen, the bytes are in a file and no descriptor is open: the buffer shows no bytes and takes
// none until it thaws. Read-only, it takes none. Refused and failed operations leave the bytes as
// they were; a body that cannot be swapped out stays in memory.
//
// A file that a caller named is changed in place and never deleted. Insert and Erase bring the
// bytes to memory, and Replace may make a new store: from then on the named file is left as it is.
//
// One thread at a time. Buffers that share their bytes belong to one thread together.
class CBuffer final : public Selvane::IBuffer, public CUseCounted {
public:
  struct External {};
  struct Shared {};
  static constexpr std::uint64_t kNone = ~std::uint64_t{0};  // no place, and no end

  CBuffer();
  CBuffer(const void* data, std::size_t length);  // a copy of the bytes
  // The bytes themselves, which have to outlive the buffer and are never changed: the first change
  // copies them.
  CBuffer(void* data, std::size_t length, External);
  // A file by its name, made if it is to be written and is not there. Empty and read-only when it
  // cannot be opened; *error has the code then.
  CBuffer(const CFSPath& path, bool writable, int* error = nullptr);
  // The bytes of another buffer, without a copy until one of the two is to change. Only what a
  // source writes to a file that it was given by name shows here as well.
  CBuffer(CBuffer& source, Shared);
  ~CBuffer() override;

  // ---- IObject and CUseCounted lead to the same count
  std::uint32_t AddRef() const override { return CUseCounted::AddRef(); }
  bool Release() const override { return CUseCounted::Release(); }
  std::uint32_t GetUseCount() const override { return CUseCounted::UseCount(); }
  void Destroy() override;

  // ---- the bytes
  void* GetBufferPtr() override;  // on file a view that is only to be read; null when empty there
  std::uint64_t GetSize() override;
  void Clear(std::uint64_t keepBytes) override;  // of the block in memory
  bool Append(const void* data, std::uint64_t length) override;
  void RemoveFront(std::uint64_t count) override;
  void Reserve(std::uint64_t extra) override;
  bool Insert(std::uint64_t position, const void* data, std::uint64_t length) override;
  std::uint64_t Erase(std::uint64_t position, std::uint64_t length) override;
  bool Assign(const void* data, std::uint64_t length) override;
  bool Overwrite(std::uint64_t position, const void* data, std::uint64_t length) override;
  // Copies bytes from a place of the caller's, and tells how many; moves no place.
  std::uint64_t ReadAt(std::uint64_t offset, void* destination, std::uint64_t length);

  // ---- search
  // The first pattern to end in the range, with its offset from start. Nothing is written when
  // there is none. Throws a CRunTimeError for arguments that are no lists of the right kind.
  bool IFFindBinaryPatterns(std::size_t& offset, unsigned& index, const void* const* patterns,
                            Selvane::IVariant* lengths, std::size_t start,
                            std::size_t length) override;
  bool IFFindBinaryPatterns(std::size_t& offset, unsigned& index, Selvane::IVariant* patterns,
                            std::size_t start, std::size_t length) override;
  // Contract: the range's end moves on by the pattern's length with each hit, though never beyond
  // the buffer's.
  void GetAllOccurrences(std::vector<std::size_t>& offsets, const void* pattern,
                         std::size_t patternLength, std::size_t start, std::size_t length);
  bool Replace(const void* pattern, std::size_t patternLength, const void* replacement,
               std::size_t replacementLength, std::size_t start, std::size_t length,
               std::size_t* count) override;
  void VisitBuffer(AChunkVisitor& visitor, std::size_t start, std::size_t length);

  // ---- filling in place
  // Free space behind the payload until CommitWrite says how much of it was filled.
  void* GetWriteSpace(std::size_t* available, std::size_t need) override;
  void CommitWrite(std::size_t length) override;
  // The payload as an HTTP chunk, framed in place; null when it has no room for that, and for a
  // payload that is not the whole. Contract: the digits are upper-case.
  char* GetChunkFrame(std::size_t* frameLength, std::size_t payload) override;

  // ---- places
  std::int64_t GetReadPosition() override { return static_cast<std::int64_t>(fReadPos); }
  std::int64_t SeekRead(std::int64_t offset, int origin) override;
  std::int64_t GetWritePosition() override { return static_cast<std::int64_t>(fWritePos); }
  std::int64_t SeekWrite(std::int64_t offset, int origin) override;
  std::uint64_t Read(void* destination, std::uint64_t length) override;
  std::uint64_t Write(const void* source, std::uint64_t length) override;
  // Contract: in memory true with exactly one byte left, and for an empty buffer without a place;
  // false when all was read. On file true once a read met the end.
  bool IsAtEnd() override;
  // Takes one line, as ExtractLine does, and tells how many bytes that took; 0 when there is no
  // line end. When the other half of a line end comes only with a later piece, the next call passes
  // it over.
  std::uint64_t ReadText(Selvane::IUnicodeString* target, const char* encoding, int style,
                         bool* endAtData) override;

  // ---- where the bytes are
  bool Freeze() override;
  bool IsFrozen() override { return fFrozen; }
  bool Thaw() override;
  bool SwapOut() override;
  bool SwapIn() override;
  Selvane::IUnicodeString* GetFileName() override;
  void ReloadFrozen() override;
  bool IsReadOnly() override { return fReadOnly; }
  void UnmapView() override;
  bool IsInMemory() override { return fMemory != nullptr; }

private:
  void SetStore(std::shared_ptr<CBufferMemImpl> store);
  void SetStore(std::shared_ptr<CBufferFileImpl> store);
  bool PrepareWrite();
  bool MakePrivate();
  bool IsWithinSwapSize(std::uint64_t extra) const;
  void SwapOutBeyond(std::uint64_t extra);
  template <class Change>
  bool ChangeOnDisk(bool isForDisk, Change change);
  bool BringToMemory();
  void CutPlaces();
  std::int64_t Seek(std::uint64_t& place, std::int64_t offset, int origin);
  const void* Detached(const void* data, std::uint64_t length, std::vector<char>& copy) const;
  std::shared_ptr<ABufferStore> NewStore(std::uint64_t size);
  void TakeStore(std::shared_ptr<ABufferStore> store);
  bool RebuildWith(const std::vector<std::size_t>& hits, std::size_t patternLength,
                   const void* replacement, std::size_t replacementLength);
  const char* TextWindow(std::uint64_t length, std::vector<char>& copy);

  std::shared_ptr<ABufferStore> fStore;  // never null; may belong to other buffers as well
  CBufferMemImpl* fMemory = nullptr;     // fStore, while that is in memory
  CBufferFileImpl* fFile = nullptr;      // fStore, while that is a file
  std::uint64_t fSwapSize;
  std::uint64_t fReadPos = kNone;
  std::uint64_t fWritePos = kNone;
  std::vector<char> fWriteBlock;  // what GetWriteSpace handed out for a file
  char fCompanion = '\0';         // passed over by the next ReadText, if it stands there
  bool fMetEnd = false;           // the last read, of a file, wanted more than there was
  bool fFrozen = false;
  bool fReadOnly = false;
  bool fShared = false;  // fStore belonged to another buffer first
};

// The swap size that new buffers get, from QRX_CBUFFER_SWAP_SIZE or this machine's memory.
std::uint64_t GetGlobalSwapSize();
// The swap size for a machine with so many bytes of memory.
std::uint64_t SwapSizeForMemory(std::uint64_t memory);

// The bytes in one piece for who must have them so. Where the file cannot be mapped they are
// swapped in, unless they are more than limit; null then.
void* GetBufferPtrSizeLimit(Selvane::IBuffer& buffer, std::uint64_t limit);
