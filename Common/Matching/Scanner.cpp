#include "Common/Matching/Scanner.h"

#include <array>

#include "Common/Matching/CharacterClasses.h"

namespace Matching {
namespace {

using namespace std::regex_constants;

bool IsHexDigit(unsigned char byte) {
  return IsDigit(byte) || (ToLower(byte) >= 'a' && ToLower(byte) <= 'f');
}

// Bytes that are literals outside of brackets and braces.
constexpr std::array<bool, 256> kIsPlain = [] {
  std::array<bool, 256> isPlain{};
  isPlain.fill(true);
  for (const unsigned char special :
       {'\\', '(', ')', '[', '{', '^', '$', '.', '*', '+', '?', '|'}) {
    isPlain[special] = false;
  }
  return isPlain;
}();

}  // namespace

unsigned char Scanner::Take() {
  const auto byte = static_cast<unsigned char>(fRest.front());
  fRest.remove_prefix(1);
  return byte;
}

void Scanner::Advance() {
  if (fRest.empty()) return Set(Token::End);  // whatever is still open is the parser's to refuse
  switch (fMode) {
    case Mode::Normal:
      return ScanNormal();
    case Mode::Brace:
      return ScanBrace();
    case Mode::Bracket:
      return ScanBracket();
  }
}

void Scanner::ScanNormal() {
  if (const std::size_t size = PlainSize(); size > 1) {
    fText = fRest.substr(0, size - 1);
    fRest.remove_prefix(size - 1);
    return Set(Token::Literals);
  }
  const unsigned char byte = Take();
  switch (byte) {
    case '\\':
      if (fRest.empty())
        throw SyntaxError{error_escape, "Invalid escape at end of regular expression"};
      return ScanEscape();
    case '(':
      return ScanGroup();
    case ')':
      return Set(Token::GroupEnd);
    case '[':
      fMode = Mode::Bracket;
      if (!StartsWith('^')) return Set(Token::BracketBegin);
      Take();
      return Set(Token::NotBracketBegin);
    case '{':
      fMode = Mode::Brace;
      return Set(Token::BraceBegin);
    case '^':
      return Set(Token::LineBegin);
    case '$':
      return Set(Token::LineEnd);
    case '.':
      return Set(Token::AnyByte);
    case '*':
      return Set(Token::Star);
    case '+':
      return Set(Token::Plus);
    case '?':
      return Set(Token::Question);
    case '|':
      return Set(Token::Or);
    default:
      return SetLiteral(byte);
  }
}

// Of the plain bytes that the rest begins with.
std::size_t Scanner::PlainSize() const {
  std::size_t size = 0;
  while (size < fRest.size() && kIsPlain[static_cast<unsigned char>(fRest[size])]) ++size;
  return size;
}

void Scanner::ScanGroup() {
  if (!StartsWith('?')) return Set(Token::GroupBegin);
  Take();
  if (fRest.empty()) throw SyntaxError{error_paren, "Mismatched '(' and ')' in regular expression"};
  switch (Take()) {
    case ':':
      return Set(Token::PlainGroupBegin);
    case '=':
      return Set(Token::LookAheadBegin);
    case '!':
      return Set(Token::NotLookAheadBegin);
    default:
      throw SyntaxError{error_paren, "Invalid '(?...)' zero-width assertion in regular expression"};
  }
}

// Behind a backslash, inside brackets and outside.
void Scanner::ScanEscape() {
  if (fRest.empty()) throw SyntaxError{error_escape, "Invalid escape in regular expression"};

  if (IsDigit(static_cast<unsigned char>(fRest.front())) && !StartsWith('0')) {
    return SetDigits(Token::BackReference);
  }
  const unsigned char byte = Take();
  switch (byte) {
    case '0':
      return SetLiteral('\0');
    case 'f':
      return SetLiteral('\f');
    case 'n':
      return SetLiteral('\n');
    case 'r':
      return SetLiteral('\r');
    case 't':
      return SetLiteral('\t');
    case 'v':
      return SetLiteral('\v');
    case 'b':
      if (fMode == Mode::Bracket) return SetLiteral('\b');
      return Set(Token::WordBoundary);
    case 'B':
      return Set(Token::NotWordBoundary);
    case 'd':
    case 'D':
    case 's':
    case 'S':
    case 'w':
    case 'W':
      fByte = byte;
      return Set(Token::QuotedClass);
    case 'c':
      if (fRest.empty()) {
        throw SyntaxError{error_escape, "invalid '\\cX' control character in regular expression"};
      }
      // Contract: the letter itself, not the control character that it names.
      return SetLiteral(Take());
    case 'x':
      return ScanHex(2);
    case 'u':
      return ScanHex(4);
    default:
      return SetLiteral(byte);
  }
}

void Scanner::ScanHex(std::size_t digits) {
  for (std::size_t i = 0; i < digits; ++i) {
    if (i < fRest.size() && IsHexDigit(static_cast<unsigned char>(fRest[i]))) continue;
    throw SyntaxError{error_escape,
                      digits == 2 ? "Invalid '\\xNN' control character in regular expression"
                                  : "Invalid '\\uNNNN' control character in regular expression"};
  }
  fText = fRest.substr(0, digits);
  fRest.remove_prefix(digits);
  Set(Token::HexLiteral);
}

void Scanner::SetDigits(Token token) {
  std::size_t count = 0;
  while (count < fRest.size() && IsDigit(static_cast<unsigned char>(fRest[count]))) ++count;
  fText = fRest.substr(0, count);
  fRest.remove_prefix(count);
  Set(token);
}

void Scanner::ScanBrace() {
  if (IsDigit(static_cast<unsigned char>(fRest.front()))) return SetDigits(Token::Count);
  switch (Take()) {
    case ',':
      return Set(Token::Comma);
    case '}':
      fMode = Mode::Normal;
      return Set(Token::BraceEnd);
    default:
      throw SyntaxError{error_badbrace, "Invalid range in '{}' in regular expression"};
  }
}

void Scanner::ScanBracket() {
  const unsigned char byte = Take();
  switch (byte) {
    case '-':
      return Set(Token::Dash);
    case ']':
      fMode = Mode::Normal;
      return Set(Token::BracketEnd);
    case '\\':
      return ScanEscape();
    case '[':
      if (fRest.empty()) {
        throw SyntaxError{error_brack, "Incomplete '[[' character class in regular expression"};
      }
      if (StartsWith('.')) return ScanNamed(Token::CollatingElement, Take());
      if (StartsWith(':')) return ScanNamed(Token::CharacterClass, Take());
      if (StartsWith('=')) return ScanNamed(Token::EquivalenceClass, Take());
      return SetLiteral(byte);
    default:
      return SetLiteral(byte);
  }
}

// The name up to the next delimiter, which a "]" must follow.
void Scanner::ScanNamed(Token token, unsigned char delimiter) {
  const std::size_t length = fRest.find(static_cast<char>(delimiter));
  if (length == std::string_view::npos || length + 1 == fRest.size() || fRest[length + 1] != ']') {
    if (delimiter == ':') {
      throw SyntaxError{error_ctype, "Invalid character class in regular expression"};
    }
    throw SyntaxError{error_collate, "Invalid collating element in regular expression"};
  }
  fText = fRest.substr(0, length);
  fRest.remove_prefix(length + 2);
  Set(token);
}

}  // namespace Matching
