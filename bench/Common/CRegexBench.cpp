// Speed of CRegex on a URL of 64 bytes.
//
// Questions: what does the fast path of a wildcard save against the engine, and what does the guard
// cost against std::regex alone? The rows of one name pair up: Fast and Engine, Guarded and Bare.

#include "Common/CRegex.h"

#include <benchmark/benchmark.h>

#include <regex>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view kUrl =
    "https://shop.example.com/catalogue/item?id=20481&lang=en#reviews";

constexpr const char* kWildcards[] = {
    "https://shop.example.com/catalogue/item\\?id=20481&lang=en#reviewX",
    "https://shop.example.com/*",
    "*#reviews",
    "*catalogue*",
};
constexpr const char* kExpressions[] = {
    R"(https?://[a-z.]+/catalogue/.*)",
    R"(^.*\.example\.com.*$)",
    R"((https?)://([^/]+)(/[^?#]*)\?(.*)#reviews)",
};

void CRegex_MatchesFast(benchmark::State& state) {
  const CRegexPtr regex = CRegex::Create(kWildcards[state.range(0)], true);
  for (auto _ : state) benchmark::DoNotOptimize(regex->Matches(kUrl));
}

void CRegex_MatchesEngine(benchmark::State& state) {
  const CRegexPtr regex = CRegex::Create(kWildcards[state.range(0)], true)->Clone();
  for (auto _ : state) benchmark::DoNotOptimize(regex->Matches(kUrl));
}

void CRegex_MatchesGuarded(benchmark::State& state) {
  const CRegexPtr regex = CRegex::Create(kExpressions[state.range(0)], false);
  for (auto _ : state) benchmark::DoNotOptimize(regex->Matches(kUrl));
}

void CRegex_MatchesBare(benchmark::State& state) {
  const std::regex regex(kExpressions[state.range(0)], std::regex::ECMAScript | std::regex::icase);
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::regex_match(kUrl.begin(), kUrl.end(), regex));
  }
}

void CRegex_SearchCaptures(benchmark::State& state) {
  const CRegexPtr regex = CRegex::Create(kExpressions[2], false);
  CRegexCaptures captures;
  for (auto _ : state) benchmark::DoNotOptimize(regex->SearchCaptures(kUrl, captures));
}

void CRegex_Create(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(CRegex::Create(kExpressions[state.range(0)], false));
  }
}

BENCHMARK(CRegex_MatchesFast)->DenseRange(0, 3);
BENCHMARK(CRegex_MatchesEngine)->DenseRange(0, 3);
BENCHMARK(CRegex_MatchesGuarded)->DenseRange(0, 2);
BENCHMARK(CRegex_MatchesBare)->DenseRange(0, 2);
BENCHMARK(CRegex_SearchCaptures);
BENCHMARK(CRegex_Create)->DenseRange(0, 2);

}  // namespace

BENCHMARK_MAIN();
