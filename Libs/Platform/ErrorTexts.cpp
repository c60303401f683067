#include "Libs/Platform/ErrorTexts.h"

#include <cstddef>
#include <string_view>

namespace {

std::string Describe(std::string_view family, int code, std::string_view failure) {
  std::string text(family);
  text += std::to_string(code);
  if (std::optional<std::string> words = SystemErrorWords(code)) {
    return text += " - '" + CleanSystemText(*std::move(words)) + "'";
  }
  return text.append(failure);
}

bool IsInsertMark(std::string_view text, std::size_t pos) {
  return text[pos] == '%' && pos + 1 < text.size() && text[pos + 1] >= '1' && text[pos + 1] <= '6';
}

}  // namespace

// Contract: the failure names the function of the platform on which these texts were first written.
std::string OSErrorText(int code) {
  return Describe("os error: ", code, " - !!! FormatMessage failed !!!");
}

std::string ErrnoText(int code) {
  return Describe("errno: ", code, " - !!! strerror_s failed !!!");
}

std::string CleanSystemText(std::string text) {
  std::erase_if(text, [](char c) { return c == '\r' || c == '\n'; });
  std::string clean;
  clean.reserve(text.size());
  for (std::size_t pos = 0; pos < text.size(); ++pos) {
    if (IsInsertMark(text, pos)) {
      clean += "-N/A-";
      ++pos;
    } else {
      clean += text[pos];
    }
  }
  return clean;
}
