#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "host/Operations.h"
#include "tests/host/NotingObject.h"

// A member of an interface does no more than hand its arguments to its operation, each in its
// place, and give back what that answers. The operations of the noting object write down what they
// got.

namespace {

using namespace Tovrin;

constexpr std::size_t kMostArguments = 7;

NotingObject gPassed[kMostArguments];  // the interfaces among the arguments, by their place
NotingObject gAnswered;
constexpr const char* kTexts[kMostArguments] = {"0", "1", "2", "3", "4", "5", "6"};
constexpr const char* kAnsweredText = "what the host says";
bool gTruth = false;  // every truth value among the arguments and answers

std::uintptr_t WordOf(const void* pointer) {
  return reinterpret_cast<std::uintptr_t>(pointer);
}

template <class T>
struct Reference;
template <class T>
struct Reference<AutoRefPtr<T>> {
  using Target = T;
};
template <class T>
concept IsReference = requires {
  typename Reference<T>::Target;
};

// The member writes to it what the operation gave another way.
template <class Argument>
concept IsOutput = std::is_same_v<Argument, std::string&> ||
    (std::is_pointer_v<Argument>&& IsReference<std::remove_pointer_t<Argument>>);

// A value that no other place of the same call gets, but for truth values.
template <class Argument>
auto ValueFor(std::size_t place) {
  using Value = std::remove_cvref_t<Argument>;
  using Target = std::remove_cv_t<std::remove_pointer_t<Value>>;
  if constexpr (IsOutput<Argument>) {
    return Value{};
  } else if constexpr (IsReference<Value>) {
    return Value(gPassed[place].As<typename Reference<Value>::Target>());
  } else if constexpr (std::is_pointer_v<Value> && IsInterface<Target>) {
    return gPassed[place].As<Target>();
  } else if constexpr (std::is_same_v<Value, const char*>) {
    return kTexts[place];
  } else if constexpr (std::is_pointer_v<Value>) {
    return reinterpret_cast<Value>(WordOf(&gPassed[place]));
  } else if constexpr (std::is_same_v<Value, bool>) {
    return gTruth;
  } else {
    return static_cast<Value>(40 + place);
  }
}

template <class... Arguments, std::size_t... Places>
auto ValuesFor(std::index_sequence<Places...>) {
  return std::tuple<decltype(ValueFor<Arguments>(Places))...>(ValueFor<Arguments>(Places)...);
}

// What the operation should get for it, and how many bytes of that count.
struct Word {
  std::uintptr_t value;
  std::size_t bytes;
};

template <class Value>
Word Passed(const Value& value) {
  if constexpr (IsReference<Value>) {
    return {WordOf(value.get()), sizeof(void*)};
  } else if constexpr (std::is_pointer_v<Value>) {
    return {reinterpret_cast<std::uintptr_t>(value), sizeof value};
  } else {
    return {static_cast<std::uintptr_t>(value), sizeof value};
  }
}

std::uintptr_t LowBytes(std::uintptr_t word, std::size_t bytes) {
  return bytes == sizeof word ? word : word & ((std::uintptr_t{1} << (8 * bytes)) - 1);
}

// What the operation should have got, gathered from the member's arguments in their order.
struct Expected {
  std::vector<std::optional<Word>> words;  // nothing where the operation gets something else
  std::optional<double> number;

  template <class Argument, class Value>
  void Add(const Value& value) {
    if constexpr (IsOutput<Argument>) {
      words.push_back(std::nullopt);
    } else if constexpr (std::is_same_v<Value, double>) {
      number = value;
    } else {
      words.push_back(Passed(value));
    }
  }
};

void ExpectPassed(const Expected& expected, const NotedCall& call) {
  for (std::size_t i = 0; i < expected.words.size(); ++i) {
    if (!expected.words[i]) continue;
    const auto [value, bytes] = *expected.words[i];
    EXPECT_EQ(LowBytes(call.words[i], bytes), LowBytes(value, bytes)) << "argument " << i;
  }
  if (expected.number) {
    EXPECT_EQ(call.number, *expected.number);
  }
}

// What the operations are to answer, for a member with that result; and whether it came back. A
// floating-point answer stands where the noting object has no say.
template <class Result>
std::uintptr_t AnswerFor() {
  if constexpr (IsReference<Result>) return WordOf(&gAnswered);
  if constexpr (std::is_same_v<Result, std::string>) return WordOf(kAnsweredText);
  if constexpr (std::is_same_v<Result, bool>) return gTruth ? 1 : 0;
  return 99;
}

template <class Result>
void ExpectAnswered(const Result& result) {
  if constexpr (IsReference<Result>) {
    EXPECT_EQ(WordOf(result.get()), WordOf(&gAnswered));
  } else if constexpr (std::is_same_v<Result, std::string>) {
    EXPECT_EQ(result, kAnsweredText);
  } else if constexpr (std::is_same_v<Result, bool>) {
    EXPECT_EQ(result, gTruth);
  } else if constexpr (std::is_pointer_v<Result>) {
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(result), 99u);
  } else if constexpr (!std::is_floating_point_v<Result>) {
    EXPECT_EQ(static_cast<int>(result), 99);
  }
}

