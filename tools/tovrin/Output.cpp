#include "tools/tovrin/Output.h"

#include <fmt/core.h>

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>

namespace RefHost {

bool WriteOutput(std::string_view text) {
  if (text.empty()) return true;
  const bool written =
      std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
  const int code = errno;
  if (written) return true;
  if (code == EPIPE) return false;
  throw std::runtime_error(
      fmt::format("cannot write 'standard output': {}", std::generic_category().message(code)));
}

void WriteErrors(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace RefHost
