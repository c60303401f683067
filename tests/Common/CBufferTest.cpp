#include "Common/CBuffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Common/CBufferMemImpl.h"
#include "Common/CDirectory.h"
#include "Common/CException.h"
#include "Common/CFile.h"
#include "Common/CUnicodeString.h"
#include "Common/TextLines.h"
#include "tests/Common/FileSupport.h"
#include "tests/Common/QuestionedHost.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint64_t kNone = CBuffer::kNone;
constexpr std::size_t kAll = ~std::size_t{0};

std::string BytesOf(CBuffer& buffer) {
  std::string bytes(buffer.GetSize(), '\0');
  bytes.resize(buffer.ReadAt(0, bytes.data(), bytes.size()));
  return bytes;
}

bool Append(CBuffer& buffer, std::string_view text) {
  return buffer.Append(text.data(), text.size());
}

std::string NameOf(CBuffer& buffer) {
  const CUsePtr<Selvane::IUnicodeString> name(buffer.GetFileName());
  return std::string(name->GetBytes(), name->GetByteSize());
}

// Temporary files of a test lie in a folder of its own.
class CBufferTest : public testing::Test {
protected:
  CBufferTest() {
    if (const char* before = std::getenv("TMPDIR")) fBefore = before;
    setenv("TMPDIR", fFolder.Path().c_str(), 1);
    fDescriptors = OpenDescriptors();
  }
  ~CBufferTest() override {
    if (fBefore.empty())
      unsetenv("TMPDIR");
    else
      setenv("TMPDIR", fBefore.c_str(), 1);
    EXPECT_EQ(OpenDescriptors(), fDescriptors) << "a descriptor was left open";
  }

  std::string Path(const std::string& name) const { return (fFolder.Path() / name).string(); }
  std::set<std::string> Names() const { return NamesIn(fFolder.Path()); }

  const CTemporaryFolder fFolder;

private:
  std::string fBefore;
  std::size_t fDescriptors = 0;
};

const std::string kText = "0123456789";

// Both forms, and the file form with some bytes taken off its front.
std::vector<std::unique_ptr<CBuffer>> AllForms(const std::string& text = kText) {
  std::vector<std::unique_ptr<CBuffer>> forms;
  forms.push_back(std::make_unique<CBuffer>(text.data(), text.size()));
  forms.push_back(std::make_unique<CBuffer>(text.data(), text.size()));
  EXPECT_TRUE(forms.back()->SwapOut());
  const std::string more = "front" + text;
  forms.push_back(std::make_unique<CBuffer>(more.data(), more.size()));
  EXPECT_TRUE(forms.back()->SwapOut());
  forms.back()->RemoveFront(5);
  return forms;
}

// ---- the setting

TEST(CBufferSetting, IsWhatTheEnvironmentSays) {
  if (const char* expected = std::getenv("TESSARIN_EXPECTED_SWAP_SIZE")) {
    EXPECT_EQ(GetGlobalSwapSize(), std::strtoull(expected, nullptr, 10));
    return;
  }
  struct Row {
    const char* setting;
    std::uint64_t size;
  };
  const std::string ofMemory = [] {
    unsetenv("QRX_CBUFFER_SWAP_SIZE");
    return std::string();
  }();
  const Row rows[] = {{"1000", 153600},
                      {"153599", 153600},
                      {"153601", 153601},
                      {"1073741824", 1073741824},
                      {"1073741825", 134217728},
                      {"2147483648", 134217728},
                      {"99999999999999999999", 134217728},
                      {"-5", 153600},
                      {"", 153600},
                      {"many", 153600},
                      {"200000 bytes", 200000}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.setting);
    setenv("QRX_CBUFFER_SWAP_SIZE", row.setting, 1);
    setenv("TESSARIN_EXPECTED_SWAP_SIZE", std::to_string(row.size).c_str(), 1);
    const ChildResult result = RunChild(
        {{"/proc/self/exe", "--gtest_filter=CBufferSetting.IsWhatTheEnvironmentSays"}, {}, {}, {}});
    EXPECT_EQ(result.status, 0) << result.output;
  }
  const long pages = sysconf(_SC_PHYS_PAGES) * sysconf(_SC_PAGESIZE);
  const std::string dynamic = std::to_string(SwapSizeForMemory(static_cast<std::uint64_t>(pages)));
  setenv("TESSARIN_EXPECTED_SWAP_SIZE", dynamic.c_str(), 1);
  for (const char* setting : {"DYNAMIC", "dynamic", "Dynamic"}) {
    setenv("QRX_CBUFFER_SWAP_SIZE", setting, 1);
    EXPECT_EQ(
        RunChild({{"/proc/self/exe", "--gtest_filter=CBufferSetting.IsWhatTheEnvironmentSays"},
                  {},
                  {},
                  {}})
            .status,
        0);
  }
}

