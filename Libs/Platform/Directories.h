#pragma once

#include <string>
#include <vector>

#include "Libs/Platform/Files.h"

// Folders as the system sees them. Links to folders count as files: nothing here goes through one.

struct DirectoryEntry {
  std::string name;
  bool isDirectory = false;
  FileIdentity identity;  // of the entry itself
};

// All entries but "." and "..", in the system's order; those that vanish meanwhile are left out.
// The error code, or 0.
int ListDirectory(const std::string& path, std::vector<DirectoryEntry>& entries);

// A folder that everybody may use whom the process's mask lets. The error code, or 0, also for one
// that is there already. Folders on the way are not made.
int MakeDirectory(const std::string& path);

// Removes what is at the path, a file, a link or a folder with all that is in it; depth and length
// of names do not matter. Goes on behind what cannot be removed. False when anything stayed, and
// when nothing was there.
bool RemoveTree(const std::string& path);

// Where temporary files go: $TMPDIR if that is a folder, else the system's own.
std::string TemporaryDirectory();
