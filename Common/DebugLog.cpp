#include "Common/DebugLog.h"

#include <array>
#include <cstring>
#include <locale>
#include <mutex>
#include <string_view>
#include <utility>

#include "Libs/Platform/ErrorStream.h"
#include "Libs/Platform/ErrorTexts.h"
#include "Libs/Platform/StackTrace.h"
#include "Libs/Threads/CCriticalSection.h"
#include "host/HostSlot.h"
#include "host/IHost.h"

namespace {

constexpr std::uint32_t kErrorLevel = 1;  // the gates below DebugIsActive are not asked about it

void PrintWithoutHost(const char* kind, const char* message) {
  std::string line("Could not get IHost while trying to ");
  line.append(kind).append(" message '").append(message).append("'\n");
  ErrorStream() << line << std::flush;  // in one piece, since other threads may print as well
}

// Cuts every stretch from a last opening mark to the first closing one behind it.
void ErasePairs(char* text, char opening, char closing) {
  while (char* const from = std::strrchr(text, opening)) {
    const char* const to = std::strchr(from, closing);
    if (to == nullptr) return;
    std::memmove(from, to + 1, std::strlen(to + 1) + 1);
  }
}

const char* BehindLastBlank(const char* text) {
  const char* const blank = std::strrchr(text, ' ');
  return blank == nullptr ? text : blank + 1;
}

// A signature in its two parts. A name of usual length stays on the stack, since a line that is off
// for its function must not allocate either.
class FunctionParts {
public:
  explicit FunctionParts(const char* signature) {
    const std::size_t size = std::strlen(signature) + 1;
    if (size > fShort.size()) fLong.resize(size);
    char* const text = size > fShort.size() ? fLong.data() : fShort.data();
    std::memcpy(text, signature, size);
    Split(text);
  }
  FunctionParts(const FunctionParts&) = delete;
  FunctionParts& operator=(const FunctionParts&) = delete;

  const char* ClassName() const { return fClassName; }
  const char* Function() const { return fFunction; }

private:
  void Split(char* text) {
    ErasePairs(text, '<', '>');
    ErasePairs(text, '[', ']');
    if (char* const parameters = std::strchr(text, '(')) *parameters = '\0';

    const std::size_t last = std::string_view(text).rfind(kScope);
    if (last == std::string_view::npos) {
      fFunction = BehindLastBlank(text);
      return;
    }
    text[last] = '\0';
    fFunction = text + last + kScope.size();
    const std::size_t previous = std::string_view(text).rfind(kScope);
    const std::size_t skipped = previous == std::string_view::npos ? 0 : previous + kScope.size();
    fClassName = BehindLastBlank(text + skipped);
  }

  static constexpr std::string_view kScope = "::";

  std::array<char, 256> fShort;
  std::string fLong;            // used when fShort is too small
  const char* fClassName = "";  // into one of the two, as fFunction
  const char* fFunction = "";
};

constexpr std::size_t kMaxFrames = 61;  // of which the first is the backtrace itself

std::string FrameLine(std::size_t index, std::uintptr_t address) {
  const StackSymbol symbol = FindSymbol(address);
  std::ostringstream line;
  line.imbue(std::locale::classic());
  line << "*** " << index << ": " << address << ' ' << symbol.name << " - 0x" << std::hex
       << symbol.address;
  return std::move(line).str();
}

void ReportLockFailure(const char* function, int code) {
  constexpr const char* kReporter = "CCriticalSection::CCriticalSection";
  constexpr const char* kFile = "Libs\\Threads\\CCriticalSection";
  constexpr const char* kRow = "ErrorId::OS";
  qxGuardedSite(
      kRow, PrintError({kErrorLevel, kReporter, kFile, __LINE__}, ErrorId::OS, kRow,
                       {{"function", function}, {"code", code}, {"string", OSErrorText(code)}}););
}

// The locks lie below this layer; from here on it hears of those that could not be made.
struct LockReports {
  LockReports() { CCriticalSection::SetFailureReporter(&ReportLockFailure); }
};
[[gnu::init_priority(300)]] const LockReports lockReports;

// What the host answers, held for so long; without a host the other answer. A host that throws from
// Release, too, is one that throws: no destructor may come upon it.
template <class Answer, class Question>
Answer AskHost(Answer withoutHost, Question question) {
  Tovrin::IHost* const host = Tovrin::GetHost().release();
  if (host == nullptr) return withoutHost;

  Answer answer;
  try {
    answer = question(*host);
  } catch (...) {
    host->Release();
    throw;
  }
  host->Release();
  return answer;
}

// Whether there is a host that it could be done with.
template <class Action>
bool TellHost(Action action) {
  return AskHost(false, [&action](Tovrin::IHost& host) {
    action(host);
    return true;
  });
}

void ApplyToFile(const char* path, const char* options) {
  TellHost([&](Tovrin::IHost& host) {
    host.ApplyDebugConfiguration(("file:out=" + std::string(path) + options).c_str());
  });
}

}  // namespace

