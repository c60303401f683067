#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <optional>

#include "Common/CBuffer.h"
#include "Common/CChunkVisitors.h"
#include "Common/CFile.h"
#include "Common/CVariant.h"
#include "Libs/Platform/Streams.h"
#include "tools/tovrin/CChangedBody.h"
#include "tools/tovrin/COwnLog.h"
#include "tools/tovrin/Commands.h"
#include "tools/tovrin/Output.h"

namespace RefHost {
namespace {

// As grep ends.
constexpr auto kFound = ExitStatus::Success;
constexpr auto kNothingFound = ExitStatus::Environment;

constexpr std::string_view kStandardInput = "-";
constexpr std::size_t kOutputBlock = std::size_t{64} << 10;

struct FindOptions {
  std::optional<std::string> firstWord;  // the pattern, unless there are others: a file then
  std::vector<std::string> patterns;
  std::vector<std::string> files;
  std::optional<std::string> replacement;
  bool isHex = false;
  bool isCount = false;
  bool isQuiet = false;
};

// ---- what is looked for

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Blanks may part the bytes, not the two digits of one.
std::string BytesOfHex(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == ' ') {
      ++i;
      continue;
    }
    const int high = HexDigit(text[i]);
    const int low = i + 1 < text.size() ? HexDigit(text[i + 1]) : -1;
    if (high < 0 || low < 0) {
      throw std::runtime_error(fmt::format("'{}' is not hexadecimal: two digits a byte", text));
    }
    bytes += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return bytes;
}

// Sorts the words of the command line out, and reads them.
void Settle(FindOptions& options) {
  if (options.patterns.empty()) {
    if (!options.firstWord) throw std::runtime_error("a pattern is required");
    options.patterns = {*options.firstWord};
  } else if (options.firstWord) {
    options.files.insert(options.files.begin(), *options.firstWord);
  }
  if (options.files.empty()) options.files = {std::string(kStandardInput)};
  for (std::string& pattern : options.patterns) {
    if (options.isHex) pattern = BytesOfHex(pattern);
    if (pattern.empty()) throw std::runtime_error("an empty pattern is everywhere");
  }
  if (options.isHex && options.replacement) options.replacement = BytesOfHex(*options.replacement);
}

CUsePtr<CSearchVisitor> SearchFor(const std::vector<std::string>& patterns) {
  CVariant lengths(VariantType::LongList);
  std::vector<const void*> bytes;
  for (const std::string& pattern : patterns) {
    lengths.AddToList(static_cast<std::int64_t>(pattern.size()));
    bytes.push_back(pattern.data());
  }
  return MakeUseCounted<CSearchVisitor>(bytes.data(), &lengths);
}

// ---- where

// A file that cannot be searched or changed. The others still can.
class CFileFailure : public std::runtime_error {
public:
  CFileFailure(const char* action, const std::string& file, const std::string& reason)
      : std::runtime_error(fmt::format("cannot {} '{}': {}", action, file, reason)) {}
};

std::string SystemText(int code) {
  return std::error_code(code, std::generic_category()).message();
}

CUsePtr<CBuffer> ReadThrough(CInputStream& input, const std::string& file) {
  auto body = MakeUseCounted<CBuffer>();
  std::vector<char> block(kOutputBlock);
  while (const std::size_t count = input.Read(block.data(), block.size())) {
    if (!body->Append(block.data(), count)) {
      throw CFileFailure("read", file, "no room to keep its bytes");
    }
  }
  return body;
}

// A large file is searched where it is. All else is collected first: what comes through a pipe, and
// small files, some of which are none and tell a wrong size.
CUsePtr<CBuffer> OpenBody(const std::string& file, bool isToBeChanged) {
  try {
    CInputStream input(file);
    const auto size = input.Size();
    if (isToBeChanged && (file == kStandardInput || !size)) {
      throw CFileFailure("change", file, "not a regular file");
    }
    if (file == kStandardInput || size.value_or(0) <= GetGlobalSwapSize()) {
      return ReadThrough(input, file);
    }
  } catch (const std::system_error& error) {
    throw CFileFailure("read", file, error.code().message());
  }
  int code = 0;
  auto body = MakeUseCounted<CBuffer>(CFSPath(file), false, &code);
  if (code != 0) throw CFileFailure("read", file, SystemText(code));
  return body;
}

// The file behind a link is changed; the link stays.
void WriteBody(const std::string& file, CChangedBody& body) {
  constexpr const char* kAction = "change";
  // A whole file is written under a name in the platform's form, which this one would lose.
  if (file.find('\\') != std::string::npos) {
    throw CFileFailure(kAction, file, "there is a backslash in its name");
  }
  CBuffer* bytes = body.Finish();
  if (!bytes) throw CFileFailure(kAction, file, "its bytes could not all be read and kept");
  std::error_code error;
  const auto target = std::filesystem::canonical(file, error);
  if (error) throw CFileFailure(kAction, file, error.message());
  int code = 0;
  if (!CFile::WriteFile(target.string(), bytes, &code)) {
    throw CFileFailure(kAction, file, SystemText(code));
  }
}

// ---- finding

// Prints each hit of one file, and has it replaced.
class CHitPrinter final : public AHitVisitor {
public:
  CHitPrinter(CSearchVisitor& search, std::uint64_t size, const FindOptions& options,
              std::string_view name, CChangedBody* changes)
      : AHitVisitor(search, 0, size), fOptions(options), fName(name), fChanges(changes) {}

