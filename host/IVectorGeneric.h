#pragma once

#include <cstddef>
#include <cstdint>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IObject.h"
#include "host/TypeIds.h"

namespace Tovrin {

// A vector of the rule language; shared, so appending may answer with another vector.
class TOVRIN_API IVectorGeneric : public IObject {
public:
  std::size_t GetSize() const { return Interface_GetSize(); }
  TypeId GetElementType() const { return Interface_GetElementType(); }
  AutoRefPtr<IVariant> Get(std::size_t index) const;  // empty past the end
  // The append operation: go on with what it returns (this vector or another one).
  AutoRefPtr<const IVectorGeneric> Append(const AutoRefPtr<IVariant>& element) const;
  AutoRefPtr<IJSON> Serialize(IContext* context) const;
  // The restored container goes to out, which may be null.
  bool Deserialize(const AutoRefPtr<IJSON>& json, IContext* context,
                   AutoRefPtr<const IVectorGeneric>* out) const;

protected:
  ~IVectorGeneric() = default;

private:  // Contract: the host calls these by position
  virtual std::size_t Interface_GetSize() const = 0;
  virtual TypeId Interface_GetElementType() const = 0;
  virtual IVariant* Interface_Get(std::size_t index) const = 0;
  virtual const IVectorGeneric* Interface_Append(IVariant* element) const = 0;
  // Not called by the module.
  virtual IJSON* Interface_Serialize(IContext* context) const = 0;
  virtual std::uint8_t Interface_Deserialize(const IJSON* json, IContext* context,
                                             const IVectorGeneric** out) const = 0;
};

}  // namespace Tovrin

#include "host/IVariant.h"  // holds the bodies that need IVariant whole; it includes this header in turn
