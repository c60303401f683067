// Bad calls of every function, generated from the definition text: each function x each position x
// each flaw. The first flaw gives the status, whatever comes behind it is not looked at, no
// reference stays behind, and the result gets the neutral value of its kind.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "host/Data.h"
#include "tests/module/DefinitionEntries.h"
#include "tests/module/ModuleCalls.h"

using namespace Tovrin;

namespace {

constexpr std::uint32_t kMissing = 1, kWrong = 2, kNoObject = 4;

// A user-defined value of some other module.
class ForeignValue final : public InterfaceImpl<IUserDefinedType> {
  const char* Interface_GetName() const override { return "Tessarin"; }  // a name proves nothing
  IUserDefinedType* Interface_Clone() const override { return nullptr; }
  TypeId Interface_GetType() const override { return kTestTessarinId; }
  bool Interface_LessThan(const IUserDefinedType*) const override { return false; }
  bool Interface_FromBinaryData(const void*, std::size_t, std::size_t) override { return false; }
  std::size_t Interface_ToBinaryData(void**, std::size_t) const override { return 0; }
};

AutoRefPtr<TestVariant> Foreign(TypeId type) {
  return TestVariant::Object(type, AutoRefPtr<IUserDefinedType>(new ForeignValue));
}

AutoRefPtr<TestVariant> List() {
  using Factory = IUserDefinedType*(std::uint32_t);
  auto* const object = ModuleSymbolAs<Factory>("tovrin_module_CreateTessarinList")(kTestListId);
  return TestVariant::Object(kTestListId, AutoRefPtr<IUserDefinedType>(object));
}

AutoRefPtr<TestVariant> DataOf(const std::string& bytes) {
  const AutoRefPtr<IDataRef> data(new Data);
  data->Assign(bytes.data(), bytes.size());
  return TestVariant::Data(data);
}

AutoRefPtr<TestVariant> TextVector() {
  return TestVariant::Vector(kTypeString + kVectorOf, TestVector::Texts({"a", "b"}));
}

// An argument as the definition wants it.
AutoRefPtr<TestVariant> Good(const std::string& type) {
  if (type == "BOOLEAN") return Boolean(true);
  if (type == "NUMBER") return Number(0);
  if (type == "STRING") return Text("a");
  if (type == "DATAREF") return DataOf("four");  // no pointer: leaves the host's slot alone
  if (type == "VECTOR<STRING>") return TextVector();
  if (type == "Tessarin") return Expression("a");
  if (type == "Tessarin.List") return List();
  throw std::runtime_error("the definition uses a type that this test does not know: " + type);
}

struct Flaw {
  std::string name;
  AutoRefPtr<TestVariant> argument;
  std::uint32_t code;
};

// Every way in which an argument can be there and not fit.
std::vector<Flaw> FlawsFor(const std::string& wanted) {
  const std::map<std::string, AutoRefPtr<TestVariant>> kinds = {
      {"BOOLEAN", Boolean(true)},
      {"NUMBER", Number(0)},
      {"STRING", Text("a")},
      {"DATAREF", DataOf("four")},
      {"VECTOR<STRING>", TextVector()},
      {"Tessarin", Expression("a")},
      {"STREAM", AutoRefPtr<TestVariant>(new TestVariant(kTypeStream))},
      {"no type", AutoRefPtr<TestVariant>(new TestVariant(0))},
      {"a foreign object", Foreign(kTestTessarinId)},
      {"a vector without elements", AutoRefPtr<TestVariant>(new TestVariant(10))},
  };
  std::vector<Flaw> flaws = {{"null entry", {}, kWrong}};
  for (const auto& [kind, argument] : kinds) {
    if (kind != wanted) flaws.push_back({kind, argument, kWrong});
  }
  const auto list = List();
  if (wanted != "Tessarin.List" && list->GetUserDefined()) flaws.push_back({"list", list, kWrong});
  // Contract: a user-defined argument without its object is told as such to every reader.
  for (const TypeId type : {TypeId{21}, TypeId{22}, TypeId{23}, TypeId{24}, kTestListId}) {
    flaws.push_back({"no object, type " + std::to_string(type), WithoutObject(type), kNoObject});
  }
  return flaws;
}

std::vector<std::string> NeutralChanges(const std::string& resultType) {
  if (resultType == "BOOLEAN") return {"AssignBoolean false"};
  if (resultType == "NUMBER") return {"AssignNumber 0"};
  if (resultType == "STRING") return {"AssignString null 0"};
  return {};  // vectors, objects and procedures leave the result as it was
}

std::vector<DefinitionEntry> Functions() {
  auto entries = ReadDefinition(ModuleSymbolAs<const char*()>("GetModuleDefinition")());
  std::erase_if(entries, [](const DefinitionEntry& entry) { return entry.keyword == "TYPE"; });
  return entries;
}

// How far the arguments in front of a position can be good: a host that gets no list object from
// the factory has none to pass.
bool CanBeGood(const DefinitionEntry& entry, std::size_t count) {
  for (std::size_t index = 0; index < count; ++index) {
    if (entry.arguments[index] == "Tessarin.List" && !List()->GetUserDefined()) return false;
  }
  return true;
}

Values GoodUpTo(const DefinitionEntry& entry, std::size_t count) {
  Values values;
  for (std::size_t index = 0; index < count; ++index)
    values.push_back(Good(entry.arguments[index]));
  return values;
}

FunctionStatus Status(std::size_t position, std::uint32_t code) {
  return static_cast<FunctionStatus>(position + 1) << 16 | code;
}

// The references on an argument and on what it holds.
using References = std::vector<std::int32_t>;

References Count(const Values& arguments) {
  References counts;
  for (const auto& argument : arguments) {
    if (!argument) continue;
    counts.push_back(argument->GetCount());
    if (const auto object = argument->GetUserDefined()) counts.push_back(object->GetCount());
    if (const auto vector = argument->GetVector()) counts.push_back(vector->GetCount());
    if (const auto data = argument->GetData()) counts.push_back(data->GetCount());
  }
  return counts;
}

TEST(BadCalls, WithTooFewArgumentsNameTheFirstThatIsMissing) {
  for (const auto& entry : Functions()) {
    for (std::size_t count = 0; count < entry.arguments.size(); ++count) {
      if (!CanBeGood(entry, count)) continue;
      SCOPED_TRACE(entry.function + " with " + std::to_string(count));

      const Values arguments = GoodUpTo(entry, count);
      const References before = Count(arguments);
      const Answer answer = Call(entry.function, arguments);
      EXPECT_EQ(answer.status, Status(count, kMissing));
      EXPECT_EQ(answer.Changes(), NeutralChanges(entry.result));
      EXPECT_EQ(Count(arguments), before);
      EXPECT_EQ(CallWithoutResult(entry.function, arguments), Status(count, kMissing));
    }
  }
}

TEST(BadCalls, WithOneFlawNameItsPositionAndKind) {
  for (const auto& entry : Functions()) {
    for (std::size_t position = 0; position < entry.arguments.size(); ++position) {
      if (!CanBeGood(entry, position)) continue;
      for (const Flaw& flaw : FlawsFor(entry.arguments[position])) {
        SCOPED_TRACE(entry.function + ", position " + std::to_string(position + 1) + ": " +
                     flaw.name);

        Values arguments = GoodUpTo(entry, position);
        arguments.push_back(flaw.argument);
        // Behind the flaw stand arguments that would fail too, each counted.
        for (std::size_t rest = position + 1; rest < entry.arguments.size(); ++rest) {
          arguments.push_back(WithoutObject());
        }
        const References before = Count(arguments);
        std::vector<std::size_t> reads;
        for (std::size_t rest = position + 1; rest < arguments.size(); ++rest) {
          reads.push_back(arguments[rest]->Reads());
        }

        const Answer answer = Call(entry.function, arguments);
        EXPECT_EQ(answer.status, Status(position, flaw.code));
        EXPECT_EQ(answer.Changes(), NeutralChanges(entry.result));
        for (std::size_t rest = position + 1; rest < arguments.size(); ++rest) {
          EXPECT_EQ(arguments[rest]->Reads(), reads[rest - position - 1])
              << "argument " << rest + 1;
        }
        EXPECT_EQ(Count(arguments), before);
        EXPECT_EQ(CallWithoutResult(entry.function, arguments), Status(position, flaw.code));
      }
    }
  }
}

TEST(BadCalls, WithoutAnArgumentArrayNameTheFirstArgument) {
  for (const auto& entry : Functions()) {
    const auto function = ModuleSymbolAs<std::remove_pointer_t<ModuleFunction>>(entry.function);
    EXPECT_EQ(function(0, nullptr, nullptr, nullptr, nullptr), Status(0, kMissing))
        << entry.function;
    EXPECT_EQ(function(3, nullptr, nullptr, nullptr, nullptr), Status(0, kWrong)) << entry.function;
  }
}

TEST(GoodCalls, SucceedWithMoreArgumentsThanTheyNeedAndWithoutAResult) {
  std::size_t called = 0;
  for (const auto& entry : Functions()) {
    if (!CanBeGood(entry, entry.arguments.size())) continue;
    SCOPED_TRACE(entry.function);
    Values arguments = GoodUpTo(entry, entry.arguments.size());
    const References before = Count(arguments);
    EXPECT_EQ(CallWithoutResult(entry.function, arguments), 0u);
    EXPECT_EQ(Count(arguments), before);

    arguments = GoodUpTo(entry, entry.arguments.size());
    arguments.push_back({});
    arguments.push_back(WithoutObject());
    EXPECT_EQ(Call(entry.function, arguments).status, 0u);
    EXPECT_EQ(arguments.back()->Reads(), 0u);
    ++called;
  }
  EXPECT_GE(called, 15u);
}

// Whichever callback of the host throws in the course of a call, the exception comes out as it went
// in and no reference stays behind.
TEST(GoodCalls, LetEveryExceptionOfTheHostOutAndDropTheirReferences) {
  std::size_t thrown = 0;
  for (const auto& entry : Functions()) {
    if (!CanBeGood(entry, entry.arguments.size())) continue;
    bool isThrown = true;
    for (std::int64_t place = 0; isThrown; ++place) {
      SCOPED_TRACE(entry.function + ", callback " + std::to_string(place));
      const Values arguments = GoodUpTo(entry, entry.arguments.size());
      const References before = Count(arguments);
      const AutoRefPtr<TestContext> context(new TestContext);
      isThrown = false;
      CHostFaults::Arm(place);
      try {
        CallIn(context.get(), entry.function, arguments);
      } catch (const HostFault&) {
        isThrown = true;
        ++thrown;
      }
      CHostFaults::Disarm();
      EXPECT_EQ(Count(arguments), before);
      EXPECT_EQ(context->GetCount(), 1);
    }
  }
  EXPECT_GE(thrown, 100u);
}

TEST(GoodCalls, TakeAVectorThatHoldsNulls) {
  TestVector::Elements elements(3);
  elements[1] = AutoRefPtr<IVariant>(Text("a").release());
  const auto vector = TestVariant::Vector(
      kTypeString + kVectorOf,
      AutoRefPtr<const IVectorGeneric>(new TestVector(kTypeString, std::move(elements))));
  for (const auto& entry : Functions()) {
    if (entry.arguments != std::vector<std::string>{"VECTOR<STRING>"}) continue;
    EXPECT_EQ(Call(entry.function, {vector}).status, 0u) << entry.function;
  }
}

// Contract: whatever answers GetVector is a vector, whatever its type says.
TEST(GoodCalls, TakeAVectorOfAnyType) {
  for (const TypeId type : {kTypeNumber + kVectorOf, kTypeString, TypeId{0}}) {
    const auto vector = TestVariant::Vector(type, TestVector::Texts({}));
    EXPECT_EQ(Call("tovrin_module_StringListToRegExList", {vector}).status, 0u) << type;
  }
}

}  // namespace
