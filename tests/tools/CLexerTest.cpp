#include "tools/tovrin/CLexer.h"

#include <gtest/gtest.h>

#include <vector>

namespace RefHost {
namespace {

std::vector<Token> TokensOf(std::string_view source) {
  CLexer lexer(source);
  std::vector<Token> tokens;
  do tokens.push_back(lexer.Next());
  while (tokens.back().kind != TokenKind::End);
  return tokens;
}

TEST(CLexer, ReadsTexts) {
  const struct {
    std::string source;
    std::string value;
  } rows[] = {
      {R"("")", ""},
      {R"("abc")", "abc"},
      {R"("\"\\\/\b\f\n\r\t")", "\"\\/\b\f\n\r\t"},
      {R"("\u0041\u00e9\u20AC")", "A\xC3\xA9\xE2\x82\xAC"},
      {R"("\ud83d\ude00")", "\xF0\x9F\x98\x80"},
      {R"("a\u0000b")", std::string("a\0b", 3)},
      {"\"\xC3\xA9\xFF\"", "\xC3\xA9\xFF"},
      {R"(r"")", ""},
      {R"(r"\d+\.")", R"(\d+\.)"},
      {"r\"a\tb\"", "a\tb"},
      {"r\"a\nb\"", "a\nb"},
      {"\"# no comment\"", "# no comment"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.source);
    const auto tokens = TokensOf(row.source);
    ASSERT_EQ(tokens.size(), 2u);
    EXPECT_EQ(tokens[0].kind, TokenKind::Text);
    EXPECT_EQ(tokens[0].text, row.value);
  }
}

TEST(CLexer, ReadsNumbers) {
  const struct {
    std::string source;
    double value;
  } rows[] = {{"0", 0},
              {"-0", 0},
              {"7", 7},
              {"-12", -12},
              {"0.5", 0.5},
              {"1e3", 1000},
              {"1E+2", 100},
              {"25e-1", 2.5},
              {"1e300", 1e300},
              {"-1.25e2", -125},
              {"9223372036854775808", 9223372036854775808.0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.source);
    const auto tokens = TokensOf(row.source);
    ASSERT_EQ(tokens.size(), 2u);
    EXPECT_EQ(tokens[0].kind, TokenKind::Number);
    EXPECT_EQ(tokens[0].number, row.value);
  }
}

TEST(CLexer, TellsNamesAndSignsApart) {
  const auto tokens = TokensOf("let x=Tessarin.List_2([r,rx],r\"y\");");
  std::vector<TokenKind> kinds;
  for (const Token& token : tokens) kinds.push_back(token.kind);
  EXPECT_EQ(kinds, (std::vector{TokenKind::Name, TokenKind::Name, TokenKind::Equals,
                                TokenKind::Name, TokenKind::LeftBracket, TokenKind::LeftSquare,
                                TokenKind::Name, TokenKind::Comma, TokenKind::Name,
                                TokenKind::RightSquare, TokenKind::Comma, TokenKind::Text,
                                TokenKind::RightBracket, TokenKind::Semicolon, TokenKind::End}));
  EXPECT_EQ(tokens[3].text, "Tessarin.List_2");
}

TEST(CLexer, CountsLinesAndColumnsFromOne) {
  const auto tokens = TokensOf("a\n  # a comment \"\n\tb c");
  ASSERT_EQ(tokens.size(), 4u);
  EXPECT_EQ(tokens[0].where.line, 1u);
  EXPECT_EQ(tokens[0].where.column, 1u);
  EXPECT_EQ(tokens[1].where.line, 3u);
  EXPECT_EQ(tokens[1].where.column, 2u);
  EXPECT_EQ(tokens[2].where.column, 4u);
  EXPECT_EQ(tokens[3].where.column, 5u);
}

TEST(CLexer, CountsTheLinesWithinARawText) {
  const auto tokens = TokensOf("r\"a\n\nbc\" d");
  ASSERT_EQ(tokens.size(), 3u);
  EXPECT_EQ(tokens[0].where.line, 1u);
  EXPECT_EQ(tokens[1].where.line, 3u);
  EXPECT_EQ(tokens[1].where.column, 5u);
}

TEST(CLexer, RefusesWhatIsNoToken) {
  const struct {
    std::string source;
    std::size_t column;
    std::string reason;
  } rows[] = {
      {"  \"abc", 3, "the text has no closing quote"},
      {"\"abc\\", 5, "unknown escape in a text; r\"...\" takes none"},
      {"\"abc\n\"", 1, "the text has no closing quote on its line"},
      {"r\"abc", 1, "the text has no closing quote"},
      {"r\"ab\nc", 1, "the text has no closing quote"},
      {"\"a\\d\"", 3, "unknown escape in a text; r\"...\" takes none"},
      {"\"a\tb\"", 3, "the byte 0x09 must be escaped in a text"},
      {"\"\\u00g0\"", 6, "\\u takes four hexadecimal digits"},
      {"\"\\u00", 6, "\\u takes four hexadecimal digits"},
      {"\"\\ud83d\"", 2, "half of a surrogate pair"},
      {"\"\\ud83d\\u0041\"", 2, "half of a surrogate pair"},
      {"\"\\ude00\"", 2, "half of a surrogate pair"},
      {"01", 1, "this is not a number"},
      {"-", 1, "this is not a number"},
      {"1.", 1, "this is not a number"},
      {"1e", 1, "this is not a number"},
      {"1x", 1, "this is not a number"},
      {"1.2.3", 1, "this is not a number"},
      {"1e999", 1, "the number is out of range"},
      {"a.", 1, "a name cannot end in a dot"},
      {"a + b", 3, "'+' has no meaning here"},
      {"\xC3\xA9", 1, "the byte 0xC3 has no meaning here"},
      {std::string("a \0", 3), 3, "the byte 0x00 has no meaning here"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.source);
    try {
      TokensOf(row.source);
      ADD_FAILURE() << "was read";
    } catch (const CSourceError& error) {
      EXPECT_EQ(error.Where().column, row.column);
      EXPECT_EQ(error.what(), row.reason);
    }
  }
}

}  // namespace
}  // namespace RefHost
