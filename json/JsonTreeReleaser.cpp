#include "json/JsonTreeReleaser.h"

#include <new>

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonNodeArena.h"
#include "json/JsonObject.h"
#include "json/JsonScalars.h"

namespace Tovrin::JSON {

void JsonTreeReleaser::Destroy(JsonValue* dead) {
  JsonTreeReleaser releaser;
  releaser.Bury(dead);
  while (releaser.fPending) releaser.DropChildren(releaser.fPending);
}

JsonTreeReleaser::~JsonTreeReleaser() {
  if (fSlab) fSlab->Drop(fSlabDropped);
}

template <class Node>
void JsonTreeReleaser::Free(JsonValue* dead) {
  const std::uint32_t distance = dead->fSlabDistance;
  static_cast<Node*>(dead)->~Node();
  if (distance == 0) return ::operator delete(static_cast<void*>(dead));

  auto* slab =
      reinterpret_cast<JsonNodeSlab*>(reinterpret_cast<char*>(dead) - std::size_t{distance} * 8);
  if (slab != fSlab) {
    if (fSlab) fSlab->Drop(fSlabDropped);
    fSlab = slab;
    fSlabDropped = 0;
  }
  ++fSlabDropped;
}

void JsonTreeReleaser::Bury(JsonValue* dead) {
  const auto link = [&](JsonValue* container, JsonValue*& nextDead) {
    nextDead = fPending;
    fPending = container;
  };
  switch (dead->GetType()) {
    case JsonValue::TypeString:
      return Free<JsonString>(dead);
    case JsonValue::TypeInteger:
      return Free<JsonInteger>(dead);
    case JsonValue::TypeReal:
      return Free<JsonReal>(dead);
    case JsonValue::TypeObject:
      return link(dead, static_cast<JsonObject*>(dead)->fNextDead);
    case JsonValue::TypeCompiledObject:
      return link(dead, static_cast<JsonCompiledObject*>(dead)->fNextDead);
    case JsonValue::TypeArray:
      if (auto* block = static_cast<JsonArray*>(dead)->fBlock.load(std::memory_order_acquire)) {
        return link(dead, block->nextDead);
      }
      return Free<JsonArray>(dead);  // empty, or without items as yet
    case JsonValue::TypeTrue:
      return Free<JsonTrue>(dead);
    case JsonValue::TypeFalse:
      return Free<JsonFalse>(dead);
    case JsonValue::TypeNull:
      return Free<JsonNull>(dead);
  }
}

void JsonTreeReleaser::DropChildren(JsonValue* container) {
  if (auto* array = ToArray(container)) {
    fPending = array->fBlock.load(std::memory_order_relaxed)->nextDead;
    for (JsonValue* item : array->Items()) Drop(item);
    Free<JsonArray>(array);
  } else if (auto* object = ToObject(container)) {
    fPending = object->fNextDead;
    for (const JsonObject::Entry& entry : object->Entries()) Drop(entry.fValue);
    Free<JsonObject>(object);
  } else {
    auto* compiled = static_cast<JsonCompiledObject*>(container);
    fPending = compiled->fNextDead;
    for (JsonValue* value : compiled->Values()) Drop(value);
    Free<JsonCompiledObject>(compiled);
  }
}

}  // namespace Tovrin::JSON
