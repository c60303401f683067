#include "Common/CException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <type_traits>

#include "Common/CRegexException.h"
#include "Common/CRegexVectorHolder.h"
#include "tests/Common/QuestionedHost.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string Printed(const CException& exception) {
  std::ostringstream text;
  text << exception;
  return text.str();
}

std::vector<std::string> Messages(const QuestionedHost& host) {
  std::vector<std::string> messages;
  for (const PrintedLine& line : host.fPrinted) messages.push_back(line.message);
  return messages;
}

constexpr Gates kClosed{.active = false};

// Names itself in each operation, and counts its deaths.
class Named final : public CException {
public:
  explicit Named(int* deaths) : fDeaths(deaths) {}
  ~Named() override { ++*fDeaths; }
  void GetReasonStr(std::string& reason) const override { reason = "reason"; }
  void Print(std::ostream& stream) const override { stream << "print"; }
  void GetClassName(std::string& className) const override { className = "class name"; }

private:
  int* const fDeaths;
};

// Calls an operation by its place in the table of the class that others were built against.
template <class... Arguments>
void CallSlot(CException* object, std::size_t slot, Arguments... arguments) {
  using Operation = void (*)(void*, Arguments...);
  const Operation* const operations = *reinterpret_cast<Operation* const*>(object);
  operations[slot](object, arguments...);
}

}  // namespace

TEST(CException, KeepsItsOperationsInOrder) {
  int deaths = 0;
  CException* const exception = new Named(&deaths);
  std::string text;
  std::ostringstream stream;
  CallSlot(exception, 2, &text);
  EXPECT_EQ(text, "reason");
  CallSlot<std::ostream*>(exception, 3, &stream);
  EXPECT_EQ(stream.str(), "print");
  CallSlot(exception, 4, &text);
  EXPECT_EQ(text, "class name");
  EXPECT_EQ(deaths, 0);
  CallSlot(exception, 1);  // of the two places of a destructor, the one that gives the memory back
  EXPECT_EQ(deaths, 1);
}

