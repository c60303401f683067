#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

#include "Common/CVariant.h"
#include "tests/Common/ListSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

// Operations whose list types are a set, and whose other types get one FormatError.
struct OperationRow {
  const char* name;
  std::set<int> accepts;
  void (*run)(CVariant& value);
  const char* onPosition;
  const char* action;
  const char* formatType;
};

const OperationRow kOperationRows[] = {
    {"AddToList(long)",
     {5, 9, 10, 11, 20, 22, 28},
     [](CVariant& value) { value.AddToList(std::int64_t{1}); },
     "CVariant: addToList",
     "Adding Long value to List",
     "of Type NumberList, HexList or LongList"},
    {"AddToList(double)",
     {6, 9, 10},
     [](CVariant& value) { value.AddToList(1.5); },
     "CVariant: addToList",
     "Adding Double value",
     "of Type DoubleList"},
    {"AddToList(boolean)",
     {8, 9},
     [](CVariant& value) { value.AddToList(true); },
     "CVariant: addToList",
     "Adding Boolean value to List",
     "of Type BoolList"},
    {"AddToList(string)",
     {7, 9, 14, 15, 21, 24, 26, 31},
     [](CVariant& value) { value.AddToList(MakeText("1.2.3.4").Get()); },
     "CVariant: addToList",
     "Adding String value to List",
     "of Type StringList"},
    {"SetListElem(long)",
     {5, 9, 10, 11, 20, 22, 28},
     [](CVariant& value) { value.SetListElem(0, std::int64_t{1}); },
     "CVariant: setListElem",
     "Setting Long to NumberList",
     "of number list type"},
    {"SetListElem(double)",
     {6, 9, 10},
     [](CVariant& value) { value.SetListElem(0, 1.5); },
     "CVariant: setListElem",
     "Setting Double to DoubleList",
     "of Type DoubleList"},
    {"SetListElem(boolean)",
     {8, 9},
     [](CVariant& value) { value.SetListElem(0, true); },
     "CVariant: setListElem",
     "Setting Bool to BoolList",
     "of Type BoolList"},
    {"SetListElem(string)",
     {7, 9, 14, 15, 21, 24, 26, 31},
     [](CVariant& value) { value.SetListElem(0, MakeText("1.2.3.4").Get()); },
     "CVariant: setListElem",
     "Setting String to StringList",
     "of Type StringList"},
    {"GetLongListElem",
     {5, 9, 10, 11, 20, 22, 28},
     [](CVariant& value) {
       bool ok = false;
       value.GetLongListElem(0, ok);
     },
     "CVariant: GetLongListElem",
     "Getting LongList element",
     "of number list type"},
    {"GetDoubleListElem",
     {6, 10},
     [](CVariant& value) {
       bool ok = false;
       value.GetDoubleListElem(0, ok);
     },
     "CVariant: GetDoubleListElem",
     "Getting DoubleList element",
     "of Type DoubleList"},
    {"GetBoolListElem",
     {8},  // and a MixedList, when the element is one
     [](CVariant& value) {
       bool ok = false;
       value.GetBoolListElem(0, ok);
     },
     "CVariant: GetBoolListElem",
     "Getting BoolList element",
     "of bool list type"},
    {"GetMixedListElem",
     {5, 6, 7, 8, 9, 10, 12, 14, 16, 20, 21, 22, 24, 26, 28, 31},
     [](CVariant& value) {
       bool ok = true;
       const CUsePtr<Selvane::IVariant> element(value.GetMixedListElem(0, ok));
       EXPECT_EQ(ok, static_cast<bool>(element));
     },
     "CVariant: GetMixedListElem",
     "Getting MixedList element",
     "of mixed list type"},
    {"GetListSize",
     {5, 6, 7, 8, 9, 10, 11, 12, 14, 15, 16, 20, 21, 22, 24, 26, 28, 29, 31},
     [](CVariant& value) { value.GetListSize(); },
     "CVariant: size",
     "Getting list size",
     "a valid list"},
    {"Erase",
     {5, 6, 7, 8, 9, 10, 12, 14, 16, 20, 21, 22, 24, 26, 28, 31},
     [](CVariant& value) { value.Erase(0); },
     "CVariant: erase",
     "Erasing list element",
     "a valid list type"},
    {"ReverseList",
     {5, 6, 7, 8, 9, 10, 12, 14, 16, 20, 21, 22, 24, 26, 28, 31},
     [](CVariant& value) { value.ReverseList(); },
     "CVariant: reverse",
     "Reversing List",
     "a valid list"},
    {"SortList",
     {5, 6, 7, 8, 10, 12, 14, 16, 20, 21, 22, 24, 26, 28, 31},
     [](CVariant& value) { value.SortList(); },
     "CVariant: sort",
     "Sorting List",
     "a valid list"},
    {"SetSorted",
     {5, 6, 7, 8, 10, 12, 14, 16, 20, 21, 22, 24, 26, 28, 31},
     [](CVariant& value) { value.SetSorted(true); },
     "CVariant: sort",
     "Sorting List",
     "a valid list"},
    {"Find(long)",
     {5, 6, 10, 11, 20, 22, 28},
     [](CVariant& value) { value.Find(std::int64_t{1}); },
     "CVariant: find",
     "Finding Long value in List",
     "of Type IntList, NumberList, CategoryList, DLPCategoryList, HexList or LongList"},
    {"Find(double)",
     {6, 10},
     [](CVariant& value) { value.Find(1.5); },
     "CVariant: find",
     "Finding Double value in DoubleList",
     "of Type DoubleList"},
    {"Find(boolean)",
     {8, 9},
     [](CVariant& value) { value.Find(true); },
     "CVariant: find",
     "Finding Boolean value in List",
     "of Type BoolList"},
    {"Find(string)",
     {7, 14, 15, 21, 24, 31},
     [](CVariant& value) { value.FindFrom(0, MakeText("1.2.3.4").Get()); },
     "CVariant: find",
     "Finding String value in List",
     "of Type StringList"},
};

