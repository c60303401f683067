#include "tools/tovrin/objects/CHostContext.h"

#include <gtest/gtest.h>

#include "host/Data.h"
#include "tools/tovrin/CHost.h"

namespace RefHost {
namespace {

class CHostContextTest : public ::testing::Test {
protected:
  CHost fHost;
  const Tovrin::AutoRefPtr<Tovrin::IContext> fContext = fHost.NewTransaction("test").context;
};

TEST_F(CHostContextTest, IsATransactionOfItsOwn) {
  const auto other = fHost.NewTransaction("other").context;
  EXPECT_NE(fContext->GetTransactionId(), other->GetTransactionId());
  EXPECT_EQ(fContext->GetRoutineName(), "test");
  EXPECT_EQ(fContext->PrintCallStack(), "test");
  EXPECT_EQ(fContext->GetTovrinInstanceId(), other->GetTovrinInstanceId());
  EXPECT_EQ(fContext->GetPolicy().get(), other->GetPolicy().get());
}

TEST_F(CHostContextTest, KeepsUserDataOfEveryForm) {
  const std::uint64_t id = fContext->GetUserDataId("name");
  EXPECT_EQ(fContext->GetUserDataId("name"), id);
  EXPECT_NE(fContext->GetUserDataId("other"), id);
  EXPECT_FALSE(fContext->GetUserData(id));

  fContext->SetUserDataAsBoolean(id, true);
  EXPECT_TRUE(fContext->GetUserDataAsBoolean(id));
  fContext->SetUserDataAsNumber(id, 2.5);
  EXPECT_EQ(fContext->GetUserDataAsNumber(id), 2.5);
  fContext->SetUserDataAsString(id, "text");
  EXPECT_EQ(fContext->GetUserDataAsString(id), "text");
  EXPECT_EQ(fContext->GetUserDataAsNumber(id), 0);
  fContext->SetUserDataAsData(id, Tovrin::AutoRefPtr<Tovrin::IDataRef>(new Tovrin::Data("abc")));
  EXPECT_EQ(fContext->GetUserDataAsData(id)->GetSize(), 3u);
  const auto stream = fContext->CreateStreamInstance();
  fContext->SetUserDataAsStream(id, stream);
  EXPECT_EQ(fContext->GetUserDataAsStream(id).get(), stream.get());
  EXPECT_FALSE(fContext->GetUserDataAsData(id));
  fContext->SetUserDataAsStringVector(id, {"a", "b"});
  EXPECT_EQ(fContext->GetUserDataAsStringVector(id), (std::vector<std::string>{"a", "b"}));
  fContext->SetUserDataAsStringToNumberMap(id, {{"x", 1}, {"a", 2}});
  EXPECT_EQ(fContext->GetUserDataAsStringToNumberMap(id),
            (std::map<std::string, double>{{"a", 2}, {"x", 1}}));
  fContext->ClearUserData(id);
  EXPECT_FALSE(fContext->GetUserData(id));
  EXPECT_EQ(fContext->GetUserDataAsString(id), "");
  EXPECT_FALSE(fContext->GetUserDataAsBoolean(id));
  EXPECT_FALSE(fContext->GetUserDataAsData(id));
  EXPECT_FALSE(fContext->GetUserDataAsStream(id));

  fContext->SetUserData(id, fContext->CreateInstance(Tovrin::kTypeNumber));
  EXPECT_TRUE(fContext->GetUserData(id));
  fContext->SetUserData(id, {});
  EXPECT_FALSE(fContext->GetUserData(id));
}

TEST_F(CHostContextTest, MakesValuesOfKnownTypesOnly) {
  for (Tovrin::TypeId type = 1; type <= 24; ++type) {
    ASSERT_TRUE(fContext->CreateInstance(type)) << type;
    EXPECT_EQ(fContext->FindType(fContext->GetTypeName(type).c_str()), type);
  }
  EXPECT_FALSE(fContext->CreateInstance(0));
  EXPECT_FALSE(fContext->CreateInstance(25));
  EXPECT_EQ(fContext->FindType("Tree"), 0u);
  EXPECT_TRUE(fContext->CreateStringVector());
  EXPECT_TRUE(fContext->CreateNumberToStringMap());
  EXPECT_TRUE(fContext->CreateDataInstance());
  EXPECT_TRUE(fContext->CreateStreamInstance());
}

TEST_F(CHostContextTest, RemembersErrorsUntilTheyAreCleared) {
  EXPECT_FALSE(fContext->HasError());
  EXPECT_EQ(fContext->GetErrorMessage(), "");
  fContext->TriggerErrorHandler(Tovrin::ErrorSeverity::Severity2, "N", "Error.One", "first");
  fContext->TriggerErrorHandler(Tovrin::ErrorSeverity::Severity2, "M", "Error.Two", "second");
  EXPECT_TRUE(fContext->HasError());
  EXPECT_EQ(fContext->GetErrorSeverity(), Tovrin::ErrorSeverity::Severity2);
  EXPECT_EQ(fContext->GetErrorModuleNamespace(), "M");
  EXPECT_EQ(fContext->GetErrorId(), "Error.Two");
  EXPECT_EQ(fContext->GetErrorMessage(), "second");
  EXPECT_EQ(fContext->GetStackedErrors("- ", "\n"), "- Error.One: first\n- Error.Two: second");
  fContext->ClearError();
  EXPECT_FALSE(fContext->HasError());
}

TEST_F(CHostContextTest, KeepsInterruptionExitAndCancellation) {
  EXPECT_FALSE(fContext->IsInterrupted());
  fContext->SetInterrupted();
  EXPECT_TRUE(fContext->IsInterrupted());
  fContext->ClearInterrupted();
  EXPECT_FALSE(fContext->IsInterrupted());
  fContext->ExitExecution();
  EXPECT_TRUE(fContext->ExitCalled());
  fContext->ClearExit();
  EXPECT_FALSE(fContext->ExitCalled());
  fContext->Cancel("enough");
  EXPECT_TRUE(fContext->IsCanceled());
  EXPECT_EQ(fContext->GetCancellationReason(), "enough");
}

TEST_F(CHostContextTest, IsInterruptedByAnEventAtOnce) {
  fContext->InterruptWithEvent({}, this);
  EXPECT_TRUE(fContext->IsInterrupted());
  EXPECT_EQ(fContext->GetInterruptionData(), this);
}

TEST_F(CHostContextTest, KeepsWhatIsSetAndCountsItsTime) {
  EXPECT_FALSE(fContext->IsResuming());
  fContext->SetResuming(true);
  EXPECT_TRUE(fContext->IsResuming());
  EXPECT_EQ(fContext->GetTracePathPrefix(), "");
  fContext->SetTracePathPrefix("prefix");
  EXPECT_EQ(fContext->GetTracePathPrefix(), "prefix");
  const std::uint64_t sinceStart = fContext->MicrosecondsSinceStart();
  EXPECT_GE(fContext->MicrosecondsSinceStart(), sinceStart);
  EXPECT_GT(fContext->CPUTimeMicroseconds(), 0u);
  EXPECT_EQ(fContext->GetLogger().get(),
            fContext->GetPolicy()->CreateTransaction("x")->GetLogger().get());
}

// There are no rules, triggers or stored states behind the reference host.
TEST_F(CHostContextTest, HasNeutralAnswersForWhatItLacks) {
  fContext->ClearEnd();
  fContext->SetResultMaybe();
  EXPECT_FALSE(fContext->EndCalled());
  EXPECT_FALSE(fContext->IsPreRun());
  EXPECT_EQ(fContext->GetLineNumber(), 0u);
  EXPECT_EQ(fContext->GetLineContent(), "");
  EXPECT_EQ(fContext->GetResourcePath(), "");
  EXPECT_EQ(fContext->CallRoutine("a"), -1);
  EXPECT_EQ(fContext->CallRoutineByTrigger("a"), -1);
  EXPECT_EQ(fContext->GetTriggers(), "");
  EXPECT_EQ(fContext->GetInitialTrigger(), "");
  EXPECT_FALSE(fContext->Serialize());
  EXPECT_FALSE(fContext->UpdateContext({}));
  EXPECT_FALSE(fContext->CreateConfiguration());
  EXPECT_EQ(fContext->GetErrorLineNumber(), 0u);
  EXPECT_EQ(fContext->GetErrorLineContent(), "");
  EXPECT_EQ(fContext->GetErrorResourcePath(), "");
  EXPECT_FALSE(fContext->GetTelemetry());
  EXPECT_FALSE(fContext->GetCallStack());
  EXPECT_EQ(fContext->GetTrace(), "");
  EXPECT_EQ(fContext->GetPolicyRevision(), "");
  EXPECT_EQ(fContext->GetPolicyStatementBlockId(), 0u);
}

TEST_F(CHostContextTest, RunsAJobAtOnce) {
  int count = 0;
  const Tovrin::JobFunction job = [](void* data) { ++*static_cast<int*>(data); };
  fContext->InterruptWithJob(job, &count, this);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(fContext->GetInterruptionData(), this);
  fContext->ExecuteAfterInterruption({}, job, &count);
  EXPECT_EQ(count, 2);
}

TEST_F(CHostContextTest, CallsRegisteredCallbacksOfOneKind) {
  int count = 0;
  const Tovrin::CallbackFunction count1 = [](Tovrin::IContext*, void* data) {
    ++*static_cast<int*>(data);
  };
  const auto kind = static_cast<Tovrin::CallbackType>(1);
  EXPECT_TRUE(fContext->RegisterModuleCallbackFunction(kind, "a", count1, &count));
  EXPECT_FALSE(fContext->RegisterModuleCallbackFunction(kind, "a", count1, &count));
  EXPECT_FALSE(fContext->RegisterModuleCallbackFunction(kind, "b", nullptr, &count));
  fContext->ExecuteCallbackFunctions(kind);
  fContext->ExecuteCallbackFunctions(static_cast<Tovrin::CallbackType>(2));
  EXPECT_EQ(count, 1);
}

TEST_F(CHostContextTest, LinksToTheHostsOwnFunctions) {
  const char* const types[] = {"VECTOR<STRING>", "STRING"};
  Tovrin::AutoRefPtr<Tovrin::IModuleInfo> info;
  EXPECT_NE(fContext->GetFunction("lines", 2, types, &info, 1), nullptr);
  ASSERT_TRUE(info);
  EXPECT_EQ(info->GetModuleName(), "Tovrin");
  EXPECT_EQ(fContext->GetFunction("lines", 1, types, &info, 1), nullptr);
  EXPECT_FALSE(info);
  const char* const arguments[] = {"STRING"};
  EXPECT_EQ(fContext->GetProcedure("lines", 1, arguments, &info, 1), nullptr);
  EXPECT_EQ(fContext->GetProcedure("lines", 2, arguments, &info, 1), nullptr);
}

}  // namespace
}  // namespace RefHost
