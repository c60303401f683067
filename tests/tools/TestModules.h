#pragma once

#include <filesystem>
#include <string>

// Where the build puts the module of that name from tests/tools/modules/.
inline std::filesystem::path TestModule(const std::string& name) {
  return std::filesystem::path(TOVRIN_TEST_MODULES) / (name + TOVRIN_MODULE_SUFFIX);
}
