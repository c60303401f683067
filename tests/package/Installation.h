#pragma once

#include <filesystem>
#include <set>
#include <string>

#include "tests/support/ChildProcess.h"

// What this build hands out, in an empty folder that goes with the object. Nothing of it knows
// where it was going to stand, which is what the tests are about.
class CInstallation {
public:
  CInstallation();  // throws std::runtime_error with what was printed when it does not install

  const std::filesystem::path& Prefix() const { return fFolder.Path(); }
  // The one file of that name in it; throws std::runtime_error when there is none.
  std::filesystem::path Find(const std::string& name) const;

private:
  CTemporaryFolder fFolder;
};

// The names of all files below a folder, from there.
std::set<std::string> FilesBelow(const std::filesystem::path& folder);

// A line of shell, in a folder, with everything that it printed in `output`.
ChildResult Shell(const std::string& line, const std::filesystem::path& folder = {});
