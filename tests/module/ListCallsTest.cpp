// The functions that take or give a list, called as a host calls them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/module/ModuleCalls.h"

using namespace std::string_view_literals;
using namespace Tovrin;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Texts = std::vector<std::string>;
using ListArgument = AutoRefPtr<TestVariant>;

// A list argument whose entries are stored as they stand here.
ListArgument List(const Texts& entries, TypeId type = kTestListId) {
  const auto create =
      ModuleSymbolAs<IUserDefinedType*(std::uint32_t)>("tovrin_module_CreateTessarinList");
  const auto list = TestVariant::Object(type, AutoRefPtr<IUserDefinedType>(create(type)));
  for (const std::string& entry : entries) {
    EXPECT_EQ(CallWithoutResult("tovrin_module_AddToRegExList", {list, Text(entry)}), 0u);
  }
  return list;
}

// What a call gave, as an argument. The type ids of these tests stand on the variants alone: nobody
// has registered the module, so what it makes by itself carries the id 0.
ListArgument AsArgument(const AutoRefPtr<IUserDefinedType>& object) {
  const bool isList = std::string_view(object->GetName()) == "Tessarin.List";
  return TestVariant::Object(isList ? kTestListId : kTestTessarinId, object);
}

Texts EntriesOf(const ListArgument& list) {
  const double size = Call("tovrin_module_Size", {list}).result->GetNumber();
  Texts entries;
  for (double i = 0; i < size; ++i) {
    const Answer entry = Call("tovrin_module_Get", {list, Number(i)});
    entries.push_back(Call("tovrin_module_RegExToString", {AsArgument(entry.Object())}).Text());
  }
  return entries;
}

// The entries of the list that a call gives; it must be a new one with the type of its first list.
Texts Entries(const std::string& function, const Values& arguments) {
  const Answer answer = Call(function, arguments);
  EXPECT_EQ(answer.status, 0u) << function;
  EXPECT_EQ(answer.Changes().size(), 1u) << function;
  if (!answer.Object()) return {"no list"};
  EXPECT_STREQ(answer.Object()->GetName(), "Tessarin.List");
  EXPECT_EQ(answer.Object()->GetType(), kTestListId);
  return EntriesOf(AsArgument(answer.Object()));
}

bool Matches(const ListArgument& list, std::string_view text) {
  const Answer answer = Call("tovrin_module_MatchesInList", {list, Text(text)});
  EXPECT_EQ(answer.status, 0u);
  return answer.Boolean();
}

constexpr double kHuge = 9223372036854775808.0;  // two to the 63
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// ---- making

TEST(ListCalls, MakeAListOfWholeTextExpressions) {
  const auto texts = TestVariant::Vector(10, TestVector::Texts({"abc", "", "("}));
  const Answer answer = Call("tovrin_module_StringListToRegExList", {texts});
  EXPECT_EQ(answer.status, 0u);
  EXPECT_THAT(EntriesOf(AsArgument(answer.Object())),
              ElementsAre("regex(^abc$)", "regex(^$)", "regex(^($)"));

  const auto none = TestVariant::Vector(10, TestVector::Texts({}));
  EXPECT_THAT(EntriesOf(AsArgument(Call("tovrin_module_StringListToRegExList", {none}).Object())),
              IsEmpty());
}

TEST(ListCalls, TakeAVectorsTextsUpToTheirFirstZeroByteAndItsNullsAsEmpty) {
  const TestVector::Elements elements = {Share<IVariant>(TestVariant::Text("a\0b"sv).get()), {}};
  const auto vector = TestVariant::Vector(
      10, AutoRefPtr<const IVectorGeneric>(new TestVector(kTypeString, elements)));
  EXPECT_THAT(EntriesOf(AsArgument(Call("tovrin_module_StringListToRegExList", {vector}).Object())),
              ElementsAre("regex(^a$)", "regex(^$)"));
}

