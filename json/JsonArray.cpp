#include "json/JsonArray.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "Common/CUseCounted.h"
#include "json/JsonItemErrors.h"

namespace Tovrin::JSON {

namespace {

constexpr std::size_t kUsualCapacity = 10;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

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

JsonArray::JsonArray(const std::vector<JsonValue*>& items) : JsonValue(TypeArray) {
  Reserve(items.size());
  for (JsonValue* item : items) {
    if (item) item->AddRef();
    fItems[fSize++] = item;
  }
}

JsonArray::JsonArray(InTail, JsonValue* const* items, std::size_t count)
    : JsonValue(TypeArray),
      fItems(reinterpret_cast<JsonValue**>(reinterpret_cast<char*>(this) + sizeof(JsonArray))),
      fSize(count),
      fCapacity(count) {
  std::copy_n(items, count, fItems);
}

JsonArray::~JsonArray() {
  if (!HasTail()) delete[] fItems;
}

JsonValue* JsonArray::FindChild(const std::string& key) const {
  if (key.empty() || !IsDigit(key[0])) return nullptr;
  return ChildAt(static_cast<std::size_t>(ReadIndex(key)));
}

void JsonArray::Reserve(std::size_t capacity) {
  if (capacity <= fCapacity) return;
  auto** items = new JsonValue*[capacity];
  std::copy_n(fItems, fSize, items);
  if (!HasTail()) delete[] fItems;
  SetHasTail(false);
  fItems = items;
  fCapacity = capacity;
}

void JsonArray::MakeRoom() {
  if (fSize != 0 && fCapacity < kUsualCapacity) Reserve(kUsualCapacity);
  if (fSize == fCapacity) Reserve(std::max<std::size_t>(1, 2 * fCapacity));
}

void JsonArray::Append(JsonValue* owned) {
  if (!owned) return;
  MakeRoom();
  fItems[fSize++] = owned;
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
  if (index >= fSize) {
    owned->Release();
    return;
  }
  MakeRoom();
  std::copy_backward(fItems + index, fItems + fSize, fItems + fSize + 1);
  fItems[index] = owned;
  ++fSize;
}

std::size_t JsonArray::Remove(std::size_t index, std::size_t count) {
  constexpr std::size_t kRefused = std::numeric_limits<std::int64_t>::max();
  if (index >= fSize || index >= kRefused) return 0;

  const std::size_t removed = std::min(count, fSize - index);
  // The array is whole again before anything is destroyed.
  const std::vector<JsonValue*> run(fItems + index, fItems + index + removed);
  std::copy(fItems + index + removed, fItems + fSize, fItems + index);
  fSize -= removed;
  for (JsonValue* item : run) {
    if (item) item->Release();
  }
  return removed;
}

void JsonArray::Replace(std::size_t index, JsonValue* owned) {
  if (index >= fSize) {
    if (owned) owned->Release();
    return;
  }
  JsonValue* old = fItems[index];
  if (owned) {
    fItems[index] = owned;
  } else if (index + 1 == fSize) {
    --fSize;
  } else {
    fItems[index] = new JsonNull;
  }
  if (old) old->Release();
}

void JsonArray::ForEach(const Visit& visit) const {
  if (!visit) return;
  for (std::size_t i = 0; i < fSize; ++i) {
    const auto held = ShareUse(fItems[i]);
    visit(i, held.Get());
  }
}

bool JsonArray::ForEachChecked(const CheckedVisit& check, void* user, std::string& errors) const {
  bool ok = true;
  if (!check) return ok;
  JsonItemErrors gathered(errors);
  for (std::size_t i = 0; i < fSize; ++i) {
    const auto held = ShareUse(fItems[i]);
    std::string error;
    check(i, held.Get(), user, ok, error);
    gathered.Add(i, error);
  }
  return ok;
}

}  // namespace Tovrin::JSON
