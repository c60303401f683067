#pragma once

#include <cstdlib>
#include <string_view>

// Whether the environment has that name with the value "YES", without regard to case.
inline bool EnvironmentSaysYes(const char* name) {
  const char* value = std::getenv(name);
  if (!value) return false;
  const std::string_view text = value;
  return text.size() == 3 && (text[0] | 0x20) == 'y' && (text[1] | 0x20) == 'e' &&
         (text[2] | 0x20) == 's';
}
