#pragma once

#include <filesystem>
#include <string>
#include <vector>

// A program run to its end in a process of its own, for what only shows from outside: exit status,
// what is written where, and what a crash would be.
struct ChildResult {
  int status = -1;  // exit status; 128 + the signal for a process that one ended
  std::string output;
  std::string errors;
};

struct ChildCall {
  std::vector<std::string> command;  // the program's path first
  std::string input;                 // its standard input
  bool isOutputClosed = false;       // standard output is a pipe that nobody reads
  std::filesystem::path folder;      // to run in; here when empty
  // Standard input is a pipe that has the input, some kilobytes at most, and never ends.
  bool isInputEndless = false;
  // Standard error is a terminal; a line end arrives there as "\r\n".
  bool isErrorsTerminal = false;
};

// Throws std::system_error when the program cannot be started.
ChildResult RunChild(const ChildCall& call);

// A folder of its own for the files of one test, taken away with all that is in it.
class CTemporaryFolder {
public:
  CTemporaryFolder();
  ~CTemporaryFolder();
  CTemporaryFolder(const CTemporaryFolder&) = delete;
  CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return fPath; }
  std::filesystem::path Write(const std::string& name, const std::string& bytes) const;

private:
  std::filesystem::path fPath;
};