TEST(CException, PrintsThreeLines) {
  const HostInSlot host(kClosed);
  CRunTimeError numbered("y");
  numbered.fID = -9223372036854775807;
  const struct {
    std::string printed;
    const char* expected;
  } rows[] = {
      {Printed(CException()), "CException\nfID: 0\nfReason: \"\"\n"},
      {Printed(CException("r", 7)), "CException\nfID: 7\nfReason: \"r\"\n"},
      {Printed(CRunTimeError("x")), "CRunTimeError\nfID: 0\nfReason: \"x\"\n"},
      {Printed(numbered), "CRunTimeError\nfID: -9223372036854775807\nfReason: \"y\"\n"},
      {Printed(CCorruptConfigException("J", "bad")),
       "CCorruptConfigException\nfID: 0\nfReason: \"Configuration with javaID 'J' is corrupt. "
       "Reason: 'bad'.\"\n"},
      // The others print under the name of the root, whatever they are.
      {Printed(CRegexException("x")), "CException\nfID: 0\nfReason: \"x\"\n"},
      {Printed(CRegexVectorHolderException("x")), "CException\nfID: 0\nfReason: \"x\"\n"},
      {Printed(CMessageException("lost", 5)),
       "CException\nfID: 0\nfReason: \"lost on message socket 5\"\n"},
      {Printed(COSErrException(2, -1)),
       "CException\nfID: 0\nfReason: \"os error: 2 - 'No such file or directory' on socketfd "
       "-1\"\n"},
      {Printed(COSErrException(99999, 3)),
       "CException\nfID: 0\nfReason: \"os error: 99999 - !!! FormatMessage failed !!! on socketfd "
       "3\"\n"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.printed, row.expected);
}

TEST(CException, LeavesItsOwnReasonAloneWhenAskedIntoIt) {
  CException exception("reason");
  exception.GetReasonStr(exception.fReason);
  EXPECT_EQ(exception.fReason, "reason");

  std::string other = "before";
  exception.GetReasonStr(other);
  EXPECT_EQ(other, "reason");
}

TEST(CException, IsNoStandardException) {
  EXPECT_FALSE((std::is_base_of_v<std::exception, CException>));
  EXPECT_TRUE((std::is_base_of_v<ARunTimeError, CRegexException>));
  EXPECT_FALSE((std::is_base_of_v<ARunTimeError, COSErrException>));
}

TEST(CException, IsCaughtAsItsBaseAndKeepsItsReason) {
  const HostInSlot host(kClosed);
  try {
    throw CRunTimeError("x");
  } catch (const CException& exception) {
    std::string className;
    exception.GetClassName(className);
    EXPECT_EQ(className, "CRunTimeError");
    EXPECT_EQ(exception.Reason(), "x");
  }
}

TEST(ARunTimeError, LogsOneLineWhenItIsConstructed) {
  const HostInSlot host(Gates{});
  const CRunTimeError error("x");
  EXPECT_EQ(error.fExceptionSuperType, "RunTimeError");
  EXPECT_EQ(error.fExceptionName, "RunTimeError");
  EXPECT_THAT(host->fQuestions,
              ElementsAre("IsDebugActive", "IsLevelEnabled 3 Tessarin",
                          "IsFunctionLevelEnabled 3 Tessarin MakeDebugLogEntry", "PrintDebug"));
  ASSERT_EQ(host->fPrinted.size(), 1U);
  EXPECT_EQ(host->fPrinted[0].level, 3U);
  EXPECT_EQ(host->fPrinted[0].className, "ARunTimeError");
  EXPECT_EQ(host->fPrinted[0].function, "MakeDebugLogEntry");
  EXPECT_EQ(host->fPrinted[0].file, "Common\\CException");
  EXPECT_EQ(host->fPrinted[0].message, "RunTimeError 'RunTimeError' with reason: 'x'");
}

TEST(ARunTimeError, NamesEachConcreteClass) {
  const HostInSlot host(Gates{});
  const CRegexException regex("Runtime error in regex matching: 'x'");
  EXPECT_THAT(Messages(*host.Get()),
              ElementsAre("Regex 'Regex' with reason: 'Runtime error in regex matching: 'x''"));
}

TEST(ARunTimeError, WritesNothingWhenItsLevelIsOff) {
  const HostInSlot host(Gates{.level = false});
  const CRunTimeError error("x");
  EXPECT_THAT(host->fQuestions, ElementsAre("IsDebugActive", "IsLevelEnabled 3 Tessarin"));
}

TEST(ARunTimeError, LogsNothingWhenItIsCopied) {
  const HostInSlot host(Gates{});
  try {
    throw CRunTimeError("x");
  } catch (const CRunTimeError& caught) {
    CRunTimeError copy = caught;
    copy = caught;
    EXPECT_EQ(copy.Reason(), "x");
  }
  EXPECT_EQ(host->fPrinted.size(), 1U);
}

TEST(ARunTimeError, IsConstructedWithAHostThatThrowsFromEveryOperation) {
  for (const Throwing kind : {Throwing::Standard, Throwing::Other}) {
    const HostInSlot host(Gates{});
    host->ThrowFromAll(kind);
    EXPECT_NO_THROW(CRunTimeError("x"));
    EXPECT_NO_THROW(CCorruptConfigException("J", "x"));
  }
}

TEST(CCorruptConfigException, LogsItsTextAsAnErrorInFrontOfItsEntry) {
  const HostInSlot host(Gates{});
  const CCorruptConfigException error("J7", "no such key");
  const std::string text = "Configuration with javaID 'J7' is corrupt. Reason: 'no such key'.";
  EXPECT_EQ(error.Reason(), text);
  EXPECT_THAT(Messages(*host.Get()),
              ElementsAre(text, "CCorruptConfigException 'CCorruptConfigException' with reason: '" +
                                    text + "'"));
  EXPECT_EQ(host->fPrinted[0].level, 1U);
  EXPECT_EQ(host->fPrinted[0].className, "CCorruptConfigException");
  EXPECT_EQ(host->fPrinted[0].function, "CCorruptConfigException");
  EXPECT_EQ(host->fPrinted[1].level, 3U);
  EXPECT_THAT(host->fErrors, IsEmpty());
}

TEST(CMessageException, LogsNothing) {
  const HostInSlot host(Gates{});
  const CMessageException message("lost", 5);
  const COSErrException error(2, 5);
  EXPECT_THAT(host->fQuestions, IsEmpty());
}
