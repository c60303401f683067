#include "Common/CFSPath.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <random>
#include <string>

#include "Common/CException.h"
#include "tests/Common/QuestionedHost.h"
#include "tests/Common/ReasonOf.h"

namespace {

constexpr std::size_t kNone = CFSPath::kNone;

struct AccessorRow {
  const char* path;
  bool starts, ends;
  std::size_t first, last;
  const char* stripped;
  bool hasDirectory;
  const char* directory;
  const char* fileName;
};

constexpr AccessorRow kAccessorRows[] = {
    {"", false, false, kNone, kNone, "", false, "", ""},
    {"/", true, true, 0, 0, "", true, "/", ""},
    {"//", true, true, 0, 1, "", true, "/", ""},
    {"a", false, false, kNone, kNone, "a", false, "", "a"},
    {"a/", false, true, 1, 1, "a", true, "a", "a"},
    {"/a", true, false, 0, 0, "/a", true, "/", "a"},
    {"\\a", true, false, 0, 0, "\\a", true, "/", "a"},
    {"a\\b", false, false, 1, 1, "a\\b", true, "a", "b"},
    {"a\\b\\", false, true, 1, 3, "a\\b", true, "a/b", "b"},
    // Contract: "/" is looked for first, wherever the backslash is.
    {"a/b\\c", false, false, 1, 1, "a/b\\c", true, "a/b", "c"},
    {"a\\b/c", false, false, 3, 3, "a\\b/c", true, "a/b", "c"},
    {"/a/b//", true, true, 0, 5, "/a/b", true, "/a/b/", "b"},
    {"\xFF/\x80", false, false, 1, 1, "\xFF/\x80", true, "\xFF", "\x80"},
};

TEST(CFSPath, AnswersEveryAccessor) {
  for (const AccessorRow& row : kAccessorRows) {
    SCOPED_TRACE(row.path);
    const CFSPath path(row.path);
    EXPECT_EQ(path.StartsWithSeparator(), row.starts);
    EXPECT_EQ(path.EndsWithSeparator(), row.ends);
    EXPECT_EQ(path.FirstSeparator(), row.first);
    EXPECT_EQ(path.LastSeparator(), row.last);
    CFSPath stripped = path;
    stripped.StripTrailingSeparators();
    EXPECT_EQ(stripped.String(), row.stripped);
    CFSPath part("before");
    EXPECT_EQ(path.GetDirectory(part), row.hasDirectory);
    EXPECT_EQ(part.String(), row.directory);
    part = "before";
    EXPECT_EQ(path.GetFileName(part), *row.fileName != '\0');
    EXPECT_EQ(part.String(), row.fileName);
    EXPECT_EQ(path.String(), row.path) << "reading changes nothing";
  }
}

TEST(CFSPath, NormalizesToTheFormThatIsAskedFor) {
  const auto normalized = [](const char* text, int form) {
    CFSPath path(text);
    path.Normalize(form);
    return path.String();
  };
  EXPECT_EQ(normalized("a/b\\c", 0), "a/b/c");
  EXPECT_EQ(normalized("a/b\\c", 1), "a\\b\\c");
  EXPECT_EQ(normalized("a/b\\c", 2), "a\\b\\c");
  EXPECT_EQ(normalized("a/b\\c", 3), "a/b/c");
  EXPECT_EQ(normalized("", 1), "");
  EXPECT_EQ(normalized("a/b\\c", CFSPath::kPlatformForm), "a/b/c");
}

TEST(CFSPath, AppendsWithOneSeparatorWhereThereIsNone) {
  EXPECT_EQ((CFSPath("a") / "b").String(), "a/b");
  EXPECT_EQ((CFSPath("a/") / "/b").String(), "a//b") << "both stay";
  EXPECT_EQ((CFSPath("a\\") / "b").String(), "a/b");
  EXPECT_EQ((CFSPath("a") / "\\b").String(), "a/b");
  EXPECT_EQ((CFSPath("") / "b").String(), "b");
  EXPECT_EQ((CFSPath("a") / "").String(), "a");
  EXPECT_EQ(CFSPath::Join("a\\b", "c\\d").String(), "a/b/c/d");
  CFSPath self("a");
  self.Append(self);
  EXPECT_EQ(self.String(), "a/a");
}

TEST(CFSPath, AddsAnExtensionWithItsDot) {
  EXPECT_EQ(CFSPath("a").AddExtension("txt").String(), "a.txt");
  EXPECT_EQ(CFSPath("a").AddExtension(".txt").String(), "a.txt");
  EXPECT_EQ(CFSPath("a\\b").AddExtension("").String(), "a\\b") << "nothing at all";
  EXPECT_EQ(CFSPath("a\\b").AddExtension("c").String(), "a/b.c");
  CFSPath own("name");
  own.AddExtension(std::string_view(own.String()).substr(2));
  EXPECT_EQ(own.String(), "name.me") << "a part of the path itself";
}

struct CollapseRow {
  const char* path;
  const char* collapsed;
};

constexpr CollapseRow kCollapseRows[] = {
    {"/a/b/../c", "/a/c"},
    {"/../a", "/../a"},
    {"a/../b", "b"},
    {"../../a", "a"},
    {"/../../a", "/a"},
    {"/a/../../b", "/../b"},
    {"a/b/..", "a/b/.."},
    {"http://h/a/../b", "http:/h/b"},
    {"//s/a/../b", "//s/b"},
    // Contract: the beginning of such a name is lost.
    {"\\\\srv\\a", "/srv/a"},
    {"", ""},
    {"/", "/"},
    {"//", "//"},
    {"////", "//"},
    {"a///b//c/", "a/b/c/"},
    {"a\\..\\b", "b"},
    {"/../../..", "/.."},
    {"/a/..b/../c", "/a/c"},
    {"a/.../b", "a/.../b"},
};

TEST(CFSPath, Collapses) {
  for (const CollapseRow& row : kCollapseRows) {
    SCOPED_TRACE(row.path);
    CFSPath path(row.path);
    path.Collapse();
    EXPECT_EQ(path.String(), row.collapsed);
  }
}

// The steps as they are told, one at a time.
std::string CollapsedSlowly(std::string text) {
  const bool isDouble = text.starts_with("//");
  std::ranges::replace(text, '\\', '/');
  for (auto at = text.find("//"); at != kNone; at = text.find("//")) text.erase(at, 1);
  for (auto at = text.find("/../", 1); at != kNone; at = text.find("/../", 1)) {
    const auto slash = text.rfind('/', at - 1);
    const std::size_t from = slash == kNone ? 0 : slash + 1;
    text.erase(from, at + 4 - from);
  }
  return isDouble ? "/" + text : text;
}

TEST(CFSPath, CollapsesLikeTheStepsOneByOne) {
  std::mt19937 random(20);
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    for (auto length = random() % 24; length > 0; --length) text += "/.a\\./"[random() % 6];
    CFSPath path(text);
    path.Collapse();
    ASSERT_EQ(path.String(), CollapsedSlowly(text)) << text;
  }
}

