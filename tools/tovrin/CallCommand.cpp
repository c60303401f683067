#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <vector>

#include "tools/tovrin/CEvaluation.h"
#include "tools/tovrin/CModule.h"
#include "tools/tovrin/Commands.h"
#include "tools/tovrin/HostFunctions.h"
#include "tools/tovrin/Output.h"
#include "tools/tovrin/Parser.h"
#include "tools/tovrin/ValueText.h"

namespace RefHost {
namespace {

// All statements are compiled before the first is evaluated, so a mistake in the last one shows
// before anything has happened.
ExitStatus Call(const CommandLine& line, const std::string& source) {
  struct Step {
    std::unique_ptr<AEvaluation> evaluation;
    Variable* variable;  // null for an expression alone
  };

  CHost host(line.log);
  AddPolicyFunction(host, line.isCustomersPolicy);
  const CModule module(host, line.Module());
  const CTransaction transaction = host.NewTransaction("call");
  CScope scope;
  std::vector<Step> steps;
  for (const Statement& statement : ParseStatements(source)) {
    if (statement.name.empty()) {
      steps.push_back({Compile(statement.value, scope, transaction), nullptr});
      continue;
    }
    auto evaluation = CompileValue(statement.value, scope, transaction);
    Variable& variable = scope.Define(statement.name, evaluation->Type());
    steps.push_back({std::move(evaluation), &variable});
  }

  Tovrin::IVariant* result = nullptr;
  for (const Step& step : steps) {
    result = step.evaluation->Evaluate();
    if (step.variable != nullptr) step.variable->value = Tovrin::Share(result);
  }
  if (result != nullptr) WriteOutput(JsonOf(*result, transaction) + '\n');
  return ExitStatus::Success;
}

ExitStatus CallAndReport(const CommandLine& line, const std::string& source) {
  try {
    return Call(line, source);
  } catch (const CSourceError& error) {
    const Position where = error.Where();
    const std::string place =
        where.line == 1 ? std::string() : fmt::format("line {}, ", where.line);
    WriteErrors(fmt::format("{}column {}: {}\n", place, where.column, error.what()));
    return ExitStatus::Source;
  } catch (const CCallFailure& failure) {
    WriteErrors(fmt::format("{}\n", failure.what()));
    return failure.Status();
  }
}

}  // namespace

void AddCallCommand(CommandLine& line) {
  CLI::App* command = line.application.add_subcommand(
      "call", "Evaluates statements and prints the last one's result as JSON");
  const auto source = std::make_shared<std::string>();
  command->add_option("STATEMENTS", *source, "Statements, separated by ';'")->required();
  command->callback(
      [&line, source] { line.action = [&line, source] { return CallAndReport(line, *source); }; });
}

}  // namespace RefHost
