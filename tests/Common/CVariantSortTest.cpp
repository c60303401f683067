#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Common/CVariant.h"
#include "tests/Common/VariantSupport.h"
#include "tests/Common/WrittenSort.h"
#include "tests/support/SmallStack.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<double> DoublesOf(const CVariant& list) {
  std::vector<double> values;
  for (std::uint64_t i = 0; i < list.SizeOfList(); ++i) {
    bool ok = false;
    values.push_back(list.GetDoubleListElem(static_cast<std::int64_t>(i), ok));
  }
  return values;
}

// "5" for a long and "5." for a double, which are equal and yet can be told apart.
std::string NumbersShown(const std::vector<TNumber>& numbers) {
  std::string shown;
  for (const TNumber& number : numbers) {
    shown += std::to_string(static_cast<std::int64_t>(number.Double())) +
             (number.IsDouble() ? ". " : " ");
  }
  return shown;
}

std::string NumbersShown(const CVariant& list) {
  std::vector<TNumber> numbers;
  for (std::uint64_t i = 0; i < list.SizeOfList(); ++i) {
    CVariant element;
    list.ReadElement(static_cast<std::int64_t>(i), element);
    numbers.push_back(element.GetType() == Double ? TNumber::Of(element.GetDouble())
                                                  : TNumber::Of(element.GetLong()));
  }
  return NumbersShown(numbers);
}

TEST(CVariantSort, OrdersEveryKind) {
  const auto sorted = [](CVariant list) {
    list.SortList();
    return list;
  };
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  for (const VariantType type : {LongList, CategoryList, HexList, DLPCategoryList}) {
    EXPECT_THAT(LongsOf(sorted(Longs({3, -1, kMin, 2}, type))), ElementsAre(kMin, -1, 2, 3));
  }
  for (const VariantType type : {StringList, RegexList, MediaTypeList, SSOConnectorList}) {
    EXPECT_THAT(TextsOf(sorted(Texts({"b", "\xC3\xA9", "", "a", "B", "ab"}, type))),
                ElementsAre("", "B", "a", "ab", "b", "\xC3\xA9"));
  }
  EXPECT_THAT(DoublesOf(sorted(Doubles({2.5, -INFINITY, 0.5, INFINITY}))),
              ElementsAre(-INFINITY, 0.5, 2.5, INFINITY));
  // Contract: of IPv6 addresses the last 8 bytes alone count, and equal ones fall as they fall.
  EXPECT_THAT(TextsOf(sorted(Texts({"::2", "9.9.9.9", "ffff::1", "200.0.0.1", "1::3"}, IPList))),
              ElementsAre("9.9.9.9", "200.0.0.1", "ffff:0:0:0:0:0:0:1", "0:0:0:0:0:0:0:2",
                          "1:0:0:0:0:0:0:3"));
  EXPECT_THAT(TextsOf(sorted(Texts({HostText('b', "a"), HostText('a', "z"), HostText('a', "b")},
                                   HostAndCertificateList))),
              ElementsAre(HostText('a', "b"), HostText('a', "z"), HostText('b', "a")));
}

// ---- where equal elements end up

TEST(CVariantSort, PutsEqualElementsWhereTheContractPutsThem) {
  const auto sorted = [](std::initializer_list<std::pair<int, bool>> numbers) {
    CVariant list(NumberList);
    for (const auto& [value, isDouble] : numbers) {
      if (isDouble) {
        list.AddToList(static_cast<double>(value));
      } else {
        list.AddToList(std::int64_t{value});
      }
    }
    list.SortList();
    return NumbersShown(list);
  };
  EXPECT_EQ(sorted({{1, false}, {1, true}, {0, false}}), "0 1. 1 ");
  EXPECT_EQ(sorted({{1, true}, {1, false}, {0, false}}), "0 1 1. ");
  // 2a 1b 2c 1d 2e gives 1d 1b 2c 2a 2e: each of them is the double in turn.
  EXPECT_EQ(sorted({{2, true}, {1, false}, {2, false}, {1, false}, {2, false}}), "1 1 2 2. 2 ");
  EXPECT_EQ(sorted({{2, false}, {1, true}, {2, false}, {1, false}, {2, false}}), "1 1. 2 2 2 ");
  EXPECT_EQ(sorted({{2, false}, {1, false}, {2, true}, {1, false}, {2, false}}), "1 1 2. 2 2 ");
  EXPECT_EQ(sorted({{2, false}, {1, false}, {2, false}, {1, true}, {2, false}}), "1. 1 2 2 2 ");
  EXPECT_EQ(sorted({{2, false}, {1, false}, {2, false}, {1, false}, {2, true}}), "1 1 2 2 2. ");
}

