#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

// The streams of a command-line program, as far as the standard library cannot tell about them.

// A file or standard input, read as the bytes arrive: a pipe that delivers a line now and then is
// answered line by line, which a stream buffer that waits to be full would not do.
class CInputStream {
public:
  // Opens a file; "-" is standard input. Throws std::system_error, whose code has the reason.
  explicit CInputStream(const std::filesystem::path& path);
  ~CInputStream();
  CInputStream(const CInputStream&) = delete;
  CInputStream& operator=(const CInputStream&) = delete;

  // Up to that many bytes, at least one of them unless the input is at its end or was stopped.
  // Throws std::system_error.
  std::size_t Read(char* buffer, std::size_t size);
  // Ends the input: a Read that waits for bytes comes back, as does every later one. Any thread may
  // call, at any time.
  void Stop();
  // Bytes of a regular file; nothing for what has no size.
  std::optional<std::uint64_t> Size() const;

private:
  bool WaitForBytes() const;  // false once it was stopped

  int fDescriptor = -1;
  bool fOwned = true;  // false for standard input, which stays open
  // A pipe that Stop writes to and a Read that waits looks at too: [0] to read, [1] to write.
  int fStop[2] = {-1, -1};
};

bool ErrorStreamIsTerminal();
// Columns of the terminal on standard error, 80 where it does not say.
std::size_t ErrorStreamWidth();

// Keeps files that are opened later off the numbers of standard streams that the caller closed:
// reading and writing these stays an error. Once, before anything else opens a file.
void ReserveStandardStreams();

// Makes writing to a pipe that nobody reads any more an error of the write, not the end of the
// process. Once, at the start of the program.
void ReportClosedPipes();

// The file that the running program was started from.
std::filesystem::path ProgramPath();
