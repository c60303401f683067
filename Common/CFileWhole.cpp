#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <vector>

#include "Common/CFile.h"
#include "Common/IBuffer.h"
#include "Common/RaiseError.h"
#include "Libs/Platform/ErrorTexts.h"
#include "Libs/Platform/Files.h"

// The operations of CFile on whole files: rename, move, copy, and the write that replaces a file in
// one step.

qxSource("Common\\CFile");

namespace {

constexpr std::size_t kBlockSize = std::size_t{64} << 10;

// Why a step of a copy failed; no text is success.
struct CopyFailure {
  std::string text;
  int code = 0;

  bool IsNone() const { return text.empty(); }
};

CopyFailure FailedStep(const char* step, int code) {
  return {step + ErrnoText(code), code};
}

CopyFailure OpenSource(CFileDescriptor& source, const std::string& path) {
  int code = source.OpenForReading(path);
  if (code == 0) return {};
  if (code != EPERM) return FailedStep("open source failed - ", code);
  code = source.OpenForReading(path);
  return code == 0 ? CopyFailure{} : FailedStep("fallback open source failed - ", code);
}

// Copies through a block what the system did not move by itself.
CopyFailure CopyBytes(const CFileDescriptor& source, const CFileDescriptor& target,
                      std::uint64_t size) {
  std::uint64_t copied = 0;
  if (const int code = source.SendTo(target, copied)) {
    return FailedStep("could not write - ", code);
  }
  std::vector<char> block(kBlockSize);
  for (;;) {
    std::size_t taken = 0;
    const int readCode = source.Read(block.data(), block.size(), taken);
    if (taken == 0 && copied == 0 && size > 0) return {"could not read anything from source", EIO};
    if (readCode != 0) return FailedStep("could not read - ", readCode);
    if (taken == 0) return {};
    if (const int code = target.Write(block.data(), taken)) {
      return FailedStep("could not write - ", code);
    }
    copied += taken;
  }
}

CopyFailure CopyContents(const std::string& from, const std::string& to, bool overwrite) {
  CFileDescriptor source, target;
  if (CopyFailure failure = OpenSource(source, from); !failure.IsNone()) return failure;
  FileStatus sourceStatus, targetStatus;
  if (const int code = source.Status(sourceStatus)) {
    return FailedStep("fstat source failed - ", code);
  }
  if (const int code = target.OpenForWriting(to, sourceStatus.permissions, overwrite)) {
    return FailedStep("open destination failed - ", code);
  }
  // Cutting the target would empty a source that is the same file, and nothing could be read.
  const bool isSame =
      target.Status(targetStatus) == 0 && targetStatus.identity == sourceStatus.identity;
  if (isSame && sourceStatus.size > 0) return {"could not read anything from source", EIO};
  if (!isSame) {
    const int code = targetStatus.size > 0 ? target.Truncate() : 0;
    if (code != 0) return FailedStep("open destination failed - ", code);
  }
  if (CopyFailure failure = CopyBytes(source, target, sourceStatus.size); !failure.IsNone()) {
    return failure;
  }
  if (const int code = target.Close()) return FailedStep("close destination failed - ", code);
  return {};
}

CopyFailure Copy(const CFSPath& from, const CFSPath& to, bool overwrite, bool checkSame) {
  if (checkSame && CFile::AreSame(from, to)) {
    return {"Source and destination are the same", EINVAL};
  }
  return CopyContents(from.String(), to.String(), overwrite);
}

void ReportMove(const char* step, const CFSPath& from, const CFSPath& to, int code) {
  qxReportError(ErrorId::OS, "CFile::Move",
                {{"function", std::string(step) + " for move (old name: " + from.String() +
                                  ", new name: " + to.String() + ")"},
                 {"code", code},
                 {"string", OSErrorText(code)}});
}

// Gives the bytes of a file to be written: puts up to size of them into the block, and tells how
// many; 0 at the end. A source that cannot give all its bytes says so by false.
using ByteSource = std::function<bool(char* block, std::size_t size, std::size_t& taken)>;

// The error code, or 0; so are those below.
int WriteAll(std::FILE* stream, const ByteSource& source) {
  std::vector<char> block(kBlockSize);
  for (;;) {
    std::size_t taken = 0;
    if (!source(block.data(), block.size(), taken)) return EIO;
    if (taken == 0) return SyncStream(stream);
    if (std::fwrite(block.data(), 1, taken, stream) != taken) return errno;
  }
}

// Fills a stream that is closed in any case.
int FillAndClose(std::FILE* stream, const FileStatus* old, const ByteSource& source) {
  std::setvbuf(stream, nullptr, _IONBF, 0);  // it is fed in blocks
  int code = old ? SetPermissions(stream, old->permissions) : 0;
  if (code == 0) code = WriteAll(stream, source);
  const int closeCode = std::fclose(stream) == 0 ? 0 : errno;
  return code != 0 ? code : closeCode;
}

// Fills the sibling and puts it in the target's place; nothing of it stays otherwise.
int WriteThroughSibling(const std::string& target, const ByteSource& source) {
  if (target.empty()) return ENOENT;
  const std::string sibling = target + ".write_temp";
  FileStatus old;
  const bool isReplacement = StatusOf(target, old) == 0 && !old.isDirectory;

  int code = 0;
  std::FILE* stream = ClaimStream(sibling, isReplacement ? 0600 : 0666, code);
  if (!stream) return code;
  CFileDescriptor claim;  // keeps the sibling ours while the stream is closed, up to the rename
  const int claimCode = claim.OpenSame(stream);
  code = FillAndClose(stream, isReplacement ? &old : nullptr, source);
  if (claimCode != 0) code = claimCode;
  if (code == 0) code = RenameFile(sibling, target, true);
  if (code != 0) RemoveFile(sibling);
  return code;
}

bool ReplaceFile(CFSPath path, const ByteSource& source, int* error) {
  path.Normalize();
  const std::string& target = path.String();
  const int code = WriteThroughSibling(target, source);
  if (code != 0) {
    if (error) *error = code;
    qxDebugPrint(
        1, "CFile::WriteFile",
        "failed to write '" << target << "', errno: '" << code << "' - " << ErrnoText(code));
    return false;
  }
  if (const int syncCode = SyncFolderOf(target)) {
    qxDebugPrint(
        1, "CFile::WriteFile",
        "'" << target << "' was written, but its folder not synced: " << ErrnoText(syncCode));
  }
  return true;
}

}  // namespace

