#include "Libs/Platform/Files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <string_view>

namespace {

// Calls again while a signal interrupts; the error code, or 0.
template <class Call>
int Retried(Call call) {
  while (call() < 0) {
    if (errno != EINTR) return errno;
  }
  return 0;
}

int CodeOf(int result) {
  return result == 0 ? 0 : errno;
}

FileStatus StatusFrom(const struct stat& data) {
  FileStatus status;
  status.size = static_cast<std::uint64_t>(data.st_size);
  status.permissions = data.st_mode & 0777;
  status.isDirectory = S_ISDIR(data.st_mode);
  status.identity = {data.st_dev, data.st_ino};
  return status;
}

int StatusOfDescriptor(int descriptor, FileStatus& status) {
  struct stat data = {};
  if (fstat(descriptor, &data) != 0) return errno;
  status = StatusFrom(data);
  return 0;
}

int OpenDescriptor(const std::string& path, int flags, mode_t permissions, int& descriptor) {
  return Retried(
      [&] { return descriptor = open(SystemPath(path), flags | O_CLOEXEC, permissions); });
}

std::FILE* StreamFrom(const std::string& path, int flags, mode_t permissions, int& error) {
  int descriptor = -1;
  error = OpenDescriptor(path, flags, permissions, descriptor);
  if (error != 0) return nullptr;
  std::FILE* stream = fdopen(descriptor, "r+b");
  if (stream) return stream;
  error = errno;
  close(descriptor);
  return nullptr;
}

// The folder part of a path, and its last name; trailing slashes belong to neither.
struct PathParts {
  std::string folder;
  std::string_view name;
};

PathParts Split(const std::string& path) {
  const std::size_t end = path.find_last_not_of('/') + 1;  // 0 for nothing but slashes
  const std::string_view whole = std::string_view(path).substr(0, end);
  const std::size_t slash = whole.rfind('/');
  if (slash == std::string_view::npos) return {".", whole};
  return {std::string(whole.substr(0, slash == 0 ? 1 : slash)), whole.substr(slash + 1)};
}

bool AreOneEntry(const std::string& first, const std::string& second) {
  const PathParts a = Split(first);
  const PathParts b = Split(second);
  FileStatus folderOfA, folderOfB;
  return a.name == b.name && StatusOf(a.folder, folderOfA) == 0 &&
         StatusOf(b.folder, folderOfB) == 0 && folderOfA.identity == folderOfB.identity;
}

bool LinkStatus(const std::string& path, struct stat& data) {
  return lstat(SystemPath(path), &data) == 0;
}

bool IsSameInode(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

int RenameOver(const std::string& from, const std::string& to) {
  struct stat before = {}, target = {};
  const bool isLinked = LinkStatus(from, before) && LinkStatus(to, target) &&
                        IsSameInode(before, target) && !AreOneEntry(from, to);
  if (rename(SystemPath(from), SystemPath(to)) != 0) return errno;
  // The system does nothing for two names of one file, and calls that success.
  return isLinked ? RemoveFile(from) : 0;
}

// Where the system has no rename that refuses to replace: not one step for a file, and for a folder
// a look before.
int RenameInTwoSteps(const std::string& from, const std::string& to, bool isFolder) {
  if (!isFolder) {
    if (link(SystemPath(from), SystemPath(to)) != 0) return errno;
    return RemoveFile(from);
  }
  struct stat target = {};
  if (LinkStatus(to, target)) return EEXIST;
  return CodeOf(rename(SystemPath(from), SystemPath(to)));
}

#ifdef RENAME_NOREPLACE
int RenameWithoutReplacing(const std::string& from, const std::string& to, bool isFolder) {
  const char* const source = SystemPath(from);
  if (renameat2(AT_FDCWD, source, AT_FDCWD, SystemPath(to), RENAME_NOREPLACE) == 0) return 0;
  // EINVAL is also the C library's word for a system that has no such call, and of a folder that is
  // to go into itself, which the second way will say again.
  const bool isUnknown = errno == ENOSYS || errno == EINVAL;
  return isUnknown ? RenameInTwoSteps(from, to, isFolder) : errno;
}
#else
int RenameWithoutReplacing(const std::string& from, const std::string& to, bool isFolder) {
  return RenameInTwoSteps(from, to, isFolder);
}
#endif

// Whether the name still leads to what is open.
bool IsStillAt(const std::string& path, int descriptor) {
  struct stat named = {}, opened = {};
  return LinkStatus(path, named) && fstat(descriptor, &opened) == 0 && IsSameInode(named, opened);
}

// Removes what a writer left behind when it died. A file is removed under its lock alone, so what
// is locked and stands at its name is safe there.
int RemoveAbandoned(const std::string& path) {
  struct stat data = {};
  if (!LinkStatus(path, data)) return errno == ENOENT ? 0 : errno;
  if (!S_ISREG(data.st_mode)) return RemoveFile(path);
  int descriptor = -1;
  if (OpenDescriptor(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK, 0, descriptor) != 0) {
    return RemoveFile(path);  // nobody locks what cannot be opened
  }
  const bool isOurs = flock(descriptor, LOCK_EX | LOCK_NB) == 0 && IsStillAt(path, descriptor);
  const int error = isOurs ? RemoveFile(path) : EBUSY;
  close(descriptor);
  return error;
}

#ifdef __linux__
ssize_t MoveBytes(int from, int to) {
  constexpr std::size_t kAtOnce = std::size_t{1} << 30;
  return copy_file_range(from, nullptr, to, nullptr, kAtOnce, 0);
}
#else
ssize_t MoveBytes(int, int) {
  errno = ENOSYS;
  return -1;
}
#endif

bool IsFullDisk(int error) {
  return error == ENOSPC || error == EFBIG || error == EDQUOT || error == EIO;
}

}  // namespace

const char* SystemPath(const std::string& path) {
  return path.find('\0') == std::string::npos ? path.c_str() : "";
}

int StatusOf(const std::string& path, FileStatus& status) {
  struct stat data = {};
  if (stat(SystemPath(path), &data) != 0) return errno;
  status = StatusFrom(data);
  return 0;
}

int StatusOf(std::FILE* stream, FileStatus& status) {
  return StatusOfDescriptor(fileno(stream), status);
}

std::FILE* OpenStream(const std::string& path, const char* mode, int& error) {
  const std::string closedOnExec = std::string(mode) + "e";
  std::FILE* stream = nullptr;
  do {
    stream = std::fopen(SystemPath(path), closedOnExec.c_str());
    error = stream ? 0 : errno;
  } while (error == EINTR);
  if (!stream) return nullptr;

  // For reading the system opens folders gladly, and fails at the first byte.
  FileStatus status;
  if (StatusOf(stream, status) != 0 || !status.isDirectory) return stream;
  std::fclose(stream);
  error = EISDIR;
  return nullptr;
}

std::FILE* CreateStream(const std::string& path, std::uint32_t permissions, int& error) {
  return StreamFrom(path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, permissions, error);
}

std::FILE* ReopenStream(const std::string& path, int& error) {
  return StreamFrom(path, O_RDWR | O_NOFOLLOW, 0, error);
}

std::FILE* ClaimStream(const std::string& path, std::uint32_t permissions, int& error) {
  error = RemoveAbandoned(path);
  if (error != 0) return nullptr;
  std::FILE* stream = CreateStream(path, permissions, error);
  if (!stream) return nullptr;
  // Between the two somebody may have taken the new file for an abandoned one.
  if (flock(fileno(stream), LOCK_EX | LOCK_NB) == 0 && IsStillAt(path, fileno(stream))) {
    return stream;
  }
  std::fclose(stream);
  error = EBUSY;
  return nullptr;
}

bool SeekStream(std::FILE* stream, std::int64_t offset, int whence) {
  return fseeko(stream, static_cast<off_t>(offset), whence) == 0;
}

std::int64_t TellStream(std::FILE* stream) {
  return ftello(stream);
}

int ResizeStream(std::FILE* stream, std::uint64_t size) {
  if (size > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) return EFBIG;
  return Retried([&] { return ftruncate(fileno(stream), static_cast<off_t>(size)); });
}

int SetPermissions(std::FILE* stream, std::uint32_t permissions) {
  return CodeOf(fchmod(fileno(stream), permissions));
}

int SyncStream(std::FILE* stream) {
  if (std::fflush(stream) != 0) return errno;
  return Retried([&] { return fsync(fileno(stream)); });
}

int LockStream(std::FILE* stream) {
  return Retried([&] { return flock(fileno(stream), LOCK_EX); });
}

int UnlockStream(std::FILE* stream) {
  return Retried([&] { return flock(fileno(stream), LOCK_UN); });
}

int ResizeFile(const std::string& path, std::uint64_t size) {
  if (size > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) return EFBIG;
  return Retried([&] { return truncate(SystemPath(path), static_cast<off_t>(size)); });
}

int RemoveFile(const std::string& path) {
  return CodeOf(unlink(SystemPath(path)));
}

int RenameFile(const std::string& from, const std::string& to, bool overwrite) {
  struct stat source = {};
  const bool isFolder = LinkStatus(from, source) && S_ISDIR(source.st_mode);
  if (overwrite && !isFolder) return RenameOver(from, to);
  return RenameWithoutReplacing(from, to, isFolder);
}

int SyncFolderOf(const std::string& path) {
  int descriptor = -1;
  if (const int error = OpenDescriptor(Split(path).folder, O_RDONLY | O_DIRECTORY, 0, descriptor)) {
    return error;
  }
  const int error = Retried([&] { return fsync(descriptor); });
  close(descriptor);
  return error;
}

CFileDescriptor::~CFileDescriptor() {
  Close();
}

int CFileDescriptor::OpenForReading(const std::string& path) {
  if (const int error = OpenDescriptor(path, O_RDONLY, 0, fDescriptor)) return error;
  FileStatus status;
  return StatusOfDescriptor(fDescriptor, status) == 0 && status.isDirectory ? EISDIR : 0;
}

int CFileDescriptor::OpenForWriting(const std::string& path, std::uint32_t permissions,
                                    bool overwrite) {
  return OpenDescriptor(path, O_WRONLY | O_CREAT | (overwrite ? 0 : O_EXCL), permissions,
                        fDescriptor);
}

int CFileDescriptor::OpenSame(std::FILE* stream) {
  return Retried([&] { return fDescriptor = fcntl(fileno(stream), F_DUPFD_CLOEXEC, 0); });
}

int CFileDescriptor::Status(FileStatus& status) const {
  return StatusOfDescriptor(fDescriptor, status);
}

int CFileDescriptor::Truncate() {
  return Retried([&] { return ftruncate(fDescriptor, 0); });
}

int CFileDescriptor::Read(void* buffer, std::size_t size, std::size_t& taken) const {
  ssize_t count = 0;
  const int error = Retried([&] { return count = read(fDescriptor, buffer, size); });
  taken = error == 0 ? static_cast<std::size_t>(count) : 0;
  return error;
}

int CFileDescriptor::Write(const void* data, std::size_t size) const {
  const char* bytes = static_cast<const char*>(data);
  while (size > 0) {
    ssize_t count = 0;
    if (const int error = Retried([&] { return count = write(fDescriptor, bytes, size); })) {
      return error;
    }
    bytes += count;
    size -= static_cast<std::size_t>(count);
  }
  return 0;
}

int CFileDescriptor::SendTo(const CFileDescriptor& target, std::uint64_t& moved) const {
  moved = 0;
  for (;;) {
    ssize_t count = 0;
    const int error = Retried([&] { return count = MoveBytes(fDescriptor, target.fDescriptor); });
    if (error != 0) return IsFullDisk(error) ? error : 0;
    if (count == 0) return 0;
    moved += static_cast<std::uint64_t>(count);
  }
}

int CFileDescriptor::Close() {
  if (fDescriptor < 0) return 0;
  const int result = close(fDescriptor);
  fDescriptor = -1;
  // An interrupted close has closed all the same.
  return result != 0 && errno != EINTR ? errno : 0;
}
