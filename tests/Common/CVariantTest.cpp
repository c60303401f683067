#include "Common/CVariant.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/Common/ForeignVariant.h"
#include "tests/Common/VariantSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

// Everything that a value is, through its public face; what a copy must have alike.
std::string Picture(const CVariant& value) {
  std::string picture = TypeInfo(value.GetType()).fName;
  picture += value.IsSorted() ? " sorted" : "";
  if (value.IsNumberType()) {
    picture += value.GetType() == Double ? " " + std::to_string(value.GetDouble())
                                         : " " + std::to_string(value.GetLong());
  }
  if (value.GetBool()) picture += " true";
  if (TypeFamily::TextScalars.Has(value.GetType())) picture += " " + Utf8(value.GetText());
  if (const VariantMap* entries = value.MapEntries()) {
    for (const auto& [key, entry] : *entries) picture += " " + Utf8(key) + ":" + Picture(*entry);
  } else if (value.IsListType()) {
    picture += " [";
    for (std::uint64_t i = 0; i < value.SizeOfList(); ++i) {
      const auto index = static_cast<std::int64_t>(i);
      bool ok = false;
      CVariant element;
      if (value.ReadElement(index, element)) {
        picture += Picture(element) + ";";
      } else if (value.GetType() == Dimension) {
        picture += std::to_string(value.GetLongListElem(index, ok)) + ";";
      } else {
        picture += Utf8(value.GetTextListElem(index, ok)) + ";";
      }
    }
    picture += "]";
  }
  return picture;
}

// A list of lists of lists, 3 levels deep.
CVariant Nested(int width) {
  CVariant outer(MixedList);
  for (int i = 0; i < width; ++i) {
    const CVariant inner = Variants(
        {Variants({Longs({i, i + 1}), TextValue(String, "leaf")}), CVariant(std::int64_t{i})});
    outer.AddToList(&inner);
  }
  return outer;
}

// "99" down to "0".
CVariant ManyTexts() {
  CVariant list(StringList);
  for (int i = 99; i >= 0; --i) list.AddToList(MakeText(std::to_string(i)).Get());
  return list;
}

// ---- construction

TEST(CVariant, IsOfTheTypeItIsMadeWith) {
  Reports reports;
  for (const VariantType type : AllTypes()) {
    const CVariant value(type);
    EXPECT_EQ(value.GetType(), type);
    EXPECT_EQ(value.GetUseCount(), 1u);
    EXPECT_FALSE(value.IsSorted());
  }
  EXPECT_EQ(CVariant(1.5).GetDouble(), 1.5);
  EXPECT_EQ(CVariant(std::int64_t{-5}).GetLong(), -5);
  EXPECT_TRUE(CVariant(true).GetBool());
  EXPECT_EQ(Utf8(CVariant(MakeText("text").Get()).GetText()), "text");
  EXPECT_EQ(CVariant(Hex, 255).GetLong(), 255);
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariant, RefusesAnUnknownTypeWithOneReport) {
  Reports reports;
  for (const int id : {32, 200, 255}) {
    EXPECT_EQ(CVariant(static_cast<VariantType>(id)).GetType(), Empty);
    ASSERT_EQ(reports.Host().fPrinted.size(), 1u);
    const PrintedLine line = reports.Host().fPrinted.front();
    EXPECT_EQ(line.level, 1u);
    EXPECT_EQ(line.className, "CVariant");
    EXPECT_EQ(line.function, "CVariant");
    EXPECT_EQ(line.file, "Common\\CVariant");
    EXPECT_THAT(
        reports.Take(),
        ElementsAre("'CVariant: Constructor': Unknown type '-invalid-' for object 'Variant'. "
                    "Details: 'Type not handled by CVariant.'"));
  }
}

TEST(CVariant, TakesALongForIntegerTypesAlone) {
  Reports reports;
  for (const VariantType type : AllTypes()) {
    const CVariant value(type, 9);
    if (TypeFamily::IntegerScalars.Has(type)) {
      EXPECT_EQ(value.GetType(), type);
      EXPECT_EQ(value.GetLong(), 9);
      EXPECT_THAT(reports.Take(), IsEmpty());
    } else {
      EXPECT_EQ(value.GetType(), Empty);
      EXPECT_THAT(reports.Take(), ElementsAre("Wrong type for Long!"));
    }
  }
}

