#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/IModuleInfo.h"
#include "host/ModuleFunction.h"
#include "tools/tovrin/CTypeTable.h"
#include "tools/tovrin/Definition.h"

namespace RefHost {

// A function or procedure that can be called: its declaration, and where it is.
struct BoundFunction {
  DefinitionEntry declaration;
  Tovrin::TypeId result = 0;  // 0 for a procedure
  std::vector<Tovrin::TypeId> arguments;
  Tovrin::ModuleFunction address = nullptr;
  // Handed over with each call. Borrowed from who registered the function, who takes it out first.
  Tovrin::IModuleInfo* info = nullptr;

  bool IsProcedure() const { return declaration.kind == EntryKind::Procedure; }
  // "function 'Size'" or "procedure 'Tessarin.Add'", as failures call it.
  std::string Title() const;
  // "invalid parameter 2 in function 'Size'", for a status that is not 0.
  std::string WordsFor(Tovrin::FunctionStatus status) const;
};

// A declaration with its types looked up; where the function is, the caller fills in. Throws
// CDefinitionError for a type that is not known.
BoundFunction Bind(const CTypeTable& types, DefinitionEntry declaration);

// All functions and procedures by name, the host's own and those of modules.
//
// Grows while modules register; after that any thread may read. Entries keep their addresses until
// they are removed.
class CFunctionTable {
public:
  // False when a function of that name and those arguments is there already.
  bool Add(BoundFunction function);
  // Takes out all functions that carry one of these infos.
  void Remove(const std::vector<const Tovrin::IModuleInfo*>& infos);

  bool Has(const std::string& name) const;

  // The function that a call with arguments of these types means: the one that they fit, or else
  // the one that the most leading arguments fit, the earliest on a tie. Null only for an unknown
  // name.
  const BoundFunction* Choose(const std::string& name,
                              const std::vector<Tovrin::TypeId>& arguments) const;

  // The function of exactly this declaration, its arguments written "STRING,NUMBER"; or null.
  const BoundFunction* FindExact(std::string_view name, std::string_view result,
                                 std::string_view arguments) const;

private:
  std::unordered_map<std::string, std::deque<BoundFunction>> fByName;  // each in order of arrival
};

}  // namespace RefHost
