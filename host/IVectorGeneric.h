#pragma once

#include <cstddef>
#include <cstdint>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IObject.h"
#include "host/TypeIds.h"

namespace Tovrin {

class TOVRIN_API IVectorGeneric : public IObject {
public:
  std::size_t GetSize() const { return Interface_GetSize(); }
  TypeId GetElementType() const { return Interface_GetElementType(); }
  AutoRefPtr<IVariant> Get(std::size_t index) const {
    return AutoRefPtr<IVariant>(Interface_Get(index));
  }
  // The append operation: go on with what it returns (this vector or another one).
  AutoRefPtr<const IVectorGeneric> Append(const AutoRefPtr<IVariant>& element) const {
    return AutoRefPtr<const IVectorGeneric>(Interface_Append(element.get()));
  }

protected:
  ~IVectorGeneric() = default;

private:
  virtual std::size_t Interface_GetSize() const = 0;
  virtual TypeId Interface_GetElementType() const = 0;
  virtual IVariant* Interface_Get(std::size_t index) const = 0;
  virtual const IVectorGeneric* Interface_Append(IVariant* element) const = 0;
  // "further operations up to Deserialize(json, context, out)": the module calls none of them
  virtual IJSON* Interface_Serialize(IContext* context) const = 0;
  virtual std::uint8_t Interface_Deserialize(const IJSON* json, IContext* context,
                                             const IVectorGeneric** out) const = 0;
};

}  // namespace Tovrin

// What the members above hand out; behind the class, since the two know each other.
#include "host/IVariant.h"
