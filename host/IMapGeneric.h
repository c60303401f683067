#pragma once

#include <cstddef>
#include <cstdint>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IObject.h"
#include "host/TypeIds.h"

namespace Tovrin {

class TOVRIN_API IMapGeneric : public IObject {
public:
  TypeId GetKeyType() const { return Interface_GetKeyType(); }
  TypeId GetMappedValueType() const { return Interface_GetMappedValueType(); }
  std::size_t GetSize() const { return Interface_GetSize(); }
  // Walk and insert, which the map wrappers cannot do without.
  AutoRefPtr<IVariant> GetKeyAt(std::size_t index) const {
    return AutoRefPtr<IVariant>(Interface_GetKeyAt(index));
  }
  AutoRefPtr<IVariant> GetValueAt(std::size_t index) const {
    return AutoRefPtr<IVariant>(Interface_GetValueAt(index));
  }
  AutoRefPtr<const IMapGeneric> Insert(const AutoRefPtr<IVariant>& key,
                                       const AutoRefPtr<IVariant>& value) const {
    return AutoRefPtr<const IMapGeneric>(Interface_Insert(key.get(), value.get()));
  }

protected:
  ~IMapGeneric() = default;

private:
  virtual TypeId Interface_GetKeyType() const = 0;
  virtual TypeId Interface_GetMappedValueType() const = 0;
  virtual std::size_t Interface_GetSize() const = 0;
  virtual IVariant* Interface_GetKeyAt(std::size_t index) const = 0;
  virtual IVariant* Interface_GetValueAt(std::size_t index) const = 0;
  virtual const IMapGeneric* Interface_Insert(IVariant* key, IVariant* value) const = 0;
  virtual IJSON* Interface_Serialize(IContext* context) const = 0;
  virtual std::uint8_t Interface_Deserialize(const IJSON* json, IContext* context,
                                             const IMapGeneric** out) const = 0;
};

}  // namespace Tovrin

// What the members above hand out; behind the class, since the two know each other.
#include "host/IVariant.h"
