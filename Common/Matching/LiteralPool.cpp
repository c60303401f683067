#include "Common/Matching/LiteralPool.h"

#include <algorithm>
#include <functional>

namespace Matching {

std::uint32_t LiteralPool::Add(std::string_view text) {
  if (2 * (fPlaces.size() + 1) > fSlots.size()) Grow();
  std::uint32_t& slot = fSlots[SlotOf(text)];
  if (slot != 0) return slot - 1;
  if (text.size() > kNone - fBytes.size() || fPlaces.size() + 1 >= kNone) return kNone;
  fPlaces.push_back(
      {static_cast<std::uint32_t>(fBytes.size()), static_cast<std::uint32_t>(text.size())});
  fBytes.append(text);
  slot = static_cast<std::uint32_t>(fPlaces.size());
  return slot - 1;
}

std::uint32_t LiteralPool::Find(std::string_view text) const {
  return fSlots.empty() ? kNone : fSlots[SlotOf(text)] - 1;  // of a free slot: kNone
}

void LiteralPool::Freeze() {
  fSlots = std::vector<std::uint32_t>();  // an empty list in braces would keep the memory
  fPlaces.shrink_to_fit();
  fBytes.shrink_to_fit();
}

std::size_t LiteralPool::SlotOf(std::string_view text) const {
  const std::size_t mask = fSlots.size() - 1;
  std::size_t slot = std::hash<std::string_view>()(text) & mask;
  while (fSlots[slot] != 0 && (*this)[fSlots[slot] - 1] != text) slot = (slot + 1) & mask;
  return slot;
}

void LiteralPool::Grow() {
  fSlots.assign(std::max<std::size_t>(2 * fSlots.size(), 16), 0);
  for (std::uint32_t number = 0; number < fPlaces.size(); ++number) {
    fSlots[SlotOf((*this)[number])] = number + 1;
  }
}

std::size_t LiteralPool::MemorySize() const {
  return fBytes.capacity() + fPlaces.capacity() * sizeof(Place) +
         fSlots.capacity() * sizeof(std::uint32_t);
}

}  // namespace Matching
