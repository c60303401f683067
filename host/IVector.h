#pragma once

#include <cstddef>

#include "host/IVectorGeneric.h"
#include "host/ValueForm.h"

namespace Tovrin {

// A vector whose elements read as T: bool, a number, text, or a reference. Adds no slots.
template <class T>
class IVector : public IVectorGeneric {
public:
  // The neutral value past the end and where the host gives no element.
  T GetValue(std::size_t index) const { return ReadValue<T>(Get(index)); }

protected:
  ~IVector() = default;
};

}  // namespace Tovrin
