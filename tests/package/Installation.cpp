#include "tests/package/Installation.h"

#include <stdexcept>

CInstallation::CInstallation() {
  const ChildResult result =
      RunChild({{TESSARIN_CMAKE, "--install", TESSARIN_BUILD_DIR, "--prefix", Prefix().string()},
                {},
                false,
                {}});
  if (result.status != 0) throw std::runtime_error(result.output + result.errors);
}

std::filesystem::path CInstallation::Find(const std::string& name) const {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(Prefix())) {
    if (entry.path().filename() == name) return entry.path();
  }
  throw std::runtime_error("not installed: " + name);
}

std::set<std::string> FilesBelow(const std::filesystem::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_directory()) names.insert(entry.path().lexically_relative(folder).string());
  }
  return names;
}

ChildResult Shell(const std::string& line, const std::filesystem::path& folder) {
  return RunChild({{"/bin/sh", "-c", "exec 2>&1; " + line}, {}, false, folder});
}
