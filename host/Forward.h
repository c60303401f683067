#pragma once

#include <cstdint>

namespace Tovrin {

// Every interface by name, and what their operations exchange.
class ICallStack;
class IConfiguration;
class IContext;
class ICounter;
class IDataRef;
class IEvent;
class IEventScheduler;
class IFDEvent;
class IGenericEvent;
class IHash;
class IHost;
class IJSON;
class ILogger;
class IMapGeneric;
class IModuleInfo;
class IObject;
class IPermanentThreadHandle;  // the host's own: the module only carries pointers to it
class IPolicy;
class IStream;
class ITelemetry;
class IThreadPool;
class IUserDefinedType;
class IVariant;
class IVectorGeneric;

// The values are the host's; the module knows one.
enum class ErrorSeverity : std::int32_t { Severity2 = 2 };
enum class CallbackType : std::int32_t {};
enum class NotifyFlags : std::uint32_t {};

using JobFunction = void (*)(void* data);
using CallbackFunction = void (*)(IContext* context, void* data);
using EventCallback = void (*)(IEvent* event, void* data);

}  // namespace Tovrin
