#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/tovrin/SourceText.h"

namespace RefHost {

enum class TokenKind {
  End,
  Name,          // a name or a keyword; text has it
  Text,          // "..." or r"..."; text has the value, without quotes and escapes
  Number,        // number has the value
  LeftBracket,   // (
  RightBracket,  // )
  LeftSquare,    // [
  RightSquare,   // ]
  Comma,
  Semicolon,
  Equals,
};

struct Token {
  TokenKind kind = TokenKind::End;
  Position where;
  std::string text;
  double number = 0;
};

// Takes the language of statements and rules apart into tokens. Blanks, line ends and comments from
// "#" to the line's end tell tokens apart and are dropped. Bytes above 0x7F stand for themselves
// inside texts and are refused outside.
//
// Reads a text that it does not own, and which must outlive it. One thread.
class CLexer {
public:
  explicit CLexer(std::string_view source) : fSource(source) {}

  Token Next();  // End for ever once the text is used up; throws CSourceError

private:
  void SkipBlanks();
  void Advance(std::size_t count);  // none of the bytes is a line end
  void AdvanceLine();               // over a line end
  Token ReadName();
  Token ReadNumber();
  Token ReadText();
  Token ReadRawText();
  void ReadEscape(std::string& text);
  std::uint32_t ReadHexUnit();

  char Peek(std::size_t ahead = 0) const {
    return fAt + ahead < fSource.size() ? fSource[fAt + ahead] : '\0';
  }

  std::string_view fSource;
  std::size_t fAt = 0;  // the next byte
  Position fWhere;      // the place of that byte
};

// How an error message calls a token: "'when'", "a text", "the end".
std::string Describe(const Token& token);

}  // namespace RefHost
