// Not part of any program: cmake/abi.sh reads the binary interface out of this file. What it
// exports leads to each interface, and through its members to every type that they take or give.

#include "host/ICallStack.h"
#include "host/IConfiguration.h"
#include "host/IContext.h"
#include "host/ICounter.h"
#include "host/IDataRef.h"
#include "host/IEvent.h"
#include "host/IEventScheduler.h"
#include "host/IFDEvent.h"
#include "host/IGenericEvent.h"
#include "host/IHash.h"
#include "host/IHost.h"
#include "host/IJSON.h"
#include "host/ILogger.h"
#include "host/IMapGeneric.h"
#include "host/IModuleInfo.h"
#include "host/IObject.h"
#include "host/IPolicy.h"
#include "host/IStream.h"
#include "host/ITelemetry.h"
#include "host/IThreadPool.h"
#include "host/IUserDefinedType.h"
#include "host/IVariant.h"
#include "host/IVectorGeneric.h"
#include "host/ModuleFunction.h"

namespace Tovrin {

void Know(const IObject&, const IContext&, const IJSON&, const IDataRef&, const IUserDefinedType&,
          const IVariant&, const IVectorGeneric&, const IMapGeneric&, const IModuleInfo&,
          const IPolicy&, const IStream&, const IHash&, const ICallStack&, const ILogger&,
          const IConfiguration&, const IThreadPool&, const IEventScheduler&, const IEvent&,
          const IFDEvent&, const IGenericEvent&, const ICounter&, const ITelemetry&, const IHost&,
          ModuleFunction) {}

}  // namespace Tovrin
