#pragma once

#include "host/IObject.h"

namespace Tovrin {

class TOVRIN_API ITelemetry : public IObject {
protected:
  ~ITelemetry() = default;
};

}  // namespace Tovrin
