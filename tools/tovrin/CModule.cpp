#include "tools/tovrin/CModule.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>

#include "Libs/Platform/Streams.h"
#include "host/Data.h"
#include "tools/tovrin/CVersion.h"
#include "tools/tovrin/Failure.h"
#include "tools/tovrin/ForeignCall.h"
#include "tools/tovrin/Output.h"

using Tovrin::AutoRefPtr;

namespace RefHost {
namespace {

constexpr std::array<const char*, 15> kDescriptions = {
    "GetTovrinSDKVersion",
    "GetModuleTovrinVersion",
    "GetModuleVersion",
    "GetDownwardsCompatibility",
    "GetSDKDependency",
    "GetState",
    "GetSupportedPlatforms",
    "GetTovrinModuleName",
    "GetModuleDependencies",
    "GetModuleDependenciesOptional",
    "GetModuleDependenciesLoadBefore",
    "GetOptionalFunctionDependencies",
    "GetOptionalProcedureDependencies",
    "GetAlternativeFunctionDependencies",
    "GetAlternativeProcedureDependencies",
};

// Where an installation keeps its libraries, from its root.
constexpr const char* kLibraryFolders[] = {TESSARIN_LIBRARY_FOLDERS};

CSharedLibrary Load(const std::string& path) {
  try {
    return CSharedLibrary(path);
  } catch (const CSharedLibraryError& error) {
    throw CModuleError(fmt::format("module '{}': {}", path, error.what()));
  }
}

}  // namespace

CModule::CModule(CHost& host, const std::filesystem::path& path)
    : fHost(host), fPath(path.string()), fLibrary(Load(fPath)), fUserData(host.NewModuleData()) {
  Describe();
  CheckVersion();
  ReadDefinition();
  fInfos.push_back(host.NewModuleInfo(fUserData, fName, {}));
  BindTypes();
  try {
    BindFunctions();
    Register();
    HandOverHost();
  } catch (...) {  // a destructor does not run for what its constructor left half done
    TakeOutFunctions();
    throw;
  }
}

CModule::~CModule() {
  TakeOutFunctions();
  try {
    Call<int>("OnShutdown");
    Call<void>("DeregisterModule");
  } catch (const CModuleError& error) {
    WriteErrors(fmt::format("{}\n", error.what()));
  }
}

const std::string& CModule::Description(const std::string& name) const {
  const auto found = std::find_if(fDescriptions.begin(), fDescriptions.end(),
                                  [&](const auto& pair) { return pair.first == name; });
  if (found == fDescriptions.end()) throw std::out_of_range(name);
  return found->second;
}

CModuleError CModule::Error(const std::string& reason) const {
  return CModuleError(fmt::format("module '{}': {}", fPath, reason));
}

CModuleError CModule::ExceptionFrom(const std::string& name, const std::string& words) const {
  return Error(fmt::format("exception from {}: {}", name, words));
}

void CModule::Fail(const std::string& reason) const {
  throw Error(reason);
}

template <class Function>
Function CModule::Export(const std::string& name) const {
  void* address = fLibrary.Find(name);
  if (address == nullptr) Fail(fmt::format("no export '{}'", name));
  return reinterpret_cast<Function>(address);
}

template <class Result, class... Arguments>
Result CModule::Call(const std::string& name, Arguments... arguments) const {
  const auto function = Export<Result (*)(Arguments...)>(name);
  return CallForeign([&] { return function(arguments...); },
                     [&](const std::string& words) { return ExceptionFrom(name, words); });
}

std::string CModule::Text(const std::string& name) const {
  const char* text = Call<const char*>(name);
  if (text == nullptr) Fail(fmt::format("{} gives no text", name));
  return text;
}

void CModule::Describe() {
  for (const char* name : kDescriptions) fDescriptions.emplace_back(name, Text(name));
  fName = Description("GetTovrinModuleName");
  if (fName.empty()) fName = std::filesystem::path(fPath).stem().string();
}

void CModule::CheckVersion() const {
  const std::string& accepted = Description("GetSDKDependency");
  const auto range = CVersionRange::Parse(accepted);
  if (!range) Fail(fmt::format("'{}' is not a range of host versions", accepted));
  if (!range->Contains(*CVersion::Parse(kHostVersion))) {
    Fail(fmt::format("it accepts host versions {}, and this host is {}", accepted, kHostVersion));
  }
}

void CModule::ReadDefinition() {
  try {
    fEntries = ParseDefinition(Text("GetModuleDefinition"));
  } catch (const CDefinitionError& error) {
    Fail(error.what());
  }
}

void CModule::BindTypes() {
  for (const DefinitionEntry& entry : fEntries) {
    if (entry.kind != EntryKind::Type) continue;
    const auto factory = Export<CTypeTable::Factory>(entry.exportName);
    if (fHost.Tables().types->Add(entry.name, factory) == 0) {
      Fail(fmt::format("type '{}' is there already", entry.name));
    }
  }
}

void CModule::BindFunctions() {
  for (const DefinitionEntry& entry : fEntries) {
    if (entry.kind == EntryKind::Type) continue;
    BoundFunction function;
    try {
      function = Bind(*fHost.Tables().types, entry);
    } catch (const CDefinitionError& error) {
      Fail(error.what());
    }
    function.address = Export<Tovrin::ModuleFunction>(entry.exportName);
    fInfos.push_back(fHost.NewModuleInfo(fUserData, fName, entry.name));
    function.info = fInfos.back().get();
    if (!fHost.Tables().functions->Add(std::move(function))) {
      Fail(fmt::format("'{}' is there already", entry.Signature()));
    }
  }
}

void CModule::Register() {
  if (const int code = Call<int>("RegisterModule"); code != 0) {
    Fail(fmt::format("RegisterModule answers {}", code));
  }
  const int code =
      Call<int, Tovrin::IModuleInfo*>("RegistrationDoneWithReturn", fInfos.front().get());
  if (code != 0) Fail(fmt::format("RegistrationDoneWithReturn answers {}", code));
}

// The host goes over as the bytes of its address.
void CModule::HandOverHost() {
  for (const DefinitionEntry& entry : fEntries) {
    if (!entry.name.ends_with(".SetIHost")) continue;
    const BoundFunction* function =
        fHost.Tables().functions->FindExact(entry.name, entry.result, "DATAREF");
    if (function == nullptr) continue;

    const CTransaction transaction = fHost.NewTransaction("SetIHost");
    const Tovrin::IHost* services = fHost.Services().get();
    const auto argument = transaction.NewValue(Tovrin::kTypeDataRef);
    argument->AssignData(AutoRefPtr<Tovrin::IDataRef>(
        new Tovrin::Data(std::string(reinterpret_cast<const char*>(&services), sizeof services))));
    const auto result = transaction.NewValue(Tovrin::kTypeBoolean);
    Tovrin::IVariant* const arguments[] = {argument.get()};
    const Tovrin::FunctionStatus status = CallForeign(
        [&] {
          return function->address(1, arguments, result.get(), function->info,
                                   transaction.context.get());
        },
        [&](const std::string& words) { return ExceptionFrom(entry.name, words); });
    if (status != 0) Fail(function->WordsFor(status));
    if (!result->GetBoolean()) Fail(fmt::format("{} refuses the host", entry.name));
  }
}

void CModule::TakeOutFunctions() {
  std::vector<const Tovrin::IModuleInfo*> infos;
  for (const auto& info : fInfos) infos.push_back(info.get());
  fHost.Tables().functions->Remove(infos);
}

std::filesystem::path FindOwnModule() {
  const std::filesystem::path folder = ProgramPath().parent_path();
  const std::string file = SharedLibraryFileName("tessarin");
  std::vector<std::filesystem::path> places = {folder / file};
  for (const char* libraries : kLibraryFolders) {
    places.push_back(folder.parent_path() / libraries / file);
  }
  for (const auto& place : places) {
    if (std::filesystem::exists(place)) return place;
  }
  std::vector<std::string> names;
  for (const auto& place : places) names.push_back(place.string());
  throw CModuleError(
      fmt::format("no module at {}; name one with --module", fmt::join(names, ", ")));
}

}  // namespace RefHost
