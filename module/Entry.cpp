#include "host/IContext.h"
#include "host/IModuleInfo.h"
#include "host/IPolicy.h"
#include "module/Definition.h"
#include "module/Exports.h"
#include "module/TypeIds.h"

constinit std::atomic<std::uint32_t> TessarinTypeId{0};
constinit std::atomic<std::uint32_t> TessarinListTypeId{0};

namespace {

void FetchTypeIds(Tovrin::IPolicy& policy) {
  // The transaction is only the way to FindType: it is neither executed nor cleaned up.
  const auto context = policy.CreateTransaction("GetTessarinTypes");
  if (!context) return;

  // Contract: an id of 0 is stored like any other, also over an id that an earlier call found.
  TessarinTypeId.store(context->FindType("Tessarin"), std::memory_order_relaxed);
  TessarinListTypeId.store(context->FindType("Tessarin.List"), std::memory_order_relaxed);
}

bool KnowsBothTypeIds() {
  return TessarinTypeId.load(std::memory_order_relaxed) != 0 &&
         TessarinListTypeId.load(std::memory_order_relaxed) != 0;
}

}  // namespace

// The texts are the module's side of the contract with the host.
// clang-format off
const char* GetTovrinSDKVersion() { return "1.20.16.0"; }
const char* GetModuleTovrinVersion() { return "1.20.16.0-2"; }
const char* GetModuleVersion() { return "1.0.0.0"; }
const char* GetDownwardsCompatibility() { return "1.0.0.0"; }
const char* GetSDKDependency() { return "[1.18.0-]"; }
const char* GetState() { return "stable"; }
const char* GetSupportedPlatforms() { return "linux,mac,windows"; }
const char* GetTovrinModuleName() { return ""; }
const char* GetModuleDependencies() { return ""; }
const char* GetModuleDependenciesOptional() { return ""; }
const char* GetModuleDependenciesLoadBefore() { return ""; }
const char* GetOptionalFunctionDependencies() { return ""; }
const char* GetOptionalProcedureDependencies() { return ""; }
const char* GetAlternativeFunctionDependencies() { return ""; }
const char* GetAlternativeProcedureDependencies() { return ""; }
// clang-format on

const char* GetModuleDefinition() {
  CleanDefinition(ModuleDefinition);
  return ModuleDefinition.c_str();
}

int RegisterModule() {
  return 0;
}

int RegistrationDoneWithReturn(Tovrin::IModuleInfo* moduleInfo) {
  if (moduleInfo) {
    if (const auto policy = moduleInfo->GetPolicy()) FetchTypeIds(*policy.get());
  }
  // Contract: what counts is what is stored, not what this call fetched.
  return KnowsBothTypeIds() ? 0 : 1;
}

// Contract: stopping leaves everything as it is; module functions go on working. The process-wide
// values go with the library.
int OnShutdown() {
  return 0;
}
void DeregisterModule() {}
