#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "Common/Matching/LiteralForms.h"
#include "Common/Matching/Program.h"
#include "Common/Matching/SyntaxTree.h"

// What an expression tells of itself before it meets a text, and its ways are chosen by.
namespace Matching {

// True when what the library captures in look-aheads can be told from the match alone: every group
// in one is set whenever the look-ahead is passed, which happens exactly once on the way to a
// match. Otherwise the captures are those of the look-ahead that was tried last, on whatever way
// that failed, and only following all ways in the library's order can tell.
[[nodiscard]] bool AreLookAheadCapturesPlain(const SyntaxTree& tree);

// Of how many byte values a match may begin with one.
[[nodiscard]] std::size_t CountFirstBytes(const Program& program, const SyntaxTree& tree);

// True when no match begins behind the beginning of the text.
[[nodiscard]] bool StartsAtBegin(const Program& program);

// Forms that say all about an expression and that a text is compared with, or nothing: where they
// are too many, or where a piece may hold what a gap must not.
[[nodiscard]] std::optional<std::vector<LiteralForm>> FormsOf(const SyntaxTree& tree,
                                                              const LiteralForms& literals);

}  // namespace Matching
