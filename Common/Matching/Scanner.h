#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Common/Matching/SyntaxError.h"

namespace Matching {

enum class Token : std::uint8_t {
  End,
  Literal,            // Byte()
  Literals,           // Text(), each byte for itself; another Literal follows
  HexLiteral,         // Text() in base 16
  AnyByte,            // .
  LineBegin,          // ^
  LineEnd,            // $
  WordBoundary,       // \b
  NotWordBoundary,    // \B
  QuotedClass,        // \d and its kin; Byte() is the letter
  BackReference,      // Text() in base 10
  GroupBegin,         // (
  PlainGroupBegin,    // (?:
  LookAheadBegin,     // (?=
  NotLookAheadBegin,  // (?!
  GroupEnd,
  Or,
  Star,
  Plus,
  Question,
  BraceBegin,
  BraceEnd,
  Count,  // inside braces; Text() in base 10
  Comma,
  BracketBegin,
  NotBracketBegin,  // [^
  BracketEnd,
  Dash,              // inside brackets
  CollatingElement,  // [.Text().]
  EquivalenceClass,  // [=Text()=]
  CharacterClass,    // [:Text():]
};

// Cuts an expression into tokens, one ahead of the parser, as the standard library's reader does:
// which error an expression with several is refused for depends on exactly that one token.
//
// Views the expression, which must outlive it. Throws SyntaxError.
class Scanner {
public:
  explicit Scanner(std::string_view expression) : fRest(expression) { Advance(); }

  [[nodiscard]] Token Current() const { return fToken; }
  void Advance();

  // What belongs to the current token.
  [[nodiscard]] unsigned char Byte() const { return fByte; }
  [[nodiscard]] std::string_view Text() const { return fText; }

private:
  enum class Mode : std::uint8_t { Normal, Brace, Bracket };

  void ScanNormal();
  [[nodiscard]] std::size_t PlainSize() const;
  void ScanBrace();
  void ScanBracket();
  void ScanGroup();
  void ScanEscape();
  void ScanHex(std::size_t digits);
  void ScanNamed(Token token, unsigned char delimiter);

  void Set(Token token) { fToken = token; }
  void SetLiteral(unsigned char byte) {
    fToken = Token::Literal;
    fByte = byte;
  }
  void SetDigits(Token token);  // the digits that the rest begins with
  [[nodiscard]] bool StartsWith(unsigned char byte) const {
    return !fRest.empty() && static_cast<unsigned char>(fRest.front()) == byte;
  }
  unsigned char Take();

  std::string_view fRest;  // what is not yet a token
  std::string_view fText;
  Mode fMode = Mode::Normal;
  Token fToken = Token::End;
  unsigned char fByte = 0;
};

}  // namespace Matching
