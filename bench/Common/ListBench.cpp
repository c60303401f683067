// How fast a list answers, in texts a second, beside what its users could take instead.
//
// Question: does a list of any kind and size cost little more than the best tool for that one kind?
// For names that is a plain hash of them, walked once from the end (Hash): List should take at most
// half as much again, whether it names the element (Named) or not. For expressions it is RE2::Set
// (where the build finds it) once it has seen every text; the first pass over fresh texts
// (FirstPass) shows what learning costs. The counters tell what building took, and the matcher's
// bytes an element.
//
// The data are the public lists and texts beside the checkout; without them the rows that need them
// are left out.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Common/CRegexVectorHolder.h"
#include "Common/CUnicodeString.h"
#include "Common/CVariant.h"
#include "Common/Matching/ByteFold.h"
#include "tests/support/SharedData.h"

#if TESSARIN_HAS_RE2
#include <re2/set.h>
#endif

namespace {

using Strings = std::vector<std::string>;

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

Strings Lines(const std::string& file) {
  const auto path = file.empty() ? std::nullopt : SharedPath("data/" + file);
  return path ? ReadLines(*path) : Strings();
}

// A list and the texts that it is asked about.
struct Workload {
  Strings elements;
  Strings names;         // what a hash of names would hold; none for other kinds
  bool isExact = false;  // the names are whole texts
  Strings texts;
};

std::string Escaped(const std::string& name) {
  std::string text;
  for (const char c : name) text += c == '.' ? "\\." : std::string(1, c);
  return text;
}

// Texts in one piece of memory, in a fixed random order, none longer than a kilobyte.
Strings Shuffled(Strings texts) {
  std::mt19937 random(1);
  std::shuffle(texts.begin(), texts.end(), random);
  for (std::string& text : texts) {
    if (text.size() > 1000) text.resize(1000);
  }
  return {texts.begin(), texts.end()};
}

// Host names of which every twentieth is made a hit: a real first label and a listed name.
Strings HostTexts(const Strings& names, bool isExact) {
  std::mt19937 random(2);
  Strings texts = Lines("hostnames-100k.txt");
  for (std::size_t i = 0; i < texts.size(); i += 20) {
    const std::string& label = texts[random() % texts.size()];
    const std::string& name = names[random() % names.size()];
    texts[i] = isExact ? name : label.substr(0, label.find('.')) + "." + name;
  }
  return Shuffled(std::move(texts));
}

Strings Names(std::size_t count) {
  const Strings hosts = Lines("hosts-100k.txt");
  Strings names;
  if (hosts.empty()) return names;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t round = i / hosts.size();
    names.push_back((round ? "label" + std::to_string(round) + "." : "") + hosts[i % hosts.size()]);
  }
  return names;
}

Workload NameWorkload(std::size_t count, const std::string& before, const std::string& after,
                      bool escapes) {
  Workload workload;
  workload.names = Names(count);
  if (workload.names.empty()) return workload;
  workload.isExact = before.empty();
  for (const std::string& name : workload.names) {
    workload.elements.push_back(before + (escapes ? Escaped(name) : name) + after);
  }
  workload.texts = HostTexts(workload.names, workload.isExact);
  return workload;
}

Workload FileWorkload(const std::string& list, std::size_t count, bool isRegex,
                      const std::string& texts) {
  Workload workload;
  for (const std::string& line : Lines(list)) {
    if (workload.elements.size() == count) break;
    if (line.empty()) continue;
    const std::string element = isRegex ? "regex(" + line + ")" : line;
    if (CRegex::CreateFromValue(element)) workload.elements.push_back(element);
  }
  workload.texts = Shuffled(Lines(texts));
  return workload;
}

Workload MixedWorkload(std::size_t count) {
  Workload workload;
  const Strings names = Names(count);
  const Strings expressions = FileWorkload("regexes-whole.txt", count, true, "").elements;
  if (names.empty() || expressions.empty()) return workload;
  for (std::size_t i = 0; i < count; ++i) {
    if (i % 10 < 7) {
      workload.elements.push_back("*." + names[i]);
    } else {
      workload.elements.push_back(i % 10 < 9 ? names[i] : expressions[i / 10 % expressions.size()]);
    }
  }
  workload.texts = HostTexts(names, false);
  return workload;
}

