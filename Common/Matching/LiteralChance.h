#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Matching {

// How likely a text holds a literal, from 0 to 1: a guess for texts of the usual kinds (host names,
// URLs, header values), from how often single bytes stand in them and from strings that most of
// them have, such as "http" and ".com". Only orders choices by it; no answer depends on it.
//
// Literals are folded, and not empty.
double ChanceOf(std::string_view literal);
// The same for any of several.
double ChanceOfAny(const std::vector<std::string>& literals);

// How rare a byte is: half as often as another is one bit more.
float BitsOf(char byte);
// How likely a byte of a text is this one; capitals are seldom.
double ChanceOfByte(char byte);

}  // namespace Matching
