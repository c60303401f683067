#pragma once

#include <set>
#include <string>

// What the program says about itself with --help, for the tests of what must name all of it.

// The names of the subcommands.
std::set<std::string> Subcommands();

// The options of one subcommand, or of the program for an empty name: "-v", "--invert-match".
std::set<std::string> OptionsOf(const std::string& subcommand);
