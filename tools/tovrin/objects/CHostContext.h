#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/IContext.h"
#include "host/ILogger.h"
#include "host/IPolicy.h"
#include "host/InterfaceImpl.h"
#include "tools/tovrin/CFunctionTable.h"
#include "tools/tovrin/CTypeTable.h"
#include "tools/tovrin/objects/CHostVariant.h"

namespace RefHost {

// What all objects of one host share. Filled while modules register; then constant.
struct HostTables {
  std::shared_ptr<CTypeTable> types = std::make_shared<CTypeTable>();
  std::shared_ptr<CFunctionTable> functions = std::make_shared<CFunctionTable>();
};

// One transaction: its user data, its error, its cancellation, and the way to types and functions.
//
// There are no routines, triggers, events or policy lines behind it: those questions have neutral
// answers. Used by one thread at a time.
class CHostContext final : public Tovrin::InterfaceImpl<Tovrin::IContext> {
public:
  CHostContext(HostTables tables, Tovrin::AutoRefPtr<Tovrin::IPolicy> policy,
               Tovrin::AutoRefPtr<Tovrin::ILogger> logger, std::uint32_t transactionId,
               std::string routineName);

private:
  // An error that a module or the host raised.
  struct Error {
    Tovrin::ErrorSeverity severity{};
    std::string moduleNamespace;
    std::string id;
    std::string message;
  };

  // Identity
  std::uint32_t Interface_GetTransactionId() const override { return fTransactionId; }
  // Interruption
  void Interface_SetInterrupted() override { fIsInterrupted = true; }
  void Interface_ClearInterrupted() override { fIsInterrupted = false; }
  bool Interface_IsInterrupted() const override { return fIsInterrupted; }
  bool Interface_IsResuming() const override { return fIsResuming; }
  bool Interface_ExitCalled() const override { return fExitCalled; }
  void Interface_ClearExit() override { fExitCalled = false; }
  bool Interface_EndCalled() const override { return false; }
  void Interface_ClearEnd() override {}
  void Interface_InterruptWithEvent(Tovrin::IEvent* event, void* data) override;
  void Interface_InterruptWithJob(Tovrin::JobFunction job, void* jobData, void* data) override;
  void* Interface_GetInterruptionData() const override { return fInterruptionData; }
  void Interface_ExecuteAfterInterruption(Tovrin::IEventScheduler* scheduler,
                                          Tovrin::JobFunction job, void* data) override;
  void Interface_ExitExecution() override { fExitCalled = true; }
  // User data
  std::uint64_t Interface_GetUserDataId(const char* name) override;
  void Interface_SetUserData(std::uint64_t id, Tovrin::IVariant* value) override;
  void Interface_SetUserDataAsBoolean(std::uint64_t id, bool value) override;
  void Interface_SetUserDataAsNumber(std::uint64_t id, double value) override;
  void Interface_SetUserDataAsString(std::uint64_t id, const char* text) override;
  void Interface_SetUserDataAsData(std::uint64_t id, Tovrin::IDataRef* data) override;
  void Interface_SetUserDataAsStream(std::uint64_t id, Tovrin::IStream* stream) override;
  Tovrin::IVariant* Interface_GetUserData(std::uint64_t id) const override;
  bool Interface_GetUserDataAsBoolean(std::uint64_t id) const override;
  double Interface_GetUserDataAsNumber(std::uint64_t id) const override;
  const char* Interface_GetUserDataAsString(std::uint64_t id) const override;
  Tovrin::IDataRef* Interface_GetUserDataAsData(std::uint64_t id) const override;
  Tovrin::IStream* Interface_GetUserDataAsStream(std::uint64_t id) const override;
  void Interface_ClearUserData(std::uint64_t id) override { fUserData.erase(id); }
  // Values and types
  Tovrin::IVariant* Interface_CreateInstance(Tovrin::TypeId typeId) override;
  Tovrin::TypeId Interface_FindType(const char* name) const override;
  const char* Interface_GetTypeName(Tovrin::TypeId typeId) const override;
  // Linking
  Tovrin::ModuleFunction Interface_GetFunction(const char* name, std::uint32_t count,
                                               const char* const* types, Tovrin::IModuleInfo** info,
                                               std::uint32_t flag) override;
  Tovrin::ModuleFunction Interface_GetProcedure(const char* name, std::uint32_t count,
                                                const char* const* types,
                                                Tovrin::IModuleInfo** info,
                                                std::uint32_t flag) override;
  // Position
  const char* Interface_GetRoutineName() const override { return fRoutineName.c_str(); }
  std::uint32_t Interface_GetLineNumber() const override { return 0; }
  const char* Interface_GetLineContent() const override { return ""; }
  const char* Interface_GetResourcePath() const override { return ""; }
  // Callbacks and routines
  bool Interface_RegisterModuleCallbackFunction(Tovrin::CallbackType type, const char* name,
                                                Tovrin::CallbackFunction function,
                                                void* data) override;
  void Interface_ExecuteCallbackFunctions(Tovrin::CallbackType type) override;
  std::int64_t Interface_CallRoutine(const char* /*name*/) override { return -1; }
  std::int64_t Interface_CallRoutineByTrigger(const char* /*name*/) override { return -1; }
  const char* Interface_GetTriggers() const override { return ""; }
  const char* Interface_GetInitialTrigger() const override { return ""; }
  // Persistence
  Tovrin::IJSON* Interface_Serialize() const override { return nullptr; }
  bool Interface_UpdateContext(Tovrin::IJSON* /*json*/) override { return false; }
  // Host
  Tovrin::IPolicy* Interface_GetPolicy() const override;
  std::uint64_t Interface_GetTovrinInstanceId() const override;
  Tovrin::ILogger* Interface_GetLogger() const override;
  Tovrin::IConfiguration* Interface_CreateConfiguration() override;
  // Errors
  void Interface_TriggerErrorHandler(Tovrin::ErrorSeverity severity, const char* moduleNamespace,
                                     const char* errorId, const char* message) override;
  bool Interface_HasError() const override { return !fErrors.empty(); }
  Tovrin::ErrorSeverity Interface_GetErrorSeverity() const override;
  const char* Interface_GetErrorModuleNamespace() const override;
  const char* Interface_GetErrorId() const override;
  const char* Interface_GetErrorMessage() const override;
  const char* Interface_GetStackedErrors(const char* first, const char* second) const override;
  std::uint32_t Interface_GetErrorLineNumber() const override { return 0; }
  const char* Interface_GetErrorLineContent() const override { return ""; }
  const char* Interface_GetErrorResourcePath() const override { return ""; }
  void Interface_ClearError() override { fErrors.clear(); }
  // Cancel
  void Interface_Cancel(const char* reason) override;
  bool Interface_IsCanceled() const override { return fIsCanceled; }
  const char* Interface_GetCancellationReason() const override { return fCancellation.c_str(); }
  // Diagnostics
  Tovrin::ITelemetry* Interface_GetTelemetry() const override { return nullptr; }
  Tovrin::ICallStack* Interface_GetCallStack() const override { return nullptr; }
  const char* Interface_GetTrace() const override { return ""; }
  const char* Interface_GetTracePathPrefix() const override { return fTracePathPrefix.c_str(); }
  void Interface_SetTracePathPrefix(const char* prefix) override;
  const char* Interface_PrintCallStack() const override { return fRoutineName.c_str(); }
  // Run facts
  const char* Interface_GetPolicyRevision() const override { return ""; }
  std::uint64_t Interface_MicrosecondsSinceStart() const override;
  std::uint64_t Interface_CPUTimeMicroseconds() const override;
  bool Interface_IsPreRun() const override { return false; }
  void Interface_SetResultMaybe() override {}
  void Interface_SetResuming(bool on) override { fIsResuming = on; }
  std::uint64_t Interface_GetPolicyStatementBlockId() const override { return 0; }

