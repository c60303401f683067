// Variants in variants: to any depth, on little stack, and from implementations that never end.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Common/CRefVariant.h"
#include "Common/CVariant.h"
#include "tests/Common/ForeignVariant.h"
#include "tests/Common/VariantSupport.h"
#include "tests/support/SmallStack.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using enum VariantType;

constexpr int kDepth = 100'000;

// Lists in lists, that deep, with a number before each and the leaf in the last one.
CVariant DeepList(int depth, const CVariant& leaf) {
  const CVariant none(MixedList);
  CVariant outer(MixedList);
  outer.AddToList(&none);
  bool ok = false;
  CUsePtr<CRefVariant> level(outer.GetMixedListElemRef(0, ok));
  for (int i = 0; i < depth; ++i) {
    level->AddToList(std::int64_t{i % 10});
    level->AddToList(&none);
    level = CUsePtr<CRefVariant>(level->GetMixedListElemRef(1, ok));
  }
  level->AddToList(&leaf);
  return outer;
}

// Maps in maps in the same way; every other level is a list of one map.
CVariant DeepMap(int depth, const CVariant& leaf) {
  const CVariant none(Map), listOfOne = Variants({none});
  CVariant outer(Map);
  outer.SetMapValue(MakeText("k"), &none);
  CUsePtr<CVariant> level = outer.FindMapValue(MakeText("k"));
  for (int i = 0; i < depth; ++i) {
    level->SetMapValue(MakeText("a"), std::int64_t{i % 10});
    level->SetMapValue(MakeText("k"), &none);
    level->SetMapValue(MakeText("l"), &listOfOne);
    level = level->FindMapValue(MakeText("k"));
  }
  level->SetMapValue(MakeText("leaf"), &leaf);
  return outer;
}

TEST(CVariantNested, ListsNeedNoStackForTheirDepth) {
  OnASmallStack([] {
    const CVariant leaf = TextValue(String, "leaf"), other = TextValue(String, "more");
    const CVariant list = DeepList(kDepth, leaf);
    const CVariant copy(list), later = DeepList(kDepth, other);
    EXPECT_TRUE(list.IsEqual(&copy));
    EXPECT_EQ(list.Compare(&copy), 0);
    EXPECT_FALSE(list.IsEqual(&later));
    EXPECT_EQ(list.Compare(&later), -1);
    EXPECT_EQ(later.Compare(&list), 1);
    EXPECT_TRUE(list.IsEqual(Foreign(copy).Get()));
    EXPECT_EQ(list.Compare(Foreign(later).Get()), -1);

    const std::string text = Utf8(list.ToText(MakeText(",")));
    EXPECT_EQ(text.size(), 2u * kDepth + 4);
    EXPECT_EQ(text.substr(0, 8), "0,1,2,3,");
    EXPECT_EQ(text.substr(text.size() - 6), "9,leaf");
    EXPECT_EQ(list.GetHash(), copy.GetHash());

    CVariant assigned = Longs({1});
    assigned.Assign(&list);
    assigned = later;
    assigned.AddToList(&list);
    EXPECT_EQ(assigned.Find(&list), 1);
    EXPECT_TRUE(assigned.ReverseList());
    assigned.SetListElem(0, true);
    assigned.Erase(1);
    EXPECT_EQ(assigned.SizeOfList(), 1u);
  });
}

TEST(CVariantNested, MapsNeedNoStackForTheirDepth) {
  OnASmallStack([] {
    const CVariant leaf(true), other(false);
    CVariant map = DeepMap(kDepth, leaf);
    const CVariant copy(map), differing = DeepMap(kDepth, other);
    EXPECT_TRUE(map.IsEqual(&copy));
    EXPECT_FALSE(map.IsEqual(&differing));
    EXPECT_TRUE(map.IsEqual(Foreign(copy).Get()));
    const std::string text = Utf8(map.ToText(MakeText(",")));
    EXPECT_EQ(text.substr(0, 16), "{k:{a:0,k:{a:1,k");
    EXPECT_EQ(text.substr(text.size() - 14), "},l:{}},l:{}}}");
    EXPECT_NE(map.GetHash(), differing.GetHash());

    CVariant holder(Map);
    holder.SetMapValue(MakeText("m"), &map);
    holder.SetMapValue(MakeText("m"), std::int64_t{1});
    map.Clear();
    EXPECT_EQ(map.GetMapSize(), 0);
  });
}

// A level that somebody else holds stays when the rest goes.
TEST(CVariantNested, LevelsLiveAsLongAsTheirHolders) {
  CVariant map = DeepMap(1000, CVariant(true));
  CUsePtr<CVariant> held = map.FindMapValue(MakeText("k"));
  for (int i = 0; i < 500; ++i) held = held->FindMapValue(MakeText("k"));
  const std::string before = Utf8(held->ToText(MakeText(",")));
  map.SetEmpty();
  EXPECT_EQ(held->GetUseCount(), 1u);
  EXPECT_EQ(Utf8(held->ToText(MakeText(","))), before);
}

