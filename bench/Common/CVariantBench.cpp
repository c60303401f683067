// Speed of CVariant's scalars and lists, each beside the plain standard container.
//
// Question: what does a tagged value cost over the plain one? Appending and sorting should stay
// within 3 times of std::vector and std::sort, an indexed search of 10^5 texts below 2 us, and a
// scalar should never allocate. The text form of 10^6 longs should come at 100 MB/s or more.
// Sorted, equal and reversed input must not be slower than random, save where the contract's own
// steps decide: there the worst row should stay within 10 times of the random one.

#include "Common/CVariant.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "Common/VariantTexts.h"

namespace {

constexpr std::int64_t kLongs = 1'000'000;
constexpr int kTexts = 100'000;

enum Pattern { Random, Ascending, Equal, Descending };

std::vector<std::int64_t> Values(std::int64_t pattern) {
  std::mt19937_64 random(1);
  std::vector<std::int64_t> values;
  for (std::int64_t i = 0; i < kLongs; ++i) {
    switch (pattern) {
      case Random:
        values.push_back(static_cast<std::int64_t>(random()));
        break;
      case Ascending:
        values.push_back(i);
        break;
      case Equal:
        values.push_back(7);
        break;
      default:
        values.push_back(kLongs - i);
    }
  }
  return values;
}

CVariant ListOf(const std::vector<std::int64_t>& values, VariantType type) {
  CVariant list(type);
  for (const std::int64_t value : values) {
    if (type == VariantType::DoubleList) {
      list.AddToList(static_cast<double>(value));
    } else {
      list.AddToList(value);
    }
  }
  return list;
}

std::string TextAt(int i) {
  return "host" + std::to_string(i) + ".example.com";
}

void CVariant_SetAndGetLong(benchmark::State& state) {
  CVariant value;
  std::int64_t i = 0;
  for (auto _ : state) {
    value.SetLong(++i);
    benchmark::DoNotOptimize(value.GetLong());
  }
}

void Vector_Append(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<std::int64_t> list;
    for (std::int64_t i = 0; i < kLongs; ++i) list.push_back(i);
    benchmark::DoNotOptimize(list.data());
  }
  state.SetItemsProcessed(state.iterations() * kLongs);
}

void CVariant_Append(benchmark::State& state) {
  for (auto _ : state) {
    CVariant list(VariantType::LongList);
    for (std::int64_t i = 0; i < kLongs; ++i) list.AddToList(i);
    benchmark::DoNotOptimize(list.SizeOfList());
  }
  state.SetItemsProcessed(state.iterations() * kLongs);
}

void Vector_Sort(benchmark::State& state) {
  const auto values = Values(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    auto list = values;
    state.ResumeTiming();
    std::sort(list.begin(), list.end());
    benchmark::DoNotOptimize(list.data());
  }
  state.SetItemsProcessed(state.iterations() * kLongs);
}

void MeasureSort(benchmark::State& state, const CVariant& values) {
  for (auto _ : state) {
    state.PauseTiming();
    CVariant list(values);
    state.ResumeTiming();
    list.SortList();
    benchmark::DoNotOptimize(list.SizeOfList());
  }
  state.SetItemsProcessed(state.iterations() * kLongs);
}

template <VariantType type>
void CVariant_Sort(benchmark::State& state) {
  const CVariant values = ListOf(Values(state.range(0)), type);
  MeasureSort(state, values);
}

// Longs among doubles that are equal to them in order and yet differ from them, so that where they
// end up follows from the contract's own steps.
void CVariant_SortDiffering(benchmark::State& state) {
  CVariant values(VariantType::NumberList);
  for (const std::int64_t value : Values(state.range(0))) {
    const std::int64_t number = value >> 12;  // so few bits that a double has them all
    if (value % 2) {
      values.AddToList(static_cast<double>(number));
    } else {
      values.AddToList(number);
    }
  }
  MeasureSort(state, values);
}

// The texts in an order of their own, so that neighbours in the index lie apart.
std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (int i = 0; i < kTexts; ++i) names.push_back(TextAt(i));
  std::shuffle(names.begin(), names.end(), std::mt19937(2));
  return names;
}

void CVariant_FindIndexed(benchmark::State& state) {
  CVariant list(VariantType::StringList);
  std::vector<CStringPtr> wanted;
  for (const std::string& name : Names()) {
    wanted.push_back(MakeText(name));
    list.AddToList(MakeText(name).Get());
  }
  for (int i = 0; i < 10; ++i) list.FindFrom(0, wanted[0].Get());
  std::shuffle(wanted.begin(), wanted.end(), std::mt19937(3));
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(list.FindFrom(0, wanted[i++ % wanted.size()].Get()));
  }
}

void Vector_FindSorted(benchmark::State& state) {
  std::vector<std::string> sorted = Names(), wanted = sorted;
  std::sort(sorted.begin(), sorted.end());
  std::shuffle(wanted.begin(), wanted.end(), std::mt19937(3));
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        std::lower_bound(sorted.begin(), sorted.end(), wanted[i++ % wanted.size()]));
  }
}

void String_PrintLongs(benchmark::State& state) {
  const std::vector<std::int64_t> values = Values(Random);
  std::size_t size = 0;
  for (auto _ : state) {
    std::string text;
    for (const std::int64_t value : values) {
      if (!text.empty()) text += ", ";
      text += std::to_string(value);
    }
    size = text.size();
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

void CVariant_PrintLongs(benchmark::State& state) {
  const CVariant list = ListOf(Values(Random), VariantType::LongList);
  const CStringPtr separator = MakeText(", ");
  std::size_t size = 0;
  for (auto _ : state) {
    const CStringPtr text = list.ToText(separator);
    size = Utf8Of(text.Get()).size();
    benchmark::DoNotOptimize(text.Get());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

void CVariant_HashTexts(benchmark::State& state) {
  CVariant list(VariantType::StringList);
  for (int i = 0; i < kTexts; ++i) list.AddToList(MakeText(TextAt(i)).Get());
  std::size_t size = 0;
  for (int i = 0; i < kTexts; ++i) size += TextAt(i).size();
  for (auto _ : state) {
    list.SetListElem(0, MakeText(TextAt(0)).Get());  // drops the hash that is kept
    benchmark::DoNotOptimize(list.GetHash());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

BENCHMARK(CVariant_SetAndGetLong);
BENCHMARK(Vector_Append)->Unit(benchmark::kMillisecond);
BENCHMARK(CVariant_Append)->Unit(benchmark::kMillisecond);
BENCHMARK(Vector_Sort)->DenseRange(Random, Descending)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(CVariant_Sort, VariantType::LongList)
    ->DenseRange(Random, Descending)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(CVariant_Sort, VariantType::DoubleList)
    ->DenseRange(Random, Descending)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(CVariant_Sort, VariantType::NumberList)
    ->DenseRange(Random, Descending)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(CVariant_SortDiffering)->Arg(Random)->Arg(Descending)->Unit(benchmark::kMillisecond);
BENCHMARK(String_PrintLongs)->Unit(benchmark::kMillisecond);
BENCHMARK(CVariant_PrintLongs)->Unit(benchmark::kMillisecond);
BENCHMARK(CVariant_HashTexts)->Unit(benchmark::kMillisecond);
BENCHMARK(Vector_FindSorted);
BENCHMARK(CVariant_FindIndexed);

}  // namespace

BENCHMARK_MAIN();
