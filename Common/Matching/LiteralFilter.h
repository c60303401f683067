#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Matching {

// Tells quickly that a text cannot hold a match, because every match holds one of a few literals
// and the text holds none of them. Most texts that are searched hold no match, and looking for the
// rarest byte of a literal is many times as fast as an automaton.
//
// Immutable; any thread may ask. One that knows no literals holds no text back.
class LiteralFilter {
public:
  static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

  LiteralFilter() = default;
  // Of which every match holds one, folded.
  explicit LiteralFilter(std::vector<std::string> literals);

  // kNowhere: no match begins at or behind `from`. Else a place not in front of it, up to which the
  // question need not be asked again: a literal stands there.
  //
  // Looks no further than it must, and takes time that grows with the bytes that it passes, so a
  // walk over a text that asks again behind each such place looks at the text but once.
  [[nodiscard]] std::size_t Next(std::string_view text, std::size_t from) const;
  [[nodiscard]] bool MayMatch(std::string_view text) const { return Next(text, 0) != kNowhere; }

private:
  struct Literal {
    std::string folded;
    std::size_t rare = 0;  // index of the byte that is looked for
  };
  class Stretch;

  static constexpr std::size_t kMaxLiterals = 4;  // of more, the automaton is as fast

  std::vector<Literal> fLiterals;  // empty: nothing is known
};

}  // namespace Matching
