// The engine against the recorded answers of the standard library on the public expressions. Each
// test is silent where the data is not there; the other tests have rows of their own.

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "Common/Matching/Expression.h"
#include "tests/Common/Matching/ExpressionSupport.h"
#include "tests/Common/Matching/Oracle.h"
#include "tests/Common/Matching/PublicRows.h"

namespace {

using Matching::Captures;
using Matching::Expression;

// Where a small budget ends the library took seconds, and the road is tested all the same.
const Expression::Options kSmallBudget = {.maxSteps = 2'000'000};

// What a file says about one pair; empty or words where the library gave no answer.
struct Recorded {
  std::string match;
  std::string matchSpans;
  std::string search;
  std::string searchSpans;
};

// The recorded spans; a long list of them was cut off, and then the beginning must do.
void ExpectSpans(const std::string& spans, const std::string& recorded) {
  constexpr std::string_view kCut = " ...";
  if (recorded.ends_with(kCut)) {
    EXPECT_TRUE(spans.starts_with(recorded.substr(0, recorded.size() - kCut.size()))) << recorded;
  } else {
    EXPECT_EQ(spans, recorded);
  }
}

bool IsAnswer(const std::string& field) {
  return field == "0" || field == "1";
}

void ExpectRecordedAnswers(const Expression& expression, const std::string& text,
                           const Recorded& recorded) {
  Captures captures;
  if (IsAnswer(recorded.match)) {
    EXPECT_EQ(expression.IsMatch(text), recorded.match == "1");
    ExpectSpans(expression.MatchCaptures(text, captures) ? Spans(captures) : "",
                recorded.matchSpans);
  }
  if (IsAnswer(recorded.search)) {
    EXPECT_EQ(expression.Search(text), recorded.search == "1");
    ExpectSpans(expression.SearchCaptures(text, 0, {}, captures) ? Spans(captures) : "",
                recorded.searchSpans);
  }
}

// Only an expression that must be followed in the library's order may be too complex.
void ExpectRecorded(const Expression& expression, const std::string& text,
                    const Recorded& recorded) {
  try {
    ExpectRecordedAnswers(expression, text, recorded);
  } catch (const std::regex_error& error) {
    EXPECT_EQ(error.code(), std::regex_constants::error_complexity);
    EXPECT_EQ(expression.RoadTaken(), Matching::Road::Exact);
  }
}

std::string WholeSpans(const Expression& expression, const std::string& text) {
  constexpr std::size_t kMaxMatches = 65;
  std::string spans;
  Captures captures;
  Matching::MatchIterator walk(expression, text);
  for (std::size_t i = 0; i < kMaxMatches && walk.Next(captures); ++i) {
    if (i > 0) spans += ' ';
    spans += std::to_string(captures[0].begin) + ':' + std::to_string(captures[0].end);
  }
  return spans;
}

TEST(PublicData, CorpusAgrees) {
  std::string pattern;
  std::unique_ptr<Expression> expression;
  for (const auto& row : Oracle::ReadRows("corpus.tsv")) {
    const std::string& text = row.at(2);
    SCOPED_TRACE(Oracle::Show(row.at(1)) + " on '" + Oracle::Show(text) + "'");
    if (!expression || pattern != row.at(1))
      expression = Compile(pattern = row.at(1), kSmallBudget);
    ASSERT_EQ(expression != nullptr, row.at(3) == "ok");
    if (!expression) continue;
    ExpectRecorded(*expression, text, {row.at(5), row.at(6), row.at(7), row.at(8)});
    if (row.at(7) != "1") continue;
    if (expression->RoadTaken() == Matching::Road::Exact) continue;
    if (row.at(9) != "timeout" && row.at(9) != "skipped") {
      ExpectSpans(WholeSpans(*expression, text), row.at(9));
    }
  }
}

TEST(PublicData, SuitesAgree) {
  for (const auto& [name, shift] : {std::pair("suite_agree.tsv", 0), {"suite_deviates.tsv", 4}}) {
    for (const auto& row : Oracle::ReadRows(name)) {
      const std::size_t compile = static_cast<std::size_t>(shift) + 4;
      const std::string& pattern = row.at(shift == 0 ? 2 : 3);
      const std::string& text = row.at(shift == 0 ? 3 : 4);
      SCOPED_TRACE(Oracle::Show(pattern) + " on '" + Oracle::Show(text) + "'");
      const auto expression = Compile(pattern, kSmallBudget);
      ASSERT_EQ(expression != nullptr, row.at(compile) == "ok");
      if (!expression) continue;
      EXPECT_EQ(std::to_string(expression->GroupCount()), row.at(compile + 1));
      ExpectRecorded(
          *expression, text,
          {row.at(compile + 2), row.at(compile + 3), row.at(compile + 4), row.at(compile + 5)});
    }
  }
}

std::size_t Number(const std::string& field) {
  return field.empty() ? 0 : std::stoul(field);
}

// What the library runs away or dies on is answered here; where it answers, the answers are one.
TEST(PublicData, LongTextsAndExpressionsAgree) {
  for (const auto& row : Oracle::ReadRows("long.tsv")) {
    const std::string pattern = row.at(0) + Repeated(row.at(1), Number(row.at(2))) + row.at(3);
    const std::string text = Repeated(row.at(4), Number(row.at(5))) + row.at(6);
    SCOPED_TRACE(Oracle::Show(pattern) + " on " + std::to_string(text.size()) + " bytes of '" +
                 Oracle::Show(row.at(4)) + "'");
    const auto expression = Compile(pattern, kSmallBudget);
    const bool isJudged = !row.at(7).starts_with("crash") && row.at(7) != "timeout";
    if (isJudged) {
      ASSERT_EQ(expression != nullptr, row.at(7) == "ok");
    }
    if (!expression) continue;
    ExpectRecorded(*expression, text, {row.at(9), row.at(10), row.at(11), row.at(12)});
    Captures captures;
    try {
      EXPECT_EQ(expression->IsMatch(text), expression->MatchCaptures(text, captures));
      EXPECT_EQ(expression->Search(text), expression->SearchCaptures(text, 0, {}, captures));
    } catch (const std::regex_error&) {
      EXPECT_EQ(expression->RoadTaken(), Matching::Road::Exact);
    }
  }
}

// Not one public expression needs the library itself, and few need its order of trying.
TEST(PublicData, FewExpressionsNeedTheLibrarysOrder) {
  std::set<std::string> patterns;
  for (const auto& row : Oracle::ReadRows("corpus.tsv")) {
    if (row.at(3) == "ok") patterns.insert(row.at(1));
  }
  std::size_t exact = 0;
  for (const auto& pattern : patterns) {
    const auto expression = Compile(pattern, kSmallBudget);
    if (expression->RoadTaken() != Matching::Road::Exact) continue;
    ++exact;
    const auto& tree = expression->Tree();
    EXPECT_TRUE(tree.Has(Matching::NodeKind::BackReference) ||
                tree.Has(Matching::NodeKind::LookAhead) ||
                tree.Has(Matching::NodeKind::NotLookAhead))
        << Oracle::Show(pattern);
  }
  EXPECT_LE(exact, patterns.size() / 10);
}

}  // namespace
