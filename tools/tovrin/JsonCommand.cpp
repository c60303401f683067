#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "Common/CUseCounted.h"
#include "json/JsonMsgPack.h"
#include "json/JsonParser.h"
#include "json/JsonWriter.h"
#include "tools/tovrin/Commands.h"
#include "tools/tovrin/Output.h"
#include "tools/tovrin/SourceText.h"

namespace RefHost {
namespace {

struct JsonOptions {
  std::string form = "compact";
  std::string indent = "  ";
  bool keepsOrder = true;
};

std::string Written(const Tovrin::JSON::JsonValue& value, const JsonOptions& options) {
  std::string output;
  if (options.form == "msgpack") {
    if (!ToMsgPack(value, output)) throw std::runtime_error("too large for MsgPack");
    return output;  // bytes alone: a line end would be one too many
  }
  WriteText(value, output, options.form == "indented" ? options.indent : std::string());
  return output + '\n';
}

ExitStatus Convert(const JsonOptions& options) {
  Tovrin::JSON::JsonParseContext context;
  context.DetectMsgPack = true;
  context.KeepKeyOrder = options.keepsOrder;
  const CUsePtr<Tovrin::JSON::JsonValue> value(Tovrin::JSON::Parse(ReadSource("-"), &context));
  if (!value) {
    WriteErrors(fmt::format("line {}: {}\n", context.Line, context.ErrorMessage));
    return ExitStatus::Environment;
  }
  WriteOutput(Written(*value, options));
  return ExitStatus::Success;
}

}  // namespace

void AddJsonCommand(CommandLine& line) {
  CLI::App* command = line.application.add_subcommand(
      "json", "Writes the JSON or MsgPack of standard input in another form");
  const auto options = std::make_shared<JsonOptions>();
  command->add_option("--to", options->form, "compact, indented or msgpack")
      ->check(CLI::IsMember({"compact", "indented", "msgpack"}))
      ->capture_default_str();
  command->add_option("--indent", options->indent, "What each level is indented by");
  command->add_flag("--keep-order,!--no-keep-order", options->keepsOrder,
                    "Keys stay in the order of the input; on unless negated");
  command->callback([&line, options] { line.action = [options] { return Convert(*options); }; });
}

}  // namespace RefHost
