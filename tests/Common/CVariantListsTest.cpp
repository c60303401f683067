#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "Common/CRefVariant.h"
#include "Common/CVariant.h"
#include "tests/Common/ForeignVariant.h"
#include "tests/Common/VariantSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

constexpr std::int64_t kFar[] = {
    -1,  std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(), 2, 3,
    1000};

// A value's elements in a form that tests can compare, and that shows their types.
std::string Shown(const CVariant& value) {
  std::string shown;
  for (std::uint64_t i = 0; i < value.SizeOfList(); ++i) {
    const auto index = static_cast<std::int64_t>(i);
    if (i) shown += ",";
    CVariant element;
    bool ok = false;
    if (!value.ReadElement(index, element)) {
      shown += value.GetType() == Dimension ? std::to_string(value.GetLongListElem(index, ok))
                                            : Utf8(value.GetTextListElem(index, ok));
    } else if (element.IsListType()) {
      shown += "[" + Shown(element) + "]";
    } else if (element.GetType() == Double) {
      shown += std::to_string(element.GetDouble()).substr(0, 4);
    } else if (element.IsNumberType()) {
      shown += std::to_string(element.GetLong());
    } else if (element.GetType() == Boolean) {
      shown += element.GetBool() ? "true" : "false";
    } else {
      shown += Utf8(element.GetText());
    }
  }
  return shown;
}

std::string FormatReport(const std::string& onPosition, const std::string& action, VariantType type,
                         const std::string& formatType) {
  return "'" + onPosition + "': '" + action + "' failed. Type of 'Variant' is '" +
         TypeInfo(type).fName + "', but it has to be '" + formatType + "'.";
}

std::string Types(VariantType self, VariantType other) {
  return std::string("Error: unsupported element-types. Type of this: ") + TypeInfo(self).fName +
         ", type of parameter: " + TypeInfo(other).fName;
}

// ---- operations whose list types are a set, and whose other types get one FormatError

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
       bool ok = false;
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

// ---- adding

TEST(CVariantLists, AddAtTheEnd) {
  EXPECT_EQ(Shown(Longs({3, 1, 2})), "3,1,2");
  EXPECT_EQ(Shown(Longs({3, 1}, Dimension)), "3,1");
  EXPECT_EQ(Shown(Doubles({1.5, 0.5})), "1.50,0.50");
  EXPECT_EQ(Shown(Bools({true, false})), "true,false");
  EXPECT_EQ(Shown(Texts({"b", "", "a"})), "b,,a");
  EXPECT_EQ(Shown(Texts({"1.2.3.4", "::1", "?"}, IPList)),
            "1.2.3.4,0:0:0:0:0:0:0:1,255.255.255.255");
  EXPECT_EQ(Shown(Texts({"1.2.3.4", "5.6.7.8", "9.9.9.9"}, IPRange)), "1.2.3.4,5.6.7.8,9.9.9.9");
  CVariant mixed(MixedList);
  mixed.AddToList(std::int64_t{1});
  mixed.AddToList(2.5);
  mixed.AddToList(true);
  mixed.AddToList(MakeText("four").Get());
  EXPECT_EQ(Shown(mixed), "1,2.50,true,four");
  CVariant numbers(NumberList);
  numbers.AddToList(std::int64_t{1});
  numbers.AddToList(2.5);
  EXPECT_EQ(Shown(numbers), "1,2.50");
}

TEST(CVariantLists, AddVariantsByTheirType) {
  Reports reports;
  for (const VariantType listType : AllTypes()) {
    for (const VariantType type : AllTypes()) {
      SCOPED_TRACE(std::string(TypeInfo(type).fName) + " to " + TypeInfo(listType).fName);
      const CVariant value = SampleOf(type);
      for (const bool isForeign : {false, true}) {
        CVariant list = SampleOf(listType);
        const std::uint64_t before = list.SizeOfList();
        const auto foreign = Foreign(value);
        reports.Take();
        const Selvane::IVariant* argument = &value;
        if (isForeign) argument = foreign.Get();
        list.AddToList(argument);
        const std::vector<std::string> said = reports.Take();

        std::string action;  // of the overload that the value is handed to
        std::set<int> accepts;
        if (type == Double) {
          action = "Adding Double value";
          accepts = {6, 9, 10};
        } else if (TypeFamily::IntegerScalars.Has(type)) {
          action = "Adding Long value to List";
          accepts = {5, 9, 10, 11, 20, 22, 28};
        } else if (TypeFamily::TextScalars.Has(type)) {
          action = "Adding String value to List";
          accepts = {7, 9, 14, 15, 21, 24, 26, 31};
        }
        const bool takesAll = TypeFamily::VariantLists.Has(listType);
        const bool isTaken = takesAll || accepts.contains(static_cast<int>(listType));
        EXPECT_EQ(list.SizeOfList(), before + (isTaken ? 1 : 0));
        if (isTaken) {
          EXPECT_THAT(said, IsEmpty());
        } else if (action.empty()) {
          EXPECT_THAT(said,
                      ElementsAre(std::string("'CVariant: AddToList': Unknown type '") +
                                  TypeInfo(type).fName + "' for object 'Variant'. Details: '" +
                                  Types(listType, type) + "'"));
        } else {
          ASSERT_EQ(said.size(), 1u);
          EXPECT_THAT(said.front(), testing::HasSubstr("'" + action + "' failed"));
        }
      }
    }
  }
}

