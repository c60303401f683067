#include "tools/tovrin/Definition.h"

#include <gtest/gtest.h>

namespace RefHost {
namespace {

TEST(Definition, ReadsEveryKindOfEntry) {
  const auto entries = ParseDefinition(
      " TYPE A.B : makeAB CONST_FUNCTION VECTOR<A.B> Of.It (NUMBER,MAP<STRING,A.B>) : of"
      " FUNCTION NUMBER Now () : now PROCEDURE Do (VECTOR<STRING>) : x_1");
  ASSERT_EQ(entries.size(), 4u);
  EXPECT_EQ(entries[0].kind, EntryKind::Type);
  EXPECT_EQ(entries[0].name, "A.B");
  EXPECT_EQ(entries[0].exportName, "makeAB");
  EXPECT_EQ(entries[1].kind, EntryKind::ConstFunction);
  EXPECT_EQ(entries[1].result, "VECTOR<A.B>");
  EXPECT_EQ(entries[1].arguments, (std::vector<std::string>{"NUMBER", "MAP<STRING,A.B>"}));
  EXPECT_EQ(entries[2].kind, EntryKind::Function);
  EXPECT_TRUE(entries[2].arguments.empty());
  EXPECT_EQ(entries[3].kind, EntryKind::Procedure);
  EXPECT_EQ(entries[3].result, "");
  EXPECT_EQ(entries[3].exportName, "x_1");
}

TEST(Definition, WritesASignatureAsItWasRead) {
  const auto entries = ParseDefinition(
      " TYPE T : t CONST_FUNCTION NUMBER Size (T,STRING) : s PROCEDURE Add (T) : a");
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[0].Signature(), "T");
  EXPECT_EQ(entries[1].Signature(), "NUMBER Size (T,STRING)");
  EXPECT_EQ(entries[2].Signature(), "Add (T)");
  EXPECT_EQ(KeywordOf(entries[1].kind), "CONST_FUNCTION");
}

TEST(Definition, AllowsBlanksInsideBrackets) {
  const auto entries = ParseDefinition(" PROCEDURE P ( NUMBER ) : p");
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].arguments, std::vector<std::string>{"NUMBER"});
}

TEST(Definition, SaysWhereATextBreaks) {
  const struct {
    const char* text;
    const char* words;
  } rows[] = {
      {"", "column 1: a blank expected, but the text ends"},
      {"TYPE A : a", "column 1: a blank expected"},
      {" ", "column 2: a keyword expected, but the text ends"},
      {" TYPO A : a", "column 2: TYPE, CONST_FUNCTION, FUNCTION or PROCEDURE expected"},
      {" TYPE", "column 6: a blank expected, but the text ends"},
      {" TYPE A", "column 8: ':' expected, but the text ends"},
      {" TYPE A :", "column 10: an export expected, but the text ends"},
      {" TYPE A ; a", "column 9: ':' expected"},
      {" FUNCTION NUMBER F NUMBER) : f", "column 20: '(' expected"},
      {" FUNCTION NUMBER F (NUMBER,) : f", "column 28: a type expected"},
      {" FUNCTION NUMBER F (NUMBER : f", "column 28: ')' expected"},
      {" FUNCTION VECTOR<NUMBER F () : f", "column 24: '>' expected"},
      {" FUNCTION MAP<NUMBER> F () : f", "column 21: ',' expected"},
      {" FUNCTION VECTOR<VECTOR<NUMBER>> F () : f", "column 24: '>' expected"},
      {" TYPE A : a\n TYPE B : b", "column 12: a blank expected"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    try {
      ParseDefinition(row.text);
      ADD_FAILURE() << "was read";
    } catch (const CDefinitionError& error) {
      EXPECT_EQ(error.what(), std::string("definition text, ") + row.words);
    }
  }
}

// Whatever is cut off, the parser says so or finds whole entries, and never reads past the end.
TEST(Definition, RefusesEveryBeginningThatBreaksAnEntry) {
  const std::string text =
      " TYPE T : t CONST_FUNCTION VECTOR<T> F (T,MAP<NUMBER,T>) : f PROCEDURE P () : p";
  std::size_t readable = 0;
  for (std::size_t size = 0; size < text.size(); ++size) {
    try {
      ParseDefinition(text.substr(0, size));
      ++readable;
    } catch (const CDefinitionError& error) {
      EXPECT_NE(std::string(error.what()).find(" expected"), std::string::npos) << error.what();
    }
  }
  EXPECT_EQ(readable, 2u);  // behind the first entry and behind the second
}

}  // namespace
}  // namespace RefHost
