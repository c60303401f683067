#include "tools/tovrin/CFunctionTable.h"

#include <gtest/gtest.h>

namespace RefHost {
namespace {

class CFunctionTableTest : public ::testing::Test {
protected:
  CFunctionTableTest() {
    for (const DefinitionEntry& entry :
         ParseDefinition(" CONST_FUNCTION NUMBER F (STRING,STRING) : ss"
                         " CONST_FUNCTION NUMBER F (STRING,NUMBER) : sn"
                         " CONST_FUNCTION NUMBER F (STRING,NUMBER,NUMBER) : snn"
                         " CONST_FUNCTION NUMBER F (BOOLEAN) : b"
                         " CONST_FUNCTION NUMBER F () : none"
                         " PROCEDURE P (VECTOR<STRING>) : p")) {
      EXPECT_TRUE(fFunctions.Add(Bind(fTypes, entry)));
    }
  }

  std::string Chosen(const std::string& name, const std::vector<Tovrin::TypeId>& arguments) {
    const BoundFunction* function = fFunctions.Choose(name, arguments);
    return function != nullptr ? function->declaration.exportName : "";
  }

  CTypeTable fTypes;
  CFunctionTable fFunctions;
};

TEST_F(CFunctionTableTest, ChoosesByTheTypesOfACall) {
  const Tovrin::TypeId s = Tovrin::kTypeString;
  const Tovrin::TypeId n = Tovrin::kTypeNumber;
  const Tovrin::TypeId b = Tovrin::kTypeBoolean;
  const struct {
    std::vector<Tovrin::TypeId> arguments;
    const char* chosen;
  } rows[] = {
      {{s, s}, "ss"},
      {{s, n}, "sn"},
      {{s, n, n}, "snn"},
      {{b}, "b"},
      {{}, "none"},
      // None fits: the most leading arguments, the first on a tie.
      {{s}, "ss"},
      {{s, b}, "ss"},
      {{s, n, b}, "sn"},
      {{s, n, n, n}, "snn"},
      {{b, b}, "b"},
      {{n}, "ss"},
      {{n, s}, "ss"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Chosen("F", row.arguments), row.chosen) << ::testing::PrintToString(row.arguments);
  }
  EXPECT_EQ(Chosen("G", {s}), "");
}

TEST_F(CFunctionTableTest, TakesNoSecondFunctionOfTheSameArguments) {
  EXPECT_FALSE(fFunctions.Add(
      Bind(fTypes, ParseDefinition(" FUNCTION STRING F (BOOLEAN) : other").front())));
  EXPECT_EQ(Chosen("F", {Tovrin::kTypeBoolean}), "b");
}

TEST_F(CFunctionTableTest, FindsADeclarationExactly) {
  EXPECT_NE(fFunctions.FindExact("F", "NUMBER", "STRING,NUMBER"), nullptr);
  EXPECT_NE(fFunctions.FindExact("F", "NUMBER", ""), nullptr);
  EXPECT_NE(fFunctions.FindExact("P", "", "VECTOR<STRING>"), nullptr);
  EXPECT_EQ(fFunctions.FindExact("F", "STRING", "STRING,NUMBER"), nullptr);
  EXPECT_EQ(fFunctions.FindExact("F", "NUMBER", "NUMBER,STRING"), nullptr);
  EXPECT_EQ(fFunctions.FindExact("G", "NUMBER", ""), nullptr);
}

TEST_F(CFunctionTableTest, TitlesAFunctionAsFailuresDo) {
  EXPECT_EQ(fFunctions.FindExact("F", "NUMBER", "")->Title(), "function 'F'");
  EXPECT_EQ(fFunctions.FindExact("P", "", "VECTOR<STRING>")->Title(), "procedure 'P'");
  EXPECT_EQ(fFunctions.FindExact("P", "", "VECTOR<STRING>")->WordsFor(0x20002),
            "invalid parameter 2 in procedure 'P'");
}

TEST_F(CFunctionTableTest, RefusesAnUnknownType) {
  EXPECT_THROW(Bind(fTypes, ParseDefinition(" FUNCTION Tree F () : f").front()), CDefinitionError);
  EXPECT_THROW(Bind(fTypes, ParseDefinition(" PROCEDURE F (MAP<BOOLEAN,STRING>) : f").front()),
               CDefinitionError);
}

}  // namespace
}  // namespace RefHost
