// The library as a file: what it says before it is registered, and that it goes when it is closed.

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tests/module/LoadedModule.h"
#include "tests/support/SharedData.h"

namespace {

struct GetterRow {
  const char* getter;
  const char* text;
};

constexpr GetterRow kGetterRows[] = {
    {"GetTovrinSDKVersion", "1.20.16.0"},
    {"GetModuleTovrinVersion", "1.20.16.0-2"},
    {"GetModuleVersion", "1.0.0.0"},
    {"GetDownwardsCompatibility", "1.0.0.0"},
    {"GetSDKDependency", "[1.18.0-]"},
    {"GetState", "stable"},
    {"GetSupportedPlatforms", "linux,mac,windows"},
    {"GetTovrinModuleName", ""},
    {"GetModuleDependencies", ""},
    {"GetModuleDependenciesOptional", ""},
    {"GetModuleDependenciesLoadBefore", ""},
    {"GetOptionalFunctionDependencies", ""},
    {"GetOptionalProcedureDependencies", ""},
    {"GetAlternativeFunctionDependencies", ""},
    {"GetAlternativeProcedureDependencies", ""},
};

TEST(Module, DescribesItselfBeforeItIsRegistered) {
  const LoadedModule module;
  for (const GetterRow& row : kGetterRows) {
    const auto getter = module.Symbol<const char*()>(row.getter);
    const char* const text = getter();
    EXPECT_STREQ(text, row.text) << row.getter;
    EXPECT_EQ(static_cast<const void*>(getter()), text) << row.getter;
  }
}

TEST(Module, GivesItsDefinitionAtOneAddressAndLeavesTheOtherTextsAlone) {
  const LoadedModule module;
  const char* const version = module.Symbol<const char*()>("GetModuleVersion")();
  const auto define = module.Symbol<const char*()>("GetModuleDefinition");

  const char* const first = define();
  EXPECT_EQ(first, ReadWholeFile(SourceDir() / "tests/module/definition.txt"));
  EXPECT_EQ(static_cast<const void*>(define()), first);
  EXPECT_EQ(first, ReadWholeFile(SourceDir() / "tests/module/definition.txt"));
  EXPECT_EQ(static_cast<const void*>(module.Symbol<const char*()>("GetModuleVersion")()), version);
  EXPECT_STREQ(version, "1.0.0.0");
}

TEST(Module, StartsAndStopsWithoutDoingAnything) {
  const LoadedModule module;
  EXPECT_EQ(module.Symbol<int()>("RegisterModule")(), 0);
  EXPECT_EQ(module.Symbol<int()>("OnShutdown")(), 0);
  module.Symbol<void()>("DeregisterModule")();
  EXPECT_EQ(module.Symbol<int()>("RegisterModule")(), 0);
  EXPECT_STREQ(module.Symbol<const char*()>("GetState")(), "stable");
}

TEST(Module, IsGoneFromTheProcessAfterEachOfFiftyLoads) {
  for (int load = 0; load < 50; ++load) {
    {
      const LoadedModule module;
      ASSERT_TRUE(LoadedModule::IsMapped());
      ASSERT_FALSE(module.Text("GetModuleDefinition").empty());
    }
    ASSERT_FALSE(LoadedModule::IsMapped()) << "something pins the library, load " << load;
  }
}

}  // namespace
