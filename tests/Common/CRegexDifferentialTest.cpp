// CRegex against std::regex itself: what the library says an expression means is what it means.

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CRegex.h"
#include "Common/CRegexException.h"
#include "tests/Common/QuestionedHost.h"
#include "tests/support/SharedData.h"
#include "tests/support/TsvRows.h"

using namespace std::string_view_literals;

namespace {

// Every bad expression would be a line of the debug log.
class CRegexDifferential : public testing::Test {
  const HostInSlot fHost{Gates{.active = false}};
};

constexpr auto kSyntax = std::regex::ECMAScript | std::regex::icase;

// "start:end" of every capture, "-" for a group that took no part, blanks between.
template <class Capture>
void AppendSpan(std::string& spans, bool matched, const Capture& first, const Capture& last,
                const Capture& text) {
  if (!spans.empty()) spans += ' ';
  spans += matched ? std::to_string(first - text) + ":" + std::to_string(last - text) : "-";
}

std::string SpansOf(const CRegexCaptures& captures, std::string_view text) {
  std::string spans;
  for (const CRegexCapture& capture : captures) {
    const char* const first = capture.text.data();
    AppendSpan(spans, capture.matched, first, first + capture.text.size(), text.data());
  }
  return spans;
}

std::string SpansOf(const std::cmatch& match, std::string_view text) {
  std::string spans;
  for (const auto& group : match) {
    AppendSpan(spans, group.matched, group.first, group.second, text.data());
  }
  return spans;
}

std::string AllSpans(const CRegex& regex, std::string_view text) {
  std::string spans;
  CRegexScan scan;
  regex.ScanAll(text, scan);
  for (std::string_view match; scan.Next(match);) {
    AppendSpan(spans, true, match.data(), match.data() + match.size(), text.data());
  }
  return spans;
}

std::string AllSpans(const std::regex& regex, std::string_view text) {
  std::string spans;
  std::cregex_token_iterator next(text.data(), text.data() + text.size(), regex);
  for (; next != std::cregex_token_iterator(); ++next) {
    AppendSpan(spans, true, next->first, next->second, text.data());
  }
  return spans;
}

std::optional<std::regex> Compile(std::string_view expression) {
  try {
    return std::regex(expression.data(), expression.size(), kSyntax);
  } catch (const std::regex_error&) {
    return std::nullopt;
  }
}

// The marks that Create takes out would make it another expression.
bool HasCaseMark(std::string_view expression) {
  return expression.find("(?i)") != std::string_view::npos;
}

void ExpectSameAnswers(const CRegex& regex, const std::regex& oracle, std::string_view text) {
  SCOPED_TRACE("on " + testing::PrintToString(std::string(text)));
  const char* const first = text.data();
  const char* const last = first + text.size();
  std::cmatch match;
  CRegexCaptures captures;

  const bool matches = std::regex_match(first, last, match, oracle);
  EXPECT_EQ(regex.Matches(text), matches);
  EXPECT_EQ(regex.MatchCaptures(text, captures), matches);
  EXPECT_EQ(SpansOf(captures, text), matches ? SpansOf(match, text) : "");

  const bool found = std::regex_search(first, last, match, oracle);
  EXPECT_EQ(regex.Search(text), found);
  EXPECT_EQ(regex.SearchCaptures(text, captures), found);
  EXPECT_EQ(SpansOf(captures, text), found ? SpansOf(match, text) : "");
  if (found) {
    EXPECT_EQ(captures.Prefix(), match.prefix().str());
    EXPECT_EQ(captures.Suffix(), match.suffix().str());
  }

  EXPECT_EQ(AllSpans(regex, text), AllSpans(oracle, text));

  const std::string subject(text);
  const std::string format = R"(<&|\1|\&>)";
  std::string out;
  for (const bool all : {true, false}) {
    regex.Replace(text, format, out, all);
    auto flags = std::regex_constants::format_sed;
    if (!all) flags |= std::regex_constants::format_first_only;
    EXPECT_EQ(out, std::regex_replace(subject, oracle, format, flags));
  }
}

void ExpectSameRegex(std::string_view expression, const std::vector<std::string_view>& texts) {
  SCOPED_TRACE("expression " + testing::PrintToString(std::string(expression)));
  const CRegexPtr regex = CRegex::Create(expression, false);
  const std::optional<std::regex> oracle = Compile(expression);
  ASSERT_EQ(static_cast<bool>(regex), oracle.has_value());
  if (!regex) return;
  EXPECT_EQ(regex->GetCaptureCount(), oracle->mark_count());
  for (const std::string_view text : texts) ExpectSameAnswers(*regex, *oracle, text);
}

// ---- what the library accepts, in words of our own: a change of library shows here

TEST_F(CRegexDifferential, AcceptsWhatTheLibraryAccepts) {
  const std::string_view accepted[] = {
      "",
      "|x",
      "x|",
      "|",
      "x||y",
      "(|a)",
      "(a|)",
      "(a||b)",
      "()",
      "(?:)",
      "(?:|a)",
      "[]a]",
      "[]",
      "[^]",
      "[^]a]",
      "a{2,}",
      "a{2}",
      "a{2,3}",
      "a{0}",
      "a{2}{3}",
      "a{2}?",
      "a{2}+",
      "a}",
      "}",
      "]",
      "a]",
      "a**",
      "a+*",
      "a*?",
      "a+?",
      "a??",
      "a*+",
      "a++",
      "a?+",
      "(a)++",
      "[[a]",
      "(?=x)",
      "(?!x)",
      "(?:x)",
      R"((a)\1)",
      R"((a)(b)(c)(d)(e)(f)(g)(h)(i)(j)\10)",
      R"(\0)",
      R"(\00)",
      R"(\b)",
      R"(\B)",
      R"([\b])",
      "[[:alpha:]]",
      "[[:upper:]]",
      "[[:w:]]",
      "[[=a=]]",
      "[[.a.]]",
      "[[.hyphen.]]",
      "[:alpha:]",
      R"(\cA)",
      R"(\ca)",
      R"(\c1)",
      R"([\cA])",
      R"(\x41)",
      R"(\u0041)",
      R"(\u0141)",
      R"(\u0100)",
      R"([\d-])",
      R"([-\d])",
      "[a-]",
      "[-a]",
      "[--a]",
      "[a-z-9]",
      R"([\x80-\xff])",
      R"([^\x00-\x7f])",
      R"([\q])",
      R"([\.])",
      R"([\-])",
      R"([\]])",
      R"(\e\z\A\Z\Q\E\q\a\k\G\h\U\<\>\_\/\-\,)",
      "a{1000}",
      "(a{100}){100}",
      "a\0b"sv,
      "\xC3\xA9",
  };
  const std::string_view rejected[] = {
      "a{,3}",
      "a{",
      "a{x}",
      "a{2,1}",
      R"(\p{L})",
      "a{2",
      "{",
      "{x}",
      "{2}",
      "*",
      "*a",
      "+",
      "?",
      "^*",
      "$*",
      R"(\b*)",
      "(?=x)*",
      "(",
      "((",
      ")",
      "a)",
      "(a",
      "(?",
      "(?)",
      "[abc",
      "^[abc$",
      "[[:alpha:]",
      "[[",
      "[[:",
      "(?<=x)",
      "(?<!x)",
      "(?<n>x)",
      "(?P<n>x)",
      "(?#x)",
      R"(\1)",
      R"((a)\2)",
      R"(\1(a))",
      R"((a)\10)",
      R"(\8)",
      R"((\1))",
      R"((a\1))",
      "[[:foo:]]",
      "[[:^alpha:]]",
      R"(\c)",
      R"(\x4)",
      R"(\xg)",
      R"(\u004)",
      R"([a-\d])",
      R"([\d-z])",
      R"([\w-z])",
      "[z-a]",
      "[a-Z]",
      R"([a-\xff])",
      R"([\x00-\xff])",
      "[a-\xE9]",
      R"([\1])",
      "\\",
      "a\\",
      "a{100000}",
      "(a{1000}){1000}",
  };
  for (const std::string_view expression : accepted) {
    EXPECT_TRUE(CRegex::Create(expression, false)) << expression;
  }
  for (const std::string_view expression : rejected) {
    EXPECT_FALSE(CRegex::Create(expression, false)) << expression;
  }
}

TEST_F(CRegexDifferential, MeansWhatTheLibraryMeans) {
  const struct {
    std::string_view expression, text, match, search;  // spans; "" where there is none
  } rows[] = {
      {"[]a]", "a]", "", ""},
      {"[^]", "\n", "0:1", "0:1"},
      {"[^]a]", "xa]", "0:3", "0:3"},
      {"a++a", "aaa", "0:3", "0:3"},
      {"[[:upper:]]", "a", "0:1", "0:1"},
      {R"([\b])", "\b", "0:1", "0:1"},
      {R"(\cA)", "\x01", "", ""},
      {R"(\cA)", "a", "0:1", "0:1"},
      {R"(\x41)", "a", "0:1", "0:1"},
      {R"(\u0141)", "A", "0:1", "0:1"},
      {R"(\u0100)", "\0"sv, "0:1", "0:1"},
      {R"(\00)",
       "\0"
       "0"sv,
       "0:2", "0:2"},
      {R"(\b)", "", "", ""},
      {R"(\B)", "", "0:0", "0:0"},
      {"\xC3\xA9", "\xC3\x89", "", ""},
      {".", "\n", "", ""},
      {".", "\r", "", ""},
      {".", "\v", "0:1", "0:1"},
      {".", "\0"sv, "0:1", "0:1"},
      {".", "\x85", "0:1", "0:1"},
      {R"([^x][\s\S]\W)", "\n\r\n", "0:3", "0:3"},
      {"^a$", "a\n", "", ""},
      {"^b", "a\nb", "", ""},
      {"((a)|(b))*", "ab", "0:2 1:2 0:1 1:2", "0:2 1:2 0:1 1:2"},
      {"(a|ab)", "ab", "0:2 0:2", "0:1 0:1"},
      {"(a|ab)(c|bcd)(d*)", "abcd", "0:4 0:1 1:4 4:4", "0:4 0:1 1:4 4:4"},
      {"(a*)+", "aa", "0:2 2:2", "0:2 2:2"},
      {R"((a)?\1)", "", "", ""},
      {R"((a)\1)", "aA", "0:2 0:1", "0:2 0:1"},
      {"(|a)*", "aa", "0:2 2:2", "0:0 0:0"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.expression);
    const CRegexPtr regex = CRegex::Create(row.expression, false);
    ASSERT_TRUE(regex);
    CRegexCaptures captures;
    EXPECT_EQ(regex->MatchCaptures(row.text, captures), !row.match.empty());
    EXPECT_EQ(SpansOf(captures, row.text), row.match);
    EXPECT_EQ(regex->SearchCaptures(row.text, captures), !row.search.empty());
    EXPECT_EQ(SpansOf(captures, row.text), row.search);
    ExpectSameRegex(row.expression, {row.text});
  }
}

// ---- generated expressions on short texts, where the library alone is safe

class Generator {
public:
  explicit Generator(unsigned seed) : fRandom(seed) {}

