#include "tools/tovrin/CLexer.h"

#include <fmt/core.h>

#include <charconv>
#include <system_error>

#include "Common/Utf8.h"

namespace RefHost {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool StartsName(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool ContinuesName(char c) {
  return StartsName(c) || IsDigit(c) || c == '.';
}

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20;
}

TokenKind KindOfSign(char c) {
  switch (c) {
    case '(':
      return TokenKind::LeftBracket;
    case ')':
      return TokenKind::RightBracket;
    case '[':
      return TokenKind::LeftSquare;
    case ']':
      return TokenKind::RightSquare;
    case ',':
      return TokenKind::Comma;
    case ';':
      return TokenKind::Semicolon;
    case '=':
      return TokenKind::Equals;
    default:
      return TokenKind::End;
  }
}

std::string NameOfByte(char c) {
  if (IsControl(c) || static_cast<unsigned char>(c) >= 0x7F) {
    return fmt::format("the byte 0x{:02X}", static_cast<unsigned char>(c));
  }
  return fmt::format("'{}'", c);
}

}  // namespace

void CLexer::Advance(std::size_t count) {
  fAt += count;
  fWhere.column += count;
}

void CLexer::AdvanceLine() {
  ++fAt;
  fWhere = {fWhere.line + 1, 1};
}

void CLexer::SkipBlanks() {
  while (fAt < fSource.size()) {
    const char c = fSource[fAt];
    if (c == '\n') {
      AdvanceLine();
    } else if (c == ' ' || c == '\t' || c == '\r') {
      Advance(1);
    } else if (c == '#') {
      Advance(std::min(fSource.find('\n', fAt), fSource.size()) - fAt);
    } else {
      return;
    }
  }
}

Token CLexer::Next() {
  SkipBlanks();
  if (fAt == fSource.size()) return {TokenKind::End, fWhere, {}, 0};

  const char c = Peek();
  if (c == 'r' && Peek(1) == '"') return ReadRawText();
  if (StartsName(c)) return ReadName();
  if (c == '"') return ReadText();
  if (IsDigit(c) || c == '-') return ReadNumber();

  const TokenKind kind = KindOfSign(c);
  if (kind == TokenKind::End) throw CSourceError(fWhere, NameOfByte(c) + " has no meaning here");
  Token token{kind, fWhere, {c}, 0};
  Advance(1);
  return token;
}

Token CLexer::ReadName() {
  Token token{TokenKind::Name, fWhere, {}, 0};
  std::size_t length = 1;
  while (ContinuesName(Peek(length))) ++length;
  token.text = fSource.substr(fAt, length);
  if (token.text.back() == '.') throw CSourceError(fWhere, "a name cannot end in a dot");
  Advance(length);
  return token;
}

// The numbers of JSON: a sign, digits without a leading zero, a fraction, an exponent.
Token CLexer::ReadNumber() {
  Token token{TokenKind::Number, fWhere, {}, 0};
  std::size_t length = Peek() == '-' ? 1 : 0;
  const auto digits = [&] {
    const std::size_t before = length;
    while (IsDigit(Peek(length))) ++length;
    return length - before;
  };

  const std::size_t firstDigit = length;
  const std::size_t count = digits();
  bool good = count == 1 || (count > 1 && Peek(firstDigit) != '0');
  if (Peek(length) == '.') {
    ++length;
    good = digits() > 0 && good;
  }
  if (Peek(length) == 'e' || Peek(length) == 'E') {
    ++length;
    if (Peek(length) == '+' || Peek(length) == '-') ++length;
    good = digits() > 0 && good;
  }
  if (!good || ContinuesName(Peek(length))) throw CSourceError(fWhere, "this is not a number");

  const char* begin = fSource.data() + fAt;
  const auto [end, error] = std::from_chars(begin, begin + length, token.number);
  if (error != std::errc()) throw CSourceError(fWhere, "the number is out of range");
  Advance(length);
  return token;
}

Token CLexer::ReadRawText() {
  Token token{TokenKind::Text, fWhere, {}, 0};
  Advance(2);
  while (true) {
    if (fAt == fSource.size()) throw CSourceError(token.where, "the text has no closing quote");
    const char c = Peek();
    c == '\n' ? AdvanceLine() : Advance(1);
    if (c == '"') return token;
    token.text += c;
  }
}

Token CLexer::ReadText() {
  Token token{TokenKind::Text, fWhere, {}, 0};
  Advance(1);
  while (true) {
    if (fAt == fSource.size()) throw CSourceError(token.where, "the text has no closing quote");
    const char c = Peek();
    if (c == '\n') throw CSourceError(token.where, "the text has no closing quote on its line");
    if (IsControl(c)) throw CSourceError(fWhere, NameOfByte(c) + " must be escaped in a text");
    if (c == '\\') {
      ReadEscape(token.text);
      continue;
    }
    Advance(1);
    if (c == '"') return token;
    token.text += c;
  }
}

void CLexer::ReadEscape(std::string& text) {
  const Position where = fWhere;
  const char c = Peek(1);
  Advance(std::min<std::size_t>(2, fSource.size() - fAt));
  switch (c) {
    case '"':
    case '\\':
    case '/':
      text += c;
      return;
    case 'b':
      text += '\b';
      return;
    case 'f':
      text += '\f';
      return;
    case 'n':
      text += '\n';
      return;
    case 'r':
      text += '\r';
      return;
    case 't':
      text += '\t';
      return;
    case 'u':
      break;
    default:
      throw CSourceError(where, "unknown escape in a text; r\"...\" takes none");
  }

  std::uint32_t code = ReadHexUnit();
  if (code >= 0xDC00 && code < 0xE000) throw CSourceError(where, "half of a surrogate pair");
  if (code >= 0xD800 && code < 0xDC00) {
    if (Peek() != '\\' || Peek(1) != 'u') throw CSourceError(where, "half of a surrogate pair");
    Advance(2);
    const std::uint32_t low = ReadHexUnit();
    if (low < 0xDC00 || low >= 0xE000) throw CSourceError(where, "half of a surrogate pair");
    code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
  }
  AppendUtf8(code, text);
}

std::uint32_t CLexer::ReadHexUnit() {
  std::uint32_t unit = 0;
  for (int i = 0; i < 4; ++i) {
    const char c = Peek();
    std::uint32_t digit = 0;
    if (IsDigit(c)) {
      digit = static_cast<std::uint32_t>(c - '0');
    } else if (c >= 'a' && c <= 'f') {
      digit = static_cast<std::uint32_t>(c - 'a') + 10;
    } else if (c >= 'A' && c <= 'F') {
      digit = static_cast<std::uint32_t>(c - 'A') + 10;
    } else {
      throw CSourceError(fWhere, "\\u takes four hexadecimal digits");
    }
    unit = unit << 4 | digit;
    Advance(1);
  }
  return unit;
}

std::string Describe(const Token& token) {
  switch (token.kind) {
    case TokenKind::End:
      return "the end";
    case TokenKind::Text:
      return "a text";
    case TokenKind::Number:
      return "a number";
    default:
      return fmt::format("'{}'", token.text);
  }
}

}  // namespace RefHost
