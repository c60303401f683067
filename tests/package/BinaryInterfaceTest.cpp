// The record of the binary interface, and that it tells of a change of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "tests/package/Installation.h"
#include "tests/support/SharedData.h"

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

// A copy of the headers, which a test changes, and what make abi would print of that.
class BinaryInterface : public ::testing::Test {
protected:
  void SetUp() override {
    std::filesystem::copy(SourceDir() / "host", fSource.Path() / "host");
    std::filesystem::create_directories(fSource.Path() / "tests/host");
    std::filesystem::copy(SourceDir() / "tests/host/Interfaces.cpp",
                          fSource.Path() / "tests/host/Interfaces.cpp");
    Record("before.abi");
  }

  // `text` stands in the header once, and from now on `other` does.
  void Change(const std::string& header, const std::string& text, const std::string& other) const {
    const auto path = fSource.Path() / "host" / header;
    std::string source = ReadWholeFile(path);
    ASSERT_NE(source.find(text), std::string::npos) << text;
    ASSERT_EQ(source.find(text), source.rfind(text)) << text;
    source.replace(source.find(text), text.size(), other);
    std::ofstream(path, std::ios::binary) << source;
  }

  ChildResult Compare() const {
    Record("after.abi");
    return Shell("abidiff before.abi after.abi", fSource.Path());
  }

private:
  void Record(const std::string& name) const {
    const ChildResult made = Shell(
        "CXX='" TESSARIN_COMPILER "' '" + (SourceDir() / "cmake/abi.sh").string() + "' . " + name,
        fSource.Path());
    ASSERT_EQ(made.status, 0) << made.output;
  }

  CTemporaryFolder fSource;
};

TEST_F(BinaryInterface, IsTheSameWithoutAChange) {
  Change("IContext.h", "  bool IsResuming() const", "  // A comment.\n  bool IsResuming() const");
  const ChildResult same = Compare();
  EXPECT_EQ(same.status, 0) << same.output;
  EXPECT_THAT(same.output, IsEmpty());
}

TEST_F(BinaryInterface, TellsOfAMemberThatMovesThoseBehindIt) {
  const std::string member = "  virtual bool Interface_IsResuming() const";
  Change("IContext.h", member, "  virtual void Interface_Added() = 0;\n" + member);
  const ChildResult moved = Compare();
  EXPECT_NE(moved.status, 0);
  EXPECT_THAT(moved.output, HasSubstr("method virtual void Tovrin::IContext::Interface_Added()', "
                                      "virtual at voffset 7"));
  EXPECT_THAT(moved.output,
              HasSubstr("IContext::Interface_IsResuming() const changed from 7 to 8"));
}

// Another result leaves the name of the symbol as it was.
TEST_F(BinaryInterface, TellsOfAResultOfAnotherType) {
  Change("IVariant.h", "virtual double Interface_GetNumber", "virtual float Interface_GetNumber");
  const ChildResult changed = Compare();
  EXPECT_NE(changed.status, 0);
  EXPECT_THAT(changed.output, HasSubstr("Interface_GetNumber() const"));
  EXPECT_THAT(changed.output, HasSubstr("'double' to 'float'"));
}

}  // namespace
