#include "Common/CBuffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "Common/CChunkVisitors.h"
#include "tests/Common/CBufferSupport.h"

namespace {

using testing::IsEmpty;

// ---- places

TEST_F(CBufferTest, HasPlaces) {
  for (const auto& buffer : AllForms()) {
    SCOPED_TRACE(buffer->IsInMemory());
    if (buffer->IsInMemory()) {
      EXPECT_EQ(buffer->GetReadPosition(), -1);
      EXPECT_EQ(buffer->GetWritePosition(), -1);
    }
    EXPECT_EQ(buffer->SeekRead(4, 0), 4);
    EXPECT_EQ(buffer->SeekRead(2, 1), 6);
    EXPECT_EQ(buffer->SeekRead(-1, 2), 9);
    EXPECT_EQ(buffer->SeekRead(10, 0), 10) << "the end is a place";
    EXPECT_EQ(buffer->SeekRead(11, 0), -1);
    EXPECT_EQ(buffer->SeekRead(-11, 2), -1);
    EXPECT_EQ(buffer->SeekRead(std::numeric_limits<std::int64_t>::min(), 2), -1);
    EXPECT_EQ(buffer->SeekRead(std::numeric_limits<std::int64_t>::max(), 1), -1);
    EXPECT_EQ(buffer->SeekRead(0, 3), -1);
    EXPECT_EQ(buffer->GetReadPosition(), 10) << "refused moves move nothing";
    buffer->SeekRead(8, 0);
    char bytes[10] = {};
    EXPECT_EQ(buffer->Read(bytes, 10), 2U);
    EXPECT_EQ(std::string(bytes), "89");
    EXPECT_EQ(buffer->SeekWrite(8, 0), 8);
    EXPECT_EQ(buffer->Write("abcd", 4), 4U) << "over what is there, and behind it";
    EXPECT_EQ(buffer->GetWritePosition(), 12);
    EXPECT_EQ(BytesOf(*buffer), "01234567abcd");
    buffer->RemoveFront(11);
    EXPECT_EQ(buffer->GetWritePosition(), 1);
    EXPECT_EQ(buffer->GetReadPosition(), 0);
    EXPECT_TRUE(buffer->Assign("", 0));
    EXPECT_EQ(buffer->GetWritePosition(), 0);
    EXPECT_EQ(buffer->GetSize(), 0U);
  }
}

TEST_F(CBufferTest, WritesFromTheBeginningWithoutAPlace) {
  CBuffer buffer("abc", 3);
  EXPECT_EQ(buffer.Write("xy", 2), 2U);
  EXPECT_EQ(BytesOf(buffer), "xyc");
  CBuffer other("abc", 3);
  EXPECT_EQ(other.SeekRead(1, 1), 1);
  other.RemoveFront(0);
  EXPECT_EQ(other.GetWritePosition(), 0) << "no place becomes the beginning";
}

// Contract: in memory the end is told one byte early, and not once it is reached.
TEST_F(CBufferTest, TellsItsEndOddlyInMemory) {
  CBuffer buffer("abc", 3);
  EXPECT_FALSE(buffer.IsAtEnd());
  buffer.SeekRead(2, 0);
  EXPECT_TRUE(buffer.IsAtEnd());
  buffer.SeekRead(3, 0);
  EXPECT_FALSE(buffer.IsAtEnd());
  EXPECT_TRUE(CBuffer().IsAtEnd()) << "empty, and without a place";

  buffer.SeekRead(0, 0);
  ASSERT_TRUE(buffer.SwapOut());
  char bytes[4] = {};
  EXPECT_EQ(buffer.Read(bytes, 3), 3U);
  EXPECT_FALSE(buffer.IsAtEnd()) << "on file, no read has met the end yet";
  EXPECT_EQ(buffer.Read(bytes, 1), 0U);
  EXPECT_TRUE(buffer.IsAtEnd());
  buffer.SeekRead(0, 0);
  EXPECT_FALSE(buffer.IsAtEnd());
}

// What reads elsewhere is no reading of this buffer.
TEST_F(CBufferTest, MeetsItsEndByItsOwnReadsAlone) {
  CBuffer buffer("abc", 3);
  ASSERT_TRUE(buffer.SwapOut());
  CBuffer copy(buffer, CBuffer::Shared());
  char bytes[4] = {};
  EXPECT_EQ(copy.Read(bytes, 4), 3U);
  EXPECT_TRUE(copy.IsAtEnd());
  EXPECT_FALSE(buffer.IsAtEnd());
  EXPECT_EQ(buffer.ReadAt(0, bytes, 4), 3U);
  EXPECT_FALSE(buffer.IsAtEnd());
  EXPECT_EQ(buffer.ReadAt(0, bytes, 1), 1U);
  EXPECT_TRUE(copy.IsAtEnd());
  EXPECT_EQ(copy.SeekRead(0, 0), 0);
  EXPECT_FALSE(copy.IsAtEnd());

  EXPECT_EQ(buffer.Read(bytes, 4), 3U);
  EXPECT_TRUE(buffer.IsAtEnd());
  EXPECT_TRUE(Append(buffer, "line\n"));
  CUnicodeString line;
  EXPECT_EQ(buffer.ReadText(&line, "UTF-8", 1, nullptr), 5U);
  EXPECT_FALSE(buffer.IsAtEnd()) << "a line that was taken meets no end";
}

TEST_F(CBufferTest, MeetsNoEndOnFileByAReadInMemory) {
  CBuffer buffer("abc", 3);
  char bytes[4] = {};
  EXPECT_EQ(buffer.Read(bytes, 4), 3U);
  ASSERT_TRUE(buffer.SwapOut());
  EXPECT_FALSE(buffer.IsAtEnd());
}

// ---- changes that are refused or limited

TEST_F(CBufferTest, LimitsWhatLiesOutside) {
  for (const auto& buffer : AllForms()) {
    EXPECT_FALSE(buffer->Overwrite(8, "abc", 3));
    EXPECT_FALSE(buffer->Overwrite(kNone, "abc", 3));
    EXPECT_TRUE(buffer->Overwrite(7, "abc", 3));
    EXPECT_TRUE(buffer->Overwrite(10, "", 0));
    EXPECT_FALSE(buffer->Insert(11, "x", 1));
    EXPECT_EQ(BytesOf(*buffer), "0123456abc");
    EXPECT_EQ(buffer->Erase(10, 1), 0U);
    EXPECT_EQ(buffer->Erase(8, kNone), 2U);
    EXPECT_TRUE(buffer->Insert(8, "XY", 2));
    EXPECT_TRUE(buffer->Insert(0, "", 0));
    EXPECT_EQ(BytesOf(*buffer), "0123456aXY");
    EXPECT_FALSE(buffer->Append(nullptr, 1));
    EXPECT_TRUE(buffer->Append(nullptr, 0));
    buffer->RemoveFront(kNone);
    EXPECT_EQ(buffer->GetSize(), 0U);
    EXPECT_TRUE(Append(*buffer, "again"));
    EXPECT_EQ(BytesOf(*buffer), "again");
  }
}

TEST_F(CBufferTest, TakesItsOwnBytes) {
  for (const auto& buffer : AllForms()) {
    for (int i = 0; i < 8; ++i) {
      const std::string before = BytesOf(*buffer);
      const std::uint64_t size = buffer->GetSize();
      EXPECT_TRUE(buffer->Append(buffer->GetBufferPtr(), size));
      EXPECT_EQ(BytesOf(*buffer), before + before);
    }
    const char* bytes = static_cast<const char*>(buffer->GetBufferPtr());
    EXPECT_TRUE(buffer->Assign(bytes + 3, 4));
    EXPECT_EQ(BytesOf(*buffer), "3456");
    EXPECT_TRUE(buffer->Insert(1, buffer->GetBufferPtr(), 4));
    EXPECT_EQ(BytesOf(*buffer), "33456456");
  }
}

TEST_F(CBufferTest, NeverWritesIntoForeignBytes) {
  char bytes[] = "0123456789";
  CBuffer buffer(bytes, 10, CBuffer::External());
  EXPECT_EQ(buffer.GetBufferPtr(), bytes);
  std::size_t length = 0;
  EXPECT_EQ(buffer.GetChunkFrame(&length, kAll), nullptr);
  buffer.RemoveFront(2);
  EXPECT_EQ(buffer.GetBufferPtr(), bytes + 2) << "taking from the front changes no byte";
  EXPECT_TRUE(Append(buffer, "x"));
  EXPECT_TRUE(buffer.Overwrite(0, "y", 1));
  EXPECT_EQ(BytesOf(buffer), "y3456789x");
  EXPECT_STREQ(bytes, "0123456789");
  for (int operation = 0; operation < 6; ++operation) {
    CBuffer other(bytes, 10, CBuffer::External());
    switch (operation) {
      case 0:
        other.Clear(100);
        break;
      case 1:
        EXPECT_TRUE(other.Assign("ab", 2));
        break;
      case 2:
        EXPECT_EQ(other.Erase(1, 2), 2U);
        break;
      case 3:
        EXPECT_TRUE(other.Insert(1, "ab", 2));
        break;
      case 4:
        other.RemoveFront(9);
        EXPECT_EQ(other.Write("z", 1), 1U);
        break;
      default:
        std::memset(other.GetWriteSpace(&length, 4), '!', 4);
        other.CommitWrite(4);
        break;
    }
    EXPECT_STREQ(bytes, "0123456789") << operation;
  }
}

TEST_F(CBufferTest, IsFilledInPlace) {
  for (const auto& buffer : AllForms()) {
    std::size_t available = 0;
    void* space = buffer->GetWriteSpace(&available, 100);
    ASSERT_NE(space, nullptr);
    EXPECT_GE(available, 100U);
    std::memset(space, 'x', 100);
    space = buffer->GetWriteSpace(nullptr, 100);
    std::memset(space, 'y', 100);
    buffer->CommitWrite(3);
    EXPECT_EQ(BytesOf(*buffer), kText + "yyy");
    buffer->GetWriteSpace(&available, 10);
    buffer->CommitWrite(kAll);
    EXPECT_EQ(buffer->GetSize(), kText.size() + 3 + available) << "limited to what there was";
    const std::uint64_t size = buffer->GetSize();
    if (!buffer->IsInMemory()) {
      buffer->CommitWrite(5);
      EXPECT_EQ(buffer->GetSize(), size) << "there is no block any more";
      EXPECT_EQ(buffer->GetWriteSpace(&available, kAll), nullptr);
    }
  }
}

// ---- the object

// The room was handed out while the bytes were in a file, and is taken in memory.
TEST_F(CBufferTest, TakesWhatWasFilledBeforeItSwapped) {
  CBuffer buffer(kText.data(), kText.size());
  ASSERT_TRUE(buffer.SwapOut());
  std::memcpy(buffer.GetWriteSpace(nullptr, 3), "abc", 3);
  ASSERT_TRUE(buffer.SwapIn());
  buffer.CommitWrite(3);
  EXPECT_EQ(BytesOf(buffer), kText + "abc");
}

TEST_F(CBufferTest, IsCountedAndDestroyed) {
  auto* buffer = new CBuffer("abc", 3);
  Selvane::IBuffer* interface = buffer;
  EXPECT_EQ(interface->GetUseCount(), 1U);
  EXPECT_EQ(interface->AddRef(), 2U);
  EXPECT_FALSE(interface->Release());
  ASSERT_TRUE(interface->SwapOut());
  interface->Destroy();
  EXPECT_THAT(Names(), IsEmpty());
}

// The place of a virtual operation in its class's table, as the Itanium ABI has it in a pointer to
// the member.
template <class Member>
std::size_t SlotOf(Member member) {
  std::size_t place = 0;
  std::memcpy(&place, &member, sizeof place);
  return (place - 1) / sizeof(void*);
}

// What a binary that was built against the interface calls by.
TEST(IBuffer, KeepsTheOrderOfItsOperations) {
  using Selvane::IBuffer;
  using FindBytes = bool (IBuffer::*)(std::size_t&, unsigned&, const void* const*,
                                      Selvane::IVariant*, std::size_t, std::size_t);
  using FindTexts =
      bool (IBuffer::*)(std::size_t&, unsigned&, Selvane::IVariant*, std::size_t, std::size_t);
  const std::size_t slots[] = {
      SlotOf(&IBuffer::AddRef),
      SlotOf(&IBuffer::Release),
      SlotOf(&IBuffer::GetUseCount),
      SlotOf(&IBuffer::Destroy),
      SlotOf(&IBuffer::GetBufferPtr),
      SlotOf(&IBuffer::GetSize),
      SlotOf(&IBuffer::Clear),
      SlotOf(&IBuffer::Append),
      SlotOf(&IBuffer::RemoveFront),
      SlotOf(&IBuffer::Reserve),
      SlotOf(&IBuffer::Insert),
      SlotOf(&IBuffer::Erase),
      SlotOf(&IBuffer::Assign),
      SlotOf(static_cast<FindBytes>(&IBuffer::IFFindBinaryPatterns)),
      SlotOf(static_cast<FindTexts>(&IBuffer::IFFindBinaryPatterns)),
      SlotOf(&IBuffer::Overwrite),
      SlotOf(&IBuffer::Replace),
      SlotOf(&IBuffer::GetWriteSpace),
      SlotOf(&IBuffer::CommitWrite),
      SlotOf(&IBuffer::GetChunkFrame),
      SlotOf(&IBuffer::GetReadPosition),
      SlotOf(&IBuffer::SeekRead),
      SlotOf(&IBuffer::GetWritePosition),
      SlotOf(&IBuffer::SeekWrite),
      SlotOf(&IBuffer::Read),
      SlotOf(&IBuffer::Write),
      SlotOf(&IBuffer::Freeze),
      SlotOf(&IBuffer::IsFrozen),
      SlotOf(&IBuffer::Thaw),
      SlotOf(&IBuffer::SwapOut),
      SlotOf(&IBuffer::SwapIn),
      SlotOf(&IBuffer::GetFileName),
      SlotOf(&IBuffer::ReloadFrozen),
      SlotOf(&IBuffer::IsAtEnd),
      SlotOf(&IBuffer::ReadText),
      SlotOf(&IBuffer::IsReadOnly),
      SlotOf(&IBuffer::UnmapView),
      SlotOf(&IBuffer::IsInMemory),
  };
  for (std::size_t i = 0; i < std::size(slots); ++i) EXPECT_EQ(slots[i], i);
  EXPECT_EQ(SlotOf(&AChunkVisitor::Visit), 0U);
  EXPECT_EQ(SlotOf(&AChunkVisitor::GetChunkSize), 1U);
}

}  // namespace
