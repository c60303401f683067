#include <utility>

#include "Common/CVariant.h"
#include "Common/CVariantReader.h"
#include "Common/CVariantStore.h"
#include "Common/IUnicodeString.h"
#include "Common/VariantTexts.h"

// The map operations. Any other type is no misuse: it has no entries and takes none.

namespace {

// Moves the reference out, to a caller behind an interface.
Selvane::IVariant* Detached(CUsePtr<CVariant> value) {
  return value.Detach();
}

}  // namespace

const VariantMap* CVariant::MapEntries() const {
  if (fType != VariantType::Map) return nullptr;
  const MapHeader* header = Scalar<MapElement>();
  return header ? header->fTree : nullptr;
}

void CVariant::StoreMapValue(const CStringPtr& key, CUsePtr<CVariant> value) {
  if (!MapEntries()) return;
  DropCaches();
  MapHeader& header = *Elements<MapElement>();
  (*header.fTree)[key] = std::move(value);
  header.fCount = header.fTree->size();
}

void CVariant::SetMapValue(const CStringPtr& key, const IVariant* value) {
  if (!value || !MapEntries()) return;
  auto copy = MakeUseCounted<CVariant>();
  copy->Assign(value);
  StoreMapValue(key, std::move(copy));
}

void CVariant::SetMapValue(const CStringPtr& key, std::int64_t value) {
  StoreMapValue(key, MakeUseCounted<CVariant>(value));
}

void CVariant::SetMapValue(const CStringPtr& key, const CStringPtr& value) {
  StoreMapValue(key, MakeUseCounted<CVariant>(value.Get()));
}

CUsePtr<CVariant> CVariant::FindMapValue(const CStringPtr& key) const {
  const VariantMap* entries = MapEntries();
  if (!entries) return nullptr;
  const auto entry = entries->find(key);
  return entry == entries->end() ? nullptr : entry->second;
}

bool CVariant::EraseMapValue(const CStringPtr& key) {
  if (!FindMapValue(key)) return false;
  DropCaches();
  MapHeader& header = *Elements<MapElement>();
  header.fTree->erase(key);
  header.fCount = header.fTree->size();
  return true;
}

std::int64_t CVariant::GetMapSize() const {
  if (fType != VariantType::Map) return -1;
  return static_cast<std::int64_t>(SizeOfList());
}

Selvane::IVariant* CVariant::GetMapKeys() const {
  const VariantMap* entries = MapEntries();
  if (!entries) return nullptr;
  auto keys = MakeUseCounted<CVariant>(VariantType::StringList);
  keys->Reserve(entries->size());
  for (const auto& [key, value] : *entries) keys->AddToList(key.Get());
  return Detached(std::move(keys));
}

// ---- the interface's forms

void CVariant::SetMapValue(Selvane::IUnicodeString* key, const IVariant* value) {
  SetMapValue(TextOf(key), value);
}

Selvane::IVariant* CVariant::GetMapValue(Selvane::IUnicodeString* key) const {
  return Detached(FindMapValue(TextOf(key)));
}

bool CVariant::EraseMapValue(Selvane::IUnicodeString* key) {
  return EraseMapValue(TextOf(key));
}

// Entries of a foreign map, which may be anything: what is missing is left out.
void CVariant::ReadMapThroughInterface(const IVariant& source, CForeignAllowance& allowance) {
  const CUsePtr<IVariant> foreignKeys(source.GetMapKeys());
  if (!foreignKeys) return;
  CVariant keys;
  keys.ReadForeign(*foreignKeys, allowance);
  const std::uint64_t count = keys.SizeOfList();
  if (!allowance.TakeElements(VariantType::Map, count)) return;
  for (std::uint64_t i = 0; i < count; ++i) {
    bool ok = false;
    const CUsePtr<Selvane::IUnicodeString> key(
        keys.GetStringListElem(static_cast<std::int64_t>(i), ok));
    if (!ok) continue;
    const CUsePtr<IVariant> value(source.GetMapValue(key.Get()));
    if (!value) continue;
    auto copy = MakeUseCounted<CVariant>();
    copy->ReadForeign(*value, allowance);
    StoreMapValue(TextOf(key.Get()), std::move(copy));
  }
}
