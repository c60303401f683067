#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Common/CRefVariant.h"
#include "Common/CVariant.h"
#include "Common/CVariantTypeTable.h"
#include "Common/Lookup3.h"
#include "tests/Common/VariantSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();

std::string TextForm(const CVariant& value, std::string_view separator = ", ") {
  return Utf8(value.ToText(MakeText(separator)));
}

CVariant Numbers(const std::vector<std::int64_t>& longs, const std::vector<double>& doubles) {
  CVariant list = Longs(longs, NumberList);
  for (const double value : doubles) list.AddToList(value);
  return list;
}

// ---- text forms

struct TextRow {
  CVariant value;
  const char* text;
  const char* separator = ", ";
};

std::vector<TextRow> TextRows() {
  const std::string certificate(64, 'c');
  static const std::string host = certificate + "|*.example.com";
  static const std::string hosts = HostText('a', "a.example") + ";" + HostText('b', "b.example");
  CVariant map(Map);
  map.SetMapValue(MakeText("b"), std::int64_t{2});
  map.SetMapValue(MakeText("a"), std::int64_t{1});
  CVariant nested(Map);
  const CVariant inner = Variants({TextValue(String, "x"), map});
  nested.SetMapValue(MakeText("k"), &inner);
  return {
      {CVariant(), ""},
      {CVariant(2.5), "2.5"},
      {CVariant(std::int64_t{0}), "0"},
      {CVariant(std::int64_t{-5}), "-5"},
      {CVariant(std::int64_t{9}), "9"},
      {CVariant(std::int64_t{10}), "10"},
      {CVariant(kLeast), "-9223372036854775808"},
      {CVariant(std::numeric_limits<std::int64_t>::max()), "9223372036854775807"},
      {CVariant(Category, 12), "12"},
      {CVariant(DLPCategory, -12), "-12"},
      {CVariant(Hex, 255), "ff"},
      {CVariant(Hex, 15), "f"},
      {CVariant(Hex, 0), "0"},
      {CVariant(Hex, -1), "-1"},
      {CVariant(Hex, kLeast), "-8000000000000000"},
      {CVariant(true), "true"},
      {CVariant(false), "false"},
      {TextValue(String, "plain"), "plain"},
      {TextValue(String, ""), ""},
      {TextValue(Regex, "regex(a.*b)"), "regex(a.*b)"},
      {TextValue(MediaType, "text/html"), "text/html"},
      {TextValue(SSOConnector, "sso"), "sso"},
      {TextValue(IP, "10.0.0.255"), "10.0.0.255"},
      {TextValue(IP, "::1"), "0:0:0:0:0:0:0:1"},
      {TextValue(IP, "2001:DB8::ff"), "2001:db8:0:0:0:0:0:ff"},
      {TextValue(IP, "1.2.3.999"), "255.255.255.255"},
      {TextValue(HostAndCertificate, host), host.c_str()},
      {CVariant(HostAndCertificate), "|"},
      {Longs({1, -2, 3}), "1, -2, 3"},
      {Longs({}), ""},
      {Longs({10, 11}, CategoryList), "10;11", ";"},
      {Longs({10, 11}, DLPCategoryList), "1011", ""},
      {Longs({255, -16, kLeast}, HexList), "ff, -10, -8000000000000000"},
      {Doubles({0.5, 1e20}), "0.5, 1e+20"},
      {Texts({"a", "", "c"}), "a, , c"},
      {Texts({}), ""},
      {Texts({"*.x", "regex(y)"}, RegexList), "*.x, regex(y)"},
      {Texts({"a/b"}, MediaTypeList), "a/b"},
      {Texts({"s", "t"}, SSOConnectorList), "s<>t", "<>"},
      {Bools({true, false}), "true, false"},
      {Numbers({3, -4}, {0.25}), "3, -4, 0.25"},
      // the first two numbers alone, and no separator
      {Longs({640, 480}, Dimension), "640x480"},
      {Longs({640, -480, 7}, Dimension), "640x-480"},
      {Longs({640}, Dimension), ""},
      {Longs({}, Dimension), ""},
      {Variants({Longs({640, 480}, Dimension), Longs({1, 2}, Dimension)}, DimensionList),
       "640x480, 1x2"},
      {Texts({"1.2.3.4", "::"}, IPList), "1.2.3.4, 0:0:0:0:0:0:0:0"},
      {Texts({"1.2.3.4", "1.2.3.5"}, IPRange), "1.2.3.4, 1.2.3.5"},
      {Texts({"1.2.3.4", "1.2.3.5", "9.9.9.9"}, IPRange), "1.2.3.4, 1.2.3.5"},
      {Texts({"1.2.3.4"}, IPRange), ""},
      {Texts({}, IPRange), ""},
      {Variants({Texts({"1.2.3.4", "1.2.3.5"}, IPRange), Texts({"::", "::1"}, IPRange)},
                IPRangeList),
       "1.2.3.4-1.2.3.5-0:0:0:0:0:0:0:0-0:0:0:0:0:0:0:1", "-"},
      {Texts({HostText('a', "a.example"), HostText('b', "b.example")}, HostAndCertificateList),
       hosts.c_str(), ";"},
      {Variants({TextValue(String, "a"), CVariant(true)}), "a,true", ","},
      {Variants({Longs({1, 2}), Variants({CVariant(Hex, 10), Texts({"x", "y"})})}), "1,2,a,x,y",
       ","},
      {map, "{a:1,b:2}", ","},
      {CVariant(Map), "{}"},
      {nested, "{k:x,{a:1,b:2}}", ","},
  };
}