bool DebugIsActive() {
  return AskHost(true, [](Tovrin::IHost& host) { return host.IsDebugActive(); });
}

bool DebugLevelEnabled(std::uint32_t level, const char* module) {
  return level == kErrorLevel ||
         AskHost(true, [=](Tovrin::IHost& host) { return host.IsLevelEnabled(level, module); });
}

bool DebugFunctionEnabled(std::uint32_t level, const char* module, const char* function) {
  return level == kErrorLevel || AskHost(true, [=](Tovrin::IHost& host) {
           return host.IsFunctionLevelEnabled(level, module, function);
         });
}

void DebugPrint(std::uint32_t level, const char* module, const char* className,
                const char* function, const char* file, std::uint32_t line, const char* message) {
  const bool isPrinted = TellHost([=](Tovrin::IHost& host) {
    host.PrintDebug(level, module, className, function, file, line, message);
  });
  if (!isPrinted) PrintWithoutHost("print/resolve debug", message);
}

void ErrorPrint(const char* module, const char* message, const char* errorId, const char* className,
                const char* function) {
  const bool isPrinted = TellHost([=](Tovrin::IHost& host) {
    host.PrintError(module, message, "", errorId, className, function, 0);
  });
  if (!isPrinted) PrintWithoutHost("print error", message);
}

void DebugToFileAppend(const char* path) {
  ApplyToFile(path, ";options:file=append;threadids:ALL=no,THIS=yes");
}

void DebugToFileOff(const char* path) {
  ApplyToFile(path, ";options:file=off");
}

const char* GetModuleName() {
  return "Tessarin";
}

void SplitFunctionName(const char* signature, std::string& className, std::string& function) {
  const FunctionParts parts(signature);
  className = parts.ClassName();
  function = parts.Function();
}

[[gnu::noinline]] void WriteBacktrace(std::ostream& stream) {
  std::array<std::uintptr_t, kMaxFrames> frames;
  WriteBacktraceOf(stream, {frames.data(), CaptureStack(frames)});
}

void WriteBacktraceOf(std::ostream& stream, std::span<const std::uintptr_t> frames) {
  static CCriticalSection lock;  // some systems' symbol engines serve one thread at a time

  std::string text("\n--backtrace start--");
  {
    const std::lock_guard guard(lock);
    for (std::size_t i = 1; i < frames.size(); ++i) text += '\n' + FrameLine(i, frames[i]);
  }
  // Contract: a stack of the backtrace's own frame alone prints neither lines nor the mark.
  if (frames.empty()) text += "\n -EMPTY-";
  text += "\n--backtrace end--";
  stream << text;
}

void ReportLogFailure(const std::exception* exception, const char* text, const char* expression) {
  std::string message("caught exception '");
  if (exception != nullptr) message += exception->what();
  if (exception != nullptr && text != nullptr) message += " - ";
  if (text != nullptr) message += text;
  message += "' in qxDebugPrint while trying to print debug message '";
  message.append(expression).append("'");
  DebugPrint(kErrorLevel, "", "", "", "", 0, message.c_str());
}

bool LogSite::IsOn() const {
  if (!DebugIsActive()) return false;
  if (!DebugLevelEnabled(level, GetModuleName())) return false;
  return DebugFunctionEnabled(level, GetModuleName(), FunctionParts(function).Function());
}

void LogSite::Print(const char* message) const {
  const FunctionParts parts(function);
  DebugPrint(level, GetModuleName(), parts.ClassName(), parts.Function(), file, line, message);
}

LogLine::LogLine(const LogSite& site) : fSite(site) {
  fText.imbue(std::locale::classic());
}

void PrintReport(const LogSite& site, const CErrorId& row, const CErrorParameters& parameters) {
  site.Print(Resolve(GetDefaultLanguage(), row.Id(), parameters).c_str());
}

// Two logs, and a guard for each: the one that fails keeps nothing from the other.
void PrintError(const LogSite& site, const CErrorId& row, const char* expression,
                const CErrorParameters& parameters) {
  const std::string message = Resolve(GetDefaultLanguage(), row.Id(), parameters);
  const FunctionParts parts(site.function);
  qxGuardedSite(expression, ErrorPrint(GetModuleName(), message.c_str(), row.Id().c_str(),
                                       parts.ClassName(), parts.Function()););
  if (site.IsOn()) site.Print(message.c_str());
}

void SiteFailed(const std::exception* exception, const char* text, const char* expression) {
  try {
    ReportLogFailure(exception, text, expression);
  } catch (...) {
    // The host cannot even take this line; what was being logged about goes on undisturbed.
  }
}
