#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/ICallStack.h"
#include "host/IConfiguration.h"
#include "host/IDataRef.h"
#include "host/IEventScheduler.h"
#include "host/IJSON.h"
#include "host/ILogger.h"
#include "host/IModuleInfo.h"
#include "host/IObject.h"
#include "host/IPolicy.h"
#include "host/IStream.h"
#include "host/ITelemetry.h"
#include "host/IVariant.h"
#include "host/ModuleFunction.h"
#include "host/TypeIds.h"
#include "host/ValueForm.h"

namespace Tovrin {

// The host's view of one running transaction: its state, its user data, its errors, and the
// factories for values. The host implements it; a context is used by one thread at a time.
//
// Nothing here reports: each null answer of the host is an empty container, text or reference.
class TOVRIN_API IContext : public IObject {
public:
  std::uint32_t GetTransactionId() const { return Interface_GetTransactionId(); }
  void SetInterrupted() { Interface_SetInterrupted(); }
  void ClearInterrupted() { Interface_ClearInterrupted(); }
  bool IsInterrupted() const { return Interface_IsInterrupted(); }
  bool IsResuming() const { return Interface_IsResuming(); }
  bool ExitCalled() const { return Interface_ExitCalled(); }
  void ClearExit() { Interface_ClearExit(); }
  bool EndCalled() const { return Interface_EndCalled(); }
  void ClearEnd() { Interface_ClearEnd(); }
  void InterruptWithEvent(const AutoRefPtr<IEvent>& event, void* data) {
    Interface_InterruptWithEvent(event.get(), data);
  }
  void InterruptWithJob(JobFunction job, void* jobData, void* data) {
    Interface_InterruptWithJob(job, jobData, data);
  }
  void* GetInterruptionData() const { return Interface_GetInterruptionData(); }
  void ExecuteAfterInterruption(const AutoRefPtr<IEventScheduler>& scheduler, JobFunction job,
                                void* data) {
    Interface_ExecuteAfterInterruption(scheduler.get(), job, data);
  }
  void ExitExecution() { Interface_ExitExecution(); }

  std::uint64_t GetUserDataId(const char* name) { return Interface_GetUserDataId(name); }
  void SetUserData(std::uint64_t id, const AutoRefPtr<IVariant>& value) {
    Interface_SetUserData(id, value.get());
  }
  void SetUserDataAsBoolean(std::uint64_t id, bool value) {
    Interface_SetUserDataAsBoolean(id, value);
  }
  void SetUserDataAsNumber(std::uint64_t id, double value) {
    Interface_SetUserDataAsNumber(id, value);
  }
  void SetUserDataAsNumber(std::uint64_t id, std::int32_t value) {
    Interface_SetUserDataAsNumber(id, value);
  }
  void SetUserDataAsString(std::uint64_t id, const char* text) {
    Interface_SetUserDataAsString(id, text);
  }
  void SetUserDataAsString(std::uint64_t id, const std::string& text) {
    Interface_SetUserDataAsString(id, text.c_str());
  }
  void SetUserDataAsData(std::uint64_t id, const AutoRefPtr<IDataRef>& data) {
    Interface_SetUserDataAsData(id, data.get());
  }
  void SetUserDataAsStream(std::uint64_t id, const AutoRefPtr<IStream>& stream) {
    Interface_SetUserDataAsStream(id, stream.get());
  }
  AutoRefPtr<IVariant> GetUserData(std::uint64_t id) const {
    return AutoRefPtr<IVariant>(Interface_GetUserData(id));
  }
  bool GetUserDataAsBoolean(std::uint64_t id) const { return Interface_GetUserDataAsBoolean(id); }
  double GetUserDataAsNumber(std::uint64_t id) const { return Interface_GetUserDataAsNumber(id); }
  std::string GetUserDataAsString(std::uint64_t id) const {
    return TextOrEmpty(Interface_GetUserDataAsString(id));
  }
  AutoRefPtr<IDataRef> GetUserDataAsData(std::uint64_t id) const {
    return AutoRefPtr<IDataRef>(Interface_GetUserDataAsData(id));
  }
  AutoRefPtr<IStream> GetUserDataAsStream(std::uint64_t id) const {
    return AutoRefPtr<IStream>(Interface_GetUserDataAsStream(id));
  }
  void ClearUserData(std::uint64_t id) { Interface_ClearUserData(id); }