TEST(CVariantText, PrintsEveryType) {
  Reports reports;
  std::vector<bool> isCovered(kVariantTypeCount);
  for (const TextRow& row : TextRows()) {
    SCOPED_TRACE(std::string(TypeInfo(row.value.GetType()).fName) + " " + row.text);
    EXPECT_EQ(TextForm(row.value, row.separator), row.text);
    const CUsePtr<Selvane::IUnicodeString> separator(NewUnicodeString(MakeText(row.separator)));
    EXPECT_EQ(TakeUtf8(row.value.ToString(separator.Get())), row.text);
    isCovered[static_cast<std::size_t>(row.value.GetType())] = true;
  }
  EXPECT_THAT(isCovered, testing::Each(true));
  EXPECT_THAT(reports.Take(), IsEmpty());
}

TEST(CVariantText, PrintsWithoutASeparatorObject) {
  EXPECT_EQ(TakeUtf8(Longs({1, 2}).ToString(nullptr)), "12");
}

TEST(CVariantText, PrintsDoublesAsAClassicStreamDoes) {
  std::vector<double> values{1,      0.1,        1234567,  1e20,      -0.0,    0.0,      123456,
                             999999, 999999.5,   1e-5,     0.0001,    1e300,   -1e-300,  3.14159265,
                             5e-324, 2147483648, 1.5e+100, 100000.05, 1000000, INFINITY, -INFINITY};
  for (int i = 0; i < 2000; ++i) values.push_back(std::ldexp(i * 7919 % 10007, i % 120 - 60));
  for (const double value : values) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value;
    EXPECT_EQ(TextForm(CVariant(value)), stream.str());
  }
  EXPECT_EQ(TextForm(CVariant(1234567.0)), "1.23457e+06");
  EXPECT_EQ(TextForm(CVariant(-0.0)), "-0");
  EXPECT_EQ(TextForm(CVariant(std::numeric_limits<double>::quiet_NaN())), "nan");
  EXPECT_EQ(TextForm(CVariant(INFINITY)), "inf");
}

// ---- names

TEST(CVariantText, NamesEveryTypeAndReportsAnUnknownOne) {
  Reports reports;
  EXPECT_STREQ(GetTypeName(SSOConnectorList), "SSOConnectorList");
  for (const VariantType type : AllTypes()) EXPECT_STREQ(GetTypeName(type), TypeInfo(type).fName);
  EXPECT_THAT(reports.Take(), IsEmpty());

  EXPECT_EQ(GetTypeName(static_cast<VariantType>(32)), nullptr);
  EXPECT_EQ(GetTypeName(static_cast<VariantType>(255)), nullptr);
  EXPECT_THAT(reports.Take(),
              ElementsAre("'CVariant: GetTypeName': Unknown type '32' for object 'Variant'. "
                          "Details: 'Type not found in map.'",
                          "'CVariant: GetTypeName': Unknown type '255' for object 'Variant'. "
                          "Details: 'Type not found in map.'"));
}

