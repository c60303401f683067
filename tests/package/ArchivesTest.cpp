#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/package/Installation.h"

namespace {

using ::testing::HasSubstr;

bool HasProgram(const std::string& name) {
  return Shell("command -v " + name).status == 0;
}

// Packs by one generator and tells where the archive stands.
std::filesystem::path Packed(const std::string& generator, const CTemporaryFolder& folder) {
  const ChildResult result = Shell(std::string("'" TESSARIN_CPACK "' -G ") + generator +
                                   " --config '" TESSARIN_BUILD_DIR "/CPackConfig.cmake' -B '" +
                                   folder.Path().string() + "'");
  EXPECT_EQ(result.status, 0) << result.output;
  for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
    if (entry.is_regular_file()) return entry.path();
  }
  return {};
}

void ExpectWorkingProgram(const std::filesystem::path& program) {
  const ChildResult result =
      Shell("'" + program.string() + "' call 'Tessarin.Matches(\"a+\", \"AA\")'");
  EXPECT_EQ(result.output, "true\n");
}

TEST(Archives, DebianPackageHoldsAWorkingProgram) {
  if (!HasProgram("dpkg-deb")) GTEST_SKIP() << "no dpkg-deb here";
  const CTemporaryFolder folder;
  const auto package = Packed("DEB", folder);
  const std::string quoted = "'" + package.string() + "'";
  const std::string fields = Shell("dpkg-deb --field " + quoted).output;
  EXPECT_THAT(fields, HasSubstr("Package: tessarin\n"));
  EXPECT_THAT(fields, HasSubstr("Version: " TESSARIN_VERSION "\n"));
  if (HasProgram("dpkg-shlibdeps")) {
    EXPECT_THAT(fields, HasSubstr("libc6"));
    EXPECT_THAT(fields, HasSubstr("libstdc++6"));
  }

  const auto root = folder.Path() / "root";
  ASSERT_EQ(Shell("dpkg-deb --extract " + quoted + " '" + root.string() + "'").status, 0);
  ExpectWorkingProgram(root / "usr/bin/tovrin");
  EXPECT_EQ(FilesBelow(root / "usr"), FilesBelow(CInstallation().Prefix()));
}

TEST(Archives, TarArchiveHoldsAWorkingProgram) {
  if (!HasProgram("tar")) GTEST_SKIP() << "no tar here";
  const CTemporaryFolder folder;
  const auto archive = Packed("TGZ", folder);
  const auto name = archive.filename().string();
  EXPECT_THAT(name, HasSubstr("tessarin-" TESSARIN_VERSION));
  ASSERT_EQ(
      Shell("mkdir root && tar -xzf '" + name + "' -C root --strip-components=2", folder.Path())
          .status,
      0);
  ExpectWorkingProgram(folder.Path() / "root/bin/tovrin");
  EXPECT_EQ(FilesBelow(folder.Path() / "root"), FilesBelow(CInstallation().Prefix()));
}

}  // namespace
