// When a buffer moves between memory and its temporary file, and what it does when it cannot.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "Common/CDirectory.h"
#include "tests/Common/CBufferSupport.h"
#include "tests/Common/QuestionedHost.h"

namespace {

using testing::IsEmpty;

class CBufferSwapTest : public CBufferTest {};

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

TEST_F(CBufferSwapTest, SwapsWhenItPassesItsSize) {
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

TEST_F(CBufferSwapTest, OverwritingSwapsWhatInsertingMadeTooLarge) {
  const std::string full(GetGlobalSwapSize(), 'x');
  CBuffer buffer(full.data(), full.size());
  EXPECT_TRUE(buffer.Insert(0, "ab", 2));
  EXPECT_TRUE(buffer.IsInMemory());
  EXPECT_TRUE(buffer.Overwrite(1, "c", 1));
  EXPECT_FALSE(buffer.IsInMemory());
  EXPECT_EQ(BytesOf(buffer), "ac" + full);
}

TEST_F(CBufferSwapTest, BringsTheWholeBodyBackToInsertAndErase) {
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

TEST_F(CBufferSwapTest, HasATemporaryFileOfItsOwn) {
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

TEST_F(CBufferSwapTest, PassesOverNamesThatAreTaken) {
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

TEST_F(CBufferSwapTest, SwapsBesideOtherProcesses) {
  const auto work = [] {
    bool isRight = true;
    for (int i = 0; i < 200; ++i) {
      const std::string text = std::to_string(getpid()) + " " + std::to_string(i);
      CBuffer buffer(text.data(), text.size());
      isRight = buffer.SwapOut() && BytesOf(buffer) == text && isRight;
    }
    return isRight;
  };
  const CForkedWork one(work);
  const CForkedWork other(work);
  EXPECT_EQ(one.Status(), 0);
  EXPECT_EQ(other.Status(), 0);
  EXPECT_THAT(Names(), IsEmpty());
}

// A host with a temporary-file service.
class FileHost final : public QuestionedHost {
public:
  explicit FileHost(std::string path) : QuestionedHost(Gates{false, false, false}), fPath(path) {}
  int fAsked = 0;
  bool fThrows = false;
  bool fTellsNoFolder = false;  // the name says it all

private:
  bool Interface_GetTemporaryFile(char* path, std::size_t pathSize, char* directory,
                                  std::size_t directorySize, std::uint32_t*) override {
    ++fAsked;
    if (fThrows) throw 42;
    if (fTellsNoFolder) {
      std::snprintf(path, pathSize, "%s", fPath.c_str());
      return true;
    }
    const std::filesystem::path whole(fPath);
    std::snprintf(path, pathSize, "%s", whole.filename().c_str());
    std::snprintf(directory, directorySize, "%s", whole.parent_path().c_str());
    return true;
  }

  const std::string fPath;
};

TEST_F(CBufferSwapTest, AsksTheHostForAFile) {
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
    ASSERT_TRUE(buffer.SwapIn());
    host->fTellsNoFolder = true;
    ASSERT_TRUE(buffer.SwapOut());
    EXPECT_EQ(NameOf(buffer), wanted);
    host->fThrows = true;
    CBuffer third("ghi", 3);
    EXPECT_TRUE(third.SwapOut());
  }
  EXPECT_THAT(Names(), IsEmpty());
}

// ---- faults

TEST_F(CBufferSwapTest, GoesOnInMemoryOnAFullDisk) {
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

TEST_F(CBufferSwapTest, KeepsItsFileWholeOnAFullDisk) {
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

// The work of a test of this kind runs in another process, so it answers what came out.
TEST_F(CBufferSwapTest, LosesNothingOnADiskWithoutRoom) {
  const auto result = OnSmallDisk(fFolder.Path(), 1 << 20, [] {
    const std::string large(2 << 20, 'x');
    CBuffer inMemory(large.data(), large.size());
    bool isRight = !inMemory.SwapOut() && BytesOf(inMemory) == large;
    const std::string body(700000, 'b');
    CBuffer onFile(body.data(), body.size());
    isRight = onFile.SwapOut() && isRight;
    isRight = !Append(onFile, large) && BytesOf(onFile) == body && isRight;
    isRight = !onFile.Assign(large.data(), large.size()) && BytesOf(onFile) == body && isRight;
    CBuffer second(body.data(), body.size());
    isRight = !second.SwapOut() && BytesOf(second) == body && isRight;
    CBuffer grown;
    isRight = Append(grown, large) && BytesOf(grown) == large && isRight;
    isRight = grown.Assign(large.data() + 1, large.size() - 1) && isRight;
    isRight = grown.GetSize() == large.size() - 1 && isRight;
    CBuffer written;
    isRight = written.Write(large.data(), large.size()) == large.size() && isRight;
    isRight = BytesOf(written) == large && isRight;
    onFile.Clear(0);
    return second.SwapOut() && BytesOf(second) == body && isRight;
  });
  if (!result) GTEST_SKIP() << "no disk can be mounted";
  EXPECT_TRUE(*result);
}

TEST_F(CBufferSwapTest, RefusesWhatADeviceHasNoRoomFor) {
  CBuffer buffer(CFSPath("/dev/full"), true);
  EXPECT_FALSE(buffer.IsReadOnly());
  EXPECT_FALSE(Append(buffer, "abc"));
  EXPECT_EQ(buffer.GetSize(), 0U);
}

TEST_F(CBufferSwapTest, StaysInMemoryWhereNoFileCanBe) {
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
TEST_F(CBufferSwapTest, TenThousandAreLostNowhere) {
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

}  // namespace