TEST(CVariantLists, AddByReferenceUnderAnotherName) {
  Reports reports;
  CVariant list = Longs({1});
  list.AddToList_Ref(CVariant(std::int64_t{2}));
  EXPECT_EQ(Shown(list), "1,2");
  list.AddToList_Ref(CVariant(true));
  EXPECT_THAT(reports.Take(),
              ElementsAre("'CVariant: AddToList_Ref': Unknown type 'Boolean' for object 'Variant'. "
                          "Details: '" +
                          Types(LongList, Boolean) + "'"));
}

TEST(CVariantLists, StayInOrderWhereTheyAreKeptSorted) {
  CVariant longs = Longs({5, 1});
  longs.SetSorted(true);
  longs.AddToList(std::int64_t{3});
  EXPECT_EQ(Shown(longs), "1,3,5");
  longs.SetListElem(0, std::int64_t{9});
  EXPECT_EQ(Shown(longs), "3,5,9");
  longs.Erase(1);
  EXPECT_EQ(Shown(longs), "3,9");
  EXPECT_TRUE(longs.IsSorted());
  EXPECT_TRUE(longs.JoinLists(&longs));
  EXPECT_EQ(Shown(longs), "3,3,9,9");

  CVariant doubles = Doubles({2.5});
  doubles.SetSorted(true);
  doubles.AddToList(0.5);
  EXPECT_EQ(Shown(doubles), "0.50,2.50");
  CVariant bools = Bools({true});
  bools.SetSorted(true);
  bools.AddToList(false);
  EXPECT_EQ(Shown(bools), "false,true");
  CVariant texts = Texts({"b", "B"});
  texts.SetSorted(true);
  texts.AddToList(MakeText("").Get());
  EXPECT_EQ(Shown(texts), ",B,b");
  CVariant numbers = Longs({2}, NumberList);
  numbers.SetSorted(true);
  numbers.AddToList(1.5);
  EXPECT_EQ(Shown(numbers), "1.50,2");
  CVariant addresses = Texts({"::1", "9.9.9.9"}, IPList);
  addresses.SetSorted(true);
  addresses.AddToList(MakeText("1.1.1.1").Get());
  EXPECT_EQ(Shown(addresses), "1.1.1.1,9.9.9.9,0:0:0:0:0:0:0:1");
  CVariant hosts = Texts({HostText('b', "h"), HostText('a', "z")}, HostAndCertificateList);
  hosts.SetSorted(true);
  hosts.AddToList(MakeText(HostText('a', "a")).Get());
  EXPECT_THAT(TextsOf(hosts),
              ElementsAre(HostText('a', "a"), HostText('a', "z"), HostText('b', "h")));
}

// ---- reading

TEST(CVariantLists, ReadOutOfRangeInTheirOwnWays) {
  Reports reports;
  for (const std::int64_t index : kFar) {
    SCOPED_TRACE(index);
    bool ok = true;
    const CVariant longs = Longs({1, 2}), doubles = Doubles({1, 2}), bools = Bools({true, true});
    const CVariant texts = Texts({"a", "b"}), numbers = Longs({1, 2}, NumberList);
    EXPECT_EQ(longs.GetLongListElem(index, ok), 0);
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_EQ(texts.GetStringListElem(index, ok), nullptr);
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_EQ(longs.GetMixedListElem(index, ok), nullptr);
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_EQ(numbers.GetNumberListElem(index, ok), nullptr);
    EXPECT_FALSE(ok);
    EXPECT_THAT(reports.Take(), IsEmpty());
    ok = true;
    EXPECT_EQ(doubles.GetDoubleListElem(index, ok), 0.0);
    EXPECT_FALSE(ok);
    EXPECT_THAT(reports.Take(), ElementsAre(FormatReport("CVariant: GetDoubleListElem",
                                                         "Getting DoubleList element", DoubleList,
                                                         "of Type DoubleList")));
    ok = true;
    EXPECT_FALSE(bools.GetBoolListElem(index, ok));
    EXPECT_FALSE(ok);
    EXPECT_THAT(reports.Take(),
                ElementsAre(FormatReport("CVariant: GetBoolListElem", "Getting BoolList element",
                                         BooleanList, "of bool list type")));
  }
}