TEST(CVariantNested, CopiesKeepWhatEveryLevelIs) {
  CVariant sorted = Longs({2, 1});
  sorted.SetSorted(true);
  CVariant texts(StringList);
  for (int i = 0; i < 70; ++i) texts.AddToList(MakeText(std::to_string(i)).Get());
  for (int i = 0; i < 10; ++i) texts.FindFrom(0, MakeText("5").Get());
  ASSERT_TRUE(texts.HasIndex());
  CVariant inner = Variants({sorted, texts, CVariant(Map), CVariant(MixedList), CVariant()});
  const CVariant list = Variants({inner, CVariant(true)});
  const CVariant copy(list);
  ASSERT_EQ(copy.Variants().size(), 2u);
  const auto levels = copy.Variants()[0].Variants();
  ASSERT_EQ(levels.size(), 5u);
  EXPECT_TRUE(levels[0].IsSorted());
  EXPECT_TRUE(levels[1].HasIndex());
  EXPECT_EQ(levels[2].GetMapSize(), 0);
  EXPECT_EQ(levels[3].GetType(), MixedList);
  EXPECT_EQ(levels[4].GetType(), Empty);
  EXPECT_TRUE(copy.Variants()[1].GetBool());
}

// The first difference decides, and reports come in the order of the elements up to it.
TEST(CVariantNested, AreComparedInTheOrderOfTheirElements) {
  Reports reports;
  const CVariant one(std::int64_t{1}), text = TextValue(String, "x"), yes(true);
  const CVariant left = Variants({Variants({one, text}), Variants({one})});
  const CVariant right = Variants({Variants({one, yes}), Variants({text})});
  EXPECT_FALSE(left.IsEqual(&right));
  EXPECT_THAT(reports.Take(), ElementsAre(HasSubstr("Type of this: String, type of parameter: "
                                                    "Boolean")));
  EXPECT_EQ(left.Compare(&right), 0);  // what cannot be compared counts as no difference
  EXPECT_THAT(reports.Take(), SizeIs(2));

  for (const VariantType type : {String, DimensionList, Map}) {  // and what is no list of its kind
    const CVariant single = Variants({SampleOf(type)}), list = Variants({Variants({one})});
    reports.Take();
    EXPECT_EQ(single.Compare(&list), 0);
    EXPECT_EQ(list.Compare(&single), 0);
    EXPECT_THAT(reports.Take(), SizeIs(2));
  }

  const struct {
    CVariant left, right;
    int order;
  } rows[] = {
      {Variants({Variants({one}), one}), Variants({Variants({one, one})}), -1},
      {Variants({Variants({one, one})}), Variants({Variants({one}), one}), 1},
      {Variants({Variants({}), one}), Variants({Variants({})}), 1},
      {Variants({Variants({Variants({})})}), Variants({Variants({Variants({})})}), 0},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.left.Compare(&row.right), row.order);
    EXPECT_EQ(row.right.Compare(&row.left), -row.order);
    EXPECT_EQ(row.left.IsEqual(&row.right), row.order == 0);
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
}

// ---- values of other implementations that never end

TEST(CVariantNested, AForeignValueInItselfIsReadToABoundedDepth) {
  Reports reports;
  for (const VariantType type : {MixedList, DimensionList, IPRangeList, Map}) {
    SCOPED_TRACE(TypeInfo(type).fName);
    const auto foreign = Foreign(CVariant(type));
    foreign->fValue.SetMapValue(MakeText("k"), std::int64_t{1});
    foreign->fLies.holdsItself = true;
    foreign->fLies.listSize = 1;
    OnASmallStack([&] {
      CVariant value;
      value.Assign(foreign.Get());
      EXPECT_EQ(value.GetType(), type);
      int depth = 0;
      for (const CVariant* level = &value; level && level->SizeOfList() == 1; ++depth) {
        level = type == Map ? level->FindMapValue(MakeText("k")).Get() : &level->Variants()[0];
      }
      EXPECT_EQ(depth, 64);
    });
    EXPECT_THAT(reports.Take(),
                ElementsAre("'CVariant: reading another implementation': 'Error: its lists and "
                            "maps are nested too deep.'"));
    OnASmallStack([&] {
      SampleOf(type).IsEqual(foreign.Get());
      SampleOf(type).Compare(foreign.Get());
      CVariant list(MixedList);
      list.JoinLists(foreign.Get());
      list.AddToList(foreign.Get());
      list.Find(foreign.Get());
      list.EraseFromList(foreign.Get());
      list.Contains(foreign.Get(), nullptr);
    });
    reports.Take();
    EXPECT_EQ(foreign->GetUseCount(), 1u);
  }
}

// The depth is bounded, not the number of lists beside one another.
TEST(CVariantNested, ForeignListsBesideOneAnotherAreReadWhole) {
  Reports reports;
  CVariant list(MixedList);
  for (std::int64_t i = 0; i < 200; ++i) {
    const CVariant element = Longs({i, i + 1});
    list.AddToList(&element);
  }
  const auto foreign = Foreign(list);
  foreign->fLies.holdsForeign = true;
  CVariant value;
  value.Assign(foreign.Get());
  EXPECT_TRUE(value.IsEqual(&list));
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantNested, AForeignValueManyTimesInItselfIsReadToABoundedSize) {
  Reports reports;
  for (const std::uint64_t size : {2, 1000, 1'000'000}) {
    SCOPED_TRACE(size);
    const auto foreign = Foreign(CVariant(MixedList));
    foreign->fLies.holdsItself = true;
    foreign->fLies.listSize = size;
    CVariant value;
    value.Assign(foreign.Get());
    EXPECT_EQ(value.SizeOfList(), size);
    EXPECT_THAT(reports.Take(), SizeIs(1));
  }
}

}  // namespace
