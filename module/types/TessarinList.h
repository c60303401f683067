#pragma once

#include "host/IUserDefinedType.h"
#include "host/InterfaceImpl.h"

namespace Tovrin {

// The rule language's `Tessarin.List`, by its class: what the reader of list arguments tests for.
// No object of it is made, so that reader refuses whatever it is given.
class TessarinList : public InterfaceImpl<IUserDefinedType> {};

}  // namespace Tovrin
