#include "tools/tovrin/Parser.h"

#include <gtest/gtest.h>

namespace RefHost {
namespace {

// An expression with brackets wherever something belongs together.
std::string Dump(const Expression& expression) {
  const auto parts = [&](const std::string& between) {
    std::string text;
    for (const Expression& part : expression.parts) {
      if (!text.empty()) text += between;
      text += Dump(part);
    }
    return text;
  };
  switch (expression.kind) {
    case Expression::Kind::Text:
      return '"' + expression.text + '"';
    case Expression::Kind::Number:
      return std::to_string(static_cast<int>(expression.number));
    case Expression::Kind::Boolean:
      return expression.truth ? "true" : "false";
    case Expression::Kind::Vector:
      return '[' + parts(",") + ']';
    case Expression::Kind::Variable:
      return expression.text;
    case Expression::Kind::Call:
      return expression.text + '(' + parts(",") + ')';
    case Expression::Kind::And:
      return '{' + parts(" and ") + '}';
    case Expression::Kind::Or:
      return '{' + parts(" or ") + '}';
    case Expression::Kind::Not:
      return "{not " + parts("") + '}';
  }
  return {};
}

TEST(Parser, BindsNotBeforeAndBeforeOr) {
  const struct {
    const char* source;
    const char* dump;
  } rows[] = {
      {"a or b and c", "{a or {b and c}}"},
      {"a and b or c", "{{a and b} or c}"},
      {"(a or b) and c", "{{a or b} and c}"},
      {"not a and b", "{{not a} and b}"},
      {"not (a and b)", "{not {a and b}}"},
      {"not not a", "{not {not a}}"},
      {"a or b or c", "{a or b or c}"},
      {"a and (b and c)", "{a and {b and c}}"},
      {"((a))", "a"},
      {"f()", "f()"},
      {"f(1, \"x\", [true, false], g(y))", "f(1,\"x\",[true,false],g(y))"},
      {"f(a and b)", "f({a and b})"},
      {"[]", "[]"},
      {"notable", "notable"},
      {"lines(\"f\")", "lines(\"f\")"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.source);
    const auto statements = ParseStatements(row.source);
    ASSERT_EQ(statements.size(), 1u);
    EXPECT_EQ(Dump(statements[0].value), row.dump);
  }
}

TEST(Parser, ReadsStatements) {
  const auto statements = ParseStatements("let x = 1;\n let y = x; f(y) ;");
  ASSERT_EQ(statements.size(), 3u);
  EXPECT_EQ(statements[0].name, "x");
  EXPECT_EQ(statements[1].name, "y");
  EXPECT_EQ(statements[1].where.line, 2u);
  EXPECT_EQ(statements[1].where.column, 2u);
  EXPECT_EQ(statements[2].name, "");
  EXPECT_EQ(Dump(statements[2].value), "f(y)");
}

TEST(Parser, ReadsRules) {
  const auto clauses = ParseRules(
      "# rules\nlet a = 1; when f(text) then \"first\"; let b = 2;\n  otherwise r\"rest\";\n");
  ASSERT_EQ(clauses.size(), 4u);
  EXPECT_FALSE(clauses[0].isRule);
  EXPECT_EQ(clauses[0].let.name, "a");
  EXPECT_TRUE(clauses[1].isRule);
  EXPECT_EQ(clauses[1].rule.verdict, "first");
  EXPECT_EQ(Dump(clauses[1].rule.condition), "f(text)");
  EXPECT_TRUE(clauses[3].isRule);
  EXPECT_EQ(clauses[3].rule.verdict, "rest");
  EXPECT_EQ(Dump(clauses[3].rule.condition), "true");
  EXPECT_EQ(clauses[3].rule.where.line, 3u);
  EXPECT_EQ(clauses[3].rule.where.column, 3u);
}

template <class Parse>
void ExpectRefusal(Parse parse, const std::string& source, std::size_t line, std::size_t column,
                   const std::string& reason) {
  SCOPED_TRACE(source);
  try {
    parse(source);
    ADD_FAILURE() << "was read";
  } catch (const CSourceError& error) {
    EXPECT_EQ(error.Where().line, line);
    EXPECT_EQ(error.Where().column, column);
    EXPECT_EQ(error.what(), reason);
  }
}

TEST(Parser, RefusesAStatementAtTheTokenThatDoesNotFit) {
  const struct {
    const char* source;
    std::size_t column;
    const char* reason;
  } rows[] = {
      {"", 1, "the end instead of a value"},
      {";", 1, "';' instead of a value"},
      {"1;;2", 3, "';' instead of a value"},
      {"f(", 3, "the end instead of a value"},
      {"f(1", 4, "the end instead of ',' or ')'"},
      {"f(1,)", 5, "')' instead of a value"},
      {"[1 2]", 4, "a number instead of ',' or ']'"},
      {"(a", 3, "the end instead of ')'"},
      {"a b", 3, "'b' instead of ';'"},
      {"a \"b\"", 3, "a text instead of ';'"},
      {"let = 1", 5, "'=' instead of a name"},
      {"let x 1", 7, "a number instead of '='"},
      {"let and = 1", 5, "'and' is a word of the language"},
      {"a and", 6, "the end instead of a value"},
      {"and a", 1, "'and' instead of a value"},
      {"not", 4, "the end instead of a value"},
      {"f(let)", 3, "'let' instead of a value"},
  };
  for (const auto& row : rows) {
    ExpectRefusal(ParseStatements, row.source, 1, row.column, row.reason);
  }
}

TEST(Parser, RefusesARuleAtTheTokenThatDoesNotFit) {
  const auto refuses = [](const char* source, std::size_t line, std::size_t column,
                          const char* reason) {
    ExpectRefusal(ParseRules, source, line, column, reason);
  };
  refuses("", 1, 1, "the file has no rule");
  refuses("let a = 1;\n# nothing else\n", 3, 1, "the file has no rule");
  refuses("f(text);", 1, 1, "'f' instead of 'let', 'when' or 'otherwise'");
  refuses("when a \"x\";", 1, 8, "a text instead of 'then'");
  refuses("when a then x;", 1, 13, "'x' instead of a verdict in quotes");
  refuses("when a then \"x\"", 1, 16, "the end instead of ';'");
  refuses("otherwise \"x\";\nwhen a then \"y\";", 2, 1,
          "'when' instead of the end: nothing can stand behind 'otherwise'");
  refuses("otherwise \"x\\ty\";", 1, 11, "a verdict cannot hold control characters");
}

TEST(Parser, NestsAsDeepAsTheBoundAndNoDeeper) {
  const struct {
    const char* open;
    const char* close;
  } rows[] = {{"(", ")"}, {"[", "]"}, {"f(", ")"}, {"not ", ""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.open);
    const auto nested = [&](std::size_t depth) {
      std::string source;
      for (std::size_t i = 0; i < depth; ++i) source += row.open;
      source += "a";
      for (std::size_t i = 0; i < depth; ++i) source += row.close;
      return source;
    };
    // The expression itself is a level.
    EXPECT_NO_THROW(ParseStatements(nested(kMaximumDepth - 1)));
    EXPECT_THROW(ParseStatements(nested(kMaximumDepth)), CSourceError);
    EXPECT_THROW(ParseStatements(nested(1'000'000)), CSourceError);
  }
}

TEST(Parser, TakesLongRowsWithoutDepth) {
  std::string source = "a";
  for (int i = 0; i < 100'000; ++i) source += i % 2 == 0 ? " or a" : " and a";
  EXPECT_NO_THROW(ParseStatements(source));
}

}  // namespace
}  // namespace RefHost
