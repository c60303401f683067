#pragma once

#include <cstddef>
#include <cstdint>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IObject.h"
#include "host/TypeIds.h"

namespace Tovrin {

// A map of the rule language, keyed by number or by text; shared as a vector is.
class TOVRIN_API IMapGeneric : public IObject {
public:
  TypeId GetKeyType() const { return Interface_GetKeyType(); }
  TypeId GetMappedValueType() const { return Interface_GetMappedValueType(); }
  std::size_t GetSize() const { return Interface_GetSize(); }
  // Pairs are walked by position, in an order that is the host's.
  AutoRefPtr<IVariant> GetKeyAt(std::size_t index) const;
  AutoRefPtr<IVariant> GetValueAt(std::size_t index) const;
  AutoRefPtr<const IMapGeneric> Insert(
      const AutoRefPtr<IVariant>& key,
      const AutoRefPtr<IVariant>& value) const;  // go on with what it returns
  AutoRefPtr<IJSON> Serialize(IContext* context) const;
  // The restored container goes to out, which may be null.
  bool Deserialize(const AutoRefPtr<IJSON>& json, IContext* context,
                   AutoRefPtr<const IMapGeneric>* out) const;

protected:
  ~IMapGeneric() = default;

private:  // Contract: the host calls these by position
  virtual TypeId Interface_GetKeyType() const = 0;
  virtual TypeId Interface_GetMappedValueType() const = 0;
  virtual std::size_t Interface_GetSize() const = 0;
  virtual IVariant* Interface_GetKeyAt(std::size_t index) const = 0;
  virtual IVariant* Interface_GetValueAt(std::size_t index) const = 0;
  virtual const IMapGeneric* Interface_Insert(IVariant* key, IVariant* value) const = 0;
  // Not called by the module.
  virtual IJSON* Interface_Serialize(IContext* context) const = 0;
  virtual std::uint8_t Interface_Deserialize(const IJSON* json, IContext* context,
                                             const IMapGeneric** out) const = 0;
};

}  // namespace Tovrin

#include "host/IVariant.h"  // holds the bodies that need IVariant whole; it includes this header in turn
