#include "Common/Utf8Report.h"

#include <gtest/gtest.h>

using namespace std::string_view_literals;

namespace {

TEST(CheckUtf8, PassesWhatHasTheForm) {
  // Overlong forms and surrogates pass: the form is all that is looked at.
  for (const auto text :
       {""sv, "abc\n"sv, "\0"sv, "\xC3\xA9"sv, "\xE2\x82\xAC"sv, "\xF0\x9F\x98\x80"sv, "\xC0\x80"sv,
        "\xED\xA0\x80"sv, "\xF7\xBF\xBF\xBF"sv}) {
    std::string message = "kept";
    EXPECT_TRUE(CheckUtf8(text, message)) << testing::PrintToString(text);
    EXPECT_EQ(message, "kept");
  }
}

TEST(CheckUtf8, TellsWhereTheFirstFaultIs) {
  struct Row {
    std::string_view text;
    int column, line;
  };
  const Row rows[] = {
      {"\xFF", 1, 1},
      {"a\nb\xFF", 2, 2},
      {"a\n\nb\xFFg\xFE", 2, 3},
      {"\x80", 1, 1},
      {"\xF8\x88\x80\x80\x80", 1, 1},
      // The column of a cut or broken sequence is its lead's.
      {"ab\xC3", 3, 1},
      {"ab\xE2\x82", 3, 1},
      {"ab\xF0\x9F\x98", 3, 1},
      {"ab\xC3z", 3, 1},
      {"ab\xE2\x82z", 3, 1},
      // Columns are bytes.
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xFF", 10, 1},
      {"\xC3\n", 1, 1},
  };
  for (const Row& row : rows) {
    std::string message;
    EXPECT_FALSE(CheckUtf8(row.text, message));
    // Contract: the words stand the wrong way round.
    EXPECT_EQ(message, "Sign: " + std::to_string(row.column) +
                           " in column: " + std::to_string(row.line) + " is not utf-8 conform.");
  }
}

}  // namespace
