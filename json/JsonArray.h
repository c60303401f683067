#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "json/JsonChildAccess.h"

namespace Tovrin::JSON {

// An ordered list of values. An item may be null after building from a vector that held one:
// writers skip it, MsgPack writes nil for it, and two null items are equal.
//
// What a real is to its text an array of numbers is to its own: as a parser leaves it, it has no
// items but the text of them, and is written as that. The first question for an item makes all of
// them. Several threads may ask it at once: one of them makes the items that stay.
class JsonArray final : public JsonValue, public JsonChildReads<JsonArray> {
public:
  using Visit = std::function<void(std::size_t index, JsonValue* child)>;
  using CheckedVisit = std::function<void(std::size_t index, JsonValue* child, void* user, bool& ok,
                                          std::string& error)>;

  JsonArray() : JsonValue(TypeArray) {}
  // Takes one more reference on each item that is not null.
  explicit JsonArray(const std::vector<JsonValue*>& items);

  std::size_t Size() const;
  std::span<JsonValue* const> Items() const {
    const Block* block = UsableBlock();
    if (!block) return {};
    return {block->Items(), block->size};
  }
  // The numbers, parted by commas, of an array that nobody has asked for an item yet; otherwise
  // empty.
  std::string_view PackedText() const;
  // The item, borrowed; null for a null item and for an index past the end.
  JsonValue* ChildAt(std::size_t index) const {
    const auto items = Items();
    return index < items.size() ? items[index] : nullptr;
  }
  // The item at the decimal index that the key spells. Null for a key that does not begin with a
  // digit; throws std::out_of_range for one beyond 32 bits.
  JsonValue* FindChild(const std::string& key) const override;

  // Appending a null pointer does nothing.
  void Append(JsonValue* owned);
  void AppendShared(JsonValue* value);  // one more reference
  void AppendCopy(const JsonValue* value);
  void AppendBool(bool value) { Append(NewJsonBool(value)); }
  void AppendUnsigned(std::uint64_t value) {
    Append(new JsonInteger(JsonInteger::Unsigned{}, value));
  }
  void AppendNull() { Append(new JsonNull); }
  void AppendDouble(double value) { Append(new JsonReal(value)); }
  // A text that is not valid UTF-8 is not appended, and the answer is false.
  bool AppendString(std::string_view text, bool isKnownValid = false);

  // Puts the value ahead of an item. A null value or an index that is no item's does nothing; the
  // value is released then.
  void Insert(std::size_t index, JsonValue* owned);
  bool Remove(std::size_t index) { return Remove(index, 1) == 1; }
  // Removes a run, as far as there are items, and tells how many went.
  std::size_t Remove(std::size_t index, std::size_t count);
  // Null at the last place shortens the array; null at any other place leaves a JsonNull there, so
  // that later indices do not move. A value for an index past the end is released.
  void Replace(std::size_t index, JsonValue* owned);

  // Calls visit for each item, null ones included, with a reference held around the call.
  void ForEach(const Visit& visit) const;
  // Calls check for every item; gathers the error texts as JsonItemErrors does, and answers the
  // truth value that the calls may clear.
  bool ForEachChecked(const CheckedVisit& check, void* user, std::string& errors) const;

  void ToCompactText(std::string& out) const override;
  void ToPrettyText(std::string& out, const std::string& indent, const std::string& lineBreak,
                    std::int32_t level) const override;
  void ToMsgPack(JsonMsgPackWriter& writer) const override;

private:
  friend class JsonCopier;
  friend class JsonNodeArena;
  friend class JsonTreeReleaser;
  friend struct JsonTestPeer;
  // The items, behind their count.
  struct Block {
    std::size_t size;
    union {
      std::size_t capacity;
      JsonValue* nextDead;  // of an array that is being destroyed
    };

    JsonValue** Items() const {
      return reinterpret_cast<JsonValue**>(const_cast<Block*>(this) + 1);
    }
    static Block* Make(std::size_t capacity);
  };
  // What stands ahead of the text of an array without items.
  struct PackedHead {
    std::uint32_t count;  // of numbers
    std::uint32_t size;   // of their text in bytes
  };

  struct InTail {};  // the block goes right behind the node, where the maker left room for it
  JsonArray(InTail, JsonValue* const* items, std::size_t count);  // takes the references over
  struct Packed {};  // the text goes there; white space in it is left out
  JsonArray(Packed, std::string_view text, PackedHead head);
  static JsonArray* NewPacked(std::string_view text, PackedHead head);
  ~JsonArray() override;

  char* Tail() const { return reinterpret_cast<char*>(const_cast<JsonArray*>(this) + 1); }
  const PackedHead& Head() const { return *reinterpret_cast<const PackedHead*>(Tail()); }
  bool OwnsBlock(const Block* block) const {
    return reinterpret_cast<const char*>(block) != Tail();
  }
  Block* UsableBlock() const {
    Block* block = fBlock.load(std::memory_order_acquire);
    return block || !HasTail() ? block : Unpack();
  }
  bool IsPacked() const { return !fBlock.load(std::memory_order_acquire) && HasTail(); }
  Block* Unpack() const;
  void Reserve(std::size_t capacity);
  Block& RoomForOne();

  // Each item owns one reference. Null for an array that is empty, and for one that is packed: that
  // has a tail. Whoever unpacks an array stores by compare-and-swap, whose release pairs with the
  // acquires above; the loser releases its own items. The block is owned unless it is the tail.
  mutable std::atomic<Block*> fBlock{nullptr};
};

}  // namespace Tovrin::JSON
