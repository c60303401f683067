// Speed of buffers and files, in bytes a second.
//
// Questions: does filling a buffer in small pieces keep within twice of std::string (StringPieces)?
// Does taking from the front cost the same whatever is behind it? Does a search run at a gigabyte a
// second for one pattern over a file in the page cache, and at a third of that for eight? And does
// CopyFile keep up with the system's own copy (FilesystemCopy)?

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "Common/CBuffer.h"
#include "Common/CFile.h"
#include "Common/CVariant.h"

namespace {

constexpr std::size_t kPiece = 64;
constexpr std::size_t kBody = 128 << 10;  // below the smallest swap size

void AppendPieces(benchmark::State& state) {
  const std::string piece(kPiece, 'p');
  for (auto _ : state) {
    CBuffer buffer;
    for (std::size_t i = 0; i < kBody / kPiece; ++i) buffer.Append(piece.data(), piece.size());
    benchmark::DoNotOptimize(buffer.GetBufferPtr());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kBody));
}
BENCHMARK(AppendPieces);

void StringPieces(benchmark::State& state) {
  const std::string piece(kPiece, 'p');
  for (auto _ : state) {
    std::string text;
    for (std::size_t i = 0; i < kBody / kPiece; ++i) text.append(piece.data(), piece.size());
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kBody));
}
BENCHMARK(StringPieces);

// Front off, the same behind: what a body that streams through costs.
void RemoveFront(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const std::string body(size, 'b');
  const std::string piece(kPiece, 'p');
  CBuffer buffer(body.data(), body.size());
  for (auto _ : state) {
    buffer.RemoveFront(kPiece);
    buffer.Append(piece.data(), piece.size());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kPiece));
}
BENCHMARK(RemoveFront)->Arg(4 << 10)->Arg(128 << 10)->Arg(1 << 20);

// A file of that size full of the letters of a text, made once.
class BenchFile {
public:
  BenchFile() : fPath(std::filesystem::temp_directory_path() / "tessarin_bench_body") {
    std::mt19937 random(1);
    constexpr std::string_view kLetters = "eeeetttaaoinshrdlu wm,.fgypbvkjxqz0123456789";
    std::string block(1 << 20, '\0');
    for (char& c : block) c = kLetters[random() % kLetters.size()];
    std::ofstream out(fPath, std::ios::binary);
    for (std::size_t size = 0; size < kSize; size += block.size()) out << block;
  }
  ~BenchFile() { std::filesystem::remove(fPath); }

  static constexpr std::size_t kSize = std::size_t{1} << 30;
  const std::string Path() const { return fPath.string(); }

private:
  const std::filesystem::path fPath;
};

const BenchFile& Body() {
  static const BenchFile file;
  return file;
}

void Find(benchmark::State& state, const std::vector<const char*>& patterns) {
  CVariant lengths(VariantType::LongList);
  std::vector<const void*> pointers;
  for (const char* pattern : patterns) {
    lengths.AddToList(static_cast<std::int64_t>(std::string_view(pattern).size()));
    pointers.push_back(pattern);
  }
  CBuffer buffer(CFSPath(Body().Path()), false);
  for (auto _ : state) {
    std::size_t offset = 0;
    unsigned index = 0;
    benchmark::DoNotOptimize(
        buffer.IFFindBinaryPatterns(offset, index, pointers.data(), &lengths, 0, BenchFile::kSize));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(BenchFile::kSize));
}

void FindInZeros(benchmark::State& state, const std::string& pattern) {
  const std::string zeros(1 << 20, '\0');
  CBuffer buffer(const_cast<char*>(zeros.data()), zeros.size(), CBuffer::External());
  CVariant lengths(VariantType::LongList);
  lengths.AddToList(static_cast<std::int64_t>(pattern.size()));
  const void* const bytes = pattern.data();
  for (auto _ : state) {
    std::size_t offset = 0;
    unsigned index = 0;
    benchmark::DoNotOptimize(
        buffer.IFFindBinaryPatterns(offset, index, &bytes, &lengths, 0, zeros.size()));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(zeros.size()));
}

// Begins with a letter of one byte in 44, and with the most frequent one.
BENCHMARK_CAPTURE(Find, One, {"NOTHING"})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Find, OneOfRareStart, {"zebra-crossing"})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Find, OneOfFrequentStart, {"elephant-trunk"})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Find, Eight,
                  {"Virus", "MZ\x90", "%PDF-", "zebra-crossing", "#!/bin/sh", "PK\x03\x04",
                   "0xdeadbeef", "<script"})
    ->Unit(benchmark::kMillisecond);

// Each begins with frequent letters: somewhere in every second word something starts.
BENCHMARK_CAPTURE(Find, EightOfFrequentStart,
                  {"elephant-trunk", "the quick brown", "atomic-bomb", "error: 17", "into the wild",
                   "sooner or later", "hereafter", "never ever again"})
    ->Unit(benchmark::kMillisecond);
// The worst there is: part of it is always matched.
BENCHMARK_CAPTURE(FindInZeros, OneUnderWay, std::string(16, '\0') + "x");

template <class Copy>
void CopyBody(benchmark::State& state, Copy copy) {
  const std::string target = Body().Path() + ".copy";
  for (auto _ : state) copy(Body().Path(), target);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(BenchFile::kSize));
  std::filesystem::remove(target);
}

void CopyFile(benchmark::State& state) {
  CopyBody(state,
           [](const std::string& from, const std::string& to) { CFile::CopyFile(from, to, true); });
}
BENCHMARK(CopyFile)->Unit(benchmark::kMillisecond)->Iterations(2);

void FilesystemCopy(benchmark::State& state) {
  CopyBody(state, [](const std::string& from, const std::string& to) {
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
  });
}
BENCHMARK(FilesystemCopy)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace

BENCHMARK_MAIN();
