// Exceptions on their way from the module into a host. The same tests run in programs with
// different C++ runtimes; TESSARIN_HOST_COUNTS_OUR_THROWS is 0 for one whose runtime the module
// cannot see.

#include <gtest/gtest.h>

#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>

#include "tests/module/Answer.h"
#include "tests/module/LoadedModule.h"

using namespace Tovrin;

namespace {

constexpr const char* kNoProgress =
    "Internal error in regex search: "
    "'the expression matches the empty text and makes no progress'";

// The host's count of exceptions on their way. One whose runtime the module cannot see counts only
// what arrives, so there is nothing to expect of it.
void ExpectNoneInFlight() {
#if TESSARIN_HOST_COUNTS_OUR_THROWS
  EXPECT_EQ(std::uncaught_exceptions(), 0);
#endif
}

// A call that throws on every road to its end.
void CallThatThrows(const LoadedModule& module) {
  const AutoRefPtr<TestContext> context(new TestContext);
  const Answer made = CallFunction(module.Function("tovrin_module_StringToRegEx"),
                                   {TestVariant::Text("x*")}, context.get());
  CallFunction(module.Function("tovrin_module_FindAll"),
               {TestVariant::Object(21, made.Object()), TestVariant::Text("a")}, context.get());
}

// The host's own exception, thrown from under a frame of the module.
class ThrowingContext final : public NeutralContext {
  IVariant* Interface_CreateInstance(TypeId) override { throw std::length_error("the host's own"); }
};

void CallThatPassesTheHostsException(const LoadedModule& module) {
  const AutoRefPtr<ThrowingContext> context(new ThrowingContext);
  const Answer made = CallFunction(module.Function("tovrin_module_StringToRegEx"),
                                   {TestVariant::Text("a")}, nullptr);
  CallFunction(module.Function("tovrin_module_FindAll"),
               {TestVariant::Object(21, made.Object()), TestVariant::Text("a")}, context.get());
}

TEST(HostRuntime, CatchesAThousandExceptionsByTheirType) {
  const LoadedModule module;
  int caught = 0;
  for (int round = 0; round < 1000; ++round) {
    try {
      CallThatThrows(module);
    } catch (const std::runtime_error& failure) {
      caught += std::string(failure.what()) == kNoProgress;
    }
  }
  EXPECT_EQ(caught, 1000);
  ExpectNoneInFlight();
}

TEST(HostRuntime, GetsItsOwnExceptionsBackThroughTheModule) {
  const LoadedModule module;
  for (int round = 0; round < 100; ++round) {
    EXPECT_THROW(CallThatPassesTheHostsException(module), std::length_error);
  }
  ExpectNoneInFlight();
}

TEST(HostRuntime, KeepsACopyPastTheModule) {
  std::optional<std::runtime_error> kept;
  {
    const LoadedModule module;
    try {
      CallThatThrows(module);
    } catch (const std::runtime_error& failure) {
      kept = failure;
    }
  }
  EXPECT_FALSE(LoadedModule::IsMapped());
  ASSERT_TRUE(kept);
  const std::runtime_error copy = *kept;
  kept.reset();
  EXPECT_STREQ(copy.what(), kNoProgress);
}

TEST(HostRuntime, KeepsAnExceptionPointerWhileTheModuleIsThere) {
  const LoadedModule module;
  std::exception_ptr kept;
  try {
    CallThatThrows(module);
  } catch (...) {
    kept = std::current_exception();
  }
  EXPECT_THROW(std::rethrow_exception(kept), std::runtime_error);
}

TEST(HostRuntime, LoadsAndUnloadsWithExceptionsInBetween) {
  for (int load = 0; load < 10; ++load) {
    {
      const LoadedModule module;
      EXPECT_THROW(CallThatThrows(module), std::runtime_error);
    }
    ASSERT_FALSE(LoadedModule::IsMapped());
  }
}

}  // namespace