  Tovrin::AutoRefPtr<CHostVariant> NewUserData(std::uint64_t id, Tovrin::TypeId type);
  const Tovrin::IVariant* FindUserData(std::uint64_t id) const;
  const Error& LastError() const;
  Tovrin::ModuleFunction Link(const char* name, const std::string& result,
                              const std::string& arguments, Tovrin::IModuleInfo** info) const;

  const HostTables fTables;
  const Tovrin::AutoRefPtr<Tovrin::IPolicy> fPolicy;
  const Tovrin::AutoRefPtr<Tovrin::ILogger> fLogger;
  const std::uint32_t fTransactionId;
  const std::string fRoutineName;
  const std::chrono::steady_clock::time_point fStart;

  bool fIsInterrupted = false;
  bool fIsResuming = false;
  bool fExitCalled = false;
  void* fInterruptionData = nullptr;

  std::unordered_map<std::uint64_t, Tovrin::AutoRefPtr<Tovrin::IVariant>> fUserData;
  std::vector<Error> fErrors;          // the last one is the one that is asked for
  mutable std::string fStackedErrors;  // what GetStackedErrors gave last
  bool fIsCanceled = false;
  std::string fCancellation;
  std::string fTracePathPrefix;

  struct Callback {
    Tovrin::CallbackType type;
    Tovrin::CallbackFunction function;
    void* data;
  };
  std::map<std::string, Callback> fCallbacks;  // by name
};

}  // namespace RefHost
