#include "Common/CDirectory.h"

#include <string_view>
#include <utility>

#include "Common/CFile.h"
#include "Common/RaiseError.h"
#include "Libs/Platform/Directories.h"
#include "Libs/Platform/ErrorTexts.h"

qxSource("Common\\CDirectory");

namespace {

constexpr char ToLowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

// Greedy: a later star takes over from an earlier one, so each star is tried over the name once.
bool MatchesOne(std::string_view pattern, std::string_view name) {
  std::size_t inPattern = 0, inName = 0;
  std::size_t star = std::string_view::npos, afterStar = 0;
  while (inName < name.size()) {
    const bool hasPattern = inPattern < pattern.size();
    if (hasPattern && pattern[inPattern] == '*') {
      star = inPattern++;
      afterStar = inName;
    } else if (hasPattern && (pattern[inPattern] == '?' ||
                              ToLowerAscii(pattern[inPattern]) == ToLowerAscii(name[inName]))) {
      ++inPattern;
      ++inName;
    } else if (star != std::string_view::npos) {
      inPattern = star + 1;
      inName = ++afterStar;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', inPattern) == std::string_view::npos;
}

bool IsAnyName(std::string_view pattern) {
  return pattern.empty() || pattern == "*" || pattern == "*.*";
}

bool Matches(std::string_view patterns, std::string_view name) {
  if (IsAnyName(patterns)) return true;
  for (;;) {
    const std::size_t end = patterns.find(';');
    const std::string_view pattern = patterns.substr(0, end);
    if (!pattern.empty() && (IsAnyName(pattern) || MatchesOne(pattern, name))) return true;
    if (end == std::string_view::npos) return false;
    patterns.remove_prefix(end + 1);
  }
}

std::string Below(const std::string& folder, const std::string& name) {
  return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

std::vector<DirectoryEntry> EntriesOf(const std::string& path) {
  std::vector<DirectoryEntry> entries;
  ListDirectory(path, entries);  // what was found until it failed is the listing
  return entries;
}

// One folder that is being walked.
template <class Place>
struct WalkLevel {
  std::string path;
  Place place;
  std::vector<DirectoryEntry> entries;
  std::size_t next = 0;
};

// Walks in depth, without recursion. Each entry goes to visit with its path, its parent's place and
// whether it is gone into; what visit returns is the place of its own entries.
template <class Place, class Visit>
void WalkTree(const std::string& root, Place rootPlace, std::uint32_t flags, int depth, int level,
              Visit visit) {
  std::vector<WalkLevel<Place>> levels;
  levels.push_back({root, rootPlace, EntriesOf(root)});
  while (!levels.empty()) {
    WalkLevel<Place>& current = levels.back();
    if (current.next == current.entries.size()) {
      levels.pop_back();
      continue;
    }
    const DirectoryEntry& entry = current.entries[current.next++];
    const auto currentLevel = level + static_cast<std::int64_t>(levels.size()) - 1;
    const bool isEntered =
        entry.isDirectory && (flags & CDirectory::kRecurse) != 0 && currentLevel < depth;
    std::string path = Below(current.path, entry.name);
    Place place = visit(entry, path, current.place, isEntered);
    if (isEntered) levels.push_back({path, place, EntriesOf(path)});
  }
}

bool IsWanted(std::uint32_t flags, const DirectoryEntry& entry) {
  return (flags & (entry.isDirectory ? CDirectory::kDirectories : CDirectory::kFiles)) != 0;
}

std::string Normalized(CFSPath path) {
  path.Normalize();
  return path.String();
}

// Contract: the words of a failure in a folder below replace its own, which goes to the log.
[[noreturn]] void FailCopy(const std::string& message, bool isBelow) {
  if (!isBelow) qxRaiseError(ErrorId::InternalError, "CDirectory::Copy", {{"msg", message}});
  qxReportError(ErrorId::InternalError, "CDirectory::Copy", {{"msg", message}});
  qxRaiseError(ErrorId::InternalError, "CDirectory::Copy",
               {{"msg", "Could not copy directory. Undefined state."}});
}

void CopyFiles(const std::vector<DirectoryEntry>& entries, const std::string& from,
               const std::string& to, bool isBelow) {
  for (const DirectoryEntry& entry : entries) {
    if (entry.isDirectory) continue;
    if (!CFile::CopyFile(Below(from, entry.name), Below(to, entry.name), true)) {
      FailCopy("Could not copy file: " + entry.name + ". Undefined state.", isBelow);
    }
  }
}

}  // namespace

void CDirectory::Walk(std::uint32_t flags, const std::string& pattern, CPathList& list, int depth,
                      int level) const {
  const auto add = [&](const DirectoryEntry& entry, const std::string& path, char place, bool) {
    if (IsWanted(flags, entry) && Matches(pattern, entry.name)) list.emplace_back(path);
    return place;
  };
  WalkTree(Normalized(fPath), char{}, flags, depth, level, add);
}

void CDirectory::GetTree(CUseCountedSharedPtr<CFileTree>& tree, std::uint32_t flags,
                         int depth) const {
  CUseCountedSharedPtr<CFileTree> found(new CFileTree("searchroot"));
  const auto add = [&](const DirectoryEntry& entry, const std::string& path, CFileTree* parent,
                       bool isEntered) {
    return IsWanted(flags, entry) || isEntered ? parent->Add(path, path) : nullptr;
  };
  WalkTree(Normalized(fPath), found.Get(), flags, depth, 0, add);
  tree = found;
}

void CDirectory::Copy(const CFSPath& destination) const {
  struct Pair {
    std::string from, to;
  };
  std::vector<Pair> pending{{Normalized(fPath), Normalized(destination)}};
  FileStatus root;  // of the destination: copying it into itself would not end
  bool isBelow = false;
  while (!pending.empty()) {
    const Pair pair = std::move(pending.back());
    pending.pop_back();
    const std::vector<DirectoryEntry> entries = EntriesOf(pair.from);
    if (MakeDirectory(pair.to) != 0) FailCopy("Could not make dir: " + pair.to, isBelow);
    if (!isBelow) StatusOf(pair.to, root);
    CopyFiles(entries, pair.from, pair.to, isBelow);
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
      if (!entry->isDirectory || entry->identity == root.identity) continue;
      pending.push_back({Below(pair.from, entry->name), Below(pair.to, entry->name)});
    }
    isBelow = true;
  }
}

void CDirectory::Rename(const CFSPath& destination, bool overwrite) {
  CFSPath from = fPath;
  CFSPath to = destination;
  from.StripTrailingSeparators();
  to.StripTrailingSeparators();
  if (const int code = RenameFile(from.String(), to.String(), overwrite)) {
    qxRaiseError(ErrorId::DirectoryCannotRename, "CDirectory::Rename",
                 {{"from", from.String()},
                  {"to", to.String()},
                  {"code", code},
                  {"string", OSErrorText(code)}});
  }
  fPath = to;
}

bool CDirectory::Delete() const {
  CFSPath path = fPath;
  path.StripTrailingSeparators();
  return !path.IsEmpty() && RemoveTree(path.String());
}

CFSPath CDirectory::GetTempPath() {
  return TemporaryDirectory();
}
