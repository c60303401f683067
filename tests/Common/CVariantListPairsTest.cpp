#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Common/CRefVariant.h"
#include "Common/CVariant.h"
#include "tests/Common/ForeignVariant.h"
#include "tests/Common/ListSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

// What a list does with another list.

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
                                      UnsupportedTypes(self, other) + "'."));
      } else {
        EXPECT_THAT(
            said, ElementsAre(FormatReport("CVariant: JoinLists", "Merging Lists",
                                           TypeInfo(self).fIsList ? other : self, "a valid list")));
      }
    }
  }
}

TEST(CVariantLists, JoinNothingOfAnUnknownType) {
  Reports reports;
  const auto foreign = Foreign(Longs({1, 2}));
  foreign->fLies.type = static_cast<VariantType>(200);
  for (const VariantType type : AllTypes()) {
    CVariant list = SampleOf(type);
    const bool isList = TypeInfo(type).fIsList;
    EXPECT_FALSE(list.JoinLists(foreign.Get()));
    EXPECT_THAT(
        reports.Take(),
        ElementsAre("'CVariant: JoinLists': 'Merging Lists' failed. Type of 'Variant' is '" +
                    (isList ? "-invalid-" : NameOf(type)) + "', but it has to be 'a valid list'."));
    EXPECT_FALSE(list.EraseFromList(foreign.Get()));
    EXPECT_EQ(reports.Take().size(), 1u);
    EXPECT_EQ(Shown(list), Shown(SampleOf(type)));
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
                              UnsupportedTypes(self, other) + "'."));
    }
  }
}

}  // namespace
