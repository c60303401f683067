#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "Common/Matching/AnchoredLiterals.h"
#include "Common/Matching/ByteFold.h"
#include "tests/Common/Matching/RandomText.h"

namespace {

using Matching::AnchoredLiterals;
using Matching::FoldText;
using Side = AnchoredLiterals::Side;
using Hits = std::vector<std::pair<std::uint32_t, std::size_t>>;

TEST(ByteFold, LowersAsciiLettersAlone) {
  for (int c = 0; c < 256; ++c) {
    const bool upper = c >= 'A' && c <= 'Z';
    EXPECT_EQ(Matching::FoldByte(static_cast<char>(c)), upper ? c + 32 : c);
  }
}

TEST(ByteFold, ComparesManyBytesAsItComparesOne) {
  std::string all;
  for (int c = 0; c < 256 * 3; ++c) all += static_cast<char>(c * 7);
  for (std::size_t size = 0; size < 40; ++size) {
    for (std::size_t start = 0; start + size <= all.size(); start += 13) {
      std::string literal = FoldText(std::string_view(all).substr(start, size));
      EXPECT_TRUE(Matching::EqualsFolded(all.data() + start, literal.data(), size));
      for (char& c : literal) {
        c ^= 1;
        EXPECT_FALSE(Matching::EqualsFolded(all.data() + start, literal.data(), size));
        c ^= 1;
      }
    }
  }
}

Hits VisitAll(const AnchoredLiterals& table, std::string_view text) {
  Hits hits;
  EXPECT_FALSE(table.Visit(text, [&](std::uint32_t id, std::size_t size) {
    hits.emplace_back(id, size);
    return false;
  }));
  return hits;
}

TEST(AnchoredLiterals, FindsNamesAsWholeTextsAndBehindADot) {
  AnchoredLiterals table(Side::Tail);
  EXPECT_TRUE(table.AddWhole("example.com", 3));
  EXPECT_TRUE(table.AddAnchored(".example.com", 3));
  EXPECT_TRUE(table.AddAnchored(".com", 7));
  table.Freeze();
  EXPECT_EQ(table.Count(), 2u);  // the first two share a record
  EXPECT_EQ(VisitAll(table, "EXAMPLE.com"), (Hits{{7, 4}, {3, 11}}));
  EXPECT_EQ(VisitAll(table, "www.example.COM"), (Hits{{7, 4}, {3, 12}}));
  EXPECT_EQ(VisitAll(table, "wwwexample.com"), (Hits{{7, 4}}));
  EXPECT_EQ(VisitAll(table, ".com"), (Hits{{7, 4}}));
  EXPECT_EQ(VisitAll(table, "com"), Hits());
  EXPECT_EQ(VisitAll(table, ""), Hits());
}

TEST(AnchoredLiterals, TellsTheSeparatorOfADotFromAWholeName) {
  AnchoredLiterals table(Side::Tail);
  table.AddAnchored(".a", 1);
  table.AddWhole("b", 2);
  table.AddAnchored(".", 3);
  table.Freeze();
  EXPECT_EQ(VisitAll(table, "a"), Hits());
  EXPECT_EQ(VisitAll(table, "x.a"), (Hits{{1, 2}}));
  EXPECT_EQ(VisitAll(table, "b"), (Hits{{2, 1}}));
  EXPECT_EQ(VisitAll(table, "x.b"), Hits());
  EXPECT_EQ(VisitAll(table, "x."), (Hits{{3, 1}}));
}

TEST(AnchoredLiterals, KeepsTheSmallestIdOfEqualLiterals) {
  AnchoredLiterals table(Side::Tail);
  table.AddAnchored("abc", 9);
  table.AddAnchored("abc", 4);
  table.AddWhole("abc", 2);
  table.Freeze();
  EXPECT_EQ(VisitAll(table, "abc"), (Hits{{2, 3}, {4, 3}}));
  EXPECT_EQ(VisitAll(table, "xabc"), (Hits{{4, 3}}));
}

TEST(AnchoredLiterals, StopsAtTheFirstHitThatIsTaken) {
  AnchoredLiterals table(Side::Tail);
  table.AddAnchored("c", 1);
  table.AddAnchored("bc", 2);
  table.Freeze();
  int calls = 0;
  EXPECT_TRUE(table.Visit("abc", [&](std::uint32_t, std::size_t) { return ++calls == 1; }));
  EXPECT_EQ(calls, 1);
}

TEST(AnchoredLiterals, RefusesWhatItHasNoRoomFor) {
  AnchoredLiterals table(Side::Tail);
  EXPECT_FALSE(table.AddWhole("", 1));
  EXPECT_TRUE(table.AddWhole(std::string(AnchoredLiterals::kMaxLiteralSize, 'a'), 1));
  EXPECT_FALSE(table.AddWhole(std::string(AnchoredLiterals::kMaxLiteralSize + 1, 'a'), 1));
  table.Freeze();
  EXPECT_EQ(VisitAll(table, std::string(AnchoredLiterals::kMaxLiteralSize, 'A')).size(), 1u);
}

TEST(AnchoredLiterals, AnswersNothingWhenEmpty) {
  AnchoredLiterals table(Side::Head);
  table.Freeze();
  EXPECT_EQ(table.Count(), 0u);
  EXPECT_EQ(VisitAll(table, "text"), Hits());
}

// The oracle compares every literal with the text.
TEST(AnchoredLiterals, AgreesWithComparingEveryLiteral) {
  std::mt19937 random(7);
  for (int round = 0; round < 400; ++round) {
    const Side side = round % 2 ? Side::Tail : Side::Head;
    const bool isOfLabels = round % 4 / 2 != 0;
    AnchoredLiterals table(side);
    std::vector<std::tuple<bool, std::string, std::uint32_t>> literals;
    for (std::uint32_t id = 0; id < 1 + random() % 30; ++id) {
      const std::string literal = isOfLabels ? FoldText(RandomText(random, 9, "aB.."))
                                             : FoldText(RandomText(random, 4, "aB.\xE9"));
      const bool whole = side == Side::Tail && random() % 2;
      if (!(whole ? table.AddWhole(literal, id) : table.AddAnchored(literal, id))) continue;
      literals.emplace_back(whole, literal, id);
    }
    table.Freeze();
    for (int i = 0; i < 40; ++i) {
      std::string text = RandomText(random, 7, "AabB.\xE9");
      if (isOfLabels && !literals.empty()) {  // a literal stands there, so that passes go far
        const std::string& literal = std::get<1>(literals[random() % literals.size()]);
        text = side == Side::Tail ? text + literal : literal + text;
      }
      const std::string folded = FoldText(text);
      std::set<std::pair<std::uint32_t, std::size_t>> expected;
      std::set<std::pair<bool, std::string>> seen;  // the smallest id of equal ones is the first
      for (const auto& [whole, literal, id] : literals) {
        const bool hit = whole                ? folded == literal
                         : side == Side::Tail ? folded.ends_with(literal)
                                              : folded.starts_with(literal);
        if (hit && seen.emplace(whole, literal).second) expected.emplace(id, literal.size());
      }
      std::set<std::pair<std::uint32_t, std::size_t>> found;
      for (const auto& hit : VisitAll(table, text)) found.insert(hit);
      EXPECT_EQ(found, expected) << "round " << round << " text " << text;
    }
  }
}

}  // namespace
