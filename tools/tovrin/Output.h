#pragma once

#include <string_view>

namespace RefHost {

// What a failure to write begins with.
inline constexpr std::string_view kStandardOutput = "standard output";

// Writes to standard output, through to who reads it. False when nobody reads it any more; throws
// std::system_error when it fails for another reason.
bool WriteOutput(std::string_view text);

// Writes to standard error, as far as that goes.
void WriteErrors(std::string_view text);

}  // namespace RefHost
