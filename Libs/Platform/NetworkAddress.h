#pragma once

#include <cstdint>

// Reading the text forms of network addresses, by the system's own rules. The text ends at its
// first zero byte. Any thread may call.

// The address in host byte order; false, and nothing written, for what is no dotted address.
bool ParseIPv4Address(const char* text, std::uint32_t& address);

// The 16 bytes of the address as one big-endian number: its first and its last 8 bytes.
bool ParseIPv6Address(const char* text, std::uint64_t& high, std::uint64_t& low);
