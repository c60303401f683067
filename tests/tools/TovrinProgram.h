#pragma once

#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"

// The program as a user starts it. Without --module among the arguments it uses its own module.
ChildResult Tovrin(std::vector<std::string> arguments, std::string input = {});

// The same with the module of that name from tests/tools/modules/.
ChildResult TovrinWith(const std::string& module, std::vector<std::string> arguments,
                       std::string input = {});
