#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/AutoRefPtr.h"
#include "host/IContext.h"
#include "host/IModuleInfo.h"
#include "host/IPolicy.h"
#include "host/InterfaceImpl.h"

// The host's side of a call for tests: contexts, a logger, a policy and a module info. Each answers
// what the test set, and neutral values to all the rest. One thread at a time may use one of them.

// Answers every operation with nothing; tests override what they need.
class NeutralContext : public Tovrin::InterfaceImpl<Tovrin::IContext> {
protected:
  using TypeId = Tovrin::TypeId;

  std::uint32_t Interface_GetTransactionId() const override { return {}; }
  void Interface_SetInterrupted() override {}
  void Interface_ClearInterrupted() override {}
  bool Interface_IsInterrupted() const override { return {}; }
  bool Interface_IsResuming() const override { return {}; }
  bool Interface_ExitCalled() const override { return {}; }
  void Interface_ClearExit() override {}
  bool Interface_EndCalled() const override { return {}; }
  void Interface_ClearEnd() override {}
  void Interface_InterruptWithEvent(Tovrin::IEvent*, void*) override {}
  void Interface_InterruptWithJob(Tovrin::JobFunction, void*, void*) override {}
  void* Interface_GetInterruptionData() const override { return {}; }
  void Interface_ExecuteAfterInterruption(Tovrin::IEventScheduler*, Tovrin::JobFunction,
                                          void*) override {}
  void Interface_ExitExecution() override {}
  std::uint64_t Interface_GetUserDataId(const char*) override { return {}; }
  void Interface_SetUserData(std::uint64_t, Tovrin::IVariant*) override {}
  void Interface_SetUserDataAsBoolean(std::uint64_t, bool) override {}
  void Interface_SetUserDataAsNumber(std::uint64_t, double) override {}
  void Interface_SetUserDataAsString(std::uint64_t, const char*) override {}
  void Interface_SetUserDataAsData(std::uint64_t, Tovrin::IDataRef*) override {}
  void Interface_SetUserDataAsStream(std::uint64_t, Tovrin::IStream*) override {}
  Tovrin::IVariant* Interface_GetUserData(std::uint64_t) const override { return {}; }
  bool Interface_GetUserDataAsBoolean(std::uint64_t) const override { return {}; }
  double Interface_GetUserDataAsNumber(std::uint64_t) const override { return {}; }
  const char* Interface_GetUserDataAsString(std::uint64_t) const override { return {}; }
  Tovrin::IDataRef* Interface_GetUserDataAsData(std::uint64_t) const override { return {}; }
  Tovrin::IStream* Interface_GetUserDataAsStream(std::uint64_t) const override { return {}; }
  void Interface_ClearUserData(std::uint64_t) override {}
  Tovrin::IVariant* Interface_CreateInstance(TypeId) override { return {}; }
  TypeId Interface_FindType(const char*) const override { return {}; }
  const char* Interface_GetTypeName(TypeId) const override { return {}; }
  Tovrin::ModuleFunction Interface_GetFunction(const char*, std::uint32_t, const char* const*,
                                               Tovrin::IModuleInfo**, std::uint32_t) override {
    return {};
  }
  Tovrin::ModuleFunction Interface_GetProcedure(const char*, std::uint32_t, const char* const*,
                                                Tovrin::IModuleInfo**, std::uint32_t) override {
    return {};
  }
  const char* Interface_GetRoutineName() const override { return {}; }
  std::uint32_t Interface_GetLineNumber() const override { return {}; }
  const char* Interface_GetLineContent() const override { return {}; }
  const char* Interface_GetResourcePath() const override { return {}; }
  bool Interface_RegisterModuleCallbackFunction(Tovrin::CallbackType, const char*,
                                                Tovrin::CallbackFunction, void*) override {
    return {};
  }
  void Interface_ExecuteCallbackFunctions(Tovrin::CallbackType) override {}
  std::int64_t Interface_CallRoutine(const char*) override { return {}; }
  std::int64_t Interface_CallRoutineByTrigger(const char*) override { return {}; }
  const char* Interface_GetTriggers() const override { return {}; }
  const char* Interface_GetInitialTrigger() const override { return {}; }
  Tovrin::IJSON* Interface_Serialize() const override { return {}; }
  bool Interface_UpdateContext(Tovrin::IJSON*) override { return {}; }
  Tovrin::IPolicy* Interface_GetPolicy() const override { return {}; }
  std::uint64_t Interface_GetTovrinInstanceId() const override { return {}; }
  Tovrin::ILogger* Interface_GetLogger() const override { return {}; }
  Tovrin::IConfiguration* Interface_CreateConfiguration() override { return {}; }
  void Interface_TriggerErrorHandler(Tovrin::ErrorSeverity, const char*, const char*,
                                     const char*) override {}
  bool Interface_HasError() const override { return {}; }
  Tovrin::ErrorSeverity Interface_GetErrorSeverity() const override { return {}; }
  const char* Interface_GetErrorModuleNamespace() const override { return {}; }
  const char* Interface_GetErrorId() const override { return {}; }
  const char* Interface_GetErrorMessage() const override { return {}; }
  const char* Interface_GetStackedErrors(const char*, const char*) const override { return {}; }
  std::uint32_t Interface_GetErrorLineNumber() const override { return {}; }
  const char* Interface_GetErrorLineContent() const override { return {}; }
  const char* Interface_GetErrorResourcePath() const override { return {}; }
  void Interface_ClearError() override {}
  void Interface_Cancel(const char*) override {}
  bool Interface_IsCanceled() const override { return {}; }
  const char* Interface_GetCancellationReason() const override { return {}; }
  Tovrin::ITelemetry* Interface_GetTelemetry() const override { return {}; }
  Tovrin::ICallStack* Interface_GetCallStack() const override { return {}; }
  const char* Interface_GetTrace() const override { return {}; }
  const char* Interface_GetTracePathPrefix() const override { return {}; }
  void Interface_SetTracePathPrefix(const char*) override {}
  const char* Interface_PrintCallStack() const override { return {}; }
  const char* Interface_GetPolicyRevision() const override { return {}; }
  std::uint64_t Interface_MicrosecondsSinceStart() const override { return {}; }
  std::uint64_t Interface_CPUTimeMicroseconds() const override { return {}; }
  bool Interface_IsPreRun() const override { return {}; }
  void Interface_SetResultMaybe() override {}
  void Interface_SetResuming(bool) override {}
  std::uint64_t Interface_GetPolicyStatementBlockId() const override { return {}; }
};