  AutoRefPtr<IVariant> CreateInstance(TypeId typeId) {
    return AutoRefPtr<IVariant>(Interface_CreateInstance(typeId));
  }
  TypeId FindType(const char* name) const { return Interface_FindType(name); }
  std::string GetTypeName(TypeId typeId) const {
    return TextOrEmpty(Interface_GetTypeName(typeId));
  }

  ModuleFunction GetFunction(const char* name, std::uint32_t count, const char* const* types,
                             AutoRefPtr<IModuleInfo>* info, std::uint32_t flag) {
    IModuleInfo* slot = nullptr;
    ModuleFunction function = Interface_GetFunction(name, count, types, &slot, flag);
    AutoRefPtr<IModuleInfo> held(slot);
    if (info) *info = std::move(held);
    return function;
  }
  ModuleFunction GetProcedure(const char* name, std::uint32_t count, const char* const* types,
                              AutoRefPtr<IModuleInfo>* info, std::uint32_t flag) {
    IModuleInfo* slot = nullptr;
    ModuleFunction function = Interface_GetProcedure(name, count, types, &slot, flag);
    AutoRefPtr<IModuleInfo> held(slot);
    if (info) *info = std::move(held);
    return function;
  }

  std::string GetRoutineName() const { return TextOrEmpty(Interface_GetRoutineName()); }
  std::uint32_t GetLineNumber() const { return Interface_GetLineNumber(); }
  std::string GetLineContent() const { return TextOrEmpty(Interface_GetLineContent()); }
  std::string GetResourcePath() const { return TextOrEmpty(Interface_GetResourcePath()); }

  bool RegisterModuleCallbackFunction(CallbackType type, const char* name,
                                      CallbackFunction function, void* data) {
    return Interface_RegisterModuleCallbackFunction(type, name, function, data);
  }
  void ExecuteCallbackFunctions(CallbackType type) { Interface_ExecuteCallbackFunctions(type); }
  std::int64_t CallRoutine(const char* name) { return Interface_CallRoutine(name); }
  std::int64_t CallRoutineByTrigger(const char* name) {
    return Interface_CallRoutineByTrigger(name);
  }
  std::string GetTriggers() const { return TextOrEmpty(Interface_GetTriggers()); }
  std::string GetInitialTrigger() const { return TextOrEmpty(Interface_GetInitialTrigger()); }

  AutoRefPtr<IJSON> Serialize() const { return AutoRefPtr<IJSON>(Interface_Serialize()); }
  bool UpdateContext(const AutoRefPtr<IJSON>& json) { return Interface_UpdateContext(json.get()); }

  AutoRefPtr<IPolicy> GetPolicy() const { return AutoRefPtr<IPolicy>(Interface_GetPolicy()); }
  std::uint64_t GetTovrinInstanceId() const { return Interface_GetTovrinInstanceId(); }
  AutoRefPtr<ILogger> GetLogger() const {
    return AutoRefPtr<ILogger>(Interface_GetLogger());
  }  // the logger accessor
  AutoRefPtr<IConfiguration> CreateConfiguration() {
    return AutoRefPtr<IConfiguration>(Interface_CreateConfiguration());
  }

