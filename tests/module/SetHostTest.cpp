// Tessarin.SetIHost: how the host's services object gets into its slot, and when it leaves it.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/Data.h"
#include "tests/module/Answer.h"
#include "tests/module/LoadedModule.h"
#include "tests/support/NeutralHost.h"

using namespace Tovrin;

namespace {

AutoRefPtr<NeutralHost> MakeHost() {
  return AutoRefPtr<NeutralHost>(new NeutralHost);
}

// Says that it has 8 bytes and delivers 7.
class ShortData final : public InterfaceImpl<IDataRef> {
  std::size_t Interface_GetSize() const override { return sizeof(IHost*); }
  void Interface_Assign(const void*, std::size_t) override {}
  std::size_t Interface_Read(void* buffer, std::size_t, std::size_t) const override {
    std::memset(buffer, 0x5a, sizeof(IHost*) - 1);  // no pointer to follow
    return sizeof(IHost*) - 1;
  }
  std::uint8_t Interface_IsEqual(const IDataRef*) const override { return 0; }
  IDataRef* Interface_Clone() const override { return nullptr; }
};

AutoRefPtr<TestVariant> DataOf(const void* bytes, std::size_t size) {
  const AutoRefPtr<IDataRef> data(new Data);
  data->Assign(bytes, size);
  return TestVariant::Data(data);
}

AutoRefPtr<TestVariant> PointerTo(const AutoRefPtr<NeutralHost>& host) {
  IHost* const pointer = host.get();
  return DataOf(&pointer, sizeof pointer);
}

Answer SetHost(const LoadedModule& module, const AutoRefPtr<TestVariant>& argument) {
  return CallFunction(module.Function("tovrin_module_TessarinSetIHost"), {argument}, nullptr);
}

TEST(SetHost, TakesOneReferenceAndDropsItWhenTheLibraryGoes) {
  const auto host = MakeHost();
  {
    const LoadedModule module;
    const auto argument = PointerTo(host);
    EXPECT_TRUE(SetHost(module, argument).Boolean());
    EXPECT_EQ(host->GetCount(), 2);
    EXPECT_EQ(argument->GetData()->GetCount(), 2);  // the variant's and this one

    module.Symbol<int()>("OnShutdown")();
    module.Symbol<void()>("DeregisterModule")();
    EXPECT_EQ(host->GetCount(), 2) << "stopping is not unloading";
    EXPECT_EQ(CallFunction(module.Function("tovrin_module_MatchesTwoStrings"),
                           {TestVariant::Text("a"), TestVariant::Text("a")}, nullptr)
                  .Changes(),
              std::vector<std::string>{"AssignBoolean true"})
        << "functions work after stopping";
  }
  EXPECT_EQ(host->GetCount(), 1);
}

TEST(SetHost, KeepsTheFirstHostAndTakesNoReferenceOfASecond) {
  const auto first = MakeHost();
  const auto second = MakeHost();
  {
    const LoadedModule module;
    EXPECT_TRUE(SetHost(module, PointerTo(first)).Boolean());
    EXPECT_TRUE(SetHost(module, PointerTo(second)).Boolean());
    EXPECT_TRUE(SetHost(module, PointerTo(first)).Boolean());
    EXPECT_TRUE(SetHost(module, TestVariant::Data(AutoRefPtr<IDataRef>(new ShortData))).Boolean())
        << "what comes later is not looked at";
    EXPECT_EQ(first->GetCount(), 2);
    EXPECT_EQ(second->GetCount(), 1);
  }
  EXPECT_EQ(first->GetCount(), 1);
}

// Contract: bytes that cannot be a pointer are answered with true, and leave the slot for a later
// call.
TEST(SetHost, AnswersTrueToBytesOfAnotherSizeAndStaysEmpty) {
  const auto host = MakeHost();
  const LoadedModule module;
  const char bytes[16] = "0123456789abcde";
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{4}, std::size_t{7}, std::size_t{9}, std::size_t{16}}) {
    EXPECT_EQ(SetHost(module, DataOf(bytes, size)).Changes(),
              std::vector<std::string>{"AssignBoolean true"})
        << size;
  }
  EXPECT_TRUE(SetHost(module, PointerTo(host)).Boolean());
  EXPECT_EQ(host->GetCount(), 2) << "the slot was still free";
}

// Contract: so is a DATAREF that holds nothing, and a null pointer.
TEST(SetHost, AnswersTrueToNoDataAndToANullPointer) {
  const auto host = MakeHost();
  const LoadedModule module;
  EXPECT_TRUE(SetHost(module, TestVariant::Data({})).Boolean());
  EXPECT_EQ(SetHost(module, TestVariant::Data({})).status, 0u);
  EXPECT_TRUE(SetHost(module, PointerTo({})).Boolean());
  EXPECT_TRUE(SetHost(module, PointerTo(host)).Boolean());
  EXPECT_EQ(host->GetCount(), 2);
}

TEST(SetHost, AnswersFalseToDataThatDoesNotDeliverItsBytes) {
  const auto host = MakeHost();
  const LoadedModule module;
  const Answer answer = SetHost(module, TestVariant::Data(AutoRefPtr<IDataRef>(new ShortData)));
  EXPECT_EQ(answer.status, 0u);
  EXPECT_EQ(answer.Changes(), std::vector<std::string>{"AssignBoolean false"});
  EXPECT_TRUE(SetHost(module, PointerTo(host)).Boolean());
  EXPECT_EQ(host->GetCount(), 2) << "the slot was still free";
}

