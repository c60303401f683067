#pragma once

#include <regex>

namespace Matching {

// Why an expression is refused: the code and the words of the standard library's own regex_error,
// so that a caller who reports the one cannot be told from a caller who reports the other.
//
// Thrown inside the parser only; Parse hands it out as a value.
struct SyntaxError {
  std::regex_constants::error_type code = {};
  const char* message = "";  // static text
};

}  // namespace Matching
