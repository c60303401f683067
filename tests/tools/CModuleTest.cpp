#include "tools/tovrin/CModule.h"

#include <gtest/gtest.h>

#include "tests/tools/TestModules.h"

namespace RefHost {
namespace {

TEST(CModule, BringsItsTypesAndFunctions) {
  CHost host;
  const CModule module(host, TestModule("sound"));
  EXPECT_EQ(module.Descriptions().size(), 15u);
  EXPECT_EQ(module.Description("GetModuleVersion"), "3.2.1");
  EXPECT_EQ(module.Entries().front().name, "Box");
  EXPECT_EQ(host.Tables().types->Find("Box"), kFirstModuleType);
  EXPECT_EQ(host.Tables().types->Find("MAP<STRING,Box>"), kFirstModuleType + Tovrin::kStringMapOf);
  EXPECT_TRUE(host.Tables().functions->Has("Box.Add"));
}

TEST(CModule, HandsTheHostOverAndGetsItBack) {
  CHost host;
  const auto before = host.Services()->GetCount();
  {
    const CModule module(host, TestModule("sound"));
    EXPECT_EQ(host.Services()->GetCount(), before);  // this module borrows it
  }
  EXPECT_EQ(host.Services()->GetCount(), before);
}

TEST(CModule, TakesItsFunctionsOutWhenItGoes) {
  CHost host;
  { const CModule module(host, TestModule("sound")); }
  EXPECT_FALSE(host.Tables().functions->Has("Box.Add"));
  EXPECT_TRUE(host.Tables().functions->Has("lines"));
}

TEST(CModule, LeavesNoFunctionBehindWhenItCannotBeLoaded) {
  for (const char* name : {"failing_registration", "refusing_host", "doubled_function"}) {
    CHost host;
    EXPECT_THROW(CModule(host, TestModule(name)), CModuleError) << name;
    EXPECT_FALSE(host.Tables().functions->Has("Zero")) << name;
    EXPECT_FALSE(host.Tables().functions->Has("Sample.SetIHost")) << name;
  }
}

TEST(CModule, SurvivesAModuleThatThrowsWhenItStops) {
  CHost host;
  EXPECT_NO_THROW({ const CModule module(host, TestModule("throwing")); });
}

TEST(CModule, IsLoadedAndUnloadedAgainAndAgain) {
  for (int i = 0; i < 20; ++i) {
    CHost host;
    const CModule module(host, TestModule("sound"));
    const CTransaction transaction = host.NewTransaction("again");
    EXPECT_EQ(transaction.context->FindType("Box"), kFirstModuleType);
  }
}

TEST(CModule, MakesObjectsOfItsTypesThroughThePolicy) {
  CHost host;
  const CModule module(host, TestModule("sound"));
  const auto policy = host.NewTransaction("make").context->GetPolicy();
  const auto variable = policy->CreateUserDefinedVariable("Box");
  ASSERT_TRUE(variable);
  EXPECT_EQ(variable->GetType(), kFirstModuleType);
  EXPECT_TRUE(variable->GetUserDefined());
  EXPECT_FALSE(policy->CreateUserDefinedVariable("STRING"));
  EXPECT_FALSE(policy->CreateUserDefinedVariable("Nothing"));
}

TEST(CModule, IsFoundThroughTheContextByItsDeclaration) {
  CHost host;
  const CModule module(host, TestModule("sound"));
  const auto context = host.NewTransaction("link").context;
  const char* const types[] = {"NUMBER", "STRING"};
  Tovrin::AutoRefPtr<Tovrin::IModuleInfo> info;
  EXPECT_NE(context->GetFunction("Length", 2, types, &info, 1), nullptr);
  ASSERT_TRUE(info);
  EXPECT_EQ(info->GetFuncOrProcName(), "Length");
  EXPECT_NE(context->GetFunction("Length", 2, types, nullptr, 1), nullptr);
  const char* const wrong[] = {"BOOLEAN", "STRING"};
  EXPECT_EQ(context->GetFunction("Length", 2, wrong, &info, 1), nullptr);
  EXPECT_FALSE(info);
  const char* const step[] = {"Box,STRING"};
  EXPECT_NE(context->GetProcedure("Box.Add", 1, step, &info, 1), nullptr);
  EXPECT_EQ(context->GetProcedure("Box.Sub", 1, step, &info, 1), nullptr);
}

}  // namespace
}  // namespace RefHost
