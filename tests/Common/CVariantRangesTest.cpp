#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "Common/CVariant.h"
#include "tests/Common/ForeignVariant.h"
#include "tests/Common/VariantSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

CVariant Address(std::string_view text) {
  return TextValue(IP, text);
}

CVariant Range(const std::vector<std::string>& bounds) {
  return Texts(bounds, IPRange);
}

// ---- membership

struct RangeRow {
  const char* address;
  const char* low;
  const char* high;
  bool isIn;
};

const RangeRow kRangeRows[] = {
    // IPv4: unsigned, and both bounds are in
    {"10.0.0.5", "10.0.0.1", "10.0.0.9", true},
    {"10.0.0.1", "10.0.0.1", "10.0.0.9", true},
    {"10.0.0.9", "10.0.0.1", "10.0.0.9", true},
    {"10.0.0.0", "10.0.0.1", "10.0.0.9", false},
    {"10.0.0.10", "10.0.0.1", "10.0.0.9", false},
    {"200.0.0.1", "127.255.255.255", "201.0.0.0", true},
    {"10.0.0.5", "10.0.0.5", "10.0.0.5", true},
    // a reversed range holds nothing, not even its bounds
    {"10.0.0.5", "10.0.0.9", "10.0.0.1", false},
    {"10.0.0.9", "10.0.0.9", "10.0.0.1", false},
    // IPv4 lies below IPv6
    {"1.2.3.4", "0.0.0.0", "::1", true},
    {"1.2.3.4", "1.2.3.5", "::1", false},
    {"1.2.3.4", "::", "ffff::", false},
    {"::5", "1.2.3.4", "::9", true},
    {"::5", "1.2.3.4", "::4", false},
    {"::5", "1.2.3.4", "255.255.255.255", false},
    // IPv6: the last 8 bytes alone, unsigned
    {"::5", "::1", "::9", true},
    {"::a", "::1", "::9", false},
    {"1::5", "2::1", "2::9", true},
    {"ffff::5", "::5", "::5", true},
    {"::8000:0:0:1", "::7000:0:0:0", "::9000:0:0:0", true},
    // what is no address is 255.255.255.255
    {"1.2.3.999", "255.255.255.255", "255.255.255.255", true},
    {"1.2.3.999", "0.0.0.0", "255.255.255.254", false},
    {"10.0.0.5", "nowhere", "255.255.255.255", false},
    {"10.0.0.5", "10.0.0.1", "nowhere", true},
};

