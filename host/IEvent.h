#pragma once

#include "host/IObject.h"

namespace Tovrin {

class TOVRIN_API IEvent : public IObject {
protected:
  ~IEvent() = default;
};

}  // namespace Tovrin
