#pragma once

#include "host/IObject.h"

namespace Tovrin {

class TOVRIN_API IStream : public IObject {
protected:
  ~IStream() = default;
};

}  // namespace Tovrin
