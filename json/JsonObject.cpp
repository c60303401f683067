#include "json/JsonObject.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

#include "Common/CUseCounted.h"
#include "json/JsonParser.h"

namespace Tovrin::JSON {

namespace {

// Remembers keys roughly: what it has not seen was not added. Length and outer bytes tell most keys
// of one object apart.
//
// Perf: spares a parse nearly all comparisons of keys with those before them (bench/json, parsing).
class SeenKeys {
public:
  // Whether a key like this was added before; adds it.
  bool Test(std::string_view key) {
    unsigned mix = static_cast<unsigned>(key.size()) * 31;
    if (!key.empty()) {
      mix += static_cast<unsigned char>(key.front()) * 7U +
             static_cast<unsigned char>(key[key.size() / 2]) * 3U +
             static_cast<unsigned char>(key.back());
    }
    std::uint64_t& word = fBits[mix / 64 % 4];
    const std::uint64_t bit = std::uint64_t{1} << mix % 64;
    return std::exchange(word, word | bit) & bit;
  }

private:
  std::uint64_t fBits[4] = {};
};

}  // namespace

static_assert(std::is_trivially_copyable_v<JsonObject::Entry> && sizeof(JsonObject::Entry) == 32);

std::size_t JsonObject::TailSize(std::span<const Member> members) {
  std::size_t size = members.size() * sizeof(Entry);
  for (const Member& member : members) size += member.key.size();
  return size;
}

JsonObject::JsonObject(InTail, std::span<const Member> members, bool keepKeyOrder)
    : JsonValue(TypeObject),
      fEntries(reinterpret_cast<Entry*>(reinterpret_cast<char*>(this) + sizeof(JsonObject))),
      fCapacity(members.size()),
      fKeepKeyOrder(keepKeyOrder) {
  char* keys = reinterpret_cast<char*>(fEntries + members.size());
  SeenKeys seen;
  for (const Member& member : members) {
    if (seen.Test(member.key)) {
      if (Entry* entry = Find(member.key)) {
        std::exchange(entry->fValue, member.value)->Release();
        continue;
      }
    }
    if (!member.key.empty()) std::memcpy(keys, member.key.data(), member.key.size());
    Append(keys, member.key.size(), false, member.value).fKeyIsPlain = member.keyIsPlain;
    keys += member.key.size();
  }
}

JsonObject::~JsonObject() {
  for (const Entry& entry : Entries()) {
    if (entry.IsLive() && entry.fOwnsKey) delete[] entry.fKey;
  }
  if (!HasTail()) ::operator delete(fEntries);
}

JsonObject::Entry* JsonObject::Find(std::string_view key) const {
  if (fIndex) {
    const std::size_t at = fIndex->Find(key, [&](std::size_t i) { return fEntries[i].Key(); });
    return at == JsonKeyIndex::kNone ? nullptr : fEntries + at;
  }
  for (Entry* entry = fEntries; entry != fEntries + fUsed; ++entry) {
    if (entry->fKeySize == key.size() && entry->IsLive() && entry->Key() == key) return entry;
  }
  return nullptr;
}

JsonValue* JsonObject::ChildAt(std::string_view key) const {
  const Entry* entry = Find(key);
  return entry ? entry->fValue : nullptr;
}

bool JsonObject::Set(std::string_view key, JsonValue* owned, bool isKnownValid) {
  if (!isKnownValid && !IsValidUtf8(key)) {
    if (owned) owned->Release();
    return false;
  }
  if (!owned) {
    Remove(key);
  } else if (Entry* entry = Find(key)) {
    if (JsonValue* old = std::exchange(entry->fValue, owned)) old->Release();
  } else {
    Append(key).fValue = owned;
  }
  CheckInvariants();
  return true;
}

bool JsonObject::Remove(std::string_view key) {
  Entry* entry = Find(key);
  if (!entry) return false;

  if (fIndex) fIndex->Remove(static_cast<std::size_t>(entry - fEntries));
  JsonValue* value = entry->fValue;
  if (entry->fOwnsKey) delete[] entry->fKey;
  *entry = Entry{};
  --fCount;
  if (fUsed > 2 * fCount) CloseUp();
  CheckInvariants();
  if (value) value->Release();
  return true;
}

JsonObject::Entry& JsonObject::Append(std::string_view key) {
  if (fUsed == fCapacity) Reserve(std::max<std::size_t>(4, 2 * fCapacity));
  char* copy = new char[key.size()];
  if (!key.empty()) std::memcpy(copy, key.data(), key.size());
  return Append(copy, key.size(), true, nullptr);
}

JsonObject::Entry& JsonObject::Append(const char* key, std::size_t size, bool ownsKey,
                                      JsonValue* value) {
  Entry& entry = fEntries[fUsed++];
  entry.fKey = key;
  entry.fKeySize = size;
  entry.fOwnsKey = ownsKey;
  entry.fKeyIsPlain = false;
  entry.fSequence = fNextSequence++;
  entry.fValue = value;
  ++fCount;
  if (fIndex) {
    fIndex->Add(entry.Key());
  } else if (fUsed > kLinearLimit) {
    BuildIndex();
  }
  return entry;
}

void JsonObject::Reserve(std::size_t capacity) {
  if (capacity <= fCapacity) return;
  auto* entries = static_cast<Entry*>(::operator new(capacity * sizeof(Entry)));
  std::copy_n(fEntries, fUsed, entries);
  if (!HasTail()) ::operator delete(fEntries);
  SetHasTail(false);
  fEntries = entries;
  fCapacity = capacity;
}

void JsonObject::CloseUp() {
  fUsed =
      static_cast<std::size_t>(std::remove_if(fEntries, fEntries + fUsed,
                                              [](const Entry& entry) { return !entry.IsLive(); }) -
                               fEntries);
  fIndex.reset();
  if (fUsed > kLinearLimit) BuildIndex();
}

void JsonObject::BuildIndex() {
  fIndex = std::make_unique<JsonKeyIndex>();
  fIndex->Reserve(std::max(fUsed, fCapacity));
  for (std::size_t i = 0; i < fUsed; ++i) {
    fIndex->Add(fEntries[i].Key());
    if (!fEntries[i].IsLive()) fIndex->Remove(i);
  }
}

void JsonObject::CheckInvariants() const {
#ifdef TESSARIN_CHECK_INVARIANTS
  if (fUsed > 2 * kLinearLimit)
    return;  // around every change of a large object it would take hours
  std::size_t live = 0;
  std::uint64_t least = 0;
  for (const Entry& entry : Entries()) {
    if (!entry.IsLive()) continue;
    assert(entry.fSequence >= least && entry.fSequence < fNextSequence);
    least = entry.fSequence + 1;
    ++live;
  }
  assert(live == fCount);
  assert((fIndex != nullptr) == (fUsed > kLinearLimit));
#endif
}

void JsonObject::ForEach(const Visit& visit) const {
  if (!visit) return;
  std::vector<std::pair<std::string, CUsePtr<JsonValue>>> members;
  members.reserve(fCount);
  for (const Entry& entry : Entries()) {
    if (entry.IsLive()) members.emplace_back(entry.Key(), ShareUse(entry.fValue));
  }
  for (auto& [key, value] : members) {
    visit(key, value.Get());
    value.Reset();
  }
}

}  // namespace Tovrin::JSON
