// Fuzz target for the XML classes: the first byte decides whether the rest is read or written.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Common/CSTDXMLTag.h"
#include "fuzz/Require.h"

namespace {

std::string WithoutBackspaces(std::string_view bytes) {
  std::string text(bytes);
  for (char& byte : text) {
    if (byte == 8) byte = '?';
  }
  return text;
}

void CheckValues(std::string_view bytes) {
  std::string encoded;
  CSTDXMLString::Encode(bytes, encoded);
  Require(encoded.find_first_of("<>\"'\r\n") == std::string::npos, "nothing special is left");
  Require(CSTDXMLString::Decode(encoded) == WithoutBackspaces(bytes), "Decode undoes Encode");
  CSTDXMLString::EncodeKeepingReferences(bytes, encoded);
  Require(encoded.find_first_of("<>\"'\r\n") == std::string::npos, "in the second form, too");
  Require(CSTDXMLString::Decode(bytes).size() <= bytes.size(), "decoding never grows");
}

// What was read is written in one form, which reads the same.
void CheckRead(std::string_view text) {
  CSTDXMLTag tag;
  std::uint64_t position = 0;
  if (!tag.Read(text, position)) {
    Require(position == 0, "a failed read takes nothing");
    return;
  }
  Require(position <= text.size(), "a tag ends within the text");
  std::string written;
  tag.Write(written);
  CSTDXMLTag back;
  position = 0;
  Require(back.Read(written, position), "what is written can be read");
  Require(position + 2 == written.size(), "up to its line end");
  std::string again;
  back.Write(again);
  Require(again == written, "and is written the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 64 * 1024) return 0;  // longer inputs reach no new code

  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  if ((data[0] & 1) == 0) {
    CheckRead(bytes);
  } else {
    CheckValues(bytes);
  }
  return 0;
}
