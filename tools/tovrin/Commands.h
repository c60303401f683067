#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include <CLI/CLI.hpp>

#include "tools/tovrin/CModuleLog.h"
#include "tools/tovrin/Failure.h"

// The subcommands of the program, one file each. A command declares its options on the application
// and stores what is to be done when it was chosen.
namespace RefHost {

// Of the commands that end as grep does: something could not be read, or had no answer.
inline constexpr auto kFailed = ExitStatus::Source;

// What all commands share.
struct CommandLine {
  CLI::App& application;
  std::string modulePath;              // as given with --module; empty for the program's own
  LogSettings log;                     // of --log and --log-file
  bool isCustomersPolicy = false;      // what the host tells modules that ask
  std::function<ExitStatus()> action;  // what was chosen; set while the command line is read

  std::filesystem::path Module() const;  // throws CModuleError when there is none
};

void AddCallCommand(CommandLine& line);
void AddCheckCommand(CommandLine& line);
void AddDescribeCommand(CommandLine& line);
void AddFindCommand(CommandLine& line);
void AddJsonCommand(CommandLine& line);
void AddMatchCommand(CommandLine& line);
void AddRunCommand(CommandLine& line);

}  // namespace RefHost
