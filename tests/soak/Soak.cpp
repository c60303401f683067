// soak SECONDS: the reference host at work for that long, in one process.
//
// Eight threads judge lines by a rules file whose lists they build anew, append to, save and
// restore in every rule, while one thread replaces the file under them by others with longer lists,
// one turns the log on and off, and one keeps bodies on disk and searches them there. What must
// hold at the end: every thread gave every line the verdict that one thread alone gave it, every
// body had the bytes that it was given, and the process has no more memory, descriptors and
// temporary files than when all of that had run for a while.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Common/CBuffer.h"
#include "Libs/Platform/SharedLibrary.h"
#include "host/Data.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/SharedData.h"
#include "tools/tovrin/CModule.h"
#include "tools/tovrin/CRuleSet.h"

namespace {

using namespace RefHost;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kThreads = 8;
constexpr std::size_t kFiles = 4;          // rules files that take turns
constexpr std::size_t kLinesAtATime = 20;  // between two looks for a newer file
constexpr auto kReplaceEvery = std::chrono::milliseconds(20);
constexpr auto kBodyEvery = std::chrono::milliseconds(5);
constexpr auto kToggleEvery = std::chrono::milliseconds(50);
// What a figure may grow by and still be flat: malloc keeps what threads gave back, more or less of
// it.
constexpr double kMemoryShare = 0.25;
constexpr double kMemoryFloor = 16.0 * 1024 * 1024;

// Takes the log's lines and drops them; its gates open and close while it is used.
class CSwitchedHost final : public Tovrin::InterfaceImpl<Tovrin::IHost> {
public:
  void Open(bool isOpen) { fIsOpen = isOpen; }
  std::uint64_t Lines() const { return fLines; }

private:
  void Interface_PrintError(const char*, const char*, const char*, const char*, const char*,
                            const char*, std::int32_t) override {
    ++fLines;
  }
  void Interface_PrintDebug(std::uint32_t, const char*, const char*, const char*, const char*,
                            std::uint32_t, const char*) override {
    ++fLines;
  }
  bool Interface_IsDebugActive() const override { return fIsOpen; }
  bool Interface_IsFunctionLevelEnabled(std::uint32_t, const char*, const char*) const override {
    return fIsOpen;
  }
  bool Interface_IsLevelEnabled(std::uint32_t, const char*) const override { return fIsOpen; }
  void Interface_ApplyDebugConfiguration(const char*) override {}

