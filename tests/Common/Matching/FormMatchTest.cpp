#include "Common/Matching/FormMatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <random>
#include <string>

#include "Common/Matching/ByteFold.h"
#include "Common/Matching/LiteralFilter.h"

namespace {

using Matching::HasForm;
using Matching::LatestStart;
using Matching::LineEnds;
using Matching::LiteralFilter;
using Matching::LiteralForm;

std::string RandomText(std::mt19937& random, std::size_t most, unsigned letters) {
  std::string text;
  for (std::size_t left = random() % (most + 1); left > 0; --left) {
    text += static_cast<char>((random() % 2 ? 'a' : 'A') + static_cast<int>(random() % letters));
  }
  return text;
}

// The starts of the first piece over all ways to place the pieces: the latest, or nothing.
std::optional<std::size_t> LatestByAllWays(const std::string& folded, const LiteralForm& form,
                                           std::size_t piece = 0, std::size_t from = 0) {
  if (piece == form.pieces.size()) {
    const bool mayEnd = form.gapAfter || from == folded.size();
    return mayEnd ? std::optional(from) : std::nullopt;
  }
  std::optional<std::size_t> latest;
  const std::string& wanted = form.pieces[piece];
  const bool isFixed = piece == 0 && !form.gapBefore;
  for (std::size_t at = from; at + wanted.size() <= folded.size(); ++at) {
    if (isFixed && at > 0) break;
    if (folded.compare(at, wanted.size(), wanted) != 0) continue;
    if (LatestByAllWays(folded, form, piece + 1, at + wanted.size())) latest = at;
  }
  return latest;
}

TEST(FormMatch, AgreesWithAllWaysToPlaceThePieces) {
  std::mt19937 random(5);
  for (int round = 0; round < 20000; ++round) {
    LiteralForm form;
    form.gapBefore = random() % 2 != 0;
    form.gapAfter = random() % 2 != 0;
    for (std::size_t left = 1 + random() % 3; left > 0; --left) {
      std::string piece = Matching::FoldText(RandomText(random, 3, 2));
      form.pieces.push_back(piece.empty() ? "a" : piece);
    }
    const std::string text = RandomText(random, 12, 2);
    const auto latest = LatestByAllWays(Matching::FoldText(text), form);
    ASSERT_EQ(HasForm(text, form), latest.has_value()) << text;
    if (latest && form.gapBefore) {
      ASSERT_EQ(LatestStart(text, form), *latest) << text;
    }
  }
}

// Long enough that comparing at each place is given up.
TEST(FormMatch, FindsPiecesThatTheTextNearlyHolds) {
  std::mt19937 random(6);
  for (int round = 0; round < 300; ++round) {
    std::string piece(100 + random() % 100, 'a');
    piece[random() % piece.size()] = 'b';
    std::string text(2000, 'A');
    for (int i = 0; i < 3; ++i) text[random() % text.size()] = 'b';
    const std::string folded = Matching::FoldText(text);
    const LiteralForm form{{piece}, true, true};
    const bool has = folded.find(piece) != std::string::npos;
    ASSERT_EQ(HasForm(text, form), has);
    if (has) {
      ASSERT_EQ(LatestStart(text, form), folded.rfind(piece));
    }
  }
}

TEST(LineEnds, TellsOfBothSidesOfEveryPlace) {
  std::mt19937 random(7);
  for (int round = 0; round < 500; ++round) {
    std::string text(random() % 12, 'x');
    for (char& c : text) c = "xx\n\r"[random() % 4];
    LineEnds ends(text);
    const auto hasNone = [](const std::string& part) {
      return part.find_first_of("\n\r") == std::string::npos;
    };
    ASSERT_EQ(ends.None(), hasNone(text));
    for (std::size_t place = 0; place <= text.size(); ++place) {
      ASSERT_EQ(ends.NoneBefore(place), hasNone(text.substr(0, place)));
      ASSERT_EQ(ends.NoneFrom(place), hasNone(text.substr(place)));
    }
  }
}

TEST(LiteralFilter, KnowsHowFarLiteralsReach) {
  std::mt19937 random(8);
  for (int round = 0; round < 2000; ++round) {
    const std::string first = "q" + std::string(random() % 3, 'x');
    const std::string second = "x" + std::string(random() % 3, '-') + "w";
    const LiteralFilter filter({first, second});
    std::string text(random() % 3000, 'x');
    for (int i = 0; i < 3 && !text.empty(); ++i)
      text[random() % text.size()] = "qQwW-"[random() % 5];
    const std::string folded = Matching::FoldText(text);
    for (std::size_t from = 0; from <= text.size(); from += 1 + random() % 700) {
      const auto nearest = std::min(folded.find(first, from), folded.find(second, from));
      const std::size_t next = filter.Next(text, from);
      ASSERT_EQ(next, nearest) << from << " in " << text.size();
    }
  }
  // Compared in vain nearly everywhere.
  const std::string literal = std::string(5000, 'x') + "ex";
  const std::string text = std::string(30000, 'X') + literal + std::string(9000, 'x');
  EXPECT_EQ(LiteralFilter({literal}).Next(text, 7), 30000U);
  EXPECT_EQ(LiteralFilter({literal, "xexxx"}).Next(text, 30001), 34999U);
  EXPECT_EQ(LiteralFilter({literal}).Next(text, 30001), LiteralFilter::kNowhere);

  EXPECT_EQ(LiteralFilter().Next("abc", 1), 3U);
  EXPECT_EQ(LiteralFilter({"abc"}).Next("abc", 3), LiteralFilter::kNowhere);
  EXPECT_FALSE(LiteralFilter({"abc"}).MayMatch("xabxc"));
  EXPECT_TRUE(LiteralFilter({"abc"}).MayMatch("xABc"));
}

}  // namespace
