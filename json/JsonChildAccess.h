#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "json/JsonScalars.h"

namespace Tovrin::JSON {

class JsonArray;
class JsonObject;
class JsonCompiledObject;

JsonArray* ToArray(JsonValue* value);                    // null unless it is one
JsonObject* ToObject(JsonValue* value);                  // null unless it is one
JsonCompiledObject* ToCompiledObject(JsonValue* value);  // null unless it is one

// The typed reads of a container that has ChildAt (borrowed, or null) for an index, a key or both.
// What is missing or of another type is answered with null, false, 0, 0.0 or an empty string; a
// node that is handed out carries a reference.
template <class Container>
class JsonChildReads {
public:
  template <class Place>
  JsonValue* Child(const Place& place) const {
    return Counted(At(place));
  }
  template <class Place>
  JsonArray* ChildAsArray(const Place& place) const {
    return Counted(ToArray(At(place)));
  }
  template <class Place>
  JsonCompiledObject* ChildAsCompiledObject(const Place& place) const {
    return Counted(ToCompiledObject(At(place)));
  }
  template <class Place>
  JsonObject* ChildAsObject(const Place& place) const {
    return Counted(ToObject(At(place)));
  }
  template <class Place>
  bool ChildAsBool(const Place& place) const {
    return Converted<bool>(place, &JsonValue::AsBool);
  }
  template <class Place>
  std::int64_t ChildAsInteger(const Place& place) const {
    return Converted<std::int64_t>(place, &JsonValue::AsInt64);
  }
  template <class Place>
  double ChildAsReal(const Place& place) const {
    return Converted<double>(place, &JsonValue::AsDouble);
  }
  template <class Place>
  std::string ChildAsString(const Place& place) const {
    return Converted<std::string>(place, &JsonValue::AsString);
  }

protected:
  ~JsonChildReads() = default;

private:
  template <class Place>
  JsonValue* At(const Place& place) const {
    return static_cast<const Container*>(this)->ChildAt(place);
  }
  template <class Node>
  static Node* Counted(Node* node) {
    if (node) node->AddRef();
    return node;
  }
  template <class Answer, class Place>
  Answer Converted(const Place& place, bool (JsonValue::*convert)(Answer&) const) const {
    Answer answer{};
    if (const JsonValue* child = At(place)) (child->*convert)(answer);
    return answer;
  }
};

// The setters by kind of a container that has Set(place, owned value, flags...). Each answers what
// that Set answers.
template <class Container>
class JsonChildSetters {
public:
  template <class Place, class... Flags>
  bool SetBool(const Place& place, bool value, Flags... flags) {
    return Put(place, NewJsonBool(value), flags...);
  }
  template <class Place, class... Flags>
  bool SetInteger(const Place& place, std::int64_t value, Flags... flags) {
    return Put(place, new JsonInteger(value), flags...);
  }
  template <class Place, class... Flags>
  bool SetUnsigned(const Place& place, std::uint64_t value, Flags... flags) {
    return Put(place, new JsonInteger(JsonInteger::Unsigned{}, value), flags...);
  }
  template <class Place, class... Flags>
  bool SetDouble(const Place& place, double value, Flags... flags) {
    return Put(place, new JsonReal(value), flags...);
  }
  template <class Place, class... Flags>
  bool SetNull(const Place& place, Flags... flags) {
    return Put(place, new JsonNull, flags...);
  }
  // A text that is not valid UTF-8 is not stored, and the answer is false.
  template <class Place, class... Flags>
  bool SetString(const Place& place, std::string_view text, Flags... flags) {
    bool valid = false;
    JsonString* value = new JsonString(text, false, &valid);
    if (valid) return Put(place, value, flags...);
    value->Release();
    return false;
  }
  // One more reference on a value of the caller's.
  template <class Place, class... Flags>
  bool SetShared(const Place& place, JsonValue* value, Flags... flags) {
    if (value) value->AddRef();
    return Put(place, value, flags...);
  }
  template <class Place, class... Flags>
  bool SetCopy(const Place& place, const JsonValue* value, Flags... flags) {
    return Put(place, value ? value->Clone() : nullptr, flags...);
  }

protected:
  ~JsonChildSetters() = default;

private:
  template <class Place, class... Flags>
  bool Put(const Place& place, JsonValue* value, Flags... flags) {
    return static_cast<Container*>(this)->Set(place, value, flags...);
  }
};

}  // namespace Tovrin::JSON
