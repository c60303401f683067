#include "tools/tovrin/objects/CHostServices.h"

#include <fmt/core.h>

#include <charconv>
#include <cstdio>
#include <string_view>
#include <system_error>

#include "host/IJSON.h"
#include "tools/tovrin/Output.h"

namespace RefHost {
namespace {

constexpr std::uint32_t kErrorLevel = 1;

std::string_view View(const char* text) {
  return text != nullptr ? text : std::string_view();
}

std::string TextOf(const Tovrin::IJSON* json) {
  return json != nullptr ? json->ToString("") : std::string();
}

}  // namespace

void CHostServices::Interface_PrintError(const char* module, const char* message,
                                         const char* /*empty*/, const char* errorId,
                                         const char* className, const char* function,
                                         std::int32_t /*zero*/) {
  fLog.Write(fmt::format("error {} in {}, {}::{}: {}\n", View(errorId), View(module),
                         View(className), View(function), View(message)));
}

void CHostServices::Interface_PrintDebug(std::uint32_t level, const char* module,
                                         const char* className, const char* function,
                                         const char* file, std::uint32_t line,
                                         const char* message) {
  // The gate did not know the class.
  if (level != kErrorLevel && !fLog.IsFunctionOn(View(className), View(function))) return;
  fLog.Write(fmt::format("debug {} in {}, {}::{} ({}:{}): {}\n", level, View(module),
                         View(className), View(function), View(file), line, View(message)));
}

bool CHostServices::Interface_IsFunctionLevelEnabled(std::uint32_t level, const char* /*module*/,
                                                     const char* function) const {
  return fLog.IsLevelOn(level) && fLog.IsFunctionOn({}, View(function));
}

bool CHostLogger::Interface_IsDebugLogEnabled(const char* /*module*/, std::uint32_t level) const {
  return fIsDebugOn && level <= fDebugLevel;
}

void CHostLogger::Interface_DebugLog(const char* module, std::uint32_t level, Tovrin::IJSON* json,
                                     std::uint32_t transactionId, Tovrin::IContext* context) {
  if (!Interface_IsDebugLogEnabled(module, level)) return;
  Interface_DebugLog(module, level, TextOf(json).c_str(), transactionId, context);
}

void CHostLogger::Interface_DebugLog(const char* module, std::uint32_t level, const char* text,
                                     std::uint32_t transactionId, Tovrin::IContext* /*context*/) {
  if (!Interface_IsDebugLogEnabled(module, level)) return;
  WriteErrors(fmt::format("debug {} in {}, transaction {}: {}\n", level, View(module),
                          transactionId, View(text)));
}

// The definition is the highest level as a number; anything else leaves the level as it is.
void CHostLogger::Interface_SetDebugLogLevelDefinition(const char* text) {
  const std::string_view definition = View(text);
  std::uint32_t level = 0;
  const char* const end = definition.data() + definition.size();
  const auto [next, error] = std::from_chars(definition.data(), end, level);
  if (error == std::errc() && next == end) fDebugLevel = level;
}

void CHostLogger::Interface_ErrorLog(const char* module, Tovrin::IJSON* json,
                                     std::uint32_t transactionId, Tovrin::IContext* context) {
  if (fIsErrorOn) Interface_ErrorLog(module, TextOf(json).c_str(), transactionId, context);
}

void CHostLogger::Interface_ErrorLog(const char* module, const char* text,
                                     std::uint32_t transactionId, Tovrin::IContext* /*context*/) {
  if (!fIsErrorOn) return;
  WriteErrors(
      fmt::format("error in {}, transaction {}: {}\n", View(module), transactionId, View(text)));
}

bool CHostLogger::Interface_CreateUserDefinedLog(const char* name, const char* data) {
  const std::lock_guard lock(fLock);
  return fUserLogs.emplace(View(name), View(data)).second;
}

bool CHostLogger::Interface_HasUserDefinedLog(const char* name) const {
  const std::lock_guard lock(fLock);
  return fUserLogs.contains(std::string(View(name)));
}

bool CHostLogger::Interface_IsUserDefinedLogEnabled(const char* name) const {
  return Interface_HasUserDefinedLog(name);
}

void CHostLogger::Interface_DeleteUserDefinedLog(const char* name) {
  const std::lock_guard lock(fLock);
  fUserLogs.erase(std::string(View(name)));
}

void CHostLogger::Interface_UserDefinedLog(const char* name, std::uint32_t level,
                                           Tovrin::IJSON* json, std::uint32_t transactionId,
                                           Tovrin::IContext* context) {
  Interface_UserDefinedLog(name, level, TextOf(json).c_str(), transactionId, context);
}

void CHostLogger::Interface_UserDefinedLog(const char* name, std::uint32_t level, const char* text,
                                           std::uint32_t transactionId,
                                           Tovrin::IContext* /*context*/) {
  if (!Interface_HasUserDefinedLog(name)) return;
  WriteErrors(
      fmt::format("{} {}, transaction {}: {}\n", View(name), level, transactionId, View(text)));
}

}  // namespace RefHost