  void TriggerErrorHandler(ErrorSeverity severity, const char* moduleNamespace, const char* errorId,
                           const char* message) {
    Interface_TriggerErrorHandler(severity, moduleNamespace, errorId, message);
  }
  bool HasError() const { return Interface_HasError(); }
  ErrorSeverity GetErrorSeverity() const { return Interface_GetErrorSeverity(); }
  std::string GetErrorModuleNamespace() const {
    return TextOrEmpty(Interface_GetErrorModuleNamespace());
  }
  std::string GetErrorId() const { return TextOrEmpty(Interface_GetErrorId()); }
  std::string GetErrorMessage() const { return TextOrEmpty(Interface_GetErrorMessage()); }
  std::string GetStackedErrors(const char* first, const char* second) const {
    return TextOrEmpty(Interface_GetStackedErrors(first, second));
  }
  std::uint32_t GetErrorLineNumber() const { return Interface_GetErrorLineNumber(); }
  std::string GetErrorLineContent() const { return TextOrEmpty(Interface_GetErrorLineContent()); }
  std::string GetErrorResourcePath() const { return TextOrEmpty(Interface_GetErrorResourcePath()); }
  void ClearError() { Interface_ClearError(); }

  void Cancel(const char* reason) { Interface_Cancel(reason); }
  bool IsCanceled() const { return Interface_IsCanceled(); }
  std::string GetCancellationReason() const {
    return TextOrEmpty(Interface_GetCancellationReason());
  }

  AutoRefPtr<ITelemetry> GetTelemetry() const {
    return AutoRefPtr<ITelemetry>(Interface_GetTelemetry());
  }
  AutoRefPtr<ICallStack> GetCallStack() const {
    return AutoRefPtr<ICallStack>(Interface_GetCallStack());
  }
  std::string GetTrace() const { return TextOrEmpty(Interface_GetTrace()); }
  std::string GetTracePathPrefix() const { return TextOrEmpty(Interface_GetTracePathPrefix()); }
  void SetTracePathPrefix(const char* prefix) { Interface_SetTracePathPrefix(prefix); }
  std::string PrintCallStack() const { return TextOrEmpty(Interface_PrintCallStack()); }

  std::string GetPolicyRevision() const { return TextOrEmpty(Interface_GetPolicyRevision()); }
  std::uint64_t MicrosecondsSinceStart() const { return Interface_MicrosecondsSinceStart(); }
  std::uint64_t CPUTimeMicroseconds() const { return Interface_CPUTimeMicroseconds(); }
  bool IsPreRun() const { return Interface_IsPreRun(); }
  void SetResultMaybe() { Interface_SetResultMaybe(); }
  void SetResuming(bool on) { Interface_SetResuming(on); }
  std::uint64_t GetPolicyStatementBlockId() const { return Interface_GetPolicyStatementBlockId(); }

  // From here on: members with logic and no slot of their own. What the host does not give is
  // empty.
  AutoRefPtr<const IVectorGeneric> CreateStringVector() {
    return CreateVector(kTypeString + kVectorOf);
  }
  AutoRefPtr<const IVectorGeneric> CreateNumberVector() {
    return CreateVector(kTypeNumber + kVectorOf);
  }
  AutoRefPtr<const IVectorGeneric> CreateBooleanVector() {
    return CreateVector(kTypeBoolean + kVectorOf);
  }
  AutoRefPtr<const IVectorGeneric> CreateDataVector() {
    return CreateVector(kTypeDataRef + kVectorOf);
  }
  AutoRefPtr<const IVectorGeneric> CreateStreamVector() {
    return CreateVector(kTypeStream + kVectorOf);
  }
  AutoRefPtr<const IMapGeneric> CreateStringToStringMap() {
    return CreateMap(kTypeString + kStringMapOf);
  }
  AutoRefPtr<const IMapGeneric> CreateStringToNumberMap() {
    return CreateMap(kTypeNumber + kStringMapOf);
  }
  AutoRefPtr<const IMapGeneric> CreateStringToBooleanMap() {
    return CreateMap(kTypeBoolean + kStringMapOf);
  }
  AutoRefPtr<const IMapGeneric> CreateStringToDataMap() {
    return CreateMap(kTypeDataRef + kStringMapOf);
  }
  AutoRefPtr<const IMapGeneric> CreateStringToStreamMap() {
    return CreateMap(kTypeStream + kStringMapOf);
  }
  AutoRefPtr<const IMapGeneric> CreateNumberToStringMap() {
    return CreateMap(kTypeString + kNumberMapOf);
  }
  AutoRefPtr<const IMapGeneric> CreateNumberToNumberMap() {
    return CreateMap(kTypeNumber + kNumberMapOf);
  }
  AutoRefPtr<const IMapGeneric> CreateNumberToBooleanMap() {
    return CreateMap(kTypeBoolean + kNumberMapOf);
  }
  AutoRefPtr<const IMapGeneric> CreateNumberToDataMap() {
    return CreateMap(kTypeDataRef + kNumberMapOf);
  }
  AutoRefPtr<const IMapGeneric> CreateNumberToStreamMap() {
    return CreateMap(kTypeStream + kNumberMapOf);
  }
  AutoRefPtr<IDataRef> CreateDataInstance() {
    AutoRefPtr<IVariant> v = CreateInstance(kTypeDataRef);
    return v ? v->GetData() : AutoRefPtr<IDataRef>();
  }
  AutoRefPtr<IStream> CreateStreamInstance() {
    AutoRefPtr<IVariant> v = CreateInstance(kTypeStream);
    return v ? v->GetStream() : AutoRefPtr<IStream>();
  }