TEST(ListCalls, MatchWholeTextsWithoutRegardToCase) {
  const auto texts = TestVariant::Vector(10, TestVector::Texts({"abc"}));
  const auto list = AsArgument(Call("tovrin_module_StringListToRegExList", {texts}).Object());
  EXPECT_TRUE(Matches(list, "abc"));
  EXPECT_TRUE(Matches(list, "ABC"));
  EXPECT_FALSE(Matches(list, "xabc"));
  EXPECT_FALSE(Matches(List({}), ""));
  EXPECT_TRUE(Matches(List({"a*"}), "abc"));  // a text that is no "regex(...)" is a wildcard
  EXPECT_FALSE(Matches(List({"a*"}), "ba"));
  EXPECT_FALSE(Matches(List({"a"}), "a\0"sv));
}

TEST(ListCalls, MatchNothingWithOneBadEntry) {
  EXPECT_FALSE(Matches(List({"regex(()", "good"}), "good"));
}

TEST(ListCalls, SeeAnAddedEntryInTheNextMatch) {
  const auto list = List({"a"});
  EXPECT_FALSE(Matches(list, "b"));
  EXPECT_EQ(CallWithoutResult("tovrin_module_AddToRegExList", {list, Text("b")}), 0u);
  EXPECT_TRUE(Matches(list, "b"));
  EXPECT_EQ(CallWithoutResult("tovrin_module_AddToRegExListRE", {list, Expression("c+")}), 0u);
  EXPECT_TRUE(Matches(list, "ccc"));
  EXPECT_THAT(EntriesOf(list), ElementsAre("a", "b", "regex(^c+$)"));
}

TEST(ListCalls, AnswerNothingWhenTheyAdd) {
  const auto list = List({});
  const Answer text = Call("tovrin_module_AddToRegExList", {list, Text("a")});
  const Answer object = Call("tovrin_module_AddToRegExListRE", {list, Expression("b")});
  EXPECT_EQ(text.status, 0u);
  EXPECT_EQ(object.status, 0u);
  EXPECT_THAT(text.Changes(), IsEmpty());
  EXPECT_THAT(object.Changes(), IsEmpty());
}

TEST(ListCalls, AddATextUpToItsFirstZeroByteAndAppendAllOfIt) {
  const auto list = List({});
  EXPECT_EQ(CallWithoutResult("tovrin_module_AddToRegExList", {list, Text("a\0b"sv)}), 0u);
  EXPECT_THAT(EntriesOf(list), ElementsAre("a"));
  const auto appended =
      AsArgument(Call("tovrin_module_AppendToRegExList", {list, Text("c\0d"sv)}).Object());
  EXPECT_THAT(EntriesOf(appended), ElementsAre("a", std::string("c\0d", 3)));
  EXPECT_TRUE(Matches(appended, "c"));  // Contract: the matcher's side is cut
  EXPECT_FALSE(Matches(appended, "c\0d"sv));
}

TEST(ListCalls, AppendToACopy) {
  const auto list = List({"a"});
  EXPECT_THAT(Entries("tovrin_module_AppendToRegExList", {list, Text("b")}), ElementsAre("a", "b"));
  EXPECT_THAT(Entries("tovrin_module_AppendRegExToRegExList", {list, Expression("b")}),
              ElementsAre("a", "regex(^b$)"));
  EXPECT_THAT(EntriesOf(list), ElementsAre("a"));
}

// ---- reading