TEST(CVariantLists, ReadElementsAsOtherKinds) {
  Reports reports;
  bool ok = false;
  CVariant numbers = Longs({7}, NumberList);
  numbers.AddToList(2.5);
  EXPECT_EQ(numbers.GetLongListElem(0, ok), 7);
  EXPECT_TRUE(ok);
  EXPECT_EQ(numbers.GetLongListElem(1, ok), 0);
  EXPECT_FALSE(ok);
  EXPECT_EQ(numbers.GetDoubleListElem(0, ok), 7.0);
  EXPECT_TRUE(ok);
  EXPECT_EQ(numbers.GetDoubleListElem(1, ok), 2.5);
  EXPECT_TRUE(ok);

  const CVariant mixed =
      Variants({CVariant(Hex, 255), CVariant(true), TextValue(MediaType, "m"), Longs({1})});
  EXPECT_EQ(mixed.GetLongListElem(0, ok), 255);
  EXPECT_TRUE(ok);
  EXPECT_TRUE(mixed.GetBoolListElem(1, ok));
  EXPECT_TRUE(ok);
  EXPECT_EQ(Utf8(mixed.GetTextListElem(2, ok)), "m");
  EXPECT_TRUE(ok);
  mixed.GetTextListElem(3, ok);
  EXPECT_FALSE(ok);
  EXPECT_THAT(reports.Take(), IsEmpty());

  mixed.GetLongListElem(3, ok);  // by GetLong of the element
  EXPECT_FALSE(ok);
  EXPECT_THAT(reports.Take(), ElementsAre(FormatReport("CVariant: GetLong", "Getting Long value",
                                                       LongList, "of Type Long or Hex")));
  mixed.GetBoolListElem(0, ok);
  EXPECT_FALSE(ok);
  EXPECT_EQ(reports.Take().size(), 1u);
}