void AddNumber(std::int64_t value, bool asDouble, CVariant& list, std::vector<TNumber>& expected) {
  if (asDouble) {
    expected.push_back(TNumber::Of(static_cast<double>(value)));
    list.AddToList(static_cast<double>(value));
  } else {
    expected.push_back(TNumber::Of(value));
    list.AddToList(value);
  }
}

TEST(CVariantSort, AgreesWithTheWrittenProcedureOnNumbers) {
  std::mt19937 random(11);
  for (int round = 0; round < 3000; ++round) {
    const std::size_t count = random() % 40;
    const int range = 1 + static_cast<int>(random() % 12);
    std::vector<TNumber> expected;
    CVariant list(NumberList);
    for (std::size_t i = 0; i < count; ++i) {
      const auto value = static_cast<std::int64_t>(random() % range);
      AddNumber(value, random() % 2 == 0, list, expected);
    }
    WrittenSort(expected, 0, static_cast<std::int64_t>(count) - 1, NumberElement::IsLessOrEqual);
    list.SortList();
    ASSERT_EQ(NumbersShown(list), NumbersShown(expected)) << "round " << round;
  }
}

// Of two longs that are one double, both are equal to it and yet not to one another.
TEST(CVariantSort, AgreesWithTheWrittenProcedureBeyondWhatADoubleHolds) {
  std::mt19937 random(17);
  for (const std::int64_t base : {std::int64_t{1} << 53, -(std::int64_t{1} << 53) - 2}) {
    for (int round = 0; round < 1000; ++round) {
      std::vector<TNumber> expected;
      CVariant list(NumberList);
      const std::size_t count = random() % 6;
      for (std::size_t i = 0; i < count; ++i) {
        const std::int64_t value = base + static_cast<std::int64_t>(random() % 3);
        AddNumber(value, random() % 3 == 0, list, expected);
      }
      WrittenSort(expected, 0, static_cast<std::int64_t>(count) - 1, NumberElement::IsLessOrEqual);
      list.SortList();
      for (std::size_t i = 0; i < count; ++i) {
        CVariant element;
        ASSERT_TRUE(list.ReadElement(static_cast<std::int64_t>(i), element));
        const TNumber number = element.GetType() == Double ? TNumber::Of(element.GetDouble())
                                                           : TNumber::Of(element.GetLong());
        ASSERT_TRUE(NumberElement::AreAlike(number, expected[i])) << "round " << round;
      }
    }
  }
}

TEST(CVariantSort, AgreesWithTheWrittenProcedureOnAddresses) {
  std::mt19937 random(12);
  for (int round = 0; round < 1000; ++round) {
    CVariant list(IPList);
    std::vector<AddressRecord> expected;
    const std::size_t count = random() % 30;
    for (std::size_t i = 0; i < count; ++i) {
      const std::string text =
          random() % 4 ? std::to_string(random() % 9) + "::" + std::to_string(random() % 4)
                       : "1.1.1." + std::to_string(random() % 3);
      list.AddToList(MakeText(text).Get());
      expected.push_back(ParseAddress(text));
    }
    WrittenSort(expected, 0, static_cast<std::int64_t>(count) - 1, IsAddressLessOrEqual);
    list.SortList();
    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), list.Addresses().begin(),
                           list.Addresses().end(), IsAddressEqual))
        << "round " << round;
  }
}