TEST(CVariant, CountsItsUsesOnceForBothBases) {
  auto* const value = new CVariant(std::int64_t{1});
  Selvane::IVariant* const asInterface = value;
  CUseCounted* const asCounted = value;
  EXPECT_EQ(asInterface->AddRef(), 2u);
  EXPECT_EQ(asCounted->AddRef(), 3u);
  EXPECT_EQ(value->GetUseCount(), 3u);
  EXPECT_EQ(asCounted->UseCount(), 3u);
  EXPECT_FALSE(asInterface->Release());
  EXPECT_FALSE(asCounted->Release());
  EXPECT_TRUE(value->Release());
}

TEST(CVariant, WritesNoReportWhileNobodyListens) {
  InSlot<QuestionedHost> host{Gates{.active = false}};
  CVariant(static_cast<VariantType>(32));
  CVariant(1.0).GetLong();
  EXPECT_THAT(host->fPrinted, IsEmpty());
}

// ---- copies

TEST(CVariant, CopiesEveryType) {
  for (const VariantType type : AllTypes()) {
    SCOPED_TRACE(TypeInfo(type).fName);
    const CVariant sample = SampleOf(type);
    const CVariant copy(sample);
    EXPECT_EQ(Picture(copy), Picture(sample));
    CVariant assigned(true);
    assigned.Assign(&sample);
    EXPECT_EQ(Picture(assigned), Picture(sample));
    const VariantPtr clone(static_cast<CVariant*>(sample.Clone()));
    EXPECT_EQ(Picture(*clone), Picture(sample));
    EXPECT_EQ(clone->GetUseCount(), 1u);
  }
}

TEST(CVariant, AssignsEveryTypeOverEveryType) {
  for (const VariantType from : AllTypes()) {
    for (const VariantType to : AllTypes()) {
      SCOPED_TRACE(std::string(TypeInfo(from).fName) + " over " + TypeInfo(to).fName);
      const CVariant source = SampleOf(from);
      CVariant target = SampleOf(to);
      target.Assign(&source);
      EXPECT_EQ(Picture(target), Picture(source));
      CVariant other = SampleOf(to);
      other = source;
      EXPECT_EQ(Picture(other), Picture(source));
    }
  }
}

TEST(CVariant, CopiesAreIndependent) {
  CVariant list = Nested(3);
  const CVariant copy(list);
  const std::string before = Picture(copy);
  list.Erase(0);
  list.SetListElem(0, std::int64_t{7});
  EXPECT_EQ(Picture(copy), before);

  CVariant map = SampleOf(Map);
  const CVariant mapCopy(map);
  map.FindMapValue(MakeText("a"))->SetLong(99);
  EXPECT_EQ(mapCopy.FindMapValue(MakeText("a"))->GetLong(), 1);
}

TEST(CVariant, AssignedToItselfStaysAsItIs) {
  for (const VariantType type : AllTypes()) {
    CVariant value = SampleOf(type);
    const std::string before = Picture(value);
    value.Assign(&value);
    EXPECT_EQ(Picture(value), before);
  }
}

TEST(CVariant, AssignsNothingFromNull) {
  CVariant value(std::int64_t{4});
  value.Assign(nullptr);
  EXPECT_EQ(value.GetLong(), 4);
}

TEST(CVariant, ReadsAForeignVariantOfEveryType) {
  for (const VariantType type : AllTypes()) {
    SCOPED_TRACE(TypeInfo(type).fName);
    CVariant sample = SampleOf(type);
    const auto foreign = Foreign(sample);
    CVariant value = SampleOf(StringList);
    value.Assign(foreign.Get());
    EXPECT_EQ(Picture(value), Picture(sample));
    EXPECT_EQ(foreign->GetUseCount(), 1u);
  }
}

TEST(CVariant, ReadsTheOrderOfAForeignListWithItsFlag) {
  CVariant sorted = Longs({3, 1, 2});
  sorted.SetSorted(true);
  CVariant value;
  value.Assign(Foreign(sorted).Get());
  EXPECT_TRUE(value.IsSorted());
  EXPECT_THAT(LongsOf(value), ElementsAre(1, 2, 3));
}

