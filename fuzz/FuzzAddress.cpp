// Fuzz target for the texts of addresses and ranges, as rules and lists bring them: what is read
// prints, and the print reads as the same address.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Common/VariantElements.h"
#include "fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4 * 1024) return 0;  // longer inputs reach no new code

  const AddressRecord address = ParseAddress({reinterpret_cast<const char*>(data), size});
  Require(IsAddressEqual(address, address), "an address equals itself");
  Require(IsAddressLessOrEqual(address, address), "and does not lie before itself");
  std::string text;
  PrintAddress(address, text);
  const AddressRecord again = ParseAddress(text);
  Require(IsAddressEqual(address, again), "what is printed reads as the same address");
  std::string second;
  PrintAddress(again, second);
  Require(text == second, "and prints the same");
  return 0;
}
