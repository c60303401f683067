#pragma once

#include <cstddef>

#include "host/IMapGeneric.h"
#include "host/ValueForm.h"

namespace Tovrin {

// A map keyed by number whose values read as T. Adds no slots; pairs are walked by position.
template <class T>
class INumberMap : public IMapGeneric {
public:
  // Neutral values past the end and where the host gives none.
  double GetKey(std::size_t index) const { return ReadValue<double>(GetKeyAt(index)); }
  T GetValue(std::size_t index) const { return ReadValue<T>(GetValueAt(index)); }

protected:
  ~INumberMap() = default;
};

}  // namespace Tovrin
