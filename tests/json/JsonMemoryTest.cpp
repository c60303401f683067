// What the nodes of a tree ask of memory.

#include <gtest/gtest.h>

#include "tests/json/JsonSupport.h"
#include "tests/support/AllocationCount.h"

namespace Tovrin::JSON {
namespace {

TEST(JsonArray, MakesRoomForTenAtItsSecondItem) {
  const Node item(new JsonTrue);
  const CUsePtr<JsonArray> array(new JsonArray);
  array->AppendShared(item.Get());
  long before = AllocationCount();
  array->AppendShared(item.Get());
  EXPECT_EQ(AllocationCount(), before + 1);
  for (before = AllocationCount(); array->Size() < 10;) array->AppendShared(item.Get());
  EXPECT_EQ(AllocationCount(), before);
  array->AppendShared(item.Get());
  EXPECT_EQ(AllocationCount(), before + 1);
}

}  // namespace
}  // namespace Tovrin::JSON
