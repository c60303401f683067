#include "Common/CDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <set>
#include <string>
#include <thread>

#include "Common/CException.h"
#include "tests/Common/FileSupport.h"
#include "tests/Common/QuestionedHost.h"
#include "tests/Common/ReasonOf.h"

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kFolders = CDirectory::kDirectories;
constexpr std::uint32_t kFiles = CDirectory::kFiles;
constexpr std::uint32_t kRecurse = CDirectory::kRecurse;
constexpr std::uint32_t kAll = kFolders | kFiles | kRecurse;

class CDirectoryTest : public testing::Test {
protected:
  CDirectoryTest() {
    fs::create_directories(Path("root/sub/deep"));
    fs::create_directories(Path("root/empty"));
    for (const char* name : {"README", "a.txt", "B.TXT", ".hidden", "sub/c.txt", "sub/deep/d"}) {
      fFolder.Write(std::string("root/") + name, name);
    }
    fs::create_directory_symlink(Path("root"), Path("root/sub/loop"));
    fs::create_symlink("nowhere", Path("root/dangling"));
  }

  fs::path Path(const std::string& name) const { return fFolder.Path() / name; }
  CFSPath Root() const { return Path("root").string(); }

  // What a walk finds, without the root's path.
  std::set<std::string> Walk(std::uint32_t flags, const std::string& pattern, int depth,
                             int level = 0) const {
    CDirectory::CPathList list;
    CDirectory(Root()).Walk(flags, pattern, list, depth, level);
    std::set<std::string> names;
    for (const CFSPath& path : list) names.insert(path.String().substr(Root().Size() + 1));
    EXPECT_EQ(names.size(), list.size()) << "each once";
    return names;
  }

  const CTemporaryFolder fFolder;
};

using Names = std::set<std::string>;
const Names kTopFiles = {"README", "a.txt", "B.TXT", ".hidden", "dangling"};

TEST_F(CDirectoryTest, WalksWhatTheFlagsAskFor) {
  const Names folders = {"sub", "empty"};
  EXPECT_EQ(Walk(0, "", 9), Names{});
  EXPECT_EQ(Walk(kFolders, "", 9), folders);
  EXPECT_EQ(Walk(kFiles, "", 9), kTopFiles);
  EXPECT_EQ(Walk(kRecurse, "", 9), Names{});
  EXPECT_EQ(Walk(kFolders | kRecurse, "", 9), (Names{"sub", "empty", "sub/deep"}));
  EXPECT_EQ(Walk(1 | 8 | 32 | 64 | kFolders, "", 9), folders) << "other bits mean nothing";
}

TEST_F(CDirectoryTest, WalksBelowTheDepthAlone) {
  Names names = kTopFiles;
  EXPECT_EQ(Walk(kFiles | kRecurse, "", 0), names);
  names.merge(Names{"sub/c.txt", "sub/loop"});
  EXPECT_EQ(Walk(kFiles | kRecurse, "", 1), names) << "a link to a folder is a file";
  EXPECT_EQ(Walk(kFiles | kRecurse, "", 6, 5), names) << "the level counts from where it is said";
  names.insert("sub/deep/d");
  EXPECT_EQ(Walk(kFiles | kRecurse, "", 2), names);
  EXPECT_EQ(Walk(kFiles | kRecurse, "", 100), names) << "no way through the loop";
}

TEST_F(CDirectoryTest, MatchesNames) {
  struct Row {
    const char* pattern;
    Names names;
  };
  const Row rows[] = {
      // Contract: names without a dot as well.
      {"*.*", kTopFiles},
      {"*", kTopFiles},
      {"*.txt", {"a.txt", "B.TXT"}},
      {"?.TXT", {"a.txt", "B.TXT"}},
      {"readme", {"README"}},
      {"r*e;b.*", {"README", "B.TXT"}},
      {";;a.*;", {"a.txt"}},
      {"x;*.*", kTopFiles},
      {"*a*d*m*", {"README"}},
      {"a.tx", {}},
      {"a.txt?", {}},
      {"[a].txt", {}},
      {";", {}},
  };
  for (const Row& row : rows) EXPECT_EQ(Walk(kFiles, row.pattern, 0), row.names) << row.pattern;
  EXPECT_EQ(Walk(kFiles | kRecurse, "d", 9), Names{"sub/deep/d"}) << "recursion asks no pattern";
}

