#include "host/Operations.h"

// Keeps every exported member of the interfaces in the module: they are inline, so only a use of
// their addresses makes the compiler emit them. The version script then lets their names out.

namespace Tovrin {
namespace {

[[gnu::used]] const void* const kEmitted[] = {
    &kOperations<IObject>,
    &kOperations<IJSON>,
    &kConveniences<IJSON>,
    &kOperations<IDataRef>,
    &kOperations<IUserDefinedType>,
    &kConveniences<IUserDefinedType>,
    &kOperations<IVariant>,
    &kConveniences<IVariant>,
    &kOperations<IVectorGeneric>,
    &kOperations<IMapGeneric>,
    &kOperations<ILogger>,
    &kOperations<IModuleInfo>,
    &kOperations<IPolicy>,
    &kOperations<IContext>,
    &kConveniences<IContext>,
    &kOperations<IHost>,
    &kOperations<IStream>,
    &kConveniences<IStream>,
    &kOperations<IHash>,
    &kConveniences<IHash>,
    &kOperations<ICallStack>,
    &kOperations<IConfiguration>,
    &kConveniences<IConfiguration>,
    &kOperations<IThreadPool>,
    &kOperations<IEvent>,
    &kOperations<IFDEvent>,
    &kOperations<IGenericEvent>,
    &kOperations<IEventScheduler>,
    &kOperations<ICounter>,
    &kConveniences<ICounter>,
    &kOperations<ITelemetry>,
};

}  // namespace
}  // namespace Tovrin
