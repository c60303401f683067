// A host that runs out of memory inside the module: gives it a text under a limit that allows no
// copy. With an argument, the module gets a services object first: a "listening" one prints what is
// fatal, a "throwing" one throws instead, and one "throwing-later" when it is let go.

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "host/Data.h"
#include "tests/module/Answer.h"
#include "tests/module/LoadedModule.h"
#include "tests/support/NeutralHost.h"

using namespace Tovrin;

namespace {

constexpr std::size_t kTextSize = 200'000'000;
constexpr std::size_t kRoom = 100'000'000;

class ListeningHost : public NeutralHost {
  void Interface_ReportFatalError(const char* text) override { std::printf("fatal: %s\n", text); }
};

class ThrowingHost final : public ListeningHost {
  void Interface_ReportFatalError(const char*) override { throw std::runtime_error("no ear"); }
};

// Throws the first time that it is let go behind the fatal text. Stays to the end, uncounted.
class LaterThrowingHost final : public ListeningHost {
  void Interface_AddRef() const override {}
  bool Interface_Release() const override {
    if (std::exchange(fIsToThrow, false)) throw std::runtime_error("not now");
    return false;
  }
  void Interface_ReportFatalError(const char* text) override {
    std::printf("fatal: %s\n", text);
    fIsToThrow = true;
  }

  mutable bool fIsToThrow = false;
};

AutoRefPtr<IHost> MakeHost(const std::string& kind) {
  if (kind == "throwing") return AutoRefPtr<IHost>(new ThrowingHost);
  if (kind == "throwing-later") return AutoRefPtr<IHost>(new LaterThrowingHost);
  return AutoRefPtr<IHost>(new ListeningHost);
}

void HandOverHost(const LoadedModule& module, const std::string& kind) {
  const AutoRefPtr<IHost> host = MakeHost(kind);
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

int main(int argumentCount, char** arguments) {
  const LoadedModule module;
  if (argumentCount > 1) HandOverHost(module, arguments[1]);
  const auto text = TestVariant::Text(std::string(kTextSize, 'a'));
  LimitAddressSpace();
  CallFunction(module.Function("tovrin_module_StringToRegEx"), {text}, nullptr);
  std::puts("the module found room");
  return 0;
}
