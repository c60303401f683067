// Speed of one expression over published ones, against std::regex and, where the build found them,
// RE2 and PCRE2 with its JIT.
//
// Question: is the engine ahead of what a user would take instead, for the boolean questions and
// for groups? Each row runs one operation of one engine over a sample of expressions and URLs; its
// counters are nanoseconds a text, as the median over the expressions and as the mean. Every engine
// compares without regard to case, has seen the texts before it is timed, and runs only expressions
// that all engines of the build accept.
//
// Input: ../shared/data/regexes.txt and urls-100k.txt when they are there, else a few rows of our
// own.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Common/Matching/Expression.h"
#include "tests/support/SharedData.h"

#ifdef TESSARIN_HAS_RE2
#include <re2/re2.h>
#endif
#ifdef TESSARIN_HAS_PCRE2
#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>
#endif

namespace {

std::vector<std::string> Load(const char* name, std::size_t step, std::size_t count,
                              std::vector<std::string> own) {
  const auto path = SharedPath(std::string("data/") + name);
  if (!path) return own;
  std::vector<std::string> lines;
  std::size_t at = 0;
  for (std::string& line : ReadLines(*path)) {
    if (at++ % step == 0 && !line.empty() && lines.size() < count) lines.push_back(std::move(line));
  }
  return lines;
}

const std::vector<std::string>& Texts() {
  static const auto texts =
      Load("urls-100k.txt", 997, 100,
           {"https://shop.example.com/catalogue/item?id=20481&lang=en#reviews",
            "http://www.example.org/", "https://cdn.example.net/js/app.min.js?v=12.0.3"});
  return texts;
}

// ---- the engines, each with the operations by the same names

class Ours {
public:
  explicit Ours(const std::string& pattern) {
    auto compiled = Matching::Expression::Compile(pattern);
    if (auto* const found = std::get_if<std::unique_ptr<Matching::Expression>>(&compiled)) {
      fExpression = std::move(*found);
    }
  }
  bool IsValid() const { return fExpression != nullptr; }
  bool Match(const std::string& text) const { return fExpression->IsMatch(text); }
  bool Search(const std::string& text) const { return fExpression->Search(text); }
  std::size_t FindAll(const std::string& text) const {
    Matching::MatchIterator walk(*fExpression, text);
    Matching::Captures captures;
    std::size_t count = 0;
    while (walk.Next(captures)) count += captures.size();
    return count;
  }
  std::size_t Replace(const std::string& text) const {
    Matching::MatchIterator walk(*fExpression, text);
    Matching::Captures captures;
    std::string out;
    std::size_t copied = 0;
    while (walk.Next(captures)) {
      out.append(text, copied, captures[0].begin - copied).append("-");
      copied = captures[0].end;
    }
    out.append(text, copied);
    return out.size();
  }

private:
  std::unique_ptr<Matching::Expression> fExpression;
};

class Library {
public:
  explicit Library(const std::string& pattern) {
    try {
      fRegex.emplace(pattern, std::regex::ECMAScript | std::regex::icase);
    } catch (const std::regex_error&) {
      fRegex.reset();
    }
  }
  bool IsValid() const { return fRegex.has_value(); }
  bool Match(const std::string& text) const { return std::regex_match(text, *fRegex); }
  bool Search(const std::string& text) const { return std::regex_search(text, *fRegex); }
  std::size_t FindAll(const std::string& text) const {
    std::size_t count = 0;
    for (std::sregex_iterator walk(text.begin(), text.end(), *fRegex), end; walk != end; ++walk) {
      count += walk->size();
    }
    return count;
  }
  std::size_t Replace(const std::string& text) const {
    return std::regex_replace(text, *fRegex, "-").size();
  }

private:
  std::optional<std::regex> fRegex;
};

#ifdef TESSARIN_HAS_RE2
class Re2 {
public:
  explicit Re2(const std::string& pattern) {
    re2::RE2::Options options(re2::RE2::Latin1);
    options.set_case_sensitive(false);
    options.set_log_errors(false);
    fRegex = std::make_unique<re2::RE2>(pattern, options);
  }
  bool IsValid() const { return fRegex->ok(); }
  bool Match(const std::string& text) const { return re2::RE2::FullMatch(text, *fRegex); }
  bool Search(const std::string& text) const { return re2::RE2::PartialMatch(text, *fRegex); }
  std::size_t FindAll(const std::string& text) const {
    std::vector<re2::StringPiece> groups(
        static_cast<std::size_t>(fRegex->NumberOfCapturingGroups()) + 1);
    std::size_t count = 0;
    std::size_t from = 0;
    while (from <= text.size() && fRegex->Match(text, from, text.size(), re2::RE2::UNANCHORED,
                                                groups.data(), static_cast<int>(groups.size()))) {
      count += groups.size();
      const auto end = static_cast<std::size_t>(groups[0].data() - text.data()) + groups[0].size();
      from = groups[0].empty() ? end + 1 : end;
    }
    return count;
  }
  std::size_t Replace(const std::string& text) const {
    std::string out = text;
    re2::RE2::GlobalReplace(&out, *fRegex, "-");
    return out.size();
  }

private:
  std::unique_ptr<re2::RE2> fRegex;
};
#endif

#ifdef TESSARIN_HAS_PCRE2
class Pcre2 {
public:
  explicit Pcre2(const std::string& pattern)
      : fCode(Compile(pattern, 0)), fWhole(Compile(pattern, PCRE2_ANCHORED | PCRE2_ENDANCHORED)) {
    if (fCode) fData.reset(pcre2_match_data_create_from_pattern(fCode.get(), nullptr));
  }
  bool IsValid() const { return fCode != nullptr && fWhole != nullptr; }
  bool Match(const std::string& text) const { return Run(fWhole.get(), text, 0, 0) > 0; }
  bool Search(const std::string& text) const { return Run(fCode.get(), text, 0, 0) > 0; }
  std::size_t FindAll(const std::string& text) const {
    std::size_t count = 0;
    std::size_t from = 0;
    for (int groups; from <= text.size() && (groups = Run(fCode.get(), text, from, 0)) > 0;) {
      count += static_cast<std::size_t>(groups);
      const PCRE2_SIZE* const spans = pcre2_get_ovector_pointer(fData.get());
      from = spans[1] == spans[0] ? spans[1] + 1 : spans[1];
    }
    return count;
  }
  std::size_t Replace(const std::string& text) const {
    std::string out(4 * text.size() + 16, '\0');
    PCRE2_SIZE size = out.size();
    pcre2_substitute(fCode.get(), Bytes(text), text.size(), 0, PCRE2_SUBSTITUTE_GLOBAL, fData.get(),
                     nullptr, reinterpret_cast<PCRE2_SPTR>("-"), 1,
                     reinterpret_cast<PCRE2_UCHAR*>(out.data()), &size);
    return size;
  }

private:
  struct Free {
    void operator()(pcre2_code* code) const { pcre2_code_free(code); }
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
  };
  using Code = std::unique_ptr<pcre2_code, Free>;

