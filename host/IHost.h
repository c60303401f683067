#pragma once

#include <cstddef>
#include <cstdint>

#include "host/IObject.h"

namespace Tovrin {

// The bridge to the process's log and file services; reached through HostSlot alone.
//
// Any thread may call it, and any member may throw. What it is given is borrowed for the call.
class TOVRIN_API IHost : public IObject {
public:
  void PrintError(const char* module, const char* message, const char* empty, const char* errorId,
                  const char* className, const char* function, std::int32_t zero) {
    Interface_PrintError(module, message, empty, errorId, className, function, zero);
  }
  void PrintDebug(std::uint32_t level, const char* module, const char* className,
                  const char* function, const char* file, std::uint32_t line, const char* message) {
    Interface_PrintDebug(level, module, className, function, file, line, message);
  }
  bool IsDebugActive() const { return Interface_IsDebugActive(); }
  bool IsFunctionLevelEnabled(std::uint32_t level, const char* module, const char* function) const {
    return Interface_IsFunctionLevelEnabled(level, module, function);
  }
  bool IsLevelEnabled(std::uint32_t level, const char* module) const {
    return Interface_IsLevelEnabled(level, module);
  }
  void ApplyDebugConfiguration(const char* configuration) {
    Interface_ApplyDebugConfiguration(configuration);
  }
  void ReportFatalError(const char* text) { Interface_ReportFatalError(text); }
  bool GetTemporaryFile(char* path, std::size_t pathSize, char* directory,
                        std::size_t directorySize, std::uint32_t* flags) {
    return Interface_GetTemporaryFile(path, pathSize, directory, directorySize, flags);
  }

protected:
  ~IHost() = default;

private:  // Contract: the host calls these by position
  virtual void Interface_PrintError(const char* module, const char* message, const char* empty,
                                    const char* errorId, const char* className,
                                    const char* function, std::int32_t zero) = 0;
  virtual void Interface_PrintDebug(std::uint32_t level, const char* module, const char* className,
                                    const char* function, const char* file, std::uint32_t line,
                                    const char* message) = 0;
  virtual bool Interface_IsDebugActive() const = 0;
  virtual bool Interface_IsFunctionLevelEnabled(std::uint32_t level, const char* module,
                                                const char* function) const = 0;
  virtual bool Interface_IsLevelEnabled(std::uint32_t level, const char* module) const = 0;
  virtual void Interface_ApplyDebugConfiguration(const char* configuration) = 0;
  // Behind the contract slots; a host may leave the defaults.
  virtual void Interface_ReportFatalError(const char* text) {
    Interface_PrintError("Tessarin", text, "", "OutOfMemory", "", "", 0);
  }
  virtual bool Interface_GetTemporaryFile(char*, std::size_t, char*, std::size_t, std::uint32_t*) {
    return false;
  }
};

}  // namespace Tovrin
