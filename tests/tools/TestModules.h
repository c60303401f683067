#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

// The first type that a module brings, which stands behind the host's own one, JSON.
inline constexpr std::uint32_t kFirstModuleType = 25;

// Where the build puts the module of that name from tests/tools/modules/.
inline std::filesystem::path TestModule(const std::string& name) {
  return std::filesystem::path(TOVRIN_TEST_MODULES) / (name + TOVRIN_MODULE_SUFFIX);
}