// IJSON's texts come through a buffer, of which the operation answers the size: tested beside
// IJSON's own logic.
template <class Interface, class Result, class... Arguments>
constexpr bool kIsCollected = std::is_same_v<Interface, IJSON> &&
                              (std::is_same_v<Result, std::string> ||
                               (std::is_same_v<Arguments, std::string&> || ...));

// For the messages: which operation it was.
template <class Interface>
std::string FirstCall() {
  const std::string slot = gCalls.empty() ? "none" : std::to_string(gCalls.front().slot);
  return typeid(Interface).name() + (", slot " + slot);
}

template <class Interface, class Result, class Member, class... Arguments>
void ExpectForwarded(Member member) {
  constexpr bool kReturnsItsAnswer =
      !std::is_void_v<Result> && !kIsCollected<Interface, Result, Arguments...>;
  auto values = ValuesFor<Arguments...>(std::index_sequence_for<Arguments...>());
  Expected expected;
  std::apply([&](const auto&... value) { (expected.Add<Arguments>(value), ...); }, values);

  const auto call = [&](auto&... value) -> Result {
    return (Noting<Interface>()->*member)(static_cast<Arguments>(value)...);
  };

  gCalls.clear();
  if constexpr (kReturnsItsAnswer) {
    gAnswer = AnswerFor<Result>();
    const Result result = std::apply(call, values);
    gAnswer = 0;
    SCOPED_TRACE(FirstCall<Interface>());
    ExpectAnswered(result);
  } else {
    std::apply(call, values);
  }
  SCOPED_TRACE(FirstCall<Interface>());
  ASSERT_FALSE(gCalls.empty());
  EXPECT_EQ(gCalls.front().object, &gObject);
  ExpectPassed(expected, gCalls.front());
}

template <class Interface, class Result, class... Arguments>
void ExpectForwardedBy(Result (Interface::*member)(Arguments...)) {
  ExpectForwarded<Interface, Result, decltype(member), Arguments...>(member);
}
template <class Interface, class Result, class... Arguments>
void ExpectForwardedBy(Result (Interface::*member)(Arguments...) const) {
  ExpectForwarded<Interface, Result, decltype(member), Arguments...>(member);
}

template <auto... Members>
void ExpectAllForwarded(MemberList<Members...>) {
  (ExpectForwardedBy(Members), ...);
}

template <class... Interfaces>
void ExpectForwardingInterfaces() {
  (ExpectAllForwarded(kOperations<Interfaces>), ...);
}

TEST(InterfaceArguments, GoToTheOperationInTheirOrderAndItsAnswerComesBack) {
  for (const bool truth : {false, true}) {
    SCOPED_TRACE(truth);
    gTruth = truth;
    ExpectForwardingInterfaces<IObject, IContext, IJSON, IDataRef, IUserDefinedType, IVariant,
                               IVectorGeneric, IMapGeneric, IModuleInfo, IPolicy, IStream, IHash,
                               ICallStack, ILogger, IConfiguration, IThreadPool, IEventScheduler,
                               IEvent, IFDEvent, IGenericEvent, ICounter, ITelemetry, IHost>();
  }
}