// Hands over bytes of a pointer, and may do more on the way.
class ActingData final : public InterfaceImpl<IDataRef> {
public:
  ActingData(const IHost* host, std::function<void()> inSize, std::function<void()> inRead)
      : fHost(host), fInSize(std::move(inSize)), fInRead(std::move(inRead)) {}

private:
  std::size_t Interface_GetSize() const override {
    fInSize();
    return sizeof fHost;
  }
  void Interface_Assign(const void*, std::size_t) override {}
  std::size_t Interface_Read(void* buffer, std::size_t size, std::size_t) const override {
    fInRead();
    std::memcpy(buffer, &fHost, size);
    return size;
  }
  std::uint8_t Interface_IsEqual(const IDataRef*) const override { return 0; }
  IDataRef* Interface_Clone() const override { return nullptr; }

  const IHost* const fHost;
  const std::function<void()> fInSize, fInRead;
};

class RefusingHost final : public NeutralHost {
  void Interface_AddRef() const override { throw HostFault(); }
};

TEST(SetHost, LetsTheHostsExceptionsOutAndStaysEmpty) {
  const auto host = MakeHost();
  const AutoRefPtr<NeutralHost> refusing(new RefusingHost);
  const auto quiet = [] {};
  const auto fail = [] { throw HostFault(); };
  {
    const LoadedModule module;
    const AutoRefPtr<IDataRef> datas[] = {
        AutoRefPtr<IDataRef>(new ActingData(host.get(), fail, quiet)),
        AutoRefPtr<IDataRef>(new ActingData(host.get(), quiet, fail)),
        AutoRefPtr<IDataRef>(new ActingData(refusing.get(), quiet, quiet)),
    };
    for (const auto& data : datas) {
      EXPECT_THROW(SetHost(module, TestVariant::Data(data)), HostFault);
      EXPECT_EQ(data->GetCount(), 1);
    }
    EXPECT_EQ(host->GetCount(), 1);
    EXPECT_TRUE(SetHost(module, PointerTo(host)).Boolean());
    EXPECT_EQ(host->GetCount(), 2) << "the slot was still free";
  }
  EXPECT_EQ(host->GetCount(), 1);
  EXPECT_EQ(refusing->GetCount(), 1);
}

// The call within comes to its end first, so its host is the first.
TEST(SetHost, KeepsTheHostThatComesWhileAnotherIsRead) {
  const auto outer = MakeHost();
  const auto inner = MakeHost();
  {
    const LoadedModule module;
    const auto handOver = [&] { EXPECT_TRUE(SetHost(module, PointerTo(inner)).Boolean()); };
    const AutoRefPtr<IDataRef> data(new ActingData(
        outer.get(), [] {}, handOver));
    EXPECT_TRUE(SetHost(module, TestVariant::Data(data)).Boolean());
    EXPECT_EQ(inner->GetCount(), 2);
    EXPECT_EQ(outer->GetCount(), 1);
  }
  EXPECT_EQ(inner->GetCount(), 1);
}

TEST(SetHost, RefusesWhatIsNoData) {
  const LoadedModule module;
  const Answer answer = SetHost(module, TestVariant::Text("12345678"));
  EXPECT_EQ(answer.status, 0x10002u);
  EXPECT_EQ(answer.Changes(), std::vector<std::string>{"AssignBoolean false"});
}

TEST(SetHost, WorksWithNowhereToPutTheAnswer) {
  const auto host = MakeHost();
  const LoadedModule module;
  EXPECT_EQ(CallFunctionWithoutResult(module.Function("tovrin_module_TessarinSetIHost"),
                                      {PointerTo(host)}, nullptr),
            0u);
  EXPECT_EQ(host->GetCount(), 2);
}

TEST(SetHost, LetsOneOfManyHostsInWhenTheyComeAtOnce) {
  constexpr int kHosts = 8;
  std::vector<AutoRefPtr<NeutralHost>> hosts;
  for (int index = 0; index < kHosts; ++index) hosts.push_back(MakeHost());
  const auto references = [&hosts] {
    std::int32_t count = 0;
    for (const auto& host : hosts) count += host->GetCount();
    return count;
  };
  {
    const LoadedModule module;
    std::vector<std::thread> threads;
    for (const auto& host : hosts) {
      threads.emplace_back([&module, &host] { SetHost(module, PointerTo(host)); });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(references(), kHosts + 1);
  }
  EXPECT_EQ(references(), kHosts);
}

class TellingHost final : public NeutralHost {
  ~TellingHost() override { std::fputs("the host is gone\n", stderr); }
};

// The slot outlives main, and goes with the process's static objects.
TEST(SetHostDeathTest, IsReleasedAtExit) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        static LoadedModule* const module = new LoadedModule;  // never closed
        AutoRefPtr<IHost> host(new TellingHost);
        IHost* const pointer = host.get();
        SetHost(*module, DataOf(&pointer, sizeof pointer));
        host.reset();
        std::exit(0);
      },
      testing::ExitedWithCode(0), "the host is gone");
}

}  // namespace