TEST(CVariantLists, GiveTextElementsOfTheseTypesInSilence) {
  const std::set<int> accepts = {7, 9, 14, 15, 16, 21, 24, 26, 31};
  Reports reports;
  for (const VariantType type : AllTypes()) {
    CVariant list = SampleOf(type);
    if (type == MixedList) list.ReverseList();  // the text first
    bool ok = true;
    const std::string text = TakeUtf8(list.GetStringListElem(0, ok));
    EXPECT_EQ(ok, accepts.contains(static_cast<int>(type))) << TypeInfo(type).fName;
    EXPECT_EQ(text != "(null)", ok);
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantLists, GiveElementsInTheElementsOwnType) {
  const std::vector<std::pair<VariantType, VariantType>> rows = {
      {LongList, Long},
      {DoubleList, Double},
      {StringList, String},
      {BooleanList, Boolean},
      {NumberList, Long},
      {DimensionList, Dimension},
      {IPList, IP},
      {IPRangeList, IPRange},
      {CategoryList, Category},
      {RegexList, Regex},
      {HexList, Hex},
      {MediaTypeList, MediaType},
      {DLPCategoryList, DLPCategory},
      {SSOConnectorList, SSOConnector},
      {MixedList, Long},
      {HostAndCertificateList, HostAndCertificate},
  };
  for (const auto& [listType, elementType] : rows) {
    const CVariant list = SampleOf(listType);
    bool ok = false;
    const CUsePtr<Selvane::IVariant> element(list.GetMixedListElem(0, ok));
    ASSERT_TRUE(ok) << TypeInfo(listType).fName;
    EXPECT_EQ(element->GetType(), elementType);
    EXPECT_EQ(element->GetUseCount(), 1u);
  }
  CVariant numbers(NumberList);
  numbers.AddToList(2.5);
  bool ok = false;
  const CUsePtr<Selvane::IVariant> element(numbers.GetNumberListElem(0, ok));
  ASSERT_TRUE(ok);
  EXPECT_EQ(element->GetDouble(), 2.5);
}

TEST(CVariantLists, PrintAWrongTypeOfANumberElement) {
  Reports reports;
  for (const VariantType type : AllTypes()) {
    const CVariant list = SampleOf(type);
    bool ok = true;
    const CUsePtr<Selvane::IVariant> number(list.GetNumberListElem(0, ok));
    EXPECT_EQ(ok, type == NumberList);
    if (type == NumberList) {
      EXPECT_THAT(reports.Take(), IsEmpty());
    } else {
      EXPECT_FALSE(number);
      EXPECT_THAT(reports.Take(),
                  ElementsAre(std::string("Wrong type for CVariant::GetNumberListElem: ") +
                              TypeInfo(type).fName));
    }
    const CUsePtr<Selvane::IVariant> any(list.GetAnyNumberListElem(0, ok));
    if (TypeFamily::NumberLists.Has(type)) {
      EXPECT_TRUE(ok);
      EXPECT_THAT(reports.Take(), IsEmpty());
    } else {
      EXPECT_FALSE(ok);
      EXPECT_THAT(reports.Take(),
                  ElementsAre(std::string("Wrong type for CVariant::GetAnyNumberListElem: ") +
                              TypeInfo(type).fName));
    }
  }
}

// ---- replacing and taking away

TEST(CVariantLists, ReportAPositionToSetThatIsNotThere) {
  Reports reports;
  for (const std::int64_t index : kFar) {
    const auto report = [&](const char* kind) {
      return std::string("'CVariant: setListElem': Could not access '") + kind + "' at position '" +
             std::to_string(index) + "'. Index is out of bounds.";
    };
    CVariant longs = Longs({1, 2}), doubles = Doubles({1, 2}), bools = Bools({true, false});
    CVariant texts = Texts({"a", "b"}), numbers = Longs({1, 2}, NumberList);
    CVariant mixed = Variants({CVariant(true), CVariant(true)});
    longs.SetListElem(index, std::int64_t{9});
    EXPECT_THAT(reports.Take(), ElementsAre(report("LongList element")));
    numbers.SetListElem(index, 9.5);
    EXPECT_THAT(reports.Take(), ElementsAre(report("DoubleList element")));
    bools.SetListElem(index, true);
    EXPECT_THAT(reports.Take(), ElementsAre(report("BoolList element")));
    texts.SetListElem(index, MakeText("x").Get());
    EXPECT_THAT(reports.Take(), ElementsAre(report("StringList element")));
    mixed.SetListElem(index, &longs);
    EXPECT_THAT(reports.Take(), ElementsAre(report("MixedList element")));
    EXPECT_EQ(Shown(longs) + Shown(bools) + Shown(texts), "1,2true,falsea,b");
  }
}

TEST(CVariantLists, SetElementsOfEveryKind) {
  CVariant longs = Longs({1, 2}), numbers = Longs({1, 2}, NumberList), bools = Bools({true, true});
  CVariant texts = Texts({"a", "b"}), addresses = Texts({"1.1.1.1", "2.2.2.2"}, IPList);
  CVariant mixed = Variants({Longs({1}), CVariant(true)}), doubles = Doubles({1, 2});
  longs.SetListElem(1, std::int64_t{9});
  EXPECT_EQ(Shown(longs), "1,9");
  numbers.SetListElem(0, 2.5);
  numbers.SetListElem(1, std::int64_t{7});
  EXPECT_EQ(Shown(numbers), "2.50,7");
  doubles.SetListElem(0, 0.5);
  EXPECT_EQ(Shown(doubles), "0.50,2.00");
  bools.SetListElem(1, false);
  EXPECT_EQ(Shown(bools), "true,false");
  bool ok = false;
  texts.SetListElem(0, texts.GetTextListElem(1, ok).Get());
  texts.SetListElem(0, texts.GetTextListElem(0, ok).Get());
  EXPECT_EQ(Shown(texts), "b,b");
  addresses.SetListElem(0, MakeText("::2").Get());
  EXPECT_EQ(Shown(addresses), "0:0:0:0:0:0:0:2,2.2.2.2");
  mixed.SetListElem(0, true);
  mixed.SetListElem(1, &longs);
  EXPECT_EQ(Shown(mixed), "true,[1,9]");
  const CVariant category(Category, 5), text = TextValue(Regex, "r");
  longs.SetListElem(0, &category);
  texts.SetListElem(1, Foreign(text).Get());
  EXPECT_EQ(Shown(longs) + Shown(texts), "5,9b,r");
  Reports reports;
  const CVariant boolean(true);
  bools.SetListElem(0, &boolean);
  EXPECT_THAT(reports.Take(),
              ElementsAre("'CVariant: setListElem': Unknown type 'Boolean' for object 'Variant'. "
                          "Details: '" +
                          Types(BooleanList, Boolean) + "'"));
}

TEST(CVariantLists, EraseOneElementAndNothingOutOfRange) {
  Reports reports;
  for (const VariantType type : AllTypes()) {
    if (!TypeInfo(type).fIsList || type == Dimension || type == IPRange) continue;
    SCOPED_TRACE(TypeInfo(type).fName);
    CVariant list = SampleOf(type);
    list.JoinLists(&list);
    const std::string twice = Shown(list);
    for (const std::int64_t index :
         {std::int64_t{-1}, std::numeric_limits<std::int64_t>::max(),
          std::numeric_limits<std::int64_t>::min(), static_cast<std::int64_t>(list.SizeOfList())}) {
      list.Erase(index);
    }
    EXPECT_EQ(Shown(list), twice);
    const std::uint64_t count = list.SizeOfList();
    for (std::uint64_t i = count / 2; i < count; ++i) list.Erase(0);
    EXPECT_EQ(Shown(list), Shown(SampleOf(type)));
    while (list.SizeOfList()) list.Erase(static_cast<std::int64_t>(list.SizeOfList()) - 1);
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantLists, TurnRoundUnlessTheyAreKeptSorted) {
  CVariant list = Longs({3, 1, 2});
  EXPECT_TRUE(list.ReverseList());
  EXPECT_EQ(Shown(list), "2,1,3");
  list.SetSorted(true);
  EXPECT_TRUE(list.ReverseList());
  EXPECT_EQ(Shown(list), "1,2,3");
  CVariant mixed = Variants({Longs({1, 2, 3}), CVariant(true), TextValue(String, "a"), Longs({})});
  EXPECT_TRUE(mixed.ReverseList());
  EXPECT_EQ(Shown(mixed), "[],a,true,[1,2,3]");
  CVariant none(StringList);
  EXPECT_TRUE(none.ReverseList());
}

// ---- list with list

// Which lists each list can take elements from.
const std::vector<std::pair<std::set<int>, std::set<int>>> kJoinRows = {
    {{5, 20, 22, 28}, {5, 9, 10, 11, 20, 22, 28}},
    {{6}, {6, 10}},
    {{7, 14, 15, 21, 24, 31}, {7, 9, 14, 15, 16, 21, 24, 26, 31}},
    {{8}, {8, 9}},
    {{9, 12, 16, 26}, {5, 6, 7, 8, 9, 10, 12, 14, 16, 20, 21, 22, 24, 26, 28, 31}},
    {{10}, {10}},
    {{11}, {}},
};

TEST(CVariantLists, JoinWhatTheyCanRead) {
  Reports reports;
  for (const VariantType self : AllTypes()) {
    for (const VariantType other : AllTypes()) {
      SCOPED_TRACE(std::string(TypeInfo(self).fName) + " with " + TypeInfo(other).fName);
      bool joins = false;
      for (const auto& [selves, others] : kJoinRows) {
        joins |=
            selves.contains(static_cast<int>(self)) && others.contains(static_cast<int>(other));
      }
      CVariant list = SampleOf(self);
      const CVariant argument = SampleOf(other);
      reports.Take();
      EXPECT_EQ(list.JoinLists(&argument), joins);
      CVariant second = SampleOf(self);
      const auto said = reports.Take();
      EXPECT_EQ(second.JoinLists(Foreign(argument).Get()), joins);
      EXPECT_EQ(Shown(second), Shown(list));
      if (joins) continue;
      const bool bothLists = TypeInfo(self).fIsList && TypeInfo(other).fIsList;
      if (bothLists) {
        EXPECT_THAT(said, ElementsAre("'CVariant: JoinLists': Error while 'calling' the 'Variant'. "
                                      "Reason: '" +
                                      Types(self, other) + "'."));
      } else {
        EXPECT_THAT(
            said, ElementsAre(FormatReport("CVariant: JoinLists", "Merging Lists",
                                           TypeInfo(self).fIsList ? other : self, "a valid list")));
      }
    }
  }
}

TEST(CVariantLists, JoinElementsInTheirOrder) {
  const auto joined = [](CVariant list, const CVariant& other) {
    EXPECT_TRUE(list.JoinLists(&other));
    return Shown(list);
  };
  CVariant numbers = Longs({7}, NumberList);
  numbers.AddToList(2.5);
  const CVariant mixed =
      Variants({CVariant(std::int64_t{4}), CVariant(false), TextValue(String, "s")});
  Reports reports;
  EXPECT_EQ(joined(Longs({1}), Longs({9, 8}, HexList)), "1,9,8");
  EXPECT_EQ(joined(Longs({1}), Longs({9, 8}, Dimension)), "1,9,8");
  EXPECT_EQ(joined(Longs({1}), numbers), "1,7");  // what is no long is left out
  EXPECT_EQ(joined(Doubles({1}), numbers), "1.00,7.00,2.50");
  EXPECT_EQ(joined(numbers, numbers), "7,2.50,7,2.50");
  EXPECT_EQ(joined(Texts({"a"}), Texts({"1.2.3.4"}, IPList)), "a,1.2.3.4");
  EXPECT_EQ(joined(Texts({"a"}), mixed), "a,s");
  EXPECT_EQ(joined(Texts({"1.1.1.1"}, IPList), Texts({"::1", "x"})),
            "1.1.1.1,0:0:0:0:0:0:0:1,255.255.255.255");
  EXPECT_EQ(joined(mixed, Texts({"r"}, RegexList)), "4,false,s,r");
  EXPECT_THAT(reports.Take(), IsEmpty());
  EXPECT_EQ(joined(Longs({1}), mixed), "1,4");
  EXPECT_EQ(reports.Take().size(), 2u);  // one for each element that is no long
}

TEST(CVariantLists, DoubleWhenTheyAreJoinedWithThemselves) {
  for (const VariantType type : AllTypes()) {
    if (!TypeInfo(type).fIsList || type == Dimension) continue;
    CVariant list = SampleOf(type);
    const std::string once = Shown(list);
    EXPECT_TRUE(list.JoinLists(&list));
    EXPECT_EQ(Shown(list), once + "," + once) << TypeInfo(type).fName;
  }
}

TEST(CVariantLists, RefuseAForeignListWhoseSizeCannotBeTrue) {
  Reports reports;
  for (const VariantType type : AllTypes()) {
    if (!TypeInfo(type).fIsList || type == Dimension) continue;
    SCOPED_TRACE(TypeInfo(type).fName);
    const auto foreign = Foreign(SampleOf(type));
    for (const std::uint64_t size :
         {(std::uint64_t{1} << 27) + 1, std::uint64_t{1} << 62, ~std::uint64_t{0}}) {
      foreign->fLies.listSize = size;
      CVariant list = SampleOf(type);
      const std::string before = Shown(list);
      reports.Take();
      EXPECT_FALSE(list.JoinLists(foreign.Get()));
      const std::string report =
          "'CVariant: reading another implementation': 'Error: it claims more elements than it may "
          "have.'";
      EXPECT_THAT(reports.Take(), ElementsAre(report));
      EXPECT_EQ(Shown(list), before);
      if (type == IPRange) continue;
      EXPECT_FALSE(list.EraseFromList(foreign.Get()));
      EXPECT_THAT(reports.Take(), ElementsAre(report));
      EXPECT_EQ(Shown(list), before);
    }
  }
}

TEST(CVariantLists, TakeWhatAForeignListHasAndNotWhatItClaims) {
  const auto foreign = Foreign(Longs({1, 2}));
  foreign->fLies.listSize = 0;
  CVariant none = Longs({5});
  EXPECT_TRUE(none.JoinLists(foreign.Get()));
  EXPECT_EQ(Shown(none), "5");
  foreign->fLies.listSize = std::uint64_t{1} << 20;  // more than there are
  CVariant list = Longs({5});
  EXPECT_TRUE(list.JoinLists(foreign.Get()));
  EXPECT_EQ(Shown(list), "5,1,2");
  EXPECT_LE(list.CapacityInBytes(), std::uint64_t{1} << 20);

  const auto withoutObjects = Foreign(Variants({CVariant(true), CVariant(true)}));
  withoutObjects->fLies.givesNoObjects = true;
  CVariant mixed(MixedList);
  EXPECT_TRUE(mixed.JoinLists(withoutObjects.Get()));
  EXPECT_EQ(mixed.SizeOfList(), 0u);
}

// A view of the list, or of an element of it, is not what it was once the list changes.
TEST(CVariantLists, JoinAndEraseWhatTheyAreSeenThrough) {
  const Reports reports;  // of unlike elements that are compared
  bool ok = false;
  CVariant outer = Variants({Variants({CVariant(std::int64_t{1}), CVariant(true)})});
  const CUsePtr<CRefVariant> inner(outer.GetMixedListElemRef(0, ok));
  EXPECT_TRUE(outer.JoinLists(inner.Get()));
  EXPECT_EQ(Shown(outer), "[1,true],1,true");
  const CUsePtr<CRefVariant> again(outer.GetMixedListElemRef(0, ok));
  EXPECT_TRUE(outer.EraseFromList(again.Get()));
  EXPECT_EQ(Shown(outer), "[1,true]");

  for (const VariantType type : {LongList, DoubleList, StringList, BooleanList, NumberList, IPList,
                                 CategoryList, RegexList, HexList}) {
    SCOPED_TRACE(TypeInfo(type).fName);
    const std::string once = Shown(SampleOf(type));
    CVariant list = Variants({SampleOf(type)});
    const CUsePtr<CRefVariant> view(list.GetMixedListElemRef(0, ok));
    EXPECT_TRUE(view->JoinLists(view.Get()));
    EXPECT_EQ(Shown(list), "[" + once + "," + once + "]");
    EXPECT_TRUE(view->EraseFromList(view.Get()));
    EXPECT_EQ(Shown(list), "[]");
  }
}

TEST(CVariantLists, StayInOrderWhenTheyAreJoined) {
  for (const VariantType type : AllTypes()) {
    if (!TypeInfo(type).fIsList || type == Dimension || type == MixedList || type == IPRange) {
      continue;
    }
    SCOPED_TRACE(TypeInfo(type).fName);
    CVariant oneByOne = SampleOf(type), joined = SampleOf(type);
    oneByOne.SetSorted(true);
    joined.SetSorted(true);
    CVariant other = SampleOf(type);
    other.ReverseList();
    for (std::int64_t i = 0; i < static_cast<std::int64_t>(other.SizeOfList()); ++i) {
      CVariant element;
      ASSERT_TRUE(other.ReadElement(i, element));
      if (type == BooleanList) {  // takes no variant of its own type
        oneByOne.AddToList(element.GetBool());
      } else {
        oneByOne.AddToList(&element);
      }
    }
    EXPECT_TRUE(joined.JoinLists(&other));
    EXPECT_EQ(Shown(joined), Shown(oneByOne));
    EXPECT_TRUE(joined.IsSorted());
  }
}

TEST(CVariantLists, EraseAsOneByOne) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    const auto anyValues = [&] {
      std::vector<std::int64_t> values(random() % 30);
      for (std::int64_t& value : values) value = static_cast<std::int64_t>(random() % 8);
      return values;
    };
    const std::vector<std::int64_t> values = anyValues(), others = anyValues();
    std::vector<std::int64_t> left = values;  // the oracle
    std::vector<std::string> texts, otherTexts, leftTexts;
    for (const std::int64_t other : others) std::erase(left, other);
    for (const std::int64_t value : values) texts.push_back(std::to_string(value));
    for (const std::int64_t other : others) otherTexts.push_back(std::to_string(other));
    for (const std::int64_t value : left) leftTexts.push_back(std::to_string(value));

    CVariant longs = Longs(values), strings = Texts(texts);
    const CVariant otherLongs = Longs(others), otherStrings = Texts(otherTexts);
    EXPECT_TRUE(longs.EraseFromList(&otherLongs));
    EXPECT_EQ(LongsOf(longs), left);
    EXPECT_TRUE(strings.EraseFromList(&otherStrings));
    EXPECT_EQ(TextsOf(strings), leftTexts);
  }
}

