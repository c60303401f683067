#include "Common/UrlText.h"

#include "Common/TextDetection.h"

namespace {

std::uint32_t EncodingOf(std::string_view bytes) {
  return EncodingOfDetection(DetectEncoding(bytes.data(), bytes.size()));
}

// -1 when it is none.
int HexValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

// From the front, going on behind each replacement; all in one pass.
std::string EscapeBlanks(std::string_view bytes) {
  std::string escaped;
  escaped.reserve(bytes.size());
  for (const char byte : bytes) {
    if (byte == ' ')
      escaped += "%20";
    else
      escaped += byte;
  }
  return escaped;
}

}  // namespace

std::optional<std::string> DecodePercent(std::string_view bytes) {
  std::string decoded;
  decoded.reserve(bytes.size());
  while (true) {
    const std::size_t escape = bytes.find('%');
    decoded += bytes.substr(0, escape);
    if (escape == std::string_view::npos) return decoded;
    bytes.remove_prefix(escape + 1);
    if (bytes.size() < 2) return std::nullopt;
    const int high = HexValue(bytes[0]);
    const int low = HexValue(bytes[1]);
    if (high < 0 || low < 0) return std::nullopt;
    decoded += static_cast<char>(high << 4 | low);
    bytes.remove_prefix(2);
  }
}

bool ToUrlText(std::string& input, CText& out, std::uint32_t* encodingOut, bool decode,
               bool escapeBlanks) {
  std::uint32_t encoding = EncodingOf(input);
  if (encodingOut) *encodingOut = encoding;
  out.Assign(input.data(), input.size(), encoding);

  if (decode) {
    const auto decoded = DecodePercent(input);
    if (!decoded) return false;
    const std::uint32_t found = EncodingOf(*decoded);
    if (encoding == Charset::Ascii && found != Charset::Raw) encoding = found;
    if (encodingOut) *encodingOut = encoding;
    out.Assign(decoded->data(), decoded->size(), encoding);
  }

  if (escapeBlanks) input = EscapeBlanks(input);
  return true;
}
