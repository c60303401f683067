#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "json/JsonParser.h"
#include "json/JsonTreeBuilder.h"

namespace Tovrin::JSON {

// A container that a reader has begun and not yet closed.
struct JsonOpenContainer {
  enum class Kind : std::uint8_t { Array, Object, CompiledObject };

  Kind kind;
  std::size_t begin = 0;                       // Array, Object: of its children in the builder
  const JsonCompiledSchema* schema = nullptr;  // Array: of its items, or null; CompiledObject: its
  JsonCompiledObject* compiled = nullptr;      // CompiledObject: owned
  std::size_t place = 0;                       // CompiledObject: of the value being read, or none
  std::string_view key = {};                   // Object: of the value being read
};

// What the readers of text and of MsgPack have in common. Containers that are open stand in a list
// of frames instead of on the stack, so depth is bounded by memory alone.
//
// Reader has three steps. Begin reads a value without children, or opens a container; Continue goes
// on with the innermost container until it is closed, and is the answer, or until another one is
// opened in it; both answer null where they opened one or failed. Store puts a whole value into the
// innermost container, and is false when that fails. Frame is a JsonOpenContainer with more to it.
template <class Reader, class Frame>
class JsonTreeReader {
protected:
  using Kind = JsonOpenContainer::Kind;

  explicit JsonTreeReader(JsonParseContext& context) : fContext(context) {}
  ~JsonTreeReader() {
    while (!fFrames.empty()) PopFrame();
  }
  JsonTreeReader(const JsonTreeReader&) = delete;
  JsonTreeReader& operator=(const JsonTreeReader&) = delete;

  JsonValue* ReadTree(const JsonCompiledSchema* schema) {
    auto& reader = static_cast<Reader&>(*this);
    JsonValue* value = reader.Begin(schema);
    while (!fFailed) {
      if (value && fFrames.empty()) return value;
      if (!value || reader.Store(value)) value = reader.Continue();
    }
    return nullptr;
  }

  std::nullptr_t Fail(std::string_view message) {
    fFailed = true;
    fContext.ErrorMessage = message;
    return nullptr;
  }

  // The frame is taken off, and what was read of its compiled object released.
  void PopFrame() {
    if (JsonCompiledObject* compiled = fFrames.back().compiled) compiled->Release();
    fFrames.pop_back();
  }
  // The frame is taken off, and its container is the answer.
  JsonValue* CloseFrame() {
    const Frame frame = fFrames.back();
    fFrames.pop_back();
    switch (frame.kind) {
      case Kind::Array:
        return fBuilder.CloseArray(frame.begin);
      case Kind::Object:
        return fBuilder.CloseObject(frame.begin, fContext.KeepKeyOrder);
      case Kind::CompiledObject:
        break;
    }
    return frame.compiled;
  }

  JsonParseContext& fContext;
  JsonTreeBuilder fBuilder;
  std::vector<Frame> fFrames;  // the innermost last
  bool fFailed = false;
};

}  // namespace Tovrin::JSON
