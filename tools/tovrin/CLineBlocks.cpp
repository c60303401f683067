#include "tools/tovrin/CLineBlocks.h"

#include <algorithm>
#include <utility>

namespace RefHost {

bool CLineBlocks::Next(LineBlock& block) {
  block.bytes = std::exchange(fRest, {});
  block.firstLine = fNextLine;
  while (true) {
    const std::size_t size = block.bytes.size();
    block.bytes.resize(size + fReadSize);
    const std::size_t count = fInput.Read(block.bytes.data() + size, fReadSize);
    block.bytes.resize(size + count);
    if (count == 0) return !block.bytes.empty();

    // Only the new bytes are looked at, so that a very long line costs no more than its length.
    const std::size_t newEnd = std::string_view(block.bytes).substr(size).rfind('\n');
    if (newEnd == std::string_view::npos) continue;
    const std::size_t end = size + newEnd + 1;
    fRest.assign(block.bytes, end);
    block.bytes.resize(end);
    fNextLine +=
        static_cast<std::uint64_t>(std::count(block.bytes.begin(), block.bytes.end(), '\n'));
    return true;
  }
}

}  // namespace RefHost
