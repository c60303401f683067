#include "Common/TextDump.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t kBytesALine = 16;
constexpr std::size_t kHexWidth = 50;  // columns of the bytes, to where their characters begin

std::string BytesIn(const CText& text, std::uint32_t encoding) {
  return text.Encoding() == Charset::Raw ? std::string(text.Bytes()) : text.ToNarrow(encoding);
}

constexpr char kHexDigits[] = "0123456789abcdef";

void AppendByteHex(std::string& out, char byte) {
  const auto value = static_cast<unsigned char>(byte);
  out += kHexDigits[value >> 4];
  out += kHexDigits[value & 15];
}

// Eight digits, or as many as it takes.
void AppendSizeHex(std::string& out, std::uint64_t size) {
  std::array<char, 16> digits;
  const char* const end = std::to_chars(digits.begin(), digits.end(), size, 16).ptr;
  const auto count = static_cast<std::size_t>(end - digits.data());
  out.append(8 - std::min<std::size_t>(count, 8), '0');
  out.append(digits.data(), count);
}

// Printable in every locale alike.
bool IsPrintable(char byte) {
  return byte >= 0x20 && byte <= 0x7E;
}

void AppendHexLine(std::string& out, std::size_t offset, std::string_view bytes) {
  AppendSizeHex(out, offset);
  out += "  ";

  const std::size_t charactersAt = out.size() + kHexWidth;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    AppendByteHex(out, bytes[i]);
    out += i % 8 == 7 ? "  " : " ";
  }
  out.resize(charactersAt, ' ');

  out += '|';
  for (const char byte : bytes) out += IsPrintable(byte) ? byte : '.';
  out += "|\n";
}

void AppendSourceLine(std::string& out, std::string_view bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    out += i == 0 ? "0x" : ", 0x";
    AppendByteHex(out, bytes[i]);
  }
}

}  // namespace

CText HexDump(const CText& text, std::uint32_t encoding) {
  if (!text.Impl()) return CText("", Charset::Ascii);

  const std::string bytes = BytesIn(text, encoding);
  std::string dump;
  dump.reserve((bytes.size() / kBytesALine + 1) * 80 + 10);
  for (std::size_t offset = 0; offset < bytes.size(); offset += kBytesALine) {
    AppendHexLine(dump, offset, std::string_view(bytes).substr(offset, kBytesALine));
  }
  AppendSizeHex(dump, bytes.size());
  dump += '\n';
  return CText(dump, Charset::Ascii);
}

CText MemDump(const CText& text, std::uint32_t encoding) {
  if (!text.Impl()) return CText("", Charset::Ascii);

  const std::string bytes = BytesIn(text, encoding);
  std::string dump = "const unsigned char memDump[] = {\n";
  dump.reserve(bytes.size() * 6 + 100);
  for (std::size_t offset = 0; offset < bytes.size(); offset += kBytesALine) {
    AppendSourceLine(dump, std::string_view(bytes).substr(offset, kBytesALine));
    dump += bytes.size() - offset > kBytesALine ? ",\n" : "\n";
  }
  dump += "};\nconst size_t memDumpSize = " + std::to_string(bytes.size());
  return CText(dump, Charset::Ascii);
}
