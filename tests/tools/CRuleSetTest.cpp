#include "tools/tovrin/CRuleSet.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/tools/TestModules.h"
#include "tools/tovrin/CModule.h"

namespace RefHost {
namespace {

class CRuleSetTest : public ::testing::Test {
protected:
  CHost fHost;
  const CModule fModule{fHost, TestModule("sound")};
};

TEST_F(CRuleSetTest, ListsEachVerdictOnce) {
  const CRuleSet rules(
      "when Same(text,\"a\") then \"x\"; when Same(text,\"b\") then \"y\"; otherwise \"x\";",
      fHost.NewTransaction("load"));
  EXPECT_EQ(rules.Verdicts(), (std::vector<std::string>{"x", "y", "none", "error"}));
  CRuleEngine engine(rules, fHost.NewTransaction("run"));
  EXPECT_EQ(engine.Judge("a").verdict, 0u);
  EXPECT_EQ(engine.Judge("b").verdict, 1u);
  EXPECT_EQ(engine.Judge("c").verdict, 0u);
}

TEST_F(CRuleSetTest, NamesTheRuleThatFailed) {
  const CRuleSet rules("otherwise \"v\";", fHost.NewTransaction("load"));
  CRuleEngine engine(rules, fHost.NewTransaction("run"));
  EXPECT_EQ(engine.Judge("x").failedRule, nullptr);

  const CRuleSet failing("when Same(text,\"a\") then \"x\";\nwhen FailOn(text,text) then \"y\";",
                         fHost.NewTransaction("load"));
  CRuleEngine failingEngine(failing, fHost.NewTransaction("run"));
  const auto judgement = failingEngine.Judge("b");
  EXPECT_EQ(judgement.verdict, failing.ErrorVerdict());
  ASSERT_NE(judgement.failedRule, nullptr);
  EXPECT_EQ(judgement.failedRule->where.line, 2u);
  EXPECT_EQ(judgement.words, "invalid parameter 2 in function 'FailOn'");
  EXPECT_EQ(failingEngine.Judge("a").failedRule, nullptr);
}

// The errors of a run without end would take all memory.
TEST_F(CRuleSetTest, ForgetsTheErrorsOfTheLineBefore) {
  const CRuleSet rules("otherwise \"v\";", fHost.NewTransaction("load"));
  const CTransaction transaction = fHost.NewTransaction("run");
  CRuleEngine engine(rules, transaction);
  transaction.context->TriggerErrorHandler(Tovrin::ErrorSeverity::Severity2, "N", "Id", "words");
  EXPECT_TRUE(transaction.context->HasError());
  engine.Judge("a");
  EXPECT_FALSE(transaction.context->HasError());
}

TEST_F(CRuleSetTest, ServesEightThreadsAtOnce) {
  const CRuleSet rules("let a = \"abc\"; when Same(text, a) then \"x\"; otherwise \"y\";",
                       fHost.NewTransaction("load"));
  std::vector<std::thread> threads;
  std::atomic<int> good{0};
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] {
      CRuleEngine engine(rules, fHost.NewTransaction("run"));
      for (int round = 0; round < 500; ++round) {
        if (engine.Judge("abc").verdict == 0 && engine.Judge("abd").verdict == 1) ++good;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(good, 8 * 500);
}

}  // namespace
}  // namespace RefHost
