// Speed of the text layer, in bytes of text a second.
//
// Questions: does looking at plain text cost a fraction of copying it (Memcpy stands beside it as
// the measure of the machine)? Does text outside ASCII stay above half a gigabyte a second? And
// does comparing without regard to case run at memory's pace while both sides are ASCII?

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "Common/EncodingRegistry.h"
#include "Common/TextCompare.h"
#include "Common/TextConversion.h"
#include "Common/TextDetection.h"
#include "Common/Utf8.h"

namespace {

constexpr std::size_t kSize = 1 << 20;

std::string Repeated(std::string_view piece) {
  std::string text;
  while (text.size() < kSize) text += piece;
  return text;
}

const std::string& Ascii() {
  static const std::string text = Repeated("The quick brown fox jumps over the lazy dog. ");
  return text;
}

const std::string& AsciiUpper() {
  static const std::string text = Repeated("THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG. ");
  return text;
}

// Words of European, Cyrillic and East Asian scripts between plain ones.
const std::string& Mixed() {
  static const std::string text = Repeated(
      "caf\xC3\xA9 au lait, \xD0\xBF\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82, plain words, "
      "\xE4\xBD\xA0\xE5\xA5\xBD \xE4\xB8\x96\xE7\x95\x8C \xF0\x9F\x98\x80. ");
  return text;
}

// Nothing but sequences of three bytes, the worst of real texts.
const std::string& Dense() {
  static const std::string text = Repeated("\xE4\xBD\xA0\xE5\xA5\xBD\xE4\xB8\x96\xE7\x95\x8C");
  return text;
}

template <class Operation>
void Measure(benchmark::State& state, std::size_t bytes, Operation operation) {
  for (auto _ : state) benchmark::DoNotOptimize(operation());
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void Memcpy(benchmark::State& state) {
  std::string target(Ascii().size(), '\0');
  Measure(state, target.size(), [&] {
    std::memcpy(target.data(), Ascii().data(), target.size());
    benchmark::ClobberMemory();
    return target.data();
  });
}
BENCHMARK(Memcpy);

void Utf8Test(benchmark::State& state, const std::string& (*text)()) {
  Measure(state, text().size(), [&] { return IsValidUtf8(text().data(), text().size()); });
}
BENCHMARK_CAPTURE(Utf8Test, Ascii, Ascii);
BENCHMARK_CAPTURE(Utf8Test, Mixed, Mixed);
BENCHMARK_CAPTURE(Utf8Test, Dense, Dense);

void Detection(benchmark::State& state, const std::string& (*text)()) {
  Measure(state, text().size(), [&] { return DetectEncoding(text().data(), text().size()); });
}
BENCHMARK_CAPTURE(Detection, Ascii, Ascii);
BENCHMARK_CAPTURE(Detection, Mixed, Mixed);

void EqualAscii(benchmark::State& state) {
  const TextView left{Ascii(), Charset::Utf8};
  const TextView right{AsciiUpper(), Charset::Utf8};
  Measure(state, Ascii().size(), [&] { return EqualIgnoringCase(left, right); });
}
BENCHMARK(EqualAscii);

void StartsWithAscii(benchmark::State& state) {
  const TextView text{Ascii(), Charset::Utf8};
  const TextView prefix{std::string_view(AsciiUpper()).substr(0, kSize / 2), Charset::Utf8};
  Measure(state, kSize / 2, [&] { return StartsWithIgnoringCase(text, prefix); });
}
BENCHMARK(StartsWithAscii);

void EndsWithAscii(benchmark::State& state) {
  const TextView text{Ascii(), Charset::Utf8};
  const TextView suffix{std::string_view(AsciiUpper()).substr(kSize / 2), Charset::Utf8};
  Measure(state, suffix.bytes.size(), [&] { return EndsWithIgnoringCase(text, suffix); });
}
BENCHMARK(EndsWithAscii);

void EqualMixed(benchmark::State& state) {
  const TextView text{Mixed(), Charset::Utf8};
  Measure(state, Mixed().size(), [&] { return EqualIgnoringCase(text, text); });
}
BENCHMARK(EqualMixed);

void FindAscii(benchmark::State& state) {
  const TextView text{Ascii(), Charset::Utf8};
  Measure(state, Ascii().size(), [&] {
    return FindIgnoringCase(text, {"FOX JUMPS UNDER", Charset::Utf8});
  });
}
BENCHMARK(FindAscii);

void WideFromMixed(benchmark::State& state) {
  Measure(state, Mixed().size(), [] { return WideFromUtf8(Mixed()).size(); });
}
BENCHMARK(WideFromMixed);

void Utf16ThroughConverter(benchmark::State& state) {
  Measure(state, Mixed().size(),
          [] { return ConvertText(Mixed(), Charset::Utf8, Charset::Utf16LE)->size(); });
}
BENCHMARK(Utf16ThroughConverter);

}  // namespace

BENCHMARK_MAIN();
