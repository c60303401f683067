#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Common/CVariant.h"
#include "tests/Common/ForeignVariant.h"
#include "tests/Common/VariantSupport.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using enum VariantType;

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

std::int64_t FindText(const CVariant& list, const std::string& text, std::int64_t start = 0) {
  return list.FindFrom(start, MakeText(text).Get());
}

// The oracle: one by one.
std::int64_t Linear(const std::vector<std::string>& values, const std::string& value,
                    std::int64_t start) {
  for (auto i = static_cast<std::uint64_t>(start); i < values.size(); ++i) {
    if (values[i] == value) return static_cast<std::int64_t>(i);
  }
  return -1;
}

void LookUp(const CVariant& list, int times) {
  for (int i = 0; i < times; ++i) FindText(list, "1.2.3.4");
}

CVariant ManyTexts(int count, VariantType type = StringList) {
  CVariant list(type);
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i % 200);
    list.AddToList(MakeText(TypeFamily::AddressLists.Has(type) ? "1.1.1." + number : number).Get());
  }
  return list;
}

TEST(CVariantFind, FindsTheFirstEqualElement) {
  const CVariant longs = Longs({5, 3, 5, 3});
  EXPECT_EQ(longs.Find(std::int64_t{3}), 1);
  EXPECT_EQ(longs.FindFrom(2, std::int64_t{3}), 3);
  EXPECT_EQ(longs.FindFrom(3, std::int64_t{5}), -1);
  EXPECT_EQ(longs.Find(std::int64_t{9}), -1);
  EXPECT_EQ(Longs({5, 3}, Dimension).Find(std::int64_t{3}), 1);
  EXPECT_EQ(Doubles({1.5, 3.0}).Find(std::int64_t{3}), 1);
  EXPECT_EQ(Doubles({1.5, 3.0}).Find(1.5), 0);
  EXPECT_EQ(Doubles({std::numeric_limits<double>::quiet_NaN()})
                .Find(std::numeric_limits<double>::quiet_NaN()),
            -1);
  CVariant numbers = Longs({1}, NumberList);
  numbers.AddToList(2.0);
  numbers.AddToList(std::int64_t{2});
  EXPECT_EQ(numbers.Find(std::int64_t{2}), 1);
  EXPECT_EQ(numbers.FindFrom(2, std::int64_t{2}), 2);
  EXPECT_EQ(numbers.Find(2.0), 1);
  EXPECT_EQ(numbers.Find(1.0), 0);
  EXPECT_EQ(Bools({true, false}).Find(false), 1);
  EXPECT_EQ(Variants({CVariant(std::int64_t{1}), CVariant(true)}).Find(true), 1);
  EXPECT_EQ(FindText(Texts({"a", "A", ""}), "A"), 1);
  EXPECT_EQ(FindText(Texts({"a", "A", ""}), ""), 2);
}

TEST(CVariantFind, TellsLongsApartThatAreOneDouble) {
  constexpr std::int64_t kBig = (std::int64_t{1} << 53) + 1;
  CVariant numbers = Longs({kBig - 1, kBig}, NumberList);
  EXPECT_EQ(numbers.Find(kBig), 1);
  EXPECT_EQ(numbers.Find(static_cast<double>(kBig)), 0);
  EXPECT_EQ(Doubles({static_cast<double>(kBig - 1)}).Find(kBig), 0);
}

TEST(CVariantFind, FindsAddressesByFamilyAndWholeAddress) {
  const CVariant list = Texts({"::1", "2::1", "0.0.0.1", "?"}, IPList);
  EXPECT_EQ(FindText(list, "2::1"), 1);
  EXPECT_EQ(FindText(list, "0:0::1"), 0);
  EXPECT_EQ(FindText(list, "0.0.0.1"), 2);
  EXPECT_EQ(FindText(list, "255.255.255.255"), 3);
  EXPECT_EQ(FindText(list, "also no address"), 3);
  EXPECT_EQ(FindText(list, "3::1"), -1);
  EXPECT_EQ(FindText(Texts({"1.1.1.1", "2.2.2.2"}, IPRange), "2.2.2.2"), 1);
  EXPECT_EQ(list.FindFrom(0, ParseAddress("2::1")), 1);
  Reports reports;
  EXPECT_EQ(Texts({"::1"}).FindFrom(0, ParseAddress("::1")), -1);
  EXPECT_THAT(reports.Take(),
              ElementsAre("'CVariant: find': 'Finding IP value in List' failed. Type of 'Variant' "
                          "is 'StringList', but it has to be 'of Type IPList'."));
}