TEST(CVariantSort, AgreesWithTheWrittenProcedureOnTheZeros) {
  std::mt19937 random(13);
  for (int round = 0; round < 1000; ++round) {
    std::vector<double> expected;
    const std::size_t count = random() % 20;
    for (std::size_t i = 0; i < count; ++i) {
      expected.push_back(random() % 3 ? (random() % 2 ? 0.0 : -0.0) : 1.0);
    }
    CVariant list = Doubles(expected);
    WrittenSort(expected, 0, static_cast<std::int64_t>(count) - 1, DoubleElement::IsLessOrEqual);
    list.SortList();
    ASSERT_TRUE(std::ranges::equal(DoublesOf(list), expected, DoubleElement::AreAlike));
  }
}

// Hosts whose records are equal are told apart by the objects in them.
TEST(CVariantSort, AgreesWithTheWrittenProcedureOnHosts) {
  std::mt19937 random(14);
  for (int round = 0; round < 200; ++round) {
    CVariant list(HostAndCertificateList);
    const std::size_t count = random() % 12;
    for (std::size_t i = 0; i < count; ++i) {
      list.AddToList(
          MakeText(HostText(static_cast<char>('a' + random() % 2), random() % 2 ? "x" : "y"))
              .Get());
    }
    std::vector<HostRecord> expected(list.Hosts().begin(), list.Hosts().end());
    WrittenSort(expected, 0, static_cast<std::int64_t>(count) - 1, HostElement::IsLessOrEqual);
    list.SortList();
    for (std::size_t i = 0; i < count; ++i) ASSERT_EQ(list.Hosts()[i].fHost, expected[i].fHost);
  }
}

// Rows on which the procedure takes n * n steps, and which are sorted by other means.
TEST(CVariantSort, AgreesWithTheWrittenProcedureWhereThatIsSlow) {
  for (int kind = 0; kind < 3; ++kind) {
    SCOPED_TRACE(kind);
    constexpr std::int64_t kCount = 600;
    CVariant list(NumberList);
    std::vector<TNumber> expected;
    for (std::int64_t i = 0; i < kCount; ++i) {
      // backwards with equals; two values; up and down
      const std::int64_t value =
          kind == 0 ? (kCount - i) / 3 : (kind == 1 ? i % 2 : std::min(i, kCount - i));
      if (i % 5 == 0) {
        list.AddToList(static_cast<double>(value));
        expected.push_back(TNumber::Of(static_cast<double>(value)));
      } else {
        list.AddToList(value);
        expected.push_back(TNumber::Of(value));
      }
    }
    WrittenSort(expected, 0, kCount - 1, NumberElement::IsLessOrEqual);
    list.SortList();
    EXPECT_EQ(NumbersShown(list), NumbersShown(expected));
  }
}

// Ranges that are equal are told apart by a flag that plays no part in the order.
TEST(CVariantSort, AgreesWithTheWrittenProcedureOnVariants) {
  std::mt19937 random(16);
  for (const VariantType type : {DimensionList, IPRangeList}) {
    for (int round = 0; round < 200; ++round) {
      CVariant list(type);
      std::vector<std::pair<std::string, bool>> expected;
      const std::size_t count = round < 190 ? random() % 20 : 300;
      for (std::size_t i = 0; i < count; ++i) {
        const auto number = static_cast<std::int64_t>(random() % 4);
        CVariant element = type == DimensionList
                               ? Longs({number, 1}, Dimension)
                               : Texts({"1.1.1." + std::to_string(number), "2.2.2.2"}, IPRange);
        if (random() % 2) {
          const Reports reports;  // neither type can be kept sorted
          element.SetSorted(true);
        }
        list.AddToList(&element);
        expected.emplace_back(std::to_string(number), element.IsSorted());
      }
      WrittenSort(expected, 0, static_cast<std::int64_t>(count) - 1,
                  [](const auto& left, const auto& right) { return left.first <= right.first; });
      list.SortList();
      for (std::size_t i = 0; i < count; ++i) {
        const CVariant& element = list.Variants()[i];
        const std::string text = Utf8(element.ToText(MakeText(",")));
        const std::string number = expected[i].first;
        ASSERT_EQ(text, type == DimensionList ? number + "x1" : "1.1.1." + number + ",2.2.2.2");
        ASSERT_EQ(element.IsSorted(), expected[i].second) << "round " << round << " at " << i;
      }
    }
  }
}

