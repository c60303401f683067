#pragma once

#include "host/IObject.h"

namespace Tovrin {

class TOVRIN_API IEventScheduler : public IObject {
protected:
  ~IEventScheduler() = default;
};

}  // namespace Tovrin