TEST(CVariantLists, EraseAllOccurrences) {
  const auto erased = [](CVariant list, const CVariant& other) {
    EXPECT_TRUE(list.EraseFromList(&other));
    CVariant second(list);
    EXPECT_TRUE(second.EraseFromList(Foreign(other).Get()));
    return Shown(list);
  };
  EXPECT_EQ(erased(Longs({1, 2, 1, 3, 1}), Longs({1})), "2,3");
  EXPECT_EQ(erased(Longs({1, 1, 1}), Longs({1, 1, 5}, HexList)), "");
  EXPECT_EQ(erased(Doubles({1.5, 2.5, 1.5}), Doubles({1.5})), "2.50");
  EXPECT_EQ(erased(Bools({true, false, true}), Bools({true})), "false");
  EXPECT_EQ(erased(Texts({"a", "A", "", "a"}), Texts({"a", ""})), "A");
  EXPECT_EQ(erased(Texts({"::1", "1.1.1.1", "::1"}, IPList), Texts({"0::1"})), "1.1.1.1");
  CVariant numbers = Longs({2, 3}, NumberList);
  numbers.AddToList(2.0);
  EXPECT_EQ(erased(numbers, Longs({2}, NumberList)), "3");
  EXPECT_EQ(erased(Longs({1, 2}), Longs({})), "1,2");
}

