#include "tools/tovrin/Parser.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <utility>

#include "tools/tovrin/CLexer.h"

namespace RefHost {
namespace {

constexpr std::array<std::string_view, 9> kKeywords = {"and",       "false", "let",  "not", "or",
                                                       "otherwise", "then",  "true", "when"};

bool IsKeyword(std::string_view name) {
  return std::find(kKeywords.begin(), kKeywords.end(), name) != kKeywords.end();
}

// Recursive descent with one token of sight. Every road into itself counts a level.
class CParser {
public:
  explicit CParser(std::string_view source) : fLexer(source), fToken(fLexer.Next()) {}

  std::vector<Statement> Statements();
  std::vector<Clause> Rules();

private:
  class CLevel {
  public:
    explicit CLevel(CParser& parser) : fParser(parser) {
      if (++fParser.fDepth > kMaximumDepth) {
        throw CSourceError(fParser.fToken.where,
                           fmt::format("nested more than {} deep", kMaximumDepth));
      }
    }
    ~CLevel() { --fParser.fDepth; }
    CLevel(const CLevel&) = delete;
    CLevel& operator=(const CLevel&) = delete;

  private:
    CParser& fParser;
  };

  bool Is(TokenKind kind) const { return fToken.kind == kind; }
  bool IsWord(std::string_view keyword) const {
    return fToken.kind == TokenKind::Name && fToken.text == keyword;
  }
  Token Take() { return std::exchange(fToken, fLexer.Next()); }
  [[noreturn]] void Refuse(std::string_view wanted) const {
    throw CSourceError(fToken.where, fmt::format("{} instead of {}", Describe(fToken), wanted));
  }
  Token Expect(TokenKind kind, std::string_view wanted) {
    if (!Is(kind)) Refuse(wanted);
    return Take();
  }
  void ExpectWord(std::string_view keyword) {
    if (!IsWord(keyword)) Refuse(fmt::format("'{}'", keyword));
    Take();
  }

  Statement Let();
  Rule When();
  Rule Otherwise();
  std::string Verdict();
  Expression Any();
  Expression Chain(Expression::Kind kind, std::string_view word, Expression (CParser::*part)());
  Expression Both() { return Chain(Expression::Kind::And, "and", &CParser::Negation); }
  Expression Negation();
  Expression Primary();
  Expression Named();
  Expression Literal(Expression::Kind kind);
  std::vector<Expression> List(TokenKind closing, std::string_view wanted);

