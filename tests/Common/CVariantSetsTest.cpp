#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Common/CVariant.h"
#include "tests/Common/VariantPairs.h"
#include "tests/Common/VariantSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

CVariant Text(std::string_view text) {
  return TextValue(String, text);
}

CVariant Range(const std::vector<std::string>& bounds) {
  return Texts(bounds, IPRange);
}

// ---- Contains, over all types

std::string UnhandledReport(VariantType list, VariantType element) {
  return "'CVariant: contains': Error while 'calling' the 'operator 'contains' of Variant'. "
         "Reason: 'Error: unsupported type-combination for 'contains()'! ListType: " +
         NameOf(list) + ", ElementType: " + NameOf(element) + "'.";
}

std::string FindReport(VariantType list, const std::string& action, const std::string& formatType) {
  return FormatReport("CVariant: find", action, list, formatType);
}

// What Contains reports on a list that holds no whole variants.
std::string ReportOfContains(VariantType list, VariantType element, bool isForeign) {
  const bool isLongs = TypeFamily::IntegerLists.Has(list) || list == Dimension;
  const bool isNumbers = isLongs || list == DoubleList || list == NumberList;
  const bool isTexts = TypeFamily::StringLists.Has(list);
  const bool isAddresses = TypeFamily::AddressLists.Has(list);
  if (element == Double) {
    if (isLongs) {
      return FormatReport("CVariant: contains", "Finding value in List", list,
                          "of Type NumberList, HexList or LongList");
    }
    if (isNumbers) return "";
    return FindReport(list, "Finding Double value in DoubleList", "of Type DoubleList");
  }
  if (TypeFamily::IntegerScalars.Has(element)) {
    if (isNumbers) return "";
    return FindReport(
        list, "Finding Long value in List",
        "of Type IntList, NumberList, CategoryList, DLPCategoryList, HexList or LongList");
  }
  if (element == Boolean) {
    if (list == BooleanList) return "";
    return FindReport(list, "Finding Boolean value in List", "of Type BoolList");
  }
  if (TypeFamily::StringScalars.Has(element) || (element == IP && isForeign)) {
    if (isTexts || isAddresses) return "";
    return FindReport(list, "Finding String value in List", "of Type StringList");
  }
  if (element == IP) {
    if (isAddresses) return "";
    return FindReport(list, "Finding IP value in List", "of Type IPList");
  }
  return UnhandledReport(list, element);
}

TEST(CVariantSets, SearchOrReportForEveryPairOfTypes) {
  CheckAllPairs(
      [](const CVariant& list, const Selvane::IVariant* element) {
        // Lists of whole variants answer for themselves, below.
        if (TypeFamily::VariantLists.Has(list.GetType())) return 0;
        return static_cast<int>(list.Contains(element, nullptr));
      },
      [](VariantType list, VariantType element, bool isForeign) -> Expected {
        if (TypeFamily::VariantLists.Has(list)) return {0, ""};
        if (!TypeInfo(list).fIsList) return {0, UnhandledReport(list, element)};
        const bool isIn = (list == BooleanList && element == Boolean) ||
                          (list == DoubleList && element == Double);
        return {isIn, ReportOfContains(list, element, isForeign)};
      });
}

TEST(CVariantSets, SearchWholeVariantsByEquality) {
  Reports reports;
  for (const VariantType type : {MixedList, DimensionList, IPRangeList}) {
    const CVariant list = SampleOf(type);
    for (const VariantType other : AllTypes()) {
      ForEachRoad(SampleOf(other), [&](const char* road, bool, const Selvane::IVariant* element) {
        SCOPED_TRACE(NameOf(type) + " and " + NameOf(other) + ", " + road);
        reports.Take();
        bool isFound = false;
        for (std::uint64_t i = 0; i < list.SizeOfList() && !isFound; ++i) {
          CVariant own;
          list.ReadElement(static_cast<std::int64_t>(i), own);
          isFound = own.IsEqual(element);
        }
        const std::vector<std::string> expected = reports.Take();
        EXPECT_EQ(list.Contains(element, nullptr), isFound);
        EXPECT_EQ(reports.Take(), expected);
      });
    }
  }
}

