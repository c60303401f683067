// The functions that work on one expression, called as a host calls them.

#include <gtest/gtest.h>

#include <functional>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/module/ModuleCalls.h"
#include "tests/support/SmallStack.h"

using namespace std::string_view_literals;
using namespace Tovrin;

namespace {

using Texts = std::vector<std::string>;

// ---- truth values

struct TruthRow {
  const char* name;
  const char* function;
  const char* expression;
  std::string_view text;
  bool answer;
};

constexpr TruthRow kTruthRows[] = {
    {"SearchFindsAnywhere", "tovrin_module_Search", "b", "abc", true},
    {"SearchFindsNothing", "tovrin_module_Search", "x", "abc", false},
    {"SearchIgnoresCase", "tovrin_module_Search", "B+", "abbc", true},
    {"SearchGoesOnBehindAZeroByte", "tovrin_module_Search", "c$", "a\0c"sv, true},
    {"SearchOfTheEmptyExpression", "tovrin_module_Search", "", "", true},
    {"SearchWithABadExpression", "tovrin_module_Search", "(", "(", false},

    {"MatchesIsForWholeTexts", "tovrin_module_RegExMatches", "b", "abc", false},
    {"MatchesTheWholeText", "tovrin_module_RegExMatches", "a.c", "ABC", true},
    {"MatchesCountsZeroBytes", "tovrin_module_RegExMatches", "a", "a\0"sv, false},
    {"MatchesWithABadExpression", "tovrin_module_RegExMatches", "[", "[", false},
    {"MatchesDropsTheCaseMark", "tovrin_module_RegExMatches", "(?i)abc", "abc", true},
};

TEST(ExpressionCalls, AnswerTruthValues) {
  for (const TruthRow& row : kTruthRows) {
    const Answer answer = Call(row.function, {Expression(row.expression), Text(row.text)});
    EXPECT_EQ(answer.status, 0u) << row.name;
    EXPECT_EQ(answer.Changes(), Texts{row.answer ? "AssignBoolean true" : "AssignBoolean false"})
        << row.name;
  }
}

TEST(ExpressionCalls, MatchTwoTextsOfWhichTheFirstIsTheExpression) {
  const auto matches = [](std::string_view expression, std::string_view text) {
    return Call("tovrin_module_MatchesTwoStrings", {Text(expression), Text(text)}).Boolean();
  };
  EXPECT_TRUE(matches("a+", "AAA"));
  EXPECT_FALSE(matches("a+", "baaa"));
  EXPECT_FALSE(matches("AAA", "a+"));
  EXPECT_FALSE(matches("(", "("));
  EXPECT_EQ(Call("tovrin_module_MatchesTwoStrings", {Text("("), Text("(")}).status, 0u);
}

// ---- vectors

struct VectorRow {
  const char* name;
  const char* function;
  const char* expression;
  std::string_view text;
  Texts pieces;
};

const VectorRow kVectorRows[] = {
    {"FindAllGivesGroups", "tovrin_module_FindAll", "([a-z])([0-9])", "a1b2", {"a", "1", "b", "2"}},
    {"FindAllGivesMatches", "tovrin_module_FindAll", "[a-z][0-9]", "a1b2", {"a1", "b2"}},
    {"FindAllStopsAtAZeroByte", "tovrin_module_FindAll", "a", "a\0aa"sv, {"a"}},
    // Contract: what follows a match is a text of its own.
    {"FindAllForgetsTheStart", "tovrin_module_FindAll", "^a", "aaa", {"a", "a", "a"}},
    {"FindAllSeesNothingOfThePast", "tovrin_module_FindAll", "a|\\bb", "ab", {"a", "b"}},
    {"FindAllGivesUnmatchedGroupsEmpty",
     "tovrin_module_FindAll",
     "(a)|(b)",
     "ab",
     {"a", "", "", "b"}},
    {"FindAllFindsNothing", "tovrin_module_FindAll", "x", "abc", {}},
    {"FindAllOfABadExpression", "tovrin_module_FindAll", "(", "(", {}},
    {"FindAllOfNoText", "tovrin_module_FindAll", "a", "", {}},

    {"SearchAllMatchesGivesMatches",
     "tovrin_module_SearchAllMatches",
     "([a-z])[0-9]",
     "a1b2",
     {"a1", "b2"}},
    {"SearchAllMatchesGoesOverEmptyOnes",
     "tovrin_module_SearchAllMatches",
     "a*",
     "baac",
     {"", "aa", "", ""}},
    {"SearchAllMatchesKeepsTheStart", "tovrin_module_SearchAllMatches", "^a", "aaa", {"a"}},
    {"SearchAllMatchesSeesThePast", "tovrin_module_SearchAllMatches", "a|\\bb", "ab", {"a"}},
    {"SearchAllMatchesTriesAFullOneBehindAnEmptyOne",
     "tovrin_module_SearchAllMatches",
     "|a",
     "aa",
     {"", "a", "", "a", ""}},
    {"SearchAllMatchesCountsZeroBytes",
     "tovrin_module_SearchAllMatches",
     "a",
     "a\0aa"sv,
     {"a", "a", "a"}},
    {"SearchAllMatchesGivesZeroBytes",
     "tovrin_module_SearchAllMatches",
     "[^b]+",
     "a\0ab"sv,
     {std::string("a\0a", 3)}},
    {"SearchAllMatchesOfABadExpression", "tovrin_module_SearchAllMatches", "[", "[", {}},

    {"WildcardMatchGivesGroups", "tovrin_module_WildcardMatch", "(a)(x)?b", "ab", {"a", ""}},
    {"WildcardMatchIsForWholeTexts", "tovrin_module_WildcardMatch", "(a)", "ab", {}},
    {"WildcardMatchWithoutGroups", "tovrin_module_WildcardMatch", "ab", "ab", {}},
    {"WildcardMatchIsNoGlob", "tovrin_module_WildcardMatch", "(a)*", "a*", {}},
    {"WildcardMatchCountsZeroBytes",
     "tovrin_module_WildcardMatch",
     "(.*)",
     "a\0b"sv,
     {std::string("a\0b", 3)}},
    {"WildcardMatchOfABadExpression", "tovrin_module_WildcardMatch", "(", "", {}},
};

TEST(ExpressionCalls, GiveVectorsOfPieces) {
  for (const VectorRow& row : kVectorRows) {
    const Answer answer = Call(row.function, {Expression(row.expression), Text(row.text)});
    EXPECT_EQ(answer.status, 0u) << row.name;
    EXPECT_EQ(answer.Changes(), Texts{"AssignVector"}) << row.name;
    EXPECT_EQ(answer.Texts(), row.pieces) << row.name;
  }
}

constexpr const char* kVectorFunctions[] = {
    "tovrin_module_FindAll", "tovrin_module_SearchAllMatches", "tovrin_module_WildcardMatch"};

TEST(ExpressionCalls, AssignAnEmptyReferenceWhereTheHostGivesNoVector) {
  const AutoRefPtr<TestContext> poor(new TestContext);
  poor->givesVectors = false;
  for (const char* function : kVectorFunctions) {
    for (IContext* context :
         {static_cast<IContext*>(nullptr), static_cast<IContext*>(poor.get())}) {
      const Answer answer = CallIn(context, function, {Expression("(a)"), Text("a")});
      EXPECT_EQ(answer.status, 0u) << function;
      EXPECT_EQ(answer.Changes(), Texts{"AssignVector null"}) << function;
    }
  }
}

TEST(ExpressionCalls, LeaveOutThePiecesForWhichTheHostGivesNoVariant) {
  const AutoRefPtr<TestContext> poor(new TestContext);
  poor->givesTexts = false;
  for (const char* function : kVectorFunctions) {
    const Answer answer = CallIn(poor.get(), function, {Expression("(a)"), Text("a")});
    EXPECT_EQ(answer.Changes(), Texts{"AssignVector"}) << function;
    EXPECT_EQ(answer.Texts(), Texts{}) << function;
  }
}

TEST(ExpressionCalls, LeaveTheContextAsTheyFoundIt) {
  const AutoRefPtr<TestContext> context(new TestContext);
  for (const char* function : kVectorFunctions) {
    const Answer answer = CallIn(context.get(), function, {Expression("(a)"), Text("aa")});
    EXPECT_EQ(context->GetCount(), 1) << function;
    EXPECT_EQ(answer.result->GetVector()->GetCount(), 2) << function;  // the result's and this one
  }
}

// FindAll would find the empty text in front of the rest for ever.
TEST(ExpressionCalls, EndAFindAllThatMakesNoProgress) {
  const struct {
    const char* expression;
    const char* text;
  } kRows[] = {{"", ""}, {"", "abc"}, {"x*", "abc"}, {"$", "abc"}, {"(?=b)", "ab"}, {"(x)?", "a"}};
  for (const auto& row : kRows) {
    try {
      Call("tovrin_module_FindAll", {Expression(row.expression), Text(row.text)});
      ADD_FAILURE() << row.expression << " ended";
    } catch (const std::runtime_error& failure) {
      EXPECT_STREQ(failure.what(),
                   "Internal error in regex search: "
                   "'the expression matches the empty text and makes no progress'");
    }
  }
  // An empty match further on leaves less over, and is a piece.
  EXPECT_EQ(Call("tovrin_module_FindAll", {Expression("\\B"), Text("ab")}).Texts(), Texts{""});
}

// ---- replacing

struct ReplaceRow {
  const char* name;
  const char* expression;
  std::string_view text;
  std::string_view replacement;
  std::string_view first;
  std::string_view all;
};

constexpr ReplaceRow kReplaceRows[] = {
    {"WholeMatch", "X", "aXbXc", "[&]", "a[X]bXc", "a[X]b[X]c"},
    {"WholeMatchAsGroup", "X", "aXbXc", "[\\0]", "a[X]bXc", "a[X]b[X]c"},
    {"Group", "(X)(Y)", "XY", "\\2\\1", "YX", "YX"},
    {"GroupThatIsNotThere", "X", "aXbXc", "\\9", "abXc", "abc"},
    {"GroupThatTookNoPart", "(a)|(b)", "b", "<\\1>", "<>", "<>"},
    {"OneDigitOnly", "(X)", "X", "\\10", "X0", "X0"},
    {"EscapedAmpersand", "X", "aXb", "\\&", "a&b", "a&b"},
    {"BackslashAtTheEnd", "X", "aXbXc", "q\\", "aqbXc", "aqbqc"},
    {"EscapedBackslashAtTheEnd", "X", "aXb", "q\\\\", "aq\\b", "aq\\b"},
    {"DollarIsPlain", "X", "aXb", "$&$1", "a$X$1b", "a$X$1b"},
    {"CaseDoesNotMatter", "x", "aXb", "-", "a-b", "a-b"},
    {"NoMatch", "z", "aXb", "-", "aXb", "aXb"},
    {"EmptyMatches", "x*", "axxc", "-", "-axxc", "-a--c-"},
    {"ZeroBytesSurvive", "b", "a\0b"sv, "c\0d"sv, "a\0c\0d"sv, "a\0c\0d"sv},
};

TEST(ExpressionCalls, ReplaceInSedFormByObjectAndByText) {
  for (const ReplaceRow& row : kReplaceRows) {
    SCOPED_TRACE(row.name);
    const auto replaced = [&](const char* function, const AutoRefPtr<TestVariant>& expression) {
      const Answer answer = Call(function, {expression, Text(row.text), Text(row.replacement)});
      EXPECT_EQ(answer.status, 0u);
      return answer.Text();
    };
    const auto object = Expression(row.expression);
    const auto text = Text(row.expression);
    EXPECT_EQ(replaced("tovrin_module_ReplaceFirstMatch", object), row.first);
    EXPECT_EQ(replaced("tovrin_module_ReplaceFirstMatchString", text), row.first);
    EXPECT_EQ(replaced("tovrin_module_ReplaceAllMatches", object), row.all);
    EXPECT_EQ(replaced("tovrin_module_ReplaceAllMatchesString", text), row.all);
  }
}

// Contract: with a bad expression the object form gives the empty text, the text form its input.
TEST(ExpressionCalls, ReplaceNothingWithABadExpression) {
  for (const char* function :
       {"tovrin_module_ReplaceFirstMatch", "tovrin_module_ReplaceAllMatches"}) {
    EXPECT_EQ(Call(function, {Expression("("), Text("a(b"), Text("-")}).Changes(),
              Texts{"AssignString ''"});
    EXPECT_EQ(Call(function + std::string("String"), {Text("("), Text("a(b"), Text("-")}).Changes(),
              Texts{"AssignString 'a(b'"});
  }
}

// ---- making

TEST(ExpressionCalls, MakeAnObjectOfEveryText) {
  for (const std::string text : {"abc", "(", "", "(?i)x"}) {
    const Answer made = Call("tovrin_module_StringToRegEx", {Text(text)});
    EXPECT_EQ(made.status, 0u);
    EXPECT_EQ(made.Changes(), Texts{"SetUserDefined"});
    ASSERT_TRUE(made.Object());
    EXPECT_STREQ(made.Object()->GetName(), "Tessarin");
    EXPECT_EQ(made.Object()->GetCount(), 2) << "the result's, and this one";
    const auto object = TestVariant::Object(kTestTessarinId, made.Object());
    EXPECT_EQ(Call("tovrin_module_RegExToString", {object}).Text(), text);
  }
}

TEST(ExpressionCalls, KeepZeroBytesInAnExpression) {
  const auto object = Expression(std::string("a\0b", 3));
  EXPECT_EQ(Call("tovrin_module_RegExToString", {object}).Text(), std::string("a\0b", 3));
  EXPECT_TRUE(Call("tovrin_module_Search", {object, Text("xa\0by"sv)}).Boolean());

  const auto expression = Text("a\0b"sv);
  EXPECT_TRUE(Call("tovrin_module_MatchesTwoStrings", {expression, Text("A\0B"sv)}).Boolean());
  for (const char* function :
       {"tovrin_module_ReplaceFirstMatchString", "tovrin_module_ReplaceAllMatchesString"}) {
    EXPECT_EQ(Call(function, {expression, Text("xa\0by"sv), Text("-")}).Text(), "x-y");
  }
  const Answer glob = Call("tovrin_module_GlobToRegEx", {Text("a\0*"sv), Boolean(false)});
  EXPECT_EQ(
      Call("tovrin_module_RegExToString", {TestVariant::Object(kTestTessarinId, glob.Object())})
          .Text(),
      std::string("a\0.*", 4));
}

struct GlobRow {
  const char* glob;
  bool isAnchored;
  const char* expression;
};

constexpr GlobRow kGlobRows[] = {
    {"*.txt", true, "^.*\\.txt$"},
    {"*.txt", false, ".*\\.txt"},
    {"a?c", false, "a.c"},
    {"[!ab]*", false, "[^ab].*"},
    {"a\\*b", false, "a\\*b"},
    {"a\\b", false, "ab"},
    {"", true, "^$"},
    {"", false, ""},
    {"[abc", true, "^[abc$"},
};

TEST(ExpressionCalls, MakeAnObjectOfAGlob) {
  for (const GlobRow& row : kGlobRows) {
    const Answer made =
        Call("tovrin_module_GlobToRegEx", {Text(row.glob), Boolean(row.isAnchored)});
    EXPECT_EQ(made.status, 0u) << row.glob;
    const auto object = TestVariant::Object(kTestTessarinId, made.Object());
    EXPECT_EQ(Call("tovrin_module_RegExToString", {object}).Text(), row.expression) << row.glob;
  }
  // An open bracket does not compile, and is an object all the same.
  const auto open = TestVariant::Object(
      kTestTessarinId, Call("tovrin_module_GlobToRegEx", {Text("[abc"), Boolean(true)}).Object());
  EXPECT_FALSE(Call("tovrin_module_Search", {open, Text("[abc")}).Boolean());
}

TEST(ExpressionCalls, MakeFreshObjectsThroughTheFactory) {
  using Factory = IUserDefinedType*(std::uint32_t);
  for (const TypeId type : {TypeId{0}, TypeId{21}, TypeId{77}}) {
    const AutoRefPtr<IUserDefinedType> object(
        ModuleSymbolAs<Factory>("tovrin_module_CreateTessarin")(type));
    EXPECT_EQ(object->GetCount(), 1);
    EXPECT_STREQ(object->GetName(), "Tessarin");
    EXPECT_EQ(object->GetType(), type);
    const auto argument = TestVariant::Object(kTestTessarinId, object);
    EXPECT_EQ(Call("tovrin_module_RegExToString", {argument}).Text(), "");
    EXPECT_FALSE(Call("tovrin_module_Search", {argument, Text("")}).Boolean());
  }
}

// ---- statuses by example

TEST(ExpressionCalls, TellPositionAndCode) {
  EXPECT_EQ(Call("tovrin_module_Search", {Expression("a")}).status, 0x20001u);
  EXPECT_EQ(Call("tovrin_module_Search", {Number(1), Text("a")}).status, 0x10002u);
  EXPECT_EQ(Call("tovrin_module_Search", {WithoutObject(), Text("a")}).status, 0x10004u);
  // Contract: the missing object is told to a reader of texts as well.
  EXPECT_EQ(Call("tovrin_module_StringToRegEx", {WithoutObject()}).status, 0x10004u);
  EXPECT_EQ(Call("tovrin_module_Search", {Expression("a"), WithoutObject()}).status, 0x20004u);
}

// ---- texts that are larger than the stack

// What the call throws counts as an answer if it is standard.
bool AnswersOnASmallStack(const std::function<void()>& call) {
  bool answered = false;
  OnASmallStack([&] {
    try {
      call();
    } catch (const std::runtime_error&) {
    }
    answered = true;
  });
  return answered;
}

TEST(ExpressionCalls, AnswerOrThrowWhereATextIsLargerThanTheStack) {
  std::string text;
  while (text.size() < 1'000'000) text += "ab";
  const auto large = Text(text);
  for (const char* expression : {"(a|b)*c", "(a|b)*", "(ab)*c", "((a)|(b))*\\1c"}) {
    SCOPED_TRACE(expression);
    const auto object = Expression(expression);
    const auto source = Text(expression);
    EXPECT_TRUE(AnswersOnASmallStack([&] { Call("tovrin_module_Search", {object, large}); }));
    EXPECT_TRUE(AnswersOnASmallStack([&] { Call("tovrin_module_RegExMatches", {object, large}); }));
    EXPECT_TRUE(AnswersOnASmallStack([&] {
      Call("tovrin_module_MatchesTwoStrings", {source, large});
    }));
    for (const char* function : kVectorFunctions) {
      EXPECT_TRUE(AnswersOnASmallStack([&] { Call(function, {object, large}); })) << function;
    }
    EXPECT_TRUE(AnswersOnASmallStack([&] {
      Call("tovrin_module_ReplaceFirstMatch", {object, large, Text("-")});
    }));
    EXPECT_TRUE(AnswersOnASmallStack([&] {
      Call("tovrin_module_ReplaceAllMatchesString", {source, large, Text("-")});
    }));
  }
}

// How a call ends, in words: with a status, or with what it throws.
std::string EndOf(const std::function<Answer()>& call) {
  try {
    return "status " + std::to_string(call().status);
  } catch (const std::regex_error& failure) {
    return std::string("regex_error: ") + failure.what();
  } catch (const std::runtime_error& failure) {
    return std::string("runtime_error: ") + failure.what();
  }
}

// A back-reference is for the backtracking engine alone, and of this text each byte leaves ways
// behind, until there is no room for more.
TEST(ExpressionCalls, TellEachFailureOfTheEngineInItsWords) {
  constexpr const char* kExpression = R"((x*)\1(a|b)*[c-w])";
  std::string text;
  while (text.size() < 2'000'000) text += "ab";
  const struct {
    const char* function;
    const char* start;
  } rows[] = {
      // Contract: a search hides the failure, and a walk leaves it as the engine's own.
      {"Search", "status 0"},
      {"SearchAllMatches", "regex_error: "},
      {"RegExMatches", "runtime_error: Runtime error in regex matching: '"},
      {"MatchesTwoStrings", "runtime_error: Runtime error in regex matching: '"},
      {"WildcardMatch", "runtime_error: Internal error in regex matching: '"},
      {"FindAll", "runtime_error: Internal error in regex search: '"},
      {"ReplaceFirstMatch", "runtime_error: Internal error in regex replace: '"},
      {"ReplaceFirstMatchString", "runtime_error: Internal error in regex replace: '"},
      {"ReplaceAllMatches", "runtime_error: Internal error in regex replace: '"},
      {"ReplaceAllMatchesString", "runtime_error: Internal error in regex replace: '"},
  };
  const auto object = Expression(kExpression);
  for (const auto& row : rows) {
    const std::string function = std::string("tovrin_module_") + row.function;
    const bool takesText = function.ends_with("String") || function.ends_with("Strings");
    const auto expression = takesText ? Text(kExpression) : object;
    const std::string end = EndOf([&] {
      return Call(function, {expression, Text(text), Text("-")});
    });
    EXPECT_TRUE(end.starts_with(row.start)) << function << ": " << end;
    EXPECT_EQ(end.ends_with("'"), std::string(row.start).ends_with("'")) << function;
  }
  EXPECT_FALSE(Call("tovrin_module_Search", {object, Text("ab")}).Boolean());
  // The object is none the worse for it.
  EXPECT_TRUE(Call("tovrin_module_RegExMatches", {object, Text("xxabbc")}).Boolean());
}

// A host calls from many threads, each with its own variants and context, on one shared object.
TEST(ExpressionCalls, AnswerEightThreadsOnOneObject) {
  const AutoRefPtr<IUserDefinedType> object = Expression("([a-z]+)-([0-9]+)")->GetUserDefined();
  std::vector<int> wrong(8);
  std::vector<std::thread> threads;
  for (int& count : wrong) {
    threads.emplace_back([&object, &count] {
      for (int round = 0; round < 100; ++round) {
        const auto argument = TestVariant::Object(kTestTessarinId, object);
        const auto text = Text("abc-12 d-3");
        count += !Call("tovrin_module_Search", {argument, text}).Boolean();
        count += Call("tovrin_module_RegExMatches", {argument, text}).Boolean();
        count +=
            Call("tovrin_module_FindAll", {argument, text}).Texts() != Texts{"abc", "12", "d", "3"};
        count += Call("tovrin_module_SearchAllMatches", {argument, text}).Texts() !=
                 Texts{"abc-12", "d-3"};
        count +=
            Call("tovrin_module_ReplaceAllMatches", {argument, text, Text("\\2")}).Text() != "12 3";
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(8));
  EXPECT_EQ(object->GetCount(), 1);
}

}  // namespace
