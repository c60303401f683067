#include "tools/tovrin/Failure.h"

#include <fmt/format.h>

namespace RefHost {

std::string StatusWords(Tovrin::FunctionStatus status, const std::string& title) {
  const std::uint32_t position = status >> 16;
  switch (status & 0xFFFF) {
    case Tovrin::kWrongArgument:
      return fmt::format("invalid parameter {} in {}", position, title);
    case Tovrin::kInvalidObject:
      return fmt::format("invalid object used for parameter {} in {}", position, title);
    default:
      return fmt::format("runtime error from {}", title);
  }
}

CCallFailure ExceptionFailure(const std::string& title, const std::string& words) {
  return {ExitStatus::Exception, fmt::format("runtime error from {}: {}", title, words)};
}

}  // namespace RefHost