  static PCRE2_SPTR Bytes(const std::string& text) {
    return reinterpret_cast<PCRE2_SPTR>(text.data());
  }
  static Code Compile(const std::string& pattern, std::uint32_t flags) {
    int error = 0;
    PCRE2_SIZE offset = 0;
    Code code(pcre2_compile(Bytes(pattern), pattern.size(), PCRE2_CASELESS | flags, &error, &offset,
                            nullptr));
    if (code) pcre2_jit_compile(code.get(), PCRE2_JIT_COMPLETE);
    return code;
  }
  int Run(const pcre2_code* code, const std::string& text, std::size_t from,
          std::uint32_t flags) const {
    return pcre2_match(code, Bytes(text), text.size(), from, flags, fData.get(), nullptr);
  }

  Code fCode;
  Code fWhole;
  std::unique_ptr<pcre2_match_data, Free> fData;
};
#endif

bool IsValidEverywhere(const std::string& pattern) {
  bool isValid = Ours(pattern).IsValid() && Library(pattern).IsValid();
#ifdef TESSARIN_HAS_RE2
  isValid = isValid && Re2(pattern).IsValid();
#endif
#ifdef TESSARIN_HAS_PCRE2
  isValid = isValid && Pcre2(pattern).IsValid();
#endif
  return isValid;
}

const std::vector<std::string>& Patterns() {
  static const auto patterns = [] {
    auto all = Load("regexes.txt", 5, 200,
                    {"(https?)://([^/]+)(/[^?#]*)?", "\\.example\\.(com|org)", "[?&]id=(\\d+)",
                     "^https://.*\\.js(\\?.*)?$", "(ads|banner|track)[0-9]*\\."});
    std::erase_if(all, [](const std::string& pattern) { return !IsValidEverywhere(pattern); });
    return all;
  }();
  return patterns;
}

enum Operation : std::uint8_t { Match, Search, FindAll, Replace };

template <class Engine>
std::size_t Perform(const Engine& engine, Operation operation, const std::string& text) {
  switch (operation) {
    case Match:
      return engine.Match(text) ? 1 : 0;
    case Search:
      return engine.Search(text) ? 1 : 0;
    case FindAll:
      return engine.FindAll(text);
    case Replace:
      return engine.Replace(text);
  }
  return 0;
}

template <class Engine>
void RunAll(benchmark::State& state, Operation operation) {
  using Clock = std::chrono::steady_clock;
  std::vector<std::unique_ptr<Engine>> engines;
  for (const auto& pattern : Patterns()) engines.push_back(std::make_unique<Engine>(pattern));
  const auto pass = [&](const Engine& engine) {
    const auto start = Clock::now();
    for (const auto& text : Texts()) benchmark::DoNotOptimize(Perform(engine, operation, text));
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count() /
           static_cast<double>(Texts().size());
  };
  std::vector<double> best(engines.size(), 1e18);
  for (auto _ : state) {
    for (std::size_t i = 0; i < engines.size(); ++i) {
      pass(*engines[i]);
      best[i] = std::min(best[i], pass(*engines[i]));
    }
  }
  double sum = 0;
  for (const double each : best) sum += each;
  state.counters["mean_ns"] = sum / static_cast<double>(best.size());
  std::ranges::nth_element(best, best.begin() + static_cast<std::ptrdiff_t>(best.size() / 2));
  state.counters["median_ns"] = best[best.size() / 2];
}

// One operation of all engines stands together.
template <class Engine>
void Register(const char* engine, Operation operation, const char* name) {
  benchmark::RegisterBenchmark(
      (std::string("Expression_") + name + "/" + engine).c_str(),
      [operation](benchmark::State& state) { RunAll<Engine>(state, operation); })
      ->Unit(benchmark::kMillisecond)
      ->Iterations(3);
}

void Expression_Compile(benchmark::State& state) {
  for (auto _ : state) {
    for (const auto& pattern : Patterns()) benchmark::DoNotOptimize(Ours(pattern).IsValid());
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(Patterns().size()));
}

}  // namespace

int main(int argc, char** argv) {
  constexpr const char* kNames[] = {"Match", "Search", "FindAll", "Replace"};
  for (const Operation operation : {Match, Search, FindAll, Replace}) {
    const char* const name = kNames[operation];
    Register<Ours>("ours", operation, name);
#ifdef TESSARIN_HAS_RE2
    Register<Re2>("re2", operation, name);
#endif
#ifdef TESSARIN_HAS_PCRE2
    Register<Pcre2>("pcre2-jit", operation, name);
#endif
    Register<Library>("std", operation, name);
  }
  benchmark::RegisterBenchmark("Expression_Compile/ours", Expression_Compile);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
