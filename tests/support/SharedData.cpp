#include "tests/support/SharedData.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

std::optional<std::filesystem::path> SharedPath(const std::string& name) {
  const std::filesystem::path path = std::filesystem::path(TESSARIN_SHARED_DIR) / name;
  if (!std::filesystem::exists(path)) return std::nullopt;
  return path;
}

std::string ReadWholeFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> ReadLines(const std::filesystem::path& path) {
  std::istringstream text(ReadWholeFile(path));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(std::move(line));
  return lines;
}

std::filesystem::path SourceDir() {
  return TESSARIN_SOURCE_DIR;
}

std::filesystem::path BinDir() {
  return TESSARIN_BIN_DIR;
}
