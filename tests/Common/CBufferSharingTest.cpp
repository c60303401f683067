// Buffers that share their bytes until one of them is to change.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
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

  source.RemoveFront(1);
  CBuffer second(source, CBuffer::Shared());
  EXPECT_TRUE(second.Overwrite(0, "y", 1));
  EXPECT_TRUE(second.IsInMemory()) << "exactly the swap size";
}

TEST_F(CBufferSharingTest, NeverWritesIntoTheNamedFileOfItsSource) {
  const std::string name = fFolder.Write("named", kText).string();
  auto source = std::make_unique<CBuffer>(CFSPath(name), true);
  CBuffer first(*source, CBuffer::Shared());
  CBuffer second(*source, CBuffer::Shared());
  EXPECT_TRUE(Append(first, "first"));
  source.reset();
  EXPECT_TRUE(Append(second, "second")) << "alone with the file by now";
  EXPECT_EQ(BytesOf(first), kText + "first");
  EXPECT_EQ(BytesOf(second), kText + "second");
  EXPECT_EQ(ReadWholeFile(name), kText);

  const CBuffer* readOnly = new CBuffer(CFSPath(name), false);
  CBuffer third(*const_cast<CBuffer*>(readOnly), CBuffer::Shared());
  readOnly->Release();
  EXPECT_TRUE(Append(third, "third")) << "a copy may be written";
  EXPECT_EQ(BytesOf(third), kText + "third");
  EXPECT_EQ(ReadWholeFile(name), kText);
}

// The file's owner cuts it, and the copy's place is behind its end then.
TEST_F(CBufferSharingTest, WritesAtTheEndOfWhatIsLeft) {
  const std::string name = fFolder.Write("named", kText).string();
  CBuffer source(CFSPath(name), true);
  CBuffer copy(source, CBuffer::Shared());
  EXPECT_EQ(copy.SeekWrite(8, 0), 8);
  EXPECT_EQ(copy.SeekRead(8, 0), 8);
  EXPECT_TRUE(source.Assign("ab", 2));
  char byte = 0;
  EXPECT_EQ(copy.Read(&byte, 1), 0U);
  EXPECT_EQ(copy.Write("x", 1), 1U);
  EXPECT_EQ(BytesOf(copy), "abx");
}

}  // namespace
