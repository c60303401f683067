#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Common/CText.h"

// Base64 in the standard alphabet of RFC 4648 ("+", "/", padding "="), without line breaks.
//
// One pair works on bytes, the other on texts: an empty optional there is an empty handle here. All
// of it is pure and safe from any thread.
class CBase64 {
public:
  CBase64() = delete;

  // The base64 form of bytes, or nothing when there is nothing to encode.
  [[nodiscard]] static std::optional<std::string> Encode(std::string_view bytes);
  // The base64 form of the text's bytes, in ASCII.
  [[nodiscard]] static CText Encode(const CText& text);

  // The bytes that text stands for, or nothing when there is no text, or its length is not a
  // multiple of 4. There is no other failure.
  //
  // Contract: a character outside the alphabet is not refused, it is merged into the bytes. Stored
  // texts are read back through this, so a strict decoder would change what they mean.
  [[nodiscard]] static std::optional<std::string> Decode(std::string_view text);
  // The same for a text whose characters all fit into one byte, as a text of that encoding.
  [[nodiscard]] static CText Decode(const CText& text, std::uint32_t encoding);

  // Characters that Encode writes for this many bytes.
  static constexpr std::size_t EncodedSize(std::size_t byteCount) {
    return (byteCount + 2) / 3 * 4;
  }
};
