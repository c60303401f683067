// The block in memory: how it grows and shrinks, and the room around the payload.

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "Common/CBufferMemImpl.h"
#include "tests/Common/CBufferSupport.h"

namespace {

class CBufferBlockTest : public CBufferTest {};

std::string Frame(CBuffer& buffer, std::size_t payload) {
  std::size_t length = 0;
  const char* frame = buffer.GetChunkFrame(&length, payload);
  return frame ? std::string(frame, length) : "none";
}

TEST_F(CBufferBlockTest, FramesAChunkInPlace) {
  struct Row {
    std::size_t size;
    const char* digits;
  };
  for (const Row& row :
       {Row{0, "0"}, Row{15, "F"}, Row{16, "10"}, Row{255, "FF"}, Row{100000, "186A0"}}) {
    const std::string text(row.size, 'p');
    CBuffer buffer(text.data(), text.size());
    if (row.size == 0) buffer.Reserve(1);
    EXPECT_EQ(Frame(buffer, kAll), row.digits + ("\r\n" + text + "\r\n"));
    EXPECT_EQ(Frame(buffer, row.size), row.digits + ("\r\n" + text + "\r\n"));
    if (row.size > 0) {
      EXPECT_EQ(Frame(buffer, row.size - 1), "none") << "not the whole payload";
    }
    EXPECT_EQ(BytesOf(buffer), text) << "the payload is as it was";
  }
  CBuffer moved("abcdefgh", 8);
  moved.RemoveFront(3);
  EXPECT_EQ(Frame(moved, kAll), "5\r\ndefgh\r\n");
  EXPECT_TRUE(moved.SwapOut());
  EXPECT_EQ(Frame(moved, kAll), "none");
}

// Contract: a small block begins with its payload after Clear, and has no room for the frame.
TEST_F(CBufferBlockTest, HasNoHeadInASmallBlockThatWasCleared) {
  CBuffer buffer;
  EXPECT_TRUE(Append(buffer, std::string(100, 'a')));
  buffer.Clear(1000);
  EXPECT_TRUE(Append(buffer, std::string(50, 'b')));
  EXPECT_EQ(Frame(buffer, kAll), "none");
  CBuffer large;
  EXPECT_TRUE(Append(large, std::string(300, 'a')));
  large.Clear(1000);
  EXPECT_TRUE(Append(large, "b"));
  EXPECT_EQ(Frame(large, kAll), "1\r\nb\r\n");
  large.Clear(18);
  EXPECT_EQ(Frame(large, kAll), "none") << "no room behind the head";
}

TEST(CBufferMemImpl, GrowsByTheRule) {
  CBufferMemImpl store;
  store.Reserve(0);
  EXPECT_EQ(store.Capacity(), 24U);
  EXPECT_EQ(store.HeadOffset(), 18U);
  CBufferMemImpl other;
  other.Append("abc", 3);
  EXPECT_EQ(other.Capacity(), 27U);
  const std::uint64_t spare = 100 - 6 - 3 - 18;
  other.Reserve(100 - 27);
  const std::uint64_t capacity = other.Capacity();
  EXPECT_GE(other.Spare(), spare);
  other.Reserve(other.Capacity() - 6 - other.GetSize() - other.HeadOffset() - 1);
  EXPECT_EQ(other.Capacity(), capacity) << "one below what asks for more";
  other.Reserve(other.Capacity() - 6 - other.GetSize() - other.HeadOffset());
  EXPECT_GT(other.Capacity(), capacity);
}

TEST(CBufferMemImpl, KeepsTheHeadWhileItIsBelowAQuarter) {
  CBufferMemImpl store;
  store.Append(std::string(100, 'x').data(), 100);
  ASSERT_EQ(store.HeadOffset(), 18U);
  store.Reserve(100);  // needs 224, a quarter of which is 56
  EXPECT_EQ(store.HeadOffset(), 18U);
  EXPECT_EQ(store.Capacity(), 18U + 224U);
  CBufferMemImpl small;
  small.Append("abcdef", 6);
  small.Reserve(30);  // needs 60: 18 is above a quarter
  EXPECT_EQ(small.Capacity(), 60U);
  EXPECT_EQ(small.HeadOffset(), 18U);
  const auto reserved = [](std::uint64_t extra) {
    CBufferMemImpl six;
    six.Append("abcdef", 6);
    six.Reserve(extra);
    return six.Capacity();
  };
  EXPECT_EQ(reserved(45), 75U) << "a quarter of 75 is not above 18";
  EXPECT_EQ(reserved(46), 18U + 76U);
}

TEST(CBufferMemImpl, TakesFromTheFrontWithoutMovingUntilHalf) {
  CBufferMemImpl store;
  const std::string text(30000, 'x');
  store.Append(text.data(), text.size());
  const auto* begin = static_cast<const char*>(store.GetPointer());
  store.RemoveFront(9000);
  EXPECT_EQ(store.GetPointer(), begin + 9000) << "nothing moved";
  store.RemoveFront(2000);
  EXPECT_EQ(store.HeadOffset(), 18U) << "more than half of the rest: moved down";
  EXPECT_EQ(store.Capacity(), 19000U + 9500U) << "and the block cut";
  store.RemoveFront(19000);
  EXPECT_EQ(store.Capacity(), 0U) << "a large block goes when it is empty";

  CBufferMemImpl kept;
  kept.Append(text.data(), 8192 - 24);
  ASSERT_EQ(kept.Capacity(), 8192U);
  kept.RemoveFront(8192 - 24);
  EXPECT_EQ(kept.Capacity(), 8192U) << "one of this size stays";
}

TEST(CBufferMemImpl, MovesAndShrinksAtTheBorders) {
  const auto removed = [](std::uint64_t size, std::uint64_t count) {
    CBufferMemImpl store;
    store.Append(std::string(size, 'x').data(), size);
    store.RemoveFront(count);
    return std::pair(store.Capacity(), store.HeadOffset());
  };
  using Pair = std::pair<std::uint64_t, std::uint64_t>;
  EXPECT_EQ(removed(300, 87), Pair(324, 105)) << "105 is below half of 213";
  EXPECT_EQ(removed(300, 88), Pair(324, 18)) << "106 is half of 212";
  EXPECT_EQ(removed(20000, 8186), Pair(20024, 18)) << "8192 bytes are spare";
  EXPECT_EQ(removed(20000, 8187), Pair(11813 + 5906, 18));
  EXPECT_EQ(removed(20000, 19990), Pair(10 + 24, 18)) << "more than half as much again";
}

TEST(CBufferMemImpl, ClearsToTheSizeThatIsKept) {
  const auto cleared = [](std::uint64_t size, std::uint64_t keep) {
    CBufferMemImpl store;
    store.Append(std::string(size, 'x').data(), size);
    store.Clear(keep);
    return std::pair(store.Capacity(), store.HeadOffset());
  };
  using Pair = std::pair<std::uint64_t, std::uint64_t>;
  EXPECT_EQ(cleared(0, 0), Pair(0, 0));
  EXPECT_EQ(cleared(1000, 17), Pair(0, 0)) << "not even the head";
  EXPECT_EQ(cleared(1000, 18), Pair(18, 18));
  EXPECT_EQ(cleared(1026, 1000), Pair(1050, 18)) << "5 percent are not worth it";
  EXPECT_EQ(cleared(1027, 1000), Pair(1000, 18));
  EXPECT_EQ(cleared(1000, 1024), Pair(1024, 18));
  EXPECT_EQ(cleared(264, 1024), Pair(288, 0));
  EXPECT_EQ(cleared(265, 1024), Pair(289, 18));
}

class CBufferDeathTest : public CBufferTest {};

TEST_F(CBufferDeathTest, EndsTheProcessWhenMemoryIsOut) {
  const auto reserve = [](const std::string& text, std::uint64_t extra) {
    setenv("TMPDIR", "/proc", 1);  // nowhere to swap to
    CBuffer buffer(text.data(), text.size());
    buffer.Reserve(extra);
  };
  const testing::ExitedWithCode memoryIsOut(42);
  EXPECT_EXIT(reserve("abc", kNone), memoryIsOut, "realloc \\(18446744073709551615\\)");
  EXPECT_EXIT(reserve("abc", kNone / 2), memoryIsOut, "realloc \\(9223372036854775852\\)");
  EXPECT_EXIT(reserve("", kNone / 2), memoryIsOut, "malloc \\(9223372036854775831\\)");
}

}  // namespace
