#include "Libs/Platform/Streams.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <iterator>

namespace {

[[noreturn]] void ThrowError(int code) {
  throw std::system_error(code, std::generic_category());
}

}  // namespace

CInputStream::CInputStream(const std::filesystem::path& path) {
  if (path == "-") {
    fDescriptor = STDIN_FILENO;
    fOwned = false;
  } else {
    fDescriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fDescriptor < 0) ThrowError(errno);
  }
  if (pipe(fStop) != 0) {
    const int code = errno;
    if (fOwned) close(fDescriptor);
    ThrowError(code);
  }
  for (const int end : fStop) fcntl(end, F_SETFD, FD_CLOEXEC);
}

CInputStream::~CInputStream() {
  if (fOwned) close(fDescriptor);
  for (const int end : fStop) close(end);
}

bool CInputStream::WaitForBytes() const {
  struct pollfd ends[] = {{fDescriptor, POLLIN, 0}, {fStop[0], POLLIN, 0}};
  while (poll(ends, std::size(ends), -1) < 0) {
    if (errno != EINTR) ThrowError(errno);
  }
  return ends[1].revents == 0;
}

std::size_t CInputStream::Read(char* buffer, std::size_t size) {
  while (WaitForBytes()) {
    const ssize_t count = read(fDescriptor, buffer, size);
    if (count >= 0) return static_cast<std::size_t>(count);
    // Another process may have taken what there was, or made the input one that does not wait.
    if (errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK) ThrowError(errno);
  }
  return 0;
}

void CInputStream::Stop() {
  while (write(fStop[1], "", 1) < 0 && errno == EINTR) {
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

void ReserveStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) >= 0 || errno != EBADF) continue;
    // Takes the lowest free number, which is this one, and for the wrong direction.
    const int taken = open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (taken >= 0 && taken != stream) close(taken);
  }
}

void ReportClosedPipes() {
  std::signal(SIGPIPE, SIG_IGN);
}

std::filesystem::path ProgramPath() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error);
}
