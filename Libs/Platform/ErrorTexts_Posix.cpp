#include <cerrno>
#include <cstring>
#include <string_view>

#include "Libs/Platform/ErrorTexts.h"

// The system's answer is asked for in two ways, and the better one is taken where it exists:
// glibc's strerrordesc_np is never translated and has a null for a code without words. Elsewhere
// strerror_r serves, whose failure is a code other than 0.
namespace {

template <class Code>
concept HasErrorDescription = requires(Code code) {
  strerrordesc_np(code);
};

// The POSIX strerror_r answers a code, the GNU one a text that it may not have put into the buffer.
[[maybe_unused]] std::optional<std::string> WordsFrom(int failure, const char* buffer) {
  if (failure != 0) return std::nullopt;
  return buffer;
}
[[maybe_unused]] std::optional<std::string> WordsFrom(const char* text, const char* /*buffer*/) {
  if (text == nullptr || std::string_view(text).starts_with("Unknown error")) return std::nullopt;
  return text;
}

template <class Code>
std::optional<std::string> Words(Code code) {
  if constexpr (HasErrorDescription<Code>) {
    const char* text = strerrordesc_np(code);
    if (text == nullptr) return std::nullopt;
    return text;
  } else {
    char buffer[256] = {};
    return WordsFrom(strerror_r(code, buffer, sizeof buffer), buffer);
  }
}

}  // namespace

std::optional<std::string> SystemErrorWords(int code) {
  const int before = errno;
  std::optional<std::string> words = Words(code);
  errno = before;
  return words;
}
