#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "Common/CRefVariant.h"
#include "Common/CVariant.h"
#include "tests/Common/ForeignVariant.h"
#include "tests/Common/VariantPairs.h"
#include "tests/Common/VariantSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t kBeyondDouble = (std::int64_t{1} << 53) + 1;

CVariant Text(std::string_view text) {
  return TextValue(String, text);
}

CVariant Numbers(const std::vector<std::int64_t>& longs, const std::vector<double>& doubles) {
  CVariant list = Longs(longs, NumberList);
  for (const double value : doubles) list.AddToList(value);
  return list;
}

CVariant MapOf(const std::vector<std::pair<std::string, std::int64_t>>& entries) {
  CVariant map(Map);
  for (const auto& [key, value] : entries) map.SetMapValue(MakeText(key), value);
  return map;
}

bool AreBoth(VariantTypeSet family, VariantType left, VariantType right) {
  return family.Has(left) && family.Has(right);
}

bool IsAddressAndText(VariantType left, VariantType right) {
  return (left == IP && TypeFamily::StringScalars.Has(right)) ||
         (right == IP && TypeFamily::StringScalars.Has(left));
}

// ---- equality

TEST(CVariantCompare, FindsEqualityOrReportsForEveryPairOfTypes) {
  CheckAllPairs(
      [](const CVariant& left, const Selvane::IVariant* right) { return left.IsEqual(right); },
      [](VariantType self, VariantType other, bool isForeign) -> Expected {
        if (self == other && self != Empty) return {1, ""};
        if (AreBoth(TypeFamily::Numbers, self, other))
          return {self != Double && other != Double, ""};
        if (AreBoth(TypeFamily::NumberLists, self, other)) {
          return {AreBoth(TypeFamily::IntegerLists, self, other), ""};
        }
        if (AreBoth(TypeFamily::StringScalars, self, other)) return {1, ""};
        if (isForeign && IsAddressAndText(self, other)) return {0, ""};
        return {0, UnsupportedReport("CVariant: eq", "operator 'equals' of Variant", self, other)};
      });
}

struct PairRow {
  const char* name;
  CVariant left, right;
  int answer;
};

