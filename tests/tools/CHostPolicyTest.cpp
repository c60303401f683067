#include "tools/tovrin/objects/CHostPolicy.h"

#include <gtest/gtest.h>

#include "host/Data.h"
#include "tools/tovrin/CHost.h"

namespace RefHost {
namespace {

using Tovrin::AutoRefPtr;

AutoRefPtr<Tovrin::IPolicy> PolicyOf(const CHost& host) {
  return host.NewTransaction("test").context->GetPolicy();
}

TEST(CHostPolicy, GivesEachTransactionAndEachNameItsId) {
  const CHost host;
  const auto policy = PolicyOf(host);
  const auto first = policy->CreateTransaction("first");
  const auto second = policy->CreateTransaction("second");
  EXPECT_NE(first->GetTransactionId(), second->GetTransactionId());
  EXPECT_EQ(second->GetRoutineName(), "second");
  EXPECT_EQ(policy->GetUserDataId("a"), first->GetUserDataId("a"));
  EXPECT_NE(policy->GetUserDataId("a"), policy->GetUserDataId("b"));
  EXPECT_EQ(policy->GetTovrinInstanceId(), CHostPolicy::kInstanceId);
}

TEST(CHostPolicy, MakesVariablesOfKnownTypes) {
  const CHost host;
  const auto policy = PolicyOf(host);
  const auto variable = policy->CreateUserDefinedVariable("JSON");
  ASSERT_TRUE(variable);
  EXPECT_STREQ(variable->GetUserDefined()->GetName(), "JSON");
  EXPECT_FALSE(policy->CreateUserDefinedVariable("Tree"));
}

// It has no rules to execute and no stored data.
TEST(CHostPolicy, HasNeutralAnswersForWhatItLacks) {
  const CHost host;
  const auto policy = PolicyOf(host);
  const auto context = policy->CreateTransaction("test");
  EXPECT_FALSE(policy->ExecuteTransaction(context));
  policy->CleanupTransaction(context);
  EXPECT_FALSE(policy->LoadData(context.get(), "name"));
  EXPECT_FALSE(policy->LoadValue(context.get(), Tovrin::kTypeNumber, "name"));
  EXPECT_FALSE(policy->ContinueRemoteTransaction(
      AutoRefPtr<Tovrin::IDataRef>(new Tovrin::Data("abc")), "name"));
  EXPECT_FALSE(policy->ToJson());
}

TEST(CHostModuleInfo, NamesItsFunctionAndSharesTheModulesData) {
  const CHost host;
  const auto data = host.NewModuleData();
  const auto info = host.NewModuleInfo(data, "M", "f");
  const auto other = host.NewModuleInfo(data, "M", "g");
  EXPECT_EQ(info->GetModuleName(), "M");
  EXPECT_EQ(info->GetFuncOrProcName(), "f");
  EXPECT_EQ(info->GetUserDefinedData(), nullptr);
  int mark = 0;
  info->SetUserDefinedData(&mark);
  EXPECT_EQ(other->GetUserDefinedData(), &mark);
  EXPECT_EQ(info->GetPolicy().get(), PolicyOf(host).get());
  EXPECT_EQ(info->GetLogger().get(), other->GetLogger().get());
  EXPECT_FALSE(info->GetThreadPool());
  EXPECT_FALSE(info->GetEventScheduler());
  EXPECT_FALSE(info->GetConfiguration());
  EXPECT_FALSE(info->GetTelemetry());
}

}  // namespace
}  // namespace RefHost
