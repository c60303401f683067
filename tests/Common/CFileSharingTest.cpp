// What CFile promises while others are at the same file: locks, and writes that replace a file in
// one step, whoever reads, whoever else writes, and whenever the writer dies.

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>

#include "Common/CFile.h"
#include "tests/Common/FileSupport.h"
#include "tests/Common/QuestionedHost.h"

namespace {

class CFileSharing : public testing::Test {
protected:
  std::string Path(const std::string& name) const { return (fFolder.Path() / name).string(); }
  std::string Target() const { return Path("target"); }

  const CTemporaryFolder fFolder;
};

// Adds one to the number in a file, many times, each time under the lock.
void Count(const std::string& path, int times) {
  CFile file(path);
  if (!file.Open(CFile::In | CFile::Out | CFile::Binary)) return;
  for (; times > 0; --times) {
    file.Lock();
    char digits[8] = {};
    file.SeekRead(0, CFile::kFromStart);
    file.Read(digits, 7);
    std::string next = std::to_string(1 + std::atoi(digits));
    next.resize(7, ' ');
    file.SeekWrite(0, CFile::kFromStart);
    file.Write(next.data(), next.size());
    file.Unlock();
  }
}

TEST_F(CFileSharing, LocksBetweenProcessesAndObjects) {
  const std::string path = fFolder.Write("count", "0      ").string();
  constexpr int kTimes = 300;
  const CForkedWork inProcess([&] {
    Count(path, kTimes);
    return true;
  });
  std::thread inThread([&] { Count(path, kTimes); });
  Count(path, kTimes);
  inThread.join();
  EXPECT_EQ(inProcess.Status(), 0);
  EXPECT_EQ(std::atoi(ReadWholeFile(path).c_str()), 3 * kTimes);
}

extern "C" void DoNothing(int) {}

// Waits for a lock in another thread while this one holds it, and is interrupted meanwhile.
TEST_F(CFileSharing, WaitsForTheLockThroughSignalsAndUntilClose) {
  struct sigaction action = {};
  action.sa_handler = DoNothing;  // without SA_RESTART
  sigaction(SIGUSR1, &action, nullptr);
  const std::string path = fFolder.Write("a", "1").string();
  CFile holder(path);
  ASSERT_TRUE(holder.Open(CFile::In)) << "reading is enough for a lock";
  holder.Lock();
  std::atomic<bool> isLocked{false};
  std::thread waiter([&] {
    CFile file(path);
    file.Open(CFile::In);
    file.Lock();
    isLocked = true;
  });
  for (int i = 0; i < 20; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    pthread_kill(waiter.native_handle(), SIGUSR1);
    EXPECT_FALSE(isLocked);
  }
  holder.Close();
  waiter.join();
  EXPECT_TRUE(isLocked);
}

TEST_F(CFileSharing, ShowsUnderTheLockWhatOthersWrote) {
  const std::string path = fFolder.Write("a", "old").string();
  CFile reader(path);
  ASSERT_TRUE(reader.Open(CFile::In));
  char text[3] = {};
  ASSERT_EQ(reader.Read(text, 1), 1U) << "reads ahead";
  EXPECT_EQ(reader.GetSize(), 3);
  fFolder.Write("a", "newer");
  reader.Lock();
  EXPECT_EQ(reader.GetSize(), 5);
  ASSERT_EQ(reader.Read(text, 2), 2U);
  EXPECT_EQ(std::string(text, 2), "ew");
}

// ---- WriteFile

TEST_F(CFileSharing, WritesAWholeFile) {
  EXPECT_TRUE(CFile::WriteFile(Target(), "first"));
  EXPECT_EQ(ReadWholeFile(Target()), "first");
  EXPECT_EQ(PermissionsOf(Target()), AllowedByMask(0666)) << "a new file, like any other";
  std::filesystem::permissions(Target(), std::filesystem::perms(0604));
  const std::string large(300000, 'x');
  EXPECT_TRUE(CFile::WriteFile(Target(), large.data(), large.size()));
  EXPECT_EQ(ReadWholeFile(Target()), large);
  EXPECT_EQ(PermissionsOf(Target()), 0604U) << "the permissions stay";
  EXPECT_TRUE(CFile::WriteFile(Target(), std::string_view()));
  EXPECT_EQ(ReadWholeFile(Target()), "");
  EXPECT_TRUE(CFile::WriteFile(Target(), CUnicodeString("text\xC3\xA9")));
  EXPECT_EQ(ReadWholeFile(Target()), "text\xC3\xA9");
  // Contract: a backslash is a separator.
  EXPECT_TRUE(CFile::WriteFile(fFolder.Path().string() + "\\target", "slash"));
  EXPECT_EQ(ReadWholeFile(Target()), "slash");
  EXPECT_EQ(NamesIn(fFolder.Path()), std::set<std::string>{"target"});
}

TEST_F(CFileSharing, RefusesWhatCannotBeReplaced) {
  const std::size_t descriptors = OpenDescriptors();
  std::filesystem::create_directory(Path("folder"));
  const auto errorOf = [](const std::string& path) {
    int error = 0;
    EXPECT_FALSE(CFile::WriteFile(path, "x", &error));
    return error;
  };
  EXPECT_EQ(errorOf(Path("folder")), EISDIR);
  EXPECT_EQ(errorOf(Path("folder/")), ENOTDIR);
  EXPECT_EQ(errorOf(Path("missing/file")), ENOENT);
  EXPECT_EQ(errorOf(""), ENOENT);
  EXPECT_EQ(errorOf(Path(std::string(255, 'n'))), ENAMETOOLONG) << "no room for the suffix";
  int error = 0;
  EXPECT_FALSE(CFile::WriteFile(Target(), static_cast<Selvane::IBuffer*>(nullptr), &error));
  EXPECT_EQ(error, EINVAL);
  const HostInSlot host(Gates{});
  EXPECT_FALSE(CFile::WriteFile(Path("missing/file"), "x"));
  ASSERT_EQ(host->fPrinted.size(), 1U);
  EXPECT_EQ(host->fPrinted[0].message,
            "failed to write '" + Path("missing/file") +
                "', errno: '2' - errno: 2 - 'No such file or directory'");
  EXPECT_EQ(host->fPrinted[0].className + "::" + host->fPrinted[0].function, "CFile::WriteFile");
  EXPECT_EQ(NamesIn(fFolder.Path()), std::set<std::string>{"folder"});
  EXPECT_TRUE(NamesIn(Path("folder")).empty());
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST_F(CFileSharing, KeepsTheOldFileOnAFullDiskAndWithoutPermission) {
  EXPECT_TRUE(CFile::WriteFile(Target(), "old"));
  EXPECT_EQ(InChild([&] {
              const FullDiskBehind limit(5000);
              return !CFile::WriteFile(Target(), std::string(5001, 'x')) &&
                     CFile::WriteFile(Target(), std::string(5000, 'x'));
            }),
            0);
  EXPECT_EQ(ReadWholeFile(Target()), std::string(5000, 'x'));
  std::filesystem::permissions(fFolder.Path(), std::filesystem::perms(0555));
  {
    const WithoutPrivileges nobody;
    EXPECT_FALSE(CFile::WriteFile(Target(), "new"));
  }
  std::filesystem::permissions(fFolder.Path(), std::filesystem::perms(0755));
  EXPECT_EQ(ReadWholeFile(Target()), std::string(5000, 'x'));
  EXPECT_EQ(NamesIn(fFolder.Path()), std::set<std::string>{"target"});
}

TEST_F(CFileSharing, KeepsTheOldFileOnADiskWithoutRoom) {
  const auto result = OnSmallDisk(fFolder.Path(), 1 << 20, [&] {
    const std::string old(300000, 'o');
    const std::string large(900000, 'l');
    int error = 0;
    bool isRight = CFile::WriteFile(Target(), old);
    isRight = !CFile::WriteFile(Target(), large, &error) && error == ENOSPC && isRight;
    isRight = ReadWholeFile(Target()) == old && isRight;
    isRight = NamesIn(fFolder.Path()) == std::set<std::string>{"target"} && isRight;
    return CFile::WriteFile(Target(), old + "new") && isRight;
  });
  if (!result) GTEST_SKIP() << "no disk can be mounted";
  EXPECT_TRUE(*result);
}

// One that may be written but not opened.
TEST_F(CFileSharing, LogsAFolderThatCannotBeSynced) {
  const HostInSlot host(Gates{});
  std::filesystem::permissions(fFolder.Path(), std::filesystem::perms(0333));
  {
    const WithoutPrivileges nobody;
    EXPECT_TRUE(CFile::WriteFile(Target(), "new"));
  }
  std::filesystem::permissions(fFolder.Path(), std::filesystem::perms(0755));
  EXPECT_EQ(ReadWholeFile(Target()), "new");
  ASSERT_EQ(host->fPrinted.size(), 1U);
  EXPECT_EQ(
      host->fPrinted[0].message,
      "'" + Target() + "' was written, but its folder not synced: errno: 13 - 'Permission denied'");
}

TEST_F(CFileSharing, FallsIntoNoTrapAtTheSibling) {
  const std::string sibling = Target() + ".write_temp";
  const auto victim = fFolder.Write("victim", "precious");
  std::filesystem::create_symlink(victim, sibling);
  EXPECT_TRUE(CFile::WriteFile(Target(), "one"));
  fFolder.Write("target.write_temp", "left behind by a writer that died");
  EXPECT_TRUE(CFile::WriteFile(Target(), "two"));
  EXPECT_EQ(ReadWholeFile(Target()), "two");
  EXPECT_EQ(ReadWholeFile(victim), "precious");
  std::filesystem::create_directory(sibling);
  EXPECT_FALSE(CFile::WriteFile(Target(), "three"));
  EXPECT_EQ(ReadWholeFile(Target()), "two");
}

TEST_F(CFileSharing, LeavesTheSiblingOfALivingWriterAlone) {
  const std::string sibling = fFolder.Write("target.write_temp", "half").string();
  CFile writer(sibling);
  ASSERT_TRUE(writer.Open(CFile::In));
  writer.Lock();
  EXPECT_FALSE(CFile::WriteFile(Target(), "new"));
  EXPECT_EQ(ReadWholeFile(sibling), "half");
  writer.Close();
  EXPECT_TRUE(CFile::WriteFile(Target(), "new"));
}

// A content that shows its own length, so that a part of it is known for one.
std::string Content(std::size_t size) {
  std::string text = std::to_string(size) + ":";
  text.resize(text.size() + size, static_cast<char>('a' + size % 26));
  return text;
}

bool IsWhole(const std::string& text) {
  return !text.empty() && text == Content(std::strtoul(text.c_str(), nullptr, 10));
}

TEST_F(CFileSharing, ShowsReadersNoPart) {
  ASSERT_TRUE(CFile::WriteFile(Target(), Content(1)));
  std::atomic<bool> isOver{false};
  std::atomic<int> written{0};
  const auto write = [&](unsigned seed) {
    std::mt19937 random(seed);
    for (int i = 0; i < 40; ++i) {
      written += CFile::WriteFile(Target(), Content(random() % 200000)) ? 1 : 0;
    }
  };
  std::thread reader([&] {
    while (!isOver) EXPECT_TRUE(IsWhole(ReadWholeFile(Target())));
  });
  std::thread second([&] { write(1); });
  write(2);
  second.join();
  isOver = true;
  reader.join();
  EXPECT_GT(written, 0);
  EXPECT_EQ(NamesIn(fFolder.Path()), std::set<std::string>{"target"});
}

// Each kill is a new process that writes until it dies.
void KillWriters(const std::string& target, int kills, unsigned longest) {
  std::mt19937 random(9);
  ASSERT_TRUE(CFile::WriteFile(target, Content(1)));
  for (int i = 0; i < kills; ++i) {
    const auto seed = static_cast<unsigned>(random());
    const pid_t writer = fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) {
      std::mt19937 sizes(seed);
      for (;;) CFile::WriteFile(target, Content(sizes() % 200000));
    }
    std::this_thread::sleep_for(std::chrono::microseconds(random() % longest));
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    ASSERT_TRUE(IsWhole(ReadWholeFile(target))) << "kill " << i;
  }
  EXPECT_TRUE(CFile::WriteFile(target, Content(5))) << "whatever the dead left behind";
}

// Under a sanitizer each new process is slow to make.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kKillsInMemory = 50;
#else
constexpr int kKillsInMemory = 1000;
#endif

TEST_F(CFileSharing, IsWholeWheneverTheWriterIsKilled) {
  KillWriters(Target(), 30, 4000);
  EXPECT_EQ(NamesIn(fFolder.Path()), std::set<std::string>{"target"});
  // Where nothing waits for a disk, more of them die on the way.
  const std::filesystem::path inMemory = "/dev/shm/tessarin_kills_" + std::to_string(getpid());
  if (!std::filesystem::is_directory("/dev/shm")) return;
  std::filesystem::create_directory(inMemory);
  KillWriters(inMemory / "target", kKillsInMemory, 300);
  EXPECT_EQ(NamesIn(inMemory), std::set<std::string>{"target"});
  std::filesystem::remove_all(inMemory);
}

}  // namespace
