#include "Common/Matching/FloatingLiterals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Common/Matching/Avx2.h"
#include "Common/Matching/ByteFold.h"
#include "Common/Matching/FewLiterals.h"
#include "Common/Matching/LiteralPool.h"
#include "Common/Matching/NibbleScan.h"
#include "Common/Matching/PaddedText.h"
#include "Common/Matching/RunFilter.h"
#include "tests/Common/Matching/RandomText.h"

namespace {

using Matching::FewLiterals;
using Matching::FloatingLiterals;
using Matching::FloatingOptions;
using Matching::FoldText;
using Matching::LiteralPool;
using Matching::NibbleScan;
using Matching::PaddedText;
using Matching::RunFilter;
using Hits = std::vector<std::pair<std::uint32_t, std::size_t>>;
using HitSet = std::set<std::pair<std::uint32_t, std::size_t>>;
using Strings = std::vector<std::string>;

constexpr FloatingOptions kAllOptions[] = {
    {},
    {.useFew = false},
    {.useVectors = false},
    {.mergePasses = false},
    {.useFew = false, .useVectors = false},
    {.useFew = false, .mergePasses = false},
    {.useFew = false, .useVectors = false, .mergePasses = false},
};

// A text with nothing behind it that a sanitizer would let pass.
class ExactText {
public:
  explicit ExactText(std::string_view text)
      : fBytes(std::make_unique<char[]>(text.size())), fSize(text.size()) {
    text.copy(fBytes.get(), fSize);
  }
  std::string_view View() const { return {fBytes.get(), fSize}; }

private:
  std::unique_ptr<char[]> fBytes;
  std::size_t fSize;
};

// Every id with every place where its literal stands; each place is told once.
HitSet FindAll(const FloatingLiterals& table, const std::string& text) {
  const ExactText exact(text);
  std::multiset<std::pair<std::uint32_t, std::size_t>> found;
  EXPECT_FALSE(table.Visit(exact.View(), [&](std::uint32_t literal, std::size_t at) {
    for (const std::uint32_t id : table.IdsOf(literal)) found.emplace(id, at);
    return false;
  }));
  const HitSet set(found.begin(), found.end());
  EXPECT_EQ(set.size(), found.size());
  return set;
}

HitSet SearchEach(const Strings& literals, const std::string& text) {
  const std::string folded = FoldText(text);
  HitSet expected;
  for (std::uint32_t id = 0; id < literals.size(); ++id) {
    for (std::size_t at = folded.find(literals[id]); at != std::string::npos;
         at = folded.find(literals[id], at + 1)) {
      expected.emplace(id, at);
    }
  }
  return expected;
}

TEST(FloatingLiterals, AgreesWithSearchingEveryLiteral) {
  std::mt19937 random(8);
  for (int round = 0; round < 420; ++round) {
    FloatingLiterals table(kAllOptions[round % std::size(kAllOptions)]);
    Strings literals;
    const std::size_t longest = random() % 2 ? 9 : 20;
    for (std::size_t count = 1 + random() % 40; count > 0; --count) {
      const std::string literal =
          FoldText(RandomText(random, longest, round % 2 ? "aB" : "abcd.\xE9"));
      if (table.Add(literal, static_cast<std::uint32_t>(literals.size()))) {
        literals.push_back(literal);
      }
    }
    table.Freeze();
    EXPECT_EQ(table.Count(), std::set(literals.begin(), literals.end()).size());
    for (int i = 0; i < 20; ++i) {
      std::string text = RandomText(random, 40, "AabBcd.\xE9");
      if (!literals.empty()) text += literals[random() % literals.size()];
      EXPECT_EQ(FindAll(table, text), SearchEach(literals, text)) << round << " text " << text;
    }
  }
}

// More than a scan of many places together takes.
TEST(FloatingLiterals, AgreesWithSearchingEachOfManyLiterals) {
  std::mt19937 random(9);
  for (const FloatingOptions& options : kAllOptions) {
    FloatingLiterals table(options);
    Strings literals;
    while (literals.size() < 3000) {
      const std::string literal = RandomText(random, 14, "etaoinshr.");
      if (literal.size() < 3) continue;
      table.Add(literal, static_cast<std::uint32_t>(literals.size()));
      literals.push_back(literal);
    }
    table.Freeze();
    for (int i = 0; i < 30; ++i) {
      const std::string text =
          RandomText(random, 700, "etaoinshr.") + literals[random() % literals.size()];
      EXPECT_EQ(FindAll(table, text), SearchEach(literals, text)) << text;
    }
  }
}

TEST(FloatingLiterals, FindsAcrossTheBlocksOfALongText) {
  const Strings literals = {"x", "yz", "key", "word", "needle", "a longer needle"};
  const Strings spelt = {"X", "yZ", "KEY", "Word", "nEEdle", "a longer needle"};
  for (const FloatingOptions& options : kAllOptions) {
    FloatingLiterals table(options);
    for (std::uint32_t i = 0; i < literals.size(); ++i) table.Add(literals[i], i);
    table.Freeze();
    for (const std::string& literal : spelt) {
      for (std::size_t at = 4990; at < 5130; ++at) {
        std::string text(5200, '-');
        text.replace(at, literal.size(), literal);
        EXPECT_EQ(FindAll(table, text), SearchEach(literals, text)) << literal << " at " << at;
      }
    }
  }
}

TEST(FloatingLiterals, TellsOfALiteralOnceWhateverItsIds) {
  FloatingLiterals table;
  for (const std::uint32_t id : {5, 3, 9}) EXPECT_TRUE(table.Add("same", id));
  EXPECT_TRUE(table.Add("other", 4));
  table.Freeze();
  EXPECT_EQ(table.Count(), 2u);
  EXPECT_THAT(table.IdsOf(0), testing::ElementsAre(5, 3, 9));
  EXPECT_THAT(table.IdsOf(1), testing::ElementsAre(4));
  Hits hits;
  table.Visit("the SAME", [&](std::uint32_t literal, std::size_t at) {
    hits.emplace_back(literal, at);
    return false;
  });
  EXPECT_EQ(hits, (Hits{{0, 4}}));
}

TEST(FloatingLiterals, RefusesTheEmptyLiteralAndStopsWhenToldTo) {
  FloatingLiterals table;
  EXPECT_FALSE(table.Add("", 1));
  EXPECT_EQ(table.Count(), 0u);
  table.Add("a", 1);
  table.Freeze();
  int calls = 0;
  EXPECT_TRUE(table.Visit("aaaa", [&](std::uint32_t, std::size_t) { return ++calls == 2; }));
  EXPECT_EQ(calls, 2);
}

TEST(LiteralPool, NumbersEqualTextsAlike) {
  LiteralPool pool;
  EXPECT_EQ(pool.Find("a"), LiteralPool::kNone);
  for (std::uint32_t i = 0; i < 1000; ++i) {
    const std::string text = "text " + std::to_string(i);
    EXPECT_EQ(pool.Add(text), i);
    EXPECT_EQ(pool.Add(text), i);
    EXPECT_EQ(pool.Find(text), i);
    EXPECT_EQ(pool.Find(text + "x"), LiteralPool::kNone);
  }
  pool.Freeze();
  EXPECT_EQ(pool.Count(), 1000u);
  EXPECT_EQ(pool[0], "text 0");
  EXPECT_EQ(pool[999], "text 999");
}

TEST(PaddedText, IsTheTextAndZerosBehindIt) {
  for (std::size_t size = 1; size < 200; ++size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) text += static_cast<char>('a' + i % 26);
    const ExactText exact(text);
    const PaddedText padded(exact.View());
    const std::string all = text + std::string(PaddedText::kMostSize, '\0');
    for (std::size_t place = 0; place < size; ++place) {
      for (const std::size_t count : {std::size_t{1}, std::size_t{35}, PaddedText::kMostSize}) {
        ASSERT_EQ(std::string(padded.From(place, count), count), all.substr(place, count));
      }
    }
  }
}

