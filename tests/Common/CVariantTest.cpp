#include "Common/CVariant.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/Common/VariantSupport.h"

using testing::ElementsAre;

TEST(CVariant, SortsFindsAndErases) {
  CVariant list = Longs({3, 1, 2});
  list.SortList();
  EXPECT_THAT(LongsOf(list), ElementsAre(1, 2, 3));
  EXPECT_EQ(list.Find(std::int64_t{2}), 1);
  list.Erase(1);
  EXPECT_THAT(LongsOf(list), ElementsAre(1, 3));
}

TEST(CVariant, CopiesEveryType) {
  for (const VariantType type : AllTypes()) {
    SCOPED_TRACE(TypeInfo(type).fName);
    const CVariant sample = SampleOf(type);
    const CVariant copy(sample);
    EXPECT_EQ(copy.GetType(), type);
    EXPECT_EQ(copy.SizeOfList(), sample.SizeOfList());
  }
}
