#pragma once

#include <cstdint>

#include "json/JsonValue.h"

namespace Tovrin::JSON {

// Destroys a tree without recursion and without memory of its own: containers whose last reference
// went are linked through themselves until their turn comes. Nodes of one slab that go one after
// the other are taken off its count in one step.
class JsonTreeReleaser {
public:
  // Destroys a node whose last reference is gone, and all children that go with it.
  static void Destroy(JsonValue* dead);

private:
  JsonTreeReleaser() = default;
  ~JsonTreeReleaser();

  void Drop(JsonValue* child) {  // one reference; child may be null
    if (child && child->DropUse()) Bury(child);
  }
  void Bury(JsonValue* dead);
  void DropChildren(JsonValue* container);
  template <class Node>
  void Free(JsonValue* dead);

  JsonValue* fPending = nullptr;   // dead containers whose children still live
  JsonNodeSlab* fSlab = nullptr;   // slab of the last node freed
  std::uint32_t fSlabDropped = 0;  // nodes freed in it that it still counts
};

}  // namespace Tovrin::JSON
