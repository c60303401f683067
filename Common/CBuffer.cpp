#include "Common/CBuffer.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "Common/CBufferFileImpl.h"
#include "Common/CBufferMemImpl.h"
#include "Common/CUnicodeString.h"
#include "Common/DebugLog.h"

qxSource("Common\\CBuffer");

CBuffer::CBuffer() : fSwapSize(GetGlobalSwapSize()) {
  SetStore(std::make_shared<CBufferMemImpl>());
}

CBuffer::CBuffer(const void* data, std::size_t length) : CBuffer() {
  Append(data, length);
}

CBuffer::CBuffer(void* data, std::size_t length, External) : fSwapSize(GetGlobalSwapSize()) {
  SetStore(std::make_shared<CBufferMemImpl>(data, length));
}

CBuffer::CBuffer(const CFSPath& path, bool writable, int* error) : CBuffer() {
  std::shared_ptr<CBufferFileImpl> file = CBufferFileImpl::Open(path, writable, error);
  fReadOnly = !writable || !file;
  if (file) SetStore(std::move(file));
}

CBuffer::CBuffer(CBuffer& source, Shared)
    : fStore(source.fStore),
      fMemory(source.fMemory),
      fFile(source.fFile),
      fSwapSize(source.fSwapSize),
      fFrozen(source.fFrozen),
      fShared(true) {}

CBuffer::~CBuffer() = default;

void CBuffer::Destroy() {
  delete this;
}

// ---- stores

void CBuffer::SetStore(std::shared_ptr<CBufferMemImpl> store) {
  fMemory = store.get();
  fFile = nullptr;
  fStore = std::move(store);
}

void CBuffer::SetStore(std::shared_ptr<CBufferFileImpl> store) {
  fFile = store.get();
  fMemory = nullptr;
  fStore = std::move(store);
}

void CBuffer::TakeStore(std::shared_ptr<ABufferStore> store) {
  fMemory = dynamic_cast<CBufferMemImpl*>(store.get());
  fFile = dynamic_cast<CBufferFileImpl*>(store.get());
  fStore = std::move(store);
  fShared = false;
}

// An empty store where so many bytes belong. Null when there is no memory for them.
std::shared_ptr<ABufferStore> CBuffer::NewStore(std::uint64_t size) {
  if (size > fSwapSize) {
    if (auto file = CBufferFileImpl::CreateTemporary()) return file;
  }
  auto memory = std::make_shared<CBufferMemImpl>();
  return memory->TryReserve(size) ? memory : nullptr;
}

// The first change of shared bytes copies them, on whichever side it comes. A file that was named
// is the exception: its owner writes to it, and not to a copy, and nobody else ever does.
bool CBuffer::MakePrivate() {
  const bool isNamed = fFile && !fFile->IsTemporary();
  if (isNamed ? !fShared : fStore.use_count() == 1) return true;
  if (fFrozen) return false;
  const std::uint64_t size = fStore->GetSize();
  std::shared_ptr<ABufferStore> store = NewStore(size);
  if (!store || !AppendStretch(*store, *fStore, 0, size)) return false;
  TakeStore(std::move(store));
  return true;
}

bool CBuffer::PrepareWrite() {
  return !fFrozen && !fReadOnly && MakePrivate();
}

bool CBuffer::SwapOut() {
  if (fFrozen || !MakePrivate()) return false;
  if (fFile) return true;
  std::shared_ptr<CBufferFileImpl> file = CBufferFileImpl::CreateTemporary();
  if (!file || !file->Append(fMemory->GetPointer(), fMemory->GetSize()) || !file->HasAllBytes()) {
    return false;
  }
  SetStore(std::move(file));
  fShared = false;
  return true;
}

bool CBuffer::SwapIn() {
  if (fFrozen || !MakePrivate()) return false;
  if (fMemory) return true;
  auto memory = std::make_shared<CBufferMemImpl>();
  const std::uint64_t size = fFile->GetSize();
  if (size > 0) {
    if (!memory->TryReserve(size)) return false;
    if (fFile->ReadAt(0, memory->End(), size) != size) return false;
    memory->Commit(size);
  }
  SetStore(std::move(memory));
  return true;
}

bool CBuffer::Freeze() {
  if (!SwapOut() || fStore.use_count() > 1) return false;
  fFile->Close();
  fFrozen = true;
  return true;
}

bool CBuffer::Thaw() {
  if (!fFile) return false;
  if (!fFrozen) return true;
  if (!fFile->Reopen()) return false;
  fFrozen = false;
  CutPlaces();
  return true;
}

void CBuffer::ReloadFrozen() {
  if (fFrozen) fFile->ReloadSize();
}

