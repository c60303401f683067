#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Common/CVariant.h"
#include "tests/Common/ListSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

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

TEST(CVariantLists, GiveTheTextFormsOfAddressesRangesAndHosts) {
  const std::pair<CVariant, const char*> rows[] = {
      {Texts({"::", "::1"}, IPList), "0:0:0:0:0:0:0:1"},
      {Texts({"10.0.0.1", "10.0.0.9"}, IPRange), "10.0.0.9"},
      {Variants({Texts({"::"}, IPRange), SampleOf(IPRange)}, IPRangeList), "10.0.0.1, 10.0.0.9"},
      {Texts({"", HostText('b', "b.example")}, HostAndCertificateList),
       "bbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbbb|b.example"},
  };
  for (const auto& [list, text] : rows) {
    bool ok = false;
    EXPECT_EQ(TakeUtf8(list.GetStringListElem(1, ok)), text);
    EXPECT_TRUE(ok);
  }
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

}  // namespace