TEST(CBufferSetting, FollowsTheMachinesMemory) {
  constexpr std::uint64_t kGibi = std::uint64_t{1} << 30;
  EXPECT_EQ(SwapSizeForMemory(1), 153600U);
  EXPECT_EQ(SwapSizeForMemory(kGibi), 153600U);
  EXPECT_EQ(SwapSizeForMemory(kGibi + 1), 256000U);
  EXPECT_EQ(SwapSizeForMemory(2 * kGibi), 256000U);
  EXPECT_EQ(SwapSizeForMemory(4 * kGibi), 512000U);
  EXPECT_EQ(SwapSizeForMemory(8 * kGibi), 1048576U);
  EXPECT_EQ(SwapSizeForMemory(16 * kGibi), 2097152U);
  EXPECT_EQ(SwapSizeForMemory(32 * kGibi), 4194304U);
  EXPECT_EQ(SwapSizeForMemory(32 * kGibi + 1), 8388608U);
}

// ---- when it swaps

TEST_F(CBufferTest, SwapsWhenItPassesItsSize) {
  const std::string full(GetGlobalSwapSize(), 'x');
  CBuffer buffer;
  EXPECT_TRUE(Append(buffer, full));
  EXPECT_TRUE(buffer.IsInMemory()) << "exactly the swap size stays";
  EXPECT_TRUE(Append(buffer, "y"));
  EXPECT_FALSE(buffer.IsInMemory());
  EXPECT_EQ(BytesOf(buffer), full + "y");
  buffer.RemoveFront(full.size());
  EXPECT_FALSE(buffer.IsInMemory()) << "nothing comes back by itself";

  CBuffer assigned;
  EXPECT_TRUE(assigned.Assign(full.data(), full.size() - 1));
  EXPECT_TRUE(assigned.IsInMemory());
  EXPECT_TRUE(assigned.Assign(full.data(), full.size()));
  EXPECT_FALSE(assigned.IsInMemory()) << "assigning exactly the swap size does swap";
  EXPECT_EQ(BytesOf(assigned), full);

  CBuffer written(full.data(), full.size());
  EXPECT_EQ(written.SeekWrite(-1, 2), static_cast<std::int64_t>(full.size()) - 1);
  EXPECT_EQ(written.Write("y", 1), 1U);
  EXPECT_TRUE(written.IsInMemory());
  EXPECT_EQ(written.Write("z", 1), 1U);
  EXPECT_FALSE(written.IsInMemory());

  CBuffer reserved;
  reserved.Reserve(full.size());
  EXPECT_TRUE(reserved.IsInMemory());
  reserved.Reserve(full.size() + 1);
  EXPECT_FALSE(reserved.IsInMemory());

  CBuffer filled(full.data(), full.size());
  std::size_t available = 0;
  ASSERT_NE(filled.GetWriteSpace(&available, 1), nullptr);
  EXPECT_FALSE(filled.IsInMemory());
}

