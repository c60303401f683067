#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "Common/CRegexException.h"
#include "Common/CUnicodeString.h"
#include "Libs/Platform/Streams.h"
#include "tools/tovrin/CLineBlocks.h"
#include "tools/tovrin/CListFile.h"
#include "tools/tovrin/COwnLog.h"
#include "tools/tovrin/CProgress.h"
#include "tools/tovrin/CRunner.h"
#include "tools/tovrin/Commands.h"
#include "tools/tovrin/Output.h"

namespace RefHost {
namespace {

// As grep ends.
constexpr auto kSelected = ExitStatus::Success;
constexpr auto kNothingSelected = ExitStatus::Environment;

struct MatchOptions {
  std::string listPath;
  std::string inputPath = "-";
  std::size_t threadCount = 1;
  bool isInverted = false;
  bool isCount = false;
  bool isQuiet = false;
  bool isNumbered = false;
  bool isNaming = false;
  bool isAnchored = false;
};

// Where a run counts its lines.
enum Count : std::size_t { kSelectedLines, kFailedLines, kCounts };

// Asks the list about blocks of lines.
class CListJudge {
public:
  CListJudge(const CRegexVectorHolder& list, const MatchOptions& options)
      : fList(list), fOptions(options) {}

  BlockResult operator()(const LineBlock& block) const {
    BlockResult result;
    result.bytes = block.bytes.size();
    result.counts.resize(kCounts);
    ForEachLine(block.bytes, [&](std::string_view line) {
      const std::uint64_t number = block.firstLine + result.lines++;
      try {
        CUsePtr<CUnicodeString> element;
        const bool isHit = fList.Find(line, fOptions.isNaming ? &element : nullptr);
        if (isHit != fOptions.isInverted) {
          ++result.counts[kSelectedLines];
          Print(number, element, line, result.output);
          result.isLast = fOptions.isQuiet;
        }
      } catch (const CRegexException& failure) {
        ++result.counts[kFailedLines];
        result.errors += fmt::format("input line {}: {}\n", number, failure.Reason());
      }
      return !result.isLast;
    });
    return result;
  }

private:
  void Print(std::uint64_t number, const CUsePtr<CUnicodeString>& element, std::string_view line,
             std::string& output) const {
    if (fOptions.isQuiet || fOptions.isCount) return;
    if (fOptions.isNumbered) output += fmt::format("{}:", number);
    if (element) output.append(element->Text().Utf8()).append(1, '\t');
    output.append(line).append(1, '\n');
  }

  const CRegexVectorHolder& fList;
  const MatchOptions& fOptions;
};

ExitStatus MatchInput(const CRegexVectorHolder& list, const MatchOptions& options) {
  CInputStream input(options.inputPath);
  CLineBlocks blocks(input);
  CProgress progress(ErrorStreamIsTerminal(), input.Size());
  const auto makeJudge = [&]() -> BlockJudge { return CListJudge(list, options); };
  const RunTotals totals = CRunner(blocks, makeJudge, progress).Run(options.threadCount);
  progress.Hide();
  const std::uint64_t selected = totals.counts.empty() ? 0 : totals.counts[kSelectedLines];
  if (options.isCount && !options.isQuiet && !totals.isOutputClosed) {
    WriteOutput(fmt::format("{}\n", selected));
  }
  if (!totals.counts.empty() && totals.counts[kFailedLines] > 0) return kFailed;
  return selected > 0 ? kSelected : kNothingSelected;
}

ExitStatus MatchAndReport(const CommandLine& line, const MatchOptions& options) {
  try {
    const COwnLog log(line.log);
    const CListFile file(options.listPath, options.isAnchored);
    const auto list = file.Build();
    if (!list->IsUnusable()) return MatchInput(*list, options);
    WriteErrors(DescribeFaults(file));
  } catch (const std::system_error& error) {
    WriteErrors(CannotRead(options.inputPath, error) + '\n');
  } catch (const std::exception& error) {
    WriteErrors(fmt::format("{}\n", error.what()));
  }
  return kFailed;
}

}  // namespace

void AddMatchCommand(CommandLine& line) {
  CLI::App* command = line.application.add_subcommand(
      "match", "Prints the lines of the input that match a list, as grep does");
  const auto options = std::make_shared<MatchOptions>();
  command->add_option("LIST", options->listPath, "List file, an element a line")->required();
  command->add_option("FILE", options->inputPath, "Lines to match; standard input when left out");
  command->add_flag("-v,--invert-match", options->isInverted, "Select the lines that do not match");
  command->add_flag("-c,--count", options->isCount, "Print only how many lines were selected");
  command->add_flag("-q,--quiet", options->isQuiet, "Print nothing; the exit status tells");
  command->add_flag("-n,--line-number", options->isNumbered, "Put the line's number in front");
  command->add_flag("--which", options->isNaming,
                    "Put the element that matched in front, with a tab");
  command->add_flag("--anchor", options->isAnchored,
                    "Every line of the list is an expression for whole texts");
  command->add_option("--threads", options->threadCount, "Threads that match; order is kept")
      ->check(CLI::Range(std::size_t{1}, std::size_t{1024}));
  command->callback([&line, options] {
    line.action = [&line, options] { return MatchAndReport(line, *options); };
  });
}

}  // namespace RefHost
