// CFile where calls of the system fail that no file and no disk here would make fail.

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "Common/CFile.h"
#include "tests/Common/FileSupport.h"
#include "tests/Common/ReasonOf.h"

namespace {

class CFileFaults : public testing::Test {
protected:
  std::string Path(const std::string& name) const { return (fFolder.Path() / name).string(); }
  std::string Write(const std::string& name, const std::string& bytes) const {
    return fFolder.Write(name, bytes).string();
  }

  const CTemporaryFolder fFolder;
};

TEST_F(CFileFaults, TellsWhichCallOfACopyFailed) {
  struct Row {
    std::vector<long> calls;
    int code;
    const char* error;
  };
  const Row rows[] = {
      {{SYS_openat}, EPERM, "fallback open source failed - errno: 1 - 'Operation not permitted'"},
      {{SYS_openat}, EIO, "open source failed - errno: 5 - 'Input/output error'"},
      {{SYS_fstat, SYS_newfstatat}, EIO, "fstat source failed - errno: 5 - 'Input/output error'"},
      {{SYS_close}, EIO, "close destination failed - errno: 5 - 'Input/output error'"},
      {{SYS_copy_file_range, SYS_read}, EBADF, "could not read anything from source"},
  };
  const std::string from = Write("from", "1");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.error);
    const auto result = WithFailingCalls(row.calls, row.code, [&] {
      std::string error;
      return !CFile::CopyFile(from, Path("to"), true, true, &error) &&
             error == std::string("CopyFile failed - ") + row.error;
    });
    if (!result) GTEST_SKIP() << "calls cannot be made to fail";
    EXPECT_TRUE(*result);
  }
}

// Where the system has no rename that refuses to replace.
TEST_F(CFileFaults, RenamesInTwoStepsToo) {
  Write("from", "1");
  Write("to", "2");
  std::filesystem::create_directories(Path("folder"));
  std::filesystem::create_directories(Path("there"));
  for (const int code : {ENOSYS, EINVAL}) {
    const auto result = WithFailingCalls({SYS_renameat2}, code, [&] {
      const auto isRefused = [&](const char* from, const char* to) {
        return ReasonOf([&] { CFile::Rename(Path(from), Path(to), false); }).find("'17'") !=
               std::string::npos;
      };
      const bool isRight = isRefused("from", "to") && isRefused("folder", "there");
      CFile::Rename(Path("from"), Path("free"), false);
      CFile::Rename(Path("free"), Path("from"), false);
      CFile::Rename(Path("folder"), Path("moved"), false);
      CFile::Rename(Path("moved"), Path("folder"), true);
      return isRight;
    });
    if (!result) GTEST_SKIP() << "calls cannot be made to fail";
    EXPECT_TRUE(*result);
  }
  EXPECT_EQ(ReadWholeFile(Path("to")), "2");
  EXPECT_EQ(ReadWholeFile(Path("from")), "1");
  EXPECT_EQ(NamesIn(fFolder.Path()), (std::set<std::string>{"from", "to", "folder", "there"}));
  EXPECT_THROW(CFile::Rename(Path("folder"), Path("folder/itself"), false), CRunTimeError);
}

// The bytes are on the disk before the old file gives way.
TEST_F(CFileFaults, KeepsTheOldFileWhereTheDiskTakesNoBytes) {
  const std::string target = Write("target", "old");
  for (const long call : {SYS_fsync, SYS_write}) {
    SCOPED_TRACE(call);
    const auto result = WithFailingCalls({call}, EIO, [&] {
      int error = 0;
      return !CFile::WriteFile(target, "new", &error) && error == EIO;
    });
    if (!result) GTEST_SKIP() << "calls cannot be made to fail";
    EXPECT_TRUE(*result);
    EXPECT_EQ(ReadWholeFile(target), "old");
    EXPECT_EQ(NamesIn(fFolder.Path()), std::set<std::string>{"target"});
  }
}

}  // namespace
