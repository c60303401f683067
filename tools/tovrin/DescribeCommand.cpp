#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "tools/tovrin/CModule.h"
#include "tools/tovrin/Commands.h"
#include "tools/tovrin/Output.h"
#include "tools/tovrin/ValueText.h"

namespace RefHost {
namespace {

std::string AsText(const CModule& module) {
  std::size_t nameWidth = 0;
  for (const auto& [name, text] : module.Descriptions()) {
    nameWidth = std::max(nameWidth, name.size());
  }
  std::string out;
  for (const auto& [name, text] : module.Descriptions()) {
    out += text.empty() ? fmt::format("{}\n", name)
                        : fmt::format("{:<{}}  {}\n", name, nameWidth, text);
  }

  std::size_t signatureWidth = 0;
  for (const DefinitionEntry& entry : module.Entries()) {
    signatureWidth = std::max(signatureWidth, entry.Signature().size());
  }
  out += '\n';
  for (const DefinitionEntry& entry : module.Entries()) {
    out += fmt::format("{:<14}  {:<{}}  {}\n", KeywordOf(entry.kind), entry.Signature(),
                       signatureWidth, entry.exportName);
  }
  return out;
}

void AppendMember(std::string& out, std::string_view name, std::string_view text) {
  if (out.back() != '{') out += ',';
  AppendJsonText(out, name);
  out += ':';
  AppendJsonText(out, text);
}

std::string AsJson(const CModule& module) {
  std::string out = "{\"descriptions\":{";
  for (const auto& [name, text] : module.Descriptions()) AppendMember(out, name, text);
  out += "},\"entries\":[";
  for (const DefinitionEntry& entry : module.Entries()) {
    if (out.back() != '[') out += ',';
    out += '{';
    AppendMember(out, "kind", KeywordOf(entry.kind));
    if (!entry.result.empty()) AppendMember(out, "result", entry.result);
    AppendMember(out, "name", entry.name);
    if (entry.kind != EntryKind::Type) {
      out += ",\"arguments\":[";
      for (const std::string& argument : entry.arguments) {
        if (out.back() != '[') out += ',';
        AppendJsonText(out, argument);
      }
      out += ']';
    }
    AppendMember(out, "export", entry.exportName);
    out += '}';
  }
  return out + "]}\n";
}

}  // namespace

void AddDescribeCommand(CommandLine& line) {
  CLI::App* command = line.application.add_subcommand(
      "describe", "Prints what the module says about itself, and its types and functions");
  const auto asJson = std::make_shared<bool>(false);
  command->add_flag("--json", *asJson, "As one JSON object");
  command->callback([&line, asJson] {
    line.action = [&line, asJson] {
      CHost host(line.log);
      const CModule module(host, line.Module());
      WriteOutput(*asJson ? AsJson(module) : AsText(module));
      return ExitStatus::Success;
    };
  });
}

}  // namespace RefHost