TEST(NibbleScan, MissesNoPlaceOfAText) {
  if (!NibbleScan::IsSupported()) GTEST_SKIP() << "the processor has no AVX2";
  for (const std::size_t firstBucket : {0, 7}) {  // one octet of buckets, and both
    NibbleScan scan;
    const Strings strings = {"a", "b1", ".\xE9x", "{zq-"};
    for (std::size_t i = 0; i < strings.size(); ++i) scan.Add(strings[i], firstBucket + 2 * i);
    for (std::size_t size = 1; size < 100; ++size) {
      for (std::size_t i = 0; i < strings.size(); ++i) {
        for (std::size_t at = 0; at + strings[i].size() <= size; ++at) {
          std::string text(size, 'O');
          text.replace(at, strings[i].size(), strings[i]);
          for (char& c : text) {
            if (c >= 'a' && c <= 'z' && at % 2 == 0) c = static_cast<char>(c - 32);
          }
          const ExactText exact(text);
          const PaddedText padded(exact.View());
          NibbleScan::Places places{};
          std::vector<std::pair<std::size_t, unsigned>> found;
          for (std::size_t from = 0; scan.Next(padded, from, places);) {
            for (std::size_t k = 0; k < 32; ++k) {
              if (places.bits >> k & 1) found.emplace_back(places.first + k, places.BucketsAt(k));
            }
          }
          EXPECT_EQ(found, (decltype(found){{at, 1U << (firstBucket + 2 * i)}})) << text;
        }
      }
    }
  }
}

