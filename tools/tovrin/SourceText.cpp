#include "tools/tovrin/SourceText.h"

#include <fmt/core.h>

#include "Libs/Platform/Streams.h"

namespace RefHost {

std::string CleanSource(std::string text) {
  std::size_t from = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  std::size_t to = 0;
  for (; from < text.size(); ++from) {
    if (text[from] == '\r' && from + 1 < text.size() && text[from + 1] == '\n') continue;
    text[to++] = text[from];
  }
  text.resize(to);
  return text;
}

std::string CannotRead(const std::string& path, const std::system_error& error) {
  return fmt::format("cannot read '{}': {}", path, error.code().message());
}

std::string ReadSource(const std::string& path) {
  constexpr std::size_t kBlock = std::size_t{1} << 18;
  try {
    CInputStream input(path);
    std::string text;
    while (true) {
      const std::size_t size = text.size();
      text.resize(size + kBlock);
      const std::size_t count = input.Read(text.data() + size, kBlock);
      text.resize(size + count);
      if (count == 0) return text;
    }
  } catch (const std::system_error& error) {
    throw std::runtime_error(CannotRead(path, error));
  }
}

}  // namespace RefHost