TEST(CVariantRanges, FindAnAddressBetweenTheBounds) {
  Reports reports;
  for (const RangeRow& row : kRangeRows) {
    SCOPED_TRACE(std::string(row.address) + " in " + row.low + " to " + row.high);
    const CVariant address = Address(row.address);
    const CVariant range = Range({row.low, row.high});
    EXPECT_EQ(address.IsInRange(&range), row.isIn);
    EXPECT_EQ(address.IsInRange(Foreign(range).Get()), row.isIn);
    const CVariant list = Variants({Range({"9.9.9.9", "9.9.9.9"}), range}, IPRangeList);
    EXPECT_EQ(address.IsInRangeList(&list), row.isIn);
    EXPECT_EQ(address.IsInRangeList(Foreign(list).Get()), row.isIn);
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantRanges, NeedTwoBoundsAndReadNoMore) {
  Reports reports;
  const CVariant address = Address("10.0.0.5");
  for (const auto& bounds : {std::vector<std::string>{}, {"10.0.0.1"}}) {
    const CVariant range = Range(bounds);
    EXPECT_FALSE(address.IsInRange(&range));
    EXPECT_FALSE(address.IsInRange(Foreign(range).Get()));
  }
  const CVariant longer = Range({"10.0.0.1", "10.0.0.9", "0.0.0.0"});
  EXPECT_TRUE(address.IsInRange(&longer));
  EXPECT_TRUE(address.IsInRange(Foreign(longer).Get()));
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantRanges, HoldNoAddressWhenThereAreNone) {
  Reports reports;
  const CVariant address = Address("10.0.0.5");
  const CVariant none(IPRangeList);
  EXPECT_FALSE(address.IsInRangeList(&none));
  EXPECT_FALSE(address.IsInRangeList(Foreign(none).Get()));
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantRanges, AreNotTakenOnTheirSizesWord) {
  const Reports reports;  // of the size
  const auto liar = Foreign(Variants({Range({"10.0.0.1", "10.0.0.2"})}, IPRangeList));
  liar->fLies.listSize = std::uint64_t{1} << 62;
  EXPECT_FALSE(Address("10.0.0.5").IsInRangeList(liar.Get()));
  liar->fLies.givesNoObjects = true;
  EXPECT_FALSE(Address("10.0.0.1").IsInRangeList(liar.Get()));

  const auto silent = Foreign(Range({"10.0.0.1", "10.0.0.9"}));
  silent->fLies.givesNoObjects = true;  // true, and no text: both bounds are no address
  EXPECT_FALSE(Address("10.0.0.5").IsInRange(silent.Get()));
}

TEST(CVariantRanges, AreAskedBehindOneThatIsNotGiven) {
  const CVariant ranges =
      Variants({Range({"9.9.9.9", "9.9.9.9"}), Range({"10.0.0.1", "10.0.0.9"})}, IPRangeList);
  const auto foreign = Foreign(ranges);
  foreign->fLies.missing = 0;
  EXPECT_TRUE(Address("10.0.0.5").IsInRangeList(foreign.Get()));
  EXPECT_FALSE(Address("9.9.9.9").IsInRangeList(foreign.Get()));
}

TEST(CVariantRanges, ReportARangeListsElementOfAnotherType) {
  Reports reports;
  const CVariant list =
      Variants({CVariant(std::int64_t{1}), Range({"10.0.0.1", "10.0.0.9"})}, IPRangeList);
  EXPECT_TRUE(Address("10.0.0.5").IsInRangeList(&list));
  EXPECT_THAT(reports.Take(),
              ElementsAre("'CVariant: IsInRange': Error while 'calling' the 'operator 'is in "
                          "range' of Variant'. Reason: 'Error: unsupported element-types. Type of "
                          "this: IP, type of parameter: Long'."));
}

// ---- what is reported, over all types

struct MembershipRow {
  const char* name;
  VariantType argument;  // the one type that an IP takes
  bool (*ask)(const CVariant&, const Selvane::IVariant*);
  const char* onPosition;
  const char* forNull;
};

const MembershipRow kMembershipRows[] = {
    {"IsInRange", IPRange,
     [](const CVariant& self, const Selvane::IVariant* other) { return self.IsInRange(other); },
     "'CVariant: IsInRange'",
     "'CVariant: IsInRange': No initialized right hand side of operator 'is in range'."},
    {"IsInRangeList", IPRangeList,
     [](const CVariant& self, const Selvane::IVariant* other) { return self.IsInRangeList(other); },
     "'CVariant: isInRangeList'",
     "'CVariant: isInRangeList': No initialized right hand side of operator 'is in range list'."},
};

TEST(CVariantRanges, ReportEveryOtherPairOfTypesOnce) {
  Reports reports;
  for (const MembershipRow& row : kMembershipRows) {
    for (const VariantType self : AllTypes()) {
      const CVariant left = SampleOf(self);
      for (const VariantType other : AllTypes()) {
        SCOPED_TRACE(std::string(row.name) + " of " + TypeInfo(self).fName + " and " +
                     TypeInfo(other).fName);
        const CVariant right = SampleOf(other);
        const auto foreign = Foreign(right);
        reports.Take();
        for (const Selvane::IVariant* argument :
             {static_cast<const Selvane::IVariant*>(&right),
              static_cast<const Selvane::IVariant*>(foreign.Get())}) {
          const bool fits = self == IP && other == row.argument;
          EXPECT_EQ(row.ask(left, argument), fits);
          if (fits) {
            EXPECT_THAT(reports.Take(), IsEmpty());
          } else {
            EXPECT_THAT(reports.Take(),
                        ElementsAre(row.onPosition +
                                    std::string(": Error while 'calling' the 'operator 'is in "
                                                "range' of Variant'. Reason: 'Error: unsupported "
                                                "element-types. Type of this: ") +
                                    TypeInfo(self).fName +
                                    ", type of parameter: " + TypeInfo(other).fName + "'."));
          }
        }
      }
      EXPECT_FALSE(row.ask(left, nullptr));
      EXPECT_THAT(reports.Take(), ElementsAre(row.forNull));
    }
  }
}

// ---- words

struct Words {
  std::uint64_t high1 = 91, low1 = 92, high2 = 93, low2 = 94;
  bool isIPv6 = true;
  bool operator==(const Words&) const = default;
};

void PrintTo(const Words& words, std::ostream* out) {
  *out << words.high1 << ' ' << words.low1 << ' ' << words.high2 << ' ' << words.low2 << ' '
       << words.isIPv6;
}

// Asks for words, and tells which of the out pointers is null; -1 for none.
using AskWords = bool (*)(const CVariant&, Words&, int missing);

template <class T>
T* Unless(bool isMissing, T& value) {
  return isMissing ? nullptr : &value;
}

bool AskIP(const CVariant& value, Words& words, int missing) {
  return value.GetIP(Unless(missing == 0, words.high1), Unless(missing == 1, words.low1),
                     Unless(missing == 2, words.isIPv6));
}

bool AskIPRange(const CVariant& value, Words& words, int missing) {
  return value.GetIPRange(Unless(missing == 0, words.high1), Unless(missing == 1, words.low1),
                          Unless(missing == 2, words.high2), Unless(missing == 3, words.low2),
                          Unless(missing == 4, words.isIPv6));
}

template <std::int64_t kIndex>
bool AskIPListElem(const CVariant& value, Words& words, int missing) {
  return value.GetIPListElem(kIndex, Unless(missing == 0, words.high1),
                             Unless(missing == 1, words.low1), Unless(missing == 2, words.isIPv6));
}

template <std::int64_t kIndex>
bool AskIPRangeListElem(const CVariant& value, Words& words, int missing) {
  return value.GetIPRangeListElem(
      kIndex, Unless(missing == 0, words.high1), Unless(missing == 1, words.low1),
      Unless(missing == 2, words.high2), Unless(missing == 3, words.low2),
      Unless(missing == 4, words.isIPv6));
}

struct WordsRow {
  const char* name;
  CVariant value;
  AskWords ask;
  int pointers;
  Words expected;
};

constexpr std::uint64_t kMax32 = std::numeric_limits<std::uint32_t>::max();

std::vector<WordsRow> WordsRows() {
  const CVariant v4Range = Range({"1.2.3.4", "255.0.0.1"});
  const CVariant v6Range = Range({"1:2:3:4:5:6:7:8", "ffff::1"});
  const Words v4Words{0, 0x01020304, 0, 0xff000001, false};
  const Words v6Words{0x0001000200030004, 0x0005000600070008, 0xffff000000000000, 1, true};
  return {
      {"IPv4", Address("1.2.3.4"), AskIP, 3, {0, 0x01020304, 93, 94, false}},
      {"IPv6",
       Address("1:2:3:4:5:6:7:8"),
       AskIP,
       3,
       {0x0001000200030004, 0x0005000600070008, 93, 94, true}},
      {"no address", Address("1.2.3.999"), AskIP, 3, {0, kMax32, 93, 94, false}},
      {"neutral", CVariant(IP), AskIP, 3, {0, 0, 93, 94, false}},
      {"range of IPv4", v4Range, AskIPRange, 5, v4Words},
      {"range of IPv6", v6Range, AskIPRange, 5, v6Words},
      // the low bound's family is the range's
      {"range from IPv4 to IPv6",
       Range({"1.2.3.4", "ffff::1"}),
       AskIPRange,
       5,
       {0, 0x01020304, 0, 1, false}},
      {"range from IPv6 to IPv4",
       Range({"ffff::1", "1.2.3.4"}),
       AskIPRange,
       5,
       {0xffff000000000000, 1, 0, 0x01020304, true}},
      {"element of a list",
       Texts({"1.2.3.4", "::7"}, IPList),
       AskIPListElem<1>,
       3,
       {0, 7, 93, 94, true}},
      {"element of a range list", Variants({v6Range, v4Range}, IPRangeList), AskIPRangeListElem<1>,
       5, v4Words},
  };
}

TEST(CVariantRanges, HandOutTheWordsOfAddresses) {
  for (const WordsRow& row : WordsRows()) {
    SCOPED_TRACE(row.name);
    Words words;
    EXPECT_TRUE(row.ask(row.value, words, -1));
    EXPECT_EQ(words, row.expected);
    for (int missing = 0; missing < row.pointers; ++missing) {
      Words untouched;
      EXPECT_FALSE(row.ask(row.value, untouched, missing));
      EXPECT_EQ(untouched, Words{}) << "without pointer " << missing;
    }
  }
}

TEST(CVariantRanges, HandOutNothingOfOtherTypesOrPositions) {
  Reports reports;
  constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  const struct {
    const char* name;
    AskWords ask;
    VariantType type;  // whose sample has an answer, or Empty for a position out of range
  } rows[] = {
      {"GetIP", AskIP, IP},
      {"GetIPRange", AskIPRange, IPRange},
      {"GetIPListElem", AskIPListElem<0>, IPList},
      {"GetIPListElem(-1)", AskIPListElem<-1>, Empty},
      {"GetIPListElem(2)", AskIPListElem<2>, Empty},
      {"GetIPListElem(least)", AskIPListElem<kLeast>, Empty},
      {"GetIPListElem(most)", AskIPListElem<kMost>, Empty},
      {"GetIPRangeListElem", AskIPRangeListElem<0>, IPRangeList},
      {"GetIPRangeListElem(-1)", AskIPRangeListElem<-1>, Empty},
      {"GetIPRangeListElem(1)", AskIPRangeListElem<1>, Empty},
      {"GetIPRangeListElem(most)", AskIPRangeListElem<kMost>, Empty},
  };
  for (const auto& row : rows) {
    for (const VariantType type : AllTypes()) {
      SCOPED_TRACE(std::string(row.name) + " of " + TypeInfo(type).fName);
      Words words;
      const bool expected = row.type != Empty && row.type == type;
      EXPECT_EQ(row.ask(SampleOf(type), words, -1), expected);
      EXPECT_EQ(words == Words{}, !expected);
    }
  }
  EXPECT_THAT(reports.Take(), IsEmpty());

  Words words;
  EXPECT_FALSE(AskIPRange(Range({}), words, -1));
  EXPECT_FALSE(AskIPRange(Range({"1.2.3.4"}), words, -1));
  EXPECT_FALSE(AskIPRangeListElem<0>(Variants({Address("1.2.3.4")}, IPRangeList), words, -1));
  EXPECT_FALSE(AskIPRangeListElem<0>(Variants({SampleOf(IPRange)}), words, -1));
  EXPECT_EQ(words, Words{});
}

}  // namespace