TEST(FewLiterals, TakesNoMoreThanItTellsApart) {
  std::vector<std::string> literals;
  const auto chooses = [&literals] {
    FewLiterals few;
    std::vector<FewLiterals::Literal> all;
    for (std::uint32_t i = 0; i < literals.size(); ++i) all.push_back({i, literals[i]});
    const bool isChosen = few.Choose(all);
    EXPECT_EQ(few.IsEmpty(), !isChosen || literals.empty());
    return isChosen;
  };
  EXPECT_TRUE(chooses());
  literals = {"q", "e7"};
  EXPECT_TRUE(chooses());
  literals.push_back("e");  // nearly every text has it at many places
  EXPECT_FALSE(chooses());
  literals.clear();
  for (int i = 0; i < 60; ++i) literals.push_back("key" + std::to_string(7919 * i) + "=");
  EXPECT_TRUE(chooses());
  for (int i = 0; i < 200; ++i) literals.push_back("key" + std::to_string(7919 * i) + "%");
  EXPECT_FALSE(chooses());
}

// A text can be made of the bytes that many literals begin with.
TEST(FewLiterals, ComparesFewAtOnePlace) {
  if (!NibbleScan::IsSupported()) GTEST_SKIP() << "the processor has no AVX2";
  std::vector<std::string> literals;
  for (int i = 0; i < 100; ++i) literals.push_back("zqzq" + std::to_string(i));
  std::vector<FewLiterals::Literal> all;
  for (std::uint32_t i = 0; i < literals.size(); ++i) all.push_back({i, literals[i]});
  FewLiterals few;
  ASSERT_TRUE(few.Choose(all));
  std::size_t compared = 0;
  EXPECT_FALSE(few.Visit(PaddedText("zqzqzqzq"), [&](std::uint32_t, std::size_t, std::size_t) {
    ++compared;
    return false;
  }));
  EXPECT_LE(compared, 3 * 40U);
}

// Of looking: one place after the other, and many together where the processor can.
const bool kWays[] = {false, Matching::HasAvx2()};

// At every place, with runs that are there and others.
TEST(RunFilter, PassesWhatWasAddedAndLittleElse) {
  std::mt19937 random(10);
  RunFilter filter(500);
  Strings runs;
  for (int i = 0; i < 500; ++i) {
    std::string run(5, '\0');
    for (char& c : run) c = static_cast<char>(random());
    runs.push_back(run);
    filter.Add(RunFilter::HashOfRun<5>(run.data()));
  }
  std::size_t passed = 0;
  std::size_t asked = 0;
  for (std::size_t size = 0; size < 600; ++size) {
    std::string text(size, '\0');
    for (char& c : text) c = static_cast<char>(random());
    std::set<std::size_t> placed;
    for (std::size_t at = random() % 40; at + 5 <= size; at += 5 + random() % 40) {
      text.replace(at, 5, runs[random() % runs.size()]);
      placed.insert(at);
    }
    const ExactText exact(text);
    const PaddedText padded(exact.View());
    for (std::size_t first = 0; first < size; first += 1 + random() % 90) {
      const std::uint64_t bits = filter.Collect<5>(padded, first, false);
      for (const bool useVectors : kWays) {
        ASSERT_EQ(filter.Collect<5>(padded, first, useVectors), bits);
      }
      for (std::size_t i = 0; i < RunFilter::kPlaces; ++i) {
        const std::size_t place = first + i * RunFilter::kStride;
        const bool isPassed = (bits >> i & 1) != 0;
        ASSERT_TRUE(isPassed || !placed.contains(place)) << place;
        ASSERT_FALSE(isPassed && place + 5 > size) << place;
        passed += isPassed && !placed.contains(place) ? 1 : 0;
        ++asked;
      }
    }
  }
  EXPECT_LT(passed, asked / 50);
}

TEST(RunFilter, TakesLettersOfBothCasesForOne) {
  RunFilter filter(1);
  filter.Add(RunFilter::HashOfRun<4>("a.b1"));
  for (const char* text : {"a.b1", "A.B1", "xxxxA.b1"}) {
    const PaddedText padded(text);
    const std::uint64_t expected = std::string_view(text).size() == 4 ? 1 : 2;
    for (const bool useVectors : kWays) {
      EXPECT_EQ(filter.Collect<4>(padded, 0, useVectors), expected);
    }
  }
}

}  // namespace
