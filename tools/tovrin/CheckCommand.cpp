#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <memory>

#include "tools/tovrin/CListFile.h"
#include "tools/tovrin/CListPlan.h"
#include "tools/tovrin/CListReview.h"
#include "tools/tovrin/CListSample.h"
#include "tools/tovrin/COwnLog.h"
#include "tools/tovrin/Commands.h"
#include "tools/tovrin/Output.h"

namespace RefHost {
namespace {

constexpr auto kUnusable = ExitStatus::Environment;

using Dump = void (CRegexVectorHolder::*)(std::vector<std::string>&) const;

// An option that prints one of the diagnostics.
struct DumpOption {
  const char* name;
  const char* help;
  Dump dump;
};

constexpr DumpOption kDumps[] = {
    {"--scanners", "Print the merged scanners", &CRegexVectorHolder::DumpScanners},
    {"--prefixes", "Print the beginnings that elements were grouped by",
     &CRegexVectorHolder::DumpExtracted},
    {"--tree", "Print the trees that the beginnings were found in",
     &CRegexVectorHolder::DumpRadixTrees},
    {"--tokens", "Print the tokens that the elements were cut into",
     &CRegexVectorHolder::DumpSplitted},
    {"--times", "Print the times of the build's steps", &CRegexVectorHolder::DumpTimeMeasurements},
};

struct CheckOptions {
  std::string listPath;
  bool isAnchored = false;
  bool isPlan = false;
  std::string samplePath;  // texts to measure the list with; or empty
  bool dumps[std::size(kDumps)] = {};
};

std::string DescribeFindings(const CListFile& file, const CListReview& review) {
  std::string text;
  for (const CListReview::Finding& finding : review.Findings()) {
    const ListElement& element = file.Elements()[finding.element];
    text += fmt::format("{}:{}: {}: {}\n", file.Path(), element.line, element.text, finding.words);
  }
  return text;
}

ExitStatus Check(const CheckOptions& options) {
  const CListFile file(options.listPath, options.isAnchored);
  SetRegexHolderDiagnostics(true);
  const auto start = std::chrono::steady_clock::now();
  const auto holder = file.Build();
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  SetRegexHolderDiagnostics(false);

  const CListReview review(file);
  std::string text = DescribeFindings(file, review);
  if (holder->IsUnusable() && text.empty()) text = DescribeFaults(file);
  for (std::size_t i = 0; i < std::size(kDumps); ++i) {
    if (!options.dumps[i]) continue;
    std::vector<std::string> lines;
    (holder.get()->*kDumps[i].dump)(lines);
    text += fmt::format("{}\n", fmt::join(lines, "\n"));
  }
  if (options.isPlan) text += CListPlan(*holder).Describe();
  if (!options.samplePath.empty()) text += CListSample(*holder, options.samplePath).Describe();

  const CListReview::Kinds& kinds = review.Counts();
  const std::size_t memory = holder->Matcher() ? holder->Matcher()->MemorySize() : 0;
  text += fmt::format("{} elements: {} literal, {} other wildcards, {} expressions\n",
                      file.Elements().size(), kinds.literals, kinds.wildcards, kinds.expressions);
  text += fmt::format("{} scanners, built in {:.3f} s; its matcher starts with {} bytes\n",
                      holder->Entries().size(), seconds.count(), memory);
  text += holder->IsUnusable() ? "the list cannot be used\n" : "the list can be used\n";
  WriteOutput(text);
  return holder->IsUnusable() ? kUnusable : ExitStatus::Success;
}

ExitStatus CheckAndReport(const CommandLine& line, const CheckOptions& options) {
  try {
    const COwnLog log(line.log);
    return Check(options);
  } catch (const std::exception& error) {
    WriteErrors(fmt::format("{}\n", error.what()));
    return kFailed;
  }
}

}  // namespace

void AddCheckCommand(CommandLine& line) {
  CLI::App* command = line.application.add_subcommand(
      "check", "Tells what is wrong with a list before it goes live");
  const auto options = std::make_shared<CheckOptions>();
  command->add_option("LIST", options->listPath, "List file, an element a line")->required();
  command->add_flag("--anchor", options->isAnchored,
                    "Every line of the list is an expression for whole texts");
  command->add_flag("--plan", options->isPlan, "Print how each element is answered");
  command->add_option("--sample", options->samplePath,
                      "Measure the list on the lines of a file, and print what they cost");
  for (std::size_t i = 0; i < std::size(kDumps); ++i) {
    command->add_flag(kDumps[i].name, options->dumps[i], kDumps[i].help);
  }
  command->callback([&line, options] {
    line.action = [&line, options] { return CheckAndReport(line, *options); };
  });
}

}  // namespace RefHost
