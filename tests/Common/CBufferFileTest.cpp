// Buffers on file: frozen, by name, and as a view.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "Common/CFile.h"
#include "tests/Common/CBufferSupport.h"
#include "tests/Common/QuestionedHost.h"

namespace {

class CBufferFileTest : public CBufferTest {};

// ---- freezing

TEST_F(CBufferFileTest, ShowsNothingWhileFrozen) {
  CBuffer buffer("abcdef", 6);
  buffer.SeekRead(2, 0);
  buffer.SeekWrite(3, 0);
  EXPECT_FALSE(buffer.Thaw()) << "in memory";
  ASSERT_TRUE(buffer.Freeze());
  EXPECT_TRUE(buffer.IsFrozen());
  EXPECT_FALSE(buffer.Freeze());
  EXPECT_FALSE(buffer.SwapOut());
  EXPECT_FALSE(buffer.SwapIn());
  EXPECT_EQ(buffer.GetSize(), 0U);
  EXPECT_EQ(buffer.GetBufferPtr(), nullptr);
  EXPECT_EQ(GetBufferPtrSizeLimit(buffer, 100), nullptr);
  char byte = 0;
  std::size_t number = 7;
  unsigned index = 7;
  EXPECT_EQ(buffer.Read(&byte, 1), 0U);
  EXPECT_EQ(buffer.ReadAt(0, &byte, 1), 0U);
  EXPECT_EQ(buffer.SeekRead(0, 0), -1);
  EXPECT_EQ(buffer.SeekWrite(0, 0), -1);
  EXPECT_EQ(buffer.Write("x", 1), 0U);
  EXPECT_FALSE(Append(buffer, "x"));
  EXPECT_FALSE(Append(buffer, ""));
  EXPECT_FALSE(buffer.Insert(0, "x", 1));
  EXPECT_EQ(buffer.Erase(0, 1), 0U);
  EXPECT_FALSE(buffer.Assign("x", 1));
  EXPECT_FALSE(buffer.Overwrite(0, "x", 1));
  EXPECT_FALSE(buffer.Replace("a", 1, "x", 1, 0, kAll, &number));
  EXPECT_FALSE(buffer.IFFindBinaryPatterns(number, index, nullptr, 0, 6)) << "before any check";
  EXPECT_EQ(number, 7U);
  EXPECT_EQ(buffer.GetWriteSpace(&number, 1), nullptr);
  EXPECT_EQ(buffer.GetChunkFrame(&number, 1), nullptr);
  CUnicodeString line;
  EXPECT_EQ(buffer.ReadText(&line, "UTF-8", 1, nullptr), 0U);
  buffer.Clear(0);
  buffer.RemoveFront(1);
  buffer.Reserve(10);
  buffer.CommitWrite(1);
  EXPECT_FALSE(CFile::WriteFile(Path("copy"), &buffer)) << "it would be empty";
  ASSERT_TRUE(buffer.Thaw());
  EXPECT_EQ(BytesOf(buffer), "abcdef");
  EXPECT_EQ(buffer.GetReadPosition(), 2);
  EXPECT_EQ(buffer.GetWritePosition(), 3);
}

TEST_F(CBufferFileTest, TakesANewLengthOfAFrozenFileWhenTold) {
  CBuffer buffer("abcdef", 6);
  buffer.SeekRead(6, 0);
  ASSERT_TRUE(buffer.Freeze());
  std::ofstream(NameOf(buffer), std::ios::app) << "gh";
  ASSERT_TRUE(buffer.Thaw());
  EXPECT_EQ(BytesOf(buffer), "abcdef");
  ASSERT_TRUE(buffer.Freeze());
  buffer.ReloadFrozen();
  ASSERT_TRUE(buffer.Thaw());
  EXPECT_EQ(BytesOf(buffer), "abcdefgh");
  ASSERT_TRUE(buffer.Freeze());
  std::filesystem::resize_file(NameOf(buffer), 4);
  ASSERT_TRUE(buffer.Thaw());
  EXPECT_EQ(BytesOf(buffer), "abcd") << "what was cut off is gone";
  EXPECT_EQ(buffer.GetReadPosition(), 4);
}

TEST_F(CBufferFileTest, StaysFrozenWhenItsFileIsTakenAway) {
  const std::string victim = fFolder.Write("victim", "precious").string();
  CBuffer buffer("abc", 3);
  ASSERT_TRUE(buffer.Freeze());
  std::filesystem::remove(NameOf(buffer));
  EXPECT_FALSE(buffer.Thaw());
  std::filesystem::create_symlink(victim, NameOf(buffer));
  EXPECT_FALSE(buffer.Thaw()) << "a link in its place is not followed";
  EXPECT_TRUE(buffer.IsFrozen());
}

TEST_F(CBufferFileTest, ReadsShortWhatShrinksBehindItsBack) {
  CBuffer buffer(std::string(10000, 'x').data(), 10000);
  ASSERT_TRUE(buffer.SwapOut());
  ASSERT_NE(buffer.GetBufferPtr(), nullptr);
  std::filesystem::resize_file(NameOf(buffer), 10);
  EXPECT_EQ(buffer.GetBufferPtr(), nullptr) << "there is no view of what is not there";
  std::string bytes(10000, '\0');
  EXPECT_EQ(buffer.Read(bytes.data(), bytes.size()), 10U);
  EXPECT_FALSE(buffer.SwapIn());
  EXPECT_FALSE(buffer.IsInMemory());
}

// ---- files by name

TEST_F(CBufferFileTest, ReadsANamedFile) {
  const std::string name = fFolder.Write("named", kText).string();
  {
    CBuffer buffer(CFSPath(name), false);
    EXPECT_TRUE(buffer.IsReadOnly());
    EXPECT_EQ(NameOf(buffer), name);
    EXPECT_EQ(BytesOf(buffer), kText);
    EXPECT_FALSE(Append(buffer, "x"));
    EXPECT_FALSE(buffer.Insert(0, "x", 1));
    EXPECT_EQ(buffer.Erase(0, 1), 0U);
    EXPECT_FALSE(buffer.Assign("x", 1));
    EXPECT_EQ(buffer.Write("x", 1), 0U);
    buffer.Clear(0);
    buffer.RemoveFront(2);
    EXPECT_FALSE(buffer.Replace("1", 1, "x", 1, 0, kAll, nullptr));
    EXPECT_EQ(buffer.GetSize(), kText.size());
    ASSERT_TRUE(buffer.Freeze());
    ASSERT_TRUE(buffer.Thaw());
    EXPECT_EQ(BytesOf(buffer), kText);
    EXPECT_TRUE(buffer.SwapIn());
    EXPECT_FALSE(Append(buffer, "x")) << "read-only in memory as well";
  }
  EXPECT_EQ(ReadWholeFile(name), kText) << "it stays where it is";
}

TEST_F(CBufferFileTest, WritesANamedFileInPlace) {
  const std::string name = Path("named");
  {
    CBuffer buffer(CFSPath(name), true);
    EXPECT_FALSE(buffer.IsReadOnly());
    EXPECT_TRUE(Append(buffer, kText));
    EXPECT_TRUE(buffer.Overwrite(2, "ab", 2)) << "does not append";
    EXPECT_EQ(BytesOf(buffer), "01ab456789");
    ASSERT_TRUE(buffer.Freeze());
    ASSERT_TRUE(buffer.Thaw());
  }
  EXPECT_EQ(ReadWholeFile(name), "01ab456789");
  {
    CBuffer buffer(CFSPath(name), true);
    EXPECT_EQ(BytesOf(buffer), "01ab456789");
  }
  CBuffer missing(CFSPath(Path("no/folder")), true);
  EXPECT_TRUE(missing.IsReadOnly());
  EXPECT_EQ(missing.GetSize(), 0U);
  EXPECT_FALSE(Append(missing, "x"));
}

TEST_F(CBufferFileTest, TellsWhyAFileCannotBeOpened) {
  int error = 0;
  const CBuffer there(CFSPath(fFolder.Write("there", "1").string()), false, &error);
  EXPECT_EQ(error, 0);
  const CBuffer missing(CFSPath(Path("missing")), false, &error);
  EXPECT_EQ(error, ENOENT);
  const CBuffer folder(CFSPath(fFolder.Path().string()), true, &error);
  EXPECT_EQ(error, EISDIR);
}

TEST_F(CBufferFileTest, ShowsNoMoreThanItsSizeOfAFileThatGrows) {
  const std::string name = fFolder.Write("log", kText).string();
  CBuffer buffer(CFSPath(name), false);
  std::ofstream(name, std::ios::app) << "more";
  EXPECT_EQ(buffer.GetSize(), kText.size());
  char bytes[100] = {};
  EXPECT_EQ(buffer.Read(bytes, sizeof bytes), kText.size());
  EXPECT_EQ(buffer.GetReadPosition(), static_cast<std::int64_t>(kText.size()));
  EXPECT_TRUE(buffer.IsAtEnd());
  ASSERT_TRUE(buffer.Freeze());
  buffer.ReloadFrozen();
  ASSERT_TRUE(buffer.Thaw());
  EXPECT_EQ(buffer.Read(bytes, sizeof bytes), 4U);
}

TEST_F(CBufferFileTest, IsWrittenAsAWholeFile) {
  const std::string body(200000, 'b');
  CBuffer buffer(body.data(), body.size());
  ASSERT_TRUE(buffer.SwapOut());
  buffer.SeekRead(5, 0);
  EXPECT_TRUE(CFile::WriteFile(Path("target"), &buffer));
  EXPECT_EQ(ReadWholeFile(Path("target")), body);
  EXPECT_EQ(buffer.GetReadPosition(), 5);
}

// ---- room that is taken back

// A body that streams through: its file holds what is still to come, and not all that has been.
TEST_F(CBufferFileTest, GivesBackWhatWasTakenFromTheFront) {
  CBuffer buffer;
  ASSERT_TRUE(buffer.SwapOut());
  const auto block = [](int number) {
    std::string text = std::to_string(number);
    text.resize(100000, static_cast<char>('a' + number % 26));
    return text;
  };
  constexpr int kBehind = 10;
  for (int i = 0; i < 200; ++i) {
    EXPECT_TRUE(Append(buffer, block(i)));
    if (i < kBehind) continue;
    const std::string front = block(i - kBehind);
    std::string bytes(front.size(), '\0');
    ASSERT_EQ(buffer.ReadAt(0, bytes.data(), bytes.size()), front.size());
    ASSERT_EQ(bytes, front);
    buffer.RemoveFront(front.size());
    ASSERT_LE(std::filesystem::file_size(NameOf(buffer)), 4 * kBehind * front.size()) << i;
  }
  EXPECT_EQ(buffer.GetSize(), kBehind * block(0).size());
}

TEST_F(CBufferFileTest, LeavesTheBytesOfANamedFileWhereTheyAre) {
  const std::string body(5 << 20, 'b');
  const std::string name = fFolder.Write("named", body).string();
  CBuffer buffer(CFSPath(name), true);
  buffer.RemoveFront(4 << 20);
  EXPECT_EQ(buffer.GetSize(), 1U << 20);
  EXPECT_EQ(ReadWholeFile(name), body);
}

// Where the file cannot be written the bytes stay where they are, and none is lost.
TEST_F(CBufferFileTest, KeepsItsBytesWhenRoomCannotBeTakenBack) {
  std::string body(6 << 20, 'b');
  for (std::size_t i = 0; i < body.size(); i += 1000) body[i] = static_cast<char>(i / 1000 % 128);
  CBuffer buffer(body.data(), body.size());
  ASSERT_TRUE(buffer.SwapOut());
  const SwappedDescriptor reading(NameOf(buffer), O_RDONLY);
  buffer.RemoveFront(5 << 20);
  EXPECT_EQ(BytesOf(buffer), body.substr(5 << 20));
  EXPECT_FALSE(Append(buffer, "x"));
  EXPECT_EQ(BytesOf(buffer), body.substr(5 << 20));
}

// ---- mapping

TEST_F(CBufferFileTest, MapsAgainAfterAWrite) {
  CBuffer buffer("abc", 3);
  ASSERT_TRUE(buffer.SwapOut());
  const auto view = [&] {
    return std::string(static_cast<const char*>(buffer.GetBufferPtr()), buffer.GetSize());
  };
  EXPECT_EQ(view(), "abc");
  EXPECT_TRUE(Append(buffer, std::string(10000, 'd')));
  EXPECT_EQ(view(), "abc" + std::string(10000, 'd'));
  buffer.RemoveFront(2);
  EXPECT_EQ(view(), "c" + std::string(10000, 'd'));
  buffer.Clear(0);
  EXPECT_EQ(buffer.GetBufferPtr(), nullptr) << "nothing to map";
  EXPECT_EQ(GetBufferPtrSizeLimit(buffer, 0), nullptr);
}

TEST_F(CBufferFileTest, GivesItsBytesInOnePiece) {
  CBuffer buffer("abc", 3);
  ASSERT_TRUE(buffer.SwapOut());
  EXPECT_NE(GetBufferPtrSizeLimit(buffer, 1), nullptr) << "the view comes before the limit";
  EXPECT_FALSE(buffer.IsInMemory());

  std::filesystem::resize_file(NameOf(buffer), 2);
  buffer.UnmapView();
  const HostInSlot host(Gates{});
  EXPECT_EQ(GetBufferPtrSizeLimit(buffer, 2), nullptr);
  EXPECT_EQ(GetBufferPtrSizeLimit(buffer, 3), nullptr);
  ASSERT_EQ(host->fPrinted.size(), 2U);
  EXPECT_EQ(host->fPrinted[0].message, "Buffer-size is beyond limit for swapping in");
  EXPECT_EQ(host->fPrinted[1].message, "Could not swap to memory!");
  EXPECT_EQ(host->fPrinted[1].className + "::" + host->fPrinted[1].function,
            "CBuffer::GetBufferPtrSizeLimit");
  EXPECT_EQ(host->fPrinted[1].file, "Common\\CBuffer");
}

}  // namespace