// The second forms of an argument bring the same value.
TEST(InterfaceArguments, AreTheSameInTheirSecondForm) {
  const auto called = [](auto call) {
    gCalls.clear();
    call();
    return gCalls.front();
  };
  const auto textOf = [](std::uintptr_t word) { return reinterpret_cast<const char*>(word); };
  const std::string text("te\0xt", 5);
  auto* const context = Noting<IContext>();
  auto* const variant = Noting<IVariant>();
  EXPECT_EQ(called([&] { context->SetUserDataAsNumber(7, std::int32_t{-2}); }).number, -2);
  const NotedCall userText = called([&] { context->SetUserDataAsString(7, text); });
  EXPECT_EQ(userText.words[0], 7u);
  EXPECT_STREQ(textOf(userText.words[1]), "te");

  EXPECT_EQ(called([&] { variant->AssignNumber(std::int32_t{-2}); }).number, -2);
  EXPECT_EQ(called([&] { variant->AssignNumber(INT64_MIN); }).number, -9223372036854775808.0);
  EXPECT_EQ(called([&] { variant->AssignNumber(UINT64_MAX); }).number, 18446744073709551616.0);
  const NotedCall assigned = called([&] { variant->AssignString(text); });
  EXPECT_EQ(std::string(textOf(assigned.words[0]), assigned.words[1]), text);

  const NotedCall member = called([&] { Noting<IJSON>()->Set("key", text); });
  EXPECT_STREQ(textOf(member.words[0]), "key");
  EXPECT_STREQ(textOf(member.words[1]), "te");
  EXPECT_STREQ(textOf(called([&] { Noting<IConfiguration>()->LoadFromString(text); }).words[0]),
               "te");
}

TEST(InterfaceArguments, OfResetAllGoToBothHalves) {
  for (auto* counter : {Noting<ICounter>(), static_cast<ICounter*>(Noting<ITelemetry>())}) {
    for (const bool flag : {false, true}) {
      gCalls.clear();
      counter->ResetAll(flag);
      EXPECT_EQ(SlotsCalled(), (std::vector<std::size_t>{15, 16})) << "the counters come first";
      for (const NotedCall& call : gCalls) EXPECT_EQ(LowBytes(call.words[0], 1), flag ? 1u : 0u);
    }
  }
}

TEST(InterfaceArguments, OfAComparisonAreBothAskedWhetherTheyAreLess) {
  const auto* const other = gPassed[0].As<IHash>();
  gCalls.clear();
  EXPECT_TRUE(Noting<IHash>()->IsEqual(other));
  ASSERT_EQ(gCalls.size(), 2u);
  EXPECT_EQ(gCalls[0].object, &gPassed[0]);
  EXPECT_EQ(gCalls[0].words[0], WordOf(&gObject));
  EXPECT_EQ(gCalls[1].object, &gObject);
  EXPECT_EQ(gCalls[1].words[0], WordOf(&gPassed[0]));
  EXPECT_EQ(SlotsCalled(), (std::vector<std::size_t>{4, 4})) << "the one that LessThan calls";

  EXPECT_FALSE(Noting<IHash>()->IsEqual(nullptr));
  gAnswer = 1;
  EXPECT_FALSE(Noting<IHash>()->IsEqual(other));
  gAnswer = 0;
}

TEST(InterfaceArguments, OfATextChooseTheFormThatSerialises) {
  auto* const context = gPassed[0].As<IContext>();
  const auto* const hash = Noting<IHash>();
  const auto* const object = Noting<IUserDefinedType>();
  const struct { std::size_t with, without; } slots[] = {{7, 8}, {9, 10}};
  std::string text;
  gCalls.clear();
  hash->ToString(text, context);
  hash->ToStringSize(context);
  hash->ToString(text);
  hash->ToStringSize();
  object->ToString(text, context);
  object->ToStringSize(context);
  object->ToString(text);
  object->ToStringSize();
  ASSERT_EQ(gCalls.size(), 8u);
  for (std::size_t i = 0; i < gCalls.size(); ++i) {
    const bool isWith = i % 4 < 2;
    EXPECT_EQ(gCalls[i].slot, isWith ? slots[i / 4].with : slots[i / 4].without) << i;
    if (isWith) {
      EXPECT_EQ(gCalls[i].words[0], WordOf(context)) << i;
    }
  }

  gCalls.clear();
  Noting<IVariant>()->ToString(AutoRefPtr<IContext>(context));
  EXPECT_EQ(gCalls.front().slot, 28u);
  EXPECT_EQ(gCalls.front().words[0], WordOf(context));
}

TEST(InterfaceArguments, OfASettingsTextGetACopy) {
  std::string text = "left over";
  gAnswer = WordOf(kAnsweredText);
  Noting<IConfiguration>()->ToString(text);
  gAnswer = 0;
  EXPECT_EQ(text, kAnsweredText);
}

}  // namespace
