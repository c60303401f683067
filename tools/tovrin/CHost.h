#pragma once

#include <string>
#include <vector>

#include "host/IHost.h"
#include "tools/tovrin/CModuleLog.h"
#include "tools/tovrin/objects/CHostContext.h"
#include "tools/tovrin/objects/CHostPolicy.h"
#include "tools/tovrin/objects/CHostVariant.h"

namespace RefHost {

// What a thread needs to evaluate: a context of its own, and the tables that all threads read.
// A copy is the same transaction.
struct CTransaction {
  std::shared_ptr<const CTypeTable> types;
  std::shared_ptr<const CFunctionTable> functions;
  Tovrin::AutoRefPtr<Tovrin::IContext> context;

  Tovrin::AutoRefPtr<CHostVariant> NewValue(Tovrin::TypeId type) const {
    return CHostVariant::Create(types, type);
  }
};

// A host without modules: its tables, its policy, its services, and the functions that it brings
// itself. Modules (CModule) are loaded into it and go before it does.
//
// Set up by one thread; then any thread may start transactions.
class CHost {
public:
  // Throws std::runtime_error when the log's file cannot be opened.
  explicit CHost(const LogSettings& log = {});
  ~CHost();
  CHost(const CHost&) = delete;
  CHost& operator=(const CHost&) = delete;

  CTransaction NewTransaction(const std::string& name) const;

  const HostTables& Tables() const { return fTables; }
  const Tovrin::AutoRefPtr<Tovrin::IHost>& Services() const { return fServices; }
  // Infos for one module: its functions' carry the same user data.
  CHostModuleInfo::UserData NewModuleData() const;
  Tovrin::AutoRefPtr<Tovrin::IModuleInfo> NewModuleInfo(CHostModuleInfo::UserData data,
                                                        const std::string& moduleName,
                                                        const std::string& functionName) const;

  // Brings one function of the host's own, declared as in a definition text:
  // " CONST_FUNCTION NUMBER Half (NUMBER) : unused".
  void AddFunction(const std::string& definition, Tovrin::ModuleFunction address);

private:
  HostTables fTables;
  Tovrin::AutoRefPtr<Tovrin::ILogger> fLogger;
  Tovrin::AutoRefPtr<Tovrin::IPolicy> fPolicy;
  Tovrin::AutoRefPtr<Tovrin::IHost> fServices;
  std::vector<Tovrin::AutoRefPtr<Tovrin::IModuleInfo>> fOwnInfos;  // of the host's own functions
};

}  // namespace RefHost
