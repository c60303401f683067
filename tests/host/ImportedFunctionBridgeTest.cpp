#include "host/ImportedFunctionBridge.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/CustomerPolicyCheck.h"
#include "tests/support/HostContext.h"
#include "tests/support/HostValues.h"

namespace {

using namespace Tovrin;

// What the function of the other module was called with, and what it does.
struct Target {
  FunctionStatus status = 0;
  bool answer = true;

  int calls = 0;
  std::uint32_t argumentCount = 99;
  bool hadArguments = true;
  bool hadResult = false;
  bool resultBefore = true;
  IModuleInfo* moduleInfo = nullptr;
  IContext* context = nullptr;
};
Target gTarget;

extern "C" FunctionStatus AnswerBoolean(std::uint32_t argumentCount, IVariant* const* arguments,
                                        IVariant* result, IModuleInfo* moduleInfo,
                                        IContext* context) {
  ++gTarget.calls;
  gTarget.argumentCount = argumentCount;
  gTarget.hadArguments = arguments != nullptr;
  gTarget.hadResult = result != nullptr;
  gTarget.moduleInfo = moduleInfo;
  gTarget.context = context;
  if (result) {
    gTarget.resultBefore = result->GetBoolean();
    result->AssignBoolean(gTarget.answer);
  }
  return gTarget.status;
}

// The instance ids of this process, never used twice, so that each test begins unresolved.
std::uint64_t NextInstance() {
  static std::uint64_t next = 1000;
  return ++next;
}

// A context of some host instance, that knows functions and notes what is raised and logged.
class ImportingContext final : public NeutralContext {
public:
  explicit ImportingContext(std::uint64_t instance = NextInstance()) : instanceId(instance) {}

  std::uint64_t instanceId;
  ModuleFunction function = &AnswerBoolean;
  bool givesVariants = true;
  bool hasError = false;
  bool isInterrupted = false;
  AutoRefPtr<TestModuleInfo> info{new TestModuleInfo};
  AutoRefPtr<ILogger> logger;
  TypeId userType = 0;
  std::function<void()> whenAskedForAVariant = [] {};

