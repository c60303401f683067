#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "Common/CRegex.h"
#include "Common/CVariant.h"
#include "tests/Common/ForeignVariant.h"
#include "tests/Common/VariantSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

int IdOf(VariantType type) {
  return static_cast<int>(type);
}

// ---- getters on every type

struct GetterRow {
  const char* name;
  std::set<int> accepts;
  // Reads a sample or a neutral value, and tells what came.
  std::string (*get)(const CVariant&);
  const char* neutral;  // the answer on any other type
  const char* report;   // on any other type, with TYPE for its name; null for silence
};

std::string Shown(std::int64_t value) {
  return std::to_string(value);
}

const GetterRow kGetterRows[] = {
    {"GetDouble",
     {1},
     [](const CVariant& value) { return std::to_string(value.GetDouble()); },
     "0.000000",
     "'CVariant: GetDouble': 'Getting Double value' failed. Type of 'Variant' is 'TYPE', but it "
     "has to be 'of Type Double'."},
    {"GetLong",
     {2, 17, 19, 27},
     [](const CVariant& value) { return Shown(value.GetLong()); },
     "0",
     "'CVariant: GetLong': 'Getting Long value' failed. Type of 'Variant' is 'TYPE', but it has to "
     "be 'of Type Long or Hex'."},
    {"GetBool", {4}, [](const CVariant& value) { return Shown(value.GetBool()); }, "0", nullptr},
    {"GetString",
     {3, 13, 18, 23, 25, 30},
     [](const CVariant& value) { return TakeUtf8(value.GetString()); },
     "(null)",
     nullptr},
    {"GetText",
     {3, 13, 18, 23, 25, 30},
     [](const CVariant& value) { return Utf8(value.GetText()); },
     "",
     "'CVariant: GetString': 'Getting String value' failed. Type of 'Variant' is 'TYPE', but it "
     "has to be 'of Type String, Regex, IP or MediaType'."},
};

std::string WithType(std::string report, VariantType type) {
  return report.replace(report.find("TYPE"), 4, TypeInfo(type).fName);
}

TEST(CVariantScalars, ReadsTheRightTypesAndReportsTheOthersOnce) {
  Reports reports;
  for (const GetterRow& row : kGetterRows) {
    for (const VariantType type : AllTypes()) {
      SCOPED_TRACE(std::string(row.name) + " of " + TypeInfo(type).fName);
      const CVariant value = SampleOf(type);
      reports.Take();
      const std::string answer = row.get(value);
      if (row.accepts.contains(IdOf(type))) {
        EXPECT_NE(answer, row.neutral);
        EXPECT_THAT(reports.Take(), IsEmpty());
      } else {
        EXPECT_EQ(answer, row.neutral);
        if (row.report) {
          EXPECT_THAT(reports.Take(), ElementsAre(WithType(row.report, type)));
        } else {
          EXPECT_THAT(reports.Take(), IsEmpty());
        }
      }
    }
  }
}

