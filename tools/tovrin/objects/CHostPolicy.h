#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "host/ILogger.h"
#include "host/IModuleInfo.h"
#include "host/IPolicy.h"
#include "host/InterfaceImpl.h"
#include "tools/tovrin/objects/CHostContext.h"

namespace RefHost {

// The policy of the process: starts transactions and hands out ids for user data. It has no rules
// of its own to execute and no stored data; those are the programs' that use the host.
// Any thread may call.
class CHostPolicy final : public Tovrin::InterfaceImpl<Tovrin::IPolicy> {
public:
  CHostPolicy(HostTables tables, Tovrin::AutoRefPtr<Tovrin::ILogger> logger)
      : fTables(std::move(tables)), fLogger(std::move(logger)) {}

  static constexpr std::uint64_t kInstanceId = 1;  // one host a process

private:
  Tovrin::IContext* Interface_CreateTransaction(const char* name) override;
  bool Interface_ExecuteTransaction(Tovrin::IContext* /*context*/) override { return false; }
  void Interface_CleanupTransaction(Tovrin::IContext* /*context*/) override {}
  std::uint64_t Interface_GetUserDataId(const char* name) const override;
  Tovrin::IDataRef* Interface_LoadData(Tovrin::IContext* /*context*/,
                                       const char* /*name*/) override {
    return nullptr;
  }
  Tovrin::IVariant* Interface_LoadValue(Tovrin::IContext* /*context*/, Tovrin::TypeId /*typeId*/,
                                        const char* /*name*/) override {
    return nullptr;
  }
  Tovrin::IVariant* Interface_CreateUserDefinedVariable(const char* typeName) override;
  Tovrin::IContext* Interface_ContinueRemoteTransaction(Tovrin::IDataRef* /*data*/,
                                                        const char* /*name*/) override {
    return nullptr;
  }
  std::uint64_t Interface_GetTovrinInstanceId() const override { return kInstanceId; }
  Tovrin::IJSON* Interface_ToJson() const override { return nullptr; }

  const HostTables fTables;
  const Tovrin::AutoRefPtr<Tovrin::ILogger> fLogger;
  std::atomic<std::uint32_t> fLastTransaction{0};
  mutable std::mutex fLock;
  mutable std::map<std::string, std::uint64_t> fUserDataIds;  // guarded by fLock; ids from 1
};

// What a function learns of the module that it belongs to; one for each function, and one for the
// module as a whole. Any thread may call.
class CHostModuleInfo final : public Tovrin::InterfaceImpl<Tovrin::IModuleInfo> {
public:
  using UserData = std::shared_ptr<std::atomic<void*>>;  // one for all infos of a module

  CHostModuleInfo(Tovrin::AutoRefPtr<Tovrin::IPolicy> policy,
                  Tovrin::AutoRefPtr<Tovrin::ILogger> logger, UserData userData,
                  std::string moduleName, std::string functionName)
      : fPolicy(std::move(policy)),
        fLogger(std::move(logger)),
        fUserData(std::move(userData)),
        fModuleName(std::move(moduleName)),
        fFunctionName(std::move(functionName)) {}

private:
  Tovrin::IThreadPool* Interface_GetThreadPool() const override { return nullptr; }
  Tovrin::IEventScheduler* Interface_GetEventScheduler() const override { return nullptr; }
  Tovrin::IPolicy* Interface_GetPolicy() const override {
    return Tovrin::AutoRefPtr<Tovrin::IPolicy>(fPolicy).release();
  }
  Tovrin::IConfiguration* Interface_GetConfiguration() const override { return nullptr; }
  Tovrin::ILogger* Interface_GetLogger() const override {
    return Tovrin::AutoRefPtr<Tovrin::ILogger>(fLogger).release();
  }
  void* Interface_GetUserDefinedData() const override { return *fUserData; }
  void Interface_SetUserDefinedData(void* data) override { *fUserData = data; }
  Tovrin::ITelemetry* Interface_GetTelemetry() const override { return nullptr; }
  const char* Interface_GetModuleName() const override { return fModuleName.c_str(); }
  const char* Interface_GetFuncOrProcName() const override { return fFunctionName.c_str(); }

  const Tovrin::AutoRefPtr<Tovrin::IPolicy> fPolicy;
  const Tovrin::AutoRefPtr<Tovrin::ILogger> fLogger;
  const UserData fUserData;
  const std::string fModuleName;
  const std::string fFunctionName;
};

}  // namespace RefHost
