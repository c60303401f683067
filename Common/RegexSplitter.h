#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

enum class RegexTokenKind : std::uint32_t {
  Unit = 1,     // must stay whole: a group, bracket or atom with its quantifier, or all of the text
  Literal = 2,  // ordinary characters and escapes, to be cut between any two of them
};

struct RegexToken {
  RegexTokenKind kind;
  std::string text;  // as it stands in the expression

  bool operator==(const RegexToken&) const = default;
};

// "U" and "B"; "X" for the number 4, "?" for any other, which no code makes.
const char* RegexTokenKindName(RegexTokenKind kind);

// Cuts expressions into tokens, so that a beginning which many share is cut at a safe place.
//
// Works on the text of expressions and knows no more of their meaning than where something that
// must stay whole begins and ends. One object serves one thread; it keeps a token list for each
// call.
class RegexSplitter {
public:
  explicit RegexSplitter(std::size_t capacity) { fTokenLists.reserve(capacity); }

  // Appends the expression's token list. False when the expression could not be read; then, and for
  // an alternation at top level, the list is one unit with the whole text.
  //
  // Contract: an ordinary character directly in front of a quantified one, with nothing before it,
  // is in no token ("ab*d" gives "b*" and "d"). Whoever uses a beginning made of tokens compares it
  // with the expression itself.
  bool Split(std::string_view expression);

  // Swaps the lists, in the order of the calls, with the target's.
  void TakeTokens(std::vector<std::vector<RegexToken>>& target) { fTokenLists.swap(target); }

private:
  std::vector<std::vector<RegexToken>> fTokenLists;
};
