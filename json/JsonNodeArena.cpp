#include "json/JsonNodeArena.h"

#include <algorithm>
#include <limits>

namespace Tovrin::JSON {

JsonNodeSlab* JsonNodeSlab::Make(std::size_t size) {
  return new (::operator new(size)) JsonNodeSlab;
}

void JsonNodeSlab::Free() {
  this->~JsonNodeSlab();
  ::operator delete(static_cast<void*>(this));
}

JsonReal* JsonNodeArena::NewReal(std::string_view text, std::int32_t precision) {
  if (text.empty() || text.size() > std::numeric_limits<std::uint32_t>::max()) {
    return Make<JsonReal>(0, text, precision);
  }
  constexpr std::size_t kInNode = JsonReal::kTailInNode;
  const std::size_t behind = text.size() > kInNode ? text.size() - kInNode : 0;
  return WithTail(Make<JsonReal>(behind, JsonReal::InTail{}, text, precision));
}

void JsonNodeArena::Open(std::size_t size) {
  static_assert(sizeof(JsonNodeSlab) <= kHeadSize);
  Close();
  const std::size_t slabSize = std::max(fNextSlabSize, kHeadSize + size);
  fStart = reinterpret_cast<char*>(JsonNodeSlab::Make(slabSize));
  fFree = fStart + kHeadSize;
  fEnd = fStart + slabSize;
  fNextSlabSize = std::min(2 * fNextSlabSize, kLastSlabSize);
}

void JsonNodeArena::Close() {
  if (!fStart) return;
  reinterpret_cast<JsonNodeSlab*>(fStart)->Drop(JsonNodeSlab::kArenaShare - fMade);
  fStart = fFree = fEnd = nullptr;
  fMade = 0;
}

}  // namespace Tovrin::JSON