  std::uint64_t Count() const { return fCount; }
  bool WasEnded() const { return fIsEnded; }  // no more hits were wanted
  // Nobody reads the output any more.
  bool IsOutputClosed() const { return fIsOutputClosed; }
  void Flush() {
    if (!fIsOutputClosed) fIsOutputClosed = !WriteOutput(fOutput);
    fOutput.clear();
  }

private:
  bool OnHit(const Hit& hit) override {
    ++fCount;
    if (fChanges) fChanges->Replace(hit.offset, hit.length);
    if (!fOptions.isQuiet && !fOptions.isCount) {
      fmt::format_to(std::back_inserter(fOutput), "{}:{}:{}\n", fName, hit.offset, hit.index);
      if (fOutput.size() >= kOutputBlock) Flush();
    }
    fIsEnded = !fChanges && (fOptions.isQuiet || fIsOutputClosed);
    return !fIsEnded;
  }

  const FindOptions& fOptions;
  const std::string_view fName;
  CChangedBody* const fChanges;  // null when nothing is replaced
  std::string fOutput;
  std::uint64_t fCount = 0;
  bool fIsEnded = false;
  bool fIsOutputClosed = false;
};

// What came of all files so far.
struct Totals {
  bool hasFound = false;
  bool hasFailed = false;
  bool isOver = false;  // the files that are left do not matter any more
};

void FindInFile(const std::string& file, const FindOptions& options, Totals& totals) {
  const CUsePtr<CBuffer> body = OpenBody(file, options.replacement.has_value());
  const std::uint64_t size = body->GetSize();
  std::optional<CChangedBody> changes;
  if (options.replacement) changes.emplace(body, *options.replacement);
  const std::string name = file == kStandardInput ? "(standard input)" : file;
  const auto search = SearchFor(options.patterns);
  CHitPrinter hits(*search, size, options, name, changes ? &*changes : nullptr);
  body->VisitBuffer(hits, 0, size);
  hits.Flush();

  totals.hasFound = totals.hasFound || hits.Count() > 0;
  totals.isOver = hits.WasEnded() || (hits.IsOutputClosed() && !changes);
  if (!hits.WasEnded() && hits.GetPosition() != size) {
    throw CFileFailure("read", file, "it has become shorter, or its disk fails");
  }
  if (options.isCount && !options.isQuiet) {
    const std::string prefix = options.files.size() > 1 ? fmt::format("{}:", name) : "";
    WriteOutput(fmt::format("{}{}\n", prefix, hits.Count()));
  }
  if (changes && hits.Count() > 0) WriteBody(file, *changes);
}

ExitStatus Find(FindOptions options) {
  Settle(options);
  Totals totals;
  for (const std::string& file : options.files) {
    try {
      FindInFile(file, options, totals);
    } catch (const CFileFailure& failure) {
      WriteErrors(fmt::format("{}\n", failure.what()));
      totals.hasFailed = true;
    }
    if (totals.isOver) break;
  }
  if (totals.hasFailed && !(options.isQuiet && totals.isOver)) return kFailed;
  return totals.hasFound ? kFound : kNothingFound;
}

ExitStatus FindAndReport(const CommandLine& line, const FindOptions& options) {
  try {
    const COwnLog log(line.log);
    return Find(options);
  } catch (const std::exception& error) {
    WriteErrors(fmt::format("{}\n", error.what()));
  }
  return kFailed;
}

}  // namespace

void AddFindCommand(CommandLine& line) {
  CLI::App* command = line.application.add_subcommand(
      "find", "Prints where byte patterns are in files of any size, as FILE:OFFSET:INDEX");
  const auto options = std::make_shared<FindOptions>();
  command->add_option("PATTERN", options->firstWord,
                      "What to find, byte by byte; a file if there is an -e");
  command->add_option("FILE", options->files, "Files to search; standard input when left out");
  command
      ->add_option("-e,--pattern", options->patterns,
                   "What to find; with several, INDEX counts them from 0")
      ->allow_extra_args(false);
  command->add_option("--replace", options->replacement,
                      "Put this text in the place of each hit, and write the changed file");
  command->add_flag("--hex", options->isHex, "Patterns and text are hexadecimal digits");
  command->add_flag("-c,--count", options->isCount, "Print only how many hits a file has");
  command->add_flag("-q,--quiet", options->isQuiet, "Print nothing; the exit status tells");
  command->callback([&line, options] {
    line.action = [&line, options] { return FindAndReport(line, *options); };
  });
}

}  // namespace RefHost
