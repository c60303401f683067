#include "host/HostSlot.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/NeutralHost.h"

namespace {

using namespace Tovrin;

class RecordingHost final : public NeutralHost {
public:
  std::vector<std::string> lines;

private:
  void Interface_PrintError(const char* module, const char* message, const char* empty,
                            const char* errorId, const char* className, const char* function,
                            std::int32_t zero) override {
    lines.push_back(std::string(module) + "|" + message + "|" + empty + "|" + errorId + "|" +
                    className + "|" + function + "|" + std::to_string(zero));
  }
};

TEST(HostSlot, GivesItsHostWithAReference) {
  EXPECT_FALSE(GetHost());
  const AutoRefPtr<RecordingHost> host(new RecordingHost);
  HostSlot.store(host.get());
  {
    const AutoRefPtr<IHost> held = GetHost();
    EXPECT_EQ(held.get(), host.get());
    EXPECT_EQ(host->GetCount(), 2);
  }
  EXPECT_EQ(host->GetCount(), 1);
  HostSlot.store(nullptr);
}

// Is built before all that may report to the host, and goes after it.
class LateReporter {
public:
  ~LateReporter() {
    if (fIsToReport) std::fputs(GetHost() ? "the host is there\n" : "no host\n", stderr);
  }
  bool fIsToReport = false;
};
[[gnu::init_priority(151)]] LateReporter gLateReporter;

TEST(HostSlotDeathTest, KeepsItsHostForWhateverReportsAtTheEnd) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        HostSlot.store(new RecordingHost);
        gLateReporter.fIsToReport = true;
        std::exit(0);
      },
      testing::ExitedWithCode(0), "the host is there");
}

TEST(IHost, HasDefaultsForTheServicesBehindTheContract) {
  const AutoRefPtr<RecordingHost> host(new RecordingHost);
  host->ReportFatalError("no memory");
  EXPECT_EQ(host->lines, (std::vector<std::string>{"Tessarin|no memory||OutOfMemory|||0"}));
  char path[8] = "path";
  std::uint32_t flags = 7;
  EXPECT_FALSE(host->GetTemporaryFile(path, sizeof path, path, sizeof path, &flags));
  EXPECT_STREQ(path, "path");
  EXPECT_EQ(flags, 7u);
}

}  // namespace