TEST_F(CBufferTest, OverwritingSwapsWhatInsertingMadeTooLarge) {
  const std::string full(GetGlobalSwapSize(), 'x');
  CBuffer buffer(full.data(), full.size());
  EXPECT_TRUE(buffer.Insert(0, "ab", 2));
  EXPECT_TRUE(buffer.IsInMemory());
  EXPECT_TRUE(buffer.Overwrite(1, "c", 1));
  EXPECT_FALSE(buffer.IsInMemory());
  EXPECT_EQ(BytesOf(buffer), "ac" + full);
}

TEST_F(CBufferTest, BringsTheWholeBodyBackToInsertAndErase) {
  const std::string body(GetGlobalSwapSize() * 2, 'x');
  CBuffer buffer(body.data(), body.size());
  ASSERT_FALSE(buffer.IsInMemory());
  EXPECT_TRUE(buffer.Insert(1, "ab", 2));
  EXPECT_TRUE(buffer.IsInMemory());
  EXPECT_EQ(buffer.GetSize(), body.size() + 2);
  ASSERT_TRUE(buffer.SwapOut());
  EXPECT_EQ(buffer.Erase(1, 2), 2U);
  EXPECT_TRUE(buffer.IsInMemory());
  EXPECT_EQ(BytesOf(buffer), body);
}

// ---- temporary files

TEST_F(CBufferTest, HasATemporaryFileOfItsOwn) {
  {
    CBuffer buffer("abc", 3);
    EXPECT_EQ(NameOf(buffer), "");
    ASSERT_TRUE(buffer.SwapOut());
    EXPECT_TRUE(buffer.SwapOut()) << "it is there already";
    const std::string name = NameOf(buffer);
    EXPECT_TRUE(name.starts_with(Path("qztmpfile"))) << name;
    EXPECT_EQ(PermissionsOf(name), 0600U) << "nobody else may read it";
    EXPECT_EQ(ReadWholeFile(name), "abc");
    ASSERT_TRUE(buffer.SwapIn());
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(BytesOf(buffer), "abc");
    ASSERT_TRUE(buffer.SwapOut());
    ASSERT_TRUE(buffer.Freeze());
  }
  EXPECT_THAT(Names(), IsEmpty()) << "gone with its buffer, frozen or not";
}

TEST_F(CBufferTest, PassesOverNamesThatAreTaken) {
  CBuffer first("1", 1);
  ASSERT_TRUE(first.SwapOut());
  const std::string prefix = Path("qztmpfile");
  const auto next = 1 + std::strtoull(NameOf(first).c_str() + prefix.size(), nullptr, 10);
  const std::string victim = fFolder.Write("victim", "precious").string();
  for (auto number = next; number < next + 10; ++number) {
    const std::string name = prefix + std::to_string(number);
    if (number % 2 == 0)
      std::filesystem::create_symlink(victim, name);
    else
      std::ofstream(name) << "taken";
  }
  CBuffer buffer("abc", 3);
  ASSERT_TRUE(buffer.SwapOut());
  EXPECT_EQ(NameOf(buffer), prefix + std::to_string(next + 10));
  EXPECT_EQ(ReadWholeFile(victim), "precious");
  EXPECT_EQ(BytesOf(buffer), "abc");
}

TEST_F(CBufferTest, SwapsBesideOtherProcesses) {
  const auto work = [] {
    bool isRight = true;
    for (int i = 0; i < 200; ++i) {
      const std::string text = std::to_string(getpid()) + " " + std::to_string(i);
      CBuffer buffer(text.data(), text.size());
      isRight = buffer.SwapOut() && BytesOf(buffer) == text && isRight;
    }
    return isRight;
  };
  std::thread other([&] { EXPECT_EQ(InChild(work), 0); });
  EXPECT_EQ(InChild(work), 0);
  other.join();
  EXPECT_THAT(Names(), IsEmpty());
}