TEST(ListCalls, GetAnEntryAsAnExpressionOfItsStoredText) {
  const auto list = List({"regex(^x$)", "a.c"});
  const Answer first = Call("tovrin_module_Get", {list, Number(0)});
  const auto object = AsArgument(first.Object());
  EXPECT_EQ(Call("tovrin_module_RegExToString", {object}).Text(), "regex(^x$)");
  // Contract: the word is literal text in it, so it matches nothing that the list does.
  EXPECT_FALSE(Call("tovrin_module_RegExMatches", {object, Text("x")}).Boolean());

  for (const double index : {2.0, -1.0, -kHuge, kNaN}) {
    const Answer none = Call("tovrin_module_Get", {list, Number(index)});
    ASSERT_TRUE(none.Object()) << index;
    EXPECT_EQ(Call("tovrin_module_RegExToString", {AsArgument(none.Object())}).Text(), "") << index;
  }
  // Contract: two to the 63 is subtracted and added back, which leaves 0 of 1e20.
  for (const double index : {kHuge, 1e20, 1e300}) {
    EXPECT_EQ(Call("tovrin_module_RegExToString",
                   {AsArgument(Call("tovrin_module_Get", {list, Number(index)}).Object())})
                  .Text(),
              index == kHuge ? "" : "regex(^x$)");
  }
  EXPECT_EQ(Call("tovrin_module_RegExToString",
                 {AsArgument(Call("tovrin_module_Get", {list, Number(1.9)}).Object())})
                .Text(),
            "a.c");
}

TEST(ListCalls, FindWhatIsStoredAndNotWhatWasAdded) {
  const auto list = List({"a", "b", "b"});
  const auto find = [](const ListArgument& in, const ListArgument& object) {
    const Answer answer = Call("tovrin_module_Find", {in, object});
    const Answer contains = Call("tovrin_module_Contains", {in, object});
    EXPECT_EQ(contains.Boolean(), answer.result->GetNumber() != -1);
    return answer.result->GetNumber();
  };
  EXPECT_EQ(find(list, Expression("b")), 1);
  EXPECT_EQ(find(list, Expression("B")), -1);
  EXPECT_EQ(find(list, Expression("x")), -1);
  EXPECT_EQ(find(List({}), Expression("")), -1);

  EXPECT_EQ(CallWithoutResult("tovrin_module_AddToRegExListRE", {list, Expression("x")}), 0u);
  EXPECT_EQ(find(list, Expression("x")), -1);
  EXPECT_EQ(find(list, AsArgument(Call("tovrin_module_Get", {list, Number(3)}).Object())), 3);
}

TEST(ListCalls, JoinTheTextsByASeparator) {
  for (const char* function :
       {"tovrin_module_RegExListToString", "tovrin_module_RegExListToString_Deprecated"}) {
    const auto text = [function](const Texts& entries, std::string_view separator) {
      return Call(function, {List(entries), Text(separator)}).Text();
    };
    EXPECT_EQ(text({"a", "b"}, "|"), "a|b");
    EXPECT_EQ(text({"a", "b"}, ""), "a, b");
    EXPECT_EQ(text({"a", "b"}, "\0"sv), std::string("a\0b", 3));
    EXPECT_EQ(text({"a"}, "|"), "a");
    EXPECT_EQ(text({"", ""}, "|"), "|");
    EXPECT_EQ(text({}, "|"), "");
  }
}

// ---- ranges and edits: a row each

struct EditRow {
  const char* function;
  Texts list;
  std::vector<double> numbers;
  Texts entries;
};

