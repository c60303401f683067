#include "tests/tools/RunProgram.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

#include "tests/support/SharedData.h"

namespace {

// A file that nobody else sees and that is gone when it is closed.
using TemporaryFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

TemporaryFile MakeTemporaryFile() {
  TemporaryFile file(std::tmpfile(), &std::fclose);
  if (!file) throw std::runtime_error("no temporary file");
  return file;
}

std::string ContentsOf(std::FILE* file) {
  std::rewind(file);
  std::string text;
  char buffer[4096];
  while (const std::size_t size = std::fread(buffer, 1, sizeof buffer, file)) {
    text.append(buffer, size);
  }
  return text;
}

}  // namespace

ProgramResult RunProgram(const std::vector<std::string>& arguments) {
  const std::string program = (BinDir() / "tovrin").string();
  std::vector<char*> words = {const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments)
    words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);

  const TemporaryFile output = MakeTemporaryFile();
  const TemporaryFile errors = MakeTemporaryFile();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, fileno(output.get()), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(errors.get()), STDERR_FILENO);
  pid_t child = 0;
  const int failure =
      posix_spawn(&child, program.c_str(), &actions, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) throw std::runtime_error("cannot run " + program);

  ProgramResult result;
  int status = 0;
  if (waitpid(child, &status, 0) == child && WIFEXITED(status)) result.status = WEXITSTATUS(status);
  result.output = ContentsOf(output.get());
  result.errors = ContentsOf(errors.get());
  return result;
}
