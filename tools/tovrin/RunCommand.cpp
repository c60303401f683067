#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <system_error>

#include "Libs/Platform/Streams.h"
#include "tools/tovrin/CLineBlocks.h"
#include "tools/tovrin/CModule.h"
#include "tools/tovrin/CProgress.h"
#include "tools/tovrin/CRuleSet.h"
#include "tools/tovrin/CRunner.h"
#include "tools/tovrin/Commands.h"
#include "tools/tovrin/HostFunctions.h"
#include "tools/tovrin/Output.h"
#include "tools/tovrin/SourceText.h"

namespace RefHost {
namespace {

struct RunOptions {
  std::string rulesPath;
  std::string inputPath = "-";
  std::size_t threadCount = 1;
  bool isSummary = false;
  bool isFailFast = false;
};

// Judges blocks of lines for one thread.
class CRuleJudge {
public:
  CRuleJudge(const CRuleSet& rules, const CTransaction& transaction, const RunOptions& options)
      : fRules(rules), fEngine(rules, transaction), fOptions(options) {}

  BlockResult operator()(const LineBlock& block) {
    BlockResult result;
    result.bytes = block.bytes.size();
    result.counts.resize(fRules.Verdicts().size());
    if (!fOptions.isSummary) result.output.reserve(block.bytes.size() * 2);
    ForEachLine(block.bytes, [&](std::string_view line) {
      const CRuleEngine::Judgement judgement = fEngine.Judge(line);
      ++result.counts[judgement.verdict];
      if (!fOptions.isSummary) {
        result.output.append(fRules.Verdicts()[judgement.verdict]).append(1, '\t');
        result.output.append(line).append(1, '\n');
      }
      if (judgement.failedRule != nullptr) {
        result.errors += fmt::format("{}:{}: input line {}: {}\n", fOptions.rulesPath,
                                     judgement.failedRule->where.line,
                                     block.firstLine + result.lines, judgement.words);
        result.isLast = fOptions.isFailFast;
        ++result.failures;
      }
      ++result.lines;
      return !result.isLast;
    });
    return result;
  }

private:
  const CRuleSet& fRules;
  CRuleEngine fEngine;
  const RunOptions& fOptions;
};

// The counts of the file's verdicts, and of the run's own where there are any.
std::string Summary(const CRuleSet& rules, const RunTotals& totals) {
  std::string summary;
  for (std::size_t i = 0; i < rules.Verdicts().size(); ++i) {
    const std::uint64_t count = i < totals.counts.size() ? totals.counts[i] : 0;
    if (count == 0 && i >= rules.OwnVerdictCount()) continue;
    summary += fmt::format("{}\t{}\n", rules.Verdicts()[i], count);
  }
  return summary;
}

ExitStatus RunRules(const CHost& host, const CRuleSet& rules, const RunOptions& options) {
  CInputStream input(options.inputPath);
  CLineBlocks blocks(input);
  CProgress progress(ErrorStreamIsTerminal(), input.Size());
  const auto makeJudge = [&]() -> BlockJudge {
    // Shared, since a BlockJudge can be copied.
    const auto judge = std::make_shared<CRuleJudge>(rules, host.NewTransaction("run"), options);
    return [judge](const LineBlock& block) { return (*judge)(block); };
  };

  const RunTotals totals = CRunner(blocks, makeJudge, progress).Run(options.threadCount);
  const double seconds = progress.Seconds();
  progress.Hide();
  bool isOutputClosed = totals.isOutputClosed;
  if (options.isSummary && !isOutputClosed) isOutputClosed = !WriteOutput(Summary(rules, totals));
  if (!isOutputClosed) {
    WriteErrors(fmt::format("{} lines in {:.3f} s, {:.0f} lines/s\n", totals.lines, seconds,
                            static_cast<double>(totals.lines) / std::max(seconds, 1e-9)));
  }
  return totals.failures > 0 ? ExitStatus::Exception : ExitStatus::Success;
}

ExitStatus RunAndReport(const CommandLine& line, const RunOptions& options) {
  const auto report = [&](Position where, const char* words) {
    WriteErrors(fmt::format("{}:{}:{}: {}\n", options.rulesPath, where.line, where.column, words));
  };
  try {
    CHost host(line.log);
    AddPolicyFunction(host, line.isCustomersPolicy);
    const CModule module(host, line.Module());
    const CRuleSet rules(CleanSource(ReadSource(options.rulesPath)), host.NewTransaction("load"));
    return RunRules(host, rules, options);
  } catch (const CSourceError& error) {
    report(error.Where(), error.what());
    return ExitStatus::Source;
  } catch (const CCallFailure& failure) {
    report(failure.where, failure.what());
    return failure.Status();
  } catch (const std::system_error& error) {
    WriteErrors(CannotRead(options.inputPath, error) + '\n');
    return ExitStatus::Environment;
  }
}

}  // namespace

void AddRunCommand(CommandLine& line) {
  CLI::App* command =
      line.application.add_subcommand("run", "Gives each line of the input a verdict by rules");
  const auto options = std::make_shared<RunOptions>();
  command->add_option("RULES", options->rulesPath, "Rules file; '-' is standard input")->required();
  command->add_option("INPUT", options->inputPath, "Lines to judge; standard input when left out");
  command->add_flag("--summary", options->isSummary, "Print only how many lines got each verdict");
  command->add_flag("--fail-fast", options->isFailFast, "Stop at the first line a rule fails on");
  command->add_option("--threads", options->threadCount, "Threads that evaluate; order is kept")
      ->check(CLI::Range(std::size_t{1}, std::size_t{1024}));
  command->callback([&line, options] {
    line.action = [&line, options] { return RunAndReport(line, *options); };
  });
}

}  // namespace RefHost
