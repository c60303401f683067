#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "Common/CRegexException.h"

// What the sources of CRegex share, and who explains its verdicts.

// What the operations say that failed. The first is Matches on bytes, the second every other match
// of a whole text.
inline constexpr const char* kMatchingFailed = "Runtime error in regex matching";
inline constexpr const char* kOtherMatchingFailed = "Internal error in regex matching";

// The one exception that callers know, for a failure of the engine.
inline CRegexException EngineFailure(const char* operation, const std::exception& failure) {
  return CRegexException(std::string(operation) + ": '" + failure.what() + "'");
}

// Runs an engine call, and turns its failure into that exception.
template <class Call>
auto Guarded(const char* operation, Call call) {
  try {
    return call();
  } catch (const std::exception& failure) {
    throw EngineFailure(operation, failure);
  }
}

// The text without its case marks; every expression here is without regard to case.
//
// Contract: a plain text removal, for wildcards too. It goes on behind each removal, so a mark that
// only a removal brings together stays, and it asks for no backslash.
inline std::string WithoutCaseMarks(std::string_view text) {
  constexpr std::string_view kCaseMark = "(?i)";
  std::string rest;
  rest.reserve(text.size());
  for (;;) {
    const std::size_t mark = text.find(kCaseMark);
    rest.append(text.substr(0, mark));
    if (mark == std::string_view::npos) return rest;
    text.remove_prefix(mark + kCaseMark.size());
  }
}
