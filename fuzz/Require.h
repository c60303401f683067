#pragma once

#include <cstdio>
#include <cstdlib>

// Ends the process where a sanitizer or libFuzzer sees it, naming the property that broke.
inline void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "property failed: %s\n", property);
  std::abort();
}
