#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

// One capture: the whole match, or a group. Reads as the text that it took.
struct CRegexCapture {
  bool matched = false;   // false for a group that took no part
  std::string_view text;  // into the text that was matched; empty when nothing did

  std::string_view Text() const { return text; }
  operator std::string_view() const { return text; }
};

// What a match took: 0 is the whole match, the groups follow in the order of their brackets. Empty
// after a failure.
//
// Everything here is a view into the caller's text and lives no longer than that. One object serves
// call after call, and keeps its room.
class CRegexCaptures {
public:
  std::size_t Size() const { return fCaptures.size(); }
  bool Empty() const { return fCaptures.empty(); }
  const CRegexCapture& operator[](std::size_t index) const { return fCaptures[index]; }
  auto begin() const { return fCaptures.begin(); }
  auto end() const { return fCaptures.end(); }

  // The text before and behind the whole match.
  std::string_view Prefix() const { return fPrefix; }
  std::string_view Suffix() const { return fSuffix; }

  // For the engine, which fills what it hands out.

  void Clear() {
    fCaptures.clear();
    fPrefix = fSuffix = {};
  }
  void Append(CRegexCapture capture) { fCaptures.push_back(capture); }
  // Once the whole match stands at 0; text is what it was found in.
  void SetSurroundings(std::string_view text) {
    const std::string_view whole = fCaptures.front().text;
    const auto start = static_cast<std::size_t>(whole.data() - text.data());
    fPrefix = text.substr(0, start);
    fSuffix = text.substr(start + whole.size());
  }

private:
  std::vector<CRegexCapture> fCaptures;
  std::string_view fPrefix;
  std::string_view fSuffix;
};
