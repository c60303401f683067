#include "Common/DebugLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <locale>
#include <regex>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "Common/CRegex.h"
#include "Common/CRegexException.h"
#include "Libs/Threads/CCriticalSection.h"
#include "tests/Common/QuestionedHost.h"

qxSource("Common\\DebugLogTest");

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kFunction = "CVariant::GetLong";

std::string StderrOf(const auto& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

struct Unstreamable {};

struct ThrowsOnStream {
  bool standard;
};
std::ostream& operator<<(std::ostream&, ThrowsOnStream kind) {
  if (kind.standard) throw std::runtime_error("no text");
  throw 42;
}

// Throws from every operation, counting its references included; or from all but the first of them,
// without which nobody comes to the others.
class ThrowingHost final : public Tovrin::IHost {
public:
  enum Kind { AtOnce, OnceHeld };
  explicit ThrowingHost(Kind kind) : fKind(kind) {}

private:
  void Interface_AddRef() const override {
    if (fKind == AtOnce) throw std::runtime_error("AddRef");
  }
  bool Interface_Release() const override { throw std::runtime_error("Release"); }
  std::int32_t Interface_GetCount() const override { throw std::runtime_error("GetCount"); }
  void Interface_PrintError(const char*, const char*, const char*, const char*, const char*,
                            const char*, std::int32_t) override {
    throw 42;
  }
  void Interface_PrintDebug(std::uint32_t, const char*, const char*, const char*, const char*,
                            std::uint32_t, const char*) override {
    throw 42;
  }
  bool Interface_IsDebugActive() const override { throw 42; }
  bool Interface_IsFunctionLevelEnabled(std::uint32_t, const char*, const char*) const override {
    throw 42;
  }
  bool Interface_IsLevelEnabled(std::uint32_t, const char*) const override { throw 42; }
  void Interface_ApplyDebugConfiguration(const char*) override { throw 42; }

  const Kind fKind;
};

}  // namespace

// ---- the gates

TEST(DebugGates, SayYesWithoutAHost) {
  EXPECT_TRUE(DebugIsActive());
  EXPECT_TRUE(DebugLevelEnabled(3, "Tessarin"));
  EXPECT_TRUE(DebugFunctionEnabled(3, "Tessarin", "GetLong"));
}

TEST(DebugGates, PassWhatTheyAreGivenToTheHost) {
  const HostInSlot host(Gates{});
  EXPECT_TRUE(DebugIsActive());
  EXPECT_TRUE(DebugLevelEnabled(7, "M"));
  EXPECT_TRUE(DebugFunctionEnabled(8, "N", "F"));
  EXPECT_THAT(host->fQuestions,
              ElementsAre("IsDebugActive", "IsLevelEnabled 7 M", "IsFunctionLevelEnabled 8 N F"));
}

TEST(DebugGates, DoNotAskAboutLevelOne) {
  const HostInSlot host(Gates{.level = false, .function = false});
  EXPECT_TRUE(DebugLevelEnabled(1, "Tessarin"));
  EXPECT_TRUE(DebugFunctionEnabled(1, "Tessarin", "GetLong"));
  EXPECT_THAT(host->fQuestions, IsEmpty());
}

TEST(ADebugLine, AsksTheGatesInTheirOrder) {
  const std::string active = "IsDebugActive";
  const std::string level = "IsLevelEnabled 3 Tessarin";
  const std::string function = "IsFunctionLevelEnabled 3 Tessarin GetLong";
  const std::string print = "PrintDebug";
  const struct {
    std::uint32_t level;
    Gates gates;
    std::vector<std::string> questions;
  } rows[] = {
      {3, {.active = false}, {active}},
      {3, {.level = false}, {active, level}},
      {3, {.function = false}, {active, level, function}},
      {3, {}, {active, level, function, print}},
      // Level 1 passes the two inner gates unasked; the outer one still holds.
      {1, {.active = false}, {active}},
      {1, {.level = false, .function = false}, {active, print}},
      {1, {}, {active, print}},
  };
  for (const auto& row : rows) {
    const HostInSlot host(row.gates);
    qxDebugPrint(row.level, kFunction, "text");
    EXPECT_EQ(host->fQuestions, row.questions) << row.level << ' ' << Describe(row.gates);
    EXPECT_EQ(host->GetCount(), HostInSlot::kReferences);
  }
}

