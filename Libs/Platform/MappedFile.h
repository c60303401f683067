#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

// A read-only view of a whole open file. It shows the length that the file had when it was mapped.
//
// Reading behind the end of a file that was cut meanwhile ends the process: whoever changes the
// length of a file drops its view first.
class CMappedFile {
public:
  CMappedFile() = default;
  ~CMappedFile() { Unmap(); }
  CMappedFile(const CMappedFile&) = delete;
  CMappedFile& operator=(const CMappedFile&) = delete;

  // The stream's buffer is flushed by the caller. False for an empty file, and when there is no
  // room for it.
  bool Map(std::FILE* stream);
  void Unmap();

  const char* Data() const { return fData; }  // null while nothing is mapped
  std::uint64_t Size() const { return fSize; }

private:
  const char* fData = nullptr;
  std::uint64_t fSize = 0;
};