  std::atomic<bool> fIsOpen{false};
  std::atomic<std::uint64_t> fLines{0};
};

// The module keeps the first host that it is given, so this one comes before CModule hands over its
// own.
void HandOver(const CSharedLibrary& library, const CHost& host, Tovrin::IHost* services) {
  const auto setHost =
      reinterpret_cast<Tovrin::ModuleFunction>(library.Find("tovrin_module_TessarinSetIHost"));
  const CTransaction transaction = host.NewTransaction("soak");
  const auto argument = transaction.NewValue(Tovrin::kTypeDataRef);
  argument->AssignData(Tovrin::AutoRefPtr<Tovrin::IDataRef>(
      new Tovrin::Data(std::string(reinterpret_cast<const char*>(&services), sizeof services))));
  const auto result = transaction.NewValue(Tovrin::kTypeBoolean);
  Tovrin::IVariant* const arguments[] = {argument.get()};
  setHost(1, arguments, result.get(), nullptr, transaction.context.get());
}

// The `number`-th rules file: its lists differ in length and in what they hold. A list is saved as
// it is stored, so its elements do without what JSON would have to escape; and what was one text is
// restored as an expression, so `ends` finds files and `hosts` nothing once they were saved.
std::string RulesText(std::size_t number) {
  std::ostringstream names;
  names << "\".*//ad" << number << "[.].*\"";
  for (std::size_t i = 1; i < 40 * (number + 1); ++i) {
    names << ", \".*//[a-z]+" << i * 7 % 1000 << "[.].*\"";
  }
  std::ostringstream rules;
  rules << "let hosts = ToTessarinList([" << names.str() << "]);\n"
        << "let ends = Tessarin.Append(Tessarin.Append(ToTessarinList([]), \".*[.]exe\"), "
        << "\".*[.](zip|gz)" << number << "?\");\n"
        << R"(let broken = ToTessarin("(");
when Tessarin.Search(broken, text) then "never";
when Tessarin.Matches(ToTessarinList([".*[.]invalid/.*", "("]), text) then "never as well";
when Tessarin.Matches(Load("Tessarin.List", Save(ends)), text) then "file";
when Tessarin.Matches(Load("Tessarin.List", Save(hosts)), text) then "never either";
when Tessarin.Matches(hosts, text) then "host";
when Tessarin.Matches(Tessarin.Append(hosts, "*/account[?]*"), text) then "account";
when Tessarin.Matches(Reverse(Join(ToTessarinList([".*[.]net/.*"]), ends)), text) then "net";
otherwise "other";
)";
  return rules.str();
}

// What the lines of examples/requests.txt get from such a file, each at least once.
const std::set<std::string> kVerdicts{"account", "file", "host", "net", "other"};

using Verdicts = std::vector<std::size_t>;

struct RulesFile {
  std::size_t number = 0;
  CRuleSet rules;
};

std::shared_ptr<const RulesFile> MakeFile(const CHost& host, std::size_t number) {
  const CTransaction transaction = host.NewTransaction("load");
  auto file = std::make_shared<RulesFile>(RulesFile{number, {RulesText(number), transaction}});
  // Added to before anyone else sees it, as a host has to.
  const auto* add = host.Tables().functions->FindExact("Tessarin.Add", "", "Tessarin.List,STRING");
  const auto element = transaction.NewValue(Tovrin::kTypeString);
  element->SetText("https://added.test/*");
  Tovrin::IVariant* const arguments[] = {file->rules.Values().Find("hosts")->value.get(),
                                         element.get()};
  if (add->address(2, arguments, nullptr, add->info, transaction.context.get()) != 0) std::abort();
  return file;
}

struct Figures {
  double memory = 0;  // bytes that are resident
  std::size_t descriptors = 0;
  std::size_t temporaryFiles = 0;
};

Figures MeasureProcess() {
  Figures figures;
  std::istringstream statm(ReadWholeFile("/proc/self/statm"));
  double pages = 0;
  statm >> pages >> pages;
  figures.memory = pages * 4096;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    ++figures.descriptors;
  }
  for ([[maybe_unused]] const auto& entry :
       std::filesystem::directory_iterator(std::filesystem::temp_directory_path())) {
    ++figures.temporaryFiles;
  }
  return figures;
}

// Everything that threads share; what changes is under fLock or atomic.
class CSoak {
public:
  CSoak(const CHost& host, std::vector<std::string> lines) : fHost(host), fLines(std::move(lines)) {
    for (std::size_t number = 0; number < kFiles; ++number) {
      const auto file = MakeFile(host, number);
      CRuleEngine engine(file->rules, host.NewTransaction("expect"));
      Verdicts verdicts;
      for (const std::string& line : fLines) {
        verdicts.push_back(engine.Judge(line).verdict);
        fGiven.insert(file->rules.Verdicts()[verdicts.back()]);
      }
      fExpected.push_back(std::move(verdicts));
    }
    Replace(0);
  }

  void Replace(std::size_t number) {
    auto file = MakeFile(fHost, number % kFiles);
    const std::lock_guard lock(fLock);
    fFile.swap(file);  // the last of those who still judge by the old one takes it away
  }

  void Work(std::size_t thread) {
    const CTransaction transaction = fHost.NewTransaction("work");
    for (std::size_t at = thread * 37; !fIsOver; at += kLinesAtATime) {
      const auto file = File();
      CRuleEngine engine(file->rules, transaction);
      for (std::size_t i = 0; i < kLinesAtATime; ++i) {
        const std::size_t line = (at + i) % fLines.size();
        const bool isRight = engine.Judge(fLines[line]).verdict == fExpected[file->number][line];
        ++(isRight ? fRight : fWrong);
      }
    }
  }

  // Bodies that go to disk, as `tovrin find` keeps what comes through a pipe.
  void KeepBodies() {
    const std::string_view needle = "needle";
    const std::string hay(std::size_t{64} << 10, '-');
    for (; !fIsOver; std::this_thread::sleep_for(kBodyEvery)) {
      const std::lock_guard lock(fBodyLock);
      CBuffer body;
      bool isRight = body.Append(hay.data(), hay.size()) && body.SwapOut() &&
                     body.Append(needle.data(), needle.size()) &&
                     body.Append(hay.data(), hay.size());
      std::vector<std::size_t> offsets;
      body.GetAllOccurrences(offsets, needle.data(), needle.size(), 0, body.GetSize());
      isRight = isRight && !body.IsInMemory() && offsets == std::vector{hay.size()};
      ++(isRight ? fRight : fWrong);
      ++fBodies;
    }
  }

