#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <string_view>
#include <utility>

#include "json/JsonArray.h"
#include "json/JsonObject.h"
#include "json/JsonScalars.h"

namespace Tovrin::JSON {

// A block of memory that many nodes stand in. It goes with its last node: one small node that is
// kept keeps at most the block of its neighbours.
class JsonNodeSlab {
public:
  static JsonNodeSlab* Make(std::size_t size);  // size includes the head
  // Takes count owners off; any thread may, and who takes the last one frees the slab. The acquire
  // pairs with the release of the other owners.
  void Drop(std::uint32_t count) {
    if (fOwners.fetch_sub(count, std::memory_order_acq_rel) == count) Free();
  }

private:
  friend class JsonNodeArena;
  // What the open slab's arena holds until it knows how many nodes it made; above any count of
  // nodes.
  static constexpr std::uint32_t kArenaShare = std::uint32_t{1} << 30;

  void Free();

  std::atomic<std::uint32_t> fOwners{kArenaShare};
};

// Makes the nodes of one parse, several to a slab, each with its text, items or entries right
// behind it. One thread's; the nodes are as free as others, and live on when the arena is gone.
class JsonNodeArena {
  static constexpr std::size_t kHeadSize = 16;
  static constexpr std::size_t kFirstSlabSize = 512;
  static constexpr std::size_t kLastSlabSize = 64 * 1024;

public:
  // Who knows about how many bytes the nodes will take asks for a slab of that size at once.
  explicit JsonNodeArena(std::size_t firstSlabSize = kFirstSlabSize)
      : fNextSlabSize(std::min(firstSlabSize + kHeadSize, kLastSlabSize)) {}
  ~JsonNodeArena() { Close(); }
  JsonNodeArena(const JsonNodeArena&) = delete;
  JsonNodeArena& operator=(const JsonNodeArena&) = delete;

  template <class Leaf, class... Arguments>
  Leaf* New(Arguments... arguments) {
    return Make<Leaf>(0, arguments...);
  }
  // The text is not checked; a plain one has no byte that needs an escape.
  JsonString* NewString(std::string_view text, bool isPlain) {
    return WithTail(Make<JsonString>(text.size(), JsonString::InTail{}, text, isPlain));
  }
  JsonReal* NewReal(std::string_view text, std::int32_t precision);
  // Both take over the references in their arguments.
  JsonArray* NewArray(std::span<JsonValue* const> items) {
    if (items.empty()) return New<JsonArray>();
    return Make<JsonArray>(sizeof(JsonArray::Block) + items.size_bytes(), JsonArray::InTail{},
                           items.data(), items.size());
  }
  // An array that stays text, of that many bytes without the white space in it.
  JsonArray* NewPackedArray(std::string_view text, std::uint32_t count, std::uint32_t size) {
    return Make<JsonArray>(sizeof(JsonArray::PackedHead) + size, JsonArray::Packed{}, text,
                           JsonArray::PackedHead{count, size});
  }
  JsonObject* NewObject(std::span<const JsonObject::Member> members, bool keepKeyOrder) {
    return WithTail(Make<JsonObject>(JsonObject::TailSize(members), JsonObject::InTail{}, members,
                                     keepKeyOrder));
  }

private:
  template <class Node, class... Arguments>
  Node* Make(std::size_t tailSize, Arguments... arguments) {
    const std::size_t size = (sizeof(Node) + tailSize + 7) / 8 * 8;
    if (static_cast<std::size_t>(fEnd - fFree) < size)
      return MakeElsewhere<Node>(size, arguments...);
    Node* node = new (fFree) Node(arguments...);
    node->fSlabDistance = static_cast<std::uint32_t>((fFree - fStart) / 8);
    fFree += size;
    ++fMade;
    return node;
  }
  template <class Node, class... Arguments>
  Node* MakeElsewhere(std::size_t size, Arguments... arguments) {
    if (size > kLastSlabSize / 4) {  // a slab of its own, so that the open one need not be given up
      JsonNodeSlab* slab = JsonNodeSlab::Make(kHeadSize + size);
      Node* node = new (reinterpret_cast<char*>(slab) + kHeadSize) Node(arguments...);
      node->fSlabDistance = kHeadSize / 8;
      slab->Drop(JsonNodeSlab::kArenaShare - 1);
      return node;
    }
    Open(size);
    return Make<Node>(size - sizeof(Node), arguments...);
  }
  template <class Node>
  static Node* WithTail(Node* node) {
    node->SetHasTail(true);
    return node;
  }

  void Open(std::size_t size);  // a fresh slab with room for that many bytes
  void Close();

  // The open slab.
  char* fStart = nullptr;
  char* fFree = nullptr;
  char* fEnd = nullptr;
  std::uint32_t fMade = 0;  // nodes in it

  std::size_t fNextSlabSize;
};

}  // namespace Tovrin::JSON
