#pragma once

#include <cstddef>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "json/JsonNodeArena.h"

namespace Tovrin::JSON {

// Where a parser keeps what it has read of containers that are still open. Items and members lie on
// two stacks; a container remembers how high its stack was when it began, and takes what lies above
// when it is closed. What is left when the builder goes is released.
class JsonTreeBuilder {
public:
  JsonTreeBuilder() = default;
  ~JsonTreeBuilder() {
    for (JsonValue* item : fItems) item->Release();
    for (const JsonObject::Member& member : fMembers) member.value->Release();
  }
  JsonTreeBuilder(const JsonTreeBuilder&) = delete;
  JsonTreeBuilder& operator=(const JsonTreeBuilder&) = delete;

  JsonNodeArena& Arena() { return fArena; }

  std::size_t ItemCount() const { return fItems.size(); }
  std::size_t MemberCount() const { return fMembers.size(); }
  void AddItem(JsonValue* owned) { fItems.push_back(owned); }
  // The key has to stand until the object is closed.
  void AddMember(std::string_view key, JsonValue* owned, bool keyIsPlain) {
    fMembers.push_back({key, owned, keyIsPlain});
  }
  // A key that does not stand in the input.
  std::string_view KeepKey(std::string_view key) { return fKeys.emplace_back(key); }

  JsonArray* CloseArray(std::size_t begin) {
    JsonArray* array = fArena.NewArray(std::span(fItems).subspan(begin));
    fItems.resize(begin);
    return array;
  }
  JsonObject* CloseObject(std::size_t begin, bool keepKeyOrder) {
    JsonObject* object = fArena.NewObject(std::span(fMembers).subspan(begin), keepKeyOrder);
    fMembers.resize(begin);
    return object;
  }

private:
  JsonNodeArena fArena;
  std::vector<JsonValue*> fItems;            // owned
  std::vector<JsonObject::Member> fMembers;  // their values are owned
  std::deque<std::string> fKeys;             // a deque, since views of them are held
};

}  // namespace Tovrin::JSON
