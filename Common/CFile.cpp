#include "Common/CFile.h"

#include <algorithm>
#include <cerrno>

#include "Common/RaiseError.h"
#include "Libs/Platform/ErrorTexts.h"
#include "Libs/Platform/Files.h"

qxSource("Common\\CFile");

namespace {

// What the C library calls a mode; null for one that neither reads nor writes.
const char* StreamMode(std::uint32_t mode) {
  const bool appends = (mode & CFile::App) != 0;
  switch (mode & (CFile::In | CFile::Out)) {
    case CFile::In:
      return "rb";
    case CFile::Out:
      return appends ? "ab" : "wb";
    case CFile::In | CFile::Out:
      if ((mode & CFile::Trunc) != 0) return "w+b";
      return appends ? "a+b" : "r+b";
    default:
      return nullptr;
  }
}

std::string ModeText(std::uint32_t mode) {
  static constexpr const char* kNames[] = {"std::ios::in",  "std::ios::out",   "std::ios::ate",
                                           "std::ios::app", "std::ios::trunc", "std::ios::binary"};
  std::string text;
  std::uint32_t bit = 1;
  for (const char* name : kNames) {
    if ((mode & bit) != 0) text.append(text.empty() ? "" : " | ").append(name);
    bit <<= 1;
  }
  return text;
}

}  // namespace

CFile::CFile(const CFSPath& path) : fPath(MakeUseCounted<CUnicodeString>(path.String())) {}

CFile::~CFile() {
  Close();
}

bool CFile::Open(std::uint32_t mode, int* error) {
  if (fStream) return true;
  const CFSPath path = GetPath();
  const char* streamMode = StreamMode(mode);
  int code = EINVAL;
  std::FILE* stream = streamMode ? OpenStream(path.String(), streamMode, code) : nullptr;
  if (TakeStream(stream, mode)) return true;

  if (error) *error = code;
  qxDebugPrint(1, "CFile::Open",
               "failed to open '" << path.String() << "' with mode: '" << ModeText(mode)
                                  << "', errno: '" << code << "' - " << ErrnoText(code));
  return false;
}

bool CFile::Create(std::uint32_t permissions, int* error) {
  if (fStream) return true;
  int code = 0;
  std::FILE* stream = CreateStream(GetPath().String(), permissions, code);
  if (error) *error = code;
  return TakeStream(stream, In | Out | Binary);
}

bool CFile::Reopen(int* error) {
  if (fStream) return true;
  int code = 0;
  std::FILE* stream = ReopenStream(GetPath().String(), code);
  if (error) *error = code;
  return TakeStream(stream, In | Out | Binary);
}

bool CFile::TakeStream(std::FILE* stream, std::uint32_t mode) {
  if (!stream) return false;
  fStream = stream;
  fMode = mode & (In | Out);
  fSizeValid = false;
  fLastMove = Direction::None;
  fAppends =
      (mode & (Out | App | Trunc)) == (Out | App) || (mode & (In | Out | App)) == (Out | App);
  const bool isAtEnd = (mode & (Ate | App)) != 0 && SeekStream(stream, 0, SEEK_END);
  fPosition = isAtEnd ? TellStream(stream) : 0;
  fReadPosition = fPosition;
  fWritePosition = fPosition;
  return true;
}

void CFile::StopBuffering() {
  if (fStream) std::setvbuf(fStream, nullptr, _IONBF, 0);
}

bool CFile::Flush() {
  return !fStream || (fMode & Out) == 0 || std::fflush(fStream) == 0;
}

bool CFile::Close() {
  if (!fStream) return true;
  const bool isFlushed = Flush();
  const bool isClosed = std::fclose(fStream) == 0;
  fStream = nullptr;
  fMode = 0;
  fSizeValid = false;
  return isFlushed && isClosed;
}

void CFile::SetPath(const CFSPath& path) {
  Close();
  fSizeValid = false;
  fPath = MakeUseCounted<CUnicodeString>(path.String());
  fReadPosition = fWritePosition = fPosition = -1;
}

// Brings the stream to the place for the next read or write. The C library wants a seek between the
// two even where the place is the same, and before it looks behind an end that it has met.
bool CFile::Prepare(Direction direction, std::int64_t& position) {
  position = std::max<std::int64_t>(position, 0);
  const bool turns = fLastMove != Direction::None && fLastMove != direction;
  fLastMove = direction;
  if (!turns && fPosition == position && !IsAtEnd()) return true;
  fPosition = SeekStream(fStream, position, SEEK_SET) ? position : -1;
  return fPosition == position;
}

