#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Common/CFSPath.h"
#include "Common/CTree.h"
#include "Common/CUseCounted.h"

// A folder by its path, and what is done with trees of them.
//
// Links are files here: they are reported and removed as such, and no walk goes through one. Walks
// see the file system as it changes; a folder that cannot be listed, or vanished, ends the walk at
// its level with what was found. One thread at a time.
class CDirectory {
public:
  // What a walk does. Other bits mean nothing.
  enum WalkFlag : std::uint32_t { kDirectories = 2, kFiles = 4, kRecurse = 16 };

  class CFileTree;
  using CPathList = std::vector<CFSPath>;

  explicit CDirectory(const CFSPath& path = {}) : fPath(path) {}

  const CFSPath& GetPath() const { return fPath; }

  // Adds to the list the folders and files that the flags ask for and whose names match, each as
  // this path, "/" and its name, in the system's order. With kRecurse it goes into every folder,
  // whatever the pattern, while its level is below depth.
  //
  // "*" stands for any characters and "?" for one, ASCII letters match without regard to case, and
  // ";" parts patterns. An empty pattern is any name.
  // Contract: "*.*" is any name as well, also one without a dot.
  void Walk(std::uint32_t flags, const std::string& pattern, CPathList& list, int depth,
            int level = 0) const;
  // The same for any name as a tree. Its root is called "searchroot"; a folder that was gone into
  // is in the tree also without kDirectories.
  void GetTree(CUseCountedSharedPtr<CFileTree>& tree, std::uint32_t flags, int depth) const;

  // Copies the tree into a folder, which is made if it is not there. Files are overwritten. Throws
  // a CRunTimeError at the first failure; what was copied by then stays.
  void Copy(const CFSPath& destination) const;
  // Throws a CRunTimeError. A folder never takes the place of another, overwrite or not.
  void Rename(const CFSPath& destination, bool overwrite);
  // Removes the folder with all that is in it, as far as that can be removed, and asks nobody.
  // False when anything stayed, for a folder that is not there, for "/" and for no path.
  bool Delete() const;

  // Where temporary files go: $TMPDIR if that is a folder, else the system's own.
  static CFSPath GetTempPath();

private:
  CFSPath fPath;
};

// What a walk found, as a tree: the children of a node are ordered by their paths.
class CDirectory::CFileTree : public CTree<CFileTree, CFSPath, std::less<CFSPath>>,
                              public CUseCounted {
public:
  explicit CFileTree(const CFSPath& path) : fDirectory(path) {}

  const CDirectory& GetDirectory() const { return fDirectory; }

private:
  CDirectory fDirectory;  // holds the node's path, also that of a file
};
