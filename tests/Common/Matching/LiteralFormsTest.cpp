#include "Common/Matching/LiteralForms.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <string>
#include <vector>

#include "Common/Matching/ByteFold.h"
#include "Common/Matching/LiteralChance.h"
#include "Common/Matching/LiteralChoice.h"
#include "Common/Matching/Parser.h"

namespace {

using Matching::LiteralChoice;
using Matching::LiteralForm;
using Matching::LiteralForms;
using Forms = std::vector<LiteralForm>;
using Strings = std::vector<std::string>;

std::optional<Forms> WholeOf(const std::string& expression) {
  const auto parsed = Matching::Parse(expression);
  EXPECT_FALSE(parsed.error) << expression.substr(0, 100);
  return LiteralForms(parsed.tree).Whole({parsed.tree.Root()});
}

Strings RequiredOf(const std::string& expression) {
  const auto parsed = Matching::Parse(expression);
  EXPECT_FALSE(parsed.error) << expression.substr(0, 100);
  return LiteralForms(parsed.tree).Required({parsed.tree.Root()});
}

// A form as a glob: "*" for a gap.
std::string Show(const LiteralForm& form) {
  std::string text = form.gapBefore ? "*" : "";
  for (std::size_t i = 0; i < form.pieces.size(); ++i) text += (i ? "*" : "") + form.pieces[i];
  return text + (form.gapAfter && !form.pieces.empty() ? "*" : "");
}

struct Row {
  const char* expression;
  std::optional<Strings> forms;  // nothing: literals and gaps cannot say it
};

TEST(LiteralForms, SaysWhatTheRowsSay) {
  const Row rows[] = {
      {"", {{""}}},
      {"Abc", {{"abc"}}},
      {"^abc$", {{"abc"}}},
      {"^.*\\.name\\.tld$", {{"*.name.tld"}}},
      {"^(.*\\.)?name\\.tld$", {{"*.name.tld", "name.tld"}}},
      {"^(?:.*\\.|)name$", {{"*.name", "name"}}},
      {"(^|.*\\.)name", {{"name", "*.name"}}},
      {"^(.*[.])?name$", {{"*.name", "name"}}},
      {".*", {{"*"}}},
      {".*.*", {{"*"}}},
      {"a.*", {{"a*"}}},
      {".*a.*b.*", {{"*a*b*"}}},
      {"a(b|c)d", {{"abd", "acd"}}},
      {"a[bc]d", {{"abd", "acd"}}},
      {"ab?", {{"a", "ab"}}},
      {"(ab){2}", {{"abab"}}},
      {"(.*)(a)", {{"*a"}}},
      {".*?a", {{"*a"}}},
      {"a|a", {{"a"}}},
      // Positions where nothing can stand, or what is free there must be empty.
      {".*^a", {{"a"}}},
      {"a$.*", {{"a"}}},
      {"a^b", Strings{}},
      {"a$b", Strings{}},
      {"(a$|b)c", {{"bc"}}},
      // Beyond literals and gaps.
      {"a.", std::nullopt},
      {"a.+", std::nullopt},
      {"a+", std::nullopt},
      {"\\d", std::nullopt},
      {"\\bab", std::nullopt},
      {"(?=a)a", std::nullopt},
      {"(a)\\1", std::nullopt},
      {"[^a]*b", std::nullopt},
      {"[ab][cd][ef][gh][ij][kl]", std::nullopt},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.expression);
    const auto forms = WholeOf(row.expression);
    ASSERT_EQ(forms.has_value(), row.forms.has_value());
    if (!forms) continue;
    Strings shown;
    for (const LiteralForm& form : *forms) shown.push_back(Show(form));
    EXPECT_THAT(shown, testing::UnorderedElementsAreArray(*row.forms));
  }
}

TEST(LiteralForms, TurnsFromATreeToAnotherInTheSameMemory) {
  LiteralForms turned;
  Matching::SyntaxTree storage;
  for (int i = 0; i < 600; ++i) {  // more sets than a tree keeps
    const char letter = static_cast<char>('a' + i % 26);
    const char other = static_cast<char>('!' + i / 26);
    const std::string expression = std::string("^.*x[") + letter + other + "]yz$";
    SCOPED_TRACE(expression);
    auto parsed = Matching::Parse(expression, std::move(storage));
    turned.TurnTo(parsed.tree);
    EXPECT_EQ(turned.Whole({parsed.tree.Root()}), WholeOf(expression));
    storage = std::move(parsed.tree);
  }
}

TEST(LiteralForms, NamesLiteralsThatEveryMatchHas) {
  const std::pair<const char*, Strings> rows[] = {
      {"^.*GoKu-iOS/(\\d+[.\\d]+).*$", {"goku-ios/"}},
      {"^.*; {0,2}([Uu])([89]\\d{3}) Build.*$", {" build"}},
      {"^.*(HD-FOX C|HD (FOX\\+|NANO)|iCord (HD\\+|MINI)).*$",
       {"hd-fox c", "hd fox+", "hd nano", "icord hd+", "icord mini"}},
      {"\\d+abc\\d+abcdef\\d", {"abcdef"}},
      {"(\\dabc|\\ddef)+", {"abc", "def"}},
      {"(\\dabc)?x", {"x"}},
      {"\\d+", {}},
      {"a|\\d", {}},
      {"(abc)*", {}},
      {"abc|", {}},
  };
  for (const auto& [expression, literals] : rows) {
    SCOPED_TRACE(expression);
    EXPECT_EQ(RequiredOf(expression), literals);
  }
}