  std::string Expression(int depth) {
    std::string expression = Alternative(depth);
    while (Below(4) == 0) expression += "|" + Alternative(depth);
    return expression;
  }

  std::string Text() {
    static constexpr std::string_view kAlphabet = "aAbBcC-. \n0\xC3"sv;
    std::string text;
    for (std::size_t size = Below(9); size > 0; --size) text += kAlphabet[Below(kAlphabet.size())];
    return text;
  }

private:
  std::size_t Below(std::size_t limit) { return fRandom() % limit; }

  std::string Alternative(int depth) {
    std::string terms;
    for (std::size_t count = Below(4); count > 0; --count) terms += Atom(depth) + Quantifier();
    return terms;
  }

  std::string Atom(int depth) {
    static const char* const kAtoms[] = {
        "a",           "b",     "C",       ".",     "-",     "[ab]",     "[^a]", "[a-c]",
        R"(\w)",       R"(\D)", R"(\s)",   R"(\.)", R"(\b)", R"(\B)",    "^",    "$",
        "[[:alpha:]]", R"(\1)", R"(\x61)", "]",     "[b-]",  R"([\w.])",
    };
    static const char* const kBrackets[] = {"(", "(?:", "(?=", "(?!"};
    if (depth > 0 && Below(3) == 0) {
      return kBrackets[Below(Below(4) == 0 ? 4 : 2)] + Expression(depth - 1) + ")";
    }
    return kAtoms[Below(std::size(kAtoms))];
  }

