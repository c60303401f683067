#pragma once

#include <cstdint>

namespace Tovrin {

// Every interface by name, and what their operations exchange.
class ICallStack;
class IConfiguration;
class IContext;
class IDataRef;
class IEvent;
class IEventScheduler;
class IHash;
class IJSON;
class ILogger;
class IMapGeneric;
class IModuleInfo;
class IPolicy;
class IStream;
class ITelemetry;
class IThreadPool;
class IUserDefinedType;
class IVariant;
class IVectorGeneric;

enum class ErrorSeverity : std::int32_t {
  Severity2 = 2
};  // other values are not known to the module
enum class CallbackType : std::int32_t {};
using JobFunction = void (*)(void*);
using CallbackFunction = void (*)(IContext*, void*);

}  // namespace Tovrin
