#pragma once

#include <cstdint>
#include <exception>
#include <ostream>
#include <span>
#include <sstream>
#include <string>

#include "Common/ErrorCatalogue.h"

// The module's side of the log. Every line goes to the host through its IHost; the host decides
// what is wanted, and how a line looks. Before a host is set every gate says yes, and every line
// goes to standard error, so that nothing of an early start-up is lost.
//
// Sites use the macros at the end of this page and nothing else:
//
//   qxSource("Common\\CVariant");   // once a unit: the path that its lines show
//
//   qxDebugPrint(3, "CVariant::GetLong", "read type " << fType);
//   qxReport(ErrorId::FormatError, "CVariant::GetLong", {{"onPosition", "CVariant: GetLong"},
//   ...});
//
// Any thread may log at any time; nothing here takes a lock, the backtrace excepted. Level 1 is the
// level of errors, level 3 that of the routine trace.

// ---- gates and prints. What they get is passed on as it is, so that a line that is off makes no
// text.

bool DebugIsActive();
bool DebugLevelEnabled(std::uint32_t level, const char* module);
bool DebugFunctionEnabled(std::uint32_t level, const char* module, const char* function);
void DebugPrint(std::uint32_t level, const char* module, const char* className,
                const char* function, const char* file, std::uint32_t line, const char* message);
void ErrorPrint(const char* module, const char* message, const char* errorId, const char* className,
                const char* function);

// Ask the host to write this thread's lines to a file as well, and to stop it. Nothing without a
// host.
void DebugToFileAppend(const char* path);
void DebugToFileOff(const char* path);

// The module's name in every line.
const char* GetModuleName();

// ---- helpers of the sites

// Class and function of a signature, "CVariant::GetLong" or what a compiler's macro gives. Template
// arguments, bracketed parts, parameters, namespaces and the return type fall away.
//
// Contract: the rules are literal. A last "<" without a ">" behind it ends the removal, and a free
// function that returns a std::string splits into class "std", function "string f".
void SplitFunctionName(const char* signature, std::string& className, std::string& function);

// Writes the calling thread's stack, one line a frame without its own, at most 60 of them:
// "*** INDEX: ADDRESS SYMBOL - 0xSYMBOLADDRESS", between a start and an end line. One at a time.
void WriteBacktrace(std::ostream& stream);

// The same for a stack captured elsewhere, whose first frame is not shown.
void WriteBacktraceOf(std::ostream& stream, std::span<const std::uintptr_t> frames);

// The last resort: prints at level 1 that a site failed with this exception, or with this text, or
// both, while it made the message that expression gives. Lets out what the host throws.
void ReportLogFailure(const std::exception* exception, const char* text, const char* expression);

// ---- what stands behind the macros

// Where a line comes from. Holds only what the site spelled out, so making one costs nothing.
struct LogSite {
  std::uint32_t level;
  const char* function;  // "CVariant::GetLong"
  const char* file;      // the path of qxSource
  std::uint32_t line;

  bool IsOn() const;  // asks the gates in their order
  void Print(const char* message) const;
};

// A line in the making, begun once the gates have said yes.
class LogLine {
public:
  explicit LogLine(const LogSite& site);

  std::ostream& Text() { return fText; }
  void Print() const { fSite.Print(fText.str().c_str()); }

private:
  const LogSite& fSite;
  std::ostringstream fText;
};

// Writes the report of a row as a debug line, if the gates let it through. The parameters are made
// by the caller behind the gates.
void PrintReport(const LogSite& site, const CErrorId& row, const CErrorParameters& parameters);

// Writes the report of a row to the error log, and, if the gates let it through, as a debug line,
// also when the error log fails. The expression is for that case.
void PrintError(const LogSite& site, const CErrorId& row, const char* expression,
                const CErrorParameters& parameters);

// ReportLogFailure for a site: drops what even that throws, for the operation being logged goes on.
void SiteFailed(const std::exception* exception, const char* text, const char* expression);

// Names the unit's source below the library's root, with one backslash at run time on every
// platform.
#define qxSource(path)                                         \
  namespace {                                                  \
  [[maybe_unused]] constexpr const char* kQxSourcePath = path; \
  }                                                            \
  static_assert(true)

// The guard of every site: a failure while logging must not become one of what is being logged.
#define qxGuardedSite(expressionText, ...)                     \
  do {                                                         \
    try {                                                      \
      __VA_ARGS__                                              \
    } catch (const std::exception& qxException) {              \
      ::SiteFailed(&qxException, nullptr, "_qxerr_err.get()"); \
    } catch (...) {                                            \
      ::SiteFailed(nullptr, "UNKNOWN", expressionText);        \
    }                                                          \
  } while (false)

// A debug line: qxDebugPrint(3, "Class::Function", "count " << count). Behind a closed gate the
// expression is not evaluated.
#define qxDebugPrint(level, functionName, ...)                                                   \
  qxGuardedSite(                                                                                 \
      #__VA_ARGS__,                                                                              \
      if (const ::LogSite qxSite{level, functionName, kQxSourcePath, __LINE__}; qxSite.IsOn()) { \
        ::LogLine qxLine(qxSite);                                                                \
        qxLine.Text() << __VA_ARGS__;                                                            \
        qxLine.Print();                                                                          \
      })

// One misuse, one report: the row as a debug line at level 1. Behind a closed gate neither the
// parameters nor the text are made.
#define qxReport(row, functionName, ...)                                          \
  qxGuardedSite(                                                                  \
      #row, if (const ::LogSite qxSite{1, functionName, kQxSourcePath, __LINE__}; \
                qxSite.IsOn()) { ::PrintReport(qxSite, row, __VA_ARGS__); })

// An error: the row to the host's error log, and as a debug line besides.
#define qxReportError(row, functionName, ...) \
  qxGuardedSite(#row,                         \
                ::PrintError({1, functionName, kQxSourcePath, __LINE__}, row, #row, __VA_ARGS__);)
