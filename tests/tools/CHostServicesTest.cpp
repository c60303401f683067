#include "tools/tovrin/objects/CHostServices.h"

#include <gtest/gtest.h>

#include "json/JSONWrapper.h"

namespace RefHost {
namespace {

Tovrin::AutoRefPtr<Tovrin::IJSON> Shared(
    const Tovrin::AutoRefPtr<Tovrin::JSON::JSONWrapper>& json) {
  return Tovrin::Share<Tovrin::IJSON>(json.get());
}

template <class Action>
std::string Printed(Action action) {
  ::testing::internal::CaptureStderr();
  action();
  return ::testing::internal::GetCapturedStderr();
}

TEST(CHostServices, PrintsErrorsAndKeepsTheDebugLogClosed) {
  const Tovrin::AutoRefPtr<Tovrin::IHost> services(new CHostServices({}));
  EXPECT_FALSE(services->IsDebugActive());
  EXPECT_FALSE(services->IsLevelEnabled(1, "M"));
  EXPECT_FALSE(services->IsFunctionLevelEnabled(1, "M", "f"));
  EXPECT_EQ(Printed([&] { services->PrintError("M", "words", "", "Id", "C", "f", 0); }),
            "error Id in M, C::f: words\n");
  EXPECT_EQ(Printed([&] { services->PrintDebug(1, "M", "C", "f", "file", 7, "words"); }),
            "debug 1 in M, C::f (file:7): words\n");
  services->ApplyDebugConfiguration("all");
  EXPECT_FALSE(services->IsDebugActive());
}

TEST(CHostLogger, LetsThroughWhatIsSwitchedOn) {
  const Tovrin::AutoRefPtr<Tovrin::ILogger> logger(new CHostLogger);
  EXPECT_EQ(Printed([&] { logger->DebugLog("M", 1, "words", 5, nullptr); }), "");
  logger->SetDebugActivated(true);
  EXPECT_TRUE(logger->IsDebugLogEnabled("M", 1));
  EXPECT_FALSE(logger->IsDebugLogEnabled("M", 2));
  EXPECT_EQ(Printed([&] { logger->DebugLog("M", 1, "words", 5, nullptr); }),
            "debug 1 in M, transaction 5: words\n");
  logger->SetDebugLogLevelDefinition("3");
  EXPECT_TRUE(logger->IsDebugLogEnabled("M", 3));
  logger->SetDebugLogLevelDefinition("all");
  EXPECT_FALSE(logger->IsDebugLogEnabled("M", 4));

  EXPECT_EQ(Printed([&] { logger->ErrorLog("M", "words", 5, nullptr); }),
            "error in M, transaction 5: words\n");
  logger->SetErrorActivated(false);
  EXPECT_EQ(Printed([&] { logger->ErrorLog("M", "words", 5, nullptr); }), "");
}

TEST(CHostLogger, WritesJsonAsItsText) {
  const Tovrin::AutoRefPtr<Tovrin::ILogger> logger(new CHostLogger);
  const auto json = Shared(Tovrin::JSON::JSONWrapper::CreateObject());
  EXPECT_EQ(Printed([&] { logger->DebugLog("M", 1, json, 5, nullptr); }), "");
  logger->SetDebugActivated(true);
  logger->SetDebugLogLevel(2);
  EXPECT_EQ(Printed([&] { logger->DebugLog("M", 2, json, 5, nullptr); }),
            "debug 2 in M, transaction 5: {}\n");
  EXPECT_EQ(Printed([&] { logger->ErrorLog("M", json, 5, nullptr); }),
            "error in M, transaction 5: {}\n");
  EXPECT_EQ(
      Printed([&] { logger->ErrorLog("M", Tovrin::AutoRefPtr<Tovrin::IJSON>(), 5, nullptr); }),
      "error in M, transaction 5: \n");
  logger->SetErrorActivated(false);
  EXPECT_EQ(Printed([&] { logger->ErrorLog("M", json, 5, nullptr); }), "");
}

TEST(CHostLogger, KeepsUserDefinedLogsByName) {
  const Tovrin::AutoRefPtr<Tovrin::ILogger> logger(new CHostLogger);
  EXPECT_FALSE(logger->HasUserDefinedLog("audit"));
  EXPECT_EQ(Printed([&] { logger->UserDefinedLog("audit", 2, "words", 5, nullptr); }), "");
  EXPECT_TRUE(logger->CreateUserDefinedLog("audit", "data"));
  EXPECT_FALSE(logger->CreateUserDefinedLog("audit", "data"));
  EXPECT_TRUE(logger->IsUserDefinedLogEnabled("audit"));
  EXPECT_EQ(Printed([&] { logger->UserDefinedLog("audit", 2, "words", 5, nullptr); }),
            "audit 2, transaction 5: words\n");
  const auto json = Tovrin::JSON::JSONWrapper::CreateObject();
  EXPECT_EQ(Printed([&] { logger->UserDefinedLog("audit", 2, Shared(json), 5, nullptr); }),
            "audit 2, transaction 5: {}\n");
  logger->DeleteUserDefinedLog("audit");
  EXPECT_FALSE(logger->HasUserDefinedLog("audit"));
}

}  // namespace
}  // namespace RefHost