TEST(CVariantSort, OrdersLongListsOfVariantsThatRunBackwards) {
  constexpr std::int64_t kCount = 20'000;
  CVariant list(DimensionList);
  for (std::int64_t i = 0; i < kCount; ++i) {
    const CVariant element = Longs({(kCount - i) / 2, 1}, Dimension);
    list.AddToList(&element);
  }
  list.SortList();
  std::int64_t place = 0;
  for (const CVariant& element : list.Variants()) {
    bool ok = false;
    ASSERT_EQ(element.GetLongListElem(0, ok), ++place / 2);
  }
}

// ---- what is in no order

TEST(CVariantSort, AgreesWithTheWrittenProcedureWhereNothingIsInOrder) {
  std::mt19937 random(15);
  for (int round = 0; round < 3000; ++round) {
    std::vector<double> expected;
    CVariant numbers(NumberList);
    const bool isSlow = round >= 2990;  // n * n steps
    const std::size_t count = isSlow ? 500 : random() % 30;
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t ordered =
          isSlow ? (count - i) / (1 + static_cast<std::size_t>(round) % 3) : random() % 10;
      expected.push_back(random() % (isSlow ? 100 : 5) ? static_cast<double>(ordered) : kNaN);
      numbers.AddToList(expected.back());
    }
    CVariant doubles = Doubles(expected);
    WrittenSort(expected, 0, static_cast<std::int64_t>(count) - 1, DoubleElement::IsLessOrEqual);
    doubles.SortList();
    numbers.SortList();
    ASSERT_TRUE(std::ranges::equal(DoublesOf(doubles), expected, DoubleElement::AreAlike)) << round;
    ASSERT_TRUE(std::ranges::equal(DoublesOf(numbers), expected, DoubleElement::AreAlike)) << round;
  }
}

// Two elements that come back to where they were swapped are left there.
TEST(CVariantSort, GoesPastWhatIsInNoOrder) {
  const std::pair<std::vector<double>, const char*> rows[] = {
      {{1, 2, kNaN}, "2 nan 1"},
      {{1, 2, 3, kNaN}, "3 nan 1 2"},
      {{kNaN, 2, 1}, "1 nan 2"},
      {{2, kNaN, 1}, "1 nan 2"},
      {{5, 0, kNaN, 1}, "0 1 nan 5"},  // one of the two has moved
                                       // on
      {{kNaN, 5, 0, 1}, "0 1 nan 5"},
  };
  for (const auto& [values, sorted] : rows) {
    CVariant doubles = Doubles(values), numbers(NumberList);
    for (const double value : values) {
      if (std::isnan(value)) {
        numbers.AddToList(value);
      } else {
        numbers.AddToList(static_cast<std::int64_t>(value));
      }
    }
    doubles.SortList();
    numbers.SortList();
    EXPECT_EQ(Utf8(doubles.ToText(MakeText(" "))), sorted);
    EXPECT_EQ(Utf8(numbers.ToText(MakeText(" "))), sorted);
  }
}

// What cannot be compared is equal to both its neighbours, whatever these are to one another.
TEST(CVariantSort, OrdersVariantsAroundOneThatCannotBeCompared) {
  const Reports reports;  // of the one between
  const auto range = [](const char* low) { return Texts({low, "9.9.9.9"}, IPRange); };
  const CVariant one = Longs({1, 1}, Dimension), two = Longs({2, 1}, Dimension);
  CVariant dimensions = Variants({two, TextValue(String, "text"), one}, DimensionList);
  dimensions.SortList();
  EXPECT_EQ(Utf8(dimensions.ToText(MakeText(" "))), "1x1 text 2x1");
  CVariant ranges =
      Variants({range("2.2.2.2"), Texts({"3.3.3.3"}, IPRange), range("1.1.1.1")}, IPRangeList);
  ranges.SortList();
  EXPECT_EQ(Utf8(ranges.ToText(MakeText(" "))), "1.1.1.1 9.9.9.9  2.2.2.2 9.9.9.9");
}

