#pragma once

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IUserDefinedType.h"
#include "json/JSONWrapper.h"

namespace Tovrin::JSON {

// Values of the rule language's JSON type, which another module brings.
//
// Where that module is of this very build, the tree itself is handed over, with one more reference
// and no copy; otherwise the value goes by text, and the first time that happens the log says so.
// The context is where that module's functions are found; without one only the first way is left.

// A format id of the binary operations: the data is the address of a JSONData of this process.
inline constexpr std::size_t kJSONDataFormat = 10900;

// The host object's value; empty when it cannot be read.
AutoRefPtr<JSONWrapper> FromHostObject(const AutoRefPtr<IUserDefinedType>& object,
                                       IContext* context);

// A new host object with the wrapper's value; empty when the host gives none.
AutoRefPtr<IUserDefinedType> ToHostObject(const JSONWrapper& wrapper, IContext* context);

}  // namespace Tovrin::JSON