  std::string Quantifier() {
    static const char* const kQuantifiers[] = {"*",  "+",   "?",     "*?",     "+?",
                                               "??", "{2}", "{1,2}", "{0,1}?", "{1,}"};
    return Below(3) == 0 ? kQuantifiers[Below(std::size(kQuantifiers))] : "";
  }

  std::mt19937 fRandom;
};

TEST_F(CRegexDifferential, AgreesOnGeneratedExpressions) {
  Generator generator(20);
  for (int i = 0; i < 3000 && !testing::Test::HasFailure(); ++i) {
    const std::string expression = generator.Expression(2);
    const std::string texts[] = {generator.Text(), generator.Text(), generator.Text()};
    ExpectSameRegex(expression, {texts[0], texts[1], texts[2], ""});
  }
}

// ---- collected expressions, whose answers the library gave beforehand

// An answer stands in the table when the library gave one in its time and stack.
bool IsAnswer(const std::string& field) {
  return field == "0" || field == "1";
}

void ExpectRecordedAnswers(const TsvRow& row) {
  const std::string& text = row["text"];
  SCOPED_TRACE(testing::PrintToString(row["expr"]) + " on " + testing::PrintToString(text));
  const bool isAccepted = row["compile"] == "ok";
  if (HasCaseMark(row["expr"])) return;
  if (!isAccepted && !row["compile"].starts_with("error_")) return;

  const CRegexPtr regex = CRegex::Create(row["expr"], false);
  ASSERT_EQ(static_cast<bool>(regex), isAccepted);
  if (!regex) return;
  EXPECT_EQ(std::to_string(regex->GetCaptureCount()), row["groups"]);

  CRegexCaptures captures;
  if (IsAnswer(row["match"])) {
    EXPECT_EQ(regex->Matches(text), row["match"] == "1");
    EXPECT_EQ(regex->MatchCaptures(text, captures), row["match"] == "1");
    EXPECT_EQ(SpansOf(captures, text), row["match_caps"]);
  }
  if (IsAnswer(row["search"])) {
    EXPECT_EQ(regex->Search(text), row["search"] == "1");
    EXPECT_EQ(regex->SearchCaptures(text, captures), row["search"] == "1");
    EXPECT_EQ(SpansOf(captures, text), row["search_caps"]);
  }
}

void ExpectRecordedAnswersOf(const std::string& table, std::size_t stride) {
  const auto path = SharedPath("testdata/regex/" + table + ".tsv");
  if (!path) return;
  const std::vector<TsvRow> rows = ReadTsv(*path);
  std::size_t failures = 0;
  for (std::size_t i = 0; i < rows.size(); i += stride) {
    try {
      ExpectRecordedAnswers(rows[i]);
    } catch (const CRegexException&) {
      ++failures;  // the frames of a sanitizer are wider than those that the answer was found with
    }
  }
  EXPECT_LE(failures, rows.size() / 1000);
}

TEST_F(CRegexDifferential, AgreesOnCollectedExpressions) {
  // One in eight, since many of them keep the engine busy; the walk passes through every origin.
  ExpectRecordedAnswersOf("corpus", 8);
  ExpectRecordedAnswersOf("suite_agree", 1);
  ExpectRecordedAnswersOf("suite_deviates", 1);
}

TEST_F(CRegexDifferential, AgreesOnCollectedReplacements) {
  const auto path = SharedPath("testdata/regex/replace.tsv");
  if (!path) GTEST_SKIP() << "the collected replacements are not here";
  for (const TsvRow& row : ReadTsv(*path)) {
    const std::string& format = row["format"];
    // Contract: a backslash at the end is dropped here, and written by the library.
    if (HasCaseMark(row["expr"]) || format.ends_with('\\')) continue;
    SCOPED_TRACE(testing::PrintToString(row["expr"]) + " on " +
                 testing::PrintToString(row["text"]) + " by " + testing::PrintToString(format));
    const CRegexPtr regex = CRegex::Create(row["expr"], false);
    ASSERT_EQ(static_cast<bool>(regex), row["compile"] == "ok");
    if (!regex) continue;
    std::string out;
    regex->Replace(row["text"], format, out, true);
    EXPECT_EQ(out, row["result_all"]);
    regex->Replace(row["text"], format, out, false);
    EXPECT_EQ(out, row["result_first_only"]);
  }
}

}  // namespace
