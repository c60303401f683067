#include "tools/tovrin/CHost.h"

#include "tools/tovrin/HostFunctions.h"
#include "tools/tovrin/objects/CHostServices.h"

using Tovrin::AutoRefPtr;

namespace RefHost {

CHost::CHost(const LogSettings& log)
    : fLogger(new CHostLogger),
      fPolicy(new CHostPolicy(fTables, fLogger)),
      fServices(new CHostServices(log)) {
  AddHostFunctions(*this);
}

CHost::~CHost() = default;

CTransaction CHost::NewTransaction(const std::string& name) const {
  const AutoRefPtr<Tovrin::IPolicy> policy = fPolicy;
  return {fTables.types, fTables.functions, policy->CreateTransaction(name.c_str())};
}

CHostModuleInfo::UserData CHost::NewModuleData() const {
  return std::make_shared<std::atomic<void*>>(nullptr);
}

AutoRefPtr<Tovrin::IModuleInfo> CHost::NewModuleInfo(CHostModuleInfo::UserData data,
                                                     const std::string& moduleName,
                                                     const std::string& functionName) const {
  return AutoRefPtr<Tovrin::IModuleInfo>(
      new CHostModuleInfo(fPolicy, fLogger, std::move(data), moduleName, functionName));
}

void CHost::AddFunction(const std::string& definition, Tovrin::ModuleFunction address) {
  for (DefinitionEntry& entry : ParseDefinition(definition)) {
    BoundFunction function = Bind(*fTables.types, std::move(entry));
    fOwnInfos.push_back(NewModuleInfo(NewModuleData(), "Tovrin", function.declaration.name));
    function.address = address;
    function.info = fOwnInfos.back().get();
    fTables.functions->Add(std::move(function));
  }
}

}  // namespace RefHost
