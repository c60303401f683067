#include "tools/tovrin/CModuleLog.h"

#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "tools/tovrin/Output.h"

namespace RefHost {
namespace {

constexpr std::string_view kScope = "::";

// One class's function is meant where the selection names a class and the question knows it.
bool Selects(std::string_view selection, std::string_view className, std::string_view function) {
  const std::size_t scope = selection.rfind(kScope);
  if (scope == std::string_view::npos) return selection == function;
  if (selection.substr(scope + kScope.size()) != function) return false;
  return className.empty() || selection.substr(0, scope) == className;
}

}  // namespace

bool LogSettings::Select(std::string_view text) {
  const char* const end = text.data() + text.size();
  std::uint32_t number = 0;
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || (rest != end && *rest != ',')) return false;

  std::vector<std::string> names;
  for (const char* position = rest; position != end;) {
    const char* const next = std::find(++position, end, ',');
    if (position == next) return false;
    names.emplace_back(position, next);
    position = next;
  }
  level = number;
  functions = std::move(names);
  return true;
}

CModuleLog::CModuleLog(LogSettings settings) : fSettings(std::move(settings)) {
  if (fSettings.file.empty()) return;

  fFile.reset(std::fopen(fSettings.file.c_str(), "a"));
  const int code = errno;
  if (!fFile) {
    throw std::runtime_error(fmt::format("cannot write to log file '{}': {}",
                                         fSettings.file.string(), std::strerror(code)));
  }
}

bool CModuleLog::IsFunctionOn(std::string_view className, std::string_view function) const {
  return fSettings.functions.empty() ||
         std::ranges::any_of(fSettings.functions, [&](std::string_view selection) {
           return Selects(selection, className, function);
         });
}

void CModuleLog::Write(std::string_view line) const {
  if (!fFile) return WriteErrors(line);

  std::fwrite(line.data(), 1, line.size(), fFile.get());
  std::fflush(fFile.get());  // what led to a crash is in the file
}

}  // namespace RefHost
