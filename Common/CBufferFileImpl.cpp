#include "Common/CBufferFileImpl.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <functional>
#include <limits>
#include <new>
#include <vector>

#include "Common/CChunkVisitors.h"
#include "Common/CDirectory.h"
#include "Common/DebugLog.h"
#include "Libs/Platform/ErrorTexts.h"
#include "Libs/Platform/Files.h"
#include "host/HostSlot.h"

qxSource("Common\\CBufferFileImpl");

namespace {

constexpr std::uint32_t kReadMode = CFile::Binary | CFile::In;
constexpr std::uint32_t kWriteMode = CFile::Binary | CFile::In | CFile::Out;
constexpr std::uint32_t kFirstWriteMode = kWriteMode | CFile::App;  // makes what is not there

constexpr std::uint64_t kGapWorthClosing = std::uint64_t{1} << 20;

constexpr int kNamesTried = 10000;
constexpr int kHostNamesTried = 10;

// Names count on through the life of the process; which are free, only creating them tells.
std::atomic<std::uint64_t> gNextName{0};

CFSPath NextOwnName() {
  const std::uint64_t number = gNextName.fetch_add(1, std::memory_order_relaxed);
  return CDirectory::GetTempPath() / ("qztmpfile" + std::to_string(number));
}

// The name that the host's service gives; empty when it gives none.
CFSPath NextHostName() {
  const auto host = Tovrin::GetHost();
  if (!host) return {};
  char path[4096] = {};
  char directory[4096] = {};
  std::uint32_t flags = 0;
  try {
    if (!host->GetTemporaryFile(path, sizeof path, directory, sizeof directory, &flags)) return {};
  } catch (...) {
    return {};  // a host that fails is one without the service
  }
  path[sizeof path - 1] = '\0';
  directory[sizeof directory - 1] = '\0';
  const CFSPath name(path);
  return name.IsEmpty() || name.StartsWithSeparator() ? name : CFSPath(directory) / name;
}

// Tries names until a file could be created under one of them: what is there already, be it
// another's file or a link laid out as a trap, is passed over.
template <class NextName>
bool CreateUnderSomeName(CFile& file, int tries, NextName nextName) {
  for (; tries > 0; --tries) {
    const CFSPath name = nextName();
    if (name.IsEmpty()) return false;
    int error = 0;
    file.SetPath(name);
    if (file.Create(0600, &error)) return true;
    if (error != EEXIST) return false;
  }
  return false;
}

}  // namespace

CBufferFileImpl::CBufferFileImpl(const CFSPath& path, std::uint32_t mode, bool deleteAtClose)
    : fPath(path), fFile(path), fMode(mode), fDeleteAtClose(deleteAtClose) {}

CBufferFileImpl::~CBufferFileImpl() {
  Close();
  if (fDeleteAtClose) CFile::Delete(fPath);
}

std::unique_ptr<CBufferFileImpl> CBufferFileImpl::CreateTemporary() {
  std::unique_ptr<CBufferFileImpl> store(new CBufferFileImpl({}, kWriteMode, false));
  CFile& file = store->fFile;
  if (!CreateUnderSomeName(file, kHostNamesTried, NextHostName) &&
      !CreateUnderSomeName(file, kNamesTried, NextOwnName)) {
    return nullptr;
  }
  store->fPath = file.GetPath();
  store->fDeleteAtClose = true;
  file.StopBuffering();
  return store;
}

std::unique_ptr<CBufferFileImpl> CBufferFileImpl::Open(const CFSPath& path, bool writable,
                                                       int* error) {
  std::unique_ptr<CBufferFileImpl> store(
      new CBufferFileImpl(path, writable ? kWriteMode : kReadMode, false));
  if (writable) {
    // A stream that appends would do so wherever it is told to write.
    if (!store->fFile.Open(kFirstWriteMode, error)) return nullptr;
    store->fFile.Close();
  }
  if (!store->fFile.Open(store->fMode, error)) return nullptr;
  store->fFile.StopBuffering();
  store->fFileSize = static_cast<std::uint64_t>(store->fFile.GetSize());
  return store;
}

// Looks at the file each time: a view of what others have cut off would end the process.
void* CBufferFileImpl::GetPointer() {
  const bool hasBytes = GetSize() > 0 && HasAllBytes();
  const bool isMapped = hasBytes && (fView.Data() || fView.Map(fFile.Stream()));
  if (!isMapped || fView.Size() < fFileSize) {
    fView.Unmap();
    return nullptr;
  }
  return const_cast<char*>(fView.Data() + fDataStart);
}

std::uint64_t CBufferFileImpl::ReadAt(std::uint64_t offset, void* destination,
                                      std::uint64_t length) {
  if (offset > GetSize()) return 0;
  const std::uint64_t wanted = std::min(length, GetSize() - offset);
  const auto place = static_cast<std::int64_t>(fDataStart + offset);
  if (fFile.GetReadPosition() != place && fFile.SeekRead(place, CFile::kFromStart) < 0) return 0;
  return fFile.Read(destination, wanted);
}

bool CBufferFileImpl::WriteRaw(std::uint64_t place, const void* data, std::uint64_t length) {
  return length == 0 ||
         (fFile.SeekWrite(static_cast<std::int64_t>(place), CFile::kFromStart) >= 0 &&
          fFile.Write(data, length) == length);
}

