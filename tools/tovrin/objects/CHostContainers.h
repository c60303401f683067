#pragma once

#include <utility>
#include <vector>

#include "host/IMapGeneric.h"
#include "host/IVariant.h"
#include "host/IVectorGeneric.h"
#include "host/InterfaceImpl.h"

namespace RefHost {

// A vector of variants of one type. An entry may be null if the creator put it there.
//
// Seen from outside it never changes once two hold it: Append changes it in place for a caller who
// holds the only reference, so that a vector grows in linear time, and a copy for any other.
// Elements are the variants that were appended, not copies.
class CHostVector final : public Tovrin::InterfaceImpl<Tovrin::IVectorGeneric> {
public:
  using Elements = std::vector<Tovrin::AutoRefPtr<Tovrin::IVariant>>;

  explicit CHostVector(Tovrin::TypeId elementType, Elements elements = {})
      : fElementType(elementType), fElements(std::move(elements)) {}

private:
  std::size_t Interface_GetSize() const override { return fElements.size(); }
  Tovrin::TypeId Interface_GetElementType() const override { return fElementType; }
  Tovrin::IVariant* Interface_Get(std::size_t index) const override;  // null behind the end
  // A null element, or one of another type, is not taken.
  const Tovrin::IVectorGeneric* Interface_Append(Tovrin::IVariant* element) const override;
  Tovrin::IJSON* Interface_Serialize(Tovrin::IContext* /*context*/) const override {
    return nullptr;
  }
  std::uint8_t Interface_Deserialize(const Tovrin::IJSON* /*json*/, Tovrin::IContext* /*context*/,
                                     const Tovrin::IVectorGeneric** /*out*/) const override {
    return 0;
  }

  const Tovrin::TypeId fElementType;
  mutable Elements fElements;  // changed by Append, as above
};

// A map from numbers or texts to variants of one type, walked in the order of its keys. Changes
// like CHostVector. A key that is there already gets the new value.
class CHostMap final : public Tovrin::InterfaceImpl<Tovrin::IMapGeneric> {
public:
  using Entry =
      std::pair<Tovrin::AutoRefPtr<Tovrin::IVariant>, Tovrin::AutoRefPtr<Tovrin::IVariant>>;

  CHostMap(Tovrin::TypeId keyType, Tovrin::TypeId valueType, std::vector<Entry> entries = {})
      : fKeyType(keyType), fValueType(valueType), fEntries(std::move(entries)) {}

private:
  Tovrin::TypeId Interface_GetKeyType() const override { return fKeyType; }
  Tovrin::TypeId Interface_GetMappedValueType() const override { return fValueType; }
  std::size_t Interface_GetSize() const override { return fEntries.size(); }
  Tovrin::IVariant* Interface_GetKeyAt(std::size_t index) const override;
  Tovrin::IVariant* Interface_GetValueAt(std::size_t index) const override;
  const Tovrin::IMapGeneric* Interface_Insert(Tovrin::IVariant* key,
                                              Tovrin::IVariant* value) const override;
  Tovrin::IJSON* Interface_Serialize(Tovrin::IContext* /*context*/) const override {
    return nullptr;
  }
  std::uint8_t Interface_Deserialize(const Tovrin::IJSON* /*json*/, Tovrin::IContext* /*context*/,
                                     const Tovrin::IMapGeneric** /*out*/) const override {
    return 0;
  }

  const Tovrin::TypeId fKeyType;
  const Tovrin::TypeId fValueType;
  mutable std::vector<Entry> fEntries;  // by key; changed by Insert, as above
};

// Whether two variants have one type and one value. Objects compare by their own order, data by its
// bytes, streams by identity.
bool SameValue(const Tovrin::IVariant& left, const Tovrin::IVariant& right);

}  // namespace RefHost
