#pragma once

#include <string>
#include <vector>

// What a run of the program left behind.
struct ProgramResult {
  int status = -1;     // the exit status; -1 when it did not exit by itself
  std::string output;  // standard output
  std::string errors;  // standard error
};

// Runs the tovrin of this build with these arguments and an empty standard input.
ProgramResult RunProgram(const std::vector<std::string>& arguments);
