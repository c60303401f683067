#include "host/Operations.h"

#include <array>

// Keeps every exported member of the interfaces in the module: they are inline, so only a use of
// their addresses makes the compiler emit them. The version script then lets their names out.

namespace Tovrin {
namespace {

template <auto Member>
constexpr auto kAddress = Member;

template <auto... Members>
constexpr std::array<const void*, sizeof...(Members)> Addresses(MemberList<Members...>) {
  return {&kAddress<Members>...};
}

template <const auto& Members>
constexpr auto kAddresses = Addresses(Members);

[[gnu::used]] const void* const kEmitted[] = {
    &kAddresses<kOperations<IObject>>,
    &kAddresses<kOperations<IJSON>>,
    &kAddresses<kConveniences<IJSON>>,
    &kAddresses<kOperations<IDataRef>>,
    &kAddresses<kOperations<IUserDefinedType>>,
    &kAddresses<kConveniences<IUserDefinedType>>,
    &kAddresses<kOperations<IVariant>>,
    &kAddresses<kConveniences<IVariant>>,
    &kAddresses<kOperations<IVectorGeneric>>,
    &kAddresses<kOperations<IMapGeneric>>,
    &kAddresses<kOperations<ILogger>>,
    &kAddresses<kOperations<IModuleInfo>>,
    &kAddresses<kOperations<IPolicy>>,
    &kAddresses<kOperations<IContext>>,
    &kAddresses<kConveniences<IContext>>,
    &kAddresses<kOperations<IHost>>,
    &kAddresses<kOperations<IStream>>,
    &kAddresses<kConveniences<IStream>>,
    &kAddresses<kOperations<IHash>>,
    &kAddresses<kConveniences<IHash>>,
    &kAddresses<kOperations<ICallStack>>,
    &kAddresses<kOperations<IConfiguration>>,
    &kAddresses<kConveniences<IConfiguration>>,
    &kAddresses<kOperations<IThreadPool>>,
    &kAddresses<kOperations<IEvent>>,
    &kAddresses<kOperations<IFDEvent>>,
    &kAddresses<kOperations<IGenericEvent>>,
    &kAddresses<kOperations<IEventScheduler>>,
    &kAddresses<kOperations<ICounter>>,
    &kAddresses<kConveniences<ICounter>>,
    &kAddresses<kOperations<ITelemetry>>,
};

}  // namespace
}  // namespace Tovrin