TEST(CVariantText, GivesTheWordOfAFamily) {
  const struct {
    std::vector<int> ids;
    const char* word;
    bool isList;
  } rows[] = {
      {{1, 2}, "number", false},
      {{3}, "string", false},
      {{4}, "boolean", false},
      {{5, 6, 10}, "number", true},
      {{7}, "string", true},
      {{8}, "boolean", true},
      {{9}, "", true},
      {{11}, "dimension", false},
      {{12}, "dimension", true},
      {{13}, "ip", false},
      {{14}, "ip", true},
      {{15}, "iprange", false},
      {{16}, "iprange", true},
      {{17}, "category", false},
      {{18}, "regex", false},
      {{19}, "hex", false},
      {{20}, "category", true},
      {{21}, "regex", true},
      {{22}, "hex", true},
      {{23}, "mediatype", false},
      {{24}, "mediatypelist", true},
      {{27}, "dlpcategory", false},
      {{28}, "dlpcategory", true},
      {{30}, "ssoconnector", false},
      {{31}, "ssoconnectorlist", true},
      {{0, 25, 26, 29, 32, 255}, "", false},
  };
  std::size_t known = 0;
  for (const auto& row : rows) {
    for (const int id : row.ids) {
      SCOPED_TRACE(id);
      std::string_view word = "before";
      EXPECT_EQ(GetFamilyName(static_cast<VariantType>(id), word), row.isList);
      EXPECT_EQ(word, row.word);
      known += id < 32;
    }
  }
  EXPECT_EQ(known, kVariantTypeCount);
}

// ---- hash

TEST(Lookup3, GivesThePublishedVectors) {
  const struct {
    const char* text;
    std::uint32_t seedC, seedB, c, b;
  } rows[] = {
      {"", 0, 0, 0xdeadbeef, 0xdeadbeef},
      {"", 0, 0xdeadbeef, 0xbd5b7dde, 0xdeadbeef},
      {"", 0xdeadbeef, 0xdeadbeef, 0x9c093ccd, 0xbd5b7dde},
      {"Four score and seven years ago", 0, 0, 0x17770551, 0xce7226e6},
      {"Four score and seven years ago", 0, 1, 0xe3607cae, 0xbd371de4},
      {"Four score and seven years ago", 1, 0, 0xcd628161, 0x6cbea4b3},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Lookup3(row.text, row.seedC, row.seedB), std::uint64_t{row.b} << 32 | row.c)
        << row.text << " " << row.seedC << " " << row.seedB;
  }
}