void CFile::Advance(std::int64_t& position, std::size_t count) {
  position += static_cast<std::int64_t>(count);
  fPosition = std::ferror(fStream) ? -1 : position;
  std::clearerr(fStream);
}

std::size_t CFile::Read(void* buffer, std::size_t length) {
  if (!fStream || (fMode & In) == 0 || length == 0) return 0;
  if (!Prepare(Direction::Reading, fReadPosition)) return 0;
  const std::size_t count = std::fread(buffer, 1, length, fStream);
  fReadPosition += static_cast<std::int64_t>(count);
  fPosition = std::ferror(fStream) ? -1 : fReadPosition;
  return count;
}

std::size_t CFile::Write(const void* buffer, std::size_t length) {
  if (!fStream || (fMode & Out) == 0 || length == 0) return 0;
  if (!Prepare(Direction::Writing, fWritePosition)) return 0;
  fSizeValid = false;
  const std::size_t count = std::fwrite(buffer, 1, length, fStream);
  Advance(fWritePosition, count);
  if (fAppends) fWritePosition = fPosition = TellStream(fStream);
  return count;
}

std::int64_t CFile::Seek(std::int64_t& position, std::int64_t offset, int origin) {
  if (!fStream || origin < kFromStart || origin > kFromEnd) return -1;
  std::int64_t base = 0;
  if (origin == kRelative) base = std::max<std::int64_t>(position, 0);
  if (origin == kFromEnd) {
    fSizeValid = false;  // others may have moved the end
    base = GetSize();
  }
  std::int64_t target = 0;
  if (__builtin_add_overflow(base, offset, &target) || target < 0) return -1;
  if (!SeekStream(fStream, target, SEEK_SET)) return -1;
  fLastMove = Direction::None;
  return position = fPosition = target;
}

std::int64_t CFile::SeekRead(std::int64_t offset, int origin) {
  return Seek(fReadPosition, offset, origin);
}

std::int64_t CFile::SeekWrite(std::int64_t offset, int origin) {
  return Seek(fWritePosition, offset, origin);
}

bool CFile::IsAtEnd() const {
  return fStream && std::feof(fStream) != 0;
}

std::int64_t CFile::GetSize() {
  if (fSizeValid) return fCachedSize;
  FileStatus status;
  Flush();
  const int error = fStream ? StatusOf(fStream, status) : StatusOf(GetPath().String(), status);
  if (error != 0) return 0;
  fCachedSize = static_cast<std::int64_t>(status.size);
  fSizeValid = true;
  return fCachedSize;
}

bool CFile::SetSize(std::int64_t length) {
  if (length < 0) return false;
  const auto size = static_cast<std::uint64_t>(length);
  fSizeValid = false;
  const bool isSet = fStream ? Flush() && ResizeStream(fStream, size) == 0
                             : ResizeFile(GetPath().String(), size) == 0;
  if (!isSet) return false;
  fCachedSize = length;
  fSizeValid = true;
  return true;
}

// What was read ahead before the lock may be old by now.
void CFile::Lock() {
  if (!fStream) return;
  if (const int code = LockStream(fStream)) {
    qxRaiseError(ErrorId::OS, "CFile::Lock",
                 {{"function", "LockFileEx(" + GetPath().String() + ")"},
                  {"code", code},
                  {"string", OSErrorText(code)}});
  }
  std::fflush(fStream);
  fPosition = -1;
  fLastMove = Direction::None;
  fSizeValid = false;
}

// What was written under the lock is there for whoever gets it next.
void CFile::Unlock() {
  if (!fStream) return;
  Flush();
  if (const int code = UnlockStream(fStream)) {
    qxRaiseError(ErrorId::OS, "CFile::Unlock",
                 {{"function", "UnlockFileEx(" + GetPath().String() + ")"},
                  {"code", code},
                  {"string", OSErrorText(code)}});
  }
}

bool CFile::Delete() {
  if (fStream) return false;
  fSizeValid = false;
  return Delete(GetPath());
}

bool CFile::Delete(const CFSPath& path) {
  return RemoveFile(path.String()) == 0;
}

bool CFile::IsRelativeUnsafe(const CFSPath& path) {
  const std::string& text = path.String();
  return text.find("../") != std::string::npos || text.find("..\\") != std::string::npos;
}

bool CFile::AreSame(const CFSPath& first, const CFSPath& second) {
  FileStatus a, b;
  return StatusOf(first.String(), a) == 0 && StatusOf(second.String(), b) == 0 &&
         a.identity == b.identity;
}
