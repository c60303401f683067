#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <string>

#include "host/IHost.h"
#include "host/ILogger.h"
#include "host/InterfaceImpl.h"
#include "tools/tovrin/CModuleLog.h"

namespace RefHost {

// The host's process-wide services for modules: what they report as errors, and as much of their
// debug log as the settings let through.
//
// Lives on the heap and outlives the modules that hold it: a module drops its reference only when
// it is unloaded. Any thread may call.
class CHostServices final : public Tovrin::InterfaceImpl<Tovrin::IHost> {
public:
  // Throws std::runtime_error when the log's file cannot be opened.
  explicit CHostServices(const LogSettings& settings) : fLog(settings) {}

private:
  void Interface_PrintError(const char* module, const char* message, const char* empty,
                            const char* errorId, const char* className, const char* function,
                            std::int32_t zero) override;
  void Interface_PrintDebug(std::uint32_t level, const char* module, const char* className,
                            const char* function, const char* file, std::uint32_t line,
                            const char* message) override;
  bool Interface_IsDebugActive() const override { return fLog.IsOn(); }
  bool Interface_IsFunctionLevelEnabled(std::uint32_t level, const char* module,
                                        const char* function) const override;
  bool Interface_IsLevelEnabled(std::uint32_t level, const char* /*module*/) const override {
    return fLog.IsLevelOn(level);
  }
  void Interface_ApplyDebugConfiguration(const char* /*configuration*/) override {}

  const CModuleLog fLog;
};

// The logger that contexts and module infos hand out; lines go to standard error. The error log is
// on; the debug log is off until it is activated, and then lets through levels up to the set one.
// User-defined logs are there by name, and on as long as they exist. Any thread may call.
class CHostLogger final : public Tovrin::InterfaceImpl<Tovrin::ILogger> {
private:
  bool Interface_IsDebugLogEnabled(const char* module, std::uint32_t level) const override;
  void Interface_DebugLog(const char* module, std::uint32_t level, Tovrin::IJSON* json,
                          std::uint32_t transactionId, Tovrin::IContext* context) override;
  void Interface_DebugLog(const char* module, std::uint32_t level, const char* text,
                          std::uint32_t transactionId, Tovrin::IContext* context) override;
  void Interface_SetDebugActivated(bool on) override { fIsDebugOn = on; }
  void Interface_SetDebugLogLevel(std::uint32_t level) override { fDebugLevel = level; }
  void Interface_SetDebugLogLevelDefinition(const char* text) override;
  void Interface_SetErrorActivated(bool on) override { fIsErrorOn = on; }
  void Interface_ErrorLog(const char* module, Tovrin::IJSON* json, std::uint32_t transactionId,
                          Tovrin::IContext* context) override;
  void Interface_ErrorLog(const char* module, const char* text, std::uint32_t transactionId,
                          Tovrin::IContext* context) override;
  bool Interface_CreateUserDefinedLog(const char* name, const char* data) override;
  bool Interface_HasUserDefinedLog(const char* name) const override;
  bool Interface_IsUserDefinedLogEnabled(const char* name) const override;
  void Interface_DeleteUserDefinedLog(const char* name) override;
  void Interface_UserDefinedLog(const char* name, std::uint32_t level, Tovrin::IJSON* json,
                                std::uint32_t transactionId, Tovrin::IContext* context) override;
  void Interface_UserDefinedLog(const char* name, std::uint32_t level, const char* text,
                                std::uint32_t transactionId, Tovrin::IContext* context) override;

  std::atomic<bool> fIsDebugOn{false};
  std::atomic<bool> fIsErrorOn{true};
  std::atomic<std::uint32_t> fDebugLevel{1};
  mutable std::mutex fLock;
  std::map<std::string, std::string> fUserLogs;  // name to data; guarded by fLock
};

}  // namespace RefHost
