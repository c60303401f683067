#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "tests/support/ChildProcess.h"
#include "tests/support/SharedData.h"

namespace {

[[noreturn]] void ThrowErrno(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

int OpenForWriting(const std::filesystem::path& path) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (descriptor < 0) ThrowErrno("open");
  return descriptor;
}

// The writing end of a pipe whose reading end is gone.
int ClosedPipe() {
  int ends[2] = {-1, -1};
  if (pipe(ends) != 0) ThrowErrno("pipe");
  close(ends[0]);
  return ends[1];
}

}  // namespace

// The streams are files, so that no amount of output can block the child.
ChildResult RunChild(const ChildCall& call) {
  const CTemporaryFolder folder;
  const auto inputPath = folder.Write("input", call.input);
  const auto outputPath = folder.Path() / "output";
  const auto errorsPath = folder.Path() / "errors";
  const int input = open(inputPath.c_str(), O_RDONLY | O_CLOEXEC);
  if (input < 0) ThrowErrno("open");
  const int output = call.isOutputClosed ? ClosedPipe() : OpenForWriting(outputPath);
  const int errors = OpenForWriting(errorsPath);
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
  close(input);
  close(output);
  close(errors);

  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) ThrowErrno("waitpid");
  }
  ChildResult result;
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  if (!call.isOutputClosed) result.output = ReadWholeFile(outputPath);
  result.errors = ReadWholeFile(errorsPath);
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