// The ideal for names: one pass from the end, and a look into an open table at each dot.
class HashOfNames {
public:
  explicit HashOfNames(const Workload& workload) : fIsExact(workload.isExact) {
    std::size_t slots = 64;
    while (slots < workload.names.size() * 2) slots *= 2;
    fSlots.resize(slots);
    for (const std::string& name : workload.names) {
      std::uint64_t hash = kSeed;
      for (auto c = name.rbegin(); c != name.rend(); ++c) hash = Step(hash, Matching::FoldByte(*c));
      std::size_t slot = (hash >> 20) & (slots - 1);
      while (fSlots[slot].size != 0) slot = (slot + 1) & (slots - 1);
      fSlots[slot] = {hash, static_cast<std::uint32_t>(fNames.size()),
                      static_cast<std::uint32_t>(name.size())};
      fNames += Matching::FoldText(name);
    }
  }

  bool Matches(const std::string& text) const {
    std::uint64_t hash = kSeed;
    for (std::size_t i = text.size(); i-- > 0;) {
      const unsigned char c = Matching::FoldByte(text[i]);
      if (c == '.' && !fIsExact && Holds(hash, text, i + 1)) return true;
      hash = Step(hash, c);
    }
    return fIsExact && Holds(hash, text, 0);
  }

private:
  struct Slot {
    std::uint64_t hash = 0;
    std::uint32_t offset = 0;
    std::uint32_t size = 0;
  };
  static constexpr std::uint64_t kSeed = 0x1234567;
  static std::uint64_t Step(std::uint64_t hash, unsigned char c) {
    return (hash ^ c) * 0x9E3779B97F4A7C15U;
  }
  bool Holds(std::uint64_t hash, const std::string& text, std::size_t from) const {
    const std::size_t mask = fSlots.size() - 1;
    for (std::size_t i = (hash >> 20) & mask; fSlots[i].size != 0; i = (i + 1) & mask) {
      const Slot& slot = fSlots[i];
      if (slot.hash != hash || slot.size != text.size() - from) continue;
      if (Matching::EqualsFolded(text.data() + from, fNames.data() + slot.offset, slot.size)) {
        return true;
      }
    }
    return false;
  }

  const bool fIsExact;
  std::vector<Slot> fSlots;
  std::string fNames;
};

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
  const auto start = std::chrono::steady_clock::now();
  list.holder = std::make_unique<CRegexVectorHolder>(list.value);
  list.seconds = SecondsSince(start);
  return list;
}

using MakeWorkload = std::function<Workload()>;

// Runs ask(text) over all texts, again and again.
template <class Ask>
void AskAll(benchmark::State& state, const Strings& texts, Ask ask) {
  std::size_t hits = 0;
  for (auto _ : state) {
    hits = 0;
    for (const std::string& text : texts) hits += ask(text) ? 1 : 0;
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * texts.size()));
  state.counters["hits"] = static_cast<double>(hits);
}

void SetBuildCounters(benchmark::State& state, const Workload& workload, const BuiltList& list) {
  const auto* matcher = list.holder->Matcher();
  state.counters["build_s"] = list.seconds;
  state.counters["bytes_each"] = matcher ? static_cast<double>(matcher->MemorySize()) /
                                               static_cast<double>(workload.elements.size())
                                         : 0;
}

void ListAnswers(benchmark::State& state, const MakeWorkload& make) {
  const Workload workload = make();
  if (workload.texts.empty()) return state.SkipWithError("the data are not there");
  const BuiltList list = Build(workload);
  list.value->TriggerRegexBuild();
  AskAll(state, workload.texts,
         [&](const std::string& text) { return list.value->Matches(text) == 1; });
  SetBuildCounters(state, workload, list);
}

