#include "host/IContext.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/Data.h"
#include "tests/support/HostContext.h"
#include "tests/support/HostJSON.h"
#include "tests/support/HostValues.h"

namespace {

using namespace Tovrin;

// A context that keeps user data and makes values of every type, save those that it is told to
// lack.
class StoringContext final : public NeutralContext {
public:
  std::map<std::uint64_t, AutoRefPtr<IVariant>> stored;
  std::set<TypeId> lacking;
  std::vector<TypeId> made;   // the types asked for, in order
  bool hasContainers = true;  // false: variants of containers come without one
  int mostElements = -1;      // that a container takes; negative for all
  AutoRefPtr<ILogger> logger;

private:
  static TypeId ScalarOf(TypeId type) { return (type - 1) / 4 * 4 + 1; }
  AutoRefPtr<const IVectorGeneric> NewVector(TypeId type) const {
    using Vector = AutoRefPtr<const IVectorGeneric>;
    return mostElements < 0 ? Vector(new TestVector(ScalarOf(type), {}))
                            : Vector(new FadingVector(mostElements));
  }
  AutoRefPtr<const IMapGeneric> NewMap(TypeId type) const {
    using Map = AutoRefPtr<const IMapGeneric>;
    const TypeId key = IsStringMapType(type) ? kTypeString : kTypeNumber;
    return mostElements < 0 ? Map(new TestMap(key, ScalarOf(type), {}))
                            : Map(new FadingMap(mostElements));
  }
  IVariant* Interface_CreateInstance(TypeId type) override {
    made.push_back(type);
    if (lacking.contains(type)) return nullptr;
    auto* variant = new TestVariant(type);
    if (IsVectorType(type)) {
      if (hasContainers) variant->AssignVector(NewVector(type));
    } else if (IsNumberMapType(type) || IsStringMapType(type)) {
      if (hasContainers) variant->AssignMap(NewMap(type));
    } else if (type == kTypeDataRef) {
      variant->AssignData(AutoRefPtr<IDataRef>(new Data("new")));
    } else if (type == kTypeStream) {
      variant->AssignStream(AutoRefPtr<IStream>(new SilentStream));
    }
    return variant;
  }
  void Interface_SetUserData(std::uint64_t id, IVariant* value) override {
    stored[id] = Share(value);
  }
  IVariant* Interface_GetUserData(std::uint64_t id) const override {
    const auto found = stored.find(id);
    return found == stored.end() ? nullptr : Share(found->second.get()).release();
  }
  ILogger* Interface_GetLogger() const override { return Share(logger.get()).release(); }
  std::uint32_t Interface_GetTransactionId() const override { return 77; }
};

AutoRefPtr<StoringContext> NewContext() {
  return AutoRefPtr<StoringContext>(new StoringContext);
}

TEST(IContext, MakesEveryContainerByItsTypeId) {
  const auto context = NewContext();
  auto* c = static_cast<IContext*>(context.get());
  struct VectorRow {
    TypeId type;
    AutoRefPtr<const IVectorGeneric> (IContext::*create)();
  };
  for (const VectorRow& row :
       {VectorRow{2, &IContext::CreateBooleanVector}, VectorRow{6, &IContext::CreateNumberVector},
        VectorRow{10, &IContext::CreateStringVector}, VectorRow{14, &IContext::CreateDataVector},
        VectorRow{18, &IContext::CreateStreamVector}}) {
    SCOPED_TRACE(row.type);
    context->lacking.clear();
    context->made.clear();
    const auto vector = (c->*row.create)();
    ASSERT_TRUE(vector);
    EXPECT_EQ(context->made, (std::vector<TypeId>{row.type}));
    EXPECT_EQ(vector->GetCount(), 1) << "the variant is gone";
    context->lacking = {row.type};
    EXPECT_FALSE((c->*row.create)());
  }
  struct MapRow {
    TypeId type;
    AutoRefPtr<const IMapGeneric> (IContext::*create)();
  };
  for (const MapRow& row :
       {MapRow{3, &IContext::CreateNumberToBooleanMap},
        MapRow{4, &IContext::CreateStringToBooleanMap},
        MapRow{7, &IContext::CreateNumberToNumberMap},
        MapRow{8, &IContext::CreateStringToNumberMap},
        MapRow{11, &IContext::CreateNumberToStringMap},
        MapRow{12, &IContext::CreateStringToStringMap},
        MapRow{15, &IContext::CreateNumberToDataMap}, MapRow{16, &IContext::CreateStringToDataMap},
        MapRow{19, &IContext::CreateNumberToStreamMap},
        MapRow{20, &IContext::CreateStringToStreamMap}}) {
    SCOPED_TRACE(row.type);
    context->lacking.clear();
    context->made.clear();
    const auto map = (c->*row.create)();
    ASSERT_TRUE(map);
    EXPECT_EQ(context->made, (std::vector<TypeId>{row.type}));
    EXPECT_EQ(map->GetCount(), 1);
    context->lacking = {row.type};
    EXPECT_FALSE((c->*row.create)());
  }
}

TEST(IContext, MakesDataAndStreams) {
  const auto context = NewContext();
  const AutoRefPtr<IDataRef> data = context->CreateDataInstance();
  ASSERT_TRUE(data);
  EXPECT_EQ(data->GetCount(), 1);
  const AutoRefPtr<IStream> stream = context->CreateStreamInstance();
  ASSERT_TRUE(stream);
  EXPECT_EQ(stream->GetCount(), 1);
  EXPECT_EQ(context->made, (std::vector<TypeId>{13, 17}));
  context->lacking = {13, 17};
  EXPECT_FALSE(context->CreateDataInstance());
  EXPECT_FALSE(context->CreateStreamInstance());
}

// What is set comes back, through the variants of the table's type ids.
TEST(IContext, KeepsVectorsAsUserData) {
  const auto context = NewContext();
  const std::vector<std::string> texts{"b", "", std::string("a\0c", 3)};
  const std::vector<double> numbers{1.5, -2, 0};
  const std::vector<bool> booleans{true, false, true};
  context->SetUserDataAsStringVector(1, texts);
  context->SetUserDataAsNumberVector(2, numbers);
  context->SetUserDataAsBooleanVector(3, booleans);
  EXPECT_EQ(context->stored[1]->GetType(), 10u);
  EXPECT_EQ(context->stored[2]->GetType(), 6u);
  EXPECT_EQ(context->stored[3]->GetType(), 2u);
  EXPECT_EQ(context->made, (std::vector<TypeId>{10, 9, 9, 9, 6, 5, 5, 5, 2, 1, 1, 1}));
  EXPECT_EQ(context->GetUserDataAsStringVector(1), texts);
  EXPECT_EQ(context->GetUserDataAsNumberVector(2), numbers);
  EXPECT_EQ(context->GetUserDataAsBooleanVector(3), booleans);
  EXPECT_EQ(context->stored[1]->GetCount(), 1);

  EXPECT_TRUE(context->GetUserDataAsStringVector(9).empty()) << "nothing stored";
  EXPECT_TRUE(context->GetUserDataAsStringVector(2).empty()) << "another type";
  EXPECT_TRUE(context->GetUserDataAsNumberVector(1).empty());
  EXPECT_TRUE(context->GetUserDataAsBooleanVector(1).empty());
  context->stored[1] = AutoRefPtr<IVariant>(new TestVariant(10));
  EXPECT_TRUE(context->GetUserDataAsStringVector(1).empty()) << "a variant without a vector";
}

template <class Map>
void ExpectKept(const AutoRefPtr<StoringContext>& context, TypeId type, const Map& values,
                void (IContext::*set)(std::uint64_t, const Map&),
                Map (IContext::*get)(std::uint64_t) const) {
  SCOPED_TRACE(type);
  auto* c = static_cast<IContext*>(context.get());
  (c->*set)(type, values);
  ASSERT_TRUE(context->stored[type]);
  EXPECT_EQ(context->stored[type]->GetType(), type);
  EXPECT_EQ((c->*get)(type), values);
  EXPECT_TRUE((c->*get)(999).empty());
  context->stored[type] = AutoRefPtr<IVariant>(new TestVariant(type ^ 1));
  EXPECT_TRUE((c->*get)(type).empty()) << "another type";
  context->stored[type] = AutoRefPtr<IVariant>(new TestVariant(type));
  EXPECT_TRUE((c->*get)(type).empty()) << "a variant without a map";
}

TEST(IContext, KeepsMapsAsUserData) {
  const auto context = NewContext();
  ExpectKept<std::map<std::string, std::string>>(context, 12, {{"a", "1"}, {"", "2"}},
                                                 &IContext::SetUserDataAsStringToStringMap,
                                                 &IContext::GetUserDataAsStringToStringMap);
  ExpectKept<std::map<std::string, double>>(context, 8, {{"a", 1}, {"b", 2.5}},
                                            &IContext::SetUserDataAsStringToNumberMap,
                                            &IContext::GetUserDataAsStringToNumberMap);
  ExpectKept<std::map<std::string, bool>>(context, 4, {{"a", true}, {"b", false}},
                                          &IContext::SetUserDataAsStringToBooleanMap,
                                          &IContext::GetUserDataAsStringToBooleanMap);
  ExpectKept<std::map<double, std::string>>(context, 11, {{1, "a"}, {-0.5, "b"}},
                                            &IContext::SetUserDataAsNumberToStringMap,
                                            &IContext::GetUserDataAsNumberToStringMap);
  ExpectKept<std::map<double, double>>(context, 7, {{1, 2}, {3, 4}},
                                       &IContext::SetUserDataAsNumberToNumberMap,
                                       &IContext::GetUserDataAsNumberToNumberMap);
  ExpectKept<std::map<double, bool>>(context, 3, {{1, true}, {3, false}},
                                     &IContext::SetUserDataAsNumberToBooleanMap,
                                     &IContext::GetUserDataAsNumberToBooleanMap);
}

TEST(IContext, StoresNothingWhereTheHostGivesNoContainer) {
  const auto context = NewContext();
  context->lacking = {10, 12};
  context->SetUserDataAsStringVector(1, {"a"});
  context->SetUserDataAsStringToStringMap(2, {{"a", "b"}});
  EXPECT_TRUE(context->stored.empty());
  EXPECT_EQ(context->made, (std::vector<TypeId>{10, 12}));
}

// All elements or none: what was stored before stays.
TEST(IContext, StoresNothingWhereAContainerDoesNotTakeEveryElement) {
  const auto context = NewContext();
  const AutoRefPtr<IVariant> before(new TestVariant(0));
  context->stored = {{1, before}, {2, before}};
  const auto expectNothingStored = [&] {
    context->SetUserDataAsStringVector(1, {"a"});
    context->SetUserDataAsStringVector(1, {"a", "b"});
    context->SetUserDataAsNumberToStringMap(2, {{1, "a"}});
    context->SetUserDataAsNumberToStringMap(2, {{1, "a"}, {2, "b"}});
    EXPECT_EQ(context->stored[1].get(), before.get());
    EXPECT_EQ(context->stored[2].get(), before.get());
  };
  context->mostElements = 0;
  expectNothingStored();
  context->hasContainers = false;
  expectNothingStored();

  context->hasContainers = true;
  context->mostElements = 1;
  context->SetUserDataAsStringVector(1, {"a", "b"});
  context->SetUserDataAsNumberToStringMap(2, {{1, "a"}, {2, "b"}});
  EXPECT_EQ(context->stored[1].get(), before.get());
  EXPECT_EQ(context->stored[2].get(), before.get());
  context->SetUserDataAsStringVector(1, {"a"});
  context->SetUserDataAsNumberToStringMap(2, {{1, "a"}});
  EXPECT_EQ(context->stored[1]->GetType(), 10u);
  EXPECT_EQ(context->stored[2]->GetType(), 11u);
}

TEST(IContext, ReadsMissingElementsAsNeutralValues) {
  const auto context = NewContext();
  context->lacking = {9};
  context->SetUserDataAsStringVector(1, {"a", "b"});
  EXPECT_EQ(context->GetUserDataAsStringVector(1), (std::vector<std::string>{"", ""}));
}

// ------------------------------------------------------------------------------------ log

// Writes down each call with what it brought.
class NotingLogger final : public NeutralLogger {
public:
  std::vector<std::string> calls;
  std::int32_t contextCount = 0;  // of the context that the last call brought

private:
  void Note(std::string what, std::uint32_t transactionId, IContext* context) {
    contextCount = context ? context->GetCount() : 0;
    calls.push_back(std::move(what) + " in " + std::to_string(transactionId));
  }
  static std::string TextOf(IJSON* json) { return json ? json->ToString() : "(null)"; }

