#include "Common/CFSPath.h"

#include <algorithm>
#include <stdexcept>

#include "Common/RaiseError.h"

qxSource("Common\\CFSPath");

namespace {

constexpr bool IsSeparator(char c) {
  return c == '/' || c == '\\';
}

std::string TwoNumbers(std::size_t position, std::size_t count) {
  return std::to_string(position) + ", " + std::to_string(count);
}

}  // namespace

bool CFSPath::StartsWithSeparator() const {
  return !fPath.empty() && IsSeparator(fPath.front());
}

bool CFSPath::EndsWithSeparator() const {
  return !fPath.empty() && IsSeparator(fPath.back());
}

std::size_t CFSPath::FirstSeparator() const {
  const std::size_t slash = fPath.find('/');
  return slash != kNone ? slash : fPath.find('\\');
}

std::size_t CFSPath::LastSeparator() const {
  const std::size_t slash = fPath.rfind('/');
  return slash != kNone ? slash : fPath.rfind('\\');
}

bool CFSPath::GetDirectory(CFSPath& out) const {
  CFSPath path = *this;
  path.Normalize();
  const std::size_t last = path.LastSeparator();
  path.fPath.resize(last == kNone ? 0 : std::max<std::size_t>(last, 1));
  out = std::move(path);
  return last != kNone;
}

bool CFSPath::GetFileName(CFSPath& out) const {
  CFSPath path = *this;
  path.Normalize();
  path.StripTrailingSeparators();
  const std::size_t last = path.LastSeparator();
  if (last != kNone) path.fPath.erase(0, last + 1);
  out = std::move(path);
  return !out.IsEmpty();
}

void CFSPath::Normalize(int form) {
  const bool isBackward = form == 1 || form == 2;
  std::ranges::replace(fPath, isBackward ? '/' : '\\', isBackward ? '\\' : '/');
}

void CFSPath::StripTrailingSeparators() {
  while (EndsWithSeparator()) fPath.pop_back();
}

CFSPath& CFSPath::Append(const CFSPath& other) {
  const bool needsSeparator =
      !IsEmpty() && !EndsWithSeparator() && !other.IsEmpty() && !other.StartsWithSeparator();
  const std::string addition = other.fPath;  // may be this very path
  if (needsSeparator) fPath += '\\';
  fPath += addition;
  Normalize();
  return *this;
}

CFSPath CFSPath::Join(const CFSPath& first, const CFSPath& second) {
  CFSPath path = first;
  path.Append(second);
  return path;
}

CFSPath& CFSPath::AddExtension(std::string_view text) {
  if (text.empty()) return *this;
  const std::string extension(text);  // may be a part of this path
  if (extension.front() != '.') fPath += '.';
  fPath += extension;
  Normalize();
  return *this;
}

CFSPath& CFSPath::Replace(std::size_t position, std::size_t count, std::string_view text) {
  try {
    fPath.replace(position, count, text);
  } catch (const std::out_of_range& failure) {
    qxRaiseError(ErrorId::FSPathEx, "CFSPath::Replace",
                 {{"exception", failure.what()},
                  {"current", fPath},
                  {"argument", TwoNumbers(position, count) + ", " + std::string(text)}});
  }
  return *this;
}

CFSPath& CFSPath::Erase(std::size_t position, std::size_t count) {
  try {
    fPath.erase(position, count);
  } catch (const std::out_of_range& failure) {
    qxRaiseError(ErrorId::FSPathEx, "CFSPath::Erase",
                 {{"exception", failure.what()},
                  {"current", fPath},
                  {"argument", TwoNumbers(position, count)}});
  }
  return *this;
}

void CFSPath::Collapse() {
  constexpr std::string_view kUp = "/../";
  const bool isDouble = fPath.starts_with("//");
  std::string text;  // what is kept so far; holds no "//", and "/../" at its beginning alone
  text.reserve(fPath.size() + 1);
  char previous = '\0';
  for (const char c : fPath) {
    const char next = c == '\\' ? '/' : c;
    const bool isRepeated = next == '/' && previous == '/';
    previous = next;
    if (isRepeated) continue;
    text += next;
    if (text.size() <= kUp.size() || !text.ends_with(kUp)) continue;
    // The first one from the left ends first, so cutting here is cutting in that order.
    const std::size_t up = text.size() - kUp.size();
    const std::size_t slash = text.rfind('/', up - 1);
    text.resize(slash == std::string::npos ? 0 : slash + 1);
  }
  if (isDouble) text.insert(0, 1, '/');
  fPath = std::move(text);
  Normalize();
}