std::vector<PairRow> EqualityRows() {
  const std::string certificate = HostText('c', "");
  const CVariant range = Texts({"10.0.0.1", "10.0.0.9"}, IPRange);
  return {
      // numbers: as longs when both are integers, else as doubles
      {"Long and Double", CVariant(std::int64_t{3}), CVariant(3.0), 1},
      {"Double and Long", CVariant(3.5), CVariant(std::int64_t{3}), 0},
      {"Category and Hex", CVariant(Category, 5), CVariant(Hex, 5), 1},
      {"DLPCategory and Long", CVariant(DLPCategory, 5), CVariant(std::int64_t{6}), 0},
      {"beyond a double's digits, as doubles", CVariant(kBeyondDouble),
       CVariant(static_cast<double>(kBeyondDouble)), 1},
      {"beyond a double's digits, as longs", CVariant(kBeyondDouble), CVariant(kBeyondDouble - 1),
       0},
      {"NaN", CVariant(kNaN), CVariant(kNaN), 0},
      {"the zeros", CVariant(0.0), CVariant(-0.0), 1},
      // strings: with case, and no handle is the empty text
      {"case", Text("a"), Text("A"), 0},
      {"empty", Text(""), CVariant(Regex), 1},
      {"kinds of string", TextValue(Regex, "x"), TextValue(MediaType, "x"), 1},
      {"booleans", CVariant(true), CVariant(false), 0},
      // addresses: both words
      {"high words", TextValue(IP, "1::5"), TextValue(IP, "2::5"), 0},
      {"families", TextValue(IP, "0.0.0.5"), TextValue(IP, "::5"), 0},
      {"forms of one address", TextValue(IP, "1:0:0::5"), TextValue(IP, "1::5"), 1},
      // lists
      {"empty LongLists", Longs({}), Longs({}), 1},
      {"lengths", Longs({1}), Longs({1, 2}), 0},
      {"elements", Longs({1, 2}), Longs({1, 3}), 0},
      {"order", Longs({1, 2}), Longs({2, 1}), 0},
      {"LongList and DoubleList", Longs({1}), Doubles({1.0}), 1},
      {"DoubleList and HexList", Doubles({1.5}), Longs({1}, HexList), 0},
      {"CategoryList and HexList", Longs({1, 2}, CategoryList), Longs({1, 2}, HexList), 1},
      {"LongList and NumberList", Longs({1, 2}), Numbers({1}, {2.0}), 1},
      {"NumberLists", Numbers({1}, {2.5}), Numbers({1}, {2.5}), 1},
      {"NumberList beyond a double's digits", Numbers({kBeyondDouble}, {}),
       Longs({kBeyondDouble - 1}), 0},
      {"NaN in DoubleLists", Doubles({kNaN}), Doubles({kNaN}), 0},
      {"NaN in NumberLists", Numbers({}, {kNaN}), Numbers({}, {kNaN}), 0},
      {"NaN across", Doubles({kNaN}), Numbers({}, {kNaN}), 0},
      {"lengths across", Doubles({1}), Longs({1, 2}), 0},
      {"Dimensions", Longs({1, 2}, Dimension), Longs({1, 3}, Dimension), 0},
      {"StringLists", Texts({"a", ""}), Texts({"a", ""}), 1},
      {"case in StringLists", Texts({"a"}), Texts({"A"}), 0},
      {"BooleanLists", Bools({true}), Bools({false}), 0},
      {"IPLists with equal low words", Texts({"1::5"}, IPList), Texts({"2::5"}, IPList), 0},
      {"IPRanges", range, Texts({"10.0.0.1", "10.0.0.8"}, IPRange), 0},
      {"MixedLists", Variants({CVariant(std::int64_t{1}), Text("x")}),
       Variants({CVariant(1.0), Text("x")}), 1},
      {"nested MixedLists", Variants({Variants({Text("x")})}), Variants({Variants({Text("y")})}),
       0},
      {"IPRangeLists", Variants({range}, IPRangeList), Variants({range}, IPRangeList), 1},
      {"DimensionLists", Variants({Longs({1, 2}, Dimension)}, DimensionList),
       Variants({Longs({1, 3}, Dimension)}, DimensionList), 0},
      // hosts: the left expression on the right host, whatever the certificates
      {"host by expression", TextValue(HostAndCertificate, HostText('a', "*.example.com")),
       TextValue(HostAndCertificate, HostText('b', "www.example.com")), 1},
      {"and not the other way", TextValue(HostAndCertificate, HostText('b', "www.example.com")),
       TextValue(HostAndCertificate, HostText('a', "*.example.com")), 0},
      {"empty hosts", CVariant(HostAndCertificate), CVariant(HostAndCertificate), 0},
      {"host lists", Texts({HostText('a', "*.x"), HostText('b', "y")}, HostAndCertificateList),
       Texts({HostText('a', "q.x"), HostText('b', "y")}, HostAndCertificateList), 1},
      {"and not the other way",
       Texts({HostText('a', "q.x"), HostText('b', "y")}, HostAndCertificateList),
       Texts({HostText('a', "*.x"), HostText('b', "y")}, HostAndCertificateList), 0},
      // maps
      {"maps", MapOf({{"a", 1}, {"b", 2}}), MapOf({{"b", 2}, {"a", 1}}), 1},
      {"keys of maps", MapOf({{"a", 1}}), MapOf({{"A", 1}}), 0},
      {"values of maps", MapOf({{"a", 1}}), MapOf({{"a", 2}}), 0},
      {"sizes of maps", MapOf({{"a", 1}}), MapOf({{"a", 1}, {"b", 2}}), 0},
      {"empty maps", MapOf({}), MapOf({}), 1},
  };
}

TEST(CVariantCompare, ComparesValuesByTheirKind) {
  Reports reports;
  for (const PairRow& row : EqualityRows()) {
    ForEachRoad(row.right, [&](const char* road, bool, const Selvane::IVariant* argument) {
      SCOPED_TRACE(std::string(row.name) + ", " + road);
      EXPECT_EQ(row.left.IsEqual(argument), row.answer == 1);
      EXPECT_THAT(reports.Take(), IsEmpty());
    });
  }
}

TEST(CVariantCompare, HoldsAMapEqualToItselfWhateverItHolds) {
  CVariant map(Map);
  const CVariant nan(kNaN);
  map.SetMapValue(MakeText("nan"), &nan);
  EXPECT_TRUE(map.IsEqual(&map));
  const CVariant copy(map);
  EXPECT_FALSE(map.IsEqual(&copy));
}

