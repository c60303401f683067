#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Libs/Platform/Streams.h"

namespace RefHost {

// Whole lines of an input, as many as arrived together.
struct LineBlock {
  std::string bytes;  // each line with its line end, the input's last perhaps without
  std::uint64_t firstLine = 1;
};

// Cuts an input into blocks of whole lines. A block is what one read delivered, so a pipe is passed
// on as it comes; a line longer than that makes its block grow.
class CLineBlocks {
public:
  explicit CLineBlocks(CInputStream& input, std::size_t readSize = std::size_t{1} << 18)
      : fInput(input), fReadSize(readSize) {}

  // The next block; false at the end of the input. Throws std::system_error.
  bool Next(LineBlock& block);
  // Ends the input, also for a Next that waits. Any thread may call.
  void Stop() { fInput.Stop(); }

private:
  CInputStream& fInput;
  const std::size_t fReadSize;
  std::string fRest;            // the beginning of a line whose end is not read yet
  std::uint64_t fNextLine = 1;  // the number of that line
};

// Calls visit(line) for each line of a block, without its "\n", until visit answers false.
template <class Visit>
void ForEachLine(std::string_view bytes, Visit visit) {
  while (!bytes.empty()) {
    const std::size_t end = bytes.find('\n');
    if (!visit(bytes.substr(0, end)) || end == std::string_view::npos) return;
    bytes.remove_prefix(end + 1);
  }
}

}  // namespace RefHost
