#pragma once

#include <compare>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

// A path as bytes, with the few operations that files and folders need. Both kinds of slash part
// names on input; whatever builds a path brings it to the platform's form.
//
// Nothing is checked against the file system, and bytes need not be UTF-8.
//
// Contract: on a platform whose separator is "/", a file name can hold a backslash. Such a file
// cannot be named here: Normalize makes a separator of it.
class CFSPath {
public:
  static constexpr std::size_t kNone = std::string::npos;  // no such position
  // 1 and 2 bring a path to backslashes, anything else to slashes.
  static constexpr int kPlatformForm =
      std::filesystem::path::preferred_separator == std::filesystem::path::value_type('\\') ? 1 : 0;

  CFSPath() = default;
  CFSPath(std::string path) : fPath(std::move(path)) {}  // as it stands
  CFSPath(std::string_view path) : fPath(path) {}
  CFSPath(const char* path) : fPath(path ? path : "") {}

  const std::string& String() const { return fPath; }
  const char* c_str() const { return fPath.c_str(); }
  bool IsEmpty() const { return fPath.empty(); }
  std::size_t Size() const { return fPath.size(); }

  // ---- as it stands, either slash a separator

  bool StartsWithSeparator() const;
  bool EndsWithSeparator() const;
  // Contract: look for "/" first and only then for "\\", so a path with both answers for "/".
  std::size_t FirstSeparator() const;
  std::size_t LastSeparator() const;

  // ---- parts, in the platform's form

  // What is before the last separator, or that separator where nothing is before it. Without a
  // separator false, and out is empty.
  bool GetDirectory(CFSPath& out) const;
  // What is behind the last separator, those at the end not counted. False when that is nothing.
  bool GetFileName(CFSPath& out) const;

  // ---- changing

  void Normalize(int form = kPlatformForm);
  void StripTrailingSeparators();  // also the only ones of a path of separators
  // Puts a separator between the two where neither has one, and takes none away.
  CFSPath& Append(const CFSPath& other);
  static CFSPath Join(const CFSPath& first, const CFSPath& second);
  // Puts a "." in front of the text unless it begins with one. Nothing for an empty text.
  CFSPath& AddExtension(std::string_view text);
  // Both take as much of count as there is. A position behind the end is a CRunTimeError.
  CFSPath& Replace(std::size_t position, std::size_t count, std::string_view text);
  CFSPath& Erase(std::size_t position, std::size_t count);
  // Takes out repeated separators and "name/../". A "/../" in front of everything stays, as does
  // one at the end without its last slash; two slashes at the beginning stay two.
  // Contract: two backslashes at the beginning become one slash.
  void Collapse();

  std::strong_ordering operator<=>(const CFSPath& other) const = default;  // byte by byte

private:
  std::string fPath;
};

inline CFSPath operator/(const CFSPath& first, const CFSPath& second) {
  return CFSPath::Join(first, second);
}
