#include "Common/Matching/CharacterClasses.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace Matching {
namespace {

using Predicate = bool (*)(unsigned char);

bool IsAlpha(unsigned char byte) {
  return ToLower(byte) >= 'a' && ToLower(byte) <= 'z';
}
bool IsAlnum(unsigned char byte) {
  return IsAlpha(byte) || IsDigit(byte);
}
bool IsBlank(unsigned char byte) {
  return byte == ' ' || byte == '\t';
}
bool IsControl(unsigned char byte) {
  return byte < 0x20 || byte == 0x7F;
}
bool IsPrint(unsigned char byte) {
  return byte >= 0x20 && byte < 0x7F;
}
bool IsGraph(unsigned char byte) {
  return byte > 0x20 && byte < 0x7F;
}
bool IsPunct(unsigned char byte) {
  return IsGraph(byte) && !IsAlnum(byte);
}
bool IsSpace(unsigned char byte) {
  return byte == ' ' || (byte >= '\t' && byte <= '\r');
}
bool IsHexDigit(unsigned char byte) {
  return IsDigit(byte) || (ToLower(byte) >= 'a' && ToLower(byte) <= 'f');
}

struct NamedClass {
  std::string_view name;
  Predicate holds;
};

constexpr NamedClass kClasses[] = {
    {"d", IsDigit},     {"w", IsWordByte},  {"s", IsSpace},         {"alnum", IsAlnum},
    {"alpha", IsAlpha}, {"blank", IsBlank}, {"cntrl", IsControl},   {"digit", IsDigit},
    {"graph", IsGraph}, {"lower", IsAlpha}, {"print", IsPrint},     {"punct", IsPunct},
    {"space", IsSpace}, {"upper", IsAlpha}, {"xdigit", IsHexDigit},
};

// Names of the portable character set, by code.
constexpr std::array<std::string_view, 128> kByteNames = {"NUL",
                                                          "SOH",
                                                          "STX",
                                                          "ETX",
                                                          "EOT",
                                                          "ENQ",
                                                          "ACK",
                                                          "alert",
                                                          "backspace",
                                                          "tab",
                                                          "newline",
                                                          "vertical-tab",
                                                          "form-feed",
                                                          "carriage-return",
                                                          "SO",
                                                          "SI",
                                                          "DLE",
                                                          "DC1",
                                                          "DC2",
                                                          "DC3",
                                                          "DC4",
                                                          "NAK",
                                                          "SYN",
                                                          "ETB",
                                                          "CAN",
                                                          "EM",
                                                          "SUB",
                                                          "ESC",
                                                          "IS4",
                                                          "IS3",
                                                          "IS2",
                                                          "IS1",
                                                          "space",
                                                          "exclamation-mark",
                                                          "quotation-mark",
                                                          "number-sign",
                                                          "dollar-sign",
                                                          "percent-sign",
                                                          "ampersand",
                                                          "apostrophe",
                                                          "left-parenthesis",
                                                          "right-parenthesis",
                                                          "asterisk",
                                                          "plus-sign",
                                                          "comma",
                                                          "hyphen",
                                                          "period",
                                                          "slash",
                                                          "zero",
                                                          "one",
                                                          "two",
                                                          "three",
                                                          "four",
                                                          "five",
                                                          "six",
                                                          "seven",
                                                          "eight",
                                                          "nine",
                                                          "colon",
                                                          "semicolon",
                                                          "less-than-sign",
                                                          "equals-sign",
                                                          "greater-than-sign",
                                                          "question-mark",
                                                          "commercial-at",
                                                          "A",
                                                          "B",
                                                          "C",
                                                          "D",
                                                          "E",
                                                          "F",
                                                          "G",
                                                          "H",
                                                          "I",
                                                          "J",
                                                          "K",
                                                          "L",
                                                          "M",
                                                          "N",
                                                          "O",
                                                          "P",
                                                          "Q",
                                                          "R",
                                                          "S",
                                                          "T",
                                                          "U",
                                                          "V",
                                                          "W",
                                                          "X",
                                                          "Y",
                                                          "Z",
                                                          "left-square-bracket",
                                                          "backslash",
                                                          "right-square-bracket",
                                                          "circumflex",
                                                          "underscore",
                                                          "grave-accent",
                                                          "a",
                                                          "b",
                                                          "c",
                                                          "d",
                                                          "e",
                                                          "f",
                                                          "g",
                                                          "h",
                                                          "i",
                                                          "j",
                                                          "k",
                                                          "l",
                                                          "m",
                                                          "n",
                                                          "o",
                                                          "p",
                                                          "q",
                                                          "r",
                                                          "s",
                                                          "t",
                                                          "u",
                                                          "v",
                                                          "w",
                                                          "x",
                                                          "y",
                                                          "z",
                                                          "left-curly-bracket",
                                                          "vertical-line",
                                                          "right-curly-bracket",
                                                          "tilde",
                                                          "DEL"};

}  // namespace

std::optional<ByteSet> FindCharacterClass(std::string_view name) {
  std::string lower(name);
  for (char& c : lower) c = static_cast<char>(ToLower(static_cast<unsigned char>(c)));
  const auto* const found = std::ranges::find(kClasses, lower, &NamedClass::name);
  if (found == std::end(kClasses)) return std::nullopt;

  ByteSet set;
  for (int byte = 0; byte < 256; ++byte) {
    if (found->holds(static_cast<unsigned char>(byte))) set.Add(static_cast<unsigned char>(byte));
  }
  return set;
}

std::optional<unsigned char> FindCollatingElement(std::string_view name) {
  const auto* const found = std::ranges::find(kByteNames, name);
  if (found == kByteNames.end()) return std::nullopt;
  return static_cast<unsigned char>(found - kByteNames.begin());
}

}  // namespace Matching
