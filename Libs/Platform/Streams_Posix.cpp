#include "Libs/Platform/Streams.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace {

[[noreturn]] void ThrowError(int code) {
  throw std::system_error(code, std::generic_category());
}

}  // namespace

CInputStream::CInputStream(const std::filesystem::path& path) {
  if (path == "-") {
    fDescriptor = STDIN_FILENO;
    fOwned = false;
    return;
  }
  fDescriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fDescriptor < 0) ThrowError(errno);
}

CInputStream::~CInputStream() {
  if (fOwned) close(fDescriptor);
}

std::size_t CInputStream::Read(char* buffer, std::size_t size) {
  while (true) {
    const ssize_t count = read(fDescriptor, buffer, size);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) ThrowError(errno);
  }
}

std::optional<std::uint64_t> CInputStream::Size() const {
  struct stat status = {};
  if (fstat(fDescriptor, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(status.st_size);
}

bool ErrorStreamIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}

std::size_t ErrorStreamWidth() {
  struct winsize window = {};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &window) != 0 || window.ws_col == 0) return 80;
  return window.ws_col;
}

void ReportClosedPipes() {
  std::signal(SIGPIPE, SIG_IGN);
}

std::filesystem::path ProgramPath() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error);
}
