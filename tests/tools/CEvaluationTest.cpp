#include "tools/tovrin/CEvaluation.h"

#include <gtest/gtest.h>

#include "tests/tools/TestModules.h"
#include "tools/tovrin/CModule.h"
#include "tools/tovrin/Failure.h"
#include "tools/tovrin/Parser.h"
#include "tools/tovrin/ValueText.h"

namespace RefHost {
namespace {

class CEvaluation : public ::testing::Test {
protected:
  std::unique_ptr<AEvaluation> Compiled(const std::string& source) {
    return Compile(ParseStatements(source).front().value, fScope, fTransaction);
  }
  std::string Value(AEvaluation& evaluation) {
    return JsonOf(*evaluation.Evaluate(), fTransaction);
  }

  CHost fHost;
  const CModule fModule{fHost, TestModule("sound")};
  const CTransaction fTransaction = fHost.NewTransaction("test");
  CScope fScope;
};

TEST_F(CEvaluation, KnowsTheTypeBeforeTheValue) {
  EXPECT_EQ(Compiled("\"a\"")->Type(), Tovrin::kTypeString);
  EXPECT_EQ(Compiled("1")->Type(), Tovrin::kTypeNumber);
  EXPECT_EQ(Compiled("true and false")->Type(), Tovrin::kTypeBoolean);
  EXPECT_EQ(Compiled("[]")->Type(), Tovrin::kTypeString + Tovrin::kVectorOf);
  EXPECT_EQ(Compiled("[true]")->Type(), Tovrin::kTypeBoolean + Tovrin::kVectorOf);
  EXPECT_EQ(Compiled("Throw(\"x\")")->Type(), Tovrin::kTypeNumber);
  EXPECT_EQ(Compiled("ToBox(\"x\")")->Type(), kFirstModuleType);
  EXPECT_EQ(Compiled("FailStep(0, 0)")->Type(), 0u);
}

TEST_F(CEvaluation, AnswersAnewEachTime) {
  Variable& text = fScope.Define("x", Tovrin::kTypeString);
  const auto value = fTransaction.NewValue(Tovrin::kTypeString);
  text.value = Tovrin::Share<Tovrin::IVariant>(value.get());
  const auto length = Compiled("Length(x)");
  const auto letters = Compiled("[x, \"b\"]");
  value->SetText("abc");
  EXPECT_EQ(Value(*length), "3");
  EXPECT_EQ(Value(*letters), "[\"abc\",\"b\"]");
  value->SetText("");
  EXPECT_EQ(Value(*length), "0");
  EXPECT_EQ(Value(*letters), "[\"\",\"b\"]");
}

TEST_F(CEvaluation, ShowsNothingOfTheCallBefore) {
  const auto none = Compiled("NoBox()");
  Tovrin::IVariant* result = none->Evaluate();
  EXPECT_FALSE(result->GetUserDefined());
  result->SetUserDefined(Compiled("ToBox(\"x\")")->Evaluate()->GetUserDefined());
  EXPECT_FALSE(none->Evaluate()->GetUserDefined());
}

TEST_F(CEvaluation, AsksNoPartWhoseAnswerCannotMatter) {
  EXPECT_FALSE(
      Compiled("false and Same(\"a\", FunctionName()) and FailOn(\"a\",\"a\")")->EvaluateTruth());
  EXPECT_TRUE(Compiled("true or FailOn(\"a\",\"a\")")->EvaluateTruth());
  EXPECT_THROW(Compiled("true and FailOn(\"a\",\"a\")")->EvaluateTruth(), CCallFailure);
}

TEST_F(CEvaluation, TellsWhereAndHowACallFailed) {
  try {
    Compiled("Length( Fail(2, 4))")->Evaluate();
    ADD_FAILURE() << "did not fail";
  } catch (const CCallFailure& failure) {
    EXPECT_EQ(failure.Status(), ExitStatus::FailureStatus);
    EXPECT_EQ(failure.where.column, 9u);
    EXPECT_STREQ(failure.what(), "invalid object used for parameter 2 in function 'Fail'");
  }
}

TEST_F(CEvaluation, FindsAVariableOfTheOuterScope) {
  fScope.Define("outer", Tovrin::kTypeNumber);
  CScope inner(&fScope);
  EXPECT_NE(inner.Find("outer"), nullptr);
  Variable& hidden = inner.Define("outer", Tovrin::kTypeString);
  EXPECT_EQ(inner.Find("outer"), &hidden);
  EXPECT_EQ(fScope.Find("outer")->type, Tovrin::kTypeNumber);
  EXPECT_EQ(inner.Find("other"), nullptr);
}

}  // namespace
}  // namespace RefHost