void CFile::Rename(const CFSPath& from, const CFSPath& to, bool overwrite) {
  if (const int code = RenameFile(from.String(), to.String(), overwrite)) {
    qxRaiseError(ErrorId::OS, "CFile::Rename",
                 {{"function", "MoveFile"}, {"code", code}, {"string", OSErrorText(code)}});
  }
}

bool CFile::Move(const CFSPath& from, const CFSPath& to, bool overwrite) {
  if (RenameFile(from.String(), to.String(), overwrite) == 0) return true;
  if (const CopyFailure failure = Copy(from, to, true, true); !failure.IsNone()) {
    ReportMove("copy", from, to, failure.code);
    return false;
  }
  const int code = RemoveFile(from.String());
  if (code != 0) ReportMove("delete", from, to, code);
  return code == 0;
}

bool CFile::CopyFile(const CFSPath& from, const CFSPath& to, bool overwrite, bool checkSame,
                     std::string* error) {
  const CopyFailure failure = Copy(from, to, overwrite, checkSame);
  if (!failure.IsNone() && error) *error = "CopyFile failed - " + failure.text;
  return failure.IsNone();
}

bool CFile::WriteFile(const CFSPath& path, const void* bytes, std::size_t size, int* error) {
  const char* next = static_cast<const char*>(bytes);
  std::size_t rest = size;
  const auto source = [&](char* block, std::size_t room, std::size_t& taken) {
    taken = std::min(rest, room);
    if (taken > 0) std::memcpy(block, next, taken);
    next += taken;
    rest -= taken;
    return true;
  };
  return ReplaceFile(path, source, error);
}

bool CFile::WriteFile(const CFSPath& path, std::string_view text, int* error) {
  return WriteFile(path, text.data(), text.size(), error);
}

bool CFile::WriteFile(const CFSPath& path, const CUnicodeString& text, int* error) {
  return WriteFile(path, text.Text().Bytes(), error);
}

bool CFile::WriteFile(const CFSPath& path, Selvane::IBuffer* buffer, int* error) {
  if (!buffer || buffer->IsFrozen()) {  // a frozen one shows no bytes
    if (error) *error = EINVAL;
    return false;
  }
  const std::int64_t position = buffer->GetReadPosition();
  std::uint64_t rest = buffer->GetSize();
  buffer->SeekRead(0, kFromStart);
  const auto source = [&](char* block, std::size_t room, std::size_t& taken) {
    const std::uint64_t wanted = std::min<std::uint64_t>(rest, room);
    taken = static_cast<std::size_t>(buffer->Read(block, wanted));
    rest -= taken;
    return taken == wanted;
  };
  const bool isWritten = ReplaceFile(path, source, error);
  buffer->SeekRead(std::max<std::int64_t>(position, 0), kFromStart);
  return isWritten;
}