TEST_F(CDirectoryTest, TakesNamesOfAnyBytes) {
  const Names names = {std::string(255, 'n'), "\xFF\xFE\x80", "line\nend", " ", "*", "-r"};
  fs::create_directory(Path("odd"));
  for (const std::string& name : names) fFolder.Write("odd/" + name, name);
  fs::create_directories(Path("odd/\xC0\xAF") / std::string(255, 'f'));
  CDirectory::CPathList list;
  CDirectory(Path("odd").string()).Walk(kFiles, "", list, 0);
  EXPECT_EQ(list.size(), names.size());
  CDirectory(Path("odd").string()).Copy(Path("copy").string());
  EXPECT_EQ(NamesIn(Path("copy")), NamesIn(Path("odd")));
  EXPECT_TRUE(fs::exists(Path("copy/\xC0\xAF") / std::string(255, 'f')));
  EXPECT_TRUE(CDirectory(Path("copy").string()).Delete());
  EXPECT_FALSE(fs::exists(Path("copy")));
}

TEST_F(CDirectoryTest, LeadsNowhereByANameWithANulInIt) {
  const CFSPath path(Root().String() + std::string("\0x", 2));
  CDirectory::CPathList list;
  CDirectory(path).Walk(kAll, "", list, 9);
  EXPECT_TRUE(list.empty());
  EXPECT_THROW(CDirectory(path).Rename(Path("new").string(), true), CRunTimeError);
  EXPECT_THROW(CDirectory(Root()).Copy(path), CRunTimeError);
  EXPECT_FALSE(CDirectory(path).Delete());
  EXPECT_TRUE(fs::exists(Path("root/sub/deep/d")));
}

TEST_F(CDirectoryTest, EndsAWalkWhereItCannotList) {
  CDirectory::CPathList list;
  CDirectory(Path("missing").string()).Walk(kAll, "", list, 9);
  EXPECT_TRUE(list.empty());
  fs::permissions(fFolder.Path(), fs::perms(0755));
  fs::permissions(Path("root/sub"), fs::perms(0));
  {
    const WithoutPrivileges nobody;
    Names names = kTopFiles;
    names.merge(Names{"sub", "empty"});
    EXPECT_EQ(Walk(kAll, "", 9), names);
  }
  fs::permissions(Path("root/sub"), fs::perms(0755));
}

TEST_F(CDirectoryTest, GrowsATree) {
  CUseCountedSharedPtr<CDirectory::CFileTree> tree;
  CDirectory(Root()).GetTree(tree, kFiles | kRecurse, 9);
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree->GetDirectory().GetPath().String(), "searchroot");
  EXPECT_EQ(tree->GetChildren().size(), kTopFiles.size() + 2);
  const auto* sub = tree->Find(Root() / "sub");
  ASSERT_NE(sub, nullptr);
  EXPECT_EQ(sub->GetDirectory().GetPath(), Root() / "sub");
  EXPECT_EQ(sub->GetChildren().size(), 3U) << "a file, a link and a folder";
  EXPECT_EQ(tree->Find(Root() / "none"), nullptr);
  CDirectory(Root()).GetTree(tree, kFolders, 9);
  EXPECT_EQ(tree->GetChildren().size(), 2U);
}

