#pragma once

#include "host/IObject.h"

namespace Tovrin {

class TOVRIN_API IConfiguration : public IObject {
protected:
  ~IConfiguration() = default;
};

}  // namespace Tovrin