  // Containers in the transaction's user data. A value of another type reads as an empty container.
  std::vector<std::string> GetUserDataAsStringVector(std::uint64_t id) const {
    return GetVectorOf<std::string>(id);
  }
  std::vector<double> GetUserDataAsNumberVector(std::uint64_t id) const {
    return GetVectorOf<double>(id);
  }
  std::vector<bool> GetUserDataAsBooleanVector(std::uint64_t id) const {
    return GetVectorOf<bool>(id);
  }
  std::map<std::string, std::string> GetUserDataAsStringToStringMap(std::uint64_t id) const {
    return GetMapOf<std::string, std::string>(id);
  }
  std::map<std::string, double> GetUserDataAsStringToNumberMap(std::uint64_t id) const {
    return GetMapOf<std::string, double>(id);
  }
  std::map<std::string, bool> GetUserDataAsStringToBooleanMap(std::uint64_t id) const {
    return GetMapOf<std::string, bool>(id);
  }
  std::map<double, std::string> GetUserDataAsNumberToStringMap(std::uint64_t id) const {
    return GetMapOf<double, std::string>(id);
  }
  std::map<double, double> GetUserDataAsNumberToNumberMap(std::uint64_t id) const {
    return GetMapOf<double, double>(id);
  }
  std::map<double, bool> GetUserDataAsNumberToBooleanMap(std::uint64_t id) const {
    return GetMapOf<double, bool>(id);
  }
  void SetUserDataAsStringVector(std::uint64_t id, const std::vector<std::string>& values) {
    SetVectorOf(id, values);
  }
  void SetUserDataAsNumberVector(std::uint64_t id, const std::vector<double>& values) {
    SetVectorOf(id, values);
  }
  void SetUserDataAsBooleanVector(std::uint64_t id, const std::vector<bool>& values) {
    SetVectorOf(id, values);
  }
  void SetUserDataAsStringToStringMap(std::uint64_t id,
                                      const std::map<std::string, std::string>& values) {
    SetMapOf(id, values);
  }
  void SetUserDataAsStringToNumberMap(std::uint64_t id,
                                      const std::map<std::string, double>& values) {
    SetMapOf(id, values);
  }
  void SetUserDataAsStringToBooleanMap(std::uint64_t id,
                                       const std::map<std::string, bool>& values) {
    SetMapOf(id, values);
  }
  void SetUserDataAsNumberToStringMap(std::uint64_t id,
                                      const std::map<double, std::string>& values) {
    SetMapOf(id, values);
  }
  void SetUserDataAsNumberToNumberMap(std::uint64_t id, const std::map<double, double>& values) {
    SetMapOf(id, values);
  }
  void SetUserDataAsNumberToBooleanMap(std::uint64_t id, const std::map<double, bool>& values) {
    SetMapOf(id, values);
  }