TEST(CTree, IsDestroyedAtAnyDepth) {
  auto root = MakeUseCounted<CDirectory::CFileTree>("0");
  CUsePtr<CDirectory::CFileTree> kept;
  CDirectory::CFileTree* node = root.Get();
  for (int i = 0; i < 300000; ++i) {
    node = node->Add("c", "c");
    if (i == 200000) kept = ShareUse(node);
  }
  root.Reset();
  EXPECT_EQ(kept->GetChildren().size(), 1U) << "what somebody holds keeps its children";
}

TEST_F(CDirectoryTest, CopiesATree) {
  fs::remove(Path("root/dangling"));
  fs::remove(Path("root/sub/loop"));
  const CFSPath to = Path("copy").string();
  CDirectory(Root()).Copy(to);
  CDirectory(Root()).Copy(to);  // over the first one
  EXPECT_EQ(NamesIn(Path("copy")), NamesIn(Path("root")));
  EXPECT_EQ(ReadWholeFile(Path("copy/sub/deep/d")), "sub/deep/d");
  EXPECT_EQ(PermissionsOf(Path("copy/sub")), AllowedByMask(0777));
}

TEST_F(CDirectoryTest, CopiesIntoItselfOnce) {
  fs::remove(Path("root/dangling"));
  fs::remove(Path("root/sub/loop"));
  CDirectory(Root()).Copy(Path("root/sub/inner").string());
  EXPECT_EQ(NamesIn(Path("root/sub/inner/sub")), (Names{"c.txt", "deep"}));
}

std::string ReasonOfCopy(const CFSPath& from, const CFSPath& to) {
  return ReasonOf([&] { CDirectory(from).Copy(to); });
}

TEST_F(CDirectoryTest, TellsWhyACopyStopped) {
  const HostInSlot host(Gates{});
  const CFSPath inTheWay = Path("root/README").string();
  EXPECT_EQ(ReasonOfCopy(Root(), inTheWay), "'Could not make dir: " + inTheWay.String() + "'");
  EXPECT_EQ(host->fErrors.back().className + "::" + host->fErrors.back().function,
            "CDirectory::Copy");
  EXPECT_EQ(ReasonOfCopy(Root(), Path("to").string()),
            "'Could not copy file: dangling. Undefined state.'");
  fs::remove(Path("root/dangling"));
  EXPECT_EQ(ReasonOfCopy(Root(), Path("to").string()),
            "'Could not copy directory. Undefined state.'");
  EXPECT_TRUE(fs::exists(Path("to/README"))) << "what was copied stays";
}

std::string ReasonOfRename(const CFSPath& from, const CFSPath& to, bool overwrite) {
  return ReasonOf([&] { CDirectory(from).Rename(to, overwrite); });
}

TEST_F(CDirectoryTest, Renames) {
  CDirectory folder(Root().String() + "//");
  folder.Rename(Path("new/").string(), true);
  EXPECT_EQ(folder.GetPath().String(), Path("new").string());
  EXPECT_TRUE(fs::exists(Path("new/sub/deep/d")));
  fs::create_directory(Path("there"));
  for (const bool overwrite : {false, true}) {
    EXPECT_EQ(ReasonOfRename(Path("new").string(), Path("there").string(), overwrite),
              "Cannot rename directory '" + Path("new").string() + "' to '" +
                  Path("there").string() + "'. Error: 17 - os error: 17 - 'File exists'.")
        << "not even an empty folder gives way";
  }
  EXPECT_TRUE(fs::is_empty(Path("there")));
}

TEST_F(CDirectoryTest, DeletesATreeButNotWhatLinksLeadTo) {
  fFolder.Write("outside", "stays");
  fs::create_symlink(Path("outside"), Path("root/sub/out"));
  fs::create_directory_symlink(fFolder.Path(), Path("root/sub/up"));
  EXPECT_TRUE(CDirectory(Root()).Delete());
  EXPECT_EQ(NamesIn(fFolder.Path()), Names{"outside"});
  EXPECT_FALSE(CDirectory(Root()).Delete()) << "nothing there";
  EXPECT_FALSE(CDirectory("").Delete());
  EXPECT_FALSE(CDirectory("/").Delete());
  EXPECT_FALSE(CDirectory("//").Delete());
}

