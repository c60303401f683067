#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace RefHost {

// Which lines of the modules' debug log are wanted, and where these and the error log go.
struct LogSettings {
  std::uint32_t level = 0;             // the highest that is printed; 0 closes the debug log
  std::vector<std::string> functions;  // "Create" or "CRegex::Create"; none stands for all
  std::filesystem::path file;          // is appended to; empty for standard error

  // Takes level and functions from "LEVEL[,FUNCTION...]". Returns false, and changes nothing, when
  // the text has another form.
  bool Select(std::string_view text);
};

// The gates and the printer of what modules log. Any thread may ask and write.
//
// Modules ask no gate about a line at level 1, an error, but whether the log is on at all; so it is
// printed whatever functions are selected.
class CModuleLog {
public:
  // Throws std::runtime_error when the file cannot be opened.
  explicit CModuleLog(LogSettings settings);

  bool IsOn() const { return fSettings.level > 0; }
  bool IsLevelOn(std::uint32_t level) const { return level <= fSettings.level; }
  // className may be empty, where the gate does not know it.
  bool IsFunctionOn(std::string_view className, std::string_view function) const;

  // One whole line, ended by a line feed, in one piece.
  void Write(std::string_view line) const;

private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  const LogSettings fSettings;
  std::unique_ptr<std::FILE, CloseFile> fFile;  // null for standard error
};

}  // namespace RefHost
