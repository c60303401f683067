#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/HostSlot.h"
#include "host/IHost.h"
#include "host/InterfaceImpl.h"

// What the host answers at each gate.
struct Gates {
  bool active = true;
  bool level = true;
  bool function = true;
};

inline std::string Describe(const Gates& gates) {
  return std::string("active ") + (gates.active ? "yes" : "no") + ", level " +
         (gates.level ? "yes" : "no") + ", function " + (gates.function ? "yes" : "no");
}

struct PrintedLine {
  std::uint32_t level;
  std::string module, className, function, file;
  std::uint32_t line;
  std::string message;
  bool operator==(const PrintedLine&) const = default;
};

struct PrintedError {
  std::string module, message, empty, errorId, className, function;
  std::int32_t zero;
  bool operator==(const PrintedError&) const = default;
};

// Puts a host into the process's slot for the time of a test, and takes it out again.
template <class Host>
class InSlot {
public:
  template <class... Arguments>
  explicit InSlot(Arguments... arguments) : fHost(new Host(arguments...)) {
    fHost->AddRef();
    Tovrin::HostSlot.store(fHost);
  }
  ~InSlot() {
    Tovrin::HostSlot.store(nullptr);
    fHost->Release();
    fHost->Release();
  }
  InSlot(const InSlot&) = delete;
  InSlot& operator=(const InSlot&) = delete;

  static constexpr std::int32_t kReferences = 2;  // the slot's and this one's

  Host* Get() const { return fHost; }
  Host* operator->() const { return fHost; }

private:
  Host* fHost;
};

enum class Throwing { Standard, Other };

// A host that keeps every question it is asked, in order, and throws where it is told to.
//
// Lines come from any thread; the fields are read when no thread logs any more.
class QuestionedHost : public Tovrin::InterfaceImpl<Tovrin::IHost> {
public:
  explicit QuestionedHost(Gates gates) : fGates(gates) {}

  // The operation throws its own name, as a runtime_error or as something else, that many times.
  void ThrowFrom(const std::string& operation, Throwing kind, int times) {
    fThrowing = kind;
    fThrowCounts[operation] = times;
  }
  void ThrowFromAll(Throwing kind) {
    fThrowing = kind;
    fAllThrow = true;
  }

  std::vector<std::string> fQuestions;
  std::vector<PrintedLine> fPrinted;
  std::vector<PrintedError> fErrors;
  std::vector<std::string> fConfigurations;

private:
  void Interface_PrintError(const char* module, const char* message, const char* empty,
                            const char* errorId, const char* className, const char* function,
                            std::int32_t zero) override {
    const std::lock_guard guard(fLock);
    Enter("PrintError", "PrintError");
    fErrors.push_back({module, message, empty, errorId, className, function, zero});
  }
  void Interface_PrintDebug(std::uint32_t level, const char* module, const char* className,
                            const char* function, const char* file, std::uint32_t line,
                            const char* message) override {
    const std::lock_guard guard(fLock);
    Enter("PrintDebug", "PrintDebug");
    fPrinted.push_back({level, module, className, function, file, line, message});
  }
  bool Interface_IsDebugActive() const override {
    return Ask("IsDebugActive", "IsDebugActive", fGates.active);
  }
  bool Interface_IsFunctionLevelEnabled(std::uint32_t level, const char* module,
                                        const char* function) const override {
    return Ask("IsFunctionLevelEnabled",
               Numbered("IsFunctionLevelEnabled", level, module) + " " + function, fGates.function);
  }
  bool Interface_IsLevelEnabled(std::uint32_t level, const char* module) const override {
    return Ask("IsLevelEnabled", Numbered("IsLevelEnabled", level, module), fGates.level);
  }
  void Interface_ApplyDebugConfiguration(const char* configuration) override {
    const std::lock_guard guard(fLock);
    Enter("ApplyDebugConfiguration", "ApplyDebugConfiguration");
    fConfigurations.emplace_back(configuration);
  }

  static std::string Numbered(const char* operation, std::uint32_t level, const char* module) {
    return std::string(operation) + " " + std::to_string(level) + " " + module;
  }
  bool Ask(const char* operation, const std::string& question, bool answer) const {
    const std::lock_guard guard(fLock);
    const_cast<QuestionedHost*>(this)->Enter(operation, question);
    return answer;
  }
  void Enter(const std::string& operation, const std::string& question) {
    if (fAllThrow || fThrowCounts[operation]-- > 0) Throw(operation);
    fQuestions.push_back(question);
  }
  [[noreturn]] void Throw(const std::string& operation) const {
    if (fThrowing == Throwing::Standard) throw std::runtime_error(operation);
    throw 42;
  }

  const Gates fGates;
  mutable std::mutex fLock;  // guards all that follows, and the lists above
  Throwing fThrowing = Throwing::Standard;
  bool fAllThrow = false;
  std::map<std::string, int> fThrowCounts;  // by operation, how many times it still throws
};

using HostInSlot = InSlot<QuestionedHost>;
