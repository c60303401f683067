#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "tests/support/ChildProcess.h"
#include "tests/support/SharedData.h"

namespace {

[[noreturn]] void ThrowErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// A file descriptor, closed at the end; -1 is none.
class CDescriptor {
public:
  explicit CDescriptor(int number = -1) : fNumber(number) {}
  CDescriptor(CDescriptor&& other) noexcept : fNumber(std::exchange(other.fNumber, -1)) {}
  CDescriptor& operator=(CDescriptor&& other) noexcept {
    std::swap(fNumber, other.fNumber);
    return *this;
  }
  ~CDescriptor() {
    if (fNumber >= 0) close(fNumber);
  }

  int Number() const { return fNumber; }
  void Close() { *this = CDescriptor(); }

private:
  int fNumber;
};

// Not for the child, but where it is told to take it.
CDescriptor Opened(int number, const char* what) {
  if (number < 0) ThrowErrno(what);
  fcntl(number, F_SETFD, FD_CLOEXEC);
  return CDescriptor(number);
}

CDescriptor OpenForWriting(const std::filesystem::path& path) {
  return Opened(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), "open");
}

struct Pair {
  CDescriptor ours, childs;
};

enum class PipeUse { Read, Write };  // what the child does

Pair OpenPipe(PipeUse use) {
  int ends[2] = {-1, -1};
  if (pipe(ends) != 0) ThrowErrno("pipe");
  CDescriptor reading = Opened(ends[0], "pipe");
  CDescriptor writing = Opened(ends[1], "pipe");
  return use == PipeUse::Read ? Pair{std::move(writing), std::move(reading)}
                              : Pair{std::move(reading), std::move(writing)};
}

Pair OpenTerminal() {
  Pair pair;
  pair.ours = Opened(posix_openpt(O_RDWR | O_NOCTTY), "posix_openpt");
  if (grantpt(pair.ours.Number()) != 0 || unlockpt(pair.ours.Number()) != 0) ThrowErrno("grantpt");
  pair.childs = Opened(open(ptsname(pair.ours.Number()), O_RDWR | O_NOCTTY), "open");
  return pair;
}

Pair OpenInput(const ChildCall& call, const CTemporaryFolder& folder) {
  if (!call.isInputEndless) {
    const auto path = folder.Write("input", call.input);
    return {CDescriptor(), Opened(open(path.c_str(), O_RDONLY), "open")};
  }
  Pair pipe = OpenPipe(PipeUse::Read);
  const ssize_t written = write(pipe.ours.Number(), call.input.data(), call.input.size());
  if (written != static_cast<ssize_t>(call.input.size())) ThrowErrno("write");
  return pipe;
}

pid_t Start(const ChildCall& call, int input, int output, int errors) {
  std::vector<char*> arguments;
  for (const std::string& argument : call.command) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);

  const pid_t child = fork();
  if (child < 0) ThrowErrno("fork");
  if (child == 0) {
    std::signal(SIGPIPE, SIG_DFL);
    const bool isReady = dup2(input, 0) == 0 && dup2(output, 1) == 1 && dup2(errors, 2) == 2 &&
                         (call.folder.empty() || chdir(call.folder.c_str()) == 0);
    if (isReady) execv(arguments[0], arguments.data());
    _exit(127);
  }
  return child;
}

// Exit status, or 128 and the signal.
int StatusOf(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) ThrowErrno("waitpid");
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// What a terminal is sent until nobody has it open any more.
std::string ReadTerminal(const CDescriptor& terminal) {
  std::string text;
  char buffer[4096];
  while (true) {
    const ssize_t count = read(terminal.Number(), buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return text;
    text.append(buffer, static_cast<std::size_t>(count));
  }
}

}  // namespace

// Output goes to files, so that no amount of it can block the child; that to a terminal is read
// while it runs.
ChildResult RunChild(const ChildCall& call) {
  const CTemporaryFolder folder;
  const auto outputPath = folder.Path() / "output";
  const auto errorsPath = folder.Path() / "errors";
  Pair input = OpenInput(call, folder);
  Pair errors =
      call.isErrorsTerminal ? OpenTerminal() : Pair{CDescriptor(), OpenForWriting(errorsPath)};
  CDescriptor output =
      call.isOutputClosed ? OpenPipe(PipeUse::Write).childs : OpenForWriting(outputPath);
  const pid_t child = Start(call, input.childs.Number(), output.Number(), errors.childs.Number());
  input.childs.Close();
  output.Close();
  errors.childs.Close();

  ChildResult result;
  if (call.isErrorsTerminal) result.errors = ReadTerminal(errors.ours);
  result.status = StatusOf(child);
  if (!call.isOutputClosed) result.output = ReadWholeFile(outputPath);
  if (!call.isErrorsTerminal) result.errors = ReadWholeFile(errorsPath);
  return result;
}

CTemporaryFolder::CTemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "tessarin_test_XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) ThrowErrno("mkdtemp");
  fPath = name;
}

CTemporaryFolder::~CTemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(fPath, ignored);
}

std::filesystem::path CTemporaryFolder::Write(const std::string& name,
                                              const std::string& bytes) const {
  const auto path = fPath / name;
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}
