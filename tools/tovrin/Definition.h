#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace RefHost {

enum class EntryKind { Type, ConstFunction, Function, Procedure };

// One entry of a module's definition text.
struct DefinitionEntry {
  EntryKind kind = EntryKind::Type;
  std::string result;  // a type's name; empty for a type and a procedure
  std::string name;
  std::vector<std::string> arguments;  // types' names
  std::string exportName;

  // As in the text: "BOOLEAN Tessarin.Search (Tessarin,STRING)".
  std::string Signature() const;
};

// A definition text that does not keep to its grammar; the text says where and why.
class CDefinitionError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Reads a definition text, which is one line without terminators:
//
//   text       = entry { entry }
//   entry      = " TYPE " name " : " export
//              | (" CONST_FUNCTION " | " FUNCTION ") type " " name " (" types ") : " export
//              | " PROCEDURE " name " (" types ") : " export
//   types      = [ type { "," type } ]
//   type       = name | "VECTOR<" name ">" | "MAP<" name "," name ">"
//
// More than one blank where one is due is taken as one. Throws CDefinitionError.
std::vector<DefinitionEntry> ParseDefinition(std::string_view text);

std::string_view KeywordOf(EntryKind kind);

}  // namespace RefHost