TEST(CVariant, SurvivesAForeignVariantThatTalksNonsense) {
  const Reports reports;  // of which there are many
  for (const VariantType type : AllTypes()) {
    const auto foreign = Foreign(SampleOf(type));
    for (int lie = 0; lie < 40; ++lie) {
      for (const bool givesNoObjects : {false, true}) {
        foreign->fLies = {static_cast<VariantType>(lie), 5, true, givesNoObjects};
        CVariant value = Longs({1});
        value.Assign(foreign.Get());
        EXPECT_EQ(static_cast<int>(value.GetType()), lie < 32 ? lie : 0);
      }
    }
    foreign->fLies = {};
    foreign->fLies.listSize = ~std::uint64_t{0};
    CVariant value;
    value.Assign(foreign.Get());
    EXPECT_TRUE(!value.IsListType() || value.SizeOfList() == 0);
  }
}

TEST(CVariant, AssignsFromAnElementOfItself) {
  CVariant list = Variants({Longs({1, 2, 3}), TextValue(String, "x")});
  bool ok = false;
  const CUsePtr<Selvane::IVariant> element(list.GetMixedListElem(0, ok));
  list.Assign(element.Get());
  EXPECT_THAT(LongsOf(list), ElementsAre(1, 2, 3));

  CVariant outer = Variants({TextValue(String, "a text that lies in no store of eight bytes")});
  outer.Assign(&outer.Variants().front());
  EXPECT_EQ(Picture(outer), "String a text that lies in no store of eight bytes");

  CVariant map(Map);
  map.SetMapValue(MakeText("inner"), std::int64_t{5});
  const auto inner = map.FindMapValue(MakeText("inner"));
  inner->Assign(&map);  // what the map holds is a part of what is copied
  EXPECT_EQ(Picture(*inner), "Map inner:Long 5");
  map.Assign(inner.Get());
  EXPECT_EQ(Picture(map), "Map inner:Long 5");
}

TEST(CVariant, CopiesTheIndexAndStartsToCountAnew) {
  CVariant list = ManyTexts();
  for (int i = 0; i < 10; ++i) list.FindFrom(0, MakeText("50").Get());
  ASSERT_TRUE(list.HasIndex());
  const CVariant copy(list);
  EXPECT_TRUE(copy.HasIndex());
  EXPECT_EQ(copy.LookupCount(), 0u);
  list.Assign(&list);
  EXPECT_TRUE(list.HasIndex());
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(copy.FindFrom(0, MakeText(std::to_string(i)).Get()), 99 - i);
  }
}

TEST(CVariant, IsEmptyAndFrozenWhereItWasMovedFrom) {
  const CVariant other = Longs({1, 2});
  const std::function<void(CVariant&)> changes[] = {
      [](CVariant& source) { source.SetLong(5); },
      [](CVariant& source) { source.SetDouble(5); },
      [](CVariant& source) { source.SetBool(true); },
      [](CVariant& source) { source.SetString(MakeText("x").Get()); },
      [](CVariant& source) { source.SetType(LongList); },
      [](CVariant& source) { source.SetSorted(true); },
      [&](CVariant& source) { source.Assign(&other); },
      [&](CVariant& source) { source.Assign(Foreign(other).Get()); },
      [](CVariant& source) { source.SetListFromArray(LongList, nullptr, 0); },
      [](CVariant& source) { source.Reserve(100); },
      [](CVariant& source) { source.Clear(); },
      [](CVariant& source) { source.SetEmpty(); },
  };
  for (const VariantType type : AllTypes()) {
    for (const auto& change : changes) {
      CVariant source = SampleOf(type);
      const std::string before = Picture(source);
      const CVariant target(std::move(source));
      EXPECT_EQ(Picture(target), before);
      change(source);
      EXPECT_EQ(Picture(source), "Empty");
      EXPECT_TRUE(source.IsStoredInline());
    }
  }
}

TEST(CVariant, HandsItsIndexAndItsCountOverWhereItIsMoved) {
  CVariant list = ManyTexts();
  for (int i = 0; i < 9; ++i) list.FindFrom(0, MakeText("50").Get());
  CVariant counted(std::move(list));
  EXPECT_EQ(counted.LookupCount(), 9u);
  counted.FindFrom(0, MakeText("50").Get());
  ASSERT_TRUE(counted.HasIndex());
  const CVariant indexed(std::move(counted));
  EXPECT_TRUE(indexed.HasIndex());
  EXPECT_EQ(indexed.FindFrom(0, MakeText("50").Get()), 49);
}

