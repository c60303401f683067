#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Common/Matching/SyntaxTree.h"

namespace Matching {

// Tells quickly that a text cannot hold a match, because every match holds one of a few literals
// and the text holds none of them. Most texts that are searched hold no match, and looking for the
// rarest byte of a literal is many times as fast as an automaton.
//
// Immutable; any thread may ask. One that knows no literals holds no text back.
class LiteralFilter {
public:
  LiteralFilter() = default;
  explicit LiteralFilter(const SyntaxTree& tree);

  // False: no match begins at or behind `from`.
  [[nodiscard]] bool MayMatch(std::string_view text, std::size_t from) const;

private:
  struct Literal {
    std::string folded;
    std::size_t rare = 0;  // index of the byte that is looked for
  };

  static constexpr std::size_t kMaxLiterals = 4;  // of more, the automaton is as fast

  static bool Contains(std::string_view text, const Literal& literal, unsigned char rare);

  std::vector<Literal> fLiterals;  // empty: nothing is known
};

}  // namespace Matching
