#pragma once

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

// The exported members of every interface. exports.cpp emits them into the module, where they would
// otherwise be inlined away; the tests hold each against its place in the table.

namespace Tovrin {

// One overload of a member, named by its signature.
template <class Signature, class Interface>
constexpr auto Pick(Signature Interface::*member) {
  return member;
}

// Members in the order of their slots.
template <auto... Members>
struct MemberList {};

// The members that stand for a slot, without those of the base.
template <class Interface>
inline constexpr MemberList<> kOperations;

// The members with logic of their own, and the second forms of an argument.
template <class Interface>
inline constexpr MemberList<> kConveniences;

template <>
inline constexpr MemberList<&IObject::AddRef, &IObject::Release, &IObject::GetCount>
    kOperations<IObject>;

template <>
inline constexpr MemberList<
    &IJSON::Parse, &IJSON::LessThan, &IJSON::Equals, &IJSON::ToString, &IJSON::ToCachedString,
    &IJSON::FindNodePath,
    Pick<AutoRefPtr<IJSON>(const char*, const char*) const>(&IJSON::ElementMatching),
    Pick<AutoRefPtr<IJSON>(const char*, double) const>(&IJSON::ElementMatching), &IJSON::Size,
    &IJSON::Empty, &IJSON::GetString, &IJSON::GetDouble, &IJSON::GetInt, &IJSON::GetUInt,
    &IJSON::GetInt64, &IJSON::GetUInt64, &IJSON::GetBoolean, &IJSON::Get, &IJSON::Has, &IJSON::At,
    Pick<bool(bool)>(&IJSON::PushBack), Pick<bool(const char*)>(&IJSON::PushBack),
    Pick<bool(double)>(&IJSON::PushBack), Pick<bool(const IJSON*)>(&IJSON::PushBack),
    Pick<AutoRefPtr<IJSON>(std::size_t)>(&IJSON::Remove),
    Pick<AutoRefPtr<IJSON>(const char*)>(&IJSON::Remove), &IJSON::AsBool, &IJSON::AsDouble,
    &IJSON::AsInt, &IJSON::AsUInt, &IJSON::AsInt64, &IJSON::AsUInt64, &IJSON::AsString,
    &IJSON::IsNull, &IJSON::IsBool, &IJSON::IsNumber, &IJSON::IsDouble, &IJSON::IsInt,
    &IJSON::IsUInt, &IJSON::IsInt64, &IJSON::IsUInt64, &IJSON::IsString, &IJSON::IsArray,
    &IJSON::IsObject, Pick<bool(const char*, bool)>(&IJSON::Set),
    Pick<bool(const char*, double)>(&IJSON::Set),
    Pick<bool(const char*, std::int32_t)>(&IJSON::Set),
    Pick<bool(const char*, std::uint32_t)>(&IJSON::Set),
    Pick<bool(const char*, std::int64_t)>(&IJSON::Set),
    Pick<bool(const char*, std::uint64_t)>(&IJSON::Set),
    Pick<bool(const char*, const char*)>(&IJSON::Set),
    Pick<bool(const char*, const IJSON*)>(&IJSON::Set), &IJSON::SetNull, &IJSON::ReplaceAt,
    Pick<bool(IJSON::ForEachErrorFn, void*, char*, std::size_t) const>(&IJSON::ForEach),
    Pick<bool(IJSON::ForEachFn, void*) const>(&IJSON::ForEach),
    Pick<bool(IJSON::ForEachFn, void*, IContext*) const>(&IJSON::ForEach), &IJSON::Clone,
    &IJSON::SerializedSize, &IJSON::Deserialize, &IJSON::Serialize, &IJSON::GetErrorStatus,
    &IJSON::GetErrorMessage>
    kOperations<IJSON>;

template <>
inline constexpr MemberList<Pick<bool(const char*, const std::string&)>(&IJSON::Set)>
    kConveniences<IJSON>;

template <>
inline constexpr MemberList<&IDataRef::GetSize, &IDataRef::Assign, &IDataRef::Read,
                            &IDataRef::IsEqual, &IDataRef::Clone, &IDataRef::GetData>
    kOperations<IDataRef>;

template <>
inline constexpr MemberList<&IUserDefinedType::GetName, &IUserDefinedType::Clone,
                            &IUserDefinedType::GetType, &IUserDefinedType::LessThan,
                            Pick<bool(const IJSON*, IContext*)>(&IUserDefinedType::Deserialize),
                            Pick<bool(const IJSON*)>(&IUserDefinedType::Deserialize),
                            Pick<AutoRefPtr<IJSON>(IContext*) const>(&IUserDefinedType::Serialize),
                            Pick<AutoRefPtr<IJSON>() const>(&IUserDefinedType::Serialize),
                            &IUserDefinedType::FromBinaryData, &IUserDefinedType::ToBinaryData>
    kOperations<IUserDefinedType>;

template <>
inline constexpr MemberList<&IUserDefinedType::IsEqual,
                            Pick<void(std::string&, IContext*) const>(&IUserDefinedType::ToString),
                            Pick<void(std::string&) const>(&IUserDefinedType::ToString),
                            Pick<std::size_t(IContext*) const>(&IUserDefinedType::ToStringSize),
                            Pick<std::size_t() const>(&IUserDefinedType::ToStringSize)>
    kConveniences<IUserDefinedType>;

template <>
inline constexpr MemberList<
    &IVariant::GetType, &IVariant::GetTypeAsString, &IVariant::GetBoolean, &IVariant::GetNumber,
    &IVariant::GetString, &IVariant::GetStringSize, &IVariant::GetData, &IVariant::GetStream,
    &IVariant::GetUserDefined, &IVariant::GetVectorSize, &IVariant::GetVector,
    &IVariant::GetMapSize, &IVariant::GetMap, &IVariant::IsEqual, &IVariant::Assign,
    &IVariant::AssignBoolean, Pick<void(double)>(&IVariant::AssignNumber),
    Pick<void(const char*, std::size_t)>(&IVariant::AssignString), &IVariant::AssignData,
    &IVariant::AssignStream, &IVariant::SetUserDefined, &IVariant::AssignVector,
    &IVariant::AssignMap, &IVariant::Clone, &IVariant::Deserialize, &IVariant::Serialize>
    kOperations<IVariant>;

template <>
inline constexpr MemberList<Pick<void(std::int32_t)>(&IVariant::AssignNumber),
                            Pick<void(std::int64_t)>(&IVariant::AssignNumber),
                            Pick<void(std::uint64_t)>(&IVariant::AssignNumber),
                            Pick<void(const std::string&)>(&IVariant::AssignString),
                            &IVariant::ToString>
    kConveniences<IVariant>;

template <>
inline constexpr MemberList<&IVectorGeneric::GetSize, &IVectorGeneric::GetElementType,
                            &IVectorGeneric::Get, &IVectorGeneric::Append,
                            &IVectorGeneric::Serialize, &IVectorGeneric::Deserialize>
    kOperations<IVectorGeneric>;

template <>
inline constexpr MemberList<&IMapGeneric::GetKeyType, &IMapGeneric::GetMappedValueType,
                            &IMapGeneric::GetSize, &IMapGeneric::GetKeyAt, &IMapGeneric::GetValueAt,
                            &IMapGeneric::Insert, &IMapGeneric::Serialize,
                            &IMapGeneric::Deserialize>
    kOperations<IMapGeneric>;

template <>
inline constexpr MemberList<
    &ILogger::IsDebugLogEnabled,
    Pick<void(const char*, std::uint32_t, const AutoRefPtr<IJSON>&, std::uint32_t, IContext*)>(
        &ILogger::DebugLog),
    Pick<void(const char*, std::uint32_t, const char*, std::uint32_t, IContext*)>(
        &ILogger::DebugLog),
    &ILogger::SetDebugActivated, &ILogger::SetDebugLogLevel, &ILogger::SetDebugLogLevelDefinition,
    &ILogger::SetErrorActivated,
    Pick<void(const char*, const AutoRefPtr<IJSON>&, std::uint32_t, IContext*)>(&ILogger::ErrorLog),
    Pick<void(const char*, const char*, std::uint32_t, IContext*)>(&ILogger::ErrorLog),
    &ILogger::CreateUserDefinedLog, &ILogger::HasUserDefinedLog, &ILogger::IsUserDefinedLogEnabled,
    &ILogger::DeleteUserDefinedLog,
    Pick<void(const char*, std::uint32_t, const AutoRefPtr<IJSON>&, std::uint32_t, IContext*)>(
        &ILogger::UserDefinedLog),
    Pick<void(const char*, std::uint32_t, const char*, std::uint32_t, IContext*)>(
        &ILogger::UserDefinedLog)>
    kOperations<ILogger>;

template <>
inline constexpr MemberList<&IModuleInfo::GetThreadPool, &IModuleInfo::GetEventScheduler,
                            &IModuleInfo::GetPolicy, &IModuleInfo::GetConfiguration,
                            &IModuleInfo::GetLogger, &IModuleInfo::GetUserDefinedData,
                            &IModuleInfo::SetUserDefinedData, &IModuleInfo::GetTelemetry,
                            &IModuleInfo::GetModuleName, &IModuleInfo::GetFuncOrProcName>
    kOperations<IModuleInfo>;

template <>
inline constexpr MemberList<
    &IPolicy::CreateTransaction, &IPolicy::ExecuteTransaction, &IPolicy::CleanupTransaction,
    &IPolicy::GetUserDataId, &IPolicy::LoadData, &IPolicy::LoadValue,
    &IPolicy::CreateUserDefinedVariable, &IPolicy::ContinueRemoteTransaction,
    &IPolicy::GetTovrinInstanceId, &IPolicy::ToJson>
    kOperations<IPolicy>;

template <>
inline constexpr MemberList<
    &IContext::GetTransactionId, &IContext::SetInterrupted, &IContext::ClearInterrupted,
    &IContext::IsInterrupted, &IContext::IsResuming, &IContext::ExitCalled, &IContext::ClearExit,
    &IContext::EndCalled, &IContext::ClearEnd, &IContext::InterruptWithEvent,
    &IContext::InterruptWithJob, &IContext::GetInterruptionData,
    &IContext::ExecuteAfterInterruption, &IContext::ExitExecution, &IContext::GetUserDataId,
    &IContext::SetUserData, &IContext::SetUserDataAsBoolean,
    Pick<void(std::uint64_t, double)>(&IContext::SetUserDataAsNumber),
    Pick<void(std::uint64_t, const char*)>(&IContext::SetUserDataAsString),
    &IContext::SetUserDataAsData, &IContext::SetUserDataAsStream, &IContext::GetUserData,
    &IContext::GetUserDataAsBoolean, &IContext::GetUserDataAsNumber, &IContext::GetUserDataAsString,
    &IContext::GetUserDataAsData, &IContext::GetUserDataAsStream, &IContext::ClearUserData,
    &IContext::CreateInstance, &IContext::FindType, &IContext::GetTypeName, &IContext::GetFunction,
    &IContext::GetProcedure, &IContext::GetRoutineName, &IContext::GetLineNumber,
    &IContext::GetLineContent, &IContext::GetResourcePath,
    &IContext::RegisterModuleCallbackFunction, &IContext::ExecuteCallbackFunctions,
    &IContext::CallRoutine, &IContext::CallRoutineByTrigger, &IContext::GetTriggers,
    &IContext::GetInitialTrigger, &IContext::Serialize, &IContext::UpdateContext,
    &IContext::GetPolicy, &IContext::GetTovrinInstanceId, &IContext::GetLogger,
    &IContext::CreateConfiguration, &IContext::TriggerErrorHandler, &IContext::HasError,
    &IContext::GetErrorSeverity, &IContext::GetErrorModuleNamespace, &IContext::GetErrorId,
    &IContext::GetErrorMessage, &IContext::GetStackedErrors, &IContext::GetErrorLineNumber,
    &IContext::GetErrorLineContent, &IContext::GetErrorResourcePath, &IContext::ClearError,
    &IContext::Cancel, &IContext::IsCanceled, &IContext::GetCancellationReason,
    &IContext::GetTelemetry, &IContext::GetCallStack, &IContext::GetTrace,
    &IContext::GetTracePathPrefix, &IContext::SetTracePathPrefix, &IContext::PrintCallStack,
    &IContext::GetPolicyRevision, &IContext::MicrosecondsSinceStart, &IContext::CPUTimeMicroseconds,
    &IContext::IsPreRun, &IContext::SetResultMaybe, &IContext::SetResuming,
    &IContext::GetPolicyStatementBlockId>
    kOperations<IContext>;

template <>
inline constexpr MemberList<
    Pick<void(std::uint64_t, std::int32_t)>(&IContext::SetUserDataAsNumber),
    Pick<void(std::uint64_t, const std::string&)>(&IContext::SetUserDataAsString),
    &IContext::CreateStringVector, &IContext::CreateNumberVector, &IContext::CreateBooleanVector,
    &IContext::CreateDataVector, &IContext::CreateStreamVector, &IContext::CreateStringToStringMap,
    &IContext::CreateStringToNumberMap, &IContext::CreateStringToBooleanMap,
    &IContext::CreateStringToDataMap, &IContext::CreateStringToStreamMap,
    &IContext::CreateNumberToStringMap, &IContext::CreateNumberToNumberMap,
    &IContext::CreateNumberToBooleanMap, &IContext::CreateNumberToDataMap,
    &IContext::CreateNumberToStreamMap, &IContext::CreateDataInstance,
    &IContext::CreateStreamInstance, &IContext::GetUserDataAsStringVector,
    &IContext::GetUserDataAsNumberVector, &IContext::GetUserDataAsBooleanVector,
    &IContext::GetUserDataAsStringToStringMap, &IContext::GetUserDataAsStringToNumberMap,
    &IContext::GetUserDataAsStringToBooleanMap, &IContext::GetUserDataAsNumberToStringMap,
    &IContext::GetUserDataAsNumberToNumberMap, &IContext::GetUserDataAsNumberToBooleanMap,
    &IContext::SetUserDataAsStringVector, &IContext::SetUserDataAsNumberVector,
    &IContext::SetUserDataAsBooleanVector, &IContext::SetUserDataAsStringToStringMap,
    &IContext::SetUserDataAsStringToNumberMap, &IContext::SetUserDataAsStringToBooleanMap,
    &IContext::SetUserDataAsNumberToStringMap, &IContext::SetUserDataAsNumberToNumberMap,
    &IContext::SetUserDataAsNumberToBooleanMap, &IContext::IsDebugLogEnabled,
    Pick<void(const char*, std::uint32_t, const char*)>(&IContext::DebugLog),
    Pick<void(const char*, std::uint32_t, const std::string&)>(&IContext::DebugLog),
    Pick<void(const char*, std::uint32_t, const AutoRefPtr<IJSON>&)>(&IContext::DebugLog),
    Pick<void(const char*, const char*)>(&IContext::ErrorLog),
    Pick<void(const char*, const std::string&)>(&IContext::ErrorLog),
    Pick<void(const char*, const AutoRefPtr<IJSON>&)>(&IContext::ErrorLog)>
    kConveniences<IContext>;

template <>
inline constexpr MemberList<&IHost::PrintError, &IHost::PrintDebug, &IHost::IsDebugActive,
                            &IHost::IsFunctionLevelEnabled, &IHost::IsLevelEnabled,
                            &IHost::ApplyDebugConfiguration, &IHost::ReportFatalError,
                            &IHost::GetTemporaryFile>
    kOperations<IHost>;

template <>
inline constexpr MemberList<&IStream::GetCurrentSize, &IStream::Read, &IStream::DiscardBefore,
                            &IStream::IsFinished, &IStream::NeedMoreData>
    kOperations<IStream>;

template <>
inline constexpr MemberList<&IStream::IsEqual> kConveniences<IStream>;

template <>
inline constexpr MemberList<&IHash::Clone, &IHash::LessThan,
                            Pick<bool(const IJSON*, IContext*)>(&IHash::Deserialize),
                            Pick<bool(const IJSON*)>(&IHash::Deserialize),
                            Pick<AutoRefPtr<IJSON>(IContext*) const>(&IHash::Serialize),
                            Pick<AutoRefPtr<IJSON>() const>(&IHash::Serialize)>
    kOperations<IHash>;

template <>
inline constexpr MemberList<&IHash::IsEqual,
                            Pick<void(std::string&, IContext*) const>(&IHash::ToString),
                            Pick<void(std::string&) const>(&IHash::ToString),
                            Pick<std::size_t(IContext*) const>(&IHash::ToStringSize),
                            Pick<std::size_t() const>(&IHash::ToStringSize)>
    kConveniences<IHash>;

template <>
inline constexpr MemberList<&ICallStack::IsResuming, &ICallStack::EnterFrame,
                            &ICallStack::EnterFrame_WithName, &ICallStack::LeaveFrame,
                            &ICallStack::MarkFrameForExit, &ICallStack::RegisterMemory,
                            &ICallStack::PrintCallStack>
    kOperations<ICallStack>;

template <>
inline constexpr MemberList<
    Pick<bool(const char*)>(&IConfiguration::LoadFromString), &IConfiguration::GetSize,
    &IConfiguration::HasKey, &IConfiguration::IsBoolean, &IConfiguration::IsInteger,
    &IConfiguration::IsReal, &IConfiguration::IsString, &IConfiguration::IsJSON,
    &IConfiguration::GetInteger, &IConfiguration::GetReal, &IConfiguration::GetBoolean,
    &IConfiguration::GetJSON, &IConfiguration::LoadConfigData, &IConfiguration::GetString,
    &IConfiguration::ToString, &IConfiguration::GetAllMatchingKeys>
    kOperations<IConfiguration>;

template <>
inline constexpr MemberList<Pick<bool(const std::string&)>(&IConfiguration::LoadFromString)>
    kConveniences<IConfiguration>;

template <>
inline constexpr MemberList<&IThreadPool::AddJobToThreadPool, &IThreadPool::AddPermanentThread,
                            &IThreadPool::StopPermanentThread>
    kOperations<IThreadPool>;

template <>
inline constexpr MemberList<&IEvent::HasError, &IEvent::RemoveIfFired, &IEvent::GetUserDefinedData>
    kOperations<IEvent>;

template <>
inline constexpr MemberList<&IFDEvent::GetFD, &IFDEvent::GetNotificationFlags>
    kOperations<IFDEvent>;

template <>
inline constexpr MemberList<&IGenericEvent::Signal> kOperations<IGenericEvent>;

template <>
inline constexpr MemberList<&IEventScheduler::CreateGenericEvent,
                            &IEventScheduler::CreateTimerEvent, &IEventScheduler::CreateFDEvent,
                            &IEventScheduler::RemoveEvent, &IEventScheduler::MakeSocketNonBlocking>
    kOperations<IEventScheduler>;

template <>
inline constexpr MemberList<
    Pick<void(const char*, std::uint64_t)>(&ICounter::Increment),
    Pick<void(const IHash*, std::uint64_t)>(&ICounter::Increment),
    Pick<void(const char*, std::uint64_t)>(&ICounter::Decrement),
    Pick<void(const IHash*, std::uint64_t)>(&ICounter::Decrement),
    Pick<void(const char*)>(&ICounter::DeleteCounter),
    Pick<void(const IHash*)>(&ICounter::DeleteCounter),
    Pick<void(const char*)>(&ICounter::DeleteData), Pick<void(const IHash*)>(&ICounter::DeleteData),
    Pick<void(const char*, IVariant*)>(&ICounter::SetData),
    Pick<void(const IHash*, IVariant*)>(&ICounter::SetData),
    Pick<void(const char*, bool)>(&ICounter::ResetData),
    Pick<void(const IHash*, bool)>(&ICounter::ResetData), &ICounter::ResetAllCounters,
    &ICounter::ResetAllData, Pick<void(const char*, bool)>(&ICounter::Reset),
    Pick<void(const IHash*, bool)>(&ICounter::Reset), &ICounter::ResetMatching,
    &ICounter::ResetMatchingData, &ICounter::GetName, Pick<bool(const char*) const>(&ICounter::Has),
    Pick<bool(const IHash*) const>(&ICounter::Has),
    Pick<std::uint64_t(const char*, const char*, std::uint64_t, bool*) const>(&ICounter::Get),
    Pick<std::uint64_t(const char*, const IHash*, std::uint64_t, bool*) const>(&ICounter::Get),
    Pick<std::uint64_t(const IHash*, const char*, std::uint64_t, bool*) const>(&ICounter::Get),
    Pick<std::uint64_t(const IHash*, const IHash*, std::uint64_t, bool*) const>(&ICounter::Get),
    Pick<std::uint64_t(const char*, const char*, std::uint64_t, bool*) const>(
        &ICounter::GetCurrent),
    Pick<std::uint64_t(const char*, const IHash*, std::uint64_t, bool*) const>(
        &ICounter::GetCurrent),
    Pick<std::uint64_t(const IHash*, const char*, std::uint64_t, bool*) const>(
        &ICounter::GetCurrent),
    Pick<std::uint64_t(const IHash*, const IHash*, std::uint64_t, bool*) const>(
        &ICounter::GetCurrent),
    Pick<std::uint64_t(const char*, const char*, std::uint64_t, bool*) const>(&ICounter::GetRange),
    Pick<std::uint64_t(const char*, const IHash*, std::uint64_t, bool*) const>(&ICounter::GetRange),
    Pick<std::uint64_t(const IHash*, const char*, std::uint64_t, bool*) const>(&ICounter::GetRange),
    Pick<std::uint64_t(const IHash*, const IHash*, std::uint64_t, bool*) const>(
        &ICounter::GetRange),
    Pick<bool(const char*) const>(&ICounter::HasData),
    Pick<bool(const IHash*) const>(&ICounter::HasData),
    Pick<AutoRefPtr<IVariant>(const char*, std::uint64_t, bool*) const>(&ICounter::GetData),
    Pick<AutoRefPtr<IVariant>(const IHash*, std::uint64_t, bool*) const>(&ICounter::GetData),
    Pick<AutoRefPtr<IVariant>(const char*, bool*) const>(&ICounter::GetCurrentData),
    Pick<AutoRefPtr<IVariant>(const IHash*, bool*) const>(&ICounter::GetCurrentData)>
    kOperations<ICounter>;

template <>
inline constexpr MemberList<&ICounter::ResetAll> kConveniences<ICounter>;

template <>
inline constexpr MemberList<
    &ITelemetry::Clear, &ITelemetry::RegisterValueHolder, &ITelemetry::RegisterCounter,
    &ITelemetry::Register, &ITelemetry::RegisterMatching, &ITelemetry::RegisterModule,
    &ITelemetry::IsRegistered, &ITelemetry::IsRegisteredMatching, &ITelemetry::IsValueHolder,
    &ITelemetry::Deregister, &ITelemetry::DeregisterMatching, &ITelemetry::DeregisterValueHolder,
    &ITelemetry::DeregisterMatchingValueHolder, &ITelemetry::GetId, &ITelemetry::Clone,
    &ITelemetry::GetAllRegistered, &ITelemetry::GetAll>
    kOperations<ITelemetry>;

}  // namespace Tovrin
