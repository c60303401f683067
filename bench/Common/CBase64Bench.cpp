// Speed of CBase64, in raw bytes per second for both directions.
//
// Question: does the lenient decoder cost anything? Decode and DecodeOutside should read the same,
// since no branch looks at the character. Sizes: 32 bytes a key, 4 KiB a page, 1 MiB a file.

#include "Common/CBase64.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>

namespace {

// The same bytes in every run and on every machine, so that two recordings can be compared.
std::string RandomBytes(std::size_t size) {
  std::mt19937 random(1);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

void CountRawBytes(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

void CBase64_Encode(benchmark::State& state) {
  const std::string bytes = RandomBytes(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(CBase64::Encode(std::string_view(bytes)));
  }
  CountRawBytes(state);
}

void CBase64_Decode(benchmark::State& state) {
  const auto text = CBase64::Encode(RandomBytes(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) {
    benchmark::DoNotOptimize(CBase64::Decode(std::string_view(*text)));
  }
  CountRawBytes(state);
}

// The worst input of the contract: nothing but outside characters, every group merged.
void CBase64_DecodeOutside(benchmark::State& state) {
  const std::string text(static_cast<std::size_t>(state.range(0)) / 3 * 4, '*');
  for (auto _ : state) {
    benchmark::DoNotOptimize(CBase64::Decode(std::string_view(text)));
  }
  CountRawBytes(state);
}

BENCHMARK(CBase64_Encode)->Arg(32)->Arg(4096)->Arg(1 << 20);
BENCHMARK(CBase64_Decode)->Arg(32)->Arg(4096)->Arg(1 << 20);
BENCHMARK(CBase64_DecodeOutside)->Arg(4096);

}  // namespace

BENCHMARK_MAIN();