TEST(CVariantLists, TakeTheTypesOfTheirOperationsAndReportTheOthersOnce) {
  Reports reports;
  for (const OperationRow& row : kOperationRows) {
    for (const VariantType type : AllTypes()) {
      SCOPED_TRACE(std::string(row.name) + " on " + TypeInfo(type).fName);
      CVariant value = SampleOf(type);
      const std::string before = value.IsListType() ? Shown(value) : "";
      reports.Take();
      row.run(value);
      EXPECT_EQ(value.GetType(), type);
      if (row.accepts.contains(static_cast<int>(type))) {
        EXPECT_THAT(reports.Take(), IsEmpty());
      } else {
        EXPECT_THAT(reports.Take(),
                    ElementsAre(FormatReport(row.onPosition, row.action, type, row.formatType)));
        if (value.IsListType()) {
          EXPECT_EQ(Shown(value), before);
        }
      }
    }
  }
}

TEST(CVariantLists, ReportUnderTheirOwnName) {
  Reports reports;
  CVariant(true).AddToList(1.5);
  ASSERT_EQ(reports.Host().fPrinted.size(), 1u);
  const PrintedLine& line = reports.Host().fPrinted.front();
  EXPECT_EQ(line.level, 1u);
  EXPECT_EQ(line.className, "CVariant");
  EXPECT_EQ(line.function, "AddToList");
  EXPECT_EQ(line.file, "Common\\CVariant");
  EXPECT_GT(line.line, 0u);
}

// ---- null arguments

TEST(CVariantLists, ReportANullVariantBeforeAnythingElse) {
  struct Row {
    void (*run)(CVariant& value);
    const char* report;
  };
  static constexpr const Selvane::IVariant* kNone = nullptr;
  const Row rows[] = {
      {[](CVariant& value) { value.AddToList(kNone); },
       "'CVariant: addToList': No initialized right hand side of operator 'add to list'."},
      {[](CVariant& value) { value.SetListElem(99, kNone); },
       "'CVariant: setListElem': No initialized right hand side of operator 'set list element'."},
      {[](CVariant& value) { EXPECT_EQ(value.Find(kNone), -1); },
       "'CVariant: find': No initialized right hand side of operator 'find'."},
      {[](CVariant& value) { EXPECT_FALSE(value.JoinLists(nullptr)); },
       "'CVariant: joinLists': No initialized right hand side of operator 'join lists'."},
      {[](CVariant& value) { EXPECT_FALSE(value.EraseFromList(nullptr)); },
       "'CVariant: EraseFromList': No initialized right hand side of operator 'erase from list'."},
  };
  Reports reports;
  for (const Row& row : rows) {
    for (const VariantType type : AllTypes()) {
      CVariant value(type);
      row.run(value);
      EXPECT_THAT(reports.Take(), ElementsAre(row.report));
    }
  }
}

TEST(CVariantLists, TakeANullTextForTheEmptyOne) {
  CVariant list(StringList);
  list.AddToList(static_cast<Selvane::IUnicodeString*>(nullptr));
  list.AddToList(MakeText("x").Get());
  list.SetListElem(1, static_cast<Selvane::IUnicodeString*>(nullptr));
  EXPECT_THAT(TextsOf(list), ElementsAre("", ""));
  EXPECT_EQ(list.Find(static_cast<Selvane::IUnicodeString*>(nullptr)), 0);
  EXPECT_EQ(list.FindFrom(1, MakeUseCounted<CStringImpl>().Get()), 1);
}

}  // namespace
