#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "json/JsonChildAccess.h"
#include "json/JsonKeyIndex.h"

namespace Tovrin::JSON {

// Values by key.
//
// The entries stand in one list, in the order in which their keys arrived; a removed one leaves a
// hole, and the list is closed up once half of it is holes. So the list is always in order of the
// sequence numbers, and the walk by sequence (of an object that keeps its order) and the walk of
// the table are the same walk, whatever was removed.
//
// Up to kLinearLimit keys are searched one by one, length first; beyond that an index is kept.
class JsonObject final : public JsonValue,
                         public JsonChildReads<JsonObject>,
                         public JsonChildSetters<JsonObject> {
public:
  using Visit = std::function<void(const std::string& key, JsonValue* child)>;

  class Entry {
  public:
    bool IsLive() const { return fKey != nullptr; }
    std::string_view Key() const { return {fKey, fKeySize}; }
    std::uint64_t Sequence() const { return fSequence; }
    JsonValue* Value() const { return fValue; }
    bool KeyIsPlain() const { return fKeyIsPlain; }  // as far as is known, see JsonValue::IsPlain

  private:
    friend class JsonCopier;
    friend class JsonObject;
    friend class JsonTreeReleaser;
    friend struct JsonTestPeer;

    const char* fKey;  // null for a removed entry
    std::uint64_t fKeySize : 62;
    std::uint64_t fKeyIsPlain : 1;
    std::uint64_t fOwnsKey : 1;  // otherwise the key stands in the object's tail
    std::uint64_t fSequence;
    JsonValue* fValue;  // owns one reference
  };

  // A member as a parser collects it: the key stands elsewhere, the value owns its reference.
  struct Member {
    std::string_view key;
    JsonValue* value;
    bool keyIsPlain;
  };

  static constexpr std::size_t kLinearLimit = 64;

  explicit JsonObject(bool keepKeyOrder = false)
      : JsonValue(TypeObject), fKeepKeyOrder(keepKeyOrder) {}

  std::size_t Size() const { return fCount; }
  bool KeepKeyOrder() const { return fKeepKeyOrder; }
  // The sequence number of the next key that is new. Never falls.
  std::uint64_t NextSequence() const { return fNextSequence; }
  // All entries in walk order, holes among them.
  std::span<const Entry> Entries() const { return {fEntries, fUsed}; }

  bool Has(std::string_view key) const { return Find(key) != nullptr; }
  JsonValue* ChildAt(std::string_view key) const;
  JsonValue* FindChild(const std::string& key) const override { return ChildAt(key); }

  // Stores the value, or with null removes the key. A key that is there keeps its place. False for
  // a key that is not valid UTF-8; the value is released then.
  bool Set(std::string_view key, JsonValue* owned, bool isKnownValid = false);
  bool Remove(std::string_view key);

  // Calls visit for each member in walk order, with a reference held around the call. The members
  // are those of the moment before the first call: visit may change the object.
  void ForEach(const Visit& visit) const;

  void ToCompactText(std::string& out) const override;
  void ToPrettyText(std::string& out, const std::string& indent, const std::string& lineBreak,
                    std::int32_t level) const override;
  void ToMsgPack(JsonMsgPackWriter& writer) const override;

private:
  friend class JsonCopier;
  friend class JsonNodeArena;
  friend class JsonTreeReleaser;
  friend struct JsonTestPeer;
  struct InTail {};
  // Entries and keys go right behind the node. Takes the values' references over; of a repeated key
  // the first place and the last value stay.
  JsonObject(InTail, std::span<const Member> members, bool keepKeyOrder);
  static std::size_t TailSize(std::span<const Member> members);
  ~JsonObject() override;

  Entry* Find(std::string_view key) const;
  Entry& Append(std::string_view key);  // a new entry without a value
  Entry& Append(const char* key, std::size_t size, bool ownsKey, JsonValue* value);
  void Reserve(std::size_t capacity);
  void CloseUp();
  void BuildIndex();
  void CheckInvariants() const;

  Entry* fEntries = nullptr;  // owned, unless it is the node's tail
  std::size_t fUsed = 0;      // entries, holes included
  std::size_t fCount = 0;     // entries without the holes
  union {
    std::size_t fCapacity = 0;
    JsonValue* fNextDead;  // of an object that is being destroyed
  };
  std::uint64_t fNextSequence = 0;
  std::unique_ptr<JsonKeyIndex> fIndex;  // there when fUsed is above kLinearLimit
  bool fKeepKeyOrder;
};

}  // namespace Tovrin::JSON