TEST(CVariantText, HashesTheTextForm) {
  const struct {
    CVariant value;
    std::uint64_t hash;
  } rows[] = {
      {TextValue(String, "a"), 0x1c21e33cd3b0c584},
      {TextValue(String, "abc"), 0x2f9a7c8c3c9130d6},
      {TextValue(String, "abcd"), 0x5d5ef579b41a0be7},
      {Texts({"ab", "cd"}), 0x5d5ef579b41a0be7},  // nothing between the elements
      {Texts({"", "abcd"}), 0x5d5ef579b41a0be7},
      {Texts({"ab", "cd"}, RegexList), 0x4a4bc5145ce4a6cc},  // here there is
      {TextValue(String, "ab, cd"), 0x4a4bc5145ce4a6cc},
      {CVariant(std::int64_t{-5}), 0xb96a09b826df7424},
      {CVariant(std::int64_t{0}), 0xbc319b1af3700915},
      {CVariant(true), 0x22dcf42ab90768c2},
      {TextValue(String, "true"), 0x22dcf42ab90768c2},
      {TextValue(String, "abcdefghijkl"), 0xbbae5752170b282a},
      {TextValue(String, "abcdefghijklm"), 0x18cec4ddc08319cb},
      // no text, no hash
      {CVariant(), 0},
      {TextValue(String, ""), 0},
      {Texts({}), 0},
      {Longs({640}, Dimension), 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(TextForm(row.value));
    EXPECT_EQ(row.value.GetHash(), row.hash);
    EXPECT_EQ(row.value.GetHash(), row.hash) << "the second time";
  }
}

TEST(CVariantText, HashesTextInUtf8WhateverItsEncoding) {
  const CText latin("\xe4", EncodingId("ISO-8859-1"));
  CVariant value;
  value.SetString(latin.Impl());
  EXPECT_EQ(value.GetHash(), TextValue(String, "\xc3\xa4").GetHash());
}

TEST(CVariantText, KeepsTheHashUntilTheValueChanges) {
  const CVariant one(std::int64_t{1});
  const struct {
    const char* name;
    CVariant value;
    std::function<void(CVariant&)> change;
  } rows[] = {
      {"SetLong", CVariant(true), [](CVariant& v) { v.SetLong(7); }},
      {"SetDouble", CVariant(true), [](CVariant& v) { v.SetDouble(7.5); }},
      {"SetBool", CVariant(true), [](CVariant& v) { v.SetBool(false); }},
      {"SetString", CVariant(true), [](CVariant& v) { v.SetString(MakeText("t").Get()); }},
      {"Assign", CVariant(true), [&](CVariant& v) { v.Assign(&one); }},
      {"Clear", CVariant(true), [](CVariant& v) { v.Clear(); }},
      {"SetEmpty", CVariant(true), [](CVariant& v) { v.SetEmpty(); }},
      {"AddToList", Longs({3, 1}), [](CVariant& v) { v.AddToList(std::int64_t{2}); }},
      {"SetListElem", Longs({3, 1}), [](CVariant& v) { v.SetListElem(0, std::int64_t{2}); }},
      {"Erase", Longs({3, 1}), [](CVariant& v) { v.Erase(0); }},
      {"ReverseList", Longs({3, 1}), [](CVariant& v) { v.ReverseList(); }},
      {"SortList", Longs({3, 1}), [](CVariant& v) { v.SortList(); }},
      {"SetSorted", Longs({3, 1}), [](CVariant& v) { v.SetSorted(true); }},
      {"JoinLists", Longs({3, 1}), [](CVariant& v) { v.JoinLists(&v); }},
      {"EraseFromList", Longs({3, 1}), [](CVariant& v) { v.EraseFromList(&v); }},
      {"SetListFromArray", Longs({3}),
       [](CVariant& v) { v.SetListFromArray(LongList, nullptr, 0); }},
      {"SetMapValue", SampleOf(Map),
       [](CVariant& v) { v.SetMapValue(MakeText("a"), std::int64_t{9}); }},
      {"EraseMapValue", SampleOf(Map), [](CVariant& v) { v.EraseMapValue(MakeText("a")); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    CVariant value(row.value);
    const std::uint64_t before = value.GetHash();
    EXPECT_NE(before, 0u);
    value.GetBool();
    value.SizeOfList();
    EXPECT_EQ(value.GetHash(), before);

    row.change(value);
    const CVariant fresh = TextValue(String, TextForm(value));
    EXPECT_EQ(value.GetHash(), fresh.GetHash());
    EXPECT_NE(value.GetHash(), before);
  }
}

TEST(CVariantText, HashesWhatItsVariantsAreNow) {
  CVariant list = Variants({CVariant(std::int64_t{1}), TextValue(String, "x")});
  const std::uint64_t listBefore = list.GetHash();
  bool ok = false;
  const CUsePtr<CRefVariant> view(list.GetMixedListElemRef(0, ok));
  view->SetLong(2);
  EXPECT_NE(list.GetHash(), listBefore);
  EXPECT_EQ(list.GetHash(), TextValue(String, "2, x").GetHash());

  // What is kept for an element does not stay at its place when the elements change theirs.
  EXPECT_EQ(view->GetHash(), TextValue(String, "2").GetHash());
  const CUsePtr<CRefVariant> second(list.GetMixedListElemRef(1, ok));
  EXPECT_EQ(second->GetHash(), TextValue(String, "x").GetHash());
  EXPECT_TRUE(list.ReverseList());
  EXPECT_EQ(view->GetHash(), TextValue(String, "x").GetHash());
  EXPECT_EQ(second->GetHash(), TextValue(String, "2").GetHash());

  CVariant map = SampleOf(Map);
  const std::uint64_t mapBefore = map.GetHash();
  map.FindMapValue(MakeText("a"))->SetLong(9);
  EXPECT_NE(map.GetHash(), mapBefore);
}

// The hash, the lookup count and the index are filled by readers at once.
TEST(CVariantText, GivesEightThreadsOneHashAndOneIndex) {
  std::vector<std::string> texts;
  for (int i = 0; i < 100; ++i) texts.push_back("text " + std::to_string(i));
  const CVariant list = Texts(texts);
  const std::uint64_t expected = CVariant(list).GetHash();
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      const CVariant wanted = TextValue(String, "text 77");
      for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(list.Find(&wanted), 77);
        EXPECT_TRUE(list.Contains(&wanted, nullptr));
        EXPECT_EQ(list.GetHash(), expected);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(list.HasIndex());
  EXPECT_EQ(list.LookupCount(), 10u);
}

}  // namespace