  bool Interface_IsDebugLogEnabled(const char* module, std::uint32_t level) const override {
    return std::string(module) == "on" && level < 5;
  }
  void Interface_DebugLog(const char* module, std::uint32_t level, IJSON* json,
                          std::uint32_t transactionId, IContext* context) override {
    Note(std::string("debug json ") + module + std::to_string(level) + TextOf(json), transactionId,
         context);
  }
  void Interface_DebugLog(const char* module, std::uint32_t level, const char* text,
                          std::uint32_t transactionId, IContext* context) override {
    Note(std::string("debug text ") + module + std::to_string(level) + text, transactionId,
         context);
  }
  void Interface_ErrorLog(const char* module, IJSON* json, std::uint32_t transactionId,
                          IContext* context) override {
    Note(std::string("error json ") + module + TextOf(json), transactionId, context);
  }
  void Interface_ErrorLog(const char* module, const char* text, std::uint32_t transactionId,
                          IContext* context) override {
    Note(std::string("error text ") + module + text, transactionId, context);
  }
};

TEST(IContext, LogsThroughTheLoggerWithItself) {
  const auto context = NewContext();
  const AutoRefPtr<NotingLogger> logger(new NotingLogger);
  const AutoRefPtr<IJSON> json(new TextJSON("{}"));
  context->logger = AutoRefPtr<ILogger>(Share(static_cast<ILogger*>(logger.get())));
  EXPECT_TRUE(context->IsDebugLogEnabled("on", 1));
  EXPECT_FALSE(context->IsDebugLogEnabled("off", 1));
  EXPECT_FALSE(context->IsDebugLogEnabled("on", 5));

  context->DebugLog("M", 1, "x");
  EXPECT_EQ(logger->contextCount, 2) << "a reference is held for the call";
  context->DebugLog("M", 2, std::string("y"));
  context->DebugLog("M", 3, json);
  context->ErrorLog("M", "x");
  EXPECT_EQ(logger->contextCount, 2);
  context->ErrorLog("M", std::string("y"));
  context->ErrorLog("M", json);
  context->ErrorLog("M", AutoRefPtr<IJSON>());
  EXPECT_EQ(logger->calls, (std::vector<std::string>{"debug text M1x in 77", "debug text M2y in 77",
                                                     "debug json M3{} in 77", "error text Mx in 77",
                                                     "error text My in 77", "error json M{} in 77",
                                                     "error json M(null) in 77"}));
  EXPECT_EQ(context->GetCount(), 1);
  EXPECT_EQ(json->GetCount(), 1);
  EXPECT_EQ(logger->GetCount(), 2);
}

// ------------------------------------------------------------------------------------ linking

class LinkingContext final : public NeutralContext {
public:
  AutoRefPtr<TestModuleInfo> info;

private:
  IModuleInfo* Hand() { return Share(info.get()).release(); }
  ModuleFunction Interface_GetFunction(const char*, std::uint32_t, const char* const*,
                                       IModuleInfo** out, std::uint32_t) override {
    *out = Hand();
    return nullptr;
  }
  ModuleFunction Interface_GetProcedure(const char*, std::uint32_t, const char* const*,
                                        IModuleInfo** out, std::uint32_t) override {
    *out = Hand();
    return nullptr;
  }
};

TEST(IContext, HandsOverOrReleasesTheInfoOfALinkedFunction) {
  const AutoRefPtr<LinkingContext> context(new LinkingContext);
  const AutoRefPtr<TestModuleInfo> info(new TestModuleInfo);
  context->info = info;
  context->GetFunction("f", 0, nullptr, nullptr, 0);
  context->GetProcedure("f", 0, nullptr, nullptr, 0);
  EXPECT_EQ(info->GetCount(), 2);
  AutoRefPtr<IModuleInfo> out;
  context->GetFunction("f", 0, nullptr, &out, 0);
  EXPECT_EQ(out.get(), info.get());
  EXPECT_EQ(info->GetCount(), 3);
  context->GetProcedure("f", 0, nullptr, &out, 0);
  EXPECT_EQ(info->GetCount(), 3) << "the one before was released";
  context->info.reset();
  context->GetFunction("f", 0, nullptr, &out, 0);
  EXPECT_FALSE(out);
  EXPECT_EQ(info->GetCount(), 1);
}

// ------------------------------------------------------------------------------------ value forms

TEST(ValueForm, IntegersHoldWhatTheyCan) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  struct Row {
    double number;
    std::int32_t narrow;
    std::int64_t wide;
    std::uint64_t natural;
  };
  for (const Row& row : {
           Row{0, 0, 0, 0},
           Row{0.9, 0, 0, 0},
           Row{-0.9, 0, 0, 0},
           Row{-1, -1, -1, 0},
           Row{2147483647.5, INT32_MAX, 2147483647, 2147483647},
           Row{2147483648.0, INT32_MIN, 2147483648, 2147483648},
           Row{-2147483648.5, INT32_MIN, -2147483648LL, 0},
           Row{9007199254740992.0, INT32_MIN, 9007199254740992, 9007199254740992},
           Row{9223372036854775808.0, INT32_MIN, INT64_MIN, 9223372036854775808u},
           Row{18446744073709551616.0, INT32_MIN, INT64_MIN, 0},
           Row{1e300, INT32_MIN, INT64_MIN, 0},
           Row{-1e300, INT32_MIN, INT64_MIN, 0},
           Row{kInfinity, INT32_MIN, INT64_MIN, 0},
           Row{kNaN, INT32_MIN, INT64_MIN, 0},
       }) {
    SCOPED_TRACE(row.number);
    const AutoRefPtr<IVariant> variant(TestVariant::Number(row.number).release());
    EXPECT_EQ(ReadValue<std::int32_t>(variant), row.narrow);
    EXPECT_EQ(ReadValue<std::int64_t>(variant), row.wide);
    EXPECT_EQ(ReadValue<std::uint64_t>(variant), row.natural);
  }
}

}  // namespace
