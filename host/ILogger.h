#pragma once

#include <cstdint>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IJSON.h"
#include "host/IObject.h"

namespace Tovrin {

// The host's log. Any text is copied before the call returns.
class TOVRIN_API ILogger : public IObject {
public:
  bool IsDebugLogEnabled(const char* module, std::uint32_t level) const {
    return Interface_IsDebugLogEnabled(module, level);
  }
  void DebugLog(const char* module, std::uint32_t level, const AutoRefPtr<IJSON>& json,
                std::uint32_t transactionId, IContext* context) {
    Interface_DebugLog(module, level, json.get(), transactionId, context);
  }
  void DebugLog(const char* module, std::uint32_t level, const char* text,
                std::uint32_t transactionId, IContext* context) {
    Interface_DebugLog(module, level, text, transactionId, context);
  }
  void SetDebugActivated(bool on) { Interface_SetDebugActivated(on); }
  void SetDebugLogLevel(std::uint32_t level) { Interface_SetDebugLogLevel(level); }
  void SetDebugLogLevelDefinition(const char* text) { Interface_SetDebugLogLevelDefinition(text); }
  void SetErrorActivated(bool on) { Interface_SetErrorActivated(on); }
  void ErrorLog(const char* module, const AutoRefPtr<IJSON>& json, std::uint32_t transactionId,
                IContext* context) {
    Interface_ErrorLog(module, json.get(), transactionId, context);
  }
  void ErrorLog(const char* module, const char* text, std::uint32_t transactionId,
                IContext* context) {
    Interface_ErrorLog(module, text, transactionId, context);
  }
  bool CreateUserDefinedLog(const char* name, const char* data) {
    return Interface_CreateUserDefinedLog(name, data);
  }
  bool HasUserDefinedLog(const char* name) const { return Interface_HasUserDefinedLog(name); }
  bool IsUserDefinedLogEnabled(const char* name) const {
    return Interface_IsUserDefinedLogEnabled(name);
  }
  void DeleteUserDefinedLog(const char* name) { Interface_DeleteUserDefinedLog(name); }
  void UserDefinedLog(const char* name, std::uint32_t level, const AutoRefPtr<IJSON>& json,
                      std::uint32_t transactionId, IContext* context) {
    Interface_UserDefinedLog(name, level, json.get(), transactionId, context);
  }
  void UserDefinedLog(const char* name, std::uint32_t level, const char* text,
                      std::uint32_t transactionId, IContext* context) {
    Interface_UserDefinedLog(name, level, text, transactionId, context);
  }

protected:
  ~ILogger() = default;

private:  // Contract: the host calls these by position
  virtual bool Interface_IsDebugLogEnabled(const char* module, std::uint32_t level) const = 0;
  virtual void Interface_DebugLog(const char* module, std::uint32_t level, IJSON* json,
                                  std::uint32_t transactionId, IContext* context) = 0;
  virtual void Interface_DebugLog(const char* module, std::uint32_t level, const char* text,
                                  std::uint32_t transactionId, IContext* context) = 0;
  virtual void Interface_SetDebugActivated(bool on) = 0;
  virtual void Interface_SetDebugLogLevel(std::uint32_t level) = 0;
  virtual void Interface_SetDebugLogLevelDefinition(const char* text) = 0;
  virtual void Interface_SetErrorActivated(bool on) = 0;
  virtual void Interface_ErrorLog(const char* module, IJSON* json, std::uint32_t transactionId,
                                  IContext* context) = 0;
  virtual void Interface_ErrorLog(const char* module, const char* text, std::uint32_t transactionId,
                                  IContext* context) = 0;
  virtual bool Interface_CreateUserDefinedLog(const char* name, const char* data) = 0;
  virtual bool Interface_HasUserDefinedLog(const char* name) const = 0;
  virtual bool Interface_IsUserDefinedLogEnabled(const char* name) const = 0;
  virtual void Interface_DeleteUserDefinedLog(const char* name) = 0;
  virtual void Interface_UserDefinedLog(const char* name, std::uint32_t level, IJSON* json,
                                        std::uint32_t transactionId, IContext* context) = 0;
  virtual void Interface_UserDefinedLog(const char* name, std::uint32_t level, const char* text,
                                        std::uint32_t transactionId, IContext* context) = 0;
};

}  // namespace Tovrin
