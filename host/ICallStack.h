#pragma once

#include "host/IObject.h"

namespace Tovrin {

class TOVRIN_API ICallStack : public IObject {
protected:
  ~ICallStack() = default;
};

}  // namespace Tovrin
