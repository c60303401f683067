// The way to the functions for programs that are linked with the module's objects.

#include <map>
#include <stdexcept>

#include "module/Exports.h"
#include "tests/module/ModuleCalls.h"

#define qxRow(function) \
  { #function, reinterpret_cast < void*>(&function) }

void* ModuleSymbol(const std::string& name) {
  static const std::map<std::string, void*> kSymbols = {
      qxRow(DeregisterModule),
      qxRow(GetModuleDefinition),
      qxRow(OnShutdown),
      qxRow(RegisterModule),
      qxRow(RegistrationDoneWithReturn),
      qxRow(tovrin_module_AddToRegExList),
      qxRow(tovrin_module_AddToRegExListRE),
      qxRow(tovrin_module_AppendRegExToRegExList),
      qxRow(tovrin_module_AppendToRegExList),
      qxRow(tovrin_module_Contains),
      qxRow(tovrin_module_CreateTessarin),
      qxRow(tovrin_module_CreateTessarinList),
      qxRow(tovrin_module_Find),
      qxRow(tovrin_module_FindAll),
      qxRow(tovrin_module_Get),
      qxRow(tovrin_module_GetElems),
      qxRow(tovrin_module_GlobToRegEx),
      qxRow(tovrin_module_Insert),
      qxRow(tovrin_module_Join),
      qxRow(tovrin_module_MatchesInList),
      qxRow(tovrin_module_MatchesTwoStrings),
      qxRow(tovrin_module_RegExListToString),
      qxRow(tovrin_module_RegExListToString_Deprecated),
      qxRow(tovrin_module_RegExMatches),
      qxRow(tovrin_module_RegExToString),
      qxRow(tovrin_module_Remove),
      qxRow(tovrin_module_RemoveElems),
      qxRow(tovrin_module_RemoveListFromList),
      qxRow(tovrin_module_ReplaceAllMatches),
      qxRow(tovrin_module_ReplaceAllMatchesString),
      qxRow(tovrin_module_ReplaceFirstMatch),
      qxRow(tovrin_module_ReplaceFirstMatchString),
      qxRow(tovrin_module_Reverse),
      qxRow(tovrin_module_Search),
      qxRow(tovrin_module_SearchAllMatches),
      qxRow(tovrin_module_Set),
      qxRow(tovrin_module_SetSorted),
      qxRow(tovrin_module_Size),
      qxRow(tovrin_module_StringListToRegExList),
      qxRow(tovrin_module_StringToRegEx),
      qxRow(tovrin_module_TessarinSetIHost),
      qxRow(tovrin_module_WildcardMatch),
  };
  const auto found = kSymbols.find(name);
  if (found == kSymbols.end()) throw std::runtime_error("the module does not have " + name);
  return found->second;
}
