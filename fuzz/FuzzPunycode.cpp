// Fuzz target for Punycode: the input is a host name on either side of the coding.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Common/Punycode.h"
#include "Common/TextDetection.h"
#include "fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 8 * 1024) return 0;  // longer inputs reach no new code

  const std::string_view host(reinterpret_cast<const char*>(data), size);
  // A label with the prefix may be decoded to something else; without, encoding comes back.
  const auto encoded = Punycode::EncodeHost(host);
  if (encoded) {
    Require(FindNonAscii(encoded->data(), encoded->size()) == encoded->size(), "Encode is ASCII");
  }
  if (const auto label = Punycode::EncodeLabel(host); label && *label != host) {
    Require(Punycode::HasPrefix(*label), "what was coded has the prefix");
    Require(Punycode::DecodeLabel(*label) == host, "Decode undoes Encode");
  }
  Punycode::DecodeHost(host);
  if (const auto label = Punycode::DecodeLabel("xn--" + std::string(host))) {
    Require(Punycode::EncodeLabel(*label).has_value() || label->size() > Punycode::kLongestLabel,
            "what was decoded is text");
  }
  return 0;
}