TEST(CVariantCompare, LetsAddressesMeetTextsBehindTheInterfaceAlone) {
  Reports reports;
  const CVariant address = TextValue(IP, "::1");
  const auto foreignText = Foreign(Text("0:0:0:0:0:0:0:1"));
  const auto otherForm = Foreign(Text("::1"));
  EXPECT_TRUE(address.IsEqual(foreignText.Get()));
  EXPECT_TRUE(Text("0:0:0:0:0:0:0:1").IsEqual(Foreign(address).Get()));
  EXPECT_FALSE(address.IsEqual(otherForm.Get()));  // as texts they differ
  EXPECT_EQ(address.Compare(otherForm.Get()), 0);  // as addresses they do not
  EXPECT_EQ(Text("0:0:0:0:0:0:0:1").Compare(Foreign(address).Get()), 0);
  EXPECT_EQ(Text("1").Compare(Foreign(address).Get()), 1);
  EXPECT_EQ(TextValue(IP, "1.2.3.4").Compare(Foreign(Text("1.2.3.5")).Get()), -1);
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantCompare, ReportsNullOncePerOperation) {
  Reports reports;
  for (const VariantType type : AllTypes()) {
    SCOPED_TRACE(NameOf(type));
    const CVariant value = SampleOf(type);
    const Selvane::IVariant* const none = nullptr;
    EXPECT_FALSE(value.IsEqual(none));
    EXPECT_EQ(value.Compare(none), 0);
    EXPECT_FALSE(value.Contains(none, nullptr));
    EXPECT_FALSE(value.ContainsAll(none, nullptr));
    EXPECT_FALSE(value.ContainsAtLeastOne(none, nullptr));
    EXPECT_THAT(
        reports.Take(),
        ElementsAre(
            "'CVariant: eq': No initialized right hand side of operator 'equals'..",
            "'CVariant: lt': No initialized right hand side of operator 'less than'..",
            "'CVariant: contains': No initialized right hand side of operator 'contains'..",
            "'CVariant: containsAll': No initialized right hand side of operator 'contains'..",
            "'CVariant: containsAtLeastOne': No initialized right hand side of operator "
            "'contains'.."));
  }
}

TEST(CVariantCompare, TakesNoNonsenseFromAForeignVariant) {
  // A number by its own word, and a text by its type.
  Reports reports;
  const auto liar = Foreign(Text("3"));
  liar->fLies.isNumber = true;
  EXPECT_FALSE(CVariant(std::int64_t{3}).IsEqual(liar.Get()));
  EXPECT_THAT(reports.Take(), ElementsAre(FormatReport("CVariant: doNumberComparison", "calling",
                                                       String, "Number")));

  const auto unknown = Foreign(Text("3"));
  unknown->fLies.type = static_cast<VariantType>(200);
  EXPECT_FALSE(Text("3").IsEqual(unknown.Get()));
  EXPECT_EQ(reports.Take().size(), 1u);

  for (const VariantType type : AllTypes()) {
    if (!TypeInfo(type).fIsList) continue;
    SCOPED_TRACE(NameOf(type));
    const CVariant list = SampleOf(type);
    const auto huge = Foreign(list);
    huge->fLies.listSize = std::uint64_t{1} << 62;
    EXPECT_FALSE(list.IsEqual(huge.Get()));
    EXPECT_FALSE(list.ContainsAll(huge.Get(), nullptr));
    list.ContainsAtLeastOne(huge.Get(), nullptr);
    list.Compare(huge.Get());
    const auto shorter = Foreign(CVariant(type));
    shorter->fLies.listSize = list.SizeOfList();
    EXPECT_FALSE(list.IsEqual(shorter.Get()));
    EXPECT_FALSE(list.ContainsAtLeastOne(shorter.Get(), nullptr));
    list.Compare(shorter.Get());
    const auto ofOtherThings = Foreign(Longs(std::vector<std::int64_t>(list.SizeOfList())));
    ofOtherThings->fLies.type = type;
    list.IsEqual(ofOtherThings.Get());
    list.Compare(ofOtherThings.Get());
    list.ContainsAll(ofOtherThings.Get(), nullptr);
    const auto empty = Foreign(list);
    empty->fLies.givesNoObjects = true;
    list.IsEqual(empty.Get());
    list.Compare(empty.Get());
    list.ContainsAll(empty.Get(), nullptr);
    list.ContainsAtLeastOne(empty.Get(), nullptr);
  }
  for (const VariantType type : {String, IP, HostAndCertificate, Map}) {
    SCOPED_TRACE(NameOf(type));
    const auto empty = Foreign(SampleOf(type));
    empty->fLies.givesNoObjects = true;
    EXPECT_FALSE(SampleOf(type).IsEqual(empty.Get()));
  }
}