  // What the process has while no body is on its way.
  Figures Measure() const {
    const std::lock_guard lock(fBodyLock);
    return MeasureProcess();
  }

  void End() { fIsOver = true; }
  const std::set<std::string>& Given() const { return fGiven; }  // by one thread alone
  std::uint64_t Right() const { return fRight; }
  std::uint64_t Wrong() const { return fWrong; }
  std::uint64_t Bodies() const { return fBodies; }

private:
  std::shared_ptr<const RulesFile> File() const {
    const std::lock_guard lock(fLock);
    return fFile;
  }

  const CHost& fHost;
  const std::vector<std::string> fLines;
  std::vector<Verdicts> fExpected;  // of each file, one a line; constant once the threads run
  std::set<std::string> fGiven;     // the words of those
  mutable std::mutex fLock;
  std::shared_ptr<const RulesFile> fFile;  // guarded by fLock
  std::atomic<bool> fIsOver{false};
  std::atomic<std::uint64_t> fRight{0};
  std::atomic<std::uint64_t> fWrong{0};
  mutable std::mutex fBodyLock;  // held while a body lives
  std::atomic<std::uint64_t> fBodies{0};
};

void Print(const char* when, const Figures& figures) {
  std::printf("%s: %.1f MB, %zu descriptors, %zu temporary files\n", when, figures.memory / 1e6,
              figures.descriptors, figures.temporaryFiles);
  std::fflush(stdout);
}

bool AreFlat(const Figures& warm, const Figures& end) {
  bool isFlat = end.descriptors <= warm.descriptors && end.temporaryFiles <= warm.temporaryFiles;
#ifndef TESSARIN_SOAK_SANITIZED  // sanitizers keep what is freed
  isFlat = isFlat && end.memory <= warm.memory + std::max(warm.memory * kMemoryShare, kMemoryFloor);
#endif
  return isFlat;
}

int Soak(std::chrono::duration<double> length) {
  const CTemporaryFolder folder;  // of this process alone
  setenv("TMPDIR", folder.Path().c_str(), 1);
  const CSharedLibrary library(FindOwnModule().string());
  CHost host;
  const Tovrin::AutoRefPtr<CSwitchedHost> services(new CSwitchedHost);
  HandOver(library, host, services.get());
  const CModule module(host, FindOwnModule());
  CSoak soak(host, ReadLines(SourceDir() / "examples/requests.txt"));
  if (soak.Given() != kVerdicts)
    return std::puts("FAILED: the rules do not tell the lines apart"), 1;

  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) threads.emplace_back([&, i] { soak.Work(i); });
  std::atomic<bool> isOver = false;
  threads.emplace_back([&] { soak.KeepBodies(); });
  threads.emplace_back([&] {
    for (bool isOpen = true; !isOver; isOpen = !isOpen) {
      services->Open(isOpen);
      std::this_thread::sleep_for(kToggleEvery);
    }
  });

  const auto start = Clock::now();
  const auto replaceUntil = [&](std::chrono::duration<double> time) {
    for (std::size_t number = 1; Clock::now() - start < time; ++number) {
      soak.Replace(number);
      std::this_thread::sleep_for(kReplaceEvery);
    }
  };
  replaceUntil(length * 0.3);
  const Figures warm = soak.Measure();
  Print("warm", warm);
  replaceUntil(length);
  const Figures end = soak.Measure();
  Print("at the end", end);
  isOver = true;
  soak.End();
  for (std::thread& thread : threads) thread.join();

  std::printf("%llu answers were right, %llu wrong; %llu lines of log, %llu bodies on disk\n",
              static_cast<unsigned long long>(soak.Right()),
              static_cast<unsigned long long>(soak.Wrong()),
              static_cast<unsigned long long>(services->Lines()),
              static_cast<unsigned long long>(soak.Bodies()));
  if (soak.Wrong() > 0 || soak.Right() == 0) return std::puts("FAILED: the answers differ"), 1;
  if (services->Lines() == 0) return std::puts("FAILED: the log was never on"), 1;
  if (soak.Bodies() == 0) return std::puts("FAILED: no body was kept"), 1;
  if (!AreFlat(warm, end)) return std::puts("FAILED: the process grows"), 1;
  return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  return Soak(std::chrono::duration<double>(argumentCount > 1 ? std::atof(arguments[1]) : 60.0));
}
