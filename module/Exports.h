#pragma once

#include <cstdint>

#include "host/IUserDefinedType.h"
#include "host/ModuleFunction.h"

// Everything that the host finds by name: the C half of cmake/exports.map, as declarations.
//
// The first group the host calls by names that it knows, the rest by those that the definition text
// gives it. None of them is noexcept: a standard exception may leave a module function and must
// reach the host.

#define TESSARIN_EXPORT __attribute__((visibility("default")))

// Declares or opens one function or procedure of the rule language, with the arguments of
// Tovrin::ModuleFunction by name. A procedure has no use for the result.
#define qxModuleFunction(name)                                                    \
  extern "C" TESSARIN_EXPORT Tovrin::FunctionStatus name(                         \
      std::uint32_t argumentCount, Tovrin::IVariant* const* arguments,            \
      [[maybe_unused]] Tovrin::IVariant* result, Tovrin::IModuleInfo* moduleInfo, \
      Tovrin::IContext* context)

// Declares or opens the factory of one type: a new object with one reference, which the host owns.
#define qxTypeFactory(name) \
  extern "C" TESSARIN_EXPORT Tovrin::IUserDefinedType* name(std::uint32_t typeId)

extern "C" {

// What the module says about itself. The texts live as long as the library.
TESSARIN_EXPORT const char* GetTovrinSDKVersion();
TESSARIN_EXPORT const char* GetModuleTovrinVersion();
TESSARIN_EXPORT const char* GetModuleVersion();
TESSARIN_EXPORT const char* GetDownwardsCompatibility();
TESSARIN_EXPORT const char* GetSDKDependency();
TESSARIN_EXPORT const char* GetState();
TESSARIN_EXPORT const char* GetSupportedPlatforms();
TESSARIN_EXPORT const char* GetTovrinModuleName();
TESSARIN_EXPORT const char* GetModuleDependencies();
TESSARIN_EXPORT const char* GetModuleDependenciesOptional();
TESSARIN_EXPORT const char* GetModuleDependenciesLoadBefore();
TESSARIN_EXPORT const char* GetOptionalFunctionDependencies();
TESSARIN_EXPORT const char* GetOptionalProcedureDependencies();
TESSARIN_EXPORT const char* GetAlternativeFunctionDependencies();
TESSARIN_EXPORT const char* GetAlternativeProcedureDependencies();

// The definition text, owned by the module. The first call must not race with another.
TESSARIN_EXPORT const char* GetModuleDefinition();

// The host's start and stop. RegistrationDoneWithReturn comes when the host has read the definition
// text and knows both type names; 0 is success.
TESSARIN_EXPORT int RegisterModule();
TESSARIN_EXPORT int RegistrationDoneWithReturn(Tovrin::IModuleInfo* moduleInfo);
TESSARIN_EXPORT int OnShutdown();
TESSARIN_EXPORT void DeregisterModule();

}  // extern "C"

qxTypeFactory(tovrin_module_CreateTessarin);
qxTypeFactory(tovrin_module_CreateTessarinList);

// In the order of the definition text, which has their signatures.
qxModuleFunction(tovrin_module_StringListToRegExList);
qxModuleFunction(tovrin_module_MatchesInList);
qxModuleFunction(tovrin_module_Size);
qxModuleFunction(tovrin_module_Get);
qxModuleFunction(tovrin_module_GetElems);
qxModuleFunction(tovrin_module_Find);
qxModuleFunction(tovrin_module_AddToRegExList);
qxModuleFunction(tovrin_module_AddToRegExListRE);
qxModuleFunction(tovrin_module_Remove);
qxModuleFunction(tovrin_module_RemoveElems);
qxModuleFunction(tovrin_module_Reverse);
qxModuleFunction(tovrin_module_AppendToRegExList);
qxModuleFunction(tovrin_module_AppendRegExToRegExList);
qxModuleFunction(tovrin_module_Contains);
qxModuleFunction(tovrin_module_Join);
qxModuleFunction(tovrin_module_RemoveListFromList);
qxModuleFunction(tovrin_module_Insert);
qxModuleFunction(tovrin_module_Set);
qxModuleFunction(tovrin_module_StringToRegEx);
qxModuleFunction(tovrin_module_GlobToRegEx);
qxModuleFunction(tovrin_module_RegExToString);
qxModuleFunction(tovrin_module_RegExListToString_Deprecated);
qxModuleFunction(tovrin_module_RegExListToString);
qxModuleFunction(tovrin_module_SetSorted);
qxModuleFunction(tovrin_module_ReplaceFirstMatch);
qxModuleFunction(tovrin_module_ReplaceFirstMatchString);
qxModuleFunction(tovrin_module_ReplaceAllMatches);
qxModuleFunction(tovrin_module_ReplaceAllMatchesString);
qxModuleFunction(tovrin_module_RegExMatches);
qxModuleFunction(tovrin_module_MatchesTwoStrings);
qxModuleFunction(tovrin_module_WildcardMatch);
qxModuleFunction(tovrin_module_SearchAllMatches);
qxModuleFunction(tovrin_module_FindAll);
qxModuleFunction(tovrin_module_Search);
qxModuleFunction(tovrin_module_TessarinSetIHost);
