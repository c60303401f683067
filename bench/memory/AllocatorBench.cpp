// Speed of the allocator beside malloc, in pairs of take and give per second.
//
// Questions: what does a pair cost where threads do not meet (Churn: mixed sizes of 8 to 264 bytes,
// random lifetimes), and what where one thread takes and another gives back (Handover)? Memory:
// does a long run over a steady number of blocks stop growing (Steady: slabs, after a second and at
// the end)?
//
// jemalloc and mimalloc replace malloc, so each is measured by this program run again with the
// library preloaded; a library that is not installed is named as missing.

#include <benchmark/benchmark.h>
#include <link.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include "memory/Allocator.h"

namespace {

struct Ours {
  static void* Take(std::size_t size) { return AllocateBlock(size, nullptr); }
  static void Give(void* block) { FreeBlock(block); }
};
struct Malloc {
  static void* Take(std::size_t size) { return std::malloc(size); }
  static void Give(void* block) { std::free(block); }
};

constexpr std::size_t kRequests = 1 << 16;

struct Request {
  std::uint16_t size;
  std::uint16_t place;
};

// The same for every allocator; drawn outside the loop, since drawing costs as much as a pair.
std::vector<Request> MakeRequests(std::size_t places, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<Request> requests(kRequests);
  for (Request& request : requests) {
    request.size = static_cast<std::uint16_t>(8 + random() % 257);
    request.place = static_cast<std::uint16_t>(random() % places);
  }
  return requests;
}

// Each request frees what is in a random place and puts a new block there.
template <class Allocator>
void Churn(benchmark::State& state) {
  const auto places = static_cast<std::size_t>(state.range(0));
  const auto requests = MakeRequests(places, static_cast<unsigned>(state.thread_index()) + 1);
  std::vector<void*> blocks(places, nullptr);
  std::size_t at = 0;
  for (auto _ : state) {
    const Request& request = requests[at++ % kRequests];
    void*& block = blocks[request.place];
    Allocator::Give(block);
    block = Allocator::Take(request.size);
    *static_cast<char*>(block) = 1;
  }
  for (void* block : blocks) Allocator::Give(block);
  state.SetItemsProcessed(state.iterations());
}

// One thread takes batches of blocks, the other gives them back. Who has to wait sleeps, so that
// the time of the processors is that of the pairs, also where other programs want them, too.
template <class Allocator>
void Handover(benchmark::State& state) {
  constexpr std::size_t kBatches = 8;
  constexpr std::size_t kBlocks = 512;
  using Batch = std::array<void*, kBlocks>;

  const auto requests = MakeRequests(1, 1);
  std::vector<Batch> ring(kBatches, Batch{});
  std::counting_semaphore<kBatches> empty(kBatches);
  std::counting_semaphore<kBatches> full(0);
  std::thread consumer([&] {
    for (std::size_t turn = 0;; ++turn) {
      full.acquire();
      Batch& batch = ring[turn % kBatches];
      if (!batch.front()) return;
      for (void* block : batch) Allocator::Give(block);
      empty.release();
    }
  });
  std::size_t turn = 0;
  std::size_t at = 0;
  for (auto _ : state) {
    empty.acquire();
    for (void*& block : ring[turn++ % kBatches]) {
      block = Allocator::Take(requests[at++ % kRequests].size);
      *static_cast<char*>(block) = 1;
    }
    full.release();
  }
  empty.acquire();
  ring[turn % kBatches].front() = nullptr;
  full.release();
  consumer.join();
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kBlocks));
}

std::uint32_t SlabsMade() {
  std::uint32_t slabs = 0;
  GetMemoryStatistics(nullptr, &slabs, nullptr, nullptr);
  return slabs;
}

// 10^8 pairs with 10^5 blocks alive.
void Steady(benchmark::State& state) {
  constexpr std::size_t kAlive = 100'000;
  std::mt19937 random(1);
  std::vector<void*> blocks(kAlive, nullptr);
  std::uint32_t early = 0;
  std::size_t pairs = 0;
  for (auto _ : state) {
    if (pairs++ == 5'000'000) early = SlabsMade();
    const std::uint32_t dice = random();
    void*& block = blocks[dice % kAlive];
    Ours::Give(block);
    block = Ours::Take(8 + dice / kAlive % 257);
  }
  state.counters["slabs_early"] = early;
  state.counters["slabs_late"] = SlabsMade();
  for (void* block : blocks) Ours::Give(block);
}

constexpr int kFewBlocks = 1000;
constexpr int kManyBlocks = 50'000;

BENCHMARK(Churn<Ours>)->Arg(kFewBlocks)->Arg(kManyBlocks)->ThreadRange(1, 2)->UseRealTime();
BENCHMARK(Churn<Malloc>)->Arg(kFewBlocks)->Arg(kManyBlocks)->ThreadRange(1, 2)->UseRealTime();
BENCHMARK(Handover<Ours>)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(Handover<Malloc>)->MeasureProcessCPUTime()->UseRealTime();
BENCHMARK(Steady)->Iterations(100'000'000);

constexpr const char* kPeerVariable = "TESSARIN_BENCH_PEER";
constexpr std::array kPeers = {"libjemalloc.so.2", "libmimalloc.so.2"};

bool IsLoaded(const char* library) {
  return dl_iterate_phdr(
             [](dl_phdr_info* info, std::size_t, void* name) {
               return static_cast<int>(std::strstr(info->dlpi_name, static_cast<char*>(name)) !=
                                       nullptr);
             },
             const_cast<char*>(library)) != 0;
}

void MeasurePeers() {
  std::array<char, 4096> program{};
  if (readlink("/proc/self/exe", program.data(), program.size() - 1) <= 0) return;
  for (const char* peer : kPeers) {
    std::printf("\nmalloc of %s:\n", peer);
    std::fflush(stdout);
    const std::string command = std::string(kPeerVariable) + "=" + peer + " LD_PRELOAD=" + peer +
                                " '" + program.data() + "' '--benchmark_filter=<Malloc>' 2>&1" +
                                " | grep -v 'cannot be preloaded'";
    if (std::system(command.c_str()) == -1) std::perror("cannot run it");
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const char* const peer = std::getenv(kPeerVariable);
  if (peer && !IsLoaded(peer)) {
    std::puts("missing on this machine");
    return 0;
  }
  const bool isMeasuringAll = argumentCount == 1 && !peer;
  benchmark::Initialize(&argumentCount, arguments);
  benchmark::RunSpecifiedBenchmarks();
  if (isMeasuringAll) MeasurePeers();
  return 0;
}