TEST(CVariantFind, StartsWhereItIsTold) {
  const CVariant longs = Longs({7, 7}), doubles = Doubles({7, 7}), bools = Bools({true, true});
  const CVariant texts = Texts({"7", "7"}), addresses = Texts({"::7", "::7"}, IPList);
  const CVariant numbers = Longs({7, 7}, NumberList), seven(std::int64_t{7});
  const CVariant mixed = Variants({CVariant(true), CVariant(true)});
  for (const auto& [start, expected] : std::vector<std::pair<std::int64_t, std::int64_t>>{
           {0, 0}, {1, 1}, {2, -1}, {3, -1}, {-1, -1}, {kMin, -1}, {kMax, -1}}) {
    SCOPED_TRACE(start);
    EXPECT_EQ(longs.FindFrom(start, std::int64_t{7}), expected);
    EXPECT_EQ(doubles.FindFrom(start, 7.0), expected);
    EXPECT_EQ(bools.FindFrom(start, true), expected);
    EXPECT_EQ(numbers.FindFrom(start, 7.0), expected);
    EXPECT_EQ(mixed.FindFrom(start, true), expected);
    EXPECT_EQ(FindText(texts, "7", start), expected);
    EXPECT_EQ(FindText(addresses, "::7", start), expected);
    EXPECT_EQ(longs.FindFrom(start, &seven), expected);
    const auto text = MakeUseCounted<CUnicodeString>("7");
    EXPECT_EQ(texts.Find(text.Get(), start), expected);
  }
}

TEST(CVariantFind, LooksForAVariantByItsType) {
  Reports reports;
  const auto find = [](const CVariant& list, const CVariant& value) {
    const std::int64_t position = list.Find(&value);
    EXPECT_EQ(list.Find(Foreign(value).Get()), position);
    return position;
  };
  EXPECT_EQ(find(Doubles({1, 2}), CVariant(2.0)), 1);
  EXPECT_EQ(find(Doubles({1, 2}), CVariant(std::int64_t{2})), 1);
  for (const VariantType type : {Long, Category, Hex, DLPCategory}) {
    EXPECT_EQ(find(Longs({1, 2}), CVariant(type, 2)), 1);
  }
  for (const VariantType type : {String, Regex, MediaType, SSOConnector}) {
    EXPECT_EQ(find(Texts({"a", "b"}), TextValue(type, "b")), 1);
  }
  EXPECT_EQ(find(Texts({"::1", "::2"}, IPList), TextValue(IP, "::2")), 1);
  EXPECT_EQ(find(Texts({"::1", "::2"}, IPList), TextValue(String, "::2")), 1);
  EXPECT_EQ(find(Bools({true, false}), CVariant(false)), 1);
  EXPECT_THAT(reports.Take(), IsEmpty());
  // Contract: a foreign address is looked for by its text, on a list of texts too.
  const CVariant address = TextValue(IP, "1.2.3.4");
  EXPECT_EQ(Texts({"1.2.3.4"}).Find(Foreign(address).Get()), 0);
  EXPECT_THAT(reports.Take(), IsEmpty());
  EXPECT_EQ(Texts({"1.2.3.4"}).Find(&address), -1);
  EXPECT_EQ(reports.Take().size(), 1u);
}

TEST(CVariantFind, ReportsAVariantThatNoListIsSearchedFor) {
  Reports reports;
  for (const VariantType type : {Empty, LongList, Map, HostAndCertificate, StringList}) {
    const CVariant value = SampleOf(type);
    EXPECT_EQ(Longs({1}).Find(&value), -1);
    EXPECT_THAT(reports.Take(),
                ElementsAre(std::string("'CVariant: find': Unknown type '") + TypeInfo(type).fName +
                            "' for object 'Variant'. Details: 'Error: unsupported element-types. "
                            "Type of this: LongList, type of parameter: " +
                            TypeInfo(type).fName + "'"));
  }
}