// A host with a temporary-file service.
class FileHost final : public QuestionedHost {
public:
  explicit FileHost(std::string path) : QuestionedHost(Gates{false, false, false}), fPath(path) {}
  int fAsked = 0;
  bool fThrows = false;

private:
  bool Interface_GetTemporaryFile(char* path, std::size_t pathSize, char* directory,
                                  std::size_t directorySize, std::uint32_t*) override {
    ++fAsked;
    if (fThrows) throw 42;
    const std::filesystem::path whole(fPath);
    std::snprintf(path, pathSize, "%s", whole.filename().c_str());
    std::snprintf(directory, directorySize, "%s", whole.parent_path().c_str());
    return true;
  }

  const std::string fPath;
};

TEST_F(CBufferTest, AsksTheHostForAFile) {
  const std::string wanted = Path("of_the_host");
  const InSlot<FileHost> host(wanted);
  {
    CBuffer buffer("abc", 3);
    ASSERT_TRUE(buffer.SwapOut());
    EXPECT_EQ(NameOf(buffer), wanted);
    EXPECT_EQ(host->fAsked, 1);
    CBuffer second("def", 3);
    ASSERT_TRUE(second.SwapOut()) << "the host's name is taken, and an own one found";
    EXPECT_TRUE(NameOf(second).starts_with(Path("qztmpfile")));
    EXPECT_EQ(BytesOf(buffer), "abc");
    host->fThrows = true;
    CBuffer third("ghi", 3);
    EXPECT_TRUE(third.SwapOut());
  }
  EXPECT_THAT(Names(), IsEmpty());
}

// ---- faults

