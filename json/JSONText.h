#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace Tovrin::JSON {

// How texts leave through a buffer of the caller, who asks again with more room when the answer
// says so. The answer is the text's length and one; text and NUL are copied where both fit.
inline std::size_t GiveText(std::string_view text, char* buffer, std::size_t size) {
  if (buffer && size > text.size()) {
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = '\0';
  }
  return text.size() + 1;
}

// The answer of a failure: the empty text, and false in ok, which may be null.
inline std::size_t GiveNoText(char* buffer, std::size_t size, bool* ok) {
  if (ok) *ok = false;
  return GiveText("", buffer, size);
}

}  // namespace Tovrin::JSON
