#pragma once

#include "host/Forward.h"

namespace Tovrin {

// Whether the rules that run belong to the customer, by a function of another module; false without
// a context and wherever that module cannot tell.
bool CustomerPolicyCheck(IContext* context);

}  // namespace Tovrin