Selvane::IUnicodeString* CBuffer::GetFileName() {
  return fFile ? new CUnicodeString(fFile->GetPath().String()) : new CUnicodeString;
}

void CBuffer::UnmapView() {
  if (fFile) fFile->Unmap();
}

bool CBuffer::IsWithinSwapSize(std::uint64_t extra) const {
  const std::uint64_t size = fMemory->GetSize();
  return extra <= fSwapSize && size <= fSwapSize - extra;
}

// Where that fails the buffer goes on in memory.
void CBuffer::SwapOutBeyond(std::uint64_t extra) {
  if (fMemory && !IsWithinSwapSize(extra)) SwapOut();
}

// A change for which the bytes go to disk, and come back if that has room for them but not for what
// the change adds.
template <class Change>
bool CBuffer::ChangeOnDisk(bool isForDisk, Change change) {
  const bool hasSwapped = fMemory && isForDisk && SwapOut();
  return change() || (hasSwapped && SwapIn() && change());
}

bool CBuffer::BringToMemory() {
  return PrepareWrite() && SwapIn();
}

// Bytes that may be this buffer's own are copied, first of all: a change of store drops them.
const void* CBuffer::Detached(const void* data, std::uint64_t length,
                              std::vector<char>& copy) const {
  const bool isOwn = fMemory ? fMemory->Holds(data) : fFile->Holds(data);
  if (!isOwn || length == 0) return data;
  const auto* bytes = static_cast<const char*>(data);
  copy.assign(bytes, bytes + length);
  return copy.data();
}

// ---- the bytes

void* CBuffer::GetBufferPtr() {
  return fFrozen ? nullptr : fStore->GetPointer();
}

std::uint64_t CBuffer::GetSize() {
  return fFrozen ? 0 : fStore->GetSize();
}

std::uint64_t CBuffer::ReadAt(std::uint64_t offset, void* destination, std::uint64_t length) {
  return fFrozen || !destination ? 0 : fStore->ReadAt(offset, destination, length);
}

void CBuffer::CutPlaces() {
  const std::uint64_t size = fStore->GetSize();
  if (fReadPos != kNone) fReadPos = std::min(fReadPos, size);
  if (fWritePos != kNone) fWritePos = std::min(fWritePos, size);
}

void CBuffer::Clear(std::uint64_t keepBytes) {
  if (!PrepareWrite()) return;
  fStore->Clear(keepBytes);
  fReadPos = fWritePos = 0;
}

bool CBuffer::Append(const void* data, std::uint64_t length) {
  const bool isPlain = fMemory && !fReadOnly && fStore.use_count() == 1;
  if (isPlain && data && IsWithinSwapSize(length) && fMemory->AppendInPlace(data, length)) {
    return true;
  }
  if (length == 0 || !data) return length == 0 && !fFrozen && !fReadOnly;
  std::vector<char> copy;
  data = Detached(data, length, copy);
  if (!PrepareWrite()) return false;
  const bool isForDisk = fMemory && !IsWithinSwapSize(length);
  return ChangeOnDisk(isForDisk, [&] { return fStore->Append(data, length); });
}

void CBuffer::RemoveFront(std::uint64_t count) {
  if (!PrepareWrite()) return;
  count = std::min(count, fStore->GetSize());
  fStore->RemoveFront(count);
  for (std::uint64_t* place : {&fReadPos, &fWritePos}) {
    *place = *place == kNone || *place <= count ? 0 : *place - count;
  }
}

void CBuffer::Reserve(std::uint64_t extra) {
  if (!PrepareWrite()) return;
  if (fMemory && extra > fSwapSize) SwapOut();
  if (fMemory) fMemory->Reserve(extra);
}

bool CBuffer::Insert(std::uint64_t position, const void* data, std::uint64_t length) {
  if (position > GetSize() || (!data && length > 0)) return false;
  std::vector<char> copy;
  data = Detached(data, length, copy);
  if (!BringToMemory()) return false;
  fMemory->Insert(position, data, length);
  return true;
}

std::uint64_t CBuffer::Erase(std::uint64_t position, std::uint64_t length) {
  const std::uint64_t size = GetSize();
  if (position >= size || !BringToMemory()) return 0;
  length = std::min(length, size - position);
  fMemory->Erase(position, length);
  CutPlaces();
  return length;
}

bool CBuffer::Assign(const void* data, std::uint64_t length) {
  if (!data && length > 0) return false;
  std::vector<char> copy;
  data = Detached(data, length, copy);
  if (!PrepareWrite()) return false;
  const bool isAssigned =
      ChangeOnDisk(length >= fSwapSize, [&] { return fStore->Assign(data, length); });
  CutPlaces();
  return isAssigned;
}

