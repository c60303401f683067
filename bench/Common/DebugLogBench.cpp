// Question: what does a log site cost while nobody listens? The bound is 25 ns behind a host that
// says no, since the routine trace stands on the road of every match.
//
// Beside it the same site behind the inner gates, which a host in debugging asks, and a line that
// is really written, without what the host does with it.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "Common/DebugLog.h"
#include "host/HostSlot.h"
#include "host/IHost.h"
#include "host/InterfaceImpl.h"

qxSource("Common\\DebugLogBench");

namespace {

struct Gates {
  bool active, level, function;
};

class GateHost : public Tovrin::InterfaceImpl<Tovrin::IHost> {
public:
  explicit GateHost(Gates gates) : fGates(gates) {}

private:
  void Interface_PrintError(const char*, const char*, const char*, const char*, const char*,
                            const char*, std::int32_t) override {}
  void Interface_PrintDebug(std::uint32_t, const char*, const char*, const char*, const char*,
                            std::uint32_t, const char* message) override {
    benchmark::DoNotOptimize(message);
  }
  bool Interface_IsDebugActive() const override { return fGates.active; }
  bool Interface_IsFunctionLevelEnabled(std::uint32_t, const char*, const char*) const override {
    return fGates.function;
  }
  bool Interface_IsLevelEnabled(std::uint32_t, const char*) const override { return fGates.level; }
  void Interface_ApplyDebugConfiguration(const char*) override {}

  const Gates fGates;
};

void OneSite(benchmark::State& state, Gates gates) {
  auto* const host = new GateHost(gates);
  Tovrin::HostSlot.store(host);
  std::int64_t value = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(++value);
    qxDebugPrint(3, "CVariant::GetLong", "read " << value);
  }
  Tovrin::HostSlot.store(nullptr);
  host->Release();
  state.SetItemsProcessed(state.iterations());
}

}  // namespace

BENCHMARK_CAPTURE(OneSite, DebuggingOff, Gates{false, false, false});
BENCHMARK_CAPTURE(OneSite, LevelOff, Gates{true, false, false});
BENCHMARK_CAPTURE(OneSite, FunctionOff, Gates{true, true, false});
BENCHMARK_CAPTURE(OneSite, Written, Gates{true, true, true});

BENCHMARK_MAIN();