TEST(ListCalls, CutRanges) {
  const Texts abc = {"a", "b", "c"};
  const EditRow rows[] = {
      // The end is not included in GetRange.
      {"tovrin_module_GetElems", abc, {1, 2}, {"b"}},
      {"tovrin_module_GetElems", abc, {0, 3}, abc},
      {"tovrin_module_GetElems", abc, {-5, 2}, {"a", "b"}},
      {"tovrin_module_GetElems", abc, {1, 99}, {"b", "c"}},
      {"tovrin_module_GetElems", abc, {2, 2}, {}},
      {"tovrin_module_GetElems", abc, {2, 1}, {}},
      {"tovrin_module_GetElems", abc, {3, 9}, {}},
      {"tovrin_module_GetElems", abc, {-kHuge, kHuge}, {}},  // what nothing holds is the smallest
      {"tovrin_module_GetElems", abc, {kNaN, 2}, {"a", "b"}},
      {"tovrin_module_GetElems", abc, {0.9, 1.9}, {"a"}},
      {"tovrin_module_GetElems", {}, {0, 1}, {}},

      {"tovrin_module_Remove", abc, {0}, {"b", "c"}},
      {"tovrin_module_Remove", abc, {2}, {"a", "b"}},
      {"tovrin_module_Remove", abc, {1.9}, {"a", "c"}},

      // Contract: the end is included in Remove; a start beyond the end pads, and one behind the
      // end
      // takes what lies between twice.
      {"tovrin_module_RemoveElems", abc, {1, 2}, {"a"}},
      {"tovrin_module_RemoveElems", abc, {0, 0}, {"b", "c"}},
      {"tovrin_module_RemoveElems", abc, {-5, 0}, {"b", "c"}},
      {"tovrin_module_RemoveElems", abc, {0, 99}, {}},
      {"tovrin_module_RemoveElems", abc, {1, -1}, {"a", "a", "b", "c"}},
      {"tovrin_module_RemoveElems", abc, {0, -9}, abc},
      {"tovrin_module_RemoveElems", abc, {0, -kHuge}, abc},
      {"tovrin_module_RemoveElems", abc, {2, 0}, {"a", "b", "b", "c"}},
      {"tovrin_module_RemoveElems", {"a", "b"}, {5, 6}, {"a", "b", "", "", ""}},
      {"tovrin_module_RemoveElems", {"a", "b"}, {2, 1}, {"a", "b"}},
      {"tovrin_module_RemoveElems", {}, {5, 6}, {}},

      {"tovrin_module_Reverse", abc, {}, {"c", "b", "a"}},
      {"tovrin_module_Reverse", {}, {}, {}},
  };
  for (const EditRow& row : rows) {
    SCOPED_TRACE(row.function + testing::PrintToString(row.numbers));
    const auto list = List(row.list);
    Values arguments = {list};
    for (const double number : row.numbers) arguments.push_back(Number(number));
    EXPECT_EQ(Entries(row.function, arguments), row.entries);
    EXPECT_EQ(EntriesOf(list), row.list);  // the argument stays as it is
  }
}

TEST(ListCalls, GiveNoListWhenTheIndexToRemoveIsOutOfRange) {
  for (const double index : {2.0, 9.0, -1.0, -kHuge, kHuge, kNaN}) {
    const Answer answer = Call("tovrin_module_Remove", {List({"a", "b"}), Number(index)});
    EXPECT_EQ(answer.status, 0u) << index;
    EXPECT_THAT(answer.Changes(), IsEmpty()) << index;
  }
}

TEST(ListCalls, RefuseToPadWithoutMeasure) {
  EXPECT_THROW(Call("tovrin_module_RemoveElems", {List({"a"}), Number(1e15), Number(0)}),
               std::length_error);
}

TEST(ListCalls, JoinAsManyEntriesAsTheFirstListHas) {
  const auto join = [](const Texts& a, const Texts& b) {
    return Entries("tovrin_module_Join", {List(a), List(b, kTestListId + 8)});
  };
  EXPECT_THAT(join({"a"}, {"x", "y", "z"}), ElementsAre("a", "x"));
  EXPECT_THAT(join({"a", "b", "c"}, {"x"}), ElementsAre("a", "b", "c", "x", "", ""));
  EXPECT_THAT(join({}, {"x"}), IsEmpty());
  EXPECT_THAT(join({"a"}, {}), ElementsAre("a", ""));
  const auto list = List({"a", "b"});
  EXPECT_THAT(Entries("tovrin_module_Join", {list, list}), ElementsAre("a", "b", "a", "b"));
}