// Whether a folded text is of a form, found piece by piece from the left.
bool HasForm(const std::string& folded, const LiteralForm& form) {
  std::string expression = form.gapBefore ? ".*" : "";
  for (std::size_t i = 0; i < form.pieces.size(); ++i) {
    if (i) expression += ".*";
    for (const char c : form.pieces[i]) expression += std::string("[") + c + "]";
  }
  if (form.gapAfter) expression += ".*";
  return std::regex_match(folded, std::regex(expression));
}

std::string RandomExpression(std::mt19937& random, int depth) {
  static const char* const kAtoms[] = {"a", "b", "B",  "[ab]", ".",  "\\d",
                                       "^", "$", ".*", "",     "\\n"};
  std::string expression;
  for (std::size_t i = 0; i < 1 + random() % 4; ++i) {
    std::string part = kAtoms[random() % std::size(kAtoms)];
    if (depth > 0 && random() % 3 == 0) {
      part = "(" + RandomExpression(random, depth - 1) +
             (random() % 2 ? "|" + RandomExpression(random, depth - 1) : "") + ")";
      static const char* const kTimes[] = {"", "?", "*", "{2}", "{0,2}"};
      part += kTimes[random() % std::size(kTimes)];
    }
    expression += part;
  }
  return expression;
}

TEST(LiteralForms, AgreesWithTheExpressionOnEveryShortText) {
  Strings texts = {""};
  for (std::size_t i = 0; texts[i].size() < 4; ++i) {
    for (const char c : {'a', 'B', '\n'}) texts.push_back(texts[i] + c);
  }
  std::mt19937 random(30);
  int said = 0;
  for (int round = 0; round < 150; ++round) {
    const std::string expression = RandomExpression(random, 2);
    const std::regex regex(expression, std::regex::ECMAScript | std::regex::icase);
    const auto forms = WholeOf(expression);
    const Strings required = RequiredOf(expression);
    said += forms ? 1 : 0;
    for (const std::string& text : texts) {
      const bool matches = std::regex_match(text, regex);
      const std::string folded = Matching::FoldText(text);
      if (forms) {
        bool has = false;
        for (const LiteralForm& form : *forms) has = has || HasForm(folded, form);
        EXPECT_EQ(has, matches) << expression << " on " << text;
      }
      if (matches && !required.empty()) {
        bool has = false;
        for (const std::string& literal : required) {
          has = has || folded.find(literal) != std::string::npos;
        }
        EXPECT_TRUE(has) << expression << " on " << text;
      }
    }
  }
  EXPECT_GT(said, 40);
}

TEST(LiteralForms, StaysCheapOnLongExpressions) {
  std::string groups;
  for (int i = 0; i < 20000; ++i) groups += "(a)";
  const auto forms = WholeOf(groups);
  ASSERT_TRUE(forms);
  EXPECT_EQ(forms->at(0).pieces, Strings{std::string(20000, 'a')});
  std::string dead;
  for (int i = 0; i < 5000; ++i) dead += "(a|$b)";
  EXPECT_FALSE(WholeOf(dead));
  EXPECT_FALSE(RequiredOf(dead).empty());
  std::string deep = std::string(1000, '(') + "abc" + std::string(1000, ')');
  EXPECT_FALSE(WholeOf(deep));
  EXPECT_EQ(RequiredOf(deep), Strings());
}

TEST(LiteralChance, OrdersLiteralsByHowManyTextsHaveThem) {
  const char* const byChance[] = {"e", ":", "www", "http", "~", "tion/x", "goku-ios/"};
  for (std::size_t i = 1; i < std::size(byChance); ++i) {
    EXPECT_LE(Matching::ChanceOf(byChance[i]), Matching::ChanceOf(byChance[i - 1])) << byChance[i];
  }
  EXPECT_EQ(Matching::ChanceOf("e"), 1);
  EXPECT_GT(Matching::ChanceOf("goku-ios/"), 0);
  EXPECT_EQ(Matching::ChanceOfAny({"e", "t"}), 1);
  EXPECT_EQ(Matching::ChanceOfAny({}), 0);
}

TEST(LiteralChoice, TakesTheRarestThatFewHaveTaken) {
  const std::vector<std::string> literals = {"html", "goku", ".com", "goky"};
  LiteralChoice choice;
  ASSERT_EQ(choice.BestOf(literals), 3u);
  EXPECT_EQ(choice.CostOfAny(literals), choice.CostOf("html") + choice.CostOf("goku") +
                                            choice.CostOf(".com") + choice.CostOf("goky"));
  const double before = choice.CostOf("goky");
  for (int i = 0; i < 9; ++i) choice.Take("goky");
  EXPECT_DOUBLE_EQ(choice.CostOf("goky"), 10 * before);
  EXPECT_EQ(choice.BestOf(literals), 1u);
}

TEST(LiteralChoice, DoesWithoutChancesAndLoads) {
  const std::vector<std::string> literals = {"goku", "https://", "goky"};
  LiteralChoice byLength({.useChance = false, .useLoad = true});
  EXPECT_EQ(byLength.BestOf(literals), 1u);
  for (int i = 0; i < 9; ++i) byLength.Take("https://");
  EXPECT_EQ(byLength.BestOf(literals), 0u);
  LiteralChoice unloaded({.useChance = true, .useLoad = false});
  const std::uint32_t best = unloaded.BestOf(literals);
  for (int i = 0; i < 9; ++i) unloaded.Take(literals[best]);
  EXPECT_EQ(unloaded.BestOf(literals), best);
}

}  // namespace
