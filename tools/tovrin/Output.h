#pragma once

#include <string_view>

namespace RefHost {

// Writes to standard output, through to who reads it. False when nobody reads it any more; throws
// std::runtime_error with the reason in a sentence when it fails for another one.
bool WriteOutput(std::string_view text);

// Writes to standard error, as far as that goes.
void WriteErrors(std::string_view text);

}  // namespace RefHost
