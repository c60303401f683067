// The picture of docs/performance.md, and the program that draws it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/SharedData.h"

namespace {

using testing::HasSubstr;

ChildResult Plot(const std::string& record, const std::string& list) {
  ChildCall call;
  call.command = {(SourceDir() / "bench" / "plot").string(), record, list};
  return RunChild(call);
}

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

constexpr const char* kRecord =
    "# 2026-01-31, commit 1234567, 3 runs\n"
    "# a machine\n"
    "list\telements\tHash\tVectorscan\tRe2Set\tList\tNamed\tFirstPass\tbuild_s\n"
    "names\t100\t50\t-\t-\t100\t150\t400\t0.001\n"
    "names\t10000\t60\t-\t-\t100\t-\t400\t0.1\n"
    "others\t100\t-\t200\t-\t100\t150\t400\t0.001\n";

TEST(Pictures, HaveALineForEachWhoAnswers) {
  const CTemporaryFolder folder;
  const ChildResult drawn = Plot(folder.Write("record", kRecord).string(), "names");
  EXPECT_EQ(drawn.status, 0) << drawn.errors;
  EXPECT_TRUE(drawn.output.starts_with("<svg ") && drawn.output.ends_with("</svg>\n"));
  EXPECT_EQ(CountOf(drawn.output, "<polyline "), 4u);
  EXPECT_THAT(drawn.output, HasSubstr(">named<"));
  EXPECT_THAT(drawn.output, Not(HasSubstr(">Vectorscan<")));
  EXPECT_THAT(drawn.output, HasSubstr(">2026-01-31, commit 1234567, 3 runs<"));
  // 400 is the top, 100 a quarter of the way: both sizes at the ends of the axis.
  EXPECT_THAT(drawn.output, HasSubstr("points=\"60.0,40.0 540.0,40.0 \""));
  EXPECT_THAT(drawn.output, HasSubstr("points=\"60.0,265.0 540.0,265.0 \""));
}

TEST(Pictures, NeedTwoSizes) {
  const CTemporaryFolder folder;
  const std::string record = folder.Write("record", kRecord).string();
  for (const char* list : {"others", "unknown"}) {
    const ChildResult refused = Plot(record, list);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.output, "");
    EXPECT_THAT(refused.errors, HasSubstr(list));
  }
  EXPECT_NE(Plot((folder.Path() / "missing").string(), "names").status, 0);
}

// Who measures again draws again.
TEST(Pictures, OfThePagesAreThoseOfTheRecord) {
  const auto record = SourceDir() / "bench" / "record" / "lists.tsv";
  const ChildResult drawn = Plot(record.string(), "names_behind_stars");
  EXPECT_EQ(drawn.status, 0) << drawn.errors;
  EXPECT_EQ(drawn.output, ReadWholeFile(SourceDir() / "docs" / "list-size.svg"));
}

}  // namespace
