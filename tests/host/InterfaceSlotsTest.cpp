#include <cxxabi.h>
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "host/INumberMap.h"
#include "host/IStringMap.h"
#include "host/IVector.h"
#include "host/Operations.h"
#include "tests/host/NotingObject.h"
#include "tests/support/HostJSON.h"
#include "tests/support/SharedData.h"

// The order of the operations is what a host built apart from us calls by. The tests lay an object
// that notes its calls under each interface, and see which place a member goes to.

// Reaches the destructor, which is protected in every interface that has one in its table. Not in
// the unnamed namespace: a compiler that sees all classes derived from it would find that there is
// none, and no table to call through.
template <class Interface>
struct Deletable : Interface {
  static void Destroy(Deletable* object) { object->~Deletable(); }
  static void Delete(Deletable* object) { delete object; }

protected:
  ~Deletable() = default;
};

namespace {

using namespace Tovrin;

// A value for each argument: the noting object where an interface is wanted, so that no member
// stops at a null; neutral values for all the rest.
template <class Argument>
auto AnyArgument() {
  using Value = std::remove_cvref_t<Argument>;
  using Target = std::remove_cv_t<std::remove_pointer_t<Value>>;
  if constexpr (std::is_pointer_v<Value> && IsInterface<Target>) {
    return Noting<Target>();
  } else {
    return Value{};
  }
}

template <class Interface, class Result, class... Arguments>
void CallMember(Result (Interface::*member)(Arguments...)) {
  std::tuple<decltype(AnyArgument<Arguments>())...> values{AnyArgument<Arguments>()...};
  std::apply(
      [&](auto&... value) { (Noting<Interface>()->*member)(static_cast<Arguments>(value)...); },
      values);
}
template <class Interface, class Result, class... Arguments>
void CallMember(Result (Interface::*member)(Arguments...) const) {
  std::tuple<decltype(AnyArgument<Arguments>())...> values{AnyArgument<Arguments>()...};
  std::apply(
      [&](auto&... value) { (Noting<Interface>()->*member)(static_cast<Arguments>(value)...); },
      values);
}

// The first slot that a call goes to.
template <class Call>
std::size_t SlotOf(Call call) {
  gCalls.clear();
  call();
  return gCalls.empty() ? kTableSize : gCalls.front().slot;
}

// Carries a type or a member to the name of its own type.
template <class Type>
struct Spelt {};
template <auto Member>
struct Named {};

void ReplaceAll(std::string& text, std::string_view what, std::string_view with) {
  for (auto at = text.find(what); at != text.npos; at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
}

// Of "Spelt<int>" what is in the brackets, with our names and that of texts in their short form.
std::string InnerName(const std::type_info& carrier) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> demangled(
      abi::__cxa_demangle(carrier.name(), nullptr, nullptr, &status), std::free);
  std::string text(demangled.get());
  ReplaceAll(text,
             "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >",
             "std::string");
  ReplaceAll(text, "Tovrin::", "");
  const std::size_t begin = text.find('<') + 1;
  std::string name = text.substr(begin, text.rfind('>') - begin);
  while (name.ends_with(' ')) name.pop_back();
  return name;
}

// "IVariant::GetType" of "&(IVariant::GetType[abi:cxx11]() const)"
std::string MemberName(const std::type_info& carrier) {
  const std::string name = InnerName(carrier);
  const std::size_t begin = name.find_first_not_of("&(");
  return name.substr(begin, name.find_first_of("()[", begin) - begin);
}

// A member's types: those of its arguments, and that of its result.
struct Signature {
  std::vector<const std::type_info*> arguments;
  const char* constness;
  const std::type_info* result;
};
template <class Interface, class Result, class... Arguments>
Signature SignatureOf(Result (Interface::*)(Arguments...)) {
  return {{&typeid(Spelt<Arguments>)...}, "", &typeid(Spelt<Result>)};
}
template <class Interface, class Result, class... Arguments>
Signature SignatureOf(Result (Interface::*)(Arguments...) const) {
  return {{&typeid(Spelt<Arguments>)...}, " const", &typeid(Spelt<Result>)};
}

// "(unsigned int) const -> std::string"
std::string Text(const Signature& signature) {
  std::string arguments;
  for (const std::type_info* argument : signature.arguments) {
    arguments += (arguments.empty() ? "" : ", ") + InnerName(*argument);
  }
  return '(' + arguments + ')' + signature.constness + " -> " + InnerName(*signature.result);
}

std::string Row(const std::string& slot, const std::string& what) {
  return std::string(5 - slot.size(), ' ') + slot + "  " + what + '\n';
}

// The members are many: what is instantiated for each is no more than its name and its call.
template <auto Member, class SlotName>
void AddRow(std::string& rows, const SlotName& slotName) {
  rows += Row(slotName(Member), MemberName(typeid(Named<Member>)) + Text(SignatureOf(Member)));
}

template <auto... Members, class SlotName>
std::string Rows(MemberList<Members...>, [[maybe_unused]] const SlotName& slotName) {
  std::string rows;
  (AddRow<Members>(rows, slotName), ...);
  return rows;
}

// The table of one interface: each member with the slot that it calls, or "-" where it has none of
// its own, and where the destructor stands if the table has one.
template <class Interface>
std::string Table() {
  std::string table = InnerName(typeid(Spelt<Interface>)) + '\n';
  table += Rows(kOperations<Interface>,
                [](auto member) { return std::to_string(SlotOf([&] { CallMember(member); })); });
  table += Rows(kConveniences<Interface>, [](auto) { return std::string("-"); });
  if constexpr (std::has_virtual_destructor_v<Deletable<Interface>>) {
    using Object = Deletable<Interface>;
    auto* object = static_cast<Object*>(static_cast<void*>(&gObject));
    for (const auto destroy : {&Object::Destroy, &Object::Delete}) {
      table += Row(std::to_string(SlotOf([&] { destroy(object); })), "destructor");
    }
  }
  return table;
}

template <class... Interfaces>
std::string Tables() {
  return (Table<Interfaces>() + ...);
}

// tests/host/interfaces.txt is the contract as text. Whoever changes it on purpose copies the new
// one over it, and a reviewer sees which operation moved.
TEST(InterfaceSlots, AreTheRecordedOnes) {
  const std::string tables =
      Tables<IObject, IContext, IJSON, IDataRef, IUserDefinedType, IVariant, IVectorGeneric,
             IMapGeneric, IModuleInfo, IPolicy, IStream, IHash, ICallStack, ILogger, IConfiguration,
             IThreadPool, IEventScheduler, IEvent, IFDEvent, IGenericEvent, ICounter, ITelemetry,
             IHost>();
  const auto newTables = std::filesystem::temp_directory_path() / "tessarin-interfaces.txt";
  const bool isSame = tables == ReadWholeFile(SourceDir() / "tests/host/interfaces.txt");
  if (!isSame) std::ofstream(newTables, std::ios::binary) << tables;
  EXPECT_TRUE(isSame) << "diff tests/host/interfaces.txt " << newTables.string();
}

TEST(InterfaceSlots, TypedContainersAddNoSlots) {
  static_assert(sizeof(IVector<std::string>) == sizeof(void*));
  gCalls.clear();
  EXPECT_EQ(Noting<IVector<std::string>>()->GetValue(7), "");
  EXPECT_EQ(Noting<IVector<bool>>()->GetValue(7), false);
  EXPECT_EQ(Noting<IStringMap<double>>()->GetKey(7), "");
  EXPECT_EQ(Noting<INumberMap<std::int64_t>>()->GetKey(7), 0.0);
  EXPECT_EQ(Noting<INumberMap<std::int64_t>>()->GetValue(7), 0);
  EXPECT_EQ(SlotsCalled(), (std::vector<std::size_t>{5, 5, 6, 6, 7}));
}

TEST(InterfaceSlots, SecondFormsOfAnArgumentGoToTheSameSlot) {
  const auto slotOf = [](auto call) {
    gCalls.clear();
    call();
    return SlotsCalled();
  };
  using Slots = std::vector<std::size_t>;
  auto* context = Noting<IContext>();
  const auto text = slotOf([&] { context->SetUserDataAsString(1, "x"); });
  EXPECT_EQ(slotOf([&] { context->SetUserDataAsString(1, std::string("x")); }), text);
  const auto number = slotOf([&] { context->SetUserDataAsNumber(1, 1.5); });
  EXPECT_EQ(slotOf([&] { context->SetUserDataAsNumber(1, 1); }), number);

  auto* variant = Noting<IVariant>();
  const Slots assign = slotOf([&] { variant->AssignNumber(1.5); });
  EXPECT_EQ(slotOf([&] { variant->AssignNumber(0); }), assign);
  EXPECT_EQ(slotOf([&] { variant->AssignNumber(std::int64_t{1}); }), assign);
  EXPECT_EQ(slotOf([&] { variant->AssignNumber(std::uint64_t{1}); }), assign);

  auto* json = Noting<IJSON>();
  EXPECT_EQ(slotOf([&] { json->Set("key", std::string("x")); }),
            slotOf([&] { json->Set("key", "x"); }));
  auto* configuration = Noting<IConfiguration>();
  EXPECT_EQ(slotOf([&] { configuration->LoadFromString(std::string("x")); }),
            slotOf([&] { configuration->LoadFromString("x"); }));
}

// Neither references nor values come back from a host that answers nothing.
TEST(InterfaceSlots, NullAnswersAreEmpty) {
  auto* context = Noting<IContext>();
  EXPECT_FALSE(context->CreateInstance(1));
  EXPECT_FALSE(context->CreateStringVector());
  EXPECT_FALSE(context->CreateNumberToStreamMap());
  EXPECT_FALSE(context->CreateDataInstance());
  EXPECT_FALSE(context->CreateStreamInstance());
  EXPECT_EQ(context->GetErrorMessage(), "");
  EXPECT_EQ(context->PrintCallStack(), "");
  EXPECT_TRUE(context->GetUserDataAsStringVector(1).empty());
  EXPECT_TRUE(context->GetUserDataAsNumberToBooleanMap(1).empty());
  EXPECT_FALSE(context->IsDebugLogEnabled("module", 1));
  gCalls.clear();
  context->DebugLog("module", 1, "text");
  context->ErrorLog("module", std::string("text"));
  EXPECT_EQ(gCalls.size(), 2u) << "the logger was asked for, and nothing else";
  EXPECT_FALSE(Noting<IModuleInfo>()->GetPolicy());
  EXPECT_EQ(Noting<IModuleInfo>()->GetModuleName(), "");
  EXPECT_FALSE(Noting<IPolicy>()->CreateTransaction("name"));
  EXPECT_EQ(Noting<IVariant>()->ToString(AutoRefPtr<IContext>()), "");
  EXPECT_FALSE(Noting<IDataRef>()->Clone());
  std::string text = "left over";
  Noting<IConfiguration>()->ToString(text);
  EXPECT_EQ(text, "");
  text = "left over";
  Noting<IHash>()->ToString(text);
  EXPECT_EQ(text, "");
}

TEST(InterfaceSlots, StreamsAreEqualWhenTheyAreDifferentObjects) {
  NotingObject other;
  void* otherStream = &other;
  const auto* stream = Noting<IStream>();
  EXPECT_FALSE(stream->IsEqual(stream));
  EXPECT_TRUE(stream->IsEqual(static_cast<const IStream*>(otherStream)));
  EXPECT_TRUE(stream->IsEqual(nullptr));
}

// A host that is asked whether two things are equal answers with a byte, and only 1 is a yes.
TEST(InterfaceSlots, OnlyTheAnswerOneIsEqual) {
  const auto* variant = Noting<IVariant>();
  const auto* data = Noting<IDataRef>();
  for (const std::uintptr_t answer : {0, 1, 2, 255}) {
    SCOPED_TRACE(answer);
    gAnswer = answer;
    EXPECT_EQ(variant->IsEqual(variant), answer == 1);
    EXPECT_EQ(data->IsEqual(data), answer == 1);
  }
  gAnswer = 1;
  gCalls.clear();
  EXPECT_FALSE(data->IsEqual(nullptr));
  EXPECT_TRUE(gCalls.empty());
  gAnswer = 0;
}

TEST(InterfaceSlots, AnyByteButZeroIsADoneDeserialize) {
  auto* object = Noting<IUserDefinedType>();
  for (const std::uintptr_t answer : {0, 1, 2, 255}) {
    SCOPED_TRACE(answer);
    gAnswer = answer;
    EXPECT_EQ(object->Deserialize(nullptr), answer != 0);
    EXPECT_EQ(object->Deserialize(nullptr, nullptr), answer != 0);
    EXPECT_EQ(Noting<IHash>()->Deserialize(nullptr), answer != 0);
    EXPECT_EQ(Noting<IVariant>()->Deserialize(AutoRefPtr<IJSON>(), nullptr), answer != 0);
  }
  gAnswer = 0;
}

TEST(InterfaceSlots, TextsComeFromTheJsonThatSerializeGives) {
  const AutoRefPtr<TextJSON> json(new TextJSON("[1]"));
  const auto serializing = [&] {
    gAnswer = reinterpret_cast<std::uintptr_t>(Share<IJSON>(json.get()).release());
  };
  std::string text;
  serializing();
  EXPECT_EQ(Noting<IVariant>()->ToString(AutoRefPtr<IContext>()), "[1]");
  serializing();
  Noting<IHash>()->ToString(text, nullptr);
  EXPECT_EQ(text, "[1]");
  serializing();
  Noting<IHash>()->ToString(text);
  EXPECT_EQ(text, "[1]");
  serializing();
  EXPECT_EQ(Noting<IHash>()->ToStringSize(nullptr), 3u);
  serializing();
  EXPECT_EQ(Noting<IHash>()->ToStringSize(), 3u);
  serializing();
  Noting<IUserDefinedType>()->ToString(text, nullptr);
  EXPECT_EQ(text, "[1]");
  serializing();
  EXPECT_EQ(Noting<IUserDefinedType>()->ToStringSize(), 3u);
  gAnswer = 0;
  EXPECT_EQ(json->GetCount(), 1) << "each text released its json";
  EXPECT_EQ(json->indents, std::vector<std::string>(7, ""));
}

}  // namespace
