#include "Common/Matching/BracketParser.h"

#include <limits>
#include <optional>

#include "Common/Matching/CharacterClasses.h"

namespace Matching {
namespace {

using namespace std::regex_constants;

// One pass over the terms of a bracket expression.
class BracketParser {
public:
  explicit BracketParser(Scanner& scanner) : fScanner(scanner) {}

  ByteSet Parse() {
    if (!TakeByte() && TakeDash()) HoldByte('-');  // a dash in front stands for itself
    while (ParseTerm()) {
    }
    FlushByte();
    return fSet;
  }

private:
  // What stands directly before a dash decides what the dash means.
  enum class Last : std::uint8_t { Nothing, Byte, Class };

  bool Take(Token token) {
    if (fScanner.Current() != token) return false;
    fScanner.Advance();
    return true;
  }

  bool TakeDash() { return Take(Token::Dash); }

  std::optional<unsigned char> ReadByte() {
    std::optional<unsigned char> byte;
    if (fScanner.Current() == Token::Literal) byte = fScanner.Byte();
    if (fScanner.Current() == Token::HexLiteral) {
      byte = static_cast<unsigned char>(*WrappingValue(fScanner.Text(), 16));
    }
    if (byte) fScanner.Advance();
    return byte;
  }

  bool TakeByte() {
    const auto byte = ReadByte();
    if (byte) HoldByte(*byte);
    return byte.has_value();
  }

  void FlushByte() {
    if (fLast == Last::Byte) fSet.Add(BothCases(fLastByte));
  }

  // Keeps a byte back, for it may turn out to begin a range.
  void HoldByte(unsigned char byte) {
    FlushByte();
    fLast = Last::Byte;
    fLastByte = byte;
  }

  void AddClass(const ByteSet& set) {
    FlushByte();
    fLast = Last::Class;
    fSet.Add(set);
  }

  bool ParseTerm() {
    if (Take(Token::BracketEnd)) return false;
    if (TakeByte()) return true;

    const Token token = fScanner.Current();
    const auto text = fScanner.Text();
    const unsigned char letter = fScanner.Byte();
    switch (token) {
      case Token::CollatingElement:
        fScanner.Advance();
        HoldByte(NamedByte(text, "Invalid collate element."));
        return true;
      case Token::EquivalenceClass:
        fScanner.Advance();
        AddClass(BothCases(NamedByte(text, "Invalid equivalence class.")));
        return true;
      case Token::CharacterClass: {
        fScanner.Advance();
        const auto set = FindCharacterClass(text);
        if (!set) throw SyntaxError{error_collate, "Invalid character class."};
        AddClass(*set);
        return true;
      }
      case Token::QuotedClass:
        fScanner.Advance();
        AddClass(QuotedClass(letter));
        return true;
      case Token::Dash:
        fScanner.Advance();
        return ParseDash();
      default:
        throw SyntaxError{error_brack, "Unexpected character within '[...]' in regular expression"};
    }
  }

  static unsigned char NamedByte(std::string_view name, const char* message) {
    const auto byte = FindCollatingElement(name);
    if (!byte) throw SyntaxError{error_collate, message};
    return *byte;
  }

  bool ParseDash() {
    if (Take(Token::BracketEnd)) {
      HoldByte('-');
      return false;
    }
    switch (fLast) {
      case Last::Class:
        throw SyntaxError{error_range, "Invalid start of '[x-x]' range in regular expression"};
      case Last::Nothing:
        HoldByte('-');
        return true;
      case Last::Byte:
        break;
    }
    auto end = ReadByte();
    if (!end && TakeDash()) end = '-';
    if (!end) {
      throw SyntaxError{error_range, "Invalid end of '[x-x]' range in regular expression"};
    }
    AddRange(fLastByte, *end);
    fLast = Last::Nothing;
    return true;
  }

  // Contract: bytes are compared as signed characters, so 0x80 and above stand before NUL, and a
  // byte belongs to the range when either of its cases does.
  void AddRange(unsigned char first, unsigned char last) {
    const auto low = static_cast<signed char>(first);
    const auto high = static_cast<signed char>(last);
    if (low > high) throw SyntaxError{error_range, "Invalid range in bracket expression."};
    for (int byte = low; byte <= high; ++byte) {
      fSet.Add(BothCases(static_cast<unsigned char>(byte)));
    }
  }

  Scanner& fScanner;
  ByteSet fSet;
  Last fLast = Last::Nothing;
  unsigned char fLastByte = 0;
};

}  // namespace

std::optional<std::int32_t> WrappingValue(std::string_view digits, int radix) {
  const auto base = static_cast<std::uint64_t>(radix);
  std::uint64_t value = 0;
  for (const char c : digits) {
    const auto byte = static_cast<unsigned char>(c);
    const auto digit =
        static_cast<std::uint64_t>(IsDigit(byte) ? byte - '0' : ToLower(byte) - 'a' + 10);
    constexpr std::uint64_t kRoom = std::numeric_limits<std::int64_t>::max();
    if (value > (kRoom - digit) / base) return std::nullopt;
    value = value * base + digit;
  }
  return static_cast<std::int32_t>(value);
}

ByteSet ParseBracket(Scanner& scanner, bool isNegated) {
  ByteSet set = BracketParser(scanner).Parse();
  if (isNegated) set.Invert();
  return set;
}

ByteSet QuotedClass(unsigned char letter) {
  const char name = static_cast<char>(ToLower(letter));
  ByteSet set = *FindCharacterClass({&name, 1});
  if (letter != ToLower(letter)) set.Invert();
  return set;
}

}  // namespace Matching