TEST_F(CDirectoryTest, DeletesALinkAndNotItsTarget) {
  fs::create_directory_symlink(Path("root"), Path("link"));
  EXPECT_TRUE(CDirectory(Path("link").string()).Delete());
  EXPECT_EQ(NamesIn(fFolder.Path()), Names{"root"});
  EXPECT_TRUE(fs::exists(Path("root/README")));
}

TEST_F(CDirectoryTest, DeletesAroundWhatCannotGo) {
  fs::create_directories(Path("open/locked"));
  fFolder.Write("open/locked/kept", "1");
  fFolder.Write("open/gone", "1");
  fs::create_directories(Path("open/other/gone"));
  const auto own = [&](const char* name, std::uint32_t permissions) {
    if (geteuid() == 0) {
      ASSERT_EQ(chown(Path(name).c_str(), 65534, 65534), 0);
    }
    fs::permissions(Path(name), fs::perms(permissions));
  };
  own("open", 0755);
  own("open/other", 0755);
  own("open/locked", 0555);
  fs::permissions(fFolder.Path(), fs::perms(0755));
  {
    const WithoutPrivileges nobody;
    EXPECT_FALSE(CDirectory(Path("open").string()).Delete());
  }
  EXPECT_EQ(NamesIn(Path("open")), Names{"locked"});
  EXPECT_EQ(NamesIn(Path("open/locked")), Names{"kept"});
  own("open/locked", 0755);
}

// Far deeper than a path can be long, and than descriptors can be open.
TEST_F(CDirectoryTest, DeletesAnyDepth) {
  const std::string name(100, 'n');
  int folder = open(Path("root").c_str(), O_RDONLY | O_DIRECTORY);
  for (int depth = 0; depth < 300; ++depth) {
    ASSERT_EQ(mkdirat(folder, name.c_str(), 0755), 0);
    const int below = openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(below, 0);
    close(folder);
    folder = below;
  }
  close(folder);
  EXPECT_EQ(Walk(kFolders | kRecurse, "", 10000).size() > 20, true) << "as far as paths reach";
  const std::size_t descriptors = OpenDescriptors();
  EXPECT_TRUE(CDirectory(Root()).Delete());
  EXPECT_FALSE(fs::exists(Path("root")));
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST_F(CDirectoryTest, SurvivesFoldersThatVanish) {
  std::atomic<bool> isOver{false};
  std::thread changer([&] {
    while (!isOver) {
      fs::create_directories(Path("root/here/and/there"));
      fs::remove_all(Path("root/here"));
    }
  });
  for (int i = 0; i < 300; ++i) {
    const Names names = Walk(kAll, "", 9);
    EXPECT_TRUE(names.contains("sub/deep/d"));
  }
  isOver = true;
  changer.join();
}

TEST_F(CDirectoryTest, KnowsWhereTemporaryFilesGo) {
  const char* before = std::getenv("TMPDIR");
  const std::string saved = before ? before : "";
  setenv("TMPDIR", Path("root").c_str(), 1);
  EXPECT_EQ(CDirectory::GetTempPath(), Root());
  for (const std::string& value :
       {Path("missing").string(), Path("root/README").string(), std::string()}) {
    setenv("TMPDIR", value.c_str(), 1);
    EXPECT_EQ(CDirectory::GetTempPath().String(), "/tmp");
  }
  setenv("TMPDIR", ".", 1);
  EXPECT_TRUE(CDirectory::GetTempPath().StartsWithSeparator()) << "also when the process moves on";
  if (before)
    setenv("TMPDIR", saved.c_str(), 1);
  else
    unsetenv("TMPDIR");
}

}  // namespace
