// Memory that fails: each request of each operation in turn.

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <new>
#include <string>
#include <vector>

#include "Common/CVariant.h"
#include "tests/Common/ForeignVariant.h"
#include "tests/Common/VariantPairs.h"
#include "tests/Common/VariantSupport.h"
#include "tests/support/AllocationCount.h"

namespace {

using enum VariantType;

struct FaultRow {
  const char* name;
  std::function<void(CVariant&, const CVariant& argument)> run;
};

std::vector<FaultRow> FaultRows() {
  return {
      {"Assign", [](CVariant& v, const CVariant& a) { v.Assign(&a); }},
      {"Assign a foreign one", [](CVariant& v, const CVariant& a) { v.Assign(Foreign(a).Get()); }},
      {"Clone", [](CVariant& v, const CVariant&) { CUsePtr<Selvane::IVariant>(v.Clone()); }},
      {"Clear", [](CVariant& v, const CVariant&) { v.Clear(); }},
      {"SetString of a type",
       [](CVariant& v, const CVariant& a) {
         if (TypeFamily::TextScalars.Has(a.GetType())) v.SetString(a.GetType(), a.GetText().Get());
       }},
      {"Reserve", [](CVariant& v, const CVariant&) { v.Reserve(1000); }},
      {"AddToList", [](CVariant& v, const CVariant& a) { v.AddToList(&a); }},
      {"SetListElem", [](CVariant& v, const CVariant& a) { v.SetListElem(0, &a); }},
      {"JoinLists", [](CVariant& v, const CVariant& a) { v.JoinLists(&a); }},
      {"EraseFromList", [](CVariant& v, const CVariant& a) { v.EraseFromList(&a); }},
      {"Contains", [](CVariant& v, const CVariant& a) { v.Contains(&a, &v); }},
      {"ContainsAll", [](CVariant& v, const CVariant& a) { v.ContainsAll(&a, &v); }},
      {"IsEqual to a foreign one",
       [](CVariant& v, const CVariant& a) { v.IsEqual(Foreign(a).Get()); }},
      {"Compare", [](CVariant& v, const CVariant& a) { v.Compare(&a); }},
      {"SortList", [](CVariant& v, const CVariant&) { v.SortList(); }},
      {"SetSorted",
       [](CVariant& v, const CVariant& a) {
         v.SetSorted(true);
         v.AddToList(&a);
       }},
      {"SetMapValue", [](CVariant& v, const CVariant& a) { v.SetMapValue(MakeText("k"), &a); }},
      {"GetMapKeys",
       [](CVariant& v, const CVariant&) { CUsePtr<Selvane::IVariant>(v.GetMapKeys()); }},
      {"GetHash", [](CVariant& v, const CVariant&) { v.GetHash(); }},
  };
}

// Everything that would show a value that is not whole.
void UseUp(CVariant& value) {
  if (value.GetType() == IP) {
    EXPECT_EQ(value.Addresses().size(), 1u);
  }
  if (value.GetType() == Map) {
    EXPECT_NE(value.MapEntries(), nullptr);
  }
  const CVariant copy(value);
  EXPECT_EQ(copy.GetType(), value.GetType());
  EXPECT_EQ(Utf8(copy.ToText(MakeText(","))), Utf8(value.ToText(MakeText(","))));
  EXPECT_EQ(copy.GetHash(), value.GetHash());
  value.IsEqual(&copy);
  value.Compare(&copy);
  value.Clear();
  EXPECT_EQ(value.SizeOfList(), 0u);
}

TEST(CVariantFaults, LeaveAWholeValueBehind) {
  const InSlot<QuestionedHost> host{Gates{.active = false}};
  for (const FaultRow& row : FaultRows()) {
    for (const VariantType type : AllTypes()) {
      for (const VariantType other : AllTypes()) {
        const CVariant argument = SampleOf(other);
        for (long which = 1;; ++which) {
          SCOPED_TRACE(std::string(row.name) + " of " + NameOf(type) + " and " + NameOf(other) +
                       ", request " + std::to_string(which));
          CVariant value = SampleOf(type);
          bool isDone = false;
          {
            const AllocationFault fault(which);
            try {
              row.run(value, argument);
            } catch (const std::bad_alloc&) {
            }
            isDone = !fault.HasFailed();
          }
          UseUp(value);
          if (isDone) break;
        }
      }
      host.Get()->fQuestions.clear();
    }
  }
}

// An index only saves time, so that one which cannot be had is none.
TEST(CVariantFaults, SearchWithoutAnIndexThatCannotBeHad) {
  CVariant list(StringList);
  for (int i = 0; i < 100; ++i) list.AddToList(MakeText(std::to_string(i)).Get());
  const CStringPtr wanted = MakeText("77");
  const AllocationFault fault(1);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(list.FindFrom(0, wanted.Get()), 77);
  EXPECT_FALSE(list.HasIndex());
}

// Texts in UTF-16 are converted when they are compared first, and these are ordered before they are
// looked at one by one.
TEST(CVariantFaults, SearchWithoutAnIndexWhoseOrderCannotBeHad) {
  for (long which = 1; which < 20; ++which) {
    SCOPED_TRACE(which);
    CVariant list(StringList);
    list.AddToList(MakeText("first").Get());
    for (int i = 0; i < 100; ++i) {
      const std::string bytes{static_cast<char>('a' + i % 26), 0, static_cast<char>('0' + i % 10),
                              0};
      list.AddToList(MakeUseCounted<CStringImpl>(bytes, Charset::Utf16LE).Get());
    }
    const CStringPtr first = MakeText("first");
    for (int i = 0; i < 9; ++i) EXPECT_EQ(list.FindFrom(0, first.Get()), 0);
    const AllocationFault fault(which);
    EXPECT_EQ(list.FindFrom(0, first.Get()), 0);
    EXPECT_TRUE(fault.HasFailed());
    EXPECT_FALSE(list.HasIndex());
  }
}

}  // namespace
