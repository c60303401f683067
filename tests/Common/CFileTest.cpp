#include "Common/CFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <string>
#include <tuple>

#include "Common/CException.h"
#include "tests/Common/FileSupport.h"
#include "tests/Common/QuestionedHost.h"
#include "tests/Common/ReasonOf.h"

namespace {

using testing::HasSubstr;

class CFileTest : public testing::Test {
protected:
  std::string Path(const std::string& name) const { return (fFolder.Path() / name).string(); }
  std::string Write(const std::string& name, const std::string& bytes) const {
    return fFolder.Write(name, bytes).string();
  }
  static std::string BytesOf(const std::string& path) { return ReadWholeFile(path); }

  const CTemporaryFolder fFolder;
};

std::string ReadAll(CFile& file, std::size_t most = 1000) {
  std::string text(most, '\0');
  text.resize(file.Read(text.data(), text.size()));
  return text;
}

// ---- opening

struct ModeRow {
  std::uint32_t mode;
  const char* text;          // how the log spells it
  int errorOnMissing;        // 0: is created
  const char* afterOpening;  // what is left of a file with "old" in it
  bool reads, writes;
};

constexpr ModeRow kModeRows[] = {
    {CFile::Binary, "std::ios::binary", EINVAL, "old", false, false},
    {CFile::Trunc | CFile::App, "std::ios::app | std::ios::trunc", EINVAL, "old", false, false},
    {CFile::Out, "std::ios::out", 0, "", false, true},
    {CFile::Out | CFile::Trunc | CFile::Binary, "", 0, "", false, true},
    {CFile::Out | CFile::App, "", 0, "old", false, true},
    {CFile::Out | CFile::App | CFile::Trunc, "", 0, "old", false, true},
    {CFile::In, "std::ios::in", ENOENT, "old", true, false},
    {CFile::In | CFile::Trunc | CFile::Binary, "std::ios::in | std::ios::trunc | std::ios::binary",
     ENOENT, "old", true, false},
    {CFile::In | CFile::Out | CFile::Binary, "std::ios::in | std::ios::out | std::ios::binary",
     ENOENT, "old", true, true},
    {CFile::In | CFile::Out | CFile::Trunc, "", 0, "", true, true},
    {CFile::In | CFile::Out | CFile::Trunc | CFile::App, "", 0, "", true, true},
    {CFile::In | CFile::Out | CFile::App, "", 0, "old", true, true},
    {CFile::In | CFile::Out | CFile::Ate, "std::ios::in | std::ios::out | std::ios::ate", ENOENT,
     "old", true, true},
};

TEST_F(CFileTest, OpensAsTheModeSays) {
  for (const ModeRow& row : kModeRows) {
    SCOPED_TRACE(row.mode);
    const std::string path = Write("there", "old");
    CFile file(path);
    int error = 0;
    const bool isOpen = file.Open(row.mode, &error);
    EXPECT_EQ(isOpen, row.reads || row.writes);
    EXPECT_EQ(error, isOpen ? 0 : EINVAL);
    EXPECT_EQ(BytesOf(path), row.afterOpening);
    EXPECT_EQ(file.Write("new", 3), row.writes ? 3U : 0U);
    char byte = 0;
    file.SeekRead(0, CFile::kFromStart);
    EXPECT_EQ(file.Read(&byte, 1), row.reads ? 1U : 0U);
  }
}

TEST_F(CFileTest, LogsWhatCannotBeOpened) {
  for (const ModeRow& row : kModeRows) {
    SCOPED_TRACE(row.mode);
    const HostInSlot host(Gates{});
    const std::string path = Path("missing");
    int error = 0;
    EXPECT_EQ(CFile(path).Open(row.mode, &error), row.errorOnMissing == 0);
    EXPECT_EQ(error, row.errorOnMissing);
    std::filesystem::remove(path);
    if (row.errorOnMissing == 0) {
      EXPECT_TRUE(host->fPrinted.empty());
      continue;
    }
    ASSERT_EQ(host->fPrinted.size(), 1U);
    const PrintedLine& line = host->fPrinted[0];
    EXPECT_EQ(std::tie(line.level, line.className, line.function, line.file),
              std::make_tuple(1U, "CFile", "Open", "Common\\CFile"));
    const std::string number = std::to_string(row.errorOnMissing);
    EXPECT_THAT(line.message,
                testing::StartsWith("failed to open '" + path + "' with mode: '" + row.text +
                                    "', errno: '" + number + "' - errno: " + number + " - '"));
  }
}

TEST_F(CFileTest, RefusesAFolderInEveryMode) {
  for (const auto mode : {CFile::In + 0U, CFile::Out + 0U, CFile::In | CFile::Out}) {
    int error = 0;
    EXPECT_FALSE(CFile(fFolder.Path().string()).Open(mode, &error));
    EXPECT_EQ(error, EISDIR);
  }
}

TEST_F(CFileTest, OpensOnce) {
  CFile file(Write("a", "12345"));
  ASSERT_TRUE(file.Open(CFile::In));
  EXPECT_EQ(ReadAll(file, 2), "12");
  EXPECT_TRUE(file.Open(CFile::Out | CFile::Trunc)) << "open already, and nothing happens";
  EXPECT_EQ(ReadAll(file), "345");
}

TEST_F(CFileTest, IsNotInheritedByPrograms) {
  const std::string path = Write("a", "1");
  CFile file(path);
  ASSERT_TRUE(file.Open(CFile::In));
  EXPECT_NE(fcntl(fileno(file.Stream()), F_GETFD) & FD_CLOEXEC, 0);
}

// ---- reading and writing

TEST_F(CFileTest, KeepsTwoPlaces) {
  CFile file(Write("a", "0123456789"));
  EXPECT_EQ(file.GetReadPosition(), -1);
  EXPECT_EQ(file.GetWritePosition(), -1);
  ASSERT_TRUE(file.Open(CFile::In | CFile::Out | CFile::Binary));
  EXPECT_EQ(file.GetReadPosition(), 0);
  EXPECT_EQ(ReadAll(file, 3), "012");
  EXPECT_EQ(file.Write("ab", 2), 2U);
  EXPECT_EQ(ReadAll(file, 2), "34");
  EXPECT_EQ(file.Write("c", 1), 1U);
  EXPECT_EQ(file.GetReadPosition(), 5);
  EXPECT_EQ(file.GetWritePosition(), 3);
  EXPECT_EQ(file.SeekWrite(5, CFile::kFromStart), 5);
  EXPECT_EQ(file.Write("x", 1), 1U);
  EXPECT_EQ(ReadAll(file), "x6789") << "the two places meet, with a write between the reads";
  EXPECT_TRUE(file.IsAtEnd());
  EXPECT_TRUE(file.Close());
  EXPECT_EQ(BytesOf(Path("a")), "abc34x6789");
}

TEST_F(CFileTest, StartsAtTheEndForAteAndApp) {
  Write("a", "01234");
  for (const auto mode :
       {CFile::In | CFile::Out | CFile::Ate, CFile::In | CFile::Out | CFile::App}) {
    CFile file(Path("a"));
    ASSERT_TRUE(file.Open(mode));
    EXPECT_EQ(file.GetReadPosition(), 5);
    EXPECT_EQ(file.GetWritePosition(), 5);
  }
}

TEST_F(CFileTest, AppendsWhereverItWasMovedTo) {
  CFile file(Write("a", "01234"));
  ASSERT_TRUE(file.Open(CFile::In | CFile::Out | CFile::App));
  EXPECT_EQ(file.SeekWrite(1, CFile::kFromStart), 1);
  EXPECT_EQ(file.Write("x", 1), 1U);
  EXPECT_EQ(file.GetWritePosition(), 6);
  file.SeekRead(0, CFile::kFromStart);
  EXPECT_EQ(ReadAll(file), "01234x");
  ASSERT_TRUE(file.Close());
  // Without reading, cutting what is there is out of the question.
  for (const std::uint32_t more : {0U, CFile::Trunc + 0U}) {
    CFile onlyOut(Write("a", "01234x"));
    ASSERT_TRUE(onlyOut.Open(CFile::Out | CFile::App | more));
    EXPECT_EQ(onlyOut.SeekWrite(1, CFile::kFromStart), 1);
    EXPECT_EQ(onlyOut.Write("y", 1), 1U);
    EXPECT_EQ(onlyOut.GetWritePosition(), 7);
    ASSERT_TRUE(onlyOut.Close());
    EXPECT_EQ(BytesOf(Path("a")), "01234xy");
  }
}

TEST_F(CFileTest, SeeksFromThreeOrigins) {
  CFile file(Write("a", "0123456789"));
  EXPECT_EQ(file.SeekRead(0, CFile::kFromStart), -1) << "closed";
  ASSERT_TRUE(file.Open(CFile::In));
  EXPECT_EQ(file.SeekRead(-3, CFile::kFromEnd), 7);
  EXPECT_EQ(ReadAll(file, 1), "7");
  EXPECT_EQ(file.SeekRead(-2, CFile::kRelative), 6);
  EXPECT_EQ(ReadAll(file, 1), "6");
  EXPECT_EQ(file.SeekRead(-1, CFile::kFromStart), -1);
  EXPECT_EQ(file.SeekRead(std::numeric_limits<std::int64_t>::max(), CFile::kRelative), -1);
  EXPECT_EQ(file.SeekRead(0, 3), -1) << "no such origin";
  EXPECT_EQ(file.SeekRead(0, -1), -1);
  EXPECT_EQ(ReadAll(file, 1), "7") << "a refused move moves nothing";
}

// What another process appends.
TEST_F(CFileTest, SeesAFileGrow) {
  CFile file(Write("a", "012"));
  ASSERT_TRUE(file.Open(CFile::In));
  EXPECT_EQ(file.GetSize(), 3);
  EXPECT_EQ(ReadAll(file), "012");
  EXPECT_TRUE(file.IsAtEnd());
  std::ofstream(Path("a"), std::ios::app) << "345";
  EXPECT_EQ(ReadAll(file), "345") << "the end that was met is not the end any more";
  EXPECT_EQ(file.SeekRead(-1, CFile::kFromEnd), 5);
  EXPECT_EQ(ReadAll(file), "5");
}

TEST_F(CFileTest, ReachesBeyondFourGibibytes) {
  constexpr std::int64_t kFar = (std::int64_t{5} << 30) + 7;
  CFile file(Path("sparse"));
  ASSERT_TRUE(file.Open(CFile::In | CFile::Out | CFile::Trunc));
  ASSERT_EQ(file.SeekWrite(kFar, CFile::kFromStart), kFar);
  EXPECT_EQ(file.Write("end", 3), 3U);
  EXPECT_EQ(file.GetSize(), kFar + 3);
  EXPECT_EQ(file.SeekRead(-3, CFile::kFromEnd), kFar);
  EXPECT_EQ(ReadAll(file), "end");
}

TEST_F(CFileTest, KnowsItsSize) {
  CFile file(Path("a"));
  EXPECT_EQ(file.GetSize(), 0) << "a file that is not there";
  ASSERT_TRUE(file.Open(CFile::In | CFile::Out | CFile::Trunc));
  EXPECT_EQ(file.GetSize(), 0);
  file.Write("123", 3);
  EXPECT_EQ(file.GetSize(), 3) << "what is still buffered counts, and the old size is forgotten";
  EXPECT_TRUE(file.SetSize(10));
  EXPECT_EQ(file.GetSize(), 10);
  EXPECT_TRUE(file.SetSize(2));
  EXPECT_TRUE(file.Close());
  EXPECT_EQ(BytesOf(Path("a")), "12");
  EXPECT_TRUE(file.SetSize(1)) << "by name";
  EXPECT_EQ(file.GetSize(), 1);
  EXPECT_FALSE(file.SetSize(-1));
  EXPECT_FALSE(CFile(Path("missing")).SetSize(1));
}

TEST_F(CFileTest, TakesAnotherPath) {
  CFile file(Write("a", "1"));
  Write("b", "22");
  ASSERT_TRUE(file.Open(CFile::In));
  EXPECT_EQ(file.GetSize(), 1);
  file.SetPath(Path("b"));
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(file.GetReadPosition(), -1);
  EXPECT_EQ(file.GetSize(), 2);
  EXPECT_EQ(file.GetPath().String(), Path("b"));
  file.SetPath(Path("a"));
  EXPECT_EQ(file.GetSize(), 1) << "nothing of the other file is kept, opened or not";
}

TEST_F(CFileTest, CreatesOnlyWhatWasNotThere) {
  const std::string victim = Write("victim", "precious");
  std::filesystem::create_symlink(victim, Path("link"));
  int error = 0;
  EXPECT_FALSE(CFile(victim).Create(0600, &error));
  EXPECT_EQ(error, EEXIST);
  EXPECT_FALSE(CFile(Path("link")).Create(0600, &error));
  EXPECT_EQ(error, EEXIST);
  EXPECT_FALSE(CFile(Path("link")).Reopen(&error));
  EXPECT_EQ(error, ELOOP);
  EXPECT_EQ(BytesOf(victim), "precious");

  CFile file(Path("own"));
  ASSERT_TRUE(file.Create(0600));
  EXPECT_EQ(PermissionsOf(Path("own")), 0600U);
  EXPECT_EQ(file.Write("abc", 3), 3U);
  EXPECT_TRUE(file.Close());
  ASSERT_TRUE(file.Reopen());
  EXPECT_EQ(ReadAll(file), "abc");
}

TEST_F(CFileTest, DeletesItselfWhenClosed) {
  CFile file(Write("a", "1"));
  ASSERT_TRUE(file.Open(CFile::In));
  EXPECT_FALSE(file.Delete());
  file.Close();
  EXPECT_EQ(file.GetSize(), 1);
  EXPECT_TRUE(file.Delete());
  EXPECT_EQ(file.GetSize(), 0);
  EXPECT_FALSE(file.Delete());
  EXPECT_FALSE(CFile::Delete(fFolder.Path().string()));
}

TEST_F(CFileTest, HasNamesOfAnyBytes) {
  for (const std::string& name : {std::string(255, 'n'), std::string("\xFF\xFE\x80")}) {
    CFile file(Path(name));
    ASSERT_TRUE(file.Open(CFile::Out));
    EXPECT_EQ(file.Write("1", 1), 1U);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(NamesIn(fFolder.Path()), std::set<std::string>{name});
    EXPECT_TRUE(file.Delete());
  }
}

// The system would take each of them for the file whose name ends at the NUL.
TEST_F(CFileTest, LeadsNowhereByANameWithANulInIt) {
  const std::string there = Write("a", "precious");
  const std::string path = there + std::string("\0b", 2);
  int error = 0;
  EXPECT_FALSE(CFile(path).Open(CFile::In, &error));
  EXPECT_EQ(error, ENOENT);
  EXPECT_FALSE(CFile(path).Open(CFile::Out));
  EXPECT_FALSE(CFile(path).Create(0600));
  EXPECT_EQ(CFile(path).GetSize(), 0);
  EXPECT_FALSE(CFile(path).SetSize(1));
  EXPECT_FALSE(CFile::WriteFile(path, "x", &error));
  EXPECT_EQ(error, ENOENT);
  EXPECT_FALSE(CFile::CopyFile(path, Path("c"), true));
  EXPECT_FALSE(CFile::CopyFile(Write("b", "2"), path, true));
  EXPECT_FALSE(CFile::Move(Path("b"), path, true));
  EXPECT_THROW(CFile::Rename(path, Path("c"), true), CRunTimeError);
  EXPECT_FALSE(CFile::AreSame(path, there));
  EXPECT_FALSE(CFile::Delete(path));
  EXPECT_EQ(BytesOf(there), "precious");
  EXPECT_EQ(NamesIn(fFolder.Path()), (std::set<std::string>{"a", "b"}));
}

// ---- renaming

TEST_F(CFileTest, RenamesOverAFileOnlyIfToldTo) {
  const HostInSlot host(Gates{});
  const std::string from = Write("from", "1");
  const std::string to = Write("to", "2");
  try {
    CFile::Rename(from, to, false);
    FAIL() << "the target is there";
  } catch (const CRunTimeError& error) {
    EXPECT_EQ(
        error.Reason(),
        "OS error while calling 'MoveFile'. Errorcode: '17' - 'os error: 17 - 'File exists''.");
  }
  ASSERT_EQ(host->fErrors.size(), 1U);
  EXPECT_EQ(host->fErrors[0].className + "::" + host->fErrors[0].function, "CFile::Rename");
  EXPECT_EQ(BytesOf(to), "2");
  CFile::Rename(from, to, true);
  EXPECT_EQ(BytesOf(to), "1");
  CFile::Rename(to, from, false);
  EXPECT_EQ(BytesOf(from), "1");
  EXPECT_THROW(CFile::Rename(to, from, true), CRunTimeError) << "nothing to rename";
  EXPECT_THROW(CFile::Rename(from, fFolder.Path().string(), true), CRunTimeError) << "a folder";
}

TEST_F(CFileTest, RenamesOneOfTwoNamesOfAFile) {
  const std::string path = Write("a", "1");
  std::filesystem::create_hard_link(path, Path("b"));
  CFile::Rename(path, Path("b"), true);
  EXPECT_EQ(NamesIn(fFolder.Path()), std::set<std::string>{"b"});
  CFile::Rename(Path("b"), Path("./b"), true);
  EXPECT_EQ(BytesOf(Path("b")), "1") << "the same name, spelled in another way";
}

// ---- copying

TEST_F(CFileTest, KnowsOneFileByAllItsNames) {
  const std::string path = Write("a", "1");
  std::filesystem::create_hard_link(path, Path("hard"));
  std::filesystem::create_symlink(path, Path("soft"));
  for (const char* name : {"a", "./a", "hard", "soft"}) {
    SCOPED_TRACE(name);
    std::string error;
    EXPECT_FALSE(CFile::CopyFile(path, Path(name), true, true, &error));
    EXPECT_THAT(error, HasSubstr("Source and destination are the same"));
    EXPECT_THAT(error, testing::StartsWith("CopyFile failed - "));
    EXPECT_FALSE(CFile::CopyFile(path, Path(name), true, false, &error));
    EXPECT_EQ(error, "CopyFile failed - could not read anything from source");
    EXPECT_EQ(BytesOf(path), "1") << "the bytes survive without the check as well";
  }
}

TEST_F(CFileTest, CopiesBytesAndPermissions) {
  std::string bytes(300000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 / 3);
  for (const std::string& text : {std::string(), std::string("1"), bytes}) {
    const std::string from = Write("from", text);
    std::filesystem::permissions(from, std::filesystem::perms(0640));
    EXPECT_TRUE(CFile::CopyFile(from, Path("to"), false));
    EXPECT_EQ(BytesOf(Path("to")), text);
    EXPECT_EQ(PermissionsOf(Path("to")), 0640U);
    Write("to", "something longer than before");
    EXPECT_TRUE(CFile::CopyFile(from, Path("to"), true)) << "over what is there";
    EXPECT_EQ(BytesOf(Path("to")), text);
    std::filesystem::remove(Path("to"));
  }
}

TEST_F(CFileTest, CopiesToAnotherDevice) {
  if (!std::filesystem::is_directory("/dev/shm")) GTEST_SKIP() << "no second device";
  const std::string there = "/dev/shm/tessarin_copy_" + std::to_string(getpid());
  const std::string from = Write("from", "bytes");
  EXPECT_TRUE(CFile::CopyFile(from, there, false));
  EXPECT_EQ(BytesOf(there), "bytes");
  EXPECT_TRUE(CFile::Move(there, Path("back"), false));
  EXPECT_EQ(BytesOf(Path("back")), "bytes");
  EXPECT_FALSE(std::filesystem::exists(there));
}

TEST_F(CFileTest, TellsWhyACopyFailed) {
  const std::string from = Write("from", "1");
  const std::string to = Write("to", "2");
  std::string error;
  EXPECT_FALSE(CFile::CopyFile(Path("missing"), to, true, true, &error));
  EXPECT_EQ(error, "CopyFile failed - open source failed - errno: 2 - 'No such file or directory'");
  EXPECT_FALSE(CFile::CopyFile(from, to, false, true, &error));
  EXPECT_EQ(error, "CopyFile failed - open destination failed - errno: 17 - 'File exists'");
  EXPECT_EQ(BytesOf(to), "2");
  EXPECT_FALSE(CFile::CopyFile(fFolder.Path().string(), to, true, true, &error));
  EXPECT_EQ(error, "CopyFile failed - open source failed - errno: 21 - 'Is a directory'");
  EXPECT_FALSE(CFile::CopyFile(from, Path("no/folder"), true, true, &error));
  EXPECT_THAT(error, HasSubstr("open destination failed - errno: 2"));
  std::filesystem::permissions(from, std::filesystem::perms(0));
  std::filesystem::permissions(fFolder.Path(), std::filesystem::perms(0755));
  const WithoutPrivileges nobody;
  EXPECT_FALSE(CFile::CopyFile(from, to, true, true, &error));
  EXPECT_EQ(error, "CopyFile failed - open source failed - errno: 13 - 'Permission denied'");
}

TEST_F(CFileTest, ReportsADeviceWithoutRoomWhileCopying) {
  std::string error;
  EXPECT_FALSE(CFile::CopyFile(Write("from", "1"), "/dev/full", true, true, &error));
  EXPECT_EQ(error, "CopyFile failed - could not write - errno: 28 - 'No space left on device'");
}

TEST_F(CFileTest, ReportsAFullDiskWhileCopying) {
  const std::string from = Write("from", std::string(100000, 'x'));
  EXPECT_EQ(InChild([&] {
              const FullDiskBehind limit(50000);
              std::string error;
              return !CFile::CopyFile(from, Path("to"), true, true, &error) &&
                     error == "CopyFile failed - could not write - errno: 27 - 'File too large'";
            }),
            0);
}

// ---- moving

TEST_F(CFileTest, MovesOverWhatIsThere) {
  const std::string from = Write("from", "1");
  const std::string to = Write("to", "2");
  EXPECT_TRUE(CFile::Move(from, to, true));
  EXPECT_EQ(BytesOf(to), "1");
  // Contract: the copy that stands in for an impossible rename overwrites.
  Write("from", "3");
  EXPECT_TRUE(CFile::Move(from, to, false));
  EXPECT_EQ(BytesOf(to), "3");
  EXPECT_FALSE(std::filesystem::exists(from));
}

TEST_F(CFileTest, MovesNoFileOntoItself) {
  const std::string path = Write("a", "1");
  std::filesystem::create_hard_link(path, Path("b"));
  EXPECT_FALSE(CFile::Move(path, Path("b"), false));
  EXPECT_EQ(NamesIn(fFolder.Path()), (std::set<std::string>{"a", "b"}));
  EXPECT_EQ(BytesOf(path), "1");
}

TEST_F(CFileTest, ReportsAMoveThatFails) {
  const HostInSlot host(Gates{});
  const std::string from = Path("missing");
  const std::string to = Path("to");
  EXPECT_FALSE(CFile::Move(from, to, true));
  ASSERT_EQ(host->fErrors.size(), 1U);
  EXPECT_THAT(host->fErrors[0].message,
              HasSubstr("'copy for move (old name: " + from + ", new name: " + to + ")'"));
  EXPECT_THAT(host->fErrors[0].message, HasSubstr("Errorcode: '2'"));
}

TEST_F(CFileTest, ReportsASourceThatStaysBehind) {
  const HostInSlot host(Gates{});
  const std::string from = Write("from", "1");
  std::filesystem::create_directory(Path("open"));
  std::filesystem::permissions(Path("open"), std::filesystem::perms(0777));
  std::filesystem::permissions(fFolder.Path(), std::filesystem::perms(0555));
  const std::string to = Path("open/to");
  {
    const WithoutPrivileges nobody;
    EXPECT_FALSE(CFile::Move(from, to, false));
  }
  std::filesystem::permissions(fFolder.Path(), std::filesystem::perms(0755));
  EXPECT_EQ(BytesOf(to), "1") << "the copy is there";
  EXPECT_EQ(BytesOf(from), "1");
  ASSERT_EQ(host->fErrors.size(), 1U);
  EXPECT_EQ(host->fErrors[0].message,
            "OS error while calling 'delete for move (old name: " + from + ", new name: " + to +
                ")'. Errorcode: '13' - 'os error: 13 - 'Permission denied''.");
  EXPECT_EQ(host->fErrors[0].className + "::" + host->fErrors[0].function, "CFile::Move");
}

// ---- locks

TEST_F(CFileTest, TellsWhyALockFailed) {
  const HostInSlot host(Gates{});
  const std::string path = Write("a", "1");
  CFile file(path);
  ASSERT_TRUE(file.Open(CFile::In));
  const int descriptor = fileno(file.Stream());
  const int kept = dup(descriptor);
  close(descriptor);
  const std::string rest = path + ")'. Errorcode: '9' - 'os error: 9 - 'Bad file descriptor''.";
  EXPECT_EQ(ReasonOf([&] { file.Lock(); }), "OS error while calling 'LockFileEx(" + rest);
  EXPECT_EQ(ReasonOf([&] { file.Unlock(); }), "OS error while calling 'UnlockFileEx(" + rest);
  dup2(kept, descriptor);
  close(kept);
  ASSERT_EQ(host->fErrors.size(), 2U);
  EXPECT_EQ(host->fErrors[0].className + "::" + host->fErrors[0].function, "CFile::Lock");
  EXPECT_EQ(host->fErrors[1].className + "::" + host->fErrors[1].function, "CFile::Unlock");
}

TEST_F(CFileTest, LocksNothingWhileClosed) {
  CFile file(Write("a", "1"));
  EXPECT_NO_THROW(file.Lock());
  EXPECT_NO_THROW(file.Unlock());
}

TEST(CFile, KnowsPathsThatClimb) {
  EXPECT_TRUE(CFile::IsRelativeUnsafe("a../b"));
  EXPECT_TRUE(CFile::IsRelativeUnsafe("../a"));
  EXPECT_TRUE(CFile::IsRelativeUnsafe("a\\..\\b"));
  EXPECT_FALSE(CFile::IsRelativeUnsafe(".."));
  EXPECT_FALSE(CFile::IsRelativeUnsafe("a/b"));
  EXPECT_FALSE(CFile::IsRelativeUnsafe(""));
}

}  // namespace
