// A host that runs out of memory inside the module: gives it a text under a limit that allows no
// copy. With an argument, the module gets a services object first, which prints what is fatal.

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "host/Data.h"
#include "host/IHost.h"
#include "tests/module/Answer.h"
#include "tests/module/LoadedModule.h"

using namespace Tovrin;

namespace {

constexpr std::size_t kTextSize = 200'000'000;
constexpr std::size_t kRoom = 100'000'000;

class ListeningHost final : public InterfaceImpl<IHost> {
  void Interface_PrintError(const char*, const char*, const char*, const char*, const char*,
                            const char*, std::int32_t) override {}
  void Interface_PrintDebug(std::uint32_t, const char*, const char*, const char*, const char*,
                            std::uint32_t, const char*) override {}
  bool Interface_IsDebugActive() const override { return false; }
  bool Interface_IsFunctionLevelEnabled(std::uint32_t, const char*, const char*) const override {
    return false;
  }
  bool Interface_IsLevelEnabled(std::uint32_t, const char*) const override { return false; }
  void Interface_ApplyDebugConfiguration(const char*) override {}
  void Interface_ReportFatalError(const char* text) override { std::printf("fatal: %s\n", text); }
};

void HandOverHost(const LoadedModule& module) {
  const AutoRefPtr<IHost> host(new ListeningHost);
  const IHost* const pointer = host.get();
  const AutoRefPtr<IDataRef> data(new Data);
  data->Assign(&pointer, sizeof pointer);
  CallFunction(module.Function("tovrin_module_TessarinSetIHost"), {TestVariant::Data(data)},
               nullptr);
}

void LimitAddressSpace() {
  std::size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const std::size_t bytes = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + kRoom;
  const rlimit limit{bytes, bytes};
  setrlimit(RLIMIT_AS, &limit);
}

}  // namespace

int main(int argumentCount, char**) {
  const LoadedModule module;
  if (argumentCount > 1) HandOverHost(module);
  const auto text = TestVariant::Text(std::string(kTextSize, 'a'));
  LimitAddressSpace();
  CallFunction(module.Function("tovrin_module_StringToRegEx"), {text}, nullptr);
  std::puts("the module found room");
  return 0;
}
