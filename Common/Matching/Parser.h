#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "Common/Matching/SyntaxError.h"
#include "Common/Matching/SyntaxTree.h"

namespace Matching {

// States that the standard library's own automaton may have; one more, and it refuses the
// expression.
inline constexpr std::uint64_t kStateLimit = 100000;

struct ParseResult {
  SyntaxTree tree;                   // meaningful when there is no error
  std::optional<SyntaxError> error;  // why the expression is refused
  // How many states the standard library's automaton has for the expression.
  std::uint64_t stateCount = 0;
};

// Reads an expression of the ECMAScript grammar as the standard library in use reads it with the
// flags ECMAScript and icase in the classic locale: the same verdict, the same error, the same
// groups. Takes any bytes; needs a fixed amount of stack however deep the expression nests, and
// memory in proportion to its length, that of a tree which nobody needs any more first.
[[nodiscard]] ParseResult Parse(std::string_view expression, SyntaxTree storage = SyntaxTree());

// The same verdict and the same number of groups, with a tree that has no nodes: for the very many
// expressions that are only asked whether they are one.
[[nodiscard]] ParseResult Validate(std::string_view expression);

}  // namespace Matching
