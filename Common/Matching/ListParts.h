#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Matching {

// How a scanner's captures choose among its alternatives, unless the text is empty.
enum class ListNaming : std::uint32_t {
  ByCaptures,  // only they tell
  InOrder,     // the first that matches
  Latest,      // a greedy star stands before all of them: what begins latest
};

// One alternative of a list.
struct ListPart {
  std::uint32_t scanner;
  std::uint32_t group : 30;  // fewer than kStateLimit
  ListNaming naming : 2;     // of its scanner
};

// The alternatives of a list in their order, with the names of their groups. An alternative's id
// grows with the order, and is where it stands.
//
// Perf: a table keeps the id of what it finds, which leads to all that naming takes, in one place
// with the name behind it; see list_bench, Named.
class ListParts {
public:
  std::uint32_t Add(const ListPart& part, std::string_view name) {
    const std::size_t place = fBytes.size();
    if (name.size() > kMaxNameSize || place / kUnit >= kMaxUnits) {
      throw std::length_error("a list's names are too long");
    }
    const Header header{part, static_cast<std::uint32_t>(name.size())};
    fBytes.append(reinterpret_cast<const char*>(&header), sizeof header);
    fBytes.append(name);
    fBytes.append((kUnit - fBytes.size() % kUnit) % kUnit, '\0');
    return static_cast<std::uint32_t>(place / kUnit);
  }
  void Freeze() { fBytes.shrink_to_fit(); }

  ListPart operator[](std::uint32_t id) const { return HeaderAt(id).part; }
  std::string_view NameOf(std::uint32_t id) const {
    return {BytesAt(id) + sizeof(Header), HeaderAt(id).nameSize};
  }

  std::size_t MemorySize() const { return fBytes.capacity(); }

private:
  static constexpr std::size_t kUnit = 4;
  static constexpr std::size_t kMaxUnits = 0xFFFFFFFF;  // the last id means none
  static constexpr std::size_t kMaxNameSize = 0xFFFFFFFF;

  struct Header {
    ListPart part;
    std::uint32_t nameSize;
  };

  const char* BytesAt(std::uint32_t id) const { return fBytes.data() + std::size_t{id} * kUnit; }
  Header HeaderAt(std::uint32_t id) const {
    Header header;
    std::memcpy(&header, BytesAt(id), sizeof header);
    return header;
  }

  std::string fBytes;  // a header each, the name, and what fills up the unit
};

}  // namespace Matching
