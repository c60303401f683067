#include "tests/tools/TovrinProgram.h"

#include "tests/support/SharedData.h"
#include "tests/tools/TestModules.h"

ChildResult Tovrin(std::vector<std::string> arguments, std::string input) {
  ChildCall call;
  call.command = std::move(arguments);
  call.command.insert(call.command.begin(), (BinDir() / "tovrin").string());
  call.input = std::move(input);
  return RunChild(call);
}

ChildResult TovrinWith(const std::string& module, std::vector<std::string> arguments,
                       std::string input) {
  arguments.insert(arguments.end(), {"--module", TestModule(module).string()});
  return Tovrin(std::move(arguments), std::move(input));
}
