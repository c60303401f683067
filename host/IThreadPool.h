#pragma once

#include "host/IObject.h"

namespace Tovrin {

class TOVRIN_API IThreadPool : public IObject {
protected:
  ~IThreadPool() = default;
};

}  // namespace Tovrin