TEST(CVariantLists, AreEmptyWhenErasedFromThemselves) {
  for (const VariantType type : {LongList, DoubleList, StringList, BooleanList, NumberList, IPList,
                                 CategoryList, RegexList, HexList}) {
    CVariant list = SampleOf(type);
    EXPECT_TRUE(list.EraseFromList(&list));
    EXPECT_EQ(list.SizeOfList(), 0u) << TypeInfo(type).fName;
  }
}

TEST(CVariantLists, ReportWhatCannotBeErasedFromOneAnother) {
  Reports reports;
  for (const VariantType self : AllTypes()) {
    for (const VariantType other : AllTypes()) {
      bool joins = false;
      for (const auto& [selves, others] : kJoinRows) {
        joins |=
            selves.contains(static_cast<int>(self)) && others.contains(static_cast<int>(other));
      }
      if (joins && self != IPRange) continue;  // out of a range nothing can be taken
      CVariant list = SampleOf(self);
      const CVariant argument = SampleOf(other);
      reports.Take();
      EXPECT_FALSE(list.EraseFromList(&argument));
      EXPECT_THAT(reports.Take(),
                  ElementsAre("'CVariant: eraseFronList': Error while 'calling' the 'operator "
                              "'EraseFromList' of Variant'. Reason: '" +
                              Types(self, other) + "'."));
    }
  }
}