// ---- what arrives

TEST(ADebugLine, DeliversItsFieldsApart) {
  const HostInSlot host(Gates{});
  const std::uint32_t line = __LINE__ + 1;
  qxDebugPrint(3, kFunction, "read " << 5 << " of type " << 'x');
  ASSERT_EQ(host->fPrinted.size(), 1U);
  EXPECT_EQ(host->fPrinted[0], (PrintedLine{3, "Tessarin", "CVariant", "GetLong",
                                            "Common\\DebugLogTest", line, "read 5 of type x"}));
}

TEST(ADebugLine, IsTheSameInEveryLocale) {
  struct GroupingByThree : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const HostInSlot host(Gates{});
  const std::locale before = std::locale::global(std::locale({}, new GroupingByThree));
  qxDebugPrint(3, kFunction, 1234567);
  std::locale::global(before);
  ASSERT_EQ(host->fPrinted.size(), 1U);
  EXPECT_EQ(host->fPrinted[0].message, "1234567");
}

TEST(ADebugLine, IsOneStatement) {
  const HostInSlot host(Gates{});
  for (int i = 0; i < 2; ++i)
    if (i == 0)
      qxDebugPrint(3, kFunction, "if");
    else
      qxDebugPrint(3, kFunction, "else");
  ASSERT_EQ(host->fPrinted.size(), 2U);
  EXPECT_EQ(host->fPrinted[1].message, "else");
}

