// Fuzz target for CBase64: any bytes are fair input, and no property may fail.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Common/CBase64.h"
#include "fuzz/Require.h"

namespace {

// Whatever the text, Decode refuses by length alone and never invents bytes.
void CheckDecode(std::string_view text) {
  const auto bytes = CBase64::Decode(text);
  Require(bytes.has_value() == (!text.empty() && text.size() % 4 == 0),
          "Decode refuses by length alone");
  if (bytes) Require(bytes->size() <= text.size() / 4 * 3, "Decode gives three bytes a group");
}

// What Encode writes, Decode reads.
void CheckRoundTrip(std::string_view bytes) {
  const auto text = CBase64::Encode(bytes);
  Require(text.has_value() == !bytes.empty(), "Encode refuses the empty input alone");
  if (!text) return;
  Require(text->size() == CBase64::EncodedSize(bytes.size()), "EncodedSize tells the size");
  Require(CBase64::Decode(std::string_view(*text)) == bytes, "Decode undoes Encode");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 64 * 1024) return 0;  // longer inputs reach no new code, they only cost time

  const std::string_view input(reinterpret_cast<const char*>(data), size);
  CheckDecode(input);
  CheckRoundTrip(input);
  return 0;
}
