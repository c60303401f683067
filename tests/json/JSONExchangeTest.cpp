#include "json/JSONExchange.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/support/HostContext.h"
#include "tests/support/HostValues.h"

namespace Tovrin::JSON {
namespace {

using Lines = std::vector<std::string>;
using Object = AutoRefPtr<IUserDefinedType>;

constexpr TypeId kJsonType = 25;

// The other module's JSON value: of this build, or of another one that knows texts only.
class HostJson final : public InterfaceImpl<IUserDefinedType> {
public:
  explicit HostJson(bool isOurs) : isOurs(isOurs) {}

  const bool isOurs;
  AutoRefPtr<JSONWrapper> value = JSONWrapper::CreateNull();

private:
  const char* Interface_GetName() const override { return "JSON"; }
  IUserDefinedType* Interface_Clone() const override { return nullptr; }
  TypeId Interface_GetType() const override { return kJsonType; }
  bool Interface_LessThan(const IUserDefinedType*) const override { return false; }
  bool Interface_FromBinaryData(const void* data, std::size_t size, std::size_t formatId) override {
    if (!isOurs || size != sizeof data || formatId != kJSONDataFormat) return false;
    value = AutoRefPtr<JSONWrapper>(new JSONWrapper(static_cast<const JSONData*>(data)->Root));
    return true;
  }
  std::size_t Interface_ToBinaryData(void** out, std::size_t formatId) const override {
    if (!isOurs || formatId != kJSONDataFormat) return 0;
    *out = value->SharedData().get();
    return sizeof *out;
  }
};

bool gIsOurs = false;
FunctionStatus gStatus = 0;
std::size_t gCalls = 0;

HostJson* JsonOf(IVariant* const* arguments) {
  return static_cast<HostJson*>(arguments[0]->GetUserDefined().get());
}

extern "C" {
FunctionStatus MakeEmpty(std::uint32_t count, IVariant* const*, IVariant* result, IModuleInfo*,
                         IContext*) {
  ++gCalls;
  EXPECT_EQ(count, 0u);
  result->SetUserDefined(Object(new HostJson(gIsOurs)));
  return gStatus;
}
FunctionStatus MakeFromText(std::uint32_t count, IVariant* const* arguments, IVariant* result,
                            IModuleInfo*, IContext*) {
  ++gCalls;
  EXPECT_EQ(count, 1u);
  AutoRefPtr<HostJson> made(new HostJson(gIsOurs));
  const std::size_t size = arguments[0]->GetStringSize();
  made->value->ParseText({arguments[0]->GetString(), size}, true);
  if (gStatus == 0) result->SetUserDefined(Share<IUserDefinedType>(made.get()));
  return gStatus;
}
FunctionStatus MakeText(std::uint32_t count, IVariant* const* arguments, IVariant* result,
                        IModuleInfo*, IContext*) {
  ++gCalls;
  EXPECT_EQ(count, 1u);
  if (gStatus == 0) result->AssignString(JsonOf(arguments)->value->ToString());
  return gStatus;
}
}

class Log final : public NeutralLogger {
public:
  Lines lines;

private:
  void Interface_ErrorLog(const char* module, const char* text, std::uint32_t, IContext*) override {
    lines.push_back(std::string(module) + "|" + text);
  }
  void Interface_DebugLog(const char*, std::uint32_t, const char* text, std::uint32_t,
                          IContext*) override {
    lines.push_back(std::string("debug|") + text);
  }
};

// A transaction of a host instance of its own, so that every test resolves the functions anew.
class ExchangeContext final : public NeutralContext {
public:
  ExchangeContext() {
    static std::uint64_t next = 100;
    fInstance = ++next;
  }

  bool hasFunctions = true;
  bool hasError = false;
  bool isInterrupted = false;
  AutoRefPtr<Log> log{new Log};
  Lines raised;

private:
  std::uint64_t Interface_GetTovrinInstanceId() const override { return fInstance; }
  TypeId Interface_FindType(const char* name) const override {
    return std::strcmp(name, "JSON") == 0 ? kJsonType : 0;
  }
  IVariant* Interface_CreateInstance(TypeId type) override { return new TestVariant(type); }
  ModuleFunction Interface_GetFunction(const char* name, std::uint32_t count,
                                       const char* const* types, IModuleInfo**,
                                       std::uint32_t) override {
    EXPECT_EQ(count, 2u);
    const std::string asked = std::string(types[0]) + " " + name + " (" + types[1] + ")";
    if (!hasFunctions) return nullptr;
    if (asked == "JSON JSON.CreateEmptyObject ()") return &MakeEmpty;
    if (asked == "JSON JSON.FromString (STRING)") return &MakeFromText;
    if (asked == "STRING ToString (JSON)") return &MakeText;
    ADD_FAILURE() << asked;
    return nullptr;
  }
  ILogger* Interface_GetLogger() const override { return Share<ILogger>(log.get()).release(); }
  bool Interface_HasError() const override { return hasError; }
  bool Interface_IsInterrupted() const override { return isInterrupted; }
  void Interface_TriggerErrorHandler(ErrorSeverity, const char*, const char* id,
                                     const char* message) override {
    raised.push_back(std::string(id) + "|" + message);
  }