// ---- the store

TEST(CVariant, KeepsScalarsOfEightBytesInside) {
  for (const VariantType type : AllTypes()) {
    const bool fits = !TypeInfo(type).fIsList && TypeInfo(type).fElementSize <= 8;
    if (!fits) continue;
    EXPECT_TRUE(SampleOf(type).IsStoredInline()) << TypeInfo(type).fName;
  }
  CVariant value = Longs({1, 2, 3});
  EXPECT_FALSE(value.IsStoredInline());
  value.SetLong(1);
  EXPECT_TRUE(value.IsStoredInline());
}

TEST(CVariant, GrowsListsOfVariantsPastAThousand) {
  CVariant list(MixedList);
  for (int i = 0; i < 1500; ++i) {
    const CVariant element =
        i % 3 == 0 ? CVariant(std::int64_t{i})
                   : (i % 3 == 1 ? Longs({i, i, i}) : TextValue(String, std::to_string(i)));
    list.AddToList(&element);
  }
  ASSERT_EQ(list.SizeOfList(), 1500u);
  CVariant element;
  ASSERT_TRUE(list.ReadElement(1000, element));
  EXPECT_EQ(Picture(element), "LongList [Long 1000;Long 1000;Long 1000;]");
  ASSERT_TRUE(list.ReverseList());
  ASSERT_TRUE(list.ReadElement(0, element));
  EXPECT_EQ(Picture(element), "String 1499");
  while (list.SizeOfList() > 1) list.Erase(static_cast<std::int64_t>(list.SizeOfList() / 2));
  EXPECT_EQ(list.SizeOfList(), 1u);
}

TEST(CVariant, TakesItselfAsAnElement) {
  CVariant list = Variants({CVariant(std::int64_t{1})});
  for (int i = 0; i < 6; ++i) list.AddToList(&list);
  EXPECT_EQ(list.SizeOfList(), 7u);
  list.SetListElem(0, &list);
  CVariant element;
  ASSERT_TRUE(list.ReadElement(0, element));
  EXPECT_EQ(element.SizeOfList(), 7u);
}

TEST(CVariant, ReservesForListsAndNeverShrinks) {
  CVariant list(LongList);
  list.Reserve(100);
  EXPECT_EQ(list.CapacityInBytes(), 800u);
  list.Reserve(10);
  EXPECT_EQ(list.CapacityInBytes(), 800u);
  EXPECT_EQ(list.SizeOfList(), 0u);
  CVariant scalar(std::int64_t{1});
  scalar.Reserve(100);
  EXPECT_TRUE(scalar.IsStoredInline());
  EXPECT_THROW(list.Reserve(std::uint64_t{1} << 62), std::bad_alloc);
  EXPECT_THROW(list.Reserve(~std::uint64_t{0}), std::bad_alloc);
  EXPECT_EQ(list.GetType(), LongList);
}

TEST(CVariant, ClearKeepsTheTypeAndSetEmptyDoesNot) {
  Reports reports;
  for (const VariantType type : AllTypes()) {
    SCOPED_TRACE(TypeInfo(type).fName);
    CVariant value = SampleOf(type);
    value.Clear();
    EXPECT_EQ(Picture(value), Picture(CVariant(type)));
    value = SampleOf(type);
    value.SetEmpty();
    EXPECT_EQ(Picture(value), "Empty");
  }
  CVariant cleared = Longs({2, 1}), emptied = Longs({2, 1});
  cleared.SetSorted(true);
  emptied.SetSorted(true);
  cleared.Clear();
  emptied.SetEmpty();
  EXPECT_FALSE(cleared.IsSorted());
  EXPECT_FALSE(emptied.IsSorted());
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariant, TypesOnlyAnEmptyValue) {
  for (const VariantType type : AllTypes()) {
    CVariant value;
    value.SetType(type);
    EXPECT_EQ(Picture(value), Picture(CVariant(type)));
    const bool wasEmpty = value.GetType() == Empty;
    value.SetType(Boolean);
    EXPECT_EQ(value.GetType(), wasEmpty ? Boolean : type);
  }
  Reports reports;
  CVariant value;
  value.SetType(static_cast<VariantType>(32));
  EXPECT_EQ(value.GetType(), Empty);
  EXPECT_THAT(reports.Take(), IsEmpty());
}

