#include "tools/tovrin/objects/CHostContainers.h"

#include <algorithm>
#include <string_view>

#include "host/IDataRef.h"
#include "host/IStream.h"
#include "host/IUserDefinedType.h"

using Tovrin::AutoRefPtr;
using Tovrin::IUserDefinedType;
using Tovrin::IVariant;

namespace RefHost {
namespace {

std::string_view TextOf(const IVariant& variant) {
  return {variant.GetString(), variant.GetStringSize()};
}

bool KeyLess(const IVariant& left, const IVariant& right) {
  if (left.GetType() == Tovrin::kTypeNumber) return left.GetNumber() < right.GetNumber();
  return TextOf(left) < TextOf(right);
}

bool SameElement(const AutoRefPtr<IVariant>& left, const AutoRefPtr<IVariant>& right) {
  if (!left || !right) return !left && !right;
  return left->IsEqual(right.get());
}

// Null means that there is none, which is a value like others.
template <class Pointer, class Same>
bool SameObject(const Pointer& left, const Pointer& right, Same same) {
  if (!left || !right) return !left && !right;
  return left.get() == right.get() || same(*left.get(), *right.get());
}

bool SameVector(const Tovrin::IVectorGeneric& left, const Tovrin::IVectorGeneric& right) {
  if (left.GetSize() != right.GetSize()) return false;
  for (std::size_t i = 0; i < left.GetSize(); ++i) {
    if (!SameElement(left.Get(i), right.Get(i))) return false;
  }
  return true;
}

bool SameMap(const Tovrin::IMapGeneric& left, const Tovrin::IMapGeneric& right) {
  if (left.GetSize() != right.GetSize()) return false;
  for (std::size_t i = 0; i < left.GetSize(); ++i) {
    if (!SameElement(left.GetKeyAt(i), right.GetKeyAt(i))) return false;
    if (!SameElement(left.GetValueAt(i), right.GetValueAt(i))) return false;
  }
  return true;
}

}  // namespace

IVariant* CHostVector::Interface_Get(std::size_t index) const {
  if (index >= fElements.size()) return nullptr;
  return AutoRefPtr<IVariant>(fElements[index]).release();
}

const Tovrin::IVectorGeneric* CHostVector::Interface_Append(IVariant* element) const {
  const bool isOnlyHolder = GetCount() == 1;
  const bool takesElement = element != nullptr && element->GetType() == fElementType;
  if (isOnlyHolder || !takesElement) {
    if (takesElement) fElements.push_back(Tovrin::Share(element));
    AddRef();
    return this;
  }
  auto* copy = new CHostVector(fElementType, fElements);
  copy->fElements.push_back(Tovrin::Share(element));
  return copy;
}

IVariant* CHostMap::Interface_GetKeyAt(std::size_t index) const {
  if (index >= fEntries.size()) return nullptr;
  return AutoRefPtr<IVariant>(fEntries[index].first).release();
}

IVariant* CHostMap::Interface_GetValueAt(std::size_t index) const {
  if (index >= fEntries.size()) return nullptr;
  return AutoRefPtr<IVariant>(fEntries[index].second).release();
}

const Tovrin::IMapGeneric* CHostMap::Interface_Insert(IVariant* key, IVariant* value) const {
  const bool takesEntry = key != nullptr && key->GetType() == fKeyType && value != nullptr &&
                          value->GetType() == fValueType;
  if (GetCount() != 1 && takesEntry) {
    const AutoRefPtr<CHostMap> copy(new CHostMap(fKeyType, fValueType, fEntries));
    return copy->Interface_Insert(key, value);
  }
  if (takesEntry) {
    const auto at = std::lower_bound(fEntries.begin(), fEntries.end(), *key,
                                     [](const Entry& entry, const IVariant& wanted) {
                                       return KeyLess(*entry.first.get(), wanted);
                                     });
    if (at != fEntries.end() && !KeyLess(*key, *at->first.get())) {
      at->second = Tovrin::Share(value);
    } else {
      fEntries.insert(at, {Tovrin::Share(key), Tovrin::Share(value)});
    }
  }
  AddRef();
  return this;
}

bool SameValue(const IVariant& left, const IVariant& right) {
  const Tovrin::TypeId type = left.GetType();
  if (type != right.GetType()) return false;
  if (type == Tovrin::kTypeBoolean) return left.GetBoolean() == right.GetBoolean();
  if (type == Tovrin::kTypeNumber) return left.GetNumber() == right.GetNumber();
  if (type == Tovrin::kTypeString) return TextOf(left) == TextOf(right);
  if (type == Tovrin::kTypeStream) return left.GetStream().get() == right.GetStream().get();
  if (type == Tovrin::kTypeDataRef) {
    return SameObject(left.GetData(), right.GetData(),
                      [](const auto& a, const auto& b) { return a.IsEqual(&b); });
  }
  if (IUserDefinedType::IsVector(type)) {
    return SameObject(left.GetVector(), right.GetVector(), SameVector);
  }
  if (IUserDefinedType::IsNumberMap(type) || IUserDefinedType::IsStringMap(type)) {
    return SameObject(left.GetMap(), right.GetMap(), SameMap);
  }
  return SameObject(left.GetUserDefined(), right.GetUserDefined(),
                    [](const auto& a, const auto& b) { return a.IsEqual(&b); });
}

}  // namespace RefHost