// ---- from an array

TEST(CVariantLists, AreSetFromAnArray) {
  const std::int64_t longs[] = {3, -1};
  const char* const texts[] = {"a", nullptr, "", "\xC3\xA9"};
  CVariant list = Texts({"old"});
  list.SetSorted(true);
  EXPECT_TRUE(list.SetListFromArray(LongList, longs, sizeof longs));
  EXPECT_EQ(list.GetType(), LongList);
  EXPECT_FALSE(list.IsSorted());
  EXPECT_EQ(Shown(list), "3,-1");
  EXPECT_TRUE(list.SetListFromArray(StringList, texts, sizeof texts));
  EXPECT_EQ(list.GetType(), StringList);
  EXPECT_EQ(Shown(list), "a,,,\xC3\xA9");
  EXPECT_TRUE(list.SetListFromArray(LongList, nullptr, 0));
  EXPECT_EQ(list.GetType(), LongList);
  EXPECT_EQ(list.SizeOfList(), 0u);
}

TEST(CVariantLists, AreNotSetFromABadArray) {
  Reports reports;
  const std::int64_t longs[] = {3, -1};
  for (int id = 0; id < 40; ++id) {
    const auto type = static_cast<VariantType>(id);
    for (const std::uint64_t size : {0, 7, 8, 15, 16}) {
      if ((type == LongList || type == StringList) && size % 8 == 0) continue;
      CVariant list = Texts({"kept"});
      EXPECT_FALSE(list.SetListFromArray(type, longs, size));
      EXPECT_EQ(Shown(list), "kept");
    }
  }
  CVariant list = Texts({"kept"});
  EXPECT_FALSE(list.SetListFromArray(LongList, nullptr, 8));
  EXPECT_FALSE(list.SetListFromArray(StringList, nullptr, 8));
  EXPECT_EQ(Shown(list), "kept");
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantLists, HoldTenMillionElements) {
  constexpr std::int64_t kCount = 10'000'000;
  CVariant list(LongList);
  for (std::int64_t i = 0; i < kCount; ++i) list.AddToList(kCount - i);
  EXPECT_EQ(list.GetListSize(), static_cast<std::uint64_t>(kCount));
  list.SortList();
  bool ok = false;
  EXPECT_EQ(list.GetLongListElem(kCount - 1, ok), kCount);
  EXPECT_EQ(list.Find(kCount), kCount - 1);
}

}  // namespace
