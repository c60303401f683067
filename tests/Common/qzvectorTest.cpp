#include "Common/qzvector.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string>

namespace {

using Bytes = qzvector<char>;

// The layout that the element sizes of the variants are computed with.
static_assert(sizeof(Bytes) == 5 * sizeof(void*));

void Fill(Bytes& store, const std::string& text) {
  store.ResizeForNewValue(text.size());
  std::memcpy(store.Data(), text.data(), text.size());
}

std::string TextIn(const Bytes& store) {
  return {store.Data(), store.Size()};
}

TEST(qzvector, StartsInsideWithRoomForEightBytes) {
  const Bytes store;
  EXPECT_TRUE(store.IsInline());
  EXPECT_EQ(store.Size(), 0u);
  EXPECT_EQ(store.Capacity(), 8u);
}

struct ResizeRow {
  const char* name;
  std::uint64_t before, after;
  std::uint64_t capacity;
  bool isInline;
};

constexpr ResizeRow kResizeRows[] = {
    {"EightBytesStayInside", 0, 8, 8, true},
    {"NineBytesTakeExactlyThat", 0, 9, 9, false},
    {"GrowingTakesExactlyThat", 9, 100, 100, false},
    {"EightBytesComeHomeFromTheHeap", 100, 8, 8, true},
    {"NothingComesHomeFromTheHeap", 100, 0, 8, true},
    {"LessThanHalfIsTakenExactly", 100, 49, 49, false},
    {"HalfKeepsTheBlock", 100, 50, 100, false},
    {"TheSameKeepsTheBlock", 100, 100, 100, false},
    {"SmallButNotInsideIsTakenExactly", 100, 9, 9, false},
};

TEST(qzvector, ResizesForANewValueByTheRule) {
  for (const ResizeRow& row : kResizeRows) {
    SCOPED_TRACE(row.name);
    Bytes store;
    store.ResizeForNewValue(row.before);
    store.ResizeForNewValue(row.after);
    EXPECT_EQ(store.Size(), row.after);
    EXPECT_EQ(store.Capacity(), row.capacity);
    EXPECT_EQ(store.IsInline(), row.isInline);
    std::memset(store.Data(), 'x', row.after);  // all of it is there
  }
}

TEST(qzvector, GrowsByDoublingWithOneElementAsTheFloor) {
  Bytes store;
  EXPECT_EQ(store.GrownCapacity(8, 1), 8u);
  EXPECT_EQ(store.GrownCapacity(9, 1), 16u);
  EXPECT_EQ(store.GrownCapacity(24, 24), 24u);
  EXPECT_EQ(store.GrownCapacity(96, 96), 96u);
  EXPECT_EQ(store.GrownCapacity(97, 96), 192u);
  store.ResizeForNewValue(96);
  EXPECT_EQ(store.GrownCapacity(100, 96), 192u);
}

TEST(qzvector, KeepsItsBytesWhenItGrows) {
  Bytes store;
  Fill(store, "inside");
  for (const std::uint64_t capacity : {16, 1000}) {
    store.GrowKeeping(capacity, [&](char* to, char* from) { std::memcpy(to, from, 6); });
    EXPECT_EQ(TextIn(store), "inside");
    EXPECT_EQ(store.Capacity(), capacity);
  }
}

TEST(qzvector, HandsItsValueOverWhereverItLies) {
  const std::string kInside = "short", kOutside(100, 'y');
  for (const std::string& from : {kInside, kOutside}) {
    for (const std::string& to : {kInside, kOutside}) {
      Bytes source, target;
      Fill(source, from);
      Fill(target, to);
      target.TakeFrom(source);
      EXPECT_EQ(TextIn(target), from);
      EXPECT_EQ(source.Size(), 0u);
      EXPECT_TRUE(source.IsInline());
      EXPECT_EQ(source.Capacity(), 8u);
    }
  }
}

TEST(qzvector, RefusesWhatCannotBeThereAndKeepsWhatIs) {
  Bytes store;
  Fill(store, "kept");
  EXPECT_THROW(store.ResizeForNewValue(std::numeric_limits<std::uint64_t>::max()), std::bad_alloc);
  EXPECT_THROW(store.GrownCapacity(std::numeric_limits<std::uint64_t>::max(), 8), std::bad_alloc);
  EXPECT_EQ(TextIn(store), "kept");
}

}  // namespace