struct ContainsRow {
  const char* name;
  CVariant list, element;
  bool isIn;
  const char* found;  // text form of the element delivered
};

std::vector<ContainsRow> ContainsRows() {
  CVariant numbers = Longs({3}, NumberList);
  numbers.AddToList(4.5);
  const CVariant mixed = Variants({CVariant(1.5), Text("x"), Longs({1, 2})});
  return {
      {"long", Longs({4, 5}), CVariant(std::int64_t{5}), true, "5"},
      {"no long", Longs({4, 5}), CVariant(std::int64_t{6}), false, ""},
      {"category in a HexList", Longs({10}, HexList), CVariant(Category, 10), true, "a"},
      {"long in a DoubleList", Doubles({1.5, 2}), CVariant(std::int64_t{2}), true, "2"},
      {"double in a DoubleList", Doubles({1.5}), CVariant(1.5), true, "1.5"},
      {"long in a NumberList", numbers, CVariant(std::int64_t{3}), true, "3"},
      {"double in a NumberList", numbers, CVariant(4.5), true, "4.5"},
      {"integer as a double in a NumberList", numbers, CVariant(3.0), true, "3"},
      {"boolean", Bools({true}), CVariant(false), false, ""},
      {"text", Texts({"a", "b"}), Text("b"), true, "b"},
      {"case", Texts({"a", "b"}), Text("B"), false, ""},
      {"media type", Texts({"a/b"}, MediaTypeList), TextValue(MediaType, "a/b"), true, "a/b"},
      {"address", Texts({"1::5", "2::5"}, IPList), TextValue(IP, "2::5"), true, "2:0:0:0:0:0:0:5"},
      {"address by its high word", Texts({"1::5", "2::5"}, IPList), TextValue(IP, "3::5"), false,
       ""},
      {"text of an address", Texts({"::1"}, IPList), Text("0::1"), true, "0:0:0:0:0:0:0:1"},
      // of lists that give no elements as variants none is delivered
      {"bound of a range", Range({"1.1.1.1", "2.2.2.2"}), TextValue(IP, "2.2.2.2"), true, "before"},
      {"number of a Dimension", Longs({640, 480}, Dimension), CVariant(std::int64_t{480}), true,
       "before"},
      // an expression is run over three of the string lists, and is a text for any other
      {"wildcard", Texts({"one", "two"}), TextValue(Regex, "t*"), true, "two"},
      {"expression", Texts({"one", "two"}), TextValue(Regex, "regex(.n.)"), true, "one"},
      {"without regard to case", Texts({"one"}), TextValue(Regex, "ONE"), true, "one"},
      {"no match", Texts({"one"}), TextValue(Regex, "regex(n)"), false, ""},
      {"bad expression", Texts({"(", "regex(()"}), TextValue(Regex, "regex(()"), false, ""},
      // Contract: the form is told without regard to case here.
      {"form in capitals", Texts({"xone"}), TextValue(Regex, "REGEX(.*E)"), true, "xone"},
      {"in a MediaTypeList", Texts({"a/b"}, MediaTypeList), TextValue(Regex, "a/*"), true, "a/b"},
      {"in an SSOConnectorList", Texts({"s"}, SSOConnectorList), TextValue(Regex, "?"), true, "s"},
      {"as a text in a RegexList", Texts({"one", "t*"}, RegexList), TextValue(Regex, "t*"), true,
       "t*"},
      {"not as an expression in a RegexList", Texts({"two"}, RegexList), TextValue(Regex, "t*"),
       false, ""},
      // whole variants
      {"number in a MixedList", mixed, CVariant(1.5), true, "1.5"},
      {"list in a MixedList", Variants({Longs({1, 2})}), Longs({1, 2}), true, "1, 2"},
      {"range in an IPRangeList", Variants({Range({"1.1.1.1", "2.2.2.2"})}, IPRangeList),
       Range({"1.1.1.1", "2.2.2.2"}), true, "1.1.1.1, 2.2.2.2"},
      {"Dimension", Variants({Longs({1, 2}, Dimension)}, DimensionList), Longs({1, 2}, Dimension),
       true, "1x2"},
  };
}

