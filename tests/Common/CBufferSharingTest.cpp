// Buffers that share their bytes until one of them is to change.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/Common/CBufferSupport.h"

namespace {

using testing::IsEmpty;

class CBufferSharingTest : public CBufferTest {};

TEST_F(CBufferSharingTest, SharesUntilOneOfTheTwoChanges) {
  for (const auto& source : AllForms()) {
    CBuffer copy(*source, CBuffer::Shared());
    EXPECT_EQ(BytesOf(copy), kText);
    EXPECT_EQ(copy.GetBufferPtr(), source->GetBufferPtr()) << "the very same bytes";
    EXPECT_TRUE(Append(copy, "copy"));
    EXPECT_EQ(BytesOf(copy), kText + "copy");
    EXPECT_EQ(BytesOf(*source), kText);

    CBuffer second(*source, CBuffer::Shared());
    source->SeekRead(4, 0);
    EXPECT_EQ(second.GetReadPosition(), -1) << "each has its own places";
    EXPECT_TRUE(Append(*source, "source"));
    EXPECT_EQ(BytesOf(second), kText);
    EXPECT_EQ(BytesOf(*source), kText + "source");
  }
}

TEST_F(CBufferSharingTest, OutlivesTheOneThatItSharesWith) {
  for (auto& source : AllForms()) {
    CBuffer copy(*source, CBuffer::Shared());
    CBuffer swapped(*source, CBuffer::Shared());
    EXPECT_TRUE(source->SwapIn());
    EXPECT_TRUE(source->Freeze());
    source.reset();
    EXPECT_EQ(BytesOf(copy), kText);
    EXPECT_TRUE(swapped.SwapOut());
    EXPECT_TRUE(swapped.Freeze());
    EXPECT_EQ(BytesOf(copy), kText);
    EXPECT_TRUE(swapped.Thaw());
    EXPECT_TRUE(copy.Insert(0, "x", 1));
    EXPECT_EQ(BytesOf(copy), "x" + kText);
    EXPECT_EQ(BytesOf(swapped), kText);
  }
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(CBufferSharingTest, CopiesWhatIsTooLargeToAFile) {
  const std::string body(GetGlobalSwapSize() + 1, 'x');
  CBuffer source(body.data(), body.size());
  ASSERT_TRUE(source.SwapIn());
  CBuffer copy(source, CBuffer::Shared());
  EXPECT_TRUE(copy.Overwrite(0, "y", 1));
  EXPECT_FALSE(copy.IsInMemory());
  EXPECT_EQ(BytesOf(source), body);
}

}  // namespace
