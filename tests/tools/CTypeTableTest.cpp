#include "tools/tovrin/CTypeTable.h"

#include <gtest/gtest.h>

namespace RefHost {
namespace {

TEST(CTypeTable, KnowsTheBuiltInTypesByTheirFixedIds) {
  const CTypeTable types;
  const struct {
    const char* name;
    Tovrin::TypeId id;
  } rows[] = {{"BOOLEAN", 1},
              {"VECTOR<BOOLEAN>", 2},
              {"MAP<NUMBER,BOOLEAN>", 3},
              {"MAP<STRING,BOOLEAN>", 4},
              {"NUMBER", 5},
              {"STRING", 9},
              {"VECTOR<STRING>", 10},
              {"MAP<STRING,STRING>", 12},
              {"DATAREF", 13},
              {"STREAM", 17},
              {"MAP<STRING,STREAM>", 20}};
  for (const auto& row : rows) {
    EXPECT_EQ(types.Find(row.name), row.id) << row.name;
    EXPECT_EQ(types.NameOf(row.id), row.name);
  }
}

TEST(CTypeTable, HandsOutFourIdsAType) {
  CTypeTable types;
  EXPECT_EQ(types.Add("A"), 21u);
  EXPECT_EQ(types.Add("B.C"), 25u);
  EXPECT_EQ(types.Add("A"), 0u);
  EXPECT_EQ(types.Add("STRING"), 0u);
  EXPECT_EQ(types.Add(""), 0u);
  EXPECT_EQ(types.Find("VECTOR<A>"), 22u);
  EXPECT_EQ(types.Find("MAP<NUMBER,B.C>"), 27u);
  EXPECT_EQ(types.NameOf(28), "MAP<STRING,B.C>");
}

TEST(CTypeTable, AnswersNothingForWhatItDoesNotKnow) {
  const CTypeTable types;
  EXPECT_EQ(types.Find("Tree"), 0u);
  EXPECT_EQ(types.Find(""), 0u);
  EXPECT_EQ(types.NameOf(0), "");
  EXPECT_EQ(types.NameOf(21), "");
  EXPECT_EQ(types.FactoryOf(9), nullptr);
}

TEST(CTypeTable, FindsTheScalarOfEveryForm) {
  for (Tovrin::TypeId id = 21; id < 25; ++id) EXPECT_EQ(ScalarOf(id), 21u);
  EXPECT_EQ(ScalarOf(1), 1u);
  EXPECT_EQ(ScalarOf(4), 1u);
  EXPECT_EQ(ScalarOf(20), 17u);
  EXPECT_EQ(ScalarOf(0), 0u);
}

TEST(CTypeTable, GivesTypesTitles) {
  EXPECT_EQ(CTypeTable().TitleOf(Tovrin::kTypeString), "type 'STRING'");
}

}  // namespace
}  // namespace RefHost
