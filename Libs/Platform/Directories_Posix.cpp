#include "Libs/Platform/Directories.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

struct DirectoryCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};
using DirectoryHandle = std::unique_ptr<DIR, DirectoryCloser>;

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

DirectoryHandle HandleFrom(int descriptor) {
  if (descriptor < 0) return nullptr;
  DirectoryHandle handle(fdopendir(descriptor));
  if (!handle) {
    const int error = errno;
    close(descriptor);
    errno = error;
  }
  return handle;
}

FileIdentity IdentityOf(const struct stat& data) {
  return {data.st_dev, data.st_ino};
}

bool IsDots(std::string_view name) {
  return name == "." || name == "..";
}

// The names are read before anything is removed: what a listing shows while its folder changes is
// not promised. The error code, or 0.
int ReadEntries(DIR* folder, std::vector<DirectoryEntry>& entries) {
  for (;;) {
    errno = 0;
    const dirent* found = readdir(folder);
    if (!found) return errno;
    if (IsDots(found->d_name)) continue;
    struct stat data = {};  // d_type may be unknown, and has no device
    if (fstatat(dirfd(folder), found->d_name, &data, AT_SYMLINK_NOFOLLOW) != 0) continue;
    entries.push_back({found->d_name, S_ISDIR(data.st_mode), IdentityOf(data)});
  }
}

// Empties a folder and whatever is below it. One folder is open at a time: the way back leads
// through "..", and is taken only if it ends where the way down began.
class TreeRemoval {
public:
  // Takes the descriptor over. False when anything stayed.
  bool Empty(int descriptor) {
    if (!Enter(descriptor, {})) return false;
    while (true) {
      if (fLevels.back().folders.empty()) {
        if (fLevels.size() == 1) return !fHasRest;
        if (!Leave()) return false;
        continue;
      }
      const std::string name = fLevels.back().folders.back();
      const int child = openat(dirfd(fCurrent.get()), name.c_str(), kFolderFlags | O_NOFOLLOW);
      if (child >= 0 && Enter(child, name)) continue;
      fLevels.back().folders.pop_back();
      RemoveFolder(name);  // an empty one goes even if it cannot be read
    }
  }

private:
  struct Level {
    std::string name;                  // in the level above
    FileIdentity identity;             // of the folder
    std::vector<std::string> folders;  // still to be removed; the last one is being emptied
  };

  // Removes the files of a folder, and notes its folders.
  bool Enter(int descriptor, std::string name) {
    DirectoryHandle folder = HandleFrom(descriptor);
    struct stat data = {};
    if (!folder || fstat(dirfd(folder.get()), &data) != 0) return false;
    std::vector<DirectoryEntry> entries;
    if (ReadEntries(folder.get(), entries) != 0) fHasRest = true;
    Level level{std::move(name), IdentityOf(data), {}};
    for (DirectoryEntry& entry : entries) {
      if (entry.isDirectory) {
        level.folders.push_back(std::move(entry.name));
      } else if (unlinkat(dirfd(folder.get()), entry.name.c_str(), 0) != 0 && errno != ENOENT) {
        fHasRest = true;
      }
    }
    fCurrent = std::move(folder);
    fLevels.push_back(std::move(level));
    return true;
  }

  bool Leave() {
    DirectoryHandle above = HandleFrom(openat(dirfd(fCurrent.get()), "..", kFolderFlags));
    struct stat data = {};
    if (!above || fstat(dirfd(above.get()), &data) != 0) return false;
    const std::string name = std::move(fLevels.back().name);
    fLevels.pop_back();
    if (IdentityOf(data) != fLevels.back().identity) return false;  // was moved meanwhile
    fCurrent = std::move(above);
    fLevels.back().folders.pop_back();
    RemoveFolder(name);
    return true;
  }

  void RemoveFolder(const std::string& name) {
    if (unlinkat(dirfd(fCurrent.get()), name.c_str(), AT_REMOVEDIR) != 0 && errno != ENOENT) {
      fHasRest = true;
    }
  }

  DirectoryHandle fCurrent;  // the folder of the last level
  std::vector<Level> fLevels;
  bool fHasRest = false;
};

}  // namespace

int ListDirectory(const std::string& path, std::vector<DirectoryEntry>& entries) {
  const DirectoryHandle folder = HandleFrom(open(SystemPath(path), kFolderFlags));
  return folder ? ReadEntries(folder.get(), entries) : errno;
}

int MakeDirectory(const std::string& path) {
  if (mkdir(SystemPath(path), 0777) == 0) return 0;
  const int error = errno;
  struct stat data = {};
  const bool isThere =
      error == EEXIST && stat(SystemPath(path), &data) == 0 && S_ISDIR(data.st_mode);
  return isThere ? 0 : error;
}

bool RemoveTree(const std::string& path) {
  const int descriptor = open(SystemPath(path), kFolderFlags | O_NOFOLLOW);
  if (descriptor < 0) {
    const bool isNoFolder = errno == ENOTDIR || errno == ELOOP;
    return isNoFolder ? unlink(SystemPath(path)) == 0 : rmdir(SystemPath(path)) == 0;
  }
  const bool isEmpty = TreeRemoval().Empty(descriptor);
  return rmdir(SystemPath(path)) == 0 && isEmpty;
}

std::string TemporaryDirectory() {
  const char* wanted = std::getenv("TMPDIR");
  struct stat data = {};
  if (!wanted || !*wanted || stat(wanted, &data) != 0 || !S_ISDIR(data.st_mode)) return "/tmp";
  if (*wanted == '/') return wanted;
  // The files have to be found again wherever the process works by then.
  std::error_code error;
  const std::filesystem::path path = std::filesystem::absolute(wanted, error);
  return error ? "/tmp" : path.string();
}
