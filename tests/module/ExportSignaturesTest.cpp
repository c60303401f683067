// A host calls the exports through types of its own, which no compiler holds against ours: here
// stands what those types are. A signature that is changed does not compile.

#include <gtest/gtest.h>

#include <array>
#include <type_traits>

#include "module/Exports.h"

namespace {

static_assert(std::is_same_v<Tovrin::FunctionStatus, std::uint32_t>);
static_assert(std::is_same_v<Tovrin::TypeId, std::uint32_t>);
static_assert(
    std::is_same_v<Tovrin::ModuleFunction,
                   std::uint32_t (*)(std::uint32_t argumentCount,
                                     Tovrin::IVariant* const* arguments, Tovrin::IVariant* result,
                                     Tovrin::IModuleInfo* moduleInfo, Tovrin::IContext* context)>);

using Text = const char* (*)();
using Factory = Tovrin::IUserDefinedType* (*)(std::uint32_t typeId);

constexpr std::array<Text, 16> kTexts = {
    GetTovrinSDKVersion,
    GetModuleTovrinVersion,
    GetModuleVersion,
    GetDownwardsCompatibility,
    GetSDKDependency,
    GetState,
    GetSupportedPlatforms,
    GetTovrinModuleName,
    GetModuleDependencies,
    GetModuleDependenciesOptional,
    GetModuleDependenciesLoadBefore,
    GetOptionalFunctionDependencies,
    GetOptionalProcedureDependencies,
    GetAlternativeFunctionDependencies,
    GetAlternativeProcedureDependencies,
    GetModuleDefinition,
};
static_assert(std::is_same_v<decltype(RegisterModule), int()>);
static_assert(std::is_same_v<decltype(RegistrationDoneWithReturn), int(Tovrin::IModuleInfo*)>);
static_assert(std::is_same_v<decltype(OnShutdown), int()>);
static_assert(std::is_same_v<decltype(DeregisterModule), void()>);
constexpr std::size_t kStartAndStop = 4;

constexpr std::array<Factory, 2> kFactories = {tovrin_module_CreateTessarin,
                                               tovrin_module_CreateTessarinList};
constexpr std::array<Tovrin::ModuleFunction, 35> kFunctions = {
    tovrin_module_StringListToRegExList,
    tovrin_module_MatchesInList,
    tovrin_module_Size,
    tovrin_module_Get,
    tovrin_module_GetElems,
    tovrin_module_Find,
    tovrin_module_AddToRegExList,
    tovrin_module_AddToRegExListRE,
    tovrin_module_Remove,
    tovrin_module_RemoveElems,
    tovrin_module_Reverse,
    tovrin_module_AppendToRegExList,
    tovrin_module_AppendRegExToRegExList,
    tovrin_module_Contains,
    tovrin_module_Join,
    tovrin_module_RemoveListFromList,
    tovrin_module_Insert,
    tovrin_module_Set,
    tovrin_module_StringToRegEx,
    tovrin_module_GlobToRegEx,
    tovrin_module_RegExToString,
    tovrin_module_RegExListToString_Deprecated,
    tovrin_module_RegExListToString,
    tovrin_module_SetSorted,
    tovrin_module_ReplaceFirstMatch,
    tovrin_module_ReplaceFirstMatchString,
    tovrin_module_ReplaceAllMatches,
    tovrin_module_ReplaceAllMatchesString,
    tovrin_module_RegExMatches,
    tovrin_module_MatchesTwoStrings,
    tovrin_module_WildcardMatch,
    tovrin_module_SearchAllMatches,
    tovrin_module_FindAll,
    tovrin_module_Search,
    tovrin_module_TessarinSetIHost,
};

TEST(ExportSignatures, AreOfAllExports) {
  EXPECT_EQ(kTexts.size() + kStartAndStop + kFactories.size() + kFunctions.size(), 57u);
}

}  // namespace