TEST(CVariantSets, DeliverTheElementThatAListContains) {
  Reports reports;
  for (const ContainsRow& row : ContainsRows()) {
    ForEachRoad(row.element, [&](const char* road, bool, const Selvane::IVariant* element) {
      SCOPED_TRACE(std::string(row.name) + ", " + road);
      reports.Take();
      EXPECT_EQ(row.list.Contains(element, nullptr), row.isIn);
      CVariant out = Text("before");
      EXPECT_EQ(row.list.Contains(element, &out), row.isIn);
      EXPECT_EQ(Utf8(out.ToText(MakeText(", "))), row.isIn ? row.found : "before");
    });
  }
}

TEST(CVariantSets, FindAnAddressAsATextOnlyBehindTheInterface) {
  Reports reports;
  const CVariant list = Texts({"0:0:0:0:0:0:0:1"});
  const CVariant address = TextValue(IP, "::1");
  EXPECT_FALSE(list.Contains(&address, nullptr));
  EXPECT_THAT(reports.Take(),
              ElementsAre(FindReport(StringList, "Finding IP value in List", "of Type IPList")));
  EXPECT_TRUE(list.Contains(Foreign(address).Get(), nullptr));
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantSets, DeliverIntoTheListItself) {
  CVariant list = Texts({"a", "b"});
  const CVariant wanted = Text("b");
  EXPECT_TRUE(list.Contains(&wanted, &list));
  EXPECT_EQ(list.GetType(), String);
  EXPECT_EQ(Utf8(list.GetText()), "b");

  CVariant other = Texts({"a", "b"});
  EXPECT_TRUE(Texts({"b", "a"}).ContainsAll(&other, &other));
  EXPECT_EQ(Utf8(other.GetText()), "b");
}

// ---- all, or at least one, over all types

std::string NotAListReport(const char* onPosition, VariantType type) {
  return FormatReport(onPosition, "Comparing Lists", type, "a valid list type");
}

// Doubles are not looked for in lists of integers.
std::string NoDoublesReport(VariantType list) {
  return FindReport(list, "Finding Double value in DoubleList", "of Type DoubleList");
}

Expected ExpectShare(VariantType self, VariantType other, bool isAll) {
  const char* const onPosition = isAll ? "CVariant: containsAll" : "CVariant: containsAtLeastOne";
  if (!TypeInfo(self).fIsList) return {0, NotAListReport(onPosition, self)};
  const bool isNumbers = TypeFamily::NumberLists.Has(self) && TypeFamily::NumberLists.Has(other);
  if (isNumbers && self != other) {
    const bool isLongs = TypeFamily::IntegerLists.Has(self);
    if (isLongs && TypeFamily::IntegerLists.Has(other)) return {1, ""};
    // The sample's longs come first, and are missing.
    const bool findsDouble = other == DoubleList || (other == NumberList && !isAll);
    return {0, isLongs && findsDouble ? NoDoublesReport(self) : ""};
  }
  if (self != other) {
    return {0, UnsupportedReport(onPosition,
                                 isAll ? "operator 'containsAll' of Variant"
                                       : "operator 'containsAtLeastOne' of Variant",
                                 self, other)};
  }
  if (self == MixedList && isAll) {  // the sample's text meets the number that stands before it
    return {1, UnsupportedReport("CVariant: eq", "operator 'equals' of Variant", Long, String)};
  }
  return {!(isAll && self == HostAndCertificateList), ""};
}

TEST(CVariantSets, HaveAllOrReportForEveryPairOfTypes) {
  CheckAllPairs(
      [](const CVariant& list, const Selvane::IVariant* other) {
        return list.ContainsAll(other, nullptr);
      },
      [](VariantType self, VariantType other, bool) { return ExpectShare(self, other, true); });
}