TEST_F(CBufferTest, GoesOnInMemoryOnAFullDisk) {
  const std::string full(GetGlobalSwapSize(), 'x');
  CBuffer buffer(full.data(), full.size());
  buffer.SeekRead(7, 0);
  const FullDiskBehind limit(GetGlobalSwapSize() / 2);
  EXPECT_FALSE(buffer.SwapOut());
  EXPECT_FALSE(buffer.Freeze());
  EXPECT_FALSE(buffer.IsFrozen());
  EXPECT_TRUE(Append(buffer, "abc"));
  EXPECT_TRUE(buffer.IsInMemory());
  EXPECT_EQ(BytesOf(buffer), full + "abc");
  EXPECT_EQ(buffer.GetReadPosition(), 7);
  EXPECT_TRUE(buffer.Assign((full + "d").data(), full.size() + 1));
  EXPECT_EQ(BytesOf(buffer), full + "d");
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(CBufferTest, KeepsItsFileWholeOnAFullDisk) {
  const std::string body(100000, 'x');
  CBuffer buffer(body.data(), body.size());
  ASSERT_TRUE(buffer.SwapOut());
  const FullDiskBehind limit(120000);
  const std::string more(50000, 'y');
  EXPECT_FALSE(Append(buffer, more));
  EXPECT_EQ(BytesOf(buffer), body);
  buffer.SeekWrite(90000, 0);
  EXPECT_EQ(buffer.Write(more.data(), more.size()), 0U);
  EXPECT_EQ(BytesOf(buffer), body);
  EXPECT_FALSE(buffer.Assign((body + more).data(), 150000));
  EXPECT_EQ(BytesOf(buffer), body);
  EXPECT_TRUE(Append(buffer, "z"));
  EXPECT_EQ(BytesOf(buffer), body + "z");
}

TEST_F(CBufferTest, StaysInMemoryWhereNoFileCanBe) {
  setenv("TMPDIR", Path("folder").c_str(), 1);
  std::filesystem::create_directory(Path("folder"));
  std::filesystem::permissions(Path("folder"), std::filesystem::perms(0555));
  std::filesystem::permissions(fFolder.Path(), std::filesystem::perms(0755));
  CBuffer buffer("abc", 3);
  const WithoutPrivileges nobody;
  EXPECT_FALSE(buffer.SwapOut());
  EXPECT_EQ(BytesOf(buffer), "abc");
}

// Under a sanitizer there are descriptors enough: without one left it takes every virtual call for
// a call on no object.
#ifdef __SANITIZE_ADDRESS__
constexpr bool kHasFewDescriptors = false;
#else
constexpr bool kHasFewDescriptors = true;
#endif

// More buffers than descriptors: frozen ones need none, and those that find none stay in memory.
TEST_F(CBufferTest, TenThousandAreLostNowhere) {
  const std::string inMemory = "/dev/shm/tessarin_buffers_" + std::to_string(getpid());
  if (std::filesystem::is_directory("/dev/shm")) {  // many files, and a disk may be slow at them
    std::filesystem::create_directory(inMemory);
    setenv("TMPDIR", inMemory.c_str(), 1);
  }
  constexpr int kCount = 10000;
  rlimit before = {};
  getrlimit(RLIMIT_NOFILE, &before);
  rlimit few = before;
  if (kHasFewDescriptors) few.rlim_cur = 200;
  setrlimit(RLIMIT_NOFILE, &few);
  {
    std::vector<std::unique_ptr<CBuffer>> buffers;
    int swapped = 0, frozen = 0;
    for (int i = 0; i < kCount; ++i) {
      const std::string text = "body " + std::to_string(i);
      buffers.push_back(std::make_unique<CBuffer>(text.data(), text.size()));
      if (i % 2 == 0)
        frozen += buffers.back()->Freeze() ? 1 : 0;
      else if (swapped < 150)
        swapped += buffers.back()->SwapOut() ? 1 : 0;
    }
    EXPECT_EQ(frozen, kCount / 2);
    EXPECT_EQ(swapped, 150);
    int refused = 0;
    for (int i = 1; i < 1000; i += 2) refused += buffers[i]->SwapOut() ? 0 : 1;
    EXPECT_EQ(refused > 0, kHasFewDescriptors) << "there are not that many descriptors";
    for (int i = 1; i < 300; i += 2) buffers[i]->SwapIn();
    for (int i = 0; i < kCount; ++i) {
      const std::string text = "body " + std::to_string(i);
      if (buffers[i]->IsFrozen()) {
        EXPECT_TRUE(buffers[i]->Thaw());
      }
      ASSERT_EQ(BytesOf(*buffers[i]), text);
      buffers[i].reset();
    }
  }
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_THAT(NamesIn(CDirectory::GetTempPath().String()), IsEmpty());
  std::filesystem::remove_all(inMemory);
}

// ---- freezing

TEST_F(CBufferTest, ShowsNothingWhileFrozen) {
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

TEST_F(CBufferTest, TakesANewLengthOfAFrozenFileWhenTold) {
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

TEST_F(CBufferTest, StaysFrozenWhenItsFileIsTakenAway) {
  const std::string victim = fFolder.Write("victim", "precious").string();
  CBuffer buffer("abc", 3);
  ASSERT_TRUE(buffer.Freeze());
  std::filesystem::remove(NameOf(buffer));
  EXPECT_FALSE(buffer.Thaw());
  std::filesystem::create_symlink(victim, NameOf(buffer));
  EXPECT_FALSE(buffer.Thaw()) << "a link in its place is not followed";
  EXPECT_TRUE(buffer.IsFrozen());
}

TEST_F(CBufferTest, ReadsShortWhatShrinksBehindItsBack) {
  CBuffer buffer(std::string(10000, 'x').data(), 10000);
  ASSERT_TRUE(buffer.SwapOut());
  ASSERT_NE(buffer.GetBufferPtr(), nullptr);
  buffer.UnmapView();
  std::filesystem::resize_file(NameOf(buffer), 10);
  EXPECT_EQ(buffer.GetBufferPtr(), nullptr) << "there is no view of what is not there";
  std::string bytes(10000, '\0');
  EXPECT_EQ(buffer.Read(bytes.data(), bytes.size()), 10U);
  EXPECT_FALSE(buffer.SwapIn());
  EXPECT_FALSE(buffer.IsInMemory());
}

// ---- files by name

TEST_F(CBufferTest, ReadsANamedFile) {
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

TEST_F(CBufferTest, WritesANamedFileInPlace) {
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

TEST_F(CBufferTest, IsWrittenAsAWholeFile) {
  const std::string body(200000, 'b');
  CBuffer buffer(body.data(), body.size());
  ASSERT_TRUE(buffer.SwapOut());
  buffer.SeekRead(5, 0);
  EXPECT_TRUE(CFile::WriteFile(Path("target"), &buffer));
  EXPECT_EQ(ReadWholeFile(Path("target")), body);
  EXPECT_EQ(buffer.GetReadPosition(), 5);
}

// ---- mapping

TEST_F(CBufferTest, MapsAgainAfterAWrite) {
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

TEST_F(CBufferTest, GivesItsBytesInOnePiece) {
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

// ---- the block in memory

std::string Frame(CBuffer& buffer, std::size_t payload) {
  std::size_t length = 0;
  const char* frame = buffer.GetChunkFrame(&length, payload);
  return frame ? std::string(frame, length) : "none";
}

TEST_F(CBufferTest, FramesAChunkInPlace) {
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
TEST_F(CBufferTest, HasNoHeadInASmallBlockThatWasCleared) {
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

class CBufferDeathTest : public CBufferTest {};

TEST_F(CBufferDeathTest, EndsTheProcessWhenMemoryIsOut) {
  const auto reserve = [](std::uint64_t extra) {
    setenv("TMPDIR", "/proc", 1);  // nowhere to swap to
    CBuffer buffer("abc", 3);
    buffer.Reserve(extra);
  };
  EXPECT_EXIT(reserve(kNone), testing::ExitedWithCode(42), "");
  EXPECT_EXIT(reserve(kNone / 2), testing::ExitedWithCode(42), "");
}

// ---- sharing

TEST_F(CBufferTest, SharesUntilOneOfTheTwoChanges) {
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

TEST_F(CBufferTest, OutlivesTheOneThatItSharesWith) {
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

TEST_F(CBufferTest, CopiesWhatIsTooLargeToAFile) {
  const std::string body(GetGlobalSwapSize() + 1, 'x');
  CBuffer source(body.data(), body.size());
  ASSERT_TRUE(source.SwapIn());
  CBuffer copy(source, CBuffer::Shared());
  EXPECT_TRUE(copy.Overwrite(0, "y", 1));
  EXPECT_FALSE(copy.IsInMemory());
  EXPECT_EQ(BytesOf(source), body);
}

// ---- lines

std::string NextLine(CBuffer& buffer, int style, std::uint64_t* taken = nullptr,
                     bool* endAtData = nullptr) {
  CUnicodeString line("before");
  const std::uint64_t count = buffer.ReadText(&line, "UTF-8", style, endAtData);
  if (taken) *taken = count;
  return std::string(line.GetBytes(), line.GetByteSize());
}

TEST_F(CBufferTest, ReadsLines) {
  const std::string lineOf5000(5000, 'l');
  for (const auto& buffer : AllForms("one\r\n" + lineOf5000 + "\r\nthree\r\nrest")) {
    std::uint64_t taken = 0;
    EXPECT_EQ(NextLine(*buffer, 0, &taken), "one");
    EXPECT_EQ(taken, 5U);
    EXPECT_EQ(NextLine(*buffer, 0, &taken), lineOf5000);
    EXPECT_EQ(taken, 5002U);
    EXPECT_EQ(NextLine(*buffer, 2), "three");
    EXPECT_EQ(NextLine(*buffer, 1, &taken), "");
    EXPECT_EQ(taken, 0U) << "no line end, and nothing taken";
    EXPECT_EQ(buffer->GetReadPosition(), 5014);
  }
}

TEST_F(CBufferTest, PassesOverTheHalfOfALineEndThatComesLate) {
  for (const auto& buffer : AllForms("one\r")) {
    bool endAtData = false;
    EXPECT_EQ(NextLine(*buffer, 2, nullptr, &endAtData), "one");
    EXPECT_TRUE(endAtData);
    EXPECT_TRUE(Append(*buffer, "\ntwo\r\n"));
    EXPECT_EQ(NextLine(*buffer, 2, nullptr, &endAtData), "two");
    EXPECT_FALSE(endAtData);
  }
  CBuffer buffer("one\r", 4);
  EXPECT_EQ(NextLine(buffer, 2), "one");
  EXPECT_TRUE(Append(buffer, "two\n"));
  EXPECT_EQ(NextLine(buffer, 2), "two") << "nothing else is passed over";
}

// Line ends of all kinds around the place where the first look ends.
TEST_F(CBufferTest, ReadsLinesAcrossItsWindow) {
  for (int style = 0; style < 3; ++style) {
    for (std::size_t length = 4090; length < 4100; ++length) {
      for (const char* end : {"\r\n", "\n", "\r", "\n\r", "\r\r\n", "\n\r\r"}) {
        const std::string text = std::string(length, 'l') + end + "next\r\n";
        CBuffer small(text.data(), text.size());
        CBuffer onFile(text.data(), text.size());
        ASSERT_TRUE(onFile.SwapOut());
        CText whole;
        char isOpen = 0;
        const auto expected = ExtractLine(whole, text.data(), text.size(), 1, style, &isOpen);
        for (CBuffer* buffer : {&small, &onFile}) {
          std::uint64_t taken = 0;
          ASSERT_EQ(NextLine(*buffer, style, &taken), whole.Bytes());
          ASSERT_EQ(taken, expected) << style << " " << length;
        }
      }
    }
  }
}

// ---- against a std::string

// One buffer and what it should hold, through the same random steps.
class Differential {
public:
  explicit Differential(unsigned seed) : fRandom(seed) {}

  void Run(int steps) {
    for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
      const int operation = static_cast<int>(Below(16));
      Step(operation);
      ASSERT_EQ(fBuffer.GetSize(), fBytes.size()) << "step " << step << ", " << operation;
      ASSERT_EQ(fBuffer.GetReadPosition(), fRead) << "step " << step << ", " << operation;
      ASSERT_EQ(fBuffer.GetWritePosition(), fWrite) << "step " << step << ", " << operation;
      if (step % 16 == 0) {
        ASSERT_EQ(BytesOf(fBuffer), fBytes) << "step " << step;
      }
    }
    ASSERT_EQ(BytesOf(fBuffer), fBytes);
  }

private:
  std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : fRandom() % limit; }
  std::string Text() {
    std::string text(Below(Below(8) == 0 ? 60000 : 50), '\0');
    for (char& c : text) c = static_cast<char>('a' + fRandom() % 3);
    return text;
  }
  void Cut() {
    fRead = std::min(fRead, static_cast<std::int64_t>(fBytes.size()));
    fWrite = std::min(fWrite, static_cast<std::int64_t>(fBytes.size()));
  }

  void Step(int operation) {
    const std::string text = Text();
    const std::size_t size = fBytes.size();
    const std::size_t place = Below(size + 1);
    const std::size_t length = Below(size - place + 1);
    switch (operation) {
      case 0:
      case 1:
        ASSERT_TRUE(fBuffer.Append(text.data(), text.size()));
        fBytes += text;
        break;
      case 2: {
        const std::size_t count = std::min(Below(size + 2), size);
        fBuffer.RemoveFront(count);
        fBytes.erase(0, count);
        for (std::int64_t* position : {&fRead, &fWrite}) {
          *position = std::max<std::int64_t>(*position - static_cast<std::int64_t>(count), 0);
        }
        break;
      }
      case 3:
        ASSERT_TRUE(fBuffer.Insert(place, text.data(), text.size()));
        fBytes.insert(place, text);
        break;
      case 4:
        ASSERT_EQ(fBuffer.Erase(place, length), length);
        fBytes.erase(place, length);
        if (place < size) Cut();
        break;
      case 5:
        if (Below(8) != 0) break;
        ASSERT_TRUE(fBuffer.Assign(text.data(), text.size()));
        fBytes = text;
        Cut();
        break;
      case 6:
        ASSERT_EQ(fBuffer.Overwrite(place, text.data(), text.size()), text.size() <= size - place);
        if (text.size() <= size - place) fBytes.replace(place, text.size(), text);
        break;
      case 7: {
        ASSERT_EQ(fBuffer.Write(text.data(), text.size()), text.size());
        const auto at = static_cast<std::size_t>(std::max<std::int64_t>(fWrite, 0));
        fBytes.replace(at, text.size(), text);
        fWrite = static_cast<std::int64_t>(at + text.size());
        break;
      }
      case 8: {
        std::string bytes(text.size(), '\0');
        bytes.resize(fBuffer.Read(bytes.data(), bytes.size()));
        const auto at = static_cast<std::size_t>(std::max<std::int64_t>(fRead, 0));
        ASSERT_EQ(bytes, fBytes.substr(at, text.size()));
        fRead = static_cast<std::int64_t>(at + bytes.size());
        break;
      }
      case 9:
        ASSERT_EQ(fBuffer.SeekRead(static_cast<std::int64_t>(place), 0), fRead = place);
        break;
      case 10:
        ASSERT_EQ(fBuffer.SeekWrite(static_cast<std::int64_t>(place), 0), fWrite = place);
        break;
      case 11: {
        std::size_t available = 0;
        void* space = fBuffer.GetWriteSpace(&available, text.size() + 1);
        ASSERT_GT(available, text.size());
        std::memcpy(space, text.data(), text.size());
        fBuffer.CommitWrite(text.size());
        fBytes += text;
        break;
      }
      case 12:
        ASSERT_TRUE(Below(2) == 0 ? fBuffer.SwapOut() : fBuffer.SwapIn());
        break;
      case 13:
        ASSERT_TRUE(fBuffer.Freeze() && fBuffer.Thaw());
        break;
      case 14:
        ReplaceAll();
        break;
      default:
        if (Below(20) != 0) break;
        fBuffer.Clear(Below(1000));
        fBytes.clear();
        fRead = fWrite = 0;
        break;
    }
  }

  void ReplaceAll() {
    const std::string pattern(1 + Below(3), static_cast<char>('a' + Below(3)));
    const std::string replacement(Below(5), 'b');
    std::string expected;
    std::size_t count = 0, from = 0;
    for (std::size_t hit = fBytes.find(pattern); hit != std::string::npos;
         hit = fBytes.find(pattern, from), ++count) {
      expected += fBytes.substr(from, hit - from) + replacement;
      from = hit + pattern.size();
    }
    expected += fBytes.substr(from);
    std::size_t replaced = 0;
    ASSERT_TRUE(fBuffer.Replace(pattern.data(), pattern.size(), replacement.data(),
                                replacement.size(), 0, kAll, &replaced));
    ASSERT_EQ(replaced, count);
    fBytes = expected;
    if (count > 0) Cut();
  }

  std::mt19937 fRandom;
  CBuffer fBuffer;
  std::string fBytes;
  std::int64_t fRead = -1;
  std::int64_t fWrite = -1;
};

TEST_F(CBufferTest, HoldsWhatAStringHolds) {
  for (unsigned seed = 1; seed <= 30; ++seed) {
    SCOPED_TRACE(seed);
    Differential(seed).Run(300);
    ASSERT_FALSE(HasFailure());
    EXPECT_THAT(Names(), IsEmpty());
  }
}

// ---- the object

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

}  // namespace
