// What a line that is off costs.
#include <gtest/gtest.h>

#include <string>

#include "Common/CException.h"
#include "Common/DebugLog.h"
#include "tests/Common/QuestionedHost.h"
#include "tests/support/AllocationCount.h"

qxSource("Common\\DebugLogOffTest");

namespace {

// Answers the gates and counts what comes through, without an allocation of its own.
class CountingHost : public Tovrin::InterfaceImpl<Tovrin::IHost> {
public:
  explicit CountingHost(Gates gates) : fGates(gates) {}

  int fLineCount = 0;

private:
  void Interface_PrintError(const char*, const char*, const char*, const char*, const char*,
                            const char*, std::int32_t) override {}
  void Interface_PrintDebug(std::uint32_t, const char*, const char*, const char*, const char*,
                            std::uint32_t, const char*) override {
    ++fLineCount;
  }
  bool Interface_IsDebugActive() const override { return fGates.active; }
  bool Interface_IsFunctionLevelEnabled(std::uint32_t, const char*, const char*) const override {
    return fGates.function;
  }
  bool Interface_IsLevelEnabled(std::uint32_t, const char*) const override { return fGates.level; }
  void Interface_ApplyDebugConfiguration(const char*) override {}

  const Gates fGates;
};

int evaluationCount = 0;

std::string Evaluated() {
  ++evaluationCount;
  return "a text that is longer than any string keeps inside of itself";
}

// The names are longer than a string keeps inside of itself, too.
constexpr const char* kFunction = "CRegexVectorHolder::ProcessRegexVectorCoreOfTheWholeList";

struct Costs {
  long allocations;
  int evaluations;
};

Costs CostsOfOneLine(std::uint32_t level) {
  const long allocationsBefore = AllocationCount();
  const int evaluationsBefore = evaluationCount;
  qxDebugPrint(level, kFunction, "value " << Evaluated());
  return {AllocationCount() - allocationsBefore, evaluationCount - evaluationsBefore};
}

Costs CostsOfOneReport() {
  const long allocationsBefore = AllocationCount();
  const int evaluationsBefore = evaluationCount;
  qxReport(ErrorId::InternalError, kFunction, {{"msg", Evaluated()}});
  return {AllocationCount() - allocationsBefore, evaluationCount - evaluationsBefore};
}

}  // namespace

TEST(ADebugLineThatIsOff, NeitherAllocatesNorFormatsWhicheverGateIsClosed) {
  for (const Gates gates :
       {Gates{.active = false}, Gates{.level = false}, Gates{.function = false}}) {
    const InSlot<CountingHost> host(gates);
    const Costs costs = CostsOfOneLine(3);
    EXPECT_EQ(costs.allocations, 0) << Describe(gates);
    EXPECT_EQ(costs.evaluations, 0) << Describe(gates);
  }
}

TEST(ADebugLineThatIsOff, IsTheOnlyKindThatCostsNothing) {
  const InSlot<CountingHost> host(Gates{});
  const Costs costs = CostsOfOneLine(3);
  EXPECT_GT(costs.allocations, 0);
  EXPECT_EQ(costs.evaluations, 1);
}

TEST(AReportThatIsOff, NeitherAllocatesNorRenders) {
  const InSlot<CountingHost> host(Gates{.active = false});
  const Costs costs = CostsOfOneReport();
  EXPECT_EQ(costs.allocations, 0);
  EXPECT_EQ(costs.evaluations, 0);
}

TEST(AnExceptionWhoseEntryIsOff, DoesNoFormattingWork) {
  const std::string reason = Evaluated();
  long withoutEntry = 0;
  {
    const InSlot<CountingHost> host(Gates{.level = false});
    const long before = AllocationCount();
    const CRunTimeError error(reason);
    withoutEntry = AllocationCount() - before;
    EXPECT_EQ(host->fLineCount, 0);
  }
  const InSlot<CountingHost> host(Gates{});
  const long before = AllocationCount();
  const CRunTimeError error(reason);
  EXPECT_GT(AllocationCount() - before, withoutEntry);
  EXPECT_LE(withoutEntry, 2);  // its own reason, and the copy that the base takes
  EXPECT_EQ(host->fLineCount, 1);
}
