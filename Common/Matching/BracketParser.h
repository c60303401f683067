#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "Common/Matching/ByteSet.h"
#include "Common/Matching/Scanner.h"

namespace Matching {

// The value of a run of digits as the standard library computes it: a number too large for 32 bits
// wraps, which decides whether an expression is valid. Nothing for one that 63 bits do not hold,
// for which the library's arithmetic is undefined.
[[nodiscard]] std::optional<std::int32_t> WrappingValue(std::string_view digits, int radix);

// Reads the bracket expression whose opening token the scanner has just left, up to and including
// its "]". Throws SyntaxError.
[[nodiscard]] ByteSet ParseBracket(Scanner& scanner, bool isNegated);

// The bytes of "\d", "\D" and their kin.
[[nodiscard]] ByteSet QuotedClass(unsigned char letter);

}  // namespace Matching
