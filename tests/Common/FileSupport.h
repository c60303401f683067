#pragma once

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/SharedData.h"

// Conditions under which file operations have to fail, and what is left behind afterwards.

// Work in a copy of this process, beside whatever follows. Made before a test has other threads: a
// copy has none of them, and would wait for ever for what one of them holds. What the work expects
// in vain makes the exit status 1, and is printed as ever.
class CForkedWork {
public:
  explicit CForkedWork(const std::function<bool()>& work) : fChild(fork()) {
    if (fChild < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (fChild == 0) _exit(work() ? 0 : 1);
  }
  CForkedWork(const CForkedWork&) = delete;
  CForkedWork& operator=(const CForkedWork&) = delete;

  // Waits for its end, once: the exit status, or 128 + the signal that ended it.
  int Status() const {
    int status = 0;
    while (waitpid(fChild, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }

private:
  pid_t fChild;
};

inline int InChild(const std::function<bool()>& work) {
  return CForkedWork(work).Status();
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

// The exit status of work that this process is not allowed to prepare.
inline constexpr int kNotAllowed = 77;

// Runs the work in a copy of this process in which those calls of the system fail with that code,
// and answers whether it got what it expected; nothing where calls cannot be made to fail.
inline std::optional<bool> WithFailingCalls(const std::vector<long>& calls, int code,
                                            const std::function<bool()>& work) {
  const int status = InChild([&] {
    std::vector<sock_filter> filter = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const long call : calls) {
      filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call), 0, 1));
      filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(code)));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
      _exit(kNotAllowed);
    }
    return work();
  });
  if (status == kNotAllowed) return std::nullopt;
  return status == 0;
}

// Runs the work in a copy of this process for which the folder is a disk of that many bytes, and
// answers whether it got what it expected; nothing where this process may not mount one.
inline std::optional<bool> OnSmallDisk(const std::filesystem::path& folder, std::size_t bytes,
                                       const std::function<bool()>& work) {
  const int status = InChild([&] {
    const std::string size = "size=" + std::to_string(bytes);
    const int spaces = CLONE_NEWNS | (geteuid() == 0 ? 0 : CLONE_NEWUSER);
    if (unshare(spaces) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("tmpfs", folder.c_str(), "tmpfs", 0, size.c_str()) != 0) {
      _exit(kNotAllowed);
    }
    return work();
  });
  if (status == kNotAllowed) return std::nullopt;
  return status == 0;
}

// The descriptor under which this process has a file open leads there in another mode while this
// lives: the file cannot be written any more, or not be read.
class SwappedDescriptor {
public:
  SwappedDescriptor(const std::filesystem::path& path, int flags) : fDescriptor(Find(path)) {
    const int other = open(path.c_str(), flags | O_CLOEXEC);
    fKept = fcntl(fDescriptor, F_DUPFD_CLOEXEC, 0);
    if (other < 0 || fKept < 0 || dup2(other, fDescriptor) < 0) std::abort();
    close(other);
  }
  ~SwappedDescriptor() {
    if (dup2(fKept, fDescriptor) < 0) std::abort();
    close(fKept);
  }
  SwappedDescriptor(const SwappedDescriptor&) = delete;
  SwappedDescriptor& operator=(const SwappedDescriptor&) = delete;

private:
  static int Find(const std::filesystem::path& path) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code error;
      if (std::filesystem::read_symlink(entry, error) == path) {
        return std::stoi(entry.path().filename().string());
      }
    }
    std::abort();
  }

  const int fDescriptor;
  int fKept = -1;
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

// What is left of permissions for what this process makes.
inline std::uint32_t AllowedByMask(std::uint32_t permissions) {
  const mode_t mask = umask(0);
  umask(mask);
  return permissions & ~mask;
}

inline std::uint32_t PermissionsOf(const std::filesystem::path& path) {
  struct stat data = {};
  return stat(path.c_str(), &data) == 0 ? data.st_mode & 07777 : 0;
}