  bool IsDebugLogEnabled(const char* module, std::uint32_t level) const {
    AutoRefPtr<ILogger> logger = GetLogger();
    return logger && logger->IsDebugLogEnabled(module, level);
  }
  void DebugLog(const char* module, std::uint32_t level, const char* text) {
    WriteDebugLog(module, level, text);
  }
  void DebugLog(const char* module, std::uint32_t level, const std::string& text) {
    WriteDebugLog(module, level, text.c_str());
  }
  void DebugLog(const char* module, std::uint32_t level, const AutoRefPtr<IJSON>& json) {
    WriteDebugLog(module, level, json);
  }
  void ErrorLog(const char* module, const char* text) { WriteErrorLog(module, text); }
  void ErrorLog(const char* module, const std::string& text) {
    WriteErrorLog(module, text.c_str());
  }
  void ErrorLog(const char* module, const AutoRefPtr<IJSON>& json) { WriteErrorLog(module, json); }

protected:
  ~IContext() = default;

private:
  template <class Logged>
  void WriteDebugLog(const char* module, std::uint32_t level, const Logged& what) {
    AutoRefPtr<ILogger> logger = GetLogger();
    if (!logger) return;
    AutoRefPtr<IContext> self = Share(this);
    logger->DebugLog(module, level, what, GetTransactionId(), self.get());
  }
  template <class Logged>
  void WriteErrorLog(const char* module, const Logged& what) {
    AutoRefPtr<ILogger> logger = GetLogger();
    if (!logger) return;
    AutoRefPtr<IContext> self = Share(this);
    logger->ErrorLog(module, what, GetTransactionId(), self.get());
  }

  AutoRefPtr<const IVectorGeneric> CreateVector(TypeId typeId) {
    AutoRefPtr<IVariant> variant = CreateInstance(typeId);
    return variant ? variant->GetVector() : AutoRefPtr<const IVectorGeneric>();
  }
  AutoRefPtr<const IMapGeneric> CreateMap(TypeId typeId) {
    AutoRefPtr<IVariant> variant = CreateInstance(typeId);
    return variant ? variant->GetMap() : AutoRefPtr<const IMapGeneric>();
  }

  template <class T>
  std::vector<T> GetVectorOf(std::uint64_t id) const;
  template <class K, class T>
  std::map<K, T> GetMapOf(std::uint64_t id) const;
  template <class T>
  void SetVectorOf(std::uint64_t id, const std::vector<T>& values);
  template <class K, class T>
  void SetMapOf(std::uint64_t id, const std::map<K, T>& values);

