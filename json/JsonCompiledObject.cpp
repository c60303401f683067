#include "json/JsonCompiledObject.h"

#include "Common/CUseCounted.h"

namespace Tovrin::JSON {

std::size_t JsonCompiledSchema::AddKey(std::string_view key, std::uint16_t flags,
                                       const JsonCompiledSchema* child) {
  if (const std::size_t known = Find(key); known != kNone) return known;

  if ((flags & KeyCompiledObject) && !child) {
    flags = static_cast<std::uint16_t>((flags & ~KeyCompiledObject) | KeyObject);
  }
  Keys.emplace_back(key);
  KeyIndex.Add(key);
  Flags.push_back(flags);
  Children.push_back(child);
  return Keys.size() - 1;
}

std::size_t JsonCompiledSchema::Find(std::string_view key) const {
  return KeyIndex.Find(key, [&](std::size_t i) { return std::string_view(Keys[i]); });
}

JsonCompiledObject::JsonCompiledObject(const JsonCompiledSchema* schema)
    : JsonValue(TypeCompiledObject), fSchema(schema), fValues(schema ? schema->Keys.size() : 0) {}

JsonValue* JsonCompiledObject::ChildAt(std::string_view key) const {
  if (!fSchema) return nullptr;
  const std::size_t index = fSchema->Find(key);
  return index == JsonCompiledSchema::kNone ? nullptr : ChildAt(index);
}

bool JsonCompiledObject::Set(std::size_t index, JsonValue* owned) {
  if (index >= fValues.size()) {
    if (owned) owned->Release();
    return false;
  }
  if (!owned) {
    Clear(index);
    return true;
  }
  if (JsonValue* old = std::exchange(fValues[index], owned)) {
    old->Release();
  } else {
    ++fCount;
  }
  return true;
}

void JsonCompiledObject::Clear(std::size_t index) {
  if (index >= fValues.size() || !fValues[index]) return;
  --fCount;
  std::exchange(fValues[index], nullptr)->Release();
}

bool JsonCompiledObject::IsRequiredComplete() const {
  if (!fSchema) return true;
  for (std::size_t i = 0; i < fValues.size(); ++i) {
    if ((fSchema->Flags[i] & KeyRequired) && !fValues[i]) return false;
  }
  return true;
}

void JsonCompiledObject::ForEach(const Visit& visit) const {
  if (!visit) return;
  for (std::size_t i = 0; i < fValues.size(); ++i) {
    const auto held = ShareUse(fValues[i]);
    if (held) visit(i, held.Get());
  }
}

}  // namespace Tovrin::JSON