TEST(CVariantSets, HaveAtLeastOneOrReportForEveryPairOfTypes) {
  CheckAllPairs(
      [](const CVariant& list, const Selvane::IVariant* other) {
        return list.ContainsAtLeastOne(other, nullptr);
      },
      [](VariantType self, VariantType other, bool) { return ExpectShare(self, other, false); });
}

struct ShareRow {
  const char* name;
  CVariant list, other;
  bool hasAll, hasOne;
  const char* lastFound;  // text form of what ContainsAll delivers; "before" for nothing
  const char* firstFound;
};

std::vector<ShareRow> ShareRows() {
  CVariant numbers = Longs({3}, NumberList);
  numbers.AddToList(4.5);
  return {
      {"all", Longs({1, 2, 3}), Longs({3, 1}), true, true, "1", "3"},
      {"some", Longs({1, 2, 3}), Longs({3, 9}), false, true, "3", "3"},
      {"none", Longs({1, 2, 3}), Longs({8, 9}), false, false, "before", "before"},
      {"longs in doubles", Doubles({1, 2}), Longs({2}, HexList), true, true, "2", "2"},
      {"numbers in doubles", Doubles({4.5, 3}), numbers, true, true, "4.5", "3"},
      {"doubles in numbers", numbers, Doubles({3, 4.5}), true, true, "4.5", "3"},
      {"categories in numbers", numbers, Longs({3, 4}, CategoryList), false, true, "3", "3"},
      {"texts", Texts({"a", "b"}), Texts({"b", "c"}), false, true, "b", "b"},
      {"texts with case", Texts({"a"}), Texts({"A"}), false, false, "before", "before"},
      {"expressions as texts", Texts({"a*"}, RegexList), Texts({"a*"}, RegexList), true, true, "a*",
       "a*"},
      {"addresses", Texts({"1::5", "2::5"}, IPList), Texts({"2::5"}, IPList), true, true,
       "2:0:0:0:0:0:0:5", "2:0:0:0:0:0:0:5"},
      {"booleans", Bools({true}), Bools({true, false}), false, true, "true", "true"},
      {"whole variants", Variants({CVariant(1.5), CVariant(2.0)}),
       Variants({CVariant(std::int64_t{2}), CVariant(1.5)}), true, true, "1.5", "2"},
      {"ranges", Variants({Range({"1.1.1.1", "2.2.2.2"})}, IPRangeList),
       Variants({Range({"1.1.1.1", "2.2.2.2"})}, IPRangeList), true, true, "1.1.1.1, 2.2.2.2",
       "1.1.1.1, 2.2.2.2"},
      // the bounds one by one for all, the range as a whole for at least one
      {"a range's bounds", Range({"1.1.1.1", "2.2.2.2"}), Range({"2.2.2.2", "1.1.1.1"}), true,
       false, "before", "before"},
      {"a range", Range({"1.1.1.1", "2.2.2.2"}), Range({"1.1.1.1", "2.2.2.2"}), true, true,
       "before", "before"},
      {"Dimensions as a whole", Longs({1, 2}, Dimension), Longs({1}, Dimension), false, false,
       "before", "before"},
      {"hosts never all", Texts({HostText('a', "*.x")}, HostAndCertificateList),
       Texts({HostText('a', "q.x")}, HostAndCertificateList), false, true, "before", "before"},
  };
}

TEST(CVariantSets, DeliverTheElementThatWasFound) {
  Reports reports;
  for (const ShareRow& row : ShareRows()) {
    ForEachRoad(row.other, [&](const char* road, bool, const Selvane::IVariant* other) {
      SCOPED_TRACE(std::string(row.name) + ", " + road);
      EXPECT_EQ(row.list.ContainsAll(other, nullptr), row.hasAll);
      EXPECT_EQ(row.list.ContainsAtLeastOne(other, nullptr), row.hasOne);
      CVariant last = Text("before");
      row.list.ContainsAll(other, &last);
      EXPECT_EQ(Utf8(last.ToText(MakeText(", "))), row.lastFound);
      CVariant first = Text("before");
      row.list.ContainsAtLeastOne(other, &first);
      EXPECT_EQ(Utf8(first.ToText(MakeText(", "))), row.firstFound);
      EXPECT_THAT(reports.Take(), IsEmpty());
    });
  }
}