  // Contract: the host calls these by position
  // Identity
  virtual std::uint32_t Interface_GetTransactionId() const = 0;
  // Interruption
  virtual void Interface_SetInterrupted() = 0;
  virtual void Interface_ClearInterrupted() = 0;
  virtual bool Interface_IsInterrupted() const = 0;
  virtual bool Interface_IsResuming() const = 0;
  virtual bool Interface_ExitCalled() const = 0;
  virtual void Interface_ClearExit() = 0;
  virtual bool Interface_EndCalled() const = 0;
  virtual void Interface_ClearEnd() = 0;
  virtual void Interface_InterruptWithEvent(IEvent* event, void* data) = 0;
  virtual void Interface_InterruptWithJob(JobFunction job, void* jobData, void* data) = 0;
  virtual void* Interface_GetInterruptionData() const = 0;
  virtual void Interface_ExecuteAfterInterruption(IEventScheduler* scheduler, JobFunction job,
                                                  void* data) = 0;
  virtual void Interface_ExitExecution() = 0;
  // User data
  virtual std::uint64_t Interface_GetUserDataId(const char* name) = 0;
  virtual void Interface_SetUserData(std::uint64_t id, IVariant* value) = 0;
  virtual void Interface_SetUserDataAsBoolean(std::uint64_t id, bool value) = 0;
  virtual void Interface_SetUserDataAsNumber(std::uint64_t id, double value) = 0;
  virtual void Interface_SetUserDataAsString(std::uint64_t id, const char* text) = 0;
  virtual void Interface_SetUserDataAsData(std::uint64_t id, IDataRef* data) = 0;
  virtual void Interface_SetUserDataAsStream(std::uint64_t id, IStream* stream) = 0;
  virtual IVariant* Interface_GetUserData(std::uint64_t id) const = 0;
  virtual bool Interface_GetUserDataAsBoolean(std::uint64_t id) const = 0;
  virtual double Interface_GetUserDataAsNumber(std::uint64_t id) const = 0;
  virtual const char* Interface_GetUserDataAsString(std::uint64_t id) const = 0;
  virtual IDataRef* Interface_GetUserDataAsData(std::uint64_t id) const = 0;
  virtual IStream* Interface_GetUserDataAsStream(std::uint64_t id) const = 0;
  virtual void Interface_ClearUserData(std::uint64_t id) = 0;
  // Values and types
  virtual IVariant* Interface_CreateInstance(TypeId typeId) = 0;
  virtual TypeId Interface_FindType(const char* name) const = 0;
  virtual const char* Interface_GetTypeName(TypeId typeId) const = 0;
  // Linking
  virtual ModuleFunction Interface_GetFunction(const char* name, std::uint32_t count,
                                               const char* const* types, IModuleInfo** info,
                                               std::uint32_t flag) = 0;
  virtual ModuleFunction Interface_GetProcedure(const char* name, std::uint32_t count,
                                                const char* const* types, IModuleInfo** info,
                                                std::uint32_t flag) = 0;
  // Position
  virtual const char* Interface_GetRoutineName() const = 0;
  virtual std::uint32_t Interface_GetLineNumber() const = 0;
  virtual const char* Interface_GetLineContent() const = 0;
  virtual const char* Interface_GetResourcePath() const = 0;
  // Callbacks and routines
  virtual bool Interface_RegisterModuleCallbackFunction(CallbackType type, const char* name,
                                                        CallbackFunction function, void* data) = 0;
  virtual void Interface_ExecuteCallbackFunctions(CallbackType type) = 0;
  virtual std::int64_t Interface_CallRoutine(const char* name) = 0;
  virtual std::int64_t Interface_CallRoutineByTrigger(const char* name) = 0;
  virtual const char* Interface_GetTriggers() const = 0;
  virtual const char* Interface_GetInitialTrigger() const = 0;
  // Persistence
  virtual IJSON* Interface_Serialize() const = 0;
  virtual bool Interface_UpdateContext(IJSON* json) = 0;
  // Host
  virtual IPolicy* Interface_GetPolicy() const = 0;
  virtual std::uint64_t Interface_GetTovrinInstanceId() const = 0;
  virtual ILogger* Interface_GetLogger() const = 0;
  virtual IConfiguration* Interface_CreateConfiguration() = 0;
  // Errors
  virtual void Interface_TriggerErrorHandler(ErrorSeverity severity, const char* moduleNamespace,
                                             const char* errorId, const char* message) = 0;
  virtual bool Interface_HasError() const = 0;
  virtual ErrorSeverity Interface_GetErrorSeverity() const = 0;
  virtual const char* Interface_GetErrorModuleNamespace() const = 0;
  virtual const char* Interface_GetErrorId() const = 0;
  virtual const char* Interface_GetErrorMessage() const = 0;
  virtual const char* Interface_GetStackedErrors(const char* first, const char* second) const = 0;
  virtual std::uint32_t Interface_GetErrorLineNumber() const = 0;
  virtual const char* Interface_GetErrorLineContent() const = 0;
  virtual const char* Interface_GetErrorResourcePath() const = 0;
  virtual void Interface_ClearError() = 0;
  // Cancel
  virtual void Interface_Cancel(const char* reason) = 0;
  virtual bool Interface_IsCanceled() const = 0;
  virtual const char* Interface_GetCancellationReason() const = 0;
  // Diagnostics
  virtual ITelemetry* Interface_GetTelemetry() const = 0;
  virtual ICallStack* Interface_GetCallStack() const = 0;
  virtual const char* Interface_GetTrace() const = 0;
  virtual const char* Interface_GetTracePathPrefix() const = 0;
  virtual void Interface_SetTracePathPrefix(const char* prefix) = 0;
  virtual const char* Interface_PrintCallStack() const = 0;
  // Run facts
  virtual const char* Interface_GetPolicyRevision() const = 0;
  virtual std::uint64_t Interface_MicrosecondsSinceStart() const = 0;
  virtual std::uint64_t Interface_CPUTimeMicroseconds() const = 0;
  virtual bool Interface_IsPreRun() const = 0;
  virtual void Interface_SetResultMaybe() = 0;
  virtual void Interface_SetResuming(bool on) = 0;
  virtual std::uint64_t Interface_GetPolicyStatementBlockId() const = 0;
};

template <class T>
std::vector<T> IContext::GetVectorOf(std::uint64_t id) const {
  std::vector<T> values;
  const AutoRefPtr<IVariant> variant = GetUserData(id);
  if (!variant || variant->GetType() != ValueForm<T>::kType + kVectorOf) return values;
  const AutoRefPtr<const IVectorGeneric> vector = variant->GetVector();
  if (!vector) return values;

  const std::size_t size = vector->GetSize();
  for (std::size_t i = 0; i < size; ++i) values.push_back(ReadValue<T>(vector->Get(i)));
  return values;
}

template <class K, class T>
std::map<K, T> IContext::GetMapOf(std::uint64_t id) const {
  std::map<K, T> values;
  const AutoRefPtr<IVariant> variant = GetUserData(id);
  if (!variant || variant->GetType() != ValueForm<T>::kType + kMapKeyedBy<K>) return values;
  const AutoRefPtr<const IMapGeneric> map = variant->GetMap();
  if (!map) return values;

  const std::size_t size = map->GetSize();
  for (std::size_t i = 0; i < size; ++i)
    values.insert_or_assign(ReadValue<K>(map->GetKeyAt(i)), ReadValue<T>(map->GetValueAt(i)));
  return values;
}

template <class T>
void IContext::SetVectorOf(std::uint64_t id, const std::vector<T>& values) {
  const AutoRefPtr<IVariant> variant = CreateInstance(ValueForm<T>::kType + kVectorOf);
  if (!variant) return;
  AutoRefPtr<const IVectorGeneric> vector = variant->GetVector();
  for (const T& value : values) {
    if (vector) vector = vector->Append(MakeValue<T>(*this, value));
    if (!vector) return;
  }
  variant->AssignVector(vector);
  SetUserData(id, variant);
}

template <class K, class T>
void IContext::SetMapOf(std::uint64_t id, const std::map<K, T>& values) {
  const AutoRefPtr<IVariant> variant = CreateInstance(ValueForm<T>::kType + kMapKeyedBy<K>);
  if (!variant) return;
  AutoRefPtr<const IMapGeneric> map = variant->GetMap();
  for (const auto& [key, value] : values) {
    if (map) map = map->Insert(MakeValue<K>(*this, key), MakeValue<T>(*this, value));
    if (!map) return;
  }
  variant->AssignMap(map);
  SetUserData(id, variant);
}

// What these could not say before IContext and IPolicy were whole.
inline AutoRefPtr<IPolicy> IModuleInfo::GetPolicy() const {
  return AutoRefPtr<IPolicy>(Interface_GetPolicy());
}
inline AutoRefPtr<IContext> IPolicy::CreateTransaction(const char* name) {
  return AutoRefPtr<IContext>(Interface_CreateTransaction(name));
}
inline AutoRefPtr<IContext> IPolicy::ContinueRemoteTransaction(const AutoRefPtr<IDataRef>& data,
                                                               const char* name) {
  return AutoRefPtr<IContext>(Interface_ContinueRemoteTransaction(data.get(), name));
}

}  // namespace Tovrin
