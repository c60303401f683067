#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Libs/Platform/SharedLibrary.h"
#include "tools/tovrin/CHost.h"
#include "tools/tovrin/Definition.h"

namespace RefHost {

// A module that cannot be used; the text names it and says why.
class CModuleError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A module in a host: loaded, described, registered, its types and functions in the host's tables.
//
// The constructor goes the whole way or throws CModuleError and leaves no function behind; nothing
// that the module throws gets past it. The destructor takes the functions out, stops the module and
// unloads it, so whoever holds objects of its types or compiled calls drops them before.
class CModule {
public:
  CModule(CHost& host, const std::filesystem::path& path);
  ~CModule();
  CModule(const CModule&) = delete;
  CModule& operator=(const CModule&) = delete;

  // What the description functions answer, by their names and in the order of the contract.
  const std::vector<std::pair<std::string, std::string>>& Descriptions() const {
    return fDescriptions;
  }
  const std::string& Description(const std::string& name) const;
  // The entries of the definition text in its order.
  const std::vector<DefinitionEntry>& Entries() const { return fEntries; }

  // The version of the host interfaces that this host speaks; a module names those it accepts.
  static constexpr const char* kHostVersion = "1.20.16.0";

private:
  void Describe();
  void CheckVersion() const;
  void ReadDefinition();
  void BindTypes();
  void BindFunctions();
  void Register();
  void HandOverHost();
  void TakeOutFunctions();

  template <class Function>
  Function Export(const std::string& name) const;
  template <class Result, class... Arguments>
  Result Call(const std::string& name, Arguments... arguments) const;
  std::string Text(const std::string& name) const;
  CModuleError Error(const std::string& reason) const;
  CModuleError ExceptionFrom(const std::string& name, const std::string& words) const;
  [[noreturn]] void Fail(const std::string& reason) const;

  CHost& fHost;
  const std::string fPath;
  const CSharedLibrary fLibrary;
  std::vector<std::pair<std::string, std::string>> fDescriptions;
  std::vector<DefinitionEntry> fEntries;
  std::string fName;  // what the module calls itself, or else its file's name
  CHostModuleInfo::UserData fUserData;
  // The module's own first, then one a function.
  std::vector<Tovrin::AutoRefPtr<Tovrin::IModuleInfo>> fInfos;
};

// Where the module stands that comes with this program: beside it, or where an installation puts
// it, as seen from the program's folder. Throws CModuleError that names the places when it is in
// none.
std::filesystem::path FindOwnModule();

}  // namespace RefHost
