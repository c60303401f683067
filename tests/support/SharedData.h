#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// Where tests find what is not compiled in. The public test data lies beside the checkout and may
// be missing: a test that can use it asks here, and runs on its own rows alone where the answer is
// empty.

// The file or folder of that name below the shared folder, if it is there.
std::optional<std::filesystem::path> SharedPath(const std::string& name);

// All bytes of a file; throws std::runtime_error when it cannot be read.
std::string ReadWholeFile(const std::filesystem::path& path);

// The lines of a file without their line ends.
std::vector<std::string> ReadLines(const std::filesystem::path& path);

// The root of the checkout, and the folder in which the build puts the program and the module.
std::filesystem::path SourceDir();
std::filesystem::path BinDir();