bool CBuffer::Overwrite(std::uint64_t position, const void* data, std::uint64_t length) {
  const std::uint64_t size = GetSize();
  if (position > size || length > size - position || (!data && length > 0)) return false;
  std::vector<char> copy;
  data = Detached(data, length, copy);
  if (!PrepareWrite()) return false;
  SwapOutBeyond(0);
  return fStore->WriteAt(position, data, length);
}

// ---- filling in place

void* CBuffer::GetWriteSpace(std::size_t* available, std::size_t need) {
  if (available) *available = 0;
  fWriteBlock.clear();
  if (!PrepareWrite()) return nullptr;
  SwapOutBeyond(need);
  if (fMemory) {
    fMemory->Reserve(need);
    if (available) *available = fMemory->Spare();
    return fMemory->End();
  }
  try {
    fWriteBlock = std::vector<char>(need);
  } catch (const std::exception&) {
    return nullptr;  // the need is the caller's word, and may be any number
  }
  if (available) *available = need;
  return fWriteBlock.data();
}

void CBuffer::CommitWrite(std::size_t length) {
  if (!PrepareWrite()) return;
  const std::vector<char> block = std::exchange(fWriteBlock, {});
  if (!block.empty()) {
    fStore->Append(block.data(), std::min<std::uint64_t>(length, block.size()));
  } else if (fMemory) {
    fMemory->Commit(length);
  }
  CutPlaces();
}

char* CBuffer::GetChunkFrame(std::size_t* frameLength, std::size_t payload) {
  if (!fMemory || !MakePrivate() || !fMemory) return nullptr;
  return fMemory->FrameChunk(frameLength, payload);
}

// ---- places

std::int64_t CBuffer::Seek(std::uint64_t& place, std::int64_t offset, int origin) {
  const std::uint64_t size = GetSize();
  std::uint64_t base = 0;
  if (origin == CFile::kRelative && place != kNone) base = place;
  if (origin == CFile::kFromEnd) base = size;
  if (fFrozen || origin < CFile::kFromStart || origin > CFile::kFromEnd) return -1;
  const bool isBackward = offset < 0;
  const std::uint64_t distance = isBackward ? std::uint64_t{0} - static_cast<std::uint64_t>(offset)
                                            : static_cast<std::uint64_t>(offset);
  if (isBackward ? distance > base : base > size || distance > size - base) return -1;
  place = isBackward ? base - distance : base + distance;
  return static_cast<std::int64_t>(place);
}

std::int64_t CBuffer::SeekRead(std::int64_t offset, int origin) {
  const std::int64_t place = Seek(fReadPos, offset, origin);
  if (place < 0) return place;
  fCompanion = '\0';
  fMetEnd = false;
  return place;
}

std::int64_t CBuffer::SeekWrite(std::int64_t offset, int origin) {
  return Seek(fWritePos, offset, origin);
}

std::uint64_t CBuffer::Read(void* destination, std::uint64_t length) {
  if (fFrozen || !destination) return 0;
  if (fReadPos == kNone) fReadPos = 0;
  const std::uint64_t count = fStore->ReadAt(fReadPos, destination, length);
  fReadPos += count;
  fMetEnd = fFile && count < length;
  if (count > 0) fCompanion = '\0';
  return count;
}

std::uint64_t CBuffer::Write(const void* source, std::uint64_t length) {
  if (!source) return 0;
  std::vector<char> copy;
  source = Detached(source, length, copy);
  if (!PrepareWrite()) return 0;
  if (fWritePos == kNone) fWritePos = 0;
  CutPlaces();  // the end of a shared file may have come nearer
  const std::uint64_t behind = fStore->GetSize() - fWritePos;
  const bool isForDisk = length > behind && fMemory && !IsWithinSwapSize(length - behind);
  const auto write = [&] { return fStore->WriteAt(fWritePos, source, length); };
  if (!ChangeOnDisk(isForDisk, write)) return 0;
  fWritePos += length;
  return length;
}

bool CBuffer::IsAtEnd() {
  if (fFile) return fMetEnd;
  return fMemory->GetSize() - fReadPos == 1;
}

void* GetBufferPtrSizeLimit(Selvane::IBuffer& buffer, std::uint64_t limit) {
  if (void* pointer = buffer.GetBufferPtr()) return pointer;
  if (buffer.GetSize() > limit) {
    qxDebugPrint(1, "CBuffer::GetBufferPtrSizeLimit",
                 "Buffer-size is beyond limit for swapping in");
    return nullptr;
  }
  if (!buffer.SwapIn()) {
    qxDebugPrint(1, "CBuffer::GetBufferPtrSizeLimit", "Could not swap to memory!");
    return nullptr;
  }
  return buffer.GetBufferPtr();
}