  CLexer fLexer;
  Token fToken;            // the next one, not yet taken
  std::size_t fDepth = 0;  // open levels
};

std::vector<Statement> CParser::Statements() {
  std::vector<Statement> statements;
  do {
    if (Is(TokenKind::End) && !statements.empty()) break;
    if (IsWord("let")) {
      statements.push_back(Let());
    } else {
      const Position where = fToken.where;
      statements.push_back({where, {}, Any()});
    }
    if (Is(TokenKind::End)) break;
    Expect(TokenKind::Semicolon, "';'");
  } while (true);
  return statements;
}

std::vector<Clause> CParser::Rules() {
  std::vector<Clause> clauses;
  bool hasRule = false;
  while (!Is(TokenKind::End)) {
    if (IsWord("let")) {
      clauses.push_back({false, Let(), {}});
    } else if (IsWord("when")) {
      clauses.push_back({true, {}, When()});
      hasRule = true;
    } else if (IsWord("otherwise")) {
      clauses.push_back({true, {}, Otherwise()});
      Expect(TokenKind::Semicolon, "';'");
      if (!Is(TokenKind::End)) Refuse("the end: nothing can stand behind 'otherwise'");
      return clauses;
    } else {
      Refuse("'let', 'when' or 'otherwise'");
    }
    Expect(TokenKind::Semicolon, "';'");
  }
  if (!hasRule) throw CSourceError(fToken.where, "the file has no rule");
  return clauses;
}

Statement CParser::Let() {
  const Position where = fToken.where;
  ExpectWord("let");
  const Token name = Expect(TokenKind::Name, "a name");
  if (IsKeyword(name.text)) {
    throw CSourceError(name.where, fmt::format("'{}' is a word of the language", name.text));
  }
  Expect(TokenKind::Equals, "'='");
  return {where, name.text, Any()};
}

Rule CParser::When() {
  Rule rule;
  rule.where = fToken.where;
  ExpectWord("when");
  rule.condition = Any();
  ExpectWord("then");
  rule.verdict = Verdict();
  return rule;
}

Rule CParser::Otherwise() {
  Rule rule;
  rule.where = fToken.where;
  rule.condition = {Expression::Kind::Boolean, fToken.where, {}, 0, true, {}};
  ExpectWord("otherwise");
  rule.verdict = Verdict();
  return rule;
}

// A verdict becomes one field of a line of output, so it holds no tab and no line end.
std::string CParser::Verdict() {
  const Token token = Expect(TokenKind::Text, "a verdict in quotes");
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
  if (std::any_of(token.text.begin(), token.text.end(), isControl)) {
    throw CSourceError(token.where, "a verdict cannot hold control characters");
  }
  return token.text;
}

Expression CParser::Any() {
  const CLevel level(*this);
  return Chain(Expression::Kind::Or, "or", &CParser::Both);
}

// A row of parts with one word between them becomes one node, however long the row.
Expression CParser::Chain(Expression::Kind kind, std::string_view word,
                          Expression (CParser::*part)()) {
  Expression first = (this->*part)();
  if (!IsWord(word)) return first;

  Expression chain{kind, first.where, {}, 0, false, {}};
  chain.parts.push_back(std::move(first));
  while (IsWord(word)) {
    Take();
    chain.parts.push_back((this->*part)());
  }
  return chain;
}

Expression CParser::Negation() {
  if (!IsWord("not")) return Primary();

  const CLevel level(*this);
  Expression negation{Expression::Kind::Not, fToken.where, {}, 0, false, {}};
  Take();
  negation.parts.push_back(Negation());
  return negation;
}

Expression CParser::Primary() {
  switch (fToken.kind) {
    case TokenKind::Text:
      return Literal(Expression::Kind::Text);
    case TokenKind::Number:
      return Literal(Expression::Kind::Number);
    case TokenKind::Name:
      return Named();
    case TokenKind::LeftBracket: {
      Take();
      Expression inner = Any();
      Expect(TokenKind::RightBracket, "')'");
      return inner;
    }
    case TokenKind::LeftSquare: {
      Expression vector{Expression::Kind::Vector, fToken.where, {}, 0, false, {}};
      Take();
      vector.parts = List(TokenKind::RightSquare, "',' or ']'");
      return vector;
    }
    default:
      Refuse("a value");
  }
}

Expression CParser::Literal(Expression::Kind kind) {
  Token token = Take();
  return {kind, token.where, std::move(token.text), token.number, false, {}};
}

Expression CParser::Named() {
  if (IsWord("true") || IsWord("false")) {
    const Token token = Take();
    return {Expression::Kind::Boolean, token.where, {}, 0, token.text == "true", {}};
  }
  if (IsKeyword(fToken.text)) Refuse("a value");

  Expression named = Literal(Expression::Kind::Variable);
  if (Is(TokenKind::LeftBracket)) {
    Take();
    named.kind = Expression::Kind::Call;
    named.parts = List(TokenKind::RightBracket, "',' or ')'");
  }
  return named;
}

std::vector<Expression> CParser::List(TokenKind closing, std::string_view wanted) {
  std::vector<Expression> list;
  if (!Is(closing)) {
    list.push_back(Any());
    while (Is(TokenKind::Comma)) {
      Take();
      list.push_back(Any());
    }
  }
  Expect(closing, wanted);
  return list;
}

}  // namespace

std::vector<Statement> ParseStatements(std::string_view source) {
  return CParser(source).Statements();
}

std::vector<Clause> ParseRules(std::string_view source) {
  return CParser(source).Rules();
}

}  // namespace RefHost
