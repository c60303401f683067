#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

// One entry of a definition text, as a host reads it.
struct DefinitionEntry {
  std::string keyword;
  std::string result;  // empty: a type or a procedure
  std::string name;
  std::vector<std::string> arguments;
  std::string function;  // the export that implements it
};

// Reads a whole definition text by its grammar; throws std::runtime_error where it departs from it.
std::vector<DefinitionEntry> ReadDefinition(std::string_view text);

// The C names that cmake/exports.map lists.
std::set<std::string> NamesOfTheVersionScript();
