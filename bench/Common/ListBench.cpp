// How fast a list answers, in texts a second, beside what its users could take instead.
//
// Question: does a list of any kind and size cost little more than the best tool for that one kind?
// For names that is a plain hash of them, walked once from the end (Hash): List should take at most
// half as much again, whether it names the element (Named) or not. For expressions it is the better
// of Vectorscan and of RE2::Set once that has seen every text, where the build finds them; the
// first pass over fresh texts (FirstPass) shows what learning costs.
//
// RE2::Set is asked about the texts that it comes to know in ten seconds. All times are of the
// processor. Each row tells the nanoseconds a text and the seconds of building; our rows how many
// times a peer's time they take (to_Hash and so on), the first pass how many times the later ones'
// (to_List), and two sizes an element: the matcher's bytes, and those of what the list keeps anyway
// (kept_each): the elements, the sources and the scanners' texts. Vectorscan gets a wildcard
// without the stars at its ends, which it then compiles many times as fast.
//
// The data are the public lists and texts beside the checkout; without them the rows that need them
// are left out.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Common/CRegexVectorHolder.h"
#include "Common/CUnicodeString.h"
#include "Common/CVariant.h"
#include "bench/Common/ListWorkloads.h"

#if TESSARIN_HAS_RE2
#include <re2/set.h>
#endif
#if TESSARIN_HAS_VECTORSCAN
#include <hs/hs.h>
#endif

