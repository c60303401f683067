#pragma once

#include <cstddef>
#include <string>

#include "host/IMapGeneric.h"
#include "host/ValueForm.h"

namespace Tovrin {

// A map keyed by text whose values read as T. Adds no slots; pairs are walked by position.
template <class T>
class IStringMap : public IMapGeneric {
public:
  // Neutral values past the end and where the host gives none.
  std::string GetKey(std::size_t index) const { return ReadValue<std::string>(GetKeyAt(index)); }
  T GetValue(std::size_t index) const { return ReadValue<T>(GetValueAt(index)); }

protected:
  ~IStringMap() = default;
};

}  // namespace Tovrin
