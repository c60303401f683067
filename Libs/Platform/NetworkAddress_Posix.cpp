#include "Libs/Platform/NetworkAddress.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace {

std::uint64_t BigEndianWord(const unsigned char* bytes) {
  std::uint64_t word = 0;
  for (int i = 0; i < 8; ++i) word = word << 8 | bytes[i];
  return word;
}

}  // namespace

bool ParseIPv4Address(const char* text, std::uint32_t& address) {
  in_addr parsed{};
  if (::inet_pton(AF_INET, text, &parsed) != 1) return false;
  address = ntohl(parsed.s_addr);
  return true;
}

bool ParseIPv6Address(const char* text, std::uint64_t& high, std::uint64_t& low) {
  in6_addr parsed{};
  if (::inet_pton(AF_INET6, text, &parsed) != 1) return false;
  high = BigEndianWord(parsed.s6_addr);
  low = BigEndianWord(parsed.s6_addr + 8);
  return true;
}
