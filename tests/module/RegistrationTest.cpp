// The handshake with the host, each time on a module that was loaded afresh.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tests/module/Answer.h"
#include "tests/module/LoadedModule.h"

using namespace Tovrin;

namespace {

using TypeTable = std::map<std::string, TypeId>;

// A host at start-up: a module info, and behind it a policy that gives one context.
struct StartUp {
  explicit StartUp(const TypeTable& types) {
    policy->context = AutoRefPtr<TestContext>(new TestContext);
    policy->context->types = types;
    info->policy = policy;
  }

  const AutoRefPtr<TestModuleInfo> info{new TestModuleInfo};
  const AutoRefPtr<TestPolicy> policy{new TestPolicy};
};

int Register(const LoadedModule& module, IModuleInfo* info) {
  return module.Symbol<int(IModuleInfo*)>("RegistrationDoneWithReturn")(info);
}

AutoRefPtr<IUserDefinedType> Make(const LoadedModule& module, const char* function,
                                  const Values& arguments) {
  return CallFunction(module.Function(function), arguments, nullptr).Object();
}

// The id that the module stamps into objects of its own.
TypeId OwnTessarinId(const LoadedModule& module) {
  return Make(module, "tovrin_module_StringToRegEx", {TestVariant::Text("a")})->GetType();
}

TypeId OwnListId(const LoadedModule& module) {
  return Make(module, "tovrin_module_StringListToRegExList",
              {TestVariant::Vector(10, TestVector::Texts({}))})
      ->GetType();
}

struct Row {
  const char* name;
  TypeTable types;
  int result;
  TypeId ownId;
  TypeId ownListId;
};

const Row kRows[] = {
    {"KnowsBoth", {{"Tessarin", 21}, {"Tessarin.List", 25}}, 0, 21, 25},
    {"KnowsNone", {}, 1, 0, 0},
    {"KnowsNoList", {{"Tessarin", 21}}, 1, 21, 0},  // the first id stays
    {"KnowsOnlyTheList", {{"Tessarin.List", 25}}, 1, 0, 25},
};

TEST(Registration, FetchesBothTypeIdsOrFails) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    const LoadedModule module;
    const StartUp host(row.types);
    EXPECT_EQ(OwnTessarinId(module), 0u) << "before registration";

    EXPECT_EQ(Register(module, host.info.get()), row.result);
    EXPECT_EQ(OwnTessarinId(module), row.ownId);
    EXPECT_EQ(OwnListId(module), row.ownListId);
    EXPECT_EQ(host.policy->context->typesAskedFor,
              (std::vector<std::string>{"Tessarin", "Tessarin.List"}));
  }
}

TEST(Registration, UsesOneTransactionOnlyToAskForTypes) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    const LoadedModule module;
    const StartUp host(row.types);
    Register(module, host.info.get());
    EXPECT_EQ(host.policy->transactions, std::vector<std::string>{"GetTessarinTypes"});
    EXPECT_EQ(host.policy->executed, 0);
    EXPECT_EQ(host.policy->cleanedUp, 0);
    EXPECT_EQ(host.info->GetCount(), 1);
    EXPECT_EQ(host.policy->GetCount(), 2);  // this test's and the info's
    EXPECT_EQ(host.policy->context->GetCount(), 1);
  }
}

TEST(Registration, FailsWithoutPolicyContextOrInfo) {
  const LoadedModule module;
  EXPECT_EQ(Register(module, nullptr), 1);

  const AutoRefPtr<TestModuleInfo> withoutPolicy(new TestModuleInfo);
  EXPECT_EQ(Register(module, withoutPolicy.get()), 1);
  EXPECT_EQ(withoutPolicy->GetCount(), 1);

  const StartUp withoutContext({});
  withoutContext.policy->context.reset();
  EXPECT_EQ(Register(module, withoutContext.info.get()), 1);
  EXPECT_EQ(withoutContext.policy->GetCount(), 2);
}