TEST(CVariantScalars, ReadsTheNeutralContentInSilence) {
  Reports reports;
  for (const GetterRow& row : kGetterRows) {
    for (const int id : row.accepts) row.get(CVariant(static_cast<VariantType>(id)));
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
  EXPECT_EQ(TakeUtf8(CVariant(String).GetString()), "");
  EXPECT_EQ(Utf8(CVariant(IP).GetText()), "0.0.0.0");
  EXPECT_EQ(Utf8(CVariant(HostAndCertificate).GetText()), "|");
}

// ---- setters on every type

TEST(CVariantScalars, NumbersReplaceWhateverWasThere) {
  Reports reports;
  for (const VariantType type : AllTypes()) {
    CVariant value = SampleOf(type);
    value.SetDouble(1.25);
    EXPECT_EQ(value.GetDouble(), 1.25);
    value = SampleOf(type);
    value.SetLong(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(value.GetType(), Long);
    EXPECT_EQ(value.GetLong(), std::numeric_limits<std::int64_t>::min());
    value = SampleOf(type);
    value.SetBool(true);
    EXPECT_EQ(value.GetType(), Boolean);
    EXPECT_TRUE(value.GetBool());
    EXPECT_FALSE(value.IsSorted());
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantScalars, TextKeepsATextTypeAndMakesAStringOfTheRest) {
  const std::string host = HostText('x', "h.example");
  for (const VariantType type : AllTypes()) {
    SCOPED_TRACE(TypeInfo(type).fName);
    const CStringPtr text = MakeText(type == HostAndCertificate ? host : "1.2.3.4");
    CVariant value = SampleOf(type), throughInterface = SampleOf(type);
    value.SetString(text.Get());
    EXPECT_EQ(value.GetType(), TypeFamily::TextScalars.Has(type) ? type : String);
    EXPECT_EQ(Utf8(value.GetText()), Utf8(text));
    const CUsePtr<Selvane::IUnicodeString> object(NewUnicodeString(text));
    throughInterface.SetString(object.Get());
    EXPECT_EQ(throughInterface.GetType(), value.GetType());
    EXPECT_EQ(Utf8(throughInterface.GetText()), Utf8(text));
  }
}

TEST(CVariantScalars, TakesALongOnlyForAnIntegerType) {
  Reports reports;
  for (int id = 0; id < 40; ++id) {
    const auto type = static_cast<VariantType>(id);
    CVariant value = TextValue(String, "kept");
    value.SetLong(type, 5);
    if (TypeFamily::IntegerScalars.Has(type)) {
      EXPECT_EQ(value.GetType(), type);
      EXPECT_EQ(value.GetLong(), 5);
      EXPECT_THAT(reports.Take(), IsEmpty());
    } else {
      EXPECT_EQ(Utf8(value.GetText()), "kept");
      const std::string name = id < 32 ? TypeInfo(type).fName : "-invalid-";
      EXPECT_THAT(reports.Take(),
                  ElementsAre("'CVariant: setLong': 'Setting Long value' failed. Type of 'Variant' "
                              "is '" +
                              name + "', but it has to be 'of Type Long or Hex'."));
    }
  }
}

TEST(CVariantScalars, TakesATextOnlyForATextType) {
  Reports reports;
  for (int id = 0; id < 40; ++id) {
    const auto type = static_cast<VariantType>(id);
    CVariant value = Longs({1, 2});
    value.SetString(type, MakeText("1.2.3.4").Get());
    if (TypeFamily::TextScalars.Has(type)) {
      EXPECT_EQ(value.GetType(), type);
      EXPECT_EQ(Utf8(value.GetText()), type == HostAndCertificate ? "|" : "1.2.3.4");
      EXPECT_THAT(reports.Take(), IsEmpty());
    } else {
      EXPECT_THAT(LongsOf(value), ElementsAre(1, 2));
      const std::string name = id < 32 ? TypeInfo(type).fName : "-invalid-";
      EXPECT_THAT(
          reports.Take(),
          ElementsAre("'CVariant: setString': 'Setting String value' failed. Type of "
                      "'Variant' is '" +
                      name + "', but it has to be 'of Type String, Regex, IP or MediaType'."));
    }
  }
}

TEST(CVariantScalars, TakesItsOwnTextAndNone) {
  CVariant value = TextValue(String, "own text");
  value.SetString(value.GetText().Get());
  value.SetString(const_cast<CStringImpl*>(value.GetText().Get()));
  EXPECT_EQ(Utf8(value.GetText()), "own text");
  value.SetString(static_cast<CStringImpl*>(nullptr));
  EXPECT_EQ(TakeUtf8(value.GetString()), "");
  value.SetString(static_cast<Selvane::IUnicodeString*>(nullptr));
  EXPECT_EQ(TakeUtf8(value.GetString()), "");
  CVariant list = Texts({"element"});
  bool ok = false;
  list.SetString(list.GetTextListElem(0, ok).Get());
  EXPECT_EQ(Utf8(list.GetText()), "element");
}

TEST(CVariantScalars, KeepsTheEncodingOfATextFromOutside) {
  const auto latin = MakeUseCounted<CUnicodeString>("caf\xE9", Charset::Latin1);
  CVariant value;
  value.SetString(Regex, latin.Get());
  const CUsePtr<Selvane::IUnicodeString> text(value.GetString());
  EXPECT_STREQ(text->GetEncodingName(), "ISO-8859-1");
  EXPECT_EQ(text->GetByteSize(), 4u);
  EXPECT_STREQ(text->GetUtf8(), "caf\xC3\xA9");
}

// ---- addresses

struct AddressRow {
  const char* text;
  bool isIPv6;
  std::uint64_t high, low;
  const char* printed;
};

constexpr AddressRow kAddressRows[] = {
    {"1.2.3.4", false, 0, 0x01020304, "1.2.3.4"},
    {"255.255.255.255", false, 0, 0xFFFFFFFF, "255.255.255.255"},
    {"0.0.0.0", false, 0, 0, "0.0.0.0"},
    {"::1", true, 0, 1, "0:0:0:0:0:0:0:1"},
    {"2001:DB8::8:800:200c:417a", true, 0x20010DB800000000, 0x00080800200C417A,
     "2001:db8:0:0:8:800:200c:417a"},
    {"::ffff:1.2.3.4", true, 0, 0xFFFF01020304, "0:0:0:0:0:ffff:102:304"},
    // What is no address reads as the highest one of IPv4.
    {"1.2.3.999", false, 0, 0xFFFFFFFF, "255.255.255.255"},
    {"", false, 0, 0xFFFFFFFF, "255.255.255.255"},
    {"host", false, 0, 0xFFFFFFFF, "255.255.255.255"},
    {"1:2", false, 0, 0xFFFFFFFF, "255.255.255.255"},
    {"::1::", false, 0, 0xFFFFFFFF, "255.255.255.255"},
    {" 1.2.3.4", false, 0, 0xFFFFFFFF, "255.255.255.255"},
};

TEST(CVariantScalars, ParsesAndPrintsAddresses) {
  Reports reports;
  for (const AddressRow& row : kAddressRows) {
    SCOPED_TRACE(row.text);
    const CVariant value = TextValue(IP, row.text);
    ASSERT_EQ(value.Addresses().size(), 1u);
    const AddressRecord& address = value.Addresses().front();
    EXPECT_EQ(address.fIsIPv6, row.isIPv6);
    EXPECT_EQ(address.fHigh, row.high);
    EXPECT_EQ(address.fLow, row.low);
    EXPECT_EQ(Utf8(value.GetText()), row.printed);
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
}

// ---- host records

struct HostRow {
  const char* name;
  std::string text;
  const char* host;     // null: the record stays empty
  const char* pattern;  // of the expression, where there is one
};

TEST(CVariantScalars, ParsesHostRecords) {
  const std::string letters(64, 'a');
  std::string accents;
  for (int i = 0; i < 64; ++i) accents += "\xC3\xA9";
  const HostRow rows[] = {
      {"Empty", "", nullptr, nullptr},
      {"63Characters", letters.substr(1), nullptr, nullptr},
      {"64Characters", letters, nullptr, nullptr},
      {"65CharactersHaveAnEmptyHost", letters + "|", "", "^$"},
      {"66Characters", letters + "|h", "h", "^h$"},
      {"BarAtTheWrongPlace", letters.substr(1) + "|hh", nullptr, nullptr},
      {"NoBar", letters + "xhost", nullptr, nullptr},
      {"BlanksAreTrimmed", letters + "|  a b  ", "a b", "^a b$"},
      {"OnlyBlanks", letters + "|   ", "", "^$"},
      {"TabsStay", letters + "|\th", "\th", "^\th$"},
      {"BarInTheHost", letters + "|a|b", "a|b", "^a\\|b$"},
      {"Wildcard", letters + "|*.b", "*.b", "^.*\\.b$"},
      {"CharactersAreCountedNotBytes", accents + "|h", "h", "^h$"},
      {"BytesAreNotCounted", accents.substr(64) + "|h", nullptr, nullptr},
  };
  for (const HostRow& row : rows) {
    SCOPED_TRACE(row.name);
    const CVariant value = TextValue(HostAndCertificate, row.text);
    ASSERT_EQ(value.Hosts().size(), 1u);
    const HostRecord& record = value.Hosts().front();
    if (!row.host) {
      EXPECT_EQ(Utf8(value.GetText()), "|");
      EXPECT_EQ(record.fExpression, nullptr);
      continue;
    }
    EXPECT_EQ(Utf8Of(record.fHost), row.host);
    ASSERT_NE(record.fExpression, nullptr);
    EXPECT_EQ(record.fExpression->Pattern(), row.pattern);
    const std::string certificate = row.text.substr(0, row.text.find('|'));
    EXPECT_EQ(Utf8(value.GetText()), certificate + "|" + row.host);
  }
}

TEST(CVariantScalars, MatchesHostsAgainstARecord) {
  const CVariant value = TextValue(HostAndCertificate, HostText('c', "*.example.com"));
  const HostRecord& record = value.Hosts().front();
  EXPECT_TRUE(HostMatches(record, MakeText("www.EXAMPLE.com").Get()));
  EXPECT_FALSE(HostMatches(record, MakeText("www.example.org").Get()));
  EXPECT_FALSE(HostMatches(record, MakeText("").Get()));
  EXPECT_FALSE(HostMatches(record, nullptr));
  const CVariant empty(HostAndCertificate);
  EXPECT_FALSE(HostMatches(empty.Hosts().front(), MakeText("a").Get()));
  const CVariant noHost = TextValue(HostAndCertificate, HostText('c', ""));
  EXPECT_FALSE(HostMatches(noHost.Hosts().front(), MakeText("").Get()));
  const CVariant anyHost = TextValue(HostAndCertificate, HostText('c', "*"));
  EXPECT_TRUE(HostMatches(anyHost.Hosts().front(), MakeText("a").Get()));
  EXPECT_FALSE(HostMatches(anyHost.Hosts().front(), MakeUseCounted<CStringImpl>().Get()));
  const CVariant badHost = TextValue(HostAndCertificate, HostText('c', "[a"));
  EXPECT_FALSE(HostMatches(badHost.Hosts().front(), MakeText("[a").Get()));

  // The bytes are the text's own where a character is one byte, and UTF-8 elsewhere.
  const CVariant anyByte = TextValue(HostAndCertificate, HostText('c', "?"));
  const auto latin = MakeUseCounted<CStringImpl>("\xE9", Charset::Latin1);
  const auto utf8 = MakeUseCounted<CStringImpl>("\xC3\xA9", Charset::Utf8);
  EXPECT_TRUE(HostMatches(anyByte.Hosts().front(), latin.Get()));
  EXPECT_FALSE(HostMatches(anyByte.Hosts().front(), utf8.Get()));
}

// ---- what may be held where

// Rows: this type; the others' types that it holds.
const std::vector<std::pair<int, std::set<int>>> kHoldsRows = {
    {0, {0}},
    {1, {1, 2, 17, 19, 27}},
    {2, {1, 2, 17, 19, 27}},
    {3, {3, 13, 18, 23, 30}},
    {4, {4}},
    {5, {5, 10, 11, 20, 22, 28}},
    {6, {6}},
    {7, {7, 14, 15, 21, 24, 30}},
    {8, {8}},
    {9, {6, 9, 12, 16, 20, 28}},
    {10, {5, 6, 10, 11, 20, 22, 28}},
    {11, {11}},
    {12, {12}},
    {13, {13}},
    {14, {14}},
    {15, {15}},
    {16, {16}},
    {17, {1, 2, 17, 19, 27}},
    {18, {3, 13, 18, 23, 30}},
    {19, {1, 2, 17, 19, 27}},
    {20, {5, 10, 11, 20, 28}},
    {21, {7, 14, 15, 21, 24, 30}},
    {22, {5, 10, 11, 20, 22}},
    {23, {23}},
    {24, {24}},
    {25, {25}},
    {26, {25, 26}},
    {27, {1, 2, 17, 19, 27}},
    {28, {5, 10, 11, 20, 28}},
    {29, {29}},
    {30, {30}},
    {31, {31}},
};

TEST(CVariantScalars, HoldsValuesByTheTable) {
  Reports reports;
  ASSERT_EQ(kHoldsRows.size(), kVariantTypeCount);
  for (const auto& [id, others] : kHoldsRows) {
    const CVariant value(static_cast<VariantType>(id));
    for (const VariantType other : AllTypes()) {
      const CVariant argument = SampleOf(other);
      const bool holds = others.contains(IdOf(other));
      EXPECT_EQ(value.CanHoldValueOf(&argument), holds) << id << " of " << IdOf(other);
      EXPECT_EQ(value.CanHoldValueOf(Foreign(argument).Get()), holds) << id << IdOf(other);
    }
  }
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantScalars, BelievesAForeignValueThatSaysItIsANumber) {
  const auto foreign = Foreign(SampleOf(String));
  foreign->fLies.isNumber = true;
  for (const VariantType type : AllTypes()) {
    const bool believes = type == Long || type == Hex || type == Category || type == DLPCategory;
    const bool isOfItsKind = type == String || type == Regex;
    EXPECT_EQ(CVariant(type).CanHoldValueOf(foreign.Get()), believes || isOfItsKind) << IdOf(type);
  }
  foreign->fLies = {};
  foreign->fLies.type = static_cast<VariantType>(200);
  for (const VariantType type : AllTypes()) {
    EXPECT_FALSE(CVariant(type).CanHoldValueOf(foreign.Get()));
  }
}

TEST(CVariantScalars, ReportsThatNothingIsToBeHeld) {
  Reports reports;
  EXPECT_FALSE(CVariant(String).CanHoldValueOf(nullptr));
  EXPECT_THAT(reports.Take(),
              ElementsAre("'CVariant: canHoldValueOf': No initialized right hand side of operator "
                          "'can hold value of'."));
}

}  // namespace
