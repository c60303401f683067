// Fuzz target for percent decoding and the text of a URL. The first byte holds the two switches.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Common/UrlText.h"
#include "fuzz/Require.h"

namespace {

std::string EscapeAll(std::string_view bytes) {
  std::string escaped;
  for (const unsigned char byte : bytes) {
    escaped += '%';
    escaped += "0123456789ABCDEF"[byte >> 4];
    escaped += "0123456789abcdef"[byte & 15];
  }
  return escaped;
}

void CheckToUrlText(std::string_view bytes, bool decode, bool escapeBlanks) {
  std::string input(bytes);
  CText out;
  std::uint32_t encoding = 0;
  const bool isRead = ToUrlText(input, out, &encoding, decode, escapeBlanks);
  Require(isRead == (!decode || DecodePercent(bytes).has_value()), "a bad escape alone is refused");
  Require(out.Encoding() == encoding, "the encoding is that of the text");
  if (!isRead || !escapeBlanks) {
    Require(input == bytes, "the input stays");
  } else {
    Require(input.find(' ') == std::string::npos, "no blank is left");
    const auto blanks = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), ' '));
    Require(input.size() == bytes.size() + 2 * blanks, "each blank takes two bytes more");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 16 * 1024) return 0;  // longer inputs reach no new code

  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (const auto decoded = DecodePercent(bytes))
    Require(decoded->size() <= bytes.size(), "decoding never grows");
  Require(DecodePercent(EscapeAll(bytes)) == bytes, "decoding undoes escaping");
  CheckToUrlText(bytes, (data[0] & 1) != 0, (data[0] & 2) != 0);
  return 0;
}
