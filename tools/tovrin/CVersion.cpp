#include "tools/tovrin/CVersion.h"

#include <charconv>
#include <system_error>

namespace RefHost {

std::optional<CVersion> CVersion::Parse(std::string_view text) {
  CVersion version;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (true) {
    std::uint32_t number = 0;
    const auto [next, error] = std::from_chars(at, end, number);
    if (error != std::errc()) return std::nullopt;
    version.fNumbers.push_back(number);
    if (next == end) break;
    if (*next != '.') return std::nullopt;
    at = next + 1;
  }
  while (!version.fNumbers.empty() && version.fNumbers.back() == 0) version.fNumbers.pop_back();
  return version;
}

bool CVersion::operator<(const CVersion& other) const {
  return fNumbers < other.fNumbers;
}

std::optional<CVersionRange> CVersionRange::Parse(std::string_view text) {
  if (text.size() < 3 || text.front() != '[' || text.back() != ']') return std::nullopt;
  text = text.substr(1, text.size() - 2);
  const std::size_t dash = text.find('-');
  if (dash == std::string_view::npos) return std::nullopt;

  CVersionRange range;
  const std::string_view first = text.substr(0, dash);
  const std::string_view last = text.substr(dash + 1);
  range.fFirst = CVersion::Parse(first);
  range.fLast = CVersion::Parse(last);
  if (!first.empty() && !range.fFirst) return std::nullopt;
  if (!last.empty() && !range.fLast) return std::nullopt;
  return range;
}

bool CVersionRange::Contains(const CVersion& version) const {
  return !(fFirst && version < *fFirst) && !(fLast && *fLast < version);
}

}  // namespace RefHost
