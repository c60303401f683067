#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <exception>

#include "Libs/Platform/Streams.h"
#include "tools/tovrin/CModule.h"
#include "tools/tovrin/Commands.h"
#include "tools/tovrin/Output.h"

namespace RefHost {
namespace {

ExitStatus PrintVersions(const CommandLine& line) {
  WriteOutput(
      fmt::format("tovrin {}, host interfaces {}\n", TESSARIN_VERSION, CModule::kHostVersion));
  CHost host(line.log);
  const CModule module(host, line.Module());
  WriteOutput(fmt::format("module {}, host interfaces {}\n", module.Description("GetModuleVersion"),
                          module.Description("GetModuleTovrinVersion")));
  return ExitStatus::Success;
}

void AddLogOptions(CommandLine& line) {
  line.application
      .add_option_function<std::string>(
          "--log",
          [&line](const std::string& text) {
            if (line.log.Select(text)) return;
            throw CLI::ValidationError("--log",
                                       "'" + text + "' is not LEVEL or LEVEL,FUNCTION,...");
          },
          "Print what the module logs up to this level; above 1, errors, only of these functions")
      ->type_name("LEVEL[,FUNCTION...]");
  line.application.add_option("--log-file", line.log.file, "Append the log to this file")
      ->type_name("PATH");
}

ExitStatus Run(int argumentCount, char** arguments) {
  CLI::App application("Loads a module of the Tovrin rule engine and evaluates rules with it",
                       "tovrin");
  CommandLine line{application, {}, {}, {}, {}};
  application.fallthrough();  // options of the program may stand behind the command
  application.add_option("--module", line.modulePath, "The module to load, if not the own one");
  AddLogOptions(line);
  application.add_flag("--customer-policy", line.isCustomersPolicy,
                       "Tell modules that the rules belong to a customer");
  bool wantsVersion = false;
  application.add_flag("--version", wantsVersion, "Print the versions of program and module");
  AddCallCommand(line);
  AddCheckCommand(line);
  AddDescribeCommand(line);
  AddFindCommand(line);
  AddJsonCommand(line);
  AddMatchCommand(line);
  AddRunCommand(line);

  try {
    application.parse(argumentCount, arguments);
  } catch (const CLI::ParseError& error) {
    return application.exit(error) == 0 ? ExitStatus::Success : ExitStatus::Source;
  }
  if (wantsVersion) return PrintVersions(line);
  if (line.action) return line.action();
  WriteErrors(application.help());
  return ExitStatus::Source;
}

ExitStatus RunAndReport(int argumentCount, char** arguments) {
  try {
    return Run(argumentCount, arguments);
  } catch (const std::exception& error) {
    WriteErrors(fmt::format("{}\n", error.what()));
    return ExitStatus::Environment;
  }
}

}  // namespace

std::filesystem::path CommandLine::Module() const {
  return modulePath.empty() ? FindOwnModule() : std::filesystem::path(modulePath);
}

}  // namespace RefHost

int main(int argumentCount, char** arguments) {
  ReserveStandardStreams();
  ReportClosedPipes();
  return static_cast<int>(RefHost::RunAndReport(argumentCount, arguments));
}