TEST(CVariantCompare, ReportsOperandsThatAreNoNumbers) {
  Reports reports;
  using enum CVariant::NumberRelation;
  for (const VariantType type : AllTypes()) {
    if (TypeFamily::Numbers.Has(type)) continue;
    SCOPED_TRACE(NameOf(type));
    const CVariant value = SampleOf(type);
    const CVariant number(std::int64_t{7});
    reports.Take();
    EXPECT_FALSE(value.DoNumberComparison(number, Equal));
    EXPECT_FALSE(number.DoNumberComparison(value, Less));
    EXPECT_THAT(
        reports.Take(),
        ElementsAre(UnsupportedReport("CVariant: doNumberComparison", "number types of Variant",
                                      type, Long),
                    FormatReport("CVariant: doNumberComparison", "calling", type, "Number")));
  }
}

TEST(CVariantCompare, HoldsNoNumberLessThanItsEqual) {
  using enum CVariant::NumberRelation;
  const CVariant one(std::int64_t{1}), oneAsDouble(1.0), two(2.0);
  for (const CVariant* left : {&one, &oneAsDouble}) {
    EXPECT_TRUE(left->DoNumberComparison(two, Less));
    EXPECT_FALSE(two.DoNumberComparison(*left, Less));
    for (const CVariant* right : {&one, &oneAsDouble}) {
      EXPECT_TRUE(left->DoNumberComparison(*right, Equal));
      EXPECT_FALSE(left->DoNumberComparison(*right, Less));
    }
  }
}

// ---- order

TEST(CVariantCompare, OrdersOrReportsEveryPairOfTypes) {
  CheckAllPairs(
      [](const CVariant& left, const Selvane::IVariant* right) { return left.Compare(right); },
      [](VariantType self, VariantType other, bool isForeign) -> Expected {
        if (AreBoth(TypeFamily::Numbers, self, other)) {
          if ((self == Double) == (other == Double)) return {0, ""};
          return {self == Double ? -1 : 1, ""};
        }
        if (AreBoth(TypeFamily::StringScalars, self, other)) return {0, ""};
        if (isForeign && IsAddressAndText(self, other)) return {self == IP ? -1 : 1, ""};
        if (self == IP || self == IPRange) {
          if (self == other) return {0, ""};
          return {0,
                  "'CVariant: compare': Unknown type 'IPRange' for object 'Variant'. Details: "
                  "'Error: unsupported element-types. Type of this: " +
                      NameOf(self) + ", type of parameter: " + NameOf(other) + "'"};
        }
        const bool hasOrder = self == Boolean || self == Dimension || self == MixedList ||
                              (self == CategoryList && isForeign);
        if (self == other && hasOrder) return {0, ""};
        return {0, UnsupportedReport("CVariant: compare", "operator 'less than' of Variant", self,
                                     other)};
      });
}