// Contract: the answer looks at the stored ids, not at what the call fetched.
TEST(Registration, SucceedsWithoutAPolicyOnceTheIdsAreSet) {
  const LoadedModule module;
  const StartUp host({{"Tessarin", 21}, {"Tessarin.List", 25}});
  ASSERT_EQ(Register(module, host.info.get()), 0);

  const AutoRefPtr<TestModuleInfo> withoutPolicy(new TestModuleInfo);
  EXPECT_EQ(Register(module, withoutPolicy.get()), 0);
  EXPECT_EQ(Register(module, nullptr), 0);
  const StartUp withoutContext({});
  withoutContext.policy->context.reset();
  EXPECT_EQ(Register(module, withoutContext.info.get()), 0);
  EXPECT_EQ(OwnTessarinId(module), 21u);
}

// Contract: an id of 0 overwrites one that was found before.
TEST(Registration, StoresWhatALaterCallFetches) {
  const LoadedModule module;
  ASSERT_EQ(Register(module, StartUp({{"Tessarin", 21}, {"Tessarin.List", 25}}).info.get()), 0);
  EXPECT_EQ(Register(module, StartUp({{"Tessarin", 33}}).info.get()), 1);
  EXPECT_EQ(OwnTessarinId(module), 33u);
  EXPECT_EQ(Register(module, StartUp({}).info.get()), 1);
  EXPECT_EQ(OwnTessarinId(module), 0u);
}

// Whichever step fails, the exception comes out as it went in; what was fetched until then stays.
TEST(Registration, LetsTheHostsExceptionsOutAndDropsItsReferences) {
  const LoadedModule module;
  const StartUp host({{"Tessarin", 21}, {"Tessarin.List", 25}});
  constexpr std::int64_t kCallbacks = 4;  // policy, transaction and two types
  for (std::int64_t place = 0; place < kCallbacks; ++place) {
    SCOPED_TRACE(place);
    CHostFaults::Arm(place);
    EXPECT_THROW(Register(module, host.info.get()), HostFault);
    CHostFaults::Disarm();
    EXPECT_EQ(host.info->GetCount(), 1);
    EXPECT_EQ(host.policy->GetCount(), 2);
    EXPECT_EQ(host.policy->context->GetCount(), 1);
    EXPECT_EQ(OwnTessarinId(module), place < kCallbacks - 1 ? 0u : 21u);
  }
  CHostFaults::Arm(kCallbacks);
  EXPECT_EQ(Register(module, host.info.get()), 0);
  CHostFaults::Disarm();
}

TEST(Registration, IsWhereEveryFunctionThatMakesAnExpressionHasItsIdFrom) {
  const LoadedModule module;
  const StartUp host({{"Tessarin", 21}, {"Tessarin.List", 25}});
  ASSERT_EQ(Register(module, host.info.get()), 0);
  EXPECT_EQ(Make(module, "tovrin_module_GlobToRegEx",
                 {TestVariant::Text("a*"), TestVariant::Boolean(true)})
                ->GetType(),
            21u);
  using Factory = IUserDefinedType*(std::uint32_t);
  const AutoRefPtr<IUserDefinedType> list(
      module.Symbol<Factory>("tovrin_module_CreateTessarinList")(99));
  EXPECT_EQ(
      Make(module, "tovrin_module_Get", {TestVariant::Object(25, list), TestVariant::Number(0)})
          ->GetType(),
      21u);
}

TEST(Registration, DoesNotTouchTheIdThatAFactoryIsGiven) {
  const LoadedModule module;
  const StartUp host({{"Tessarin", 21}, {"Tessarin.List", 25}});
  ASSERT_EQ(Register(module, host.info.get()), 0);
  using Factory = IUserDefinedType*(std::uint32_t);
  const AutoRefPtr<IUserDefinedType> made(
      module.Symbol<Factory>("tovrin_module_CreateTessarin")(77));
  EXPECT_EQ(made->GetType(), 77u);
}

}  // namespace
