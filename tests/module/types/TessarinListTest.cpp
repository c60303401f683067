#include "module/types/TessarinList.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/IJSON.h"
#include "module/types/Tessarin.h"
#include "tests/Common/QuestionedHost.h"
#include "tests/support/HostContext.h"
#include "tests/support/HostValues.h"

using namespace Tovrin;

namespace {

using ListPtr = AutoRefPtr<TessarinList>;

ListPtr Make(const std::vector<std::string>& entries, TypeId type = 25) {
  ListPtr list(new TessarinList(type));
  for (const std::string& entry : entries) list->AddEntry(entry);
  return list;
}

TEST(TessarinList, IsEmptyWhenNew) {
  for (const TypeId type : {TypeId{0}, TypeId{25}}) {
    const ListPtr list = Make({}, type);
    EXPECT_STREQ(list->GetName(), "Tessarin.List");
    EXPECT_EQ(list->GetType(), type);
    EXPECT_EQ(list->GetCount(), 1);
    EXPECT_EQ(list->Size(), 0u);
    EXPECT_FALSE(list->Matches(""));
  }
}

TEST(TessarinList, KeepsTheTextsAsTheyWereStored) {
  const ListPtr list = Make({"a", "", std::string("b\0c", 3)});
  EXPECT_EQ(list->Size(), 3u);
  EXPECT_EQ(list->Text(0), "a");
  EXPECT_EQ(list->Text(1), "");
  EXPECT_EQ(list->Text(2), std::string("b\0c", 3));
  EXPECT_EQ(list->Text(3), "");
  EXPECT_EQ(list->Text(~std::uint64_t{0}), "");
  EXPECT_EQ(TessarinList::AnchoredEntry("x"), "regex(^x$)");
}

TEST(TessarinList, MatchesWithItsEntries) {
  const ListPtr list = Make({"*.example.com", "regex(\\d+)", ""});
  EXPECT_TRUE(list->Matches("www.EXAMPLE.com"));
  EXPECT_TRUE(list->Matches("42"));
  EXPECT_FALSE(list->Matches("example.com"));
  EXPECT_FALSE(list->Matches(""));
  EXPECT_FALSE(Make({"regex(()", "a"})->Matches("a"));
}

TEST(TessarinList, ClonesItsEntriesAndItsMatcher) {
  ListPtr list = Make({"a"}, 77);
  EXPECT_TRUE(list->Matches("a"));
  const auto copy = list->Clone();
  list->AddEntry("b");
  const auto& clone = dynamic_cast<const TessarinList&>(*copy.get());
  EXPECT_EQ(clone.GetType(), 77u);
  EXPECT_EQ(clone.Size(), 1u);
  list.reset();
  EXPECT_TRUE(clone.Matches("A"));
  EXPECT_FALSE(clone.Matches("b"));
}

TEST(TessarinList, IsEqualToEveryUserDefinedValue) {
  const ListPtr a = Make({"a"});
  const ListPtr b = Make({"b"});
  const AutoRefPtr<Tessarin> expression(new Tessarin(21));
  EXPECT_FALSE(a->LessThan(b.get()));
  EXPECT_FALSE(b->LessThan(a.get()));
  EXPECT_TRUE(a->IsEqual(b.get()));
  EXPECT_TRUE(a->IsEqual(expression.get()));
  EXPECT_TRUE(expression->IsEqual(a.get()));
  EXPECT_FALSE(a->IsEqual(nullptr));
}

extern "C" FunctionStatus AnswerYes(std::uint32_t, IVariant* const*, IVariant* result, IModuleInfo*,
                                    IContext*) {
  result->AssignBoolean(true);
  return 0;
}

// A transaction of a customer's policy.
class CustomersContext final : public NeutralContext {
  std::uint64_t Interface_GetTovrinInstanceId() const override { return 71; }
  IVariant* Interface_CreateInstance(TypeId type) override { return new TestVariant(type); }
  ModuleFunction Interface_GetFunction(const char*, std::uint32_t, const char* const*,
                                       IModuleInfo**, std::uint32_t) override {
    return &AnswerYes;
  }
};

// What is wrong with an entry is told to the log when the matcher is built, and not before.
TEST(TessarinList, IsLoadedWithoutItsMatcherInACustomersPolicy) {
  const AutoRefPtr<IContext> context(new CustomersContext);
  const auto json = AutoRefPtr<Tessarin>(new Tessarin(21))->Serialize();
  ASSERT_TRUE(json->Parse(R"({"entries":[{"value":"("}]})"));
  const ListPtr list = Make({});
  const HostInSlot host{Gates{}};

  EXPECT_TRUE(list->Deserialize(json.get(), context.get()));
  EXPECT_TRUE(host->fPrinted.empty()) << host->fPrinted.front().message;
  EXPECT_FALSE(list->Matches("("));
  EXPECT_FALSE(host->fPrinted.empty());

  host->fPrinted.clear();
  EXPECT_FALSE(list->Deserialize(json.get()));
  EXPECT_FALSE(host->fPrinted.empty()) << "without a policy the load itself builds it";
}

TEST(TessarinList, HasNoBinaryForm) {
  const ListPtr list = Make({"a"});
  void* out = nullptr;
  EXPECT_FALSE(list->FromBinaryData("a", 1, 10900));
  EXPECT_EQ(list->ToBinaryData(&out, 10900), 0u);
  EXPECT_EQ(out, nullptr);
}

}  // namespace
