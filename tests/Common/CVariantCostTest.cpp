#include <gtest/gtest.h>

#include <cstdint>

#include "Common/CVariant.h"
#include "tests/Common/VariantSupport.h"
#include "tests/support/AllocationCount.h"

namespace {

TEST(CVariantCost, ScalarsTakeNoMemory) {
  const CStringPtr text = MakeText("some text that is longer than any that lies inside an object");
  const CVariant source(std::int64_t{5});
  const long before = AllocationCount();
  {
    CVariant value(std::int64_t{1});
    value.SetDouble(2.5);
    EXPECT_EQ(value.GetDouble(), 2.5);
    value.SetBool(true);
    EXPECT_TRUE(value.GetBool());
    value.SetLong(VariantType::Hex, 3);
    EXPECT_EQ(value.GetLong(), 3);
    value.SetString(text.Get());
    EXPECT_EQ(value.GetText().Get(), text.Get());
    value.Assign(&source);
    EXPECT_EQ(value.GetLong(), 5);
    const CVariant copy(value);
    EXPECT_EQ(copy.GetLong(), 5);
    value.Clear();
    value.SetEmpty();
  }
  EXPECT_EQ(AllocationCount(), before);
}

TEST(CVariantCost, ClosedGatesMakeNoReport) {
  const InSlot<QuestionedHost> host{Gates{.active = false}};
  CVariant value(true);
  value.GetLong();
  host.Get()->fQuestions.reserve(100);
  const long before = AllocationCount();
  EXPECT_EQ(value.GetListSize(), 0u);
  EXPECT_LE(AllocationCount() - before, 1);  // the host's own note of the question
}

TEST(CVariantCost, AListGrowsByDoubling) {
  CVariant list(VariantType::LongList);
  const long before = AllocationCount();
  for (std::int64_t i = 0; i < 100'000; ++i) list.AddToList(i);
  EXPECT_LE(AllocationCount() - before, 17);  // 8 bytes, doubled until 800 000 fit
}

}  // namespace