  std::uint64_t fInstance;
};

class JSONExchange : public testing::Test {
protected:
  void SetUp() override {
    gIsOurs = false;
    gStatus = 0;
    gCalls = 0;
  }

  AutoRefPtr<ExchangeContext> context{new ExchangeContext};
  AutoRefPtr<JSONWrapper> json = JSONWrapper::FromString(R"({"b":[1],"a":2})");
};

TEST_F(JSONExchange, ThisBuildsValuesAreHandedOverWhole) {
  gIsOurs = true;
  const Object object = ToHostObject(*json.get(), context.get());
  ASSERT_TRUE(object);
  EXPECT_EQ(gCalls, 1u);
  EXPECT_EQ(static_cast<HostJson*>(object.get())->value->SharedData()->Root,
            json->SharedData()->Root);

  const auto back = FromHostObject(object, nullptr);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->SharedData()->Root, json->SharedData()->Root);
  back->Set("c", true);
  EXPECT_TRUE(json->Has("c"));
  EXPECT_EQ(gCalls, 1u);
  EXPECT_TRUE(context->log->lines.empty());
}

TEST_F(JSONExchange, AnotherBuildsValuesGoByTextAndTheLogSaysSoOnce) {
  const Object object = ToHostObject(*json.get(), context.get());
  ASSERT_TRUE(object);
  const auto back = FromHostObject(object, context.get());
  ASSERT_TRUE(back);
  EXPECT_TRUE(back->Equals(json.get()));
  EXPECT_EQ(back->ToString(), json->ToString());
  EXPECT_FALSE(back->SharedData()->Root == json->SharedData()->Root);
  EXPECT_EQ(gCalls, 3u);
  EXPECT_EQ(context->log->lines,
            (Lines{"JSONWrapper|JSON module implementation is not compatible with JSONWrapper "
                   "implementation, leading to performance inefficiencies."}));
}

TEST_F(JSONExchange, WithoutAContextOnlyThisBuildsValuesAreRead) {
  EXPECT_FALSE(FromHostObject(Object(new HostJson(false)), nullptr));
  EXPECT_TRUE(FromHostObject(Object(new HostJson(true)), nullptr));
  EXPECT_FALSE(FromHostObject(Object(), context.get()));
  EXPECT_FALSE(ToHostObject(*json.get(), nullptr));
}

TEST_F(JSONExchange, MissingFunctionsAreRaisedInTheContext) {
  context->hasFunctions = false;
  EXPECT_FALSE(ToHostObject(*json.get(), context.get()));
  EXPECT_FALSE(FromHostObject(Object(new HostJson(false)), context.get()));
  EXPECT_EQ(context->raised,
            (Lines{"Error.Tovrin.InvalidFunction|Imported Tovrin function JSON.CreateEmptyObject "
                   "(imported as JSON_CreateEmptyObject) doesn't exist!",
                   "Error.Tovrin.InvalidFunction|Imported Tovrin function JSON.FromString "
                   "(imported as JSON_FromString) doesn't exist!",
                   "Error.Tovrin.InvalidFunction|Imported Tovrin function ToString "
                   "(imported as JSON_ToString) doesn't exist!"}));
}

TEST_F(JSONExchange, RefusedArgumentsAreRaisedInTheContext) {
  gStatus = MakeStatus(1, kWrongArgument);
  EXPECT_FALSE(ToHostObject(*json.get(), context.get()));
  EXPECT_FALSE(FromHostObject(Object(new HostJson(false)), context.get()));
  ASSERT_EQ(context->raised.size(), 3u);
  EXPECT_EQ(context->raised[1],
            "Error.Tovrin.InvalidArgument|invalid parameter 1 in function 'JSON.FromString'");
}

TEST_F(JSONExchange, AContextWithAnErrorOrInterruptedIsNoHindrance) {
  context->hasError = true;
  context->isInterrupted = true;
  EXPECT_TRUE(ToHostObject(*json.get(), context.get()));
  std::size_t noted = 0;
  for (const std::string& line : context->log->lines) noted += line.starts_with("debug|Error call");
  EXPECT_EQ(noted, 4u);
}

}  // namespace
}  // namespace Tovrin::JSON