namespace {

using namespace ListWorkloads;

double SecondsSince(std::clock_t start) {
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

struct BuiltList {
  CUsePtr<CVariant> value;
  std::unique_ptr<CRegexVectorHolder> holder;
  double seconds = 0;
};

BuiltList Build(const Workload& workload) {
  BuiltList list;
  list.value = MakeUseCounted<CVariant>(VariantType::RegexList);
  for (const std::string& element : workload.elements) {
    list.value->AddToList(MakeText(element).Get());
  }
  const std::clock_t start = std::clock();
  list.holder = std::make_unique<CRegexVectorHolder>(list.value);
  list.seconds = SecondsSince(start);
  return list;
}

using MakeWorkload = std::function<Workload()>;

// A workload with what its rows share. One is kept at a time, since some take a gigabyte.
struct Case {
  std::string name;
  MakeWorkload make;
  Workload workload;
  std::optional<BuiltList> list;
  std::map<std::string, double> peers;  // nanoseconds a text; our own later passes as "List"

  const BuiltList& List() {
    if (!list) list = Build(workload);
    return *list;
  }
};

// False when the data are not there.
bool Prepare(benchmark::State& state, Case& own) {
  static Case* current = nullptr;
  if (current != &own) {
    if (current != nullptr) {
      current->list.reset();
      current->workload = Workload();
    }
    current = &own;
    own.workload = own.make();
  }
  if (own.workload.texts.empty()) state.SkipWithError("the data are not there");
  return !own.workload.texts.empty();
}

// Runs ask(text) over all texts, again and again; the nanoseconds a text.
template <class Ask>
double AskAll(benchmark::State& state, const Strings& texts, Ask ask) {
  std::size_t hits = 0;
  const std::clock_t start = std::clock();
  for (auto _ : state) {
    hits = 0;
    for (const std::string& text : texts) hits += ask(text) ? 1 : 0;
  }
  const double each =
      SecondsSince(start) * 1e9 / static_cast<double>(state.iterations() * texts.size());
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
  state.counters["hits"] = static_cast<double>(hits);
  state.counters["ns_text"] = each;
  return each;
}

// Bytes that the contract of a list has it keep, whoever answers: elements, sources and scanners.
std::size_t KeptBytes(const Workload& workload, const CRegexVectorHolder& holder) {
  std::size_t kept = 0;
  for (const std::string& element : workload.elements) kept += element.size();
  for (const RegexVectorEntry& entry : holder.Entries()) {
    kept += entry.fScanner->Pattern().size() + entry.fScanner->Source().size();
    for (const std::string& source : *entry.fSources) kept += source.size();
  }
  return kept;
}

void SetCounters(benchmark::State& state, const Case& own, const BuiltList& list, double each) {
  const auto* matcher = list.holder->Matcher();
  const auto count = static_cast<double>(own.workload.elements.size());
  state.counters["build_s"] = list.seconds;
  state.counters["bytes_each"] = matcher ? static_cast<double>(matcher->MemorySize()) / count : 0;
  state.counters["kept_each"] = static_cast<double>(KeptBytes(own.workload, *list.holder)) / count;
  for (const auto& [peer, time] : own.peers) state.counters["to_" + peer] = each / time;
}

void ListAnswers(benchmark::State& state, Case& own) {
  if (!Prepare(state, own)) return;
  const BuiltList& list = own.List();
  list.value->TriggerRegexBuild();
  own.peers.erase("List");
  const double each = AskAll(state, own.workload.texts, [&](const std::string& text) {
    return list.value->Matches(text) == 1;
  });
  SetCounters(state, own, list, each);
  own.peers["List"] = each;
}

void ListNames(benchmark::State& state, Case& own) {
  if (!Prepare(state, own)) return;
  const BuiltList& list = own.List();
  const double each = AskAll(state, own.workload.texts, [&](const std::string& text) {
    CUsePtr<CUnicodeString> element;
    return list.holder->Find(text, &element);
  });
  SetCounters(state, own, list, each);
}

// Each text once, on a list that has learnt nothing yet.
void ListFirstPass(benchmark::State& state, Case& own) {
  if (!Prepare(state, own)) return;
  own.list.reset();
  const BuiltList& list = own.List();
  const double each = AskAll(state, own.workload.texts, [&](const std::string& text) {
    return list.holder->Find(text, nullptr);
  });
  SetCounters(state, own, list, each);
}

void HashAnswers(benchmark::State& state, Case& own) {
  if (!Prepare(state, own)) return;
  const HashOfNames hash(own.workload);
  own.peers["Hash"] = AskAll(state, own.workload.texts,
                             [&](const std::string& text) { return hash.Matches(text); });
}

#if TESSARIN_HAS_RE2
void Re2SetAnswers(benchmark::State& state, Case& own) {
  if (!Prepare(state, own)) return;
  re2::RE2::Options options;
  options.set_case_sensitive(false);
  options.set_encoding(re2::RE2::Options::EncodingLatin1);
  options.set_log_errors(false);
  options.set_max_mem(std::int64_t{256} << 20);
  re2::RE2::Set set(options, re2::RE2::ANCHOR_BOTH);
  const std::clock_t start = std::clock();
  for (const std::string& element : own.workload.elements) {
    std::string expression(CRegex::StripRegexForm(element));
    if (CRegex::IsWildcardForm(element)) CRegex::GlobToExpression(element, false, expression);
    set.Add(expression, nullptr);
  }
  if (!set.Compile()) return state.SkipWithError("RE2::Set has no room");
  state.counters["build_s"] = SecondsSince(start);
  // What it learns of a text can take milliseconds: only those count that it comes to know in time.
  Strings known;
  const std::clock_t learning = std::clock();
  for (const std::string& text : own.workload.texts) {
    if (std::clock() - learning > 10 * CLOCKS_PER_SEC) break;
    set.Match(text, nullptr);
    known.push_back(text);
  }
  state.counters["texts"] = static_cast<double>(known.size());
  own.peers["Re2Set"] =
      AskAll(state, known, [&](const std::string& text) { return set.Match(text, nullptr); });
}
#endif

#if TESSARIN_HAS_VECTORSCAN
std::string VectorscanExpression(const std::string& element) {
  if (CRegex::IsRegexForm(element)) {
    return "^(?:" + std::string(CRegex::StripRegexForm(element)) + ")\\z";
  }
  const std::size_t first = std::min(element.find_first_not_of('*'), element.size());
  const std::size_t last = element.find_last_not_of('*') + 1;
  std::string expression;
  CRegex::GlobToExpression(element.substr(first, last - first), false, expression);
  return (first == 0 ? "^" : "") + expression + (last == element.size() ? "\\z" : "");
}

// A compiled database, without the expressions that Vectorscan refuses.
class Vectorscan {
public:
  explicit Vectorscan(const Strings& elements) {
    std::vector<std::string> expressions;
    for (const std::string& element : elements) {
      std::string expression = VectorscanExpression(element);
      if (IsAccepted(expression)) expressions.push_back(std::move(expression));
    }
    while (!Compile(expressions)) {
    }
    if (fDatabase) hs_alloc_scratch(fDatabase, &fScratch);
  }
  Vectorscan(const Vectorscan&) = delete;
  Vectorscan& operator=(const Vectorscan&) = delete;
  ~Vectorscan() {
    hs_free_scratch(fScratch);
    hs_free_database(fDatabase);
  }

  bool IsValid() const { return fScratch != nullptr; }
  bool Matches(const std::string& text) const {
    bool hit = false;
    hs_scan(
        fDatabase, text.data(), static_cast<unsigned>(text.size()), 0, fScratch,
        [](unsigned, unsigned long long, unsigned long long, unsigned, void* context) {
          *static_cast<bool*>(context) = true;
          return 1;
        },
        &hit);
    return hit;
  }

private:
  static constexpr unsigned kFlags = HS_FLAG_CASELESS | HS_FLAG_SINGLEMATCH | HS_FLAG_ALLOWEMPTY;

  static bool IsAccepted(const std::string& expression) {
    hs_expr_info_t* info = nullptr;
    hs_compile_error_t* error = nullptr;
    const bool ok = hs_expression_info(expression.c_str(), kFlags, &info, &error) == HS_SUCCESS;
    std::free(info);
    hs_free_compile_error(error);
    return ok;
  }

  // False when one was refused all the same and is gone now.
  bool Compile(std::vector<std::string>& expressions) {
    std::vector<const char*> texts;
    std::vector<unsigned> flags(expressions.size(), kFlags);
    std::vector<unsigned> ids;
    for (const std::string& expression : expressions) {
      ids.push_back(static_cast<unsigned>(texts.size()));
      texts.push_back(expression.c_str());
    }
    hs_compile_error_t* error = nullptr;
    const auto count = static_cast<unsigned>(texts.size());
    if (hs_compile_multi(texts.data(), flags.data(), ids.data(), count, HS_MODE_BLOCK, nullptr,
                         &fDatabase, &error) == HS_SUCCESS) {
      return true;
    }
    const int refused = error->expression;
    hs_free_compile_error(error);
    if (refused < 0) return true;
    expressions.erase(expressions.begin() + refused);
    return false;
  }

  hs_database_t* fDatabase = nullptr;
  hs_scratch_t* fScratch = nullptr;
};

void VectorscanAnswers(benchmark::State& state, Case& own) {
  if (!Prepare(state, own)) return;
  const std::clock_t start = std::clock();
  const Vectorscan database(own.workload.elements);
  if (!database.IsValid()) return state.SkipWithError("Vectorscan refuses the list");
  state.counters["build_s"] = SecondsSince(start);
  own.peers["Vectorscan"] = AskAll(state, own.workload.texts,
                                   [&](const std::string& text) { return database.Matches(text); });
}
#endif

// The peers come first, so that our rows can tell how they compare.
void Register(const std::string& name, const MakeWorkload& make, bool hasHash) {
  const auto own = std::make_shared<Case>();
  own->name = name;
  own->make = make;
  const auto add = [&](const char* what, void (*run)(benchmark::State&, Case&)) {
    return benchmark::RegisterBenchmark((what + ("/" + name)).c_str(),
                                        [own, run](benchmark::State& state) { run(state, *own); })
        ->Unit(benchmark::kMillisecond);
  };
  if (hasHash) add("Hash", HashAnswers);
#if TESSARIN_HAS_RE2
  if (!hasHash) add("Re2Set", Re2SetAnswers)->Iterations(3);
#endif
#if TESSARIN_HAS_VECTORSCAN
  if (!hasHash) add("Vectorscan", VectorscanAnswers)->Iterations(3);
#endif
  add("List", ListAnswers);
  add("Named", ListNames);
  add("FirstPass", ListFirstPass)->Iterations(1);
}

void ReportMissingPeers() {
#if !TESSARIN_HAS_RE2
  std::puts("RE2 is missing, and so are its rows: make setup-bench installs it");
#endif
#if !TESSARIN_HAS_VECTORSCAN
  std::puts("Vectorscan is missing, and so are its rows: make setup-bench installs it");
#endif
}

}  // namespace

int main(int argc, char** argv) {
  for (const std::size_t count : {100, 1'000, 10'000, 100'000, 1'000'000}) {
    Register(
        "names_behind_stars/" + std::to_string(count),
        [count] { return OfNames(count, "*.", "", false); }, true);
  }
  for (const std::size_t count : {100, 1'000, 10'000, 100'000}) {
    Register(
        "names_as_expressions/" + std::to_string(count),
        [count] { return OfNames(count, "regex(^(.*\\.)?", "$)", true); }, true);
  }
  Register(
      "exact_names/10000", [] { return OfNames(10'000, "", "", false); }, true);
  for (const std::size_t count : {1'000, 5'000}) {
    Register(
        "url_globs/" + std::to_string(count),
        [count] { return OfFile("globs-url.txt", count, false, "requests.txt"); }, false);
  }
  for (const std::size_t count : {100, 500}) {
    Register(
        "expressions/" + std::to_string(count),
        [count] { return OfFile("regexes-whole.txt", count, true, "urls-100k.txt"); }, false);
  }
  Register(
      "user_agents/500",
      [] { return OfFile("regexes-useragent-whole.txt", 500, true, "useragents.txt"); }, false);
  Register(
      "mixed/10000", [] { return OfAllKinds(10'000); }, false);
  ReportMissingPeers();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
