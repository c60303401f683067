// A host calls the exports through types of its own, which no compiler holds against ours: here
// stands what those types are. A signature that is changed does not compile.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <type_traits>

#include "module/Exports.h"
#include "tests/module/DefinitionEntries.h"

namespace {

static_assert(std::is_same_v<Tovrin::FunctionStatus, std::uint32_t>);
static_assert(std::is_same_v<Tovrin::TypeId, std::uint32_t>);
static_assert(
    std::is_same_v<Tovrin::ModuleFunction,
                   std::uint32_t (*)(std::uint32_t argumentCount,
                                     Tovrin::IVariant* const* arguments, Tovrin::IVariant* result,
                                     Tovrin::IModuleInfo* moduleInfo, Tovrin::IContext* context)>);

using Text = const char* (*)();
using Answer = int (*)();
using Registration = int (*)(Tovrin::IModuleInfo*);
using Stop = void (*)();
using Factory = Tovrin::IUserDefinedType* (*)(std::uint32_t typeId);
using Function = Tovrin::ModuleFunction;

// The name of an export, which does not compile with another type than this.
#define qxExport(type, name) (static_cast<void>(type{&name}), #name)

// clang-format off
const std::set<std::string> kExports = {
    qxExport(Text, GetTovrinSDKVersion),
    qxExport(Text, GetModuleTovrinVersion),
    qxExport(Text, GetModuleVersion),
    qxExport(Text, GetDownwardsCompatibility),
    qxExport(Text, GetSDKDependency),
    qxExport(Text, GetState),
    qxExport(Text, GetSupportedPlatforms),
    qxExport(Text, GetTovrinModuleName),
    qxExport(Text, GetModuleDependencies),
    qxExport(Text, GetModuleDependenciesOptional),
    qxExport(Text, GetModuleDependenciesLoadBefore),
    qxExport(Text, GetOptionalFunctionDependencies),
    qxExport(Text, GetOptionalProcedureDependencies),
    qxExport(Text, GetAlternativeFunctionDependencies),
    qxExport(Text, GetAlternativeProcedureDependencies),
    qxExport(Text, GetModuleDefinition),
    qxExport(Answer, RegisterModule),
    qxExport(Registration, RegistrationDoneWithReturn),
    qxExport(Answer, OnShutdown),
    qxExport(Stop, DeregisterModule),
    qxExport(Factory, tovrin_module_CreateTessarin),
    qxExport(Factory, tovrin_module_CreateTessarinList),
    qxExport(Function, tovrin_module_StringListToRegExList),
    qxExport(Function, tovrin_module_MatchesInList),
    qxExport(Function, tovrin_module_Size),
    qxExport(Function, tovrin_module_Get),
    qxExport(Function, tovrin_module_GetElems),
    qxExport(Function, tovrin_module_Find),
    qxExport(Function, tovrin_module_AddToRegExList),
    qxExport(Function, tovrin_module_AddToRegExListRE),
    qxExport(Function, tovrin_module_Remove),
    qxExport(Function, tovrin_module_RemoveElems),
    qxExport(Function, tovrin_module_Reverse),
    qxExport(Function, tovrin_module_AppendToRegExList),
    qxExport(Function, tovrin_module_AppendRegExToRegExList),
    qxExport(Function, tovrin_module_Contains),
    qxExport(Function, tovrin_module_Join),
    qxExport(Function, tovrin_module_RemoveListFromList),
    qxExport(Function, tovrin_module_Insert),
    qxExport(Function, tovrin_module_Set),
    qxExport(Function, tovrin_module_StringToRegEx),
    qxExport(Function, tovrin_module_GlobToRegEx),
    qxExport(Function, tovrin_module_RegExToString),
    qxExport(Function, tovrin_module_RegExListToString_Deprecated),
    qxExport(Function, tovrin_module_RegExListToString),
    qxExport(Function, tovrin_module_SetSorted),
    qxExport(Function, tovrin_module_ReplaceFirstMatch),
    qxExport(Function, tovrin_module_ReplaceFirstMatchString),
    qxExport(Function, tovrin_module_ReplaceAllMatches),
    qxExport(Function, tovrin_module_ReplaceAllMatchesString),
    qxExport(Function, tovrin_module_RegExMatches),
    qxExport(Function, tovrin_module_MatchesTwoStrings),
    qxExport(Function, tovrin_module_WildcardMatch),
    qxExport(Function, tovrin_module_SearchAllMatches),
    qxExport(Function, tovrin_module_FindAll),
    qxExport(Function, tovrin_module_Search),
    qxExport(Function, tovrin_module_TessarinSetIHost),
};
// clang-format on

TEST(ExportSignatures, AreOfAllExports) {
  EXPECT_EQ(kExports.size(), 57u);
  EXPECT_EQ(kExports, NamesOfTheVersionScript());
}

}  // namespace
