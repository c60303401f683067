#pragma once

#include <optional>
#include <string>

// Words for the error codes of the operating system, in the two forms that reports carry:
//
//   OSErrorText(2)  "os error: 2 - 'No such file or directory'"
//   ErrnoText(2)    "errno: 2 - 'No such file or directory'"
//
// The text is on one line, in English whatever the locale, and free of the system's insert marks.
// A code without words keeps its number: "os error: 99999 - !!! FormatMessage failed !!!".
// Safe from any thread; errno is left as it was.
[[nodiscard]] std::string OSErrorText(int code);
[[nodiscard]] std::string ErrnoText(int code);

// A system's text made fit for a report: line breaks removed, each insert mark "%1" to "%6"
// replaced.
[[nodiscard]] std::string CleanSystemText(std::string text);

// The system's own words for a code, nothing when it has none. Behind this stands the platform.
[[nodiscard]] std::optional<std::string> SystemErrorWords(int code);
