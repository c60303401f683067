#include "tools/tovrin/Failure.h"

#include <fmt/core.h>

namespace RefHost {

CCallFailure ExceptionFailure(const std::string& title, const std::string& words) {
  return {ExitStatus::Exception, fmt::format("runtime error from {}: {}", title, words)};
}

}  // namespace RefHost
