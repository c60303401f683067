#include "Common/TextDump.h"

#include <string>
#include <string_view>

namespace {

constexpr std::size_t kBytesALine = 16;
constexpr std::size_t kHexWidth = 50;  // columns of the bytes, to where their characters begin

std::string BytesIn(const CText& text, std::uint32_t encoding) {
  return text.Encoding() == Charset::Raw ? std::string(text.Bytes()) : text.ToNarrow(encoding);
}

// At least that many digits, lower-case.
void AppendHex(std::string& out, std::uint64_t value, std::size_t digits) {
  for (std::size_t width = 16; width-- > 0;) {
    const auto rest = value >> (4 * width);
    if (width < digits || rest != 0) out += "0123456789abcdef"[rest & 15];
  }
}

void AppendByteHex(std::string& out, char byte) {
  AppendHex(out, static_cast<unsigned char>(byte), 2);
}

// Printable in every locale alike.
bool IsPrintable(char byte) {
  return byte >= 0x20 && byte <= 0x7E;
}

void AppendHexLine(std::string& out, std::size_t offset, std::string_view bytes) {
  AppendHex(out, offset, 8);
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
  AppendHex(dump, bytes.size(), 8);
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
