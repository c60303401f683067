#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// International domain names in ASCII: the Bootstring algorithm of RFC 3492 behind the prefix
// "xn--". Names are UTF-8 outside and in; nothing is normalised, mapped or checked beyond the form.
// Pure functions.
namespace Punycode {

// A label that has to be coded is refused beyond this many bytes on either side: coding takes the
// square of the length, and a name server takes 63.
inline constexpr std::size_t kLongestLabel = 2048;

// Whether the text begins with "xn--", in whatever case.
bool HasPrefix(std::string_view text);

// The label that a prefixed one stands for; any other comes back as it is. Nothing for a digit out
// of range, an end inside a number, a number too large, or what is no character.
std::optional<std::string> DecodeLabel(std::string_view label);

// The label in ASCII. One that is ASCII comes back as it is; nothing when it is no UTF-8.
std::optional<std::string> EncodeLabel(std::string_view label);

// The same for each label of a host name; nothing when one of them gives nothing.
std::optional<std::string> DecodeHost(std::string_view host);
std::optional<std::string> EncodeHost(std::string_view host);

}  // namespace Punycode
