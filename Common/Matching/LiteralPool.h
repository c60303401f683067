#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Matching {

// Texts in one piece of memory, equal ones once, numbered from 0 on in the order of their coming.
//
// Filled by Add, closed by Freeze, and from then on read by any thread.
class LiteralPool {
public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  // The text's number; kNone when there is no room, which is for 4 GiB.
  std::uint32_t Add(std::string_view text);
  // The number that Add gave, or kNone. Before Freeze.
  [[nodiscard]] std::uint32_t Find(std::string_view text) const;
  void Freeze();  // gives back what only Add and Find need

  [[nodiscard]] std::size_t Count() const { return fPlaces.size(); }
  std::string_view operator[](std::uint32_t number) const {
    const Place& place = fPlaces[number];
    return {fBytes.data() + place.offset, place.size};
  }

  [[nodiscard]] std::size_t MemorySize() const;

private:
  struct Place {
    std::uint32_t offset;  // in fBytes
    std::uint32_t size;
  };

  // The slot that has the text, or the one where it belongs; there are some.
  [[nodiscard]] std::size_t SlotOf(std::string_view text) const;
  void Grow();

  std::string fBytes;
  std::vector<Place> fPlaces;
  std::vector<std::uint32_t> fSlots;  // numbers + 1 by hash, at most half of them taken; 0: free
};

}  // namespace Matching
