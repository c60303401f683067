#include "json/JsonArray.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

#include "Common/CUseCounted.h"
#include "json/JsonItemErrors.h"
#include "json/JsonNodeArena.h"
#include "json/JsonNumber.h"
#include "json/JsonTextScan.h"

namespace Tovrin::JSON {

namespace {

constexpr std::size_t kUsualCapacity = 10;

// The number that the key begins with, as the standard library's string-to-int reads it, whatever
// words that library itself would use.
std::int32_t ReadIndex(const std::string& key) {
  std::int64_t index = 0;
  std::size_t at = 0;
  for (; at < key.size() && IsDigit(key[at]); ++at) {
    index = index * 10 + (key[at] - '0');
    if (index > std::numeric_limits<std::int32_t>::max()) {
      throw std::out_of_range("stoi argument out of range");
    }
  }
  if (at == 0) throw std::invalid_argument("invalid stoi argument");
  return static_cast<std::int32_t>(index);
}

}  // namespace

JsonArray::Block* JsonArray::Block::Make(std::size_t capacity) {
  auto* block = static_cast<Block*>(::operator new(sizeof(Block) + capacity * sizeof(JsonValue*)));
  block->size = 0;
  block->capacity = capacity;
  return block;
}

JsonArray::JsonArray(const std::vector<JsonValue*>& items) : JsonValue(TypeArray) {
  if (items.empty()) return;
  Block* block = Block::Make(items.size());
  for (JsonValue* item : items) {
    if (item) item->AddRef();
    block->Items()[block->size++] = item;
  }
  fBlock.store(block, std::memory_order_relaxed);
}

JsonArray::JsonArray(InTail, JsonValue* const* items, std::size_t count) : JsonValue(TypeArray) {
  SetHasTail(true);
  auto* block = reinterpret_cast<Block*>(Tail());
  block->size = block->capacity = count;
  std::copy_n(items, count, block->Items());
  fBlock.store(block, std::memory_order_relaxed);
}

JsonArray::JsonArray(Packed, std::string_view text, PackedHead head) : JsonValue(TypeArray) {
  SetHasTail(true);
  std::memcpy(Tail(), &head, sizeof head);
  char* out = Tail() + sizeof head;
  if (text.size() == head.size) {
    std::memcpy(out, text.data(), text.size());
  } else {
    std::copy_if(text.begin(), text.end(), out, [](char c) { return c > ' '; });
  }
}

JsonArray* JsonArray::NewPacked(std::string_view text, PackedHead head) {
  void* place = ::operator new(sizeof(JsonArray) + sizeof head + head.size);
  return new (place) JsonArray(Packed{}, text, head);
}

JsonArray::~JsonArray() {
  Block* block = fBlock.load(std::memory_order_relaxed);
  if (OwnsBlock(block)) ::operator delete(block);
}

std::size_t JsonArray::Size() const {
  if (const Block* block = fBlock.load(std::memory_order_acquire)) return block->size;
  return HasTail() ? Head().count : 0;
}

std::string_view JsonArray::PackedText() const {
  if (!IsPacked()) return {};
  return {Tail() + sizeof(PackedHead), Head().size};
}

JsonArray::Block* JsonArray::Unpack() const {
  const PackedHead head = Head();
  Block* block = Block::Make(head.count);
  JsonNodeArena arena(head.count * sizeof(JsonReal) + head.size);
  std::string_view rest(Tail() + sizeof head, head.size);
  for (; block->size < head.count; ++block->size) {
    std::size_t size = 0;
    const char* error = nullptr;
    block->Items()[block->size] = ReadNumber(rest, arena, size, error);
    rest.remove_prefix(std::min(size + 1, rest.size()));  // the comma, too
  }

  Block* known = nullptr;
  if (fBlock.compare_exchange_strong(known, block, std::memory_order_acq_rel)) return block;
  for (JsonValue* item : std::span(block->Items(), block->size)) item->Release();
  ::operator delete(block);
  return known;
}

JsonValue* JsonArray::FindChild(const std::string& key) const {
  if (key.empty() || !IsDigit(key[0])) return nullptr;
  return ChildAt(static_cast<std::size_t>(ReadIndex(key)));
}

void JsonArray::Reserve(std::size_t capacity) {
  Block* old = UsableBlock();
  if (capacity <= (old ? old->capacity : 0)) return;
  Block* block = Block::Make(capacity);
  if (old) {
    block->size = old->size;
    std::copy_n(old->Items(), old->size, block->Items());
    if (OwnsBlock(old)) ::operator delete(old);
  }
  fBlock.store(block, std::memory_order_release);
}

JsonArray::Block& JsonArray::RoomForOne() {
  const Block* block = UsableBlock();
  const std::size_t size = block ? block->size : 0;
  if (!block) {
    Reserve(1);
  } else if (size != 0 && block->capacity < kUsualCapacity) {
    Reserve(kUsualCapacity);
  } else if (size == block->capacity) {
    Reserve(std::max<std::size_t>(1, 2 * size));
  }
  return *fBlock.load(std::memory_order_relaxed);
}

void JsonArray::Append(JsonValue* owned) {
  if (!owned) return;
  Block& block = RoomForOne();
  block.Items()[block.size++] = owned;
}

void JsonArray::AppendShared(JsonValue* value) {
  if (value) value->AddRef();
  Append(value);
}

void JsonArray::AppendCopy(const JsonValue* value) {
  if (value) Append(value->Clone());
}

bool JsonArray::AppendString(std::string_view text, bool isKnownValid) {
  bool valid = false;
  auto* string = new JsonString(text, isKnownValid, &valid);
  if (valid) {
    Append(string);
  } else {
    string->Release();
  }
  return valid;
}

void JsonArray::Insert(std::size_t index, JsonValue* owned) {
  if (!owned) return;
  if (index >= Size()) {
    owned->Release();
    return;
  }
  Block& block = RoomForOne();
  JsonValue** items = block.Items();
  std::copy_backward(items + index, items + block.size, items + block.size + 1);
  items[index] = owned;
  ++block.size;
}

std::size_t JsonArray::Remove(std::size_t index, std::size_t count) {
  constexpr std::size_t kRefused = std::numeric_limits<std::int64_t>::max();
  if (index >= Size() || index >= kRefused) return 0;

  Block& block = *UsableBlock();
  JsonValue** const begin = block.Items() + index;
  const std::size_t removed = std::min(count, block.size - index);
  // The array is whole again before anything is destroyed.
  const std::vector<JsonValue*> run(begin, begin + removed);
  std::copy(begin + removed, block.Items() + block.size, begin);
  block.size -= removed;
  for (JsonValue* item : run) {
    if (item) item->Release();
  }
  return removed;
}

void JsonArray::Replace(std::size_t index, JsonValue* owned) {
  if (index >= Size()) {
    if (owned) owned->Release();
    return;
  }
  Block& block = *UsableBlock();
  JsonValue*& item = block.Items()[index];
  JsonValue* const old = item;
  if (owned) {
    item = owned;
  } else if (index + 1 == block.size) {
    --block.size;
  } else {
    item = new JsonNull;
  }
  if (old) old->Release();
}

void JsonArray::ForEach(const Visit& visit) const {
  if (!visit) return;
  for (std::size_t i = 0; i < Size(); ++i) {
    const auto held = ShareUse(ChildAt(i));
    visit(i, held.Get());
  }
}

bool JsonArray::ForEachChecked(const CheckedVisit& check, void* user, std::string& errors) const {
  bool ok = true;
  if (!check) return ok;
  JsonItemErrors gathered(errors);
  for (std::size_t i = 0; i < Size(); ++i) {
    const auto held = ShareUse(ChildAt(i));
    std::string error;
    check(i, held.Get(), user, ok, error);
    gathered.Add(i, error);
  }
  return ok;
}

}  // namespace Tovrin::JSON
