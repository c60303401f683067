#include "tools/tovrin/objects/CHostContext.h"

#include <fmt/core.h>

#include <ctime>

#include "host/IModuleInfo.h"

using Tovrin::AutoRefPtr;
using Tovrin::IVariant;
using Tovrin::TypeId;

namespace RefHost {
namespace {

// One more reference on a pointer that is held, for a caller who takes it over.
template <class Interface>
Interface* Lend(const AutoRefPtr<Interface>& held) {
  return AutoRefPtr<Interface>(held).release();
}

}  // namespace

CHostContext::CHostContext(HostTables tables, AutoRefPtr<Tovrin::IPolicy> policy,
                           AutoRefPtr<Tovrin::ILogger> logger, std::uint32_t transactionId,
                           std::string routineName)
    : fTables(std::move(tables)),
      fPolicy(std::move(policy)),
      fLogger(std::move(logger)),
      fTransactionId(transactionId),
      fRoutineName(std::move(routineName)),
      fStart(std::chrono::steady_clock::now()) {}

// Nothing here can wait, so what would interrupt happens at once or not at all.
void CHostContext::Interface_InterruptWithEvent(Tovrin::IEvent* /*event*/, void* data) {
  fIsInterrupted = true;
  fInterruptionData = data;
}

void CHostContext::Interface_InterruptWithJob(Tovrin::JobFunction job, void* jobData, void* data) {
  fInterruptionData = data;
  if (job != nullptr) job(jobData);
}

void CHostContext::Interface_ExecuteAfterInterruption(Tovrin::IEventScheduler* /*scheduler*/,
                                                      Tovrin::JobFunction job, void* data) {
  if (job != nullptr) job(data);
}

std::uint64_t CHostContext::Interface_GetUserDataId(const char* name) {
  return fPolicy->GetUserDataId(name);
}

AutoRefPtr<CHostVariant> CHostContext::NewUserData(std::uint64_t id, TypeId type) {
  AutoRefPtr<CHostVariant> value = CHostVariant::Create(fTables.types, type);
  fUserData[id] = Tovrin::Share<IVariant>(value.get());
  return value;
}

const IVariant* CHostContext::FindUserData(std::uint64_t id) const {
  const auto found = fUserData.find(id);
  return found != fUserData.end() ? found->second.get() : nullptr;
}

void CHostContext::Interface_SetUserData(std::uint64_t id, IVariant* value) {
  if (value == nullptr) {
    fUserData.erase(id);
  } else {
    fUserData[id] = Tovrin::Share(value);
  }
}

void CHostContext::Interface_SetUserDataAsBoolean(std::uint64_t id, bool value) {
  NewUserData(id, Tovrin::kTypeBoolean)->AssignBoolean(value);
}

void CHostContext::Interface_SetUserDataAsNumber(std::uint64_t id, double value) {
  NewUserData(id, Tovrin::kTypeNumber)->AssignNumber(value);
}

void CHostContext::Interface_SetUserDataAsString(std::uint64_t id, const char* text) {
  NewUserData(id, Tovrin::kTypeString)->AssignString(Tovrin::TextOrEmpty(text));
}

void CHostContext::Interface_SetUserDataAsData(std::uint64_t id, Tovrin::IDataRef* data) {
  NewUserData(id, Tovrin::kTypeDataRef)->AssignData(Tovrin::Share(data));
}

void CHostContext::Interface_SetUserDataAsStream(std::uint64_t id, Tovrin::IStream* stream) {
  NewUserData(id, Tovrin::kTypeStream)->AssignStream(Tovrin::Share(stream));
}

IVariant* CHostContext::Interface_GetUserData(std::uint64_t id) const {
  const auto found = fUserData.find(id);
  return found != fUserData.end() ? Lend(found->second) : nullptr;
}

bool CHostContext::Interface_GetUserDataAsBoolean(std::uint64_t id) const {
  const IVariant* value = FindUserData(id);
  return value != nullptr && value->GetBoolean();
}

double CHostContext::Interface_GetUserDataAsNumber(std::uint64_t id) const {
  const IVariant* value = FindUserData(id);
  return value != nullptr ? value->GetNumber() : 0;
}

const char* CHostContext::Interface_GetUserDataAsString(std::uint64_t id) const {
  const IVariant* value = FindUserData(id);
  return value != nullptr ? value->GetString() : "";
}

Tovrin::IDataRef* CHostContext::Interface_GetUserDataAsData(std::uint64_t id) const {
  const IVariant* value = FindUserData(id);
  return value != nullptr ? value->GetData().release() : nullptr;
}

Tovrin::IStream* CHostContext::Interface_GetUserDataAsStream(std::uint64_t id) const {
  const IVariant* value = FindUserData(id);
  return value != nullptr ? value->GetStream().release() : nullptr;
}

IVariant* CHostContext::Interface_CreateInstance(TypeId typeId) {
  if (fTables.types->NameOf(typeId).empty()) return nullptr;
  return CHostVariant::Create(fTables.types, typeId).release();
}

TypeId CHostContext::Interface_FindType(const char* name) const {
  return fTables.types->Find(Tovrin::TextOrEmpty(name));
}

const char* CHostContext::Interface_GetTypeName(TypeId typeId) const {
  return fTables.types->NameOf(typeId).c_str();
}

Tovrin::ModuleFunction CHostContext::Link(const char* name, const std::string& result,
                                          const std::string& arguments,
                                          Tovrin::IModuleInfo** info) const {
  const BoundFunction* function =
      fTables.functions->FindExact(Tovrin::TextOrEmpty(name), result, arguments);
  if (function == nullptr) return nullptr;
  if (info != nullptr) {
    if (function->info != nullptr) function->info->AddRef();
    *info = function->info;
  }
  return function->address;
}

// Two texts: the result type, and the argument types as one text.
Tovrin::ModuleFunction CHostContext::Interface_GetFunction(const char* name, std::uint32_t count,
                                                           const char* const* types,
                                                           Tovrin::IModuleInfo** info,
                                                           std::uint32_t /*flag*/) {
  if (count != 2 || types == nullptr) return nullptr;
  return Link(name, Tovrin::TextOrEmpty(types[0]), Tovrin::TextOrEmpty(types[1]), info);
}

// One text: the argument types. A procedure has no result to ask for.
Tovrin::ModuleFunction CHostContext::Interface_GetProcedure(const char* name, std::uint32_t count,
                                                            const char* const* types,
                                                            Tovrin::IModuleInfo** info,
                                                            std::uint32_t /*flag*/) {
  if (count != 1 || types == nullptr) return nullptr;
  return Link(name, {}, Tovrin::TextOrEmpty(types[0]), info);
}

bool CHostContext::Interface_RegisterModuleCallbackFunction(Tovrin::CallbackType type,
                                                            const char* name,
                                                            Tovrin::CallbackFunction function,
                                                            void* data) {
  if (name == nullptr || function == nullptr) return false;
  return fCallbacks.emplace(name, Callback{type, function, data}).second;
}

void CHostContext::Interface_ExecuteCallbackFunctions(Tovrin::CallbackType type) {
  for (const auto& [name, callback] : fCallbacks) {
    if (callback.type == type) callback.function(this, callback.data);
  }
}

Tovrin::IPolicy* CHostContext::Interface_GetPolicy() const {
  return Lend(fPolicy);
}

std::uint64_t CHostContext::Interface_GetTovrinInstanceId() const {
  return fPolicy->GetTovrinInstanceId();
}

Tovrin::ILogger* CHostContext::Interface_GetLogger() const {
  return Lend(fLogger);
}

Tovrin::IConfiguration* CHostContext::Interface_CreateConfiguration() {
  return nullptr;
}

void CHostContext::Interface_TriggerErrorHandler(Tovrin::ErrorSeverity severity,
                                                 const char* moduleNamespace, const char* errorId,
                                                 const char* message) {
  fErrors.push_back({severity, Tovrin::TextOrEmpty(moduleNamespace), Tovrin::TextOrEmpty(errorId),
                     Tovrin::TextOrEmpty(message)});
}

const CHostContext::Error& CHostContext::LastError() const {
  static const Error none;
  return fErrors.empty() ? none : fErrors.back();
}

Tovrin::ErrorSeverity CHostContext::Interface_GetErrorSeverity() const {
  return LastError().severity;
}

const char* CHostContext::Interface_GetErrorModuleNamespace() const {
  return LastError().moduleNamespace.c_str();
}

const char* CHostContext::Interface_GetErrorId() const {
  return LastError().id.c_str();
}

const char* CHostContext::Interface_GetErrorMessage() const {
  return LastError().message.c_str();
}

// All errors from the first to the last, each as prefix, id, ": ", message, with the separator
// between two.
const char* CHostContext::Interface_GetStackedErrors(const char* prefix,
                                                     const char* separator) const {
  fStackedErrors.clear();
  for (const Error& error : fErrors) {
    if (!fStackedErrors.empty()) fStackedErrors += Tovrin::TextOrEmpty(separator);
    fStackedErrors += fmt::format("{}{}: {}", Tovrin::TextOrEmpty(prefix), error.id, error.message);
  }
  return fStackedErrors.c_str();
}

void CHostContext::Interface_Cancel(const char* reason) {
  fIsCanceled = true;
  fCancellation = Tovrin::TextOrEmpty(reason);
}

void CHostContext::Interface_SetTracePathPrefix(const char* prefix) {
  fTracePathPrefix = Tovrin::TextOrEmpty(prefix);
}

std::uint64_t CHostContext::Interface_MicrosecondsSinceStart() const {
  const auto passed = std::chrono::steady_clock::now() - fStart;
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(passed).count());
}

std::uint64_t CHostContext::Interface_CPUTimeMicroseconds() const {
  return static_cast<std::uint64_t>(static_cast<double>(std::clock()) * 1e6 / CLOCKS_PER_SEC);
}

}  // namespace RefHost