TEST(ListCalls, RemoveTheEntriesOfAnotherList) {
  const auto remove = [](const Texts& a, const Texts& b) {
    return Entries("tovrin_module_RemoveListFromList", {List(a), List(b, kTestListId + 8)});
  };
  EXPECT_THAT(remove({"a", "b", "a", "("}, {"a", "x"}), ElementsAre("b", "("));
  EXPECT_THAT(remove({"a"}, {"A"}), ElementsAre("a"));
  EXPECT_THAT(remove({"a"}, {}), IsEmpty());  // Contract: not the list itself
  EXPECT_THAT(remove({}, {"a"}), IsEmpty());
  const auto list = List({"a", "b"});
  EXPECT_THAT(Entries("tovrin_module_RemoveListFromList", {list, list}), IsEmpty());
}

TEST(ListCalls, InsertAndSetAnExpression) {
  const auto insert = [](const Texts& entries, double index) {
    return Entries("tovrin_module_Insert", {List(entries), Expression("x"), Number(index)});
  };
  const auto set = [](const Texts& entries, double index) {
    return Entries("tovrin_module_Set", {List(entries), Number(index), Expression("x")});
  };
  const std::string x = "regex(^x$)";
  for (const double index : {-5.0, 0.0, 0.9, -kHuge}) {
    EXPECT_THAT(insert({"a", "b"}, index), ElementsAre(x, "a", "b")) << index;
    EXPECT_THAT(set({"a", "b"}, index), ElementsAre(x, "b")) << index;
    EXPECT_THAT(insert({}, index), ElementsAre(x)) << index;
    EXPECT_THAT(set({}, index), ElementsAre(x)) << index;
  }
  EXPECT_THAT(insert({"a", "b"}, 1), ElementsAre("a", x, "b"));
  EXPECT_THAT(set({"a", "b"}, 1), ElementsAre("a", x));
  for (const double index : {2.0, 5.0, 1e18}) {
    EXPECT_THAT(insert({"a", "b"}, index), ElementsAre("a", "b", x)) << index;
    EXPECT_THAT(set({"a", "b"}, index), ElementsAre("a", "b", x)) << index;
  }
}

TEST(ListCalls, LeaveTheArgumentOfAnEditAlone) {
  const auto list = List({"a", "b"});
  Call("tovrin_module_Set", {list, Number(0), Expression("x")});
  Call("tovrin_module_Insert", {list, Expression("x"), Number(0)});
  Call("tovrin_module_Reverse", {list});
  EXPECT_THAT(EntriesOf(list), ElementsAre("a", "b"));
  EXPECT_EQ(list->GetUserDefined()->GetCount(), 2);  // the variant's reference and this one
}

// Contract: the very same object, with a reference more.
TEST(ListCalls, GiveTheSameListWhateverSetSortedIsTold) {
  const auto list = List({"b", "a"});
  for (const bool sorted : {true, false}) {
    const std::int32_t references = list->GetUserDefined()->GetCount();
    const Answer answer = Call("tovrin_module_SetSorted", {list, Boolean(sorted)});
    EXPECT_EQ(answer.Object().get(), list->GetUserDefined().get());
    EXPECT_EQ(list->GetUserDefined()->GetCount(), references + 1);  // the answer's
    EXPECT_THAT(EntriesOf(AsArgument(answer.Object())), ElementsAre("b", "a"));
  }
}

// ---- threads

TEST(ListCalls, AnswerTheFirstMatchesFromEightThreads) {
  for (int round = 0; round < 5; ++round) {
    Texts entries;
    for (int i = 0; i < 50; ++i) entries.push_back("*.host" + std::to_string(i) + ".example");
    entries.push_back("regex(^\\d+$)");
    const auto list = List(entries);
    const auto object = list->GetUserDefined();
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([&object] {
        const auto own = TestVariant::Object(kTestListId, object);
        for (int k = 0; k < 50; ++k) {
          EXPECT_TRUE(Matches(own, "www.host7.example"));
          EXPECT_TRUE(Matches(own, "123"));
          EXPECT_FALSE(Matches(own, "host7.example.org"));
        }
      });
    }
    for (auto& thread : threads) thread.join();
  }
}

}  // namespace
