#include "Common/Utf8Report.h"

#include <algorithm>
#include <cstddef>

namespace {

// Bytes of a sequence by its first one; 0 when none begins so.
std::size_t SequenceSize(char first) {
  const auto lead = static_cast<unsigned char>(first);
  if (lead < 0x80) return 1;
  if ((lead & 0xE0) == 0xC0) return 2;
  if ((lead & 0xF0) == 0xE0) return 3;
  return (lead & 0xF8) == 0xF0 ? 4 : 0;
}

bool IsFollowUp(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

bool CheckUtf8(std::string_view bytes, std::string& message) {
  std::size_t line = 1;
  std::size_t column = 0;  // bytes since the last line feed
  while (!bytes.empty()) {
    const std::size_t size = SequenceSize(bytes.front());
    if (size == 0 || size > bytes.size() ||
        !std::all_of(bytes.begin() + 1, bytes.begin() + static_cast<std::ptrdiff_t>(size),
                     IsFollowUp)) {
      message = "Sign: " + std::to_string(column + 1) + " in column: " + std::to_string(line) +
                " is not utf-8 conform.";
      return false;
    }
    column += size;
    if (bytes.front() == '\n') {
      ++line;
      column = 0;
    }
    bytes.remove_prefix(size);
  }
  return true;
}