void ListNames(benchmark::State& state, const MakeWorkload& make) {
  const Workload workload = make();
  if (workload.texts.empty()) return state.SkipWithError("the data are not there");
  const BuiltList list = Build(workload);
  AskAll(state, workload.texts, [&](const std::string& text) {
    CUsePtr<CUnicodeString> element;
    return list.holder->Find(text, &element);
  });
  SetBuildCounters(state, workload, list);
}

// Each text once, on a list that has learnt nothing yet.
void ListFirstPass(benchmark::State& state, const MakeWorkload& make) {
  const Workload workload = make();
  if (workload.texts.empty()) return state.SkipWithError("the data are not there");
  const BuiltList list = Build(workload);
  for (auto _ : state) {
    for (const std::string& text : workload.texts) {
      benchmark::DoNotOptimize(list.holder->Find(text, nullptr));
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(workload.texts.size()));
}

void HashAnswers(benchmark::State& state, const MakeWorkload& make) {
  const Workload workload = make();
  if (workload.texts.empty()) return state.SkipWithError("the data are not there");
  const HashOfNames hash(workload);
  AskAll(state, workload.texts, [&](const std::string& text) { return hash.Matches(text); });
}

#if TESSARIN_HAS_RE2
void Re2SetAnswers(benchmark::State& state, const MakeWorkload& make) {
  const Workload workload = make();
  if (workload.texts.empty()) return state.SkipWithError("the data are not there");
  re2::RE2::Options options;
  options.set_case_sensitive(false);
  options.set_encoding(re2::RE2::Options::EncodingLatin1);
  options.set_log_errors(false);
  options.set_max_mem(std::int64_t{256} << 20);
  re2::RE2::Set set(options, re2::RE2::ANCHOR_BOTH);
  for (const std::string& element : workload.elements) {
    std::string expression(CRegex::StripRegexForm(element));
    if (CRegex::IsWildcardForm(element)) CRegex::GlobToExpression(element, false, expression);
    set.Add(expression, nullptr);
  }
  const auto start = std::chrono::steady_clock::now();
  if (!set.Compile()) return state.SkipWithError("RE2::Set has no room");
  state.counters["build_s"] = SecondsSince(start);
  AskAll(state, workload.texts, [&](const std::string& text) { return set.Match(text, nullptr); });
}
#endif

void Register(const std::string& name, const MakeWorkload& make, bool hasHash) {
  const auto add = [&](const char* what, void (*run)(benchmark::State&, const MakeWorkload&)) {
    return benchmark::RegisterBenchmark((what + ("/" + name)).c_str(), run, make)
        ->Unit(benchmark::kMillisecond);
  };
  if (hasHash) add("Hash", HashAnswers);
  add("List", ListAnswers);
  add("Named", ListNames);
  add("FirstPass", ListFirstPass)->Iterations(1);
#if TESSARIN_HAS_RE2
  if (!hasHash) add("Re2Set", Re2SetAnswers);
#endif
}

}  // namespace

int main(int argc, char** argv) {
  for (const std::size_t count : {100, 1'000, 10'000, 100'000, 1'000'000}) {
    Register(
        "names_behind_stars/" + std::to_string(count),
        [count] { return NameWorkload(count, "*.", "", false); }, true);
  }
  for (const std::size_t count : {1'000, 10'000, 100'000}) {
    Register(
        "names_as_expressions/" + std::to_string(count),
        [count] { return NameWorkload(count, "regex(^(.*\\.)?", "$)", true); }, true);
  }
  Register(
      "exact_names/10000", [] { return NameWorkload(10'000, "", "", false); }, true);
  for (const std::size_t count : {1'000, 5'000}) {
    Register(
        "url_globs/" + std::to_string(count),
        [count] { return FileWorkload("globs-url.txt", count, false, "requests.txt"); }, false);
  }
  for (const std::size_t count : {100, 500}) {
    Register(
        "expressions/" + std::to_string(count),
        [count] { return FileWorkload("regexes-whole.txt", count, true, "urls-100k.txt"); }, false);
  }
  Register(
      "user_agents/500",
      [] { return FileWorkload("regexes-useragent-whole.txt", 500, true, "useragents.txt"); },
      false);
  Register(
      "mixed/10000", [] { return MixedWorkload(10'000); }, false);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