std::vector<PairRow> OrderRows() {
  return {
      {"longs", CVariant(std::int64_t{-1}), CVariant(std::int64_t{1}), -1},
      {"long and double", CVariant(std::int64_t{3}), CVariant(2.5), 1},
      {"equal long and double", CVariant(std::int64_t{3}), CVariant(3.0), 0},
      {"beyond a double's digits", CVariant(kBeyondDouble), CVariant(kBeyondDouble - 1), 1},
      {"NaN is behind", CVariant(kNaN), CVariant(1.0), 1},
      {"what is compared with NaN is, too", CVariant(1.0), CVariant(kNaN), 1},
      {"capitals first", Text("a"), Text("B"), 1},
      {"a beginning first", Text("ab"), Text("abc"), -1},
      {"empty first", Text(""), Text("a"), -1},
      {"no handle and empty", CVariant(String), Text(""), 0},
      {"by code point", Text("\xef\xbf\xbd"), Text("\xf0\x90\x80\x80"), -1},
      {"false first", CVariant(false), CVariant(true), -1},
      {"true last", CVariant(true), CVariant(false), 1},
      {"IPv4 unsigned", TextValue(IP, "200.0.0.1"), TextValue(IP, "100.0.0.1"), 1},
      {"IPv4 first", TextValue(IP, "255.255.255.255"), TextValue(IP, "::"), -1},
      {"IPv6 last", TextValue(IP, "::"), TextValue(IP, "255.255.255.255"), 1},
      {"IPv6 by the high word first", TextValue(IP, "1::9"), TextValue(IP, "2::1"), -1},
      {"IPv6 by the low word then", TextValue(IP, "1::9"), TextValue(IP, "1::1"), 1},
      {"IPv6 unsigned", TextValue(IP, "8000::"), TextValue(IP, "7000::"), 1},
      {"ranges by the low bound", Texts({"1.0.0.1", "9.0.0.0"}, IPRange),
       Texts({"1.0.0.2", "2.0.0.0"}, IPRange), -1},
      {"then by the high one", Texts({"1.0.0.1", "9.0.0.0"}, IPRange),
       Texts({"1.0.0.1", "2.0.0.0"}, IPRange), 1},
      {"ranges by both words", Texts({"1::1", "9::"}, IPRange), Texts({"2::1", "9::"}, IPRange),
       -1},
      {"shorter Dimension", Longs({9}, Dimension), Longs({1, 1}, Dimension), -1},
      {"longer Dimension", Longs({1, 1}, Dimension), Longs({9}, Dimension), 1},
      {"first difference", Longs({1, 2, 9}, Dimension), Longs({1, 3, 0}, Dimension), -1},
      {"signed", Longs({-1}, Dimension), Longs({1}, Dimension), -1},
      {"empty Dimensions", Longs({}, Dimension), Longs({}, Dimension), 0},
      {"MixedLists, first difference", Variants({CVariant(2.0)}),
       Variants({CVariant(std::int64_t{1}), Text("x")}), 1},
      {"MixedLists, then the length", Variants({CVariant(1.0)}),
       Variants({CVariant(std::int64_t{1}), Text("x")}), -1},
      {"a longer MixedList", Variants({CVariant(1.0), Text("x")}), Variants({CVariant(1.0)}), 1},
      {"nested", Variants({Variants({Text("b")})}), Variants({Variants({Text("a")})}), 1},
      {"empty MixedLists", Variants({}), Variants({}), 0},
  };
}

TEST(CVariantCompare, OrdersValuesByTheirKind) {
  Reports reports;
  for (const PairRow& row : OrderRows()) {
    ForEachRoad(row.right, [&](const char* road, bool, const Selvane::IVariant* argument) {
      SCOPED_TRACE(std::string(row.name) + ", " + road);
      EXPECT_EQ(row.left.Compare(argument), row.answer);
      EXPECT_THAT(reports.Take(), IsEmpty());
    });
  }
}

TEST(CVariantCompare, OrdersCategoryListsBehindTheInterfaceAlone) {
  const CVariant left = Longs({1, 2}, CategoryList);
  for (const auto& [values, order] : std::vector<std::pair<std::vector<std::int64_t>, int>>{
           {{1, 2}, 0}, {{1, 3}, -1}, {{9}, 1}}) {
    EXPECT_EQ(left.Compare(Foreign(Longs(values, CategoryList)).Get()), order);
  }
}

TEST(CVariantCompare, OrdersRangesOfTwoAddressesAlone) {
  Reports reports;
  const CVariant range = Texts({"1.0.0.1", "9.0.0.0"}, IPRange);
  for (const auto& bounds :
       {std::vector<std::string>{}, {"1.0.0.0"}, {"1.0.0.0", "1.0.0.1", "1.0.0.2"}}) {
    const CVariant other = Texts(bounds, IPRange);
    ForEachRoad(other, [&](const char* road, bool, const Selvane::IVariant* argument) {
      SCOPED_TRACE(std::to_string(bounds.size()) + " bounds, " + road);
      EXPECT_EQ(range.Compare(argument), 0);
      EXPECT_EQ(other.Compare(&range), 0);
      const std::string report = UnsupportedReport(
          "CVariant: compare", "operator 'less than' of Variant", IPRange, IPRange);
      EXPECT_THAT(reports.Take(), ElementsAre(report, report));
    });
  }

  const auto hollow = Foreign(CVariant(IPRange));
  hollow->fLies.listSize = 2;
  EXPECT_EQ(range.Compare(hollow.Get()), 0);
  EXPECT_EQ(reports.Take().size(), 1u);
}

}  // namespace
