#pragma once

#include <cstdint>
#include <string_view>

// Bob Jenkins' hash "lookup3" of May 2006 in the form with two results, byte by byte, so that every
// machine gives the same words. The seeds are pc and pb; the lower half of the result is c, the
// upper half b. Not for secrets.
std::uint64_t Lookup3(std::string_view bytes, std::uint32_t seedC, std::uint32_t seedB);