TEST(CVariantSort, NumbersOfNoTypeAreNeverInOrder) {
  const TNumber strange{String, 1}, one = TNumber::Of(std::int64_t{1});
  EXPECT_FALSE(NumberElement::IsLessOrEqual(strange, one));
  EXPECT_FALSE(NumberElement::IsLessOrEqual(one, strange));
  EXPECT_FALSE(NumberElement::IsLessOrEqual(strange, strange));
}

TEST(CVariantSort, OrdersLongsBeyondWhatADoubleHolds) {
  constexpr std::int64_t kBig = std::int64_t{1} << 53;
  CVariant list = Longs({kBig + 1, kBig, kBig + 2}, NumberList);
  list.SortList();
  EXPECT_THAT(LongsOf(list), ElementsAre(kBig, kBig + 1, kBig + 2));
}

// ---- limits

TEST(CVariantSort, LeavesShortListsAloneAndReportsBeforeItLooks) {
  Reports reports;
  CVariant one = Longs({1}), none(StringList);
  one.SortList();
  none.SortList();
  EXPECT_THAT(reports.Take(), IsEmpty());
  for (const VariantType type : {MixedList, Dimension, IPRange, Map, Long, Empty}) {
    CVariant empty(type);
    empty.SortList();
    EXPECT_EQ(reports.Take().size(), 1u) << TypeInfo(type).fName;
  }
  CVariant mixed = Variants({CVariant(true), CVariant(std::int64_t{1})});
  mixed.SortList();
  CVariant first;
  mixed.ReadElement(0, first);
  EXPECT_EQ(first.GetType(), Boolean);
}

TEST(CVariantSort, NeedsLittleStack) {
  constexpr std::int64_t kCount = 100'000;
  std::vector<std::int64_t> up, down;
  for (std::int64_t i = 0; i < kCount; ++i) up.push_back(i);
  down.assign(up.rbegin(), up.rend());
  OnASmallStack([&] {
    for (const auto& values : {up, down}) {
      for (const VariantType type : {LongList, NumberList}) {
        CVariant list = Longs(values, type);
        list.SortList();
        EXPECT_EQ(LongsOf(list), up);
      }
    }
    // Equals that differ take the written procedure, whose shorter side is never deep.
    CVariant mixed(NumberList);
    for (std::int64_t i = 0; i < 20'000; ++i) {
      if (i % 2) {
        mixed.AddToList(static_cast<double>(i / 4));
      } else {
        mixed.AddToList(i / 4);
      }
    }
    mixed.ReverseList();
    mixed.SortList();
    EXPECT_EQ(mixed.SizeOfList(), 20'000u);
    CVariant texts(StringList);
    for (int i = 0; i < 1000; ++i) texts.AddToList(MakeText(std::to_string(i % 7)).Get());
    texts.SortList();
    EXPECT_TRUE(std::ranges::is_sorted(TextsOf(texts)));
  });
}

TEST(CVariantSort, SwitchesKeepingInOrderOnAndOff) {
  CVariant list = Longs({2, 1});
  list.SetSorted(false);
  EXPECT_THAT(LongsOf(list), ElementsAre(2, 1));
  list.SetSorted(true);
  EXPECT_TRUE(list.IsSorted());
  EXPECT_THAT(LongsOf(list), ElementsAre(1, 2));
  list.SetSorted(false);
  list.AddToList(std::int64_t{0});
  EXPECT_THAT(LongsOf(list), ElementsAre(1, 2, 0));
}

}  // namespace
