#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace RefHost {

// Numbers with dots between them, such as "1.20.16.0". A missing number counts as 0.
class CVersion {
public:
  static std::optional<CVersion> Parse(std::string_view text);

  bool operator<(const CVersion& other) const;

private:
  std::vector<std::uint32_t> fNumbers;  // without zeros at the end
};

// What a module asks of its host: "[1.18.0-]" or "[1.18.0-1.30.0]", both ends included; an end that
// is not given is open.
class CVersionRange {
public:
  static std::optional<CVersionRange> Parse(std::string_view text);

  bool Contains(const CVersion& version) const;

private:
  std::optional<CVersion> fFirst;
  std::optional<CVersion> fLast;
};

}  // namespace RefHost
