#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "json/JsonChildAccess.h"
#include "json/JsonKeyIndex.h"

namespace Tovrin::JSON {

// What the value of a schema's key may be. The text parser looks at the containers alone; MsgPack
// checks every bit.
enum JsonKeyFlags : std::uint16_t {
  KeyString = 0x0001,
  KeyNumber = 0x0002,
  KeyBoolean = 0x0004,
  KeyNull = 0x0008,
  KeyArray = 0x00F0,
  KeyObject = 0x0100,
  KeyCompiledObject = 0x0200,  // read with the key's child schema
  KeyRequired = 0x0400,
};

// The keys of compiled objects, fixed beforehand. Objects point at their schema, so it outlives
// them, and nothing is added once objects exist that should have a place for it.
struct JsonCompiledSchema {
  static constexpr std::size_t kNone = JsonKeyIndex::kNone;

  // The index of the key; one that is there already keeps its flags and child. Without a child,
  // KeyCompiledObject becomes KeyObject.
  std::size_t AddKey(std::string_view key, std::uint16_t flags,
                     const JsonCompiledSchema* child = nullptr);
  std::size_t Find(std::string_view key) const;  // or kNone

  std::vector<std::string> Keys;
  JsonKeyIndex KeyIndex;
  std::vector<std::uint16_t> Flags;                 // JsonKeyFlags, parallel to Keys
  std::vector<const JsonCompiledSchema*> Children;  // parallel to Keys, null without a schema
};

// An object whose keys stand in a shared schema: one place a key, and no key stored.
class JsonCompiledObject final : public JsonValue,
                                 public JsonChildReads<JsonCompiledObject>,
                                 public JsonChildSetters<JsonCompiledObject> {
public:
  using Visit = std::function<void(std::size_t index, JsonValue* child)>;

  explicit JsonCompiledObject(const JsonCompiledSchema* schema);

  const JsonCompiledSchema* Schema() const { return fSchema; }
  std::uint64_t Count() const { return fCount; }  // places that hold a value
  std::span<JsonValue* const> Values() const { return fValues; }

  JsonValue* ChildAt(std::size_t index) const {
    return index < fValues.size() ? fValues[index] : nullptr;
  }
  JsonValue* ChildAt(std::string_view key) const;
  JsonValue* FindChild(const std::string& key) const override { return ChildAt(key); }

  // Stores the value; null clears the place. False for an index that is no place, and the value is
  // released then.
  bool Set(std::size_t index, JsonValue* owned);
  void Clear(std::size_t index);

  // Every key that the schema requires has a value. Nothing enforces that; parsing does not ask.
  bool IsRequiredComplete() const;

  // Calls visit for each place that holds a value, with a reference held around the call.
  void ForEach(const Visit& visit) const;

  void ToCompactText(std::string& out) const override;
  void ToPrettyText(std::string& out, const std::string& indent, const std::string& lineBreak,
                    std::int32_t level) const override;
  void ToMsgPack(JsonMsgPackWriter& writer) const override;

private:
  friend class JsonCopier;
  friend class JsonTreeReleaser;
  friend struct JsonTestPeer;
  ~JsonCompiledObject() override = default;

  const JsonCompiledSchema* fSchema;
  union {
    std::uint64_t fCount = 0;
    JsonValue* fNextDead;  // of an object that is being destroyed
  };
  std::vector<JsonValue*> fValues;  // each that is not null owns one reference
};

}  // namespace Tovrin::JSON
