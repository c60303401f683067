#include "Common/CBase64.h"

#include <array>
#include <cstring>

#include "Common/TextConversion.h"

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
static_assert(kAlphabet.size() == 64);

constexpr std::uint32_t kOutside = 64;  // value of all that is not in the alphabet, "=" included

// Six-bit value of each byte, or kOutside.
constexpr auto kSixBits = [] {
  std::array<std::uint8_t, 256> table{};
  table.fill(kOutside);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    table[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
  }
  return table;
}();

// The two digits of each twelve-bit value.
// Perf: half the look-ups and stores of one digit at a time (CBase64_Encode).
using DigitPair = std::array<char, 2>;
constexpr auto kDigitPairs = [] {
  std::array<DigitPair, 4096> table{};
  for (std::size_t i = 0; i < table.size(); ++i) table[i] = {kAlphabet[i >> 6], kAlphabet[i & 63]};
  return table;
}();

std::uint32_t ByteAt(const char* at) {
  return static_cast<unsigned char>(*at);
}

std::uint32_t SixBitsAt(const char* at) {
  return kSixBits[static_cast<unsigned char>(*at)];
}

void PutPair(char* out, std::uint32_t twelveBits) {
  std::memcpy(out, kDigitPairs[twelveBits].data(), sizeof(DigitPair));
}

// Writes the one or two bytes behind the last whole group, with their padding.
void EncodeTail(const char* at, std::size_t size, char* out) {
  const std::uint32_t group = ByteAt(at) << 16 | (size == 2 ? ByteAt(at + 1) << 8 : 0U);
  PutPair(out, group >> 12);
  out[2] = size == 2 ? kAlphabet[group >> 6 & 63] : '=';
  out[3] = '=';
}

// Bytes by which the last group falls short of three, judged by its outside characters.
// Contract: an outside character in second place keeps all three, whatever follows it.
std::size_t ShortBy(const char* group) {
  if (SixBitsAt(group + 1) == kOutside) return 0;
  if (SixBitsAt(group + 2) == kOutside) return 2;
  return SixBitsAt(group + 3) == kOutside ? 1 : 0;
}

// The text with one byte a character, or nothing when a character needs more.
std::optional<std::string> BytePerCharacter(const CText& text) {
  const std::uint32_t encoding = text.Encoding();
  if (encoding == Charset::Ascii || encoding == Charset::Latin1 || encoding == Charset::Raw)
    return std::string(text.Bytes());
  return ConvertText(text.Bytes(), encoding, Charset::Latin1, ConversionMode::Exact);
}

}  // namespace

std::optional<std::string> CBase64::Encode(std::string_view bytes) {
  if (bytes.empty()) return std::nullopt;

  std::string text(EncodedSize(bytes.size()), '\0');
  const char* at = bytes.data();
  const char* const tail = at + bytes.size() / 3 * 3;
  char* out = text.data();
  for (; at != tail; at += 3, out += 4) {
    const std::uint32_t group = ByteAt(at) << 16 | ByteAt(at + 1) << 8 | ByteAt(at + 2);
    PutPair(out, group >> 12);
    PutPair(out + 2, group & 0xFFF);
  }
  if (const std::size_t rest = bytes.size() % 3) EncodeTail(at, rest, out);
  return text;
}

std::optional<std::string> CBase64::Decode(std::string_view text) {
  if (text.empty() || text.size() % 4 != 0) return std::nullopt;

  std::string bytes(text.size() / 4 * 3, '\0');
  const char* const end = text.data() + text.size();
  char* out = bytes.data();
  for (const char* at = text.data(); at != end; at += 4, out += 3) {
    // kOutside has its one bit above the six, so it lands in the low bit of the value to its left:
    // that is the merging which the contract asks for. In first place it falls off the top.
    const std::uint32_t group =
        SixBitsAt(at) << 18 | SixBitsAt(at + 1) << 12 | SixBitsAt(at + 2) << 6 | SixBitsAt(at + 3);
    out[0] = static_cast<char>(group >> 16 & 0xFF);
    out[1] = static_cast<char>(group >> 8 & 0xFF);
    out[2] = static_cast<char>(group & 0xFF);
  }
  bytes.resize(bytes.size() - ShortBy(end - 4));
  return bytes;
}

CText CBase64::Encode(const CText& text) {
  const auto encoded = Encode(text.Bytes());
  return encoded ? CText(*encoded, Charset::Ascii) : CText();
}

CText CBase64::Decode(const CText& text, std::uint32_t encoding) {
  const auto characters = BytePerCharacter(text);
  const auto bytes = characters ? Decode(std::string_view(*characters)) : std::nullopt;
  return bytes ? CText(*bytes, encoding) : CText();
}