// ---- the index

TEST(CVariantFind, BuildsAnIndexAtTheTenthSearchOfALongList) {
  for (const VariantType type :
       {StringList, RegexList, MediaTypeList, SSOConnectorList, IPList, IPRange}) {
    SCOPED_TRACE(TypeInfo(type).fName);
    const CVariant list = ManyTexts(65, type);
    LookUp(list, 9);
    EXPECT_EQ(list.LookupCount(), 9u);
    EXPECT_FALSE(list.HasIndex());
    LookUp(list, 1);
    EXPECT_TRUE(list.HasIndex());
    LookUp(list, 5);
    EXPECT_EQ(list.LookupCount(), 10u);
  }
}

TEST(CVariantFind, CountsASearchFromBeyondTheEnd) {
  const CVariant list = ManyTexts(65);
  for (const std::int64_t start : {std::int64_t{65}, std::int64_t{-1}, kMin, kMax}) {
    EXPECT_EQ(FindText(list, "5", start), -1);
  }
  EXPECT_EQ(list.LookupCount(), 4u);
}

TEST(CVariantFind, CountsNeitherShortListsNorNumbers) {
  const CVariant texts = ManyTexts(64), addresses = ManyTexts(64, IPList);
  LookUp(texts, 20);
  LookUp(addresses, 20);
  EXPECT_EQ(texts.LookupCount(), 0u);
  EXPECT_EQ(addresses.LookupCount(), 0u);
  CVariant longs(LongList);
  for (std::int64_t i = 0; i < 100; ++i) longs.AddToList(i);
  for (int i = 0; i < 20; ++i) longs.Find(std::int64_t{5});
  EXPECT_EQ(longs.LookupCount(), 0u);
  EXPECT_FALSE(longs.HasIndex());
}

TEST(CVariantFind, AnswersByIndexAsOneByOne) {
  std::mt19937 random(21);
  for (int round = 0; round < 60; ++round) {
    const bool isAddresses = round % 2 == 0;
    const std::size_t count = 65 + random() % 60;
    const unsigned distinct = 1 + random() % 30;
    const auto anyText = [&] {
      const std::string number = std::to_string(random() % distinct);
      if (!isAddresses) return random() % 8 ? "t" + number : std::string();
      // Few low words, so that many addresses are equal in order and differ.
      return random() % 4 ? std::to_string(1 + random() % 5) + ":0:0:0:0:0:0:" + number
                          : "1.1.1." + number;
    };
    std::vector<std::string> values;
    for (std::size_t i = 0; i < count; ++i) values.push_back(anyText());
    const CVariant list = Texts(values, isAddresses ? IPList : StringList);
    LookUp(list, 10);
    ASSERT_TRUE(list.HasIndex());
    for (int question = 0; question < 200; ++question) {
      const std::string text = anyText();
      const auto start = static_cast<std::int64_t>(random() % (count + 2)) - 1;
      const auto expected = start < 0 ? -1 : Linear(values, text, start);
      ASSERT_EQ(FindText(list, text, start), expected) << text << " from " << start;
    }
    for (std::size_t start = 0; start <= count; ++start) {  // the run of one value, all through
      const auto from = static_cast<std::int64_t>(start);
      ASSERT_EQ(FindText(list, values[0], from), Linear(values, values[0], from));
    }
  }
}

