// The MsgPack writer where memory runs out.

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

#include "json/JsonMsgPack.h"
#include "tests/json/JsonSupport.h"
#include "tests/support/AllocationCount.h"

namespace Tovrin::JSON {
namespace {

TEST(JsonMsgPackWriter, LeavesATargetThatCannotGrowAsItWas) {
  const std::string text(100, 'x');
  std::string target = "kept";
  {
    JsonMsgPackWriter writer(target);
    writer.WriteString(text);
    {
      const AllocationFault fault(1);
      EXPECT_THROW(writer.Flush(), std::bad_alloc);
      EXPECT_TRUE(fault.HasFailed());
    }
    EXPECT_EQ(target, "kept");
    writer.WriteBool(true);
  }
  EXPECT_EQ(target, "kept\xC3") << "what could not be delivered does not come later";
}

TEST(JsonMsgPackWriter, GoesInSilenceWhereItsTargetCannotGrow) {
  const std::string text(100, 'x');
  std::string target = "kept";
  auto writer = std::make_unique<JsonMsgPackWriter>(target);
  writer->WriteString(text);
  const AllocationFault fault(1);
  writer.reset();
  EXPECT_TRUE(fault.HasFailed());
  EXPECT_EQ(target, "kept");
}

// Whichever request it is that fails, on the way through a tree whose bytes fill several chunks.
TEST(JsonMsgPackWriter, ThrowsWhereverARequestFails) {
  const Node tree(Parse("[[\"" + std::string(1500, 'x') + "\",[{\"k\":[[[1]]]}]],\"" +
                        std::string(3000, 'y') + "\"]"));
  ASSERT_TRUE(tree);
  std::string expected;
  ASSERT_TRUE(ToMsgPack(*tree, expected));
  long request = 1;
  for (bool isDone = false; !isDone; ++request) {
    std::string target;
    const AllocationFault fault(request);
    try {
      EXPECT_TRUE(ToMsgPack(*tree, target));
      isDone = !fault.HasFailed();
      EXPECT_EQ(target, expected);
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(fault.HasFailed());
    }
  }
  EXPECT_GT(request, 5);
}

}  // namespace
}  // namespace Tovrin::JSON
