// How much memory a parsed document takes, beside nlohmann's DOM: the most that was taken at once,
// and what the tree keeps. Times mean nothing here.
//
// Blocks are counted as the C library lays them out: 8 bytes of head, steps of 16, at least 32.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

#include "Common/CUseCounted.h"
#include "bench/json/JsonDocuments.h"
#include "json/JsonParser.h"

#ifdef TESSARIN_HAS_NLOHMANN
#include <nlohmann/json.hpp>
#endif

namespace {

constexpr std::size_t kHead = 16;  // where a block's size is kept

constinit std::size_t taken = 0;
constinit std::size_t mostTaken = 0;

std::size_t Footprint(std::size_t size) {
  return std::max<std::size_t>(32, (size + 8 + 15) / 16 * 16);
}

}  // namespace

void* operator new(std::size_t size) {
  auto* block = static_cast<char*>(std::malloc(kHead + size));
  if (!block) throw std::bad_alloc();
  *reinterpret_cast<std::size_t*>(block) = size;
  taken += Footprint(size);
  mostTaken = std::max(mostTaken, taken);
  return block + kHead;
}
void operator delete(void* place) noexcept {
  if (!place) return;
  char* block = static_cast<char*>(place) - kHead;
  taken -= Footprint(*reinterpret_cast<std::size_t*>(block));
  std::free(block);
}
void operator delete(void* place, std::size_t) noexcept {
  operator delete(place);
}

namespace {

template <class ParseText>
void Measure(benchmark::State& state, const JsonDocument& document, ParseText parse) {
  for (auto _ : state) {
    const std::size_t before = taken;
    mostTaken = taken;
    const auto tree = parse(document.text);
    benchmark::DoNotOptimize(&tree);
    state.counters["most"] = static_cast<double>(mostTaken - before);
    state.counters["kept"] = static_cast<double>(taken - before);
  }
}

void Register(const char* name, const JsonDocument& document, auto parse) {
  benchmark::RegisterBenchmark((name + document.name).c_str(), [parse, &document](
                                                                   benchmark::State& state) {
    Measure(state, document, parse);
  })->Iterations(1);
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<JsonDocument> documents = JsonDocuments();
  for (const JsonDocument& document : documents) {
    Register("JsonMemory/", document, [](const std::string& text) {
      return CUsePtr<Tovrin::JSON::JsonValue>(Tovrin::JSON::Parse(text));
    });
#ifdef TESSARIN_HAS_NLOHMANN
    Register("NlohmannMemory/", document,
             [](const std::string& text) { return nlohmann::json::parse(text); });
#endif
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