TEST(ADebugLine, ComesFromAnyThread) {
  const HostInSlot host(Gates{});
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([] {
      for (int n = 0; n < 50; ++n) qxDebugPrint(3, kFunction, "line " << n);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(host->fPrinted.size(), 400U);
}

TEST(AReport, RendersItsRowAsOneDebugLine) {
  const HostInSlot host(Gates{.level = false, .function = false});
  const std::uint32_t line = __LINE__ + 1;
  qxReport(ErrorId::ObjNotInitialized, "CVariant::find",
           {{"onPosition", "CVariant: find"}, {"objName", "Variant"}});
  EXPECT_THAT(host->fQuestions, ElementsAre("IsDebugActive", "PrintDebug"));
  ASSERT_EQ(host->fPrinted.size(), 1U);
  EXPECT_EQ(host->fPrinted[0],
            (PrintedLine{1, "Tessarin", "CVariant", "find", "Common\\DebugLogTest", line,
                         "'CVariant: find': No initialized Variant."}));
  EXPECT_THAT(host->fErrors, IsEmpty());
}

TEST(AReport, NamesAParameterThatItCannotWrite) {
  const HostInSlot host(Gates{});
  qxReport(ErrorId::InternalError, kFunction, {{"msg", Unstreamable{}}});
  ASSERT_EQ(host->fPrinted.size(), 2U);
  EXPECT_EQ(host->fPrinted[0].level, 1U);
  EXPECT_EQ(host->fPrinted[0].message, "Unknown type of parameter. Will be set to empty type.");
  EXPECT_EQ(host->fPrinted[1].message, "''");
}

TEST(AnErrorSite, ReachesTheErrorLogAndTheDebugLog) {
  const HostInSlot host(Gates{.level = false, .function = false});
  const std::uint32_t line = __LINE__ + 1;
  qxReportError(ErrorId::InternalError, kFunction, {{"msg", "x"}});
  EXPECT_THAT(host->fQuestions, ElementsAre("PrintError", "IsDebugActive", "PrintDebug"));
  ASSERT_EQ(host->fErrors.size(), 1U);
  EXPECT_EQ(host->fErrors[0],
            (PrintedError{"Tessarin", "'x'", "", "InternalError", "CVariant", "GetLong", 0}));
  ASSERT_EQ(host->fPrinted.size(), 1U);
  EXPECT_EQ(host->fPrinted[0], (PrintedLine{1, "Tessarin", "CVariant", "GetLong",
                                            "Common\\DebugLogTest", line, "'x'"}));
}

TEST(AnErrorSite, ReachesTheErrorLogAloneWhenDebuggingIsOff) {
  const HostInSlot host(Gates{.active = false});
  qxReportError(ErrorId::InternalError, kFunction, {{"msg", "x"}});
  EXPECT_THAT(host->fQuestions, ElementsAre("PrintError", "IsDebugActive"));
}

TEST(AnErrorSite, TellsOfALockThatCouldNotBeMade) {
  const HostInSlot host(Gates{});
  const auto report = CCriticalSection::SetFailureReporter(nullptr);
  CCriticalSection::SetFailureReporter(report);
  ASSERT_NE(report, nullptr);
  report("InitializeCriticalSectionAndSpinCount", EAGAIN);

  const std::string message =
      "OS error while calling 'InitializeCriticalSectionAndSpinCount'. Errorcode: '11' - "
      "'os error: 11 - 'Resource temporarily unavailable''.";
  ASSERT_EQ(host->fErrors.size(), 1U);
  EXPECT_EQ(host->fErrors[0], (PrintedError{"Tessarin", message, "", "OS", "CCriticalSection",
                                            "CCriticalSection", 0}));
  ASSERT_EQ(host->fPrinted.size(), 1U);
  EXPECT_EQ(host->fPrinted[0].file, "Libs\\Threads\\CCriticalSection");
  EXPECT_EQ(host->fPrinted[0].message, message);
}

// ---- without a host

TEST(WithoutAHost, LinesGoToStandardError) {
  EXPECT_EQ(StderrOf([] { qxDebugPrint(3, kFunction, "text " << 1); }),
            "Could not get IHost while trying to print/resolve debug message 'text 1'\n");
  EXPECT_EQ(StderrOf([] {
              qxReport(ErrorId::InternalError, kFunction, {{"msg", "x"}});
            }),
            "Could not get IHost while trying to print/resolve debug message ''x''\n");
  EXPECT_EQ(StderrOf([] { ErrorPrint("M", "text", "Id", "C", "f"); }),
            "Could not get IHost while trying to print error message 'text'\n");
}

TEST(WithoutAHost, AnErrorSitePrintsBothLines) {
  EXPECT_EQ(StderrOf([] {
              qxReportError(ErrorId::InternalError, kFunction, {{"msg", "x"}});
            }),
            "Could not get IHost while trying to print error message ''x''\n"
            "Could not get IHost while trying to print/resolve debug message ''x''\n");
}

TEST(WithoutAHost, LinesStopOnceThereIsOneAndComeBackWhenItIsGone) {
  {
    const HostInSlot host(Gates{});
    EXPECT_EQ(StderrOf([] { qxDebugPrint(3, kFunction, "text"); }), "");
  }
  EXPECT_NE(StderrOf([] { qxDebugPrint(3, kFunction, "text"); }), "");
}

// ---- when logging fails

TEST(AFailingSite, PrintsWhatWasThrownAndGoesOn) {
  const std::string standard =
      "caught exception 'no text' in qxDebugPrint while trying to print debug message "
      "'_qxerr_err.get()'";
  const PrintedLine frame{1, "", "", "", "", 0, ""};
  const HostInSlot host(Gates{});

  qxDebugPrint(3, kFunction, "a" << ThrowsOnStream{true});
  qxDebugPrint(3, kFunction, "a" << ThrowsOnStream{false} << "b, c");
  qxReport(ErrorId::InternalError, kFunction, {{"msg", ThrowsOnStream{true}}});
  qxReport(ErrorId::InternalError, kFunction, {{"msg", ThrowsOnStream{false}}});
  qxReportError(ErrorId::InternalError, kFunction, {{"msg", ThrowsOnStream{true}}});

  std::vector<std::string> messages;
  for (PrintedLine line : host->fPrinted) {
    messages.push_back(std::exchange(line.message, ""));
    EXPECT_EQ(line, frame);
  }
  EXPECT_THAT(
      messages,
      ElementsAre(standard,
                  "caught exception 'UNKNOWN' in qxDebugPrint while trying to print debug message "
                  "'\"a\" << ThrowsOnStream{false} << \"b, c\"'",
                  standard,
                  "caught exception 'UNKNOWN' in qxDebugPrint while trying to print debug message "
                  "'ErrorId::InternalError'",
                  standard));
}

TEST(AFailingSite, SurvivesAHostThatThrowsOnce) {
  for (const Throwing kind : {Throwing::Standard, Throwing::Other}) {
    const HostInSlot host(Gates{});
    host->ThrowFrom("PrintDebug", kind, 1);
    qxDebugPrint(3, kFunction, "text");
    ASSERT_EQ(host->fPrinted.size(), 1U);
    EXPECT_EQ(host->fPrinted[0].message,
              kind == Throwing::Standard
                  ? "caught exception 'PrintDebug' in qxDebugPrint while trying to print debug "
                    "message '_qxerr_err.get()'"
                  : "caught exception 'UNKNOWN' in qxDebugPrint while trying to print debug "
                    "message '\"text\"'");
  }
}

TEST(AFailingSite, IsUndisturbedByAHostThatThrowsFromEveryOperation) {
  for (const Throwing kind : {Throwing::Standard, Throwing::Other}) {
    const HostInSlot host(Gates{});
    host->ThrowFromAll(kind);
    EXPECT_NO_THROW(qxDebugPrint(3, kFunction, "text"));
    EXPECT_NO_THROW(qxDebugPrint(1, kFunction, "text"));
    EXPECT_NO_THROW(qxReport(ErrorId::InternalError, kFunction, {{"msg", "x"}}));
    EXPECT_NO_THROW(qxReportError(ErrorId::InternalError, kFunction, {{"msg", "x"}}));
    EXPECT_EQ(host->GetCount(), HostInSlot::kReferences);
  }
}

TEST(AFailingSite, DoesNotDisturbAMatchUnderAHostThatCannotEvenBeHeld) {
  static ThrowingHost host(ThrowingHost::AtOnce);
  Tovrin::HostSlot.store(&host);
  const CRegexPtr bad = CRegex::Create("(unclosed", false);
  const CRegexPtr good = CRegex::Create("a+b", false);
  const bool matches = good && good->Matches("AAB");
  EXPECT_NO_THROW(qxReport(ErrorId::InternalError, kFunction, {{"msg", "x"}}));
  EXPECT_NO_THROW(qxReportError(ErrorId::InternalError, kFunction, {{"msg", "x"}}));
  EXPECT_NO_THROW(CRegexException("x"));
  Tovrin::HostSlot.store(nullptr);
  EXPECT_FALSE(bad);
  EXPECT_TRUE(matches);
}

// The error log and the debug log are two: the failure of the first costs its own line alone.
TEST(AFailingSite, KeepsTheDebugCopyOfAnErrorThatTheErrorLogRefuses) {
  for (const Throwing kind : {Throwing::Standard, Throwing::Other}) {
    const HostInSlot host(Gates{});
    host->ThrowFrom("PrintError", kind, 1);
    qxReportError(ErrorId::InternalError, kFunction, {{"msg", "x"}});
    EXPECT_THAT(host->fErrors, IsEmpty());
    ASSERT_EQ(host->fPrinted.size(), 2U);
    EXPECT_EQ(host->fPrinted[0].message,
              kind == Throwing::Standard
                  ? "caught exception 'PrintError' in qxDebugPrint while trying to print debug "
                    "message '_qxerr_err.get()'"
                  : "caught exception 'UNKNOWN' in qxDebugPrint while trying to print debug "
                    "message 'ErrorId::InternalError'");
    EXPECT_EQ(host->fPrinted[1].message, "'x'");
  }
}

TEST(AFailingSite, SurvivesAHostThatCannotBeLetGo) {
  static ThrowingHost host(ThrowingHost::OnceHeld);
  Tovrin::HostSlot.store(&host);
  EXPECT_NO_THROW(qxDebugPrint(3, kFunction, "text"));
  EXPECT_NO_THROW(qxReport(ErrorId::InternalError, kFunction, {{"msg", "x"}}));
  EXPECT_NO_THROW(qxReportError(ErrorId::InternalError, kFunction, {{"msg", "x"}}));
  EXPECT_NO_THROW(CRegexException("x"));
  const CRegexPtr good = CRegex::Create("a+b", false);
  EXPECT_FALSE(CRegex::Create("(unclosed", false));
  EXPECT_TRUE(good && good->Matches("AAB"));
  Tovrin::HostSlot.store(nullptr);
}

TEST(ReportLogFailure, JoinsExceptionAndText) {
  const std::runtime_error error("what");
  const struct {
    const std::exception* exception;
    const char* text;
    const char* begin;
  } rows[] = {
      {&error, nullptr, "caught exception 'what' in "},
      {nullptr, "UNKNOWN", "caught exception 'UNKNOWN' in "},
      {&error, "text", "caught exception 'what - text' in "},
      {nullptr, nullptr, "caught exception '' in "},
  };
  for (const auto& row : rows) {
    const HostInSlot host(Gates{});
    ReportLogFailure(row.exception, row.text, "expression");
    ASSERT_EQ(host->fPrinted.size(), 1U);
    EXPECT_EQ(
        host->fPrinted[0].message,
        std::string(row.begin) + "qxDebugPrint while trying to print debug message 'expression'");
    EXPECT_THAT(host->fQuestions, ElementsAre("PrintDebug"));
  }
}

TEST(ReportLogFailure, LetsOutWhatTheHostThrows) {
  const HostInSlot host(Gates{});
  host->ThrowFromAll(Throwing::Standard);
  EXPECT_THROW(ReportLogFailure(nullptr, "text", "expression"), std::runtime_error);
}

// ---- local helpers

TEST(DebugToFile, HandsTheHostAConfiguration) {
  DebugToFileAppend("/tmp/a b");  // no host, no effect
  DebugToFileOff("/tmp/a b");
  const HostInSlot host(Gates{});
  DebugToFileAppend("/tmp/a b");
  DebugToFileOff("/tmp/a b");
  EXPECT_THAT(host->fConfigurations,
              ElementsAre("file:out=/tmp/a b;options:file=append;threadids:ALL=no,THIS=yes",
                          "file:out=/tmp/a b;options:file=off"));
}

TEST(DebugLog, BearsTheModulesName) {
  EXPECT_STREQ(GetModuleName(), "Tessarin");
}

TEST(SplitFunctionName, FollowsItsRulesToTheLetter) {
  const std::string space(300, 'n');
  const std::string longName = space + "::" + space + "C::" + space + "f";
  const std::string longClass = space + "C";
  const std::string longFunction = space + "f";
  const struct {
    const char* signature;
    const char* className;
    const char* function;
  } rows[] = {
      // Plain names.
      {"CVariant::GetLong", "CVariant", "GetLong"},
      {"GetLong", "", "GetLong"},
      {"", "", ""},
      {"::GetLong", "", "GetLong"},
      {"CVariant::", "CVariant", ""},
      {"a::b::c::CVariant::GetLong", "CVariant", "GetLong"},
      // Signatures: parameters, namespaces, return type and calling convention fall away.
      {"virtual std::int64_t CVariant::GetLong() const", "CVariant", "GetLong"},
      {"void Selvane::Deep::CVariant::Sort(bool)", "CVariant", "Sort"},
      {"void __cdecl CVariant::Clear(void)", "CVariant", "Clear"},
      {"int main(int, char**)", "", "main"},
      {"void f(std::vector<A::B>)", "", "f"},
      {"CRegex::CRegex(const std::string&)", "CRegex", "CRegex"},
      {"CRegex::~CRegex()", "CRegex", "~CRegex"},
      {"const char *C::f()", "*C", "f"},
      // Template arguments, with anything in them.
      {"void CList<std::pair<A::B, C> >::Add(const T&) [with T = std::vector<int>]", "CList",
       "Add"},
      {"void CList<std::pair<A::B, C>>::Add(const T&) [T = int]", "CList", "Add"},
      {"T Selvane::Max<A::B>(T, T)", "Selvane", "Max"},
      {"int CArray[3]::f()", "CArray", "f"},
      // Operators. A "<" with nothing to close it ends the removal, and keeps what stands before.
      {"bool CKey::operator<(const CKey&) const", "CKey", "operator<"},
      {"bool C<T>::operator<(const C&) const", "C<T>", "operator<"},
      {"auto C<T>::operator<=>(const C&) const", "C", "operator"},
      {"C& C::operator->()", "C", "operator->"},
      {"bool C::operator()(int) const", "C", "operator"},
      {"int& C::operator[](int)", "C", "operator"},
      {"C::operator bool() const", "C", "operator bool"},
      // Lambdas and unnamed namespaces.
      {"CVariant::Sort(bool)::<lambda(int)>", "CVariant", "Sort"},
      {"auto C::f()::(anonymous class)::operator()() const", "C", "f"},
      {"int (anonymous namespace)::Helper()", "", ""},
      // A free function's qualified return type is taken for its class.
      {"std::string f(int)", "std", "string f"},
      // No length is too long.
      {longName.c_str(), longClass.c_str(), longFunction.c_str()},
  };
  for (const auto& row : rows) {
    std::string className = "before";
    std::string function = "before";
    SplitFunctionName(row.signature, className, function);
    EXPECT_EQ(className, row.className) << row.signature;
    EXPECT_EQ(function, row.function) << row.signature;
  }
}

// ---- the backtrace

namespace {

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string Backtrace() {
  std::ostringstream text;
  WriteBacktrace(text);
  return text.str();
}

std::string BacktraceOf(std::vector<std::uintptr_t> frames) {
  std::ostringstream text;
  WriteBacktraceOf(text, frames);
  return text.str();
}

[[gnu::noinline]] std::string BacktraceFromDepth(int depth) {
  std::string text = depth == 0 ? Backtrace() : BacktraceFromDepth(depth - 1);
  return text += "";  // not a tail call
}

// A backtrace, and where in its caller the function comes back to.
[[gnu::noinline]] std::pair<std::string, std::uintptr_t> BacktraceAndCaller() {
  std::ostringstream text;
  WriteBacktrace(text);
  return {text.str(), reinterpret_cast<std::uintptr_t>(__builtin_return_address(0))};
}

// Checks the form of a whole backtrace and returns its number of frames.
std::size_t CheckForm(const std::string& text) {
  static const std::regex frame("\\*\\*\\* (\\d+): (\\d+) .* - 0x([0-9a-f]+)");
  const std::vector<std::string> lines = LinesOf(text);
  EXPECT_GE(lines.size(), 3U);
  if (lines.size() < 3) return 0;
  EXPECT_EQ(lines[0], "");
  EXPECT_EQ(lines[1], "--backtrace start--");
  EXPECT_EQ(lines.back(), "--backtrace end--");
  for (std::size_t i = 2; i + 1 < lines.size(); ++i) {
    std::smatch parts;
    EXPECT_TRUE(std::regex_match(lines[i], parts, frame)) << lines[i];
    EXPECT_EQ(parts.str(1), std::to_string(i - 1)) << lines[i];
  }
  return lines.size() - 3;
}

}  // namespace

TEST(Backtrace, WritesOneLineAFrameFromIndexOne) {
  EXPECT_GE(CheckForm(Backtrace()), 3U);
}

TEST(Backtrace, BeginsWithItsCaller) {
  const auto [text, caller] = BacktraceAndCaller();
  EXPECT_NE(text.find("\n*** 2: " + std::to_string(caller) + ' '), std::string::npos) << text;
}

TEST(Backtrace, EndsWithTheSixtiethFrame) {
  EXPECT_EQ(CheckForm(BacktraceFromDepth(200)), 60U);
  EXPECT_FALSE(Backtrace().ends_with('\n'));
}

TEST(Backtrace, SkipsTheFirstFrameAndWritesNumbersPlain) {
  EXPECT_EQ(BacktraceOf({5, 255}), "\n--backtrace start--\n*** 1: 255  - 0x0\n--backtrace end--");
}

TEST(Backtrace, MarksAnEmptyStackButNotOneWithoutCallers) {
  EXPECT_EQ(BacktraceOf({}), "\n--backtrace start--\n -EMPTY-\n--backtrace end--");
  EXPECT_EQ(BacktraceOf({5}), "\n--backtrace start--\n--backtrace end--");
}

TEST(Backtrace, IsWholeWithManyThreadsAtIt) {
  std::array<std::string, 8> texts;
  std::vector<std::thread> threads;
  for (std::string& text : texts) threads.emplace_back([&text] { text = BacktraceFromDepth(20); });
  for (std::thread& thread : threads) thread.join();
  for (const std::string& text : texts) EXPECT_GE(CheckForm(text), 20U);
}