TEST(CVariantSets, HaveAllOfAnEmptyListAndNoneOfIt) {
  Reports reports;
  for (const VariantType type : AllTypes()) {
    if (!TypeInfo(type).fIsList) continue;
    SCOPED_TRACE(NameOf(type));
    const CVariant list = SampleOf(type);
    const CVariant none(type);
    // What is compared as a whole differs from an empty one, and no host list has all of any.
    const bool isWhole = type == Dimension || type == HostAndCertificateList;
    EXPECT_EQ(list.ContainsAll(&none, nullptr), !isWhole);
    EXPECT_FALSE(list.ContainsAtLeastOne(&none, nullptr));
    const bool isEqualAsAWhole =
        type == Dimension || type == HostAndCertificateList || type == IPRange;
    EXPECT_EQ(none.ContainsAtLeastOne(&none, nullptr), isEqualAsAWhole);
    EXPECT_THAT(reports.Take(), IsEmpty());
    EXPECT_TRUE(type == HostAndCertificateList || list.ContainsAll(&list, nullptr));
    EXPECT_TRUE(list.ContainsAtLeastOne(&list, nullptr));
    reports.Take();  // of unlike elements that a list of variants compares
  }
}

TEST(CVariantSets, LookForWhatComesBehindAnElementThatIsNotGiven) {
  for (const VariantType type : {StringList, MixedList, NumberList, IPRangeList}) {
    SCOPED_TRACE(NameOf(type));
    CVariant list = SampleOf(type);
    list.JoinLists(&list);
    const auto foreign = Foreign(list);
    foreign->fLies.missing = 0;
    const Reports reports;  // of unlike elements that a list of variants compares
    EXPECT_TRUE(list.ContainsAtLeastOne(foreign.Get(), nullptr));
    EXPECT_FALSE(list.ContainsAll(foreign.Get(), nullptr));
  }
}

TEST(CVariantSets, ReportDoublesInAnIntegerListOnce) {
  Reports reports;
  EXPECT_FALSE(Longs({1}).ContainsAtLeastOne(Foreign(Doubles({1, 2, 3})).Get(), nullptr));
  EXPECT_THAT(reports.Take(), ElementsAre(NoDoublesReport(LongList)));
  // What comes behind them is looked for all the same.
  CVariant numbers(NumberList);
  numbers.AddToList(1.0);
  numbers.AddToList(2.0);
  numbers.AddToList(std::int64_t{1});
  EXPECT_TRUE(Longs({1}).ContainsAtLeastOne(&numbers, nullptr));
  EXPECT_THAT(reports.Take(), ElementsAre(NoDoublesReport(LongList)));
}

TEST(CVariantSets, ReportWhatIsNoNumberList) {
  Reports reports;
  const std::string formatType = "of list type Category, DLPCategory, Int, Hex, Long or Double";
  const CVariant numbers = Longs({1});
  for (const VariantType type : AllTypes()) {
    if (TypeFamily::NumberLists.Has(type)) continue;
    SCOPED_TRACE(NameOf(type));
    const CVariant value = SampleOf(type);
    reports.Take();
    EXPECT_FALSE(value.DoNumberListComparison(numbers, CVariant::Share::All, nullptr));
    EXPECT_FALSE(numbers.DoNumberListComparison(value, CVariant::Share::AtLeastOne, nullptr));
    const std::string report = FormatReport("CVariant: doNumberListComparison",
                                            "Finding Number value in NumberList", type, formatType);
    EXPECT_THAT(reports.Take(), ElementsAre(report, report));
  }
}

}  // namespace