TEST(CVariantFind, LosesTheIndexWithEveryChangeForGood) {
  const CVariant one(std::int64_t{1});
  const CVariant text = TextValue(String, "x");
  struct Row {
    const char* name;
    std::function<void(CVariant&)> change;
  };
  const Row rows[] = {
      {"AddToList", [](CVariant& list) { list.AddToList(MakeText("x").Get()); }},
      {"AddToList(variant)", [&](CVariant& list) { list.AddToList(&text); }},
      {"SetListElem", [](CVariant& list) { list.SetListElem(0, MakeText("x").Get()); }},
      {"Erase", [](CVariant& list) { list.Erase(0); }},
      {"SortList", [](CVariant& list) { list.SortList(); }},
      {"SetSorted", [](CVariant& list) { list.SetSorted(true); }},
      {"JoinLists", [](CVariant& list) { list.JoinLists(&list); }},
      {"EraseFromList",
       [](CVariant& list) {
         const CVariant other = Texts({"5"});
         list.EraseFromList(&other);
       }},
      {"Clear", [](CVariant& list) { list.Clear(); }},
      {"SetEmpty", [](CVariant& list) { list.SetEmpty(); }},
      {"SetLong", [](CVariant& list) { list.SetLong(1); }},
      {"SetString", [](CVariant& list) { list.SetString(MakeText("x").Get()); }},
      {"Assign", [&](CVariant& list) { list.Assign(&one); }},
      {"SetListFromArray", [](CVariant& list) { list.SetListFromArray(StringList, nullptr, 0); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    CVariant list = ManyTexts(100);
    LookUp(list, 10);
    ASSERT_TRUE(list.HasIndex());
    row.change(list);
    EXPECT_FALSE(list.HasIndex());
    EXPECT_EQ(list.LookupCount(), 10u);  // Contract: never counted again
    list.Assign(&static_cast<const CVariant&>(ManyTexts(100)));
    LookUp(list, 20);
    EXPECT_FALSE(list.HasIndex());
    EXPECT_EQ(FindText(list, "99"), 99);
  }
}

TEST(CVariantFind, KeepsTheIndexWhereNothingChanges) {
  CVariant list = ManyTexts(100);
  LookUp(list, 10);
  list.Reserve(10'000);
  list.SetSorted(false);
  list.Erase(-1);
  EXPECT_TRUE(list.HasIndex());
  EXPECT_EQ(FindText(list, "42"), 42);

  list = ManyTexts(100);
  list.SetSorted(true);
  CVariant sorted(list);
  LookUp(sorted, 10);
  sorted.SetSorted(true);
  EXPECT_TRUE(sorted.HasIndex());
}

TEST(CVariantFind, AnswersAnythingInRangeOnceTheListIsTurnedRound) {
  for (const VariantType type : {StringList, IPList}) {
    CVariant list = ManyTexts(150, type);
    LookUp(list, 10);
    EXPECT_TRUE(list.ReverseList());
    EXPECT_TRUE(list.HasIndex());
    for (int i = 0; i < 200; ++i) {
      const std::string text = (type == IPList ? "1.1.1." : "") + std::to_string(i);
      for (const std::int64_t start : {0, 70, 149}) {
        const std::int64_t position = FindText(list, text, start);
        EXPECT_TRUE(position == -1 || (position >= start && position < 150));
      }
    }
    list.SetListElem(0, MakeText("2.2.2.2").Get());  // the next change repairs it
    EXPECT_EQ(FindText(list, "2.2.2.2"), 0);
  }
}

// ---- threads

TEST(CVariantFind, ServesManyReadersThatBuildTheIndexAtOnce) {
  for (int round = 0; round < 20; ++round) {
    const CVariant list = ManyTexts(200);
    const CVariant addresses = ManyTexts(200, IPList);
    std::vector<std::thread> readers;
    for (int reader = 0; reader < 8; ++reader) {
      readers.emplace_back([&, reader] {
        for (int i = 0; i < 50; ++i) {
          const int wanted = (i * 7 + reader) % 200;
          EXPECT_EQ(FindText(list, std::to_string(wanted)), wanted);
          EXPECT_EQ(FindText(addresses, "1.1.1." + std::to_string(wanted)), wanted);
          list.GetHash();
          const CVariant copy(list);
          EXPECT_EQ(copy.SizeOfList(), 200u);
        }
      });
    }
    for (std::thread& reader : readers) reader.join();
    EXPECT_TRUE(list.HasIndex());
    EXPECT_EQ(list.LookupCount(), 10u);
  }
}

}  // namespace
