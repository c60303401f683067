#pragma once

#include <cstdint>
#include <string>

#include "host/Api.h"

namespace Tovrin {

// Copies a text that the host lent; null is the empty text.
inline std::string TextOrEmpty(const char* text) {
  return text ? std::string(text) : std::string();
}

// The root of everything that crosses between the host and the module.
//
// Every interface has private virtual operations named Interface_<Name>, whose order is the binary
// contract, and public members that forward to them. Only C-shaped values cross a virtual. A raw
// interface pointer that a virtual returns, or stores to an out slot, carries one reference; one
// that is passed to it is borrowed. A returned const char* is borrowed too, zero-terminated, may be
// null (an empty text) and holds until the next call on the same object; the members copy it.
// Members that touch std::string or a container are inline: text that one binary allocates must not
// be freed by another.
class TOVRIN_API IObject {
public:
  void AddRef() const { Interface_AddRef(); }
  bool Release() const { return Interface_Release(); }
  std::int32_t GetCount() const { return Interface_GetCount(); }

protected:
  ~IObject() = default;

private:  // Contract: the host calls these by position
  virtual void Interface_AddRef() const = 0;
  virtual bool Interface_Release() const = 0;
  virtual std::int32_t Interface_GetCount() const = 0;
};

}  // namespace Tovrin