// A running transaction: makes texts and vectors of texts, and knows types by name.
class TestContext final : public NeutralContext {
public:
  std::map<std::string, Tovrin::TypeId> types;     // what FindType knows
  mutable std::vector<std::string> typesAskedFor;  // by FindType, in order
  bool givesVectors = true;                        // false: CreateInstance(VECTOR<STRING>) is null
  bool givesTexts = true;                          // false: CreateInstance(STRING) is null

protected:
  Tovrin::IVariant* Interface_CreateInstance(TypeId type) override;
  TypeId Interface_FindType(const char* name) const override;
};

// Takes every line and keeps none; tests override what they need.
class NeutralLogger : public Tovrin::InterfaceImpl<Tovrin::ILogger> {
protected:
  bool Interface_IsDebugLogEnabled(const char*, std::uint32_t) const override { return {}; }
  void Interface_DebugLog(const char*, std::uint32_t, Tovrin::IJSON*, std::uint32_t,
                          Tovrin::IContext*) override {}
  void Interface_DebugLog(const char*, std::uint32_t, const char*, std::uint32_t,
                          Tovrin::IContext*) override {}
  void Interface_SetDebugActivated(bool) override {}
  void Interface_SetDebugLogLevel(std::uint32_t) override {}
  void Interface_SetDebugLogLevelDefinition(const char*) override {}
  void Interface_SetErrorActivated(bool) override {}
  void Interface_ErrorLog(const char*, Tovrin::IJSON*, std::uint32_t, Tovrin::IContext*) override {}
  void Interface_ErrorLog(const char*, const char*, std::uint32_t, Tovrin::IContext*) override {}
  bool Interface_CreateUserDefinedLog(const char*, const char*) override { return {}; }
  bool Interface_HasUserDefinedLog(const char*) const override { return {}; }
  bool Interface_IsUserDefinedLogEnabled(const char*) const override { return {}; }
  void Interface_DeleteUserDefinedLog(const char*) override {}
  void Interface_UserDefinedLog(const char*, std::uint32_t, Tovrin::IJSON*, std::uint32_t,
                                Tovrin::IContext*) override {}
  void Interface_UserDefinedLog(const char*, std::uint32_t, const char*, std::uint32_t,
                                Tovrin::IContext*) override {}
};

// Hands out one context, and counts what must not happen to it.
class TestPolicy final : public Tovrin::InterfaceImpl<Tovrin::IPolicy> {
public:
  Tovrin::AutoRefPtr<TestContext> context;  // what CreateTransaction gives; may be empty
  std::vector<std::string> transactions;    // the names asked for
  int executed = 0;
  int cleanedUp = 0;

private:
  Tovrin::IContext* Interface_CreateTransaction(const char* name) override;
  bool Interface_ExecuteTransaction(Tovrin::IContext*) override { return ++executed != 0; }
  void Interface_CleanupTransaction(Tovrin::IContext*) override { ++cleanedUp; }
  std::uint64_t Interface_GetUserDataId(const char*) const override { return {}; }
  Tovrin::IDataRef* Interface_LoadData(Tovrin::IContext*, const char*) override { return {}; }
  Tovrin::IVariant* Interface_LoadValue(Tovrin::IContext*, Tovrin::TypeId, const char*) override {
    return {};
  }
  Tovrin::IVariant* Interface_CreateUserDefinedVariable(const char*) override { return {}; }
  Tovrin::IContext* Interface_ContinueRemoteTransaction(Tovrin::IDataRef*, const char*) override {
    return {};
  }
  std::uint64_t Interface_GetTovrinInstanceId() const override { return {}; }
  Tovrin::IJSON* Interface_ToJson() const override { return {}; }
};

class TestModuleInfo final : public Tovrin::InterfaceImpl<Tovrin::IModuleInfo> {
public:
  Tovrin::AutoRefPtr<TestPolicy> policy;  // may be empty

private:
  Tovrin::IPolicy* Interface_GetPolicy() const override;
  Tovrin::IThreadPool* Interface_GetThreadPool() const override { return {}; }
  Tovrin::IEventScheduler* Interface_GetEventScheduler() const override { return {}; }
  Tovrin::IConfiguration* Interface_GetConfiguration() const override { return {}; }
  Tovrin::ILogger* Interface_GetLogger() const override { return {}; }
  void* Interface_GetUserDefinedData() const override { return {}; }
  void Interface_SetUserDefinedData(void*) override {}
  Tovrin::ITelemetry* Interface_GetTelemetry() const override { return {}; }
  const char* Interface_GetModuleName() const override { return {}; }
  const char* Interface_GetFuncOrProcName() const override { return {}; }
};
