#pragma once

#include <memory>

#include "Common/CBufferStore.h"
#include "Common/CFile.h"
#include "Libs/Platform/MappedFile.h"

// The bytes of a buffer in a file: one of its own, which goes with it, or one that has a name and
// stays.
//
// The stream is not buffered: a write that the disk has no room for fails at once, and a view never
// shows less than was written. The view is read-only, and dropped before every change.
//
// Bytes taken from the front stay in the file; only the place where the payload begins moves on. In
// a file of its own the payload moves to the front once the gap is as long as itself, so a body
// that streams through needs no more room than twice what it holds.
//
// Frozen, the file is closed; whoever froze it asks for nothing but the operations named below.
class CBufferFileImpl final : public ABufferStore {
public:
  // A new file for this process alone, deleted at the end; null when there can be none.
  static std::unique_ptr<CBufferFileImpl> CreateTemporary();
  // A file by its name, which is never deleted. Null, and *error has the code, when it cannot be
  // opened.
  static std::unique_ptr<CBufferFileImpl> Open(const CFSPath& path, bool writable,
                                               int* error = nullptr);
  ~CBufferFileImpl() override;

  std::uint64_t GetSize() const override { return fFileSize - fDataStart; }
  void* GetPointer() override;
  std::uint64_t ReadAt(std::uint64_t offset, void* destination, std::uint64_t length) override;
  bool WriteAt(std::uint64_t offset, const void* data, std::uint64_t length) override;
  bool Append(const void* data, std::uint64_t length) override;
  bool Assign(const void* data, std::uint64_t length) override;
  void RemoveFront(std::uint64_t count) override;
  void Clear(std::uint64_t keepBytes) override;
  void Visit(AChunkVisitor& visitor, std::uint64_t start, std::uint64_t length) override;

  bool Holds(const void* pointer) const;  // a pointer into the view
  void Unmap() { fView.Unmap(); }
  bool IsTemporary() const { return fDeleteAtClose; }
  const CFSPath& GetPath() const { return fPath; }
  bool HasAllBytes();  // nobody has cut the file

  // ---- frozen and back

  void Close();
  bool Reopen();      // false when the file cannot be opened any more
  void ReloadSize();  // while closed: takes the length that the file has now

private:
  CBufferFileImpl(const CFSPath& path, std::uint32_t mode, bool deleteAtClose);

  bool WriteRaw(std::uint64_t place, const void* data, std::uint64_t length);
  void Empty();
  void CloseGap();
  bool MoveToFront(std::uint64_t size);

  CFSPath fPath;
  CFile fFile;
  CMappedFile fView;
  std::uint64_t fDataStart = 0;  // where the payload begins; not above fFileSize
  std::uint64_t fFileSize = 0;
  std::uint32_t fMode;  // for opening it again
  bool fDeleteAtClose;
};
