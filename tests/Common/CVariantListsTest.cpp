#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "Common/CVariant.h"
#include "tests/Common/ForeignVariant.h"
#include "tests/Common/ListSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

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
                                  UnsupportedTypes(listType, type) + "'"));
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
                          UnsupportedTypes(LongList, Boolean) + "'"));
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
  const CVariant category(Category, 5), text = TextValue(Regex, "r"), number(4.5);
  longs.SetListElem(0, &category);
  doubles.SetListElem(1, &number);
  EXPECT_EQ(Shown(doubles), "0.50,4.50");
  texts.SetListElem(1, Foreign(text).Get());
  EXPECT_EQ(Shown(longs) + Shown(texts), "5,9b,r");
  Reports reports;
  const CVariant boolean(true);
  bools.SetListElem(0, &boolean);
  EXPECT_THAT(reports.Take(),
              ElementsAre("'CVariant: setListElem': Unknown type 'Boolean' for object 'Variant'. "
                          "Details: '" +
                          UnsupportedTypes(BooleanList, Boolean) + "'"));
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
  const Reports reports;
  for (const VariantType type : {Dimension, IPRange, Map, String, Empty}) {
    EXPECT_FALSE(SampleOf(type).ReverseList()) << TypeInfo(type).fName;
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