TEST(CFSPath, CollapsesAMegabyteOfClimbing) {
  std::string text = "/";
  for (int i = 0; i < 200000; ++i) text += "a/../";
  CFSPath path(text + "b");
  path.Collapse();
  EXPECT_EQ(path.String(), "/b");
}

TEST(CFSPath, ReplacesAndErasesByPosition) {
  EXPECT_EQ(CFSPath("abcdef").Replace(1, 2, "X").String(), "aXdef");
  EXPECT_EQ(CFSPath("abc").Replace(1, 100, "X").String(), "aX") << "as much as there is";
  EXPECT_EQ(CFSPath("abc").Replace(3, 1, "X").String(), "abcX");
  EXPECT_EQ(CFSPath("abc").Erase(1, kNone).String(), "a");
  EXPECT_EQ(CFSPath("abc").Erase(3, 1).String(), "abc");
}

TEST(CFSPath, RaisesBehindTheEnd) {
  const HostInSlot host(Gates{});
  CFSPath path("abc");
  const std::string replaceReason = ReasonOf([&] { path.Replace(4, 1, "X"); });
  EXPECT_TRUE(replaceReason.starts_with("Exception '")) << replaceReason;
  EXPECT_TRUE(replaceReason.ends_with("Current: 'abc'. Argument(s): '4, 1, X'.")) << replaceReason;
  const std::string eraseReason = ReasonOf([&] { path.Erase(4, 1); });
  EXPECT_TRUE(eraseReason.ends_with("Current: 'abc'. Argument(s): '4, 1'.")) << eraseReason;
  EXPECT_EQ(path.String(), "abc");
  ASSERT_EQ(host->fErrors.size(), 2U);
  EXPECT_EQ(host->fErrors[0].className + "::" + host->fErrors[0].function, "CFSPath::Replace");
  EXPECT_EQ(host->fErrors[1].className + "::" + host->fErrors[1].function, "CFSPath::Erase");
}

TEST(CFSPath, ComparesBytes) {
  EXPECT_LT(CFSPath("a"), CFSPath("b"));
  EXPECT_LT(CFSPath("a"), CFSPath("\xFF")) << "bytes have no sign";
  EXPECT_NE(CFSPath("a/b"), CFSPath("a\\b")) << "as they stand";
  EXPECT_EQ(CFSPath(nullptr), CFSPath(""));
}

}  // namespace