// What lies behind the end goes first: it alone can lack room, and then it can be cut off again.
bool CBufferFileImpl::WriteAt(std::uint64_t offset, const void* data, std::uint64_t length) {
  constexpr auto kLongest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  const std::uint64_t place = fDataStart + offset;
  if (!fFile.IsOpen() || length > kLongest - place) return false;
  Unmap();
  const auto* bytes = static_cast<const char*>(data);
  const std::uint64_t inside = std::min(length, fFileSize - place);
  if (!WriteRaw(fFileSize, bytes + inside, length - inside)) {
    fFile.SetSize(static_cast<std::int64_t>(fFileSize));
    return false;
  }
  fFileSize = std::max(fFileSize, place + length);
  return WriteRaw(place, bytes, inside);
}

bool CBufferFileImpl::Append(const void* data, std::uint64_t length) {
  return WriteAt(GetSize(), data, length);
}

bool CBufferFileImpl::Assign(const void* data, std::uint64_t length) {
  if (!WriteAt(0, data, length)) return false;
  const std::uint64_t end = fDataStart + length;
  if (length == 0) {
    Empty();
  } else if (end < fFileSize && fFile.SetSize(static_cast<std::int64_t>(end))) {
    fFileSize = end;
  }
  return GetSize() == length;
}

void CBufferFileImpl::Empty() {
  Unmap();
  fDataStart = fFile.SetSize(0) ? 0 : fFileSize;
  fFileSize = fDataStart;
}

void CBufferFileImpl::RemoveFront(std::uint64_t count) {
  fDataStart += count;
  if (fDataStart == fFileSize) {
    Empty();
  } else if (fDeleteAtClose && fDataStart >= std::max(kGapWorthClosing, GetSize())) {
    CloseGap();
  }
}

// The gap is as long as the payload at least: a move that fails has written over none of it.
void CBufferFileImpl::CloseGap() {
  const std::uint64_t size = GetSize();
  Unmap();
  if (MoveToFront(size) && fFile.SetSize(static_cast<std::int64_t>(size))) {
    fFileSize = size;
    fDataStart = 0;
  }
}

bool CBufferFileImpl::MoveToFront(std::uint64_t size) {
  constexpr int kMostFailures = 10;  // in a row
  std::vector<char> block(kStoreBlockSize);
  int failures = 0;
  for (std::uint64_t moved = 0; moved < size;) {
    const std::uint64_t count =
        ReadAt(moved, block.data(), std::min<std::uint64_t>(block.size(), size - moved));
    if (count > 0 && WriteRaw(moved, block.data(), count)) {
      moved += count;
      failures = 0;
    } else if (++failures > kMostFailures) {
      return false;
    }
  }
  return true;
}

void CBufferFileImpl::Clear(std::uint64_t) {
  Empty();
}

bool CBufferFileImpl::Holds(const void* pointer) const {
  const auto* byte = static_cast<const char*>(pointer);
  return fView.Data() && !std::less<>()(byte, fView.Data()) &&
         std::less<>()(byte, fView.Data() + fView.Size());
}

// A piece that is short in the middle would shift every offset behind it, so each is filled.
void CBufferFileImpl::Visit(AChunkVisitor& visitor, std::uint64_t start, std::uint64_t length) {
  if (start >= GetSize()) return;
  length = std::min(length, GetSize() - start);
  const std::size_t wanted = visitor.GetChunkSize();
  const std::size_t chunkSize = wanted != 0 ? wanted : AChunkVisitor::kDefaultChunkSize;
  std::vector<char> chunk;
  try {
    chunk.resize(static_cast<std::size_t>(std::min<std::uint64_t>(chunkSize, length)));
  } catch (const std::exception&) {
    qxDebugPrint(1, "CBufferFileImpl::VisitBuffer", "Error allocating memory in buffer");
    return;
  }
  bool more = true;
  while (length > 0 && more) {
    const std::uint64_t count = std::min<std::uint64_t>(chunk.size(), length);
    errno = 0;
    if (ReadAt(start, chunk.data(), count) != count) {
      const int error = errno;
      qxDebugPrint(1, "CBufferFileImpl::VisitBuffer",
                   "Error while reading file: " << ErrnoText(error));
      return;
    }
    visitor.Visit(chunk.data(), count, chunkSize, more);
    start += count;
    length -= count;
  }
}

bool CBufferFileImpl::HasAllBytes() {
  FileStatus status;
  return fFile.IsOpen() && StatusOf(fFile.Stream(), status) == 0 && status.size >= fFileSize;
}

void CBufferFileImpl::Close() {
  Unmap();
  fFile.Close();
}

bool CBufferFileImpl::Reopen() {
  if (!(fDeleteAtClose ? fFile.Reopen() : fFile.Open(fMode))) return false;
  fFile.StopBuffering();
  // What others cut off is gone; what they added is taken by ReloadSize alone.
  fFileSize = std::min(fFileSize, static_cast<std::uint64_t>(fFile.GetSize()));
  fDataStart = std::min(fDataStart, fFileSize);
  return true;
}

void CBufferFileImpl::ReloadSize() {
  FileStatus status;
  fFileSize = StatusOf(fPath.String(), status) == 0 ? status.size : 0;
  fDataStart = std::min(fDataStart, fFileSize);
}