// ---- maps

TEST(CVariant, KeepsMapEntriesInTheOrderOfTheirKeys) {
  CVariant map(Map);
  EXPECT_EQ(map.GetMapSize(), 0);
  for (const char* key : {"b", "a", "B", "\xC3\xA9", ""}) {
    map.SetMapValue(MakeText(key), std::int64_t{1});
  }
  EXPECT_EQ(map.GetMapSize(), 5);
  EXPECT_EQ(map.GetListSize(), 5u);
  const CUsePtr<Selvane::IVariant> keys(map.GetMapKeys());
  EXPECT_EQ(keys->GetType(), StringList);
  EXPECT_THAT(TextsOf(static_cast<const CVariant&>(*keys)),
              ElementsAre("", "B", "a", "b", "\xC3\xA9"));
}

TEST(CVariant, ReplacesAndErasesMapEntries) {
  CVariant map(Map);
  const CVariant list = Longs({1, 2});
  map.SetMapValue(MakeText("k"), &list);
  const auto held = map.FindMapValue(MakeText("k"));
  EXPECT_EQ(held->GetUseCount(), 2u);
  map.SetMapValue(MakeText("k"), MakeText("text"));
  EXPECT_EQ(held->GetUseCount(), 1u);  // the map has let go of it
  EXPECT_THAT(LongsOf(*held), ElementsAre(1, 2));
  EXPECT_EQ(Picture(map), "Map k:String text");

  EXPECT_FALSE(map.EraseMapValue(MakeText("other")));
  EXPECT_TRUE(map.EraseMapValue(MakeText("k")));
  EXPECT_FALSE(map.EraseMapValue(MakeText("k")));
  EXPECT_EQ(map.GetMapSize(), 0);
  EXPECT_FALSE(map.FindMapValue(MakeText("k")));
}

TEST(CVariant, AnswersMapQuestionsThroughItsInterface) {
  CVariant map(Map);
  const CUsePtr<CUnicodeString> key = MakeUseCounted<CUnicodeString>("k");
  const CVariant value(std::int64_t{7});
  map.SetMapValue(key.Get(), &value);
  const CUsePtr<Selvane::IVariant> found(map.GetMapValue(key.Get()));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->GetLong(), 7);
  map.SetMapValue(key.Get(), nullptr);
  EXPECT_EQ(map.FindMapValue(MakeText("k"))->GetLong(), 7);
  map.SetMapValue(MakeUseCounted<CUnicodeString>("other").Get(), nullptr);
  EXPECT_EQ(map.GetMapSize(), 1);
  EXPECT_TRUE(map.EraseMapValue(key.Get()));
  EXPECT_EQ(map.GetMapValue(key.Get()), nullptr);
  // No key is the empty key.
  map.SetMapValue(static_cast<Selvane::IUnicodeString*>(nullptr), &value);
  EXPECT_TRUE(map.FindMapValue(MakeText("")));
}

TEST(CVariant, IsNoMapUnlessItIsOne) {
  Reports reports;
  for (const VariantType type : AllTypes()) {
    if (type == Map) continue;
    CVariant value = SampleOf(type);
    const std::string before = Picture(value);
    value.SetMapValue(MakeText("k"), std::int64_t{1});
    value.SetMapValue(MakeText("k"), MakeText("v"));
    value.SetMapValue(MakeText("k"), &value);
    EXPECT_FALSE(value.FindMapValue(MakeText("k")));
    EXPECT_FALSE(value.EraseMapValue(MakeText("k")));
    EXPECT_EQ(value.GetMapSize(), -1);
    EXPECT_EQ(value.GetMapKeys(), nullptr);
    EXPECT_EQ(Picture(value), before);
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariant, HoldsMapsInMaps) {
  CVariant inner = SampleOf(Map), outer(Map);
  outer.SetMapValue(MakeText("m"), &inner);
  outer.SetMapValue(MakeText("self"), &outer);  // a copy of what it was
  EXPECT_EQ(Picture(outer), "Map m:Map a:Long 1 b:Long 2 self:Map m:Map a:Long 1 b:Long 2");
}

}  // namespace