  mutable int timesAskedForInstance = 0;
  std::vector<std::string> asked;   // for functions
  std::vector<std::string> raised;  // through the error handler
  std::vector<TypeId> made;

private:
  std::uint64_t Interface_GetTovrinInstanceId() const override {
    ++timesAskedForInstance;
    return instanceId;
  }
  ModuleFunction Interface_GetFunction(const char* name, std::uint32_t count,
                                       const char* const* types, IModuleInfo** out,
                                       std::uint32_t flag) override {
    std::string line = std::string(name) + " " + std::to_string(flag);
    for (std::uint32_t i = 0; i < count; ++i) line += std::string(" '") + types[i] + "'";
    asked.push_back(line);
    *out = Share(info.get()).release();
    return function;
  }
  IVariant* Interface_CreateInstance(TypeId type) override {
    made.push_back(type);
    whenAskedForAVariant();
    return givesVariants ? new TestVariant(type) : nullptr;
  }
  TypeId Interface_FindType(const char* name) const override {
    return std::string(name) == "JSON" ? userType : 0;
  }
  void Interface_TriggerErrorHandler(ErrorSeverity severity, const char* moduleNamespace,
                                     const char* errorId, const char* message) override {
    raised.push_back(std::to_string(static_cast<int>(severity)) + "|" + moduleNamespace + "|" +
                     errorId + "|" + message);
  }
  bool Interface_HasError() const override { return hasError; }
  bool Interface_IsInterrupted() const override { return isInterrupted; }
  const char* Interface_GetErrorMessage() const override { return "went wrong"; }
  const char* Interface_PrintCallStack() const override { return "a <- b"; }
  ILogger* Interface_GetLogger() const override { return Share(logger.get()).release(); }
};

class LoggerOfLines final : public NeutralLogger {
public:
  std::vector<std::string> lines;

private:
  void Interface_DebugLog(const char* module, std::uint32_t level, const char* text, std::uint32_t,
                          IContext*) override {
    lines.push_back(std::string(module) + "|" + std::to_string(level) + "|" + text);
  }
};

class CustomerPolicy : public testing::Test {
protected:
  CustomerPolicy() { gTarget = Target{}; }
};

using Lines = std::vector<std::string>;
constexpr char kTitle[] =
    "Tovrin function QRX.InCustomerControlledPolicy (imported as QRX_GetInCustomerPolicy)";

TEST_F(CustomerPolicy, IsFalseWithoutAContext) {
  EXPECT_FALSE(CustomerPolicyCheck(nullptr));
  EXPECT_EQ(gTarget.calls, 0);
}

TEST_F(CustomerPolicy, CallsTheFunctionWithoutArguments) {
  for (const bool answer : {true, false}) {
    gTarget = Target{};
    gTarget.answer = answer;
    const AutoRefPtr<ImportingContext> context(new ImportingContext);
    EXPECT_EQ(CustomerPolicyCheck(context.get()), answer);
    EXPECT_EQ(context->asked, (Lines{"QRX.InCustomerControlledPolicy 1 'BOOLEAN' ''"}));
    EXPECT_EQ(context->made, (std::vector<TypeId>{kTypeBoolean}));
    EXPECT_TRUE(context->raised.empty());
    EXPECT_EQ(gTarget.calls, 1);
    EXPECT_EQ(gTarget.argumentCount, 0u);
    EXPECT_FALSE(gTarget.hadArguments);
    EXPECT_FALSE(gTarget.resultBefore);
    EXPECT_EQ(gTarget.moduleInfo, context->info.get());
    EXPECT_EQ(gTarget.context, context.get());
    EXPECT_EQ(context->info->GetCount(), 1) << "the reference on the info is dropped";
    EXPECT_EQ(context->GetCount(), 1);
  }
}

TEST_F(CustomerPolicy, ResolvesAgainForAnotherInstanceOnly) {
  const AutoRefPtr<ImportingContext> first(new ImportingContext);
  const AutoRefPtr<ImportingContext> same(new ImportingContext(first->instanceId));
  const AutoRefPtr<ImportingContext> other(new ImportingContext);
  CustomerPolicyCheck(first.get());
  CustomerPolicyCheck(first.get());
  CustomerPolicyCheck(same.get());
  EXPECT_EQ(first->asked.size(), 1u);
  EXPECT_TRUE(same->asked.empty());
  EXPECT_EQ(gTarget.moduleInfo, first->info.get());
  CustomerPolicyCheck(other.get());
  EXPECT_EQ(other->asked.size(), 1u);
  EXPECT_EQ(gTarget.moduleInfo, other->info.get());
  CustomerPolicyCheck(first.get());
  EXPECT_EQ(first->asked.size(), 2u);
}

TEST_F(CustomerPolicy, RaisesAMissingFunction) {
  const AutoRefPtr<ImportingContext> context(new ImportingContext);
  context->function = nullptr;
  const Lines expected{std::string("2|Tovrin|Error.Tovrin.InvalidFunction|Imported ") + kTitle +
                       " doesn't exist!"};
  EXPECT_FALSE(CustomerPolicyCheck(context.get()));
  EXPECT_EQ(context->raised, expected);
  EXPECT_TRUE(context->made.empty());
  context->raised.clear();
  EXPECT_FALSE(CustomerPolicyCheck(context.get()));
  EXPECT_EQ(context->raised, expected) << "raised each time";
  EXPECT_EQ(context->asked.size(), 1u) << "but looked for once an instance";
}

// Contract: neither an error nor an interruption keeps the call from being made.
TEST_F(CustomerPolicy, NotesAContextInTroubleAndGoesOn) {
  const AutoRefPtr<ImportingContext> context(new ImportingContext);
  const AutoRefPtr<LoggerOfLines> logger(new LoggerOfLines);
  context->logger = Share(static_cast<ILogger*>(logger.get()));
  const std::string start = std::string("Tovrin|0|Error calling imported ") + kTitle;
  const std::string hasError = start + ", context has error \"went wrong\", backtrace: a <- b";
  const std::string isInterrupted = start + ", context is already interrupted, backtrace: a <- b";

  context->hasError = true;
  EXPECT_TRUE(CustomerPolicyCheck(context.get()));
  EXPECT_EQ(logger->lines, (Lines{hasError}));
  logger->lines.clear();
  context->isInterrupted = true;
  EXPECT_TRUE(CustomerPolicyCheck(context.get()));
  EXPECT_EQ(logger->lines, (Lines{hasError, isInterrupted}));
  EXPECT_EQ(gTarget.calls, 2);
  EXPECT_TRUE(context->raised.empty());

  context->logger.reset();
  EXPECT_TRUE(CustomerPolicyCheck(context.get())) << "without a logger";
}

TEST_F(CustomerPolicy, RaisesAFailureStatusAndKeepsTheAnswer) {
  struct Row {
    FunctionStatus status;
    const char* words;
  };
  for (const Row& row : {
           Row{1u << 16 | 2, "invalid parameter 1 in function '"},
           Row{300u << 16 | 2, "invalid parameter 300 in function '"},
           Row{1u << 16 | 4, "invalid object used for parameter 1 in function '"},
           Row{300u << 16 | 4, "invalid object used for parameter 300 in function '"},
           Row{1u << 16 | 1, "runtime error from function '"},
           Row{300u << 16 | 7, "runtime error from function '"},
           Row{2, "invalid parameter 0 in function '"},
           Row{0xffffu << 16, "runtime error from function '"},
           Row{0xffffffffu, "runtime error from function '"},
       }) {
    SCOPED_TRACE(row.status);
    for (const bool answer : {true, false}) {
      gTarget = Target{};
      gTarget.status = row.status;
      gTarget.answer = answer;
      const AutoRefPtr<ImportingContext> context(new ImportingContext);
      EXPECT_EQ(CustomerPolicyCheck(context.get()), answer);
      EXPECT_EQ(context->raised, (Lines{std::string("2|Tovrin|Error.Tovrin.InvalidArgument|") +
                                        row.words + "QRX.InCustomerControlledPolicy'"}));
    }
  }
}

// Between the look for the function and its call another instance takes its place.
TEST_F(CustomerPolicy, IsFalseWhereTheFunctionGoesBeforeItsCall) {
  const AutoRefPtr<ImportingContext> context(new ImportingContext);
  const AutoRefPtr<ImportingContext> without(new ImportingContext);
  without->function = nullptr;
  context->whenAskedForAVariant = [&] { EXPECT_FALSE(CustomerPolicyCheck(without.get())); };
  EXPECT_FALSE(CustomerPolicyCheck(context.get()));
  EXPECT_EQ(gTarget.calls, 0);
  EXPECT_TRUE(context->raised.empty());
  EXPECT_EQ(without->raised.size(), 1u);

  context->whenAskedForAVariant = [] {};
  EXPECT_TRUE(CustomerPolicyCheck(context.get())) << "it is looked for again";
}

TEST_F(CustomerPolicy, IsFalseWithoutAResultVariant) {
  for (const FunctionStatus status : {0u, 1u << 16 | 2}) {
    gTarget.status = status;
    const AutoRefPtr<ImportingContext> context(new ImportingContext);
    context->givesVariants = false;
    EXPECT_FALSE(CustomerPolicyCheck(context.get()));
    EXPECT_FALSE(gTarget.hadResult);
    EXPECT_EQ(context->raised.size(), status == 0 ? 0u : 1u);
  }
  EXPECT_EQ(gTarget.calls, 2);
}

TEST(StatusMessage, NamesProceduresAsSuch) {
  EXPECT_EQ(StatusMessage(MakeStatus(2, kWrongArgument), "procedure", "Tessarin.Add"),
            "invalid parameter 2 in procedure 'Tessarin.Add'");
}

// ------------------------------------------------------------------------------------ other
// results

struct TextOfJson {
  using Result = std::string;
  static constexpr ImportedFunctionNames kNames{"ToString", "JSON_ToString", "STRING", "JSON"};
};

extern "C" FunctionStatus JoinTexts(std::uint32_t count, IVariant* const* arguments,
                                    IVariant* result, IModuleInfo*, IContext*) {
  std::string text;
  for (std::uint32_t i = 0; i < count; ++i) text += ReadValue<std::string>(Share(arguments[i]));
  result->AssignString(text);
  return 0;
}

TEST(ImportedFunctionBridge, BringsTextsBothWays) {
  const AutoRefPtr<ImportingContext> context(new ImportingContext);
  context->function = &JoinTexts;
  const auto first = TestVariant::Text(std::string("a\0b", 3));
  const auto second = TestVariant::Text("c");
  EXPECT_EQ(ImportedFunctionBridge<TextOfJson>::Call(context.get(), {first.get(), second.get()}),
            std::string("a\0bc", 4));
  EXPECT_EQ(context->asked, (Lines{"ToString 1 'STRING' 'JSON'"}));
  EXPECT_EQ(context->made, (std::vector<TypeId>{kTypeString}));
  EXPECT_EQ(ImportedFunctionBridge<TextOfJson>::Call(nullptr), "");
}

struct CreateObject {
  using Result = AutoRefPtr<IUserDefinedType>;
  static constexpr ImportedFunctionNames kNames{"JSON.CreateEmptyObject", "JSON_CreateEmptyObject",
                                                "JSON", ""};
};

class Object final : public InterfaceImpl<IUserDefinedType> {
private:
  const char* Interface_GetName() const override { return "JSON"; }
  IUserDefinedType* Interface_Clone() const override { return nullptr; }
  TypeId Interface_GetType() const override { return kFirstUserType; }
  bool Interface_LessThan(const IUserDefinedType*) const override { return false; }
  bool Interface_FromBinaryData(const void*, std::size_t, std::size_t) override { return false; }
  std::size_t Interface_ToBinaryData(void**, std::size_t) const override { return 0; }
};

extern "C" FunctionStatus MakeObject(std::uint32_t, IVariant* const*, IVariant* result,
                                     IModuleInfo*, IContext*) {
  result->SetUserDefined(AutoRefPtr<IUserDefinedType>(new Object));
  return 0;
}

TEST(ImportedFunctionBridge, BringsObjectsOfTypesKnownByName) {
  const AutoRefPtr<ImportingContext> context(new ImportingContext);
  context->function = &MakeObject;
  context->userType = 25;
  const AutoRefPtr<IUserDefinedType> object =
      ImportedFunctionBridge<CreateObject>::Call(context.get());
  ASSERT_TRUE(object);
  EXPECT_EQ(object->GetCount(), 1);
  EXPECT_EQ(context->made, (std::vector<TypeId>{25}));

  const AutoRefPtr<ImportingContext> without(new ImportingContext);
  without->function = nullptr;
  EXPECT_FALSE(ImportedFunctionBridge<CreateObject>::Call(without.get()));
}

// The first use resolves whatever the instance is: 0 is an id as any other.
struct FirstUse {
  using Result = bool;
  static constexpr ImportedFunctionNames kNames{"First.Use", "First_Use", "BOOLEAN", ""};
};

TEST(ImportedFunctionBridge, ResolvesAtFirstUseForInstanceZero) {
  gTarget = Target{};
  const AutoRefPtr<ImportingContext> context(new ImportingContext(0));
  EXPECT_TRUE(ImportedFunctionBridge<FirstUse>::Call(context.get()));
  EXPECT_EQ(context->asked, (Lines{"First.Use 1 'BOOLEAN' ''"}));
  EXPECT_EQ(context->timesAskedForInstance, 1);
  EXPECT_TRUE(ImportedFunctionBridge<FirstUse>::Call(context.get()));
  EXPECT_EQ(context->timesAskedForInstance, 2) << "once a call";
}

// A first use that fails leaves nothing behind, and the next is the first again.
struct FailingUse {
  using Result = bool;
  static constexpr ImportedFunctionNames kNames{"Failing.Use", "Failing_Use", "BOOLEAN", ""};
};

class FailingContext final : public NeutralContext {
  ModuleFunction Interface_GetFunction(const char*, std::uint32_t, const char* const*,
                                       IModuleInfo**, std::uint32_t) override {
    throw std::runtime_error("the host's own");
  }
};

TEST(ImportedFunctionBridge, ResolvesAgainAfterAFirstUseThatFailed) {
  gTarget = Target{};
  const AutoRefPtr<FailingContext> failing(new FailingContext);
  EXPECT_THROW(ImportedFunctionBridge<FailingUse>::Call(failing.get()), std::runtime_error);
  const AutoRefPtr<ImportingContext> context(new ImportingContext(0));
  EXPECT_TRUE(ImportedFunctionBridge<FailingUse>::Call(context.get()));
}

}  // namespace
