#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Common/CRefVariant.h"
#include "Common/CVariant.h"
#include "tests/Common/ForeignVariant.h"
#include "tests/Common/VariantSupport.h"

// Operations of two variants, checked over all pairs of types and on all roads that an argument can
// come.

inline std::string UnsupportedReport(const std::string& onPosition, const std::string& objName,
                                     VariantType self, VariantType other) {
  return "'" + onPosition + "': Error while 'calling' the '" + objName + "'. Reason: '" +
         UnsupportedTypes(self, other) + "'.";
}

// What an operation is expected to answer, and to report. An empty report stands for none.
struct Expected {
  int answer;
  std::string report;
};

// Calls visit with the value as a CVariant, behind a view and as another implementation.
inline void ForEachRoad(
    const CVariant& value,
    const std::function<void(const char*, bool, const Selvane::IVariant*)>& visit) {
  CVariant target(value);
  CRefVariant view(target);
  const auto foreign = Foreign(value);
  visit("peer", false, &value);
  visit("view", true, &view);
  visit("foreign", true, foreign.Get());
}

// Asks all pairs of types, with a sample of each, on all roads.
inline void CheckAllPairs(const std::function<int(const CVariant&, const Selvane::IVariant*)>& ask,
                          const std::function<Expected(VariantType, VariantType, bool)>& expect) {
  Reports reports;
  for (const VariantType self : AllTypes()) {
    const CVariant left = SampleOf(self);
    for (const VariantType other : AllTypes()) {
      const CVariant right = SampleOf(other);
      reports.Take();
      ForEachRoad(right, [&](const char* road, bool isForeign, const Selvane::IVariant* argument) {
        SCOPED_TRACE(NameOf(self) + " and " + NameOf(other) + ", " + road);
        const Expected expected = expect(self, other, isForeign);
        EXPECT_EQ(ask(left, argument), expected.answer);
        const std::vector<std::string> printed = reports.Take();
        if (expected.report.empty()) {
          EXPECT_THAT(printed, testing::IsEmpty());
        } else {
          EXPECT_THAT(printed, testing::ElementsAre(expected.report));
        }
      });
    }
  }
}
