#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <system_error>

#include "tests/support/ChildProcess.h"
#include "tests/support/SharedData.h"

// Conditions under which file operations have to fail, and what is left behind afterwards.

// Runs the work in a copy of this process and answers its exit status, or 128 + the signal that
// ended it. What the work expects in vain makes the status 1, and is printed as ever.
inline int InChild(const std::function<bool()>& work) {
  const pid_t child = fork();
  if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (child == 0) _exit(work() ? 0 : 1);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Files cannot grow beyond a size while this lives: the disk is full.
class FullDiskBehind {
public:
  explicit FullDiskBehind(rlim_t bytes) : fHandler(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &fBefore);
    rlimit limit = fBefore;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDiskBehind() {
    setrlimit(RLIMIT_FSIZE, &fBefore);
    std::signal(SIGXFSZ, fHandler);
  }
  FullDiskBehind(const FullDiskBehind&) = delete;
  FullDiskBehind& operator=(const FullDiskBehind&) = delete;

private:
  rlimit fBefore = {};
  void (*fHandler)(int);
};

// Permissions count while this lives, even if the tests run as the one for whom they do not.
class WithoutPrivileges {
public:
  WithoutPrivileges() : fBefore(geteuid()) {
    if (fBefore == 0 && seteuid(kNobody) != 0) std::abort();
  }
  ~WithoutPrivileges() {
    if (seteuid(fBefore) != 0) std::abort();
  }
  WithoutPrivileges(const WithoutPrivileges&) = delete;
  WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

private:
  static constexpr uid_t kNobody = 65534;
  uid_t fBefore;
};

// The names in a folder.
inline std::set<std::string> NamesIn(const std::filesystem::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

inline std::size_t OpenDescriptors() {
  return NamesIn("/proc/self/fd").size();
}

inline std::uint32_t PermissionsOf(const std::filesystem::path& path) {
  struct stat data = {};
  return stat(path.c_str(), &data) == 0 ? data.st_mode & 07777 : 0;
}
