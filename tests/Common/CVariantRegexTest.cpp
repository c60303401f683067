#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Common/CRegex.h"
#include "Common/CRegexException.h"
#include "Common/CUnicodeString.h"
#include "Common/CVariant.h"
#include "tests/Common/QuestionedHost.h"

namespace {

using Strings = std::vector<std::string>;

CUsePtr<CVariant> ListOf(const Strings& elements, VariantType type = VariantType::RegexList) {
  auto list = MakeUseCounted<CVariant>(type);
  for (const std::string& element : elements) list->AddToList(MakeText(element).Get());
  return list;
}

CUsePtr<CVariant> ValueOf(VariantType type, const std::string& text) {
  auto value = MakeUseCounted<CVariant>();
  value->SetString(type, MakeText(text).Get());
  return value;
}

// ---- Matches

TEST(CVariantRegex, IsNoMatchForOtherTypes) {
  EXPECT_EQ(ValueOf(VariantType::String, "a")->Matches("a"), 0);
  EXPECT_EQ(ListOf({"a"}, VariantType::StringList)->Matches("a"), 0);
  EXPECT_EQ(CVariant().Matches("a"), 0);
  EXPECT_EQ(CVariant(std::int64_t{1}).TriggerRegexBuild(), 0);
}

TEST(CVariantRegex, MatchesAValueAndAList) {
  EXPECT_EQ(ValueOf(VariantType::Regex, "a*")->Matches("ABC"), 1);
  EXPECT_EQ(ValueOf(VariantType::Regex, "regex(a)")->Matches("ab"), 0);
  EXPECT_EQ(ListOf({"a*", "regex(b+)"})->Matches("bb"), 1);
  EXPECT_EQ(ListOf({"a*", "regex(b+)"})->Matches("cb"), 0);
  EXPECT_EQ(ListOf({})->Matches(""), 0);
}

TEST(CVariantRegex, SaysThatAListIsBadEachTime) {
  const HostInSlot host(Gates{.level = false});
  const auto list = ListOf({"good", "regex(()"});
  for (int i = 0; i < 3; ++i) EXPECT_EQ(list->Matches("good"), -1);
  EXPECT_EQ(list->TriggerRegexBuild(), -1);
  EXPECT_EQ(host->fPrinted.size(), 1u);  // the holder was built once
}

TEST(CVariantRegex, KnowsAnElementThatWasAddedSinceTheLastMatch) {
  const auto list = ListOf({"a"});
  EXPECT_EQ(list->Matches("b"), 0);
  list->AddToList(MakeText("b").Get());
  EXPECT_EQ(list->Matches("b"), 1);
}

// Every change of the value drops what was built from the old one.
TEST(CVariantRegex, ForgetsTheOldValueWithEveryChange) {
  struct Row {
    const char* name;
    void (*change)(CVariant& list);
    Strings matching;  // afterwards
  };
  const Row rows[] = {
      {"Erase", [](CVariant& list) { list.Erase(0); }, {"b"}},
      {"Clear", [](CVariant& list) { list.Clear(); }, {}},
      {"SetListElem", [](CVariant& list) { list.SetListElem(0, MakeText("x").Get()); }, {"x", "b"}},
      {"Assign", [](CVariant& list) { list.Assign(ListOf({"x"}).Get()); }, {"x"}},
      {"JoinLists", [](CVariant& list) { list.JoinLists(ListOf({"x"}).Get()); }, {"a", "b", "x"}},
      {"EraseFromList", [](CVariant& list) { list.EraseFromList(ListOf({"a"}).Get()); }, {"b"}},
      {"ReverseList", [](CVariant& list) { list.ReverseList(); }, {"a", "b"}},
      {"SortList", [](CVariant& list) { list.SortList(); }, {"a", "b"}},
      {"SetString",
       [](CVariant& list) { list.SetString(VariantType::Regex, MakeText("x").Get()); },
       {"x"}},
      {"SetEmpty", [](CVariant& list) { list.SetEmpty(); }, {}},
      {"SetListFromArray",
       [](CVariant& list) { list.SetListFromArray(VariantType::StringList, nullptr, 0); },
       {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto list = ListOf({"a", "b"});
    EXPECT_EQ(list->Matches("a"), 1);
    row.change(*list);
    for (const char* text : {"a", "b", "x"}) {
      const bool expected =
          std::find(row.matching.begin(), row.matching.end(), text) != row.matching.end();
      EXPECT_EQ(list->Matches(text), expected ? 1 : 0) << text;
    }
  }
}

TEST(CVariantRegex, KeepsWhatWasBuiltWhereItIsMoved) {
  const HostInSlot host(Gates{.level = false});
  const auto list = ListOf({"regex(()"});
  EXPECT_EQ(list->Matches("a"), -1);
  const CVariant moved(std::move(*list));
  EXPECT_EQ(moved.Matches("a"), -1);
  EXPECT_EQ(list->Matches("a"), 0);
  EXPECT_EQ(host->fPrinted.size(), 1u);  // a second build would say the same again
}

TEST(CVariantRegex, BuildsWhenTriggered) {
  EXPECT_EQ(ListOf({"a"})->TriggerRegexBuild(), 0);
  EXPECT_EQ(ListOf({"thisisjustatrigger"})->TriggerRegexBuild(), 1);
  EXPECT_EQ(ListOf({"[a"})->TriggerRegexBuild(), -1);
}

TEST(CVariantRegex, ReportsAnEngineThatGivesUpAndAnswersNoMatch) {
  // A back-reference leaves only trying, and there are more ways than any budget has steps.
  const auto list = ListOf({"regex((x?)(a|aa)+\\1b)"});
  const std::string text = std::string(80, 'a') + "bc";
  const HostInSlot host(Gates{.level = false});
  EXPECT_EQ(list->Matches(text), 0);
  CUnicodeString object(text);
  CUnicodeString out("before");
  EXPECT_EQ(list->Matches(&object, &out), 0);
  EXPECT_EQ(out.Text().Utf8(), "before");
  const std::string reason =
      "'Runtime error in regex matching: 'Complexity of regex match exceeded implementation "
      "limits''";
  ASSERT_EQ(host->fPrinted.size(), 2u);
  EXPECT_EQ(host->fPrinted[0].className, "CVariant");
  EXPECT_EQ(host->fPrinted[0].function, "Matches");
  EXPECT_EQ(host->fPrinted[0].message, "'CVariant: Matches': " + reason);
  EXPECT_EQ(host->fPrinted[1].className, "CVariant");
  EXPECT_EQ(host->fPrinted[1].function, "IFMatches");
  EXPECT_EQ(host->fPrinted[1].message, "'CVariant: IFMatches': " + reason);
}

// The name of one of several elements is told by captures, and matching with captures has words of
// its own for its failure.
TEST(CVariantRegex, ReportsAFailureInTheWordsOfTheOperationThatTellsTheName) {
  // Contract: what stands in a wildcard's bracket is the engine's, which has read one before.
  const auto trying = [](int group) { return "[]|(x*)\\" + std::to_string(group) + "(a|b)*[c-w]"; };
  const std::string text(2'000'000, 'a');  // each byte leaves a way behind: more than there is room
  const struct {
    Strings elements;
    const char* named;
  } rows[] = {{{trying(3)}, "Runtime"}, {{"c", trying(4)}, "Internal"}};
  for (const auto& row : rows) {
    const auto list = ListOf(row.elements);
    const HostInSlot host(Gates{.level = false});
    EXPECT_EQ(list->Matches(text), 0);
    CUnicodeString object(text);
    EXPECT_EQ(list->Matches(&object, nullptr), 0);
    ASSERT_EQ(host->fPrinted.size(), 2u);
    const std::string words = " error in regex matching: '";
    EXPECT_THAT(host->fPrinted[0].message, testing::HasSubstr(": 'Runtime" + words));
    EXPECT_THAT(host->fPrinted[1].message, testing::HasSubstr(": '" + (row.named + words)));
  }
}

// ---- slot 75

TEST(CVariantRegex, NamesTheElementThatMatched) {
  Selvane::IVariant& list = *ListOf({"*.com", "regex(a+)", "regex(b)"}).Detach();
  CUnicodeString out("before");
  CUnicodeString hit("AAA");
  EXPECT_EQ(list.Matches(&hit, &out), 1);
  EXPECT_EQ(out.Text().Utf8(), "regex(a+)");
  EXPECT_STREQ(out.GetEncodingName(), "UTF-8");
  CUnicodeString miss("q");
  EXPECT_EQ(list.Matches(&miss, &out), 0);
  EXPECT_TRUE(out.IsEmpty());
  EXPECT_EQ(list.Matches(&hit, nullptr), 1);
  EXPECT_EQ(list.Matches(&miss, nullptr), 0);
  EXPECT_EQ(list.Matches(nullptr, &out), 0);
  list.Release();
}

TEST(CVariantRegex, LeavesTheOutputWhereThereIsNothingToAsk) {
  CUnicodeString text("a");
  CUnicodeString out("before");
  EXPECT_EQ(ListOf({"a"})->Matches(nullptr, &out), 0);
  EXPECT_EQ(out.Text().Utf8(), "before");
  EXPECT_EQ(ValueOf(VariantType::String, "a")->Matches(&text, &out), 0);
  EXPECT_EQ(out.Text().Utf8(), "before");

  const auto list = ListOf({"regex(()"});
  EXPECT_EQ(list->Matches(nullptr, &out), 0);  // no text, no build
  EXPECT_EQ(list->Matches(&text, &out), -1);
  EXPECT_EQ(out.Text().Utf8(), "before");
}

// Contract: a group inside an alternative can be taken for one, and names nothing.
TEST(CVariantRegex, ClearsTheOutputOfAHitWithoutAName) {
  const auto list = ListOf({"regex((?=(ab))x)", "regex(ab)"});
  CUnicodeString text("ab");
  CUnicodeString out("before");
  EXPECT_EQ(list->Matches(&text, &out), 1);
  EXPECT_TRUE(out.IsEmpty());
}

TEST(CVariantRegex, ReadsTextsOfEveryEncoding) {
  const auto list = ListOf({"caf\xC3\xA9"});
  CUnicodeString utf8("caf\xC3\xA9");
  CUnicodeString wide(std::string_view("c\0a\0f\0\xE9\0", 8), Charset::Utf16LE);
  CUnicodeString latin("caf\xE9", Charset::Latin1);
  CUnicodeString raw("caf\xC3\xA9", Charset::Raw);
  EXPECT_EQ(list->Matches(&utf8, nullptr), 1);
  EXPECT_EQ(list->Matches(&wide, nullptr), 1);
  EXPECT_EQ(list->Matches(&latin, nullptr), 0);  // one byte a character: taken as it is
  EXPECT_EQ(list->Matches(&raw, nullptr), 1);

  // Contract: two encodings count as one byte a character, and their bytes are no text to the
  // engine.
  const auto letter = ListOf({"a"});
  CUnicodeString ascii("A", Charset::Ascii);
  CUnicodeString utf16(std::string_view("\0a", 2), Charset::Utf16);
  CUnicodeString utf32(std::string_view("\0\0\0a", 4), Charset::Utf32);
  EXPECT_EQ(letter->Matches(&ascii, nullptr), 1);
  EXPECT_EQ(letter->Matches(&utf16, nullptr), 0);
  EXPECT_EQ(letter->Matches(&utf32, nullptr), 0);
  EXPECT_EQ(ListOf({"?a"})->Matches(&utf16, nullptr), 1);
  EXPECT_EQ(ListOf({"???a"})->Matches(&utf32, nullptr), 1);
}

// ---- threads

TEST(CVariantRegex, IsBuiltByWhoeverComesFirst) {
  for (int round = 0; round < 20; ++round) {
    const auto list = ListOf({"*.a.com", "regex(b\\d)", "c*"});
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([&list] {
        EXPECT_EQ(list->Matches("x.a.com"), 1);
        EXPECT_EQ(list->Matches("b1"), 1);
        EXPECT_EQ(list->Matches("b"), 0);
      });
    }
    for (auto& thread : threads) thread.join();
  }
}

// ---- searches of lists of texts

TEST(CVariantRegex, FindsTheFirstTextThatAnExpressionMatches) {
  const auto list = ListOf({"x", "ab", "abc"}, VariantType::StringList);
  const auto pattern = ValueOf(VariantType::Regex, "regex(a.*)");
  const CRegexPtr compiled = CRegex::Create("a.*", false);
  Selvane::IVariant* result = nullptr;
  ASSERT_TRUE(list->FindFirstMatching(pattern.Get(), &result, compiled.Get()));
  const CUsePtr<CVariant> found(dynamic_cast<CVariant*>(result));
  EXPECT_EQ(found->GetType(), VariantType::String);
  EXPECT_EQ(found->GetText()->Utf8(), "ab");

  result = nullptr;
  const auto none = CRegex::Create("q", false);
  EXPECT_FALSE(list->FindFirstMatching(pattern.Get(), &result, none.Get()));
  EXPECT_FALSE(list->FindFirstMatching(nullptr, &result, compiled.Get()));
  EXPECT_FALSE(list->FindFirstMatching(pattern.Get(), nullptr, compiled.Get()));
  EXPECT_FALSE(list->FindFirstMatching(pattern.Get(), &result, nullptr));
  EXPECT_FALSE(
      list->FindFirstMatching(ValueOf(VariantType::String, "a").Get(), &result, compiled.Get()));
  EXPECT_FALSE(list->FindFirstMatching(ListOf({"regex(a.*)"}).Get(), &result, compiled.Get()));
  EXPECT_FALSE(ListOf({}, VariantType::StringList)
                   ->FindFirstMatching(pattern.Get(), &result, compiled.Get()));
  EXPECT_FALSE(ListOf({"ab"})->FindFirstMatching(pattern.Get(), &result, compiled.Get()));
  EXPECT_EQ(result, nullptr);
}

// Contract: the searches answer for themselves, so that a failure of the engine is the caller's.
TEST(CVariantRegex, LetsAFailureOutOfItsSearches) {
  const HostInSlot quiet(Gates{.active = false});
  const std::string expression = "(x*)\\1(a|b)*[c-w]";
  const auto list = ListOf({std::string(2'000'000, 'a')}, VariantType::StringList);
  const CRegexPtr compiled = CRegex::Create(expression, false);
  Selvane::IVariant* result = nullptr;
  EXPECT_THROW(
      list->FindFirstMatching(ValueOf(VariantType::Regex, "a").Get(), &result, compiled.Get()),
      CRegexException);
  EXPECT_EQ(result, nullptr);
  CUnicodeString pattern("regex(" + expression + ")");
  EXPECT_THROW(list->FindExpression(&pattern), CRegexException);
}

struct FindRow {
  const char* pattern;
  Strings list;
  std::int64_t position;
};

TEST(CVariantRegex, FindsByExpression) {
  const FindRow rows[] = {
      // Ends that are told without the engine, without regard to case.
      {"regex(.*\\.b$)", {"A.B", "c"}, 0},
      {"regex(.*\\.b)", {"c", "A.B"}, 1},
      {"*.b", {"c", "A.B"}, 1},
      {"regex(.*a\\\\$)", {"a", "xA\\"}, 1},
      {"regex(.*b$$$)", {"ab"}, 0},
      {"*a\\*b", {"ab", "xa*b"}, 1},
      {"*a\\\\b", {"ab", "xa\\b"}, 1},
      {"regex(.*a]b})", {"a]b}"}, 0},
      {"*", {"x"}, 0},
      {"regex(.*)", {"x"}, 0},
      {"*", {}, -1},
      {"regex(.*)", {}, -1},
      {"*b", {""}, -1},
      {"*", {""}, 0},
      {"*strasse",
       {"STRA\xC3\x9F"
        "E"},
       0},  // full case folding
      // What only the engine can tell.
      {"regex(.*\\$)", {"a", "a$"}, 1},
      {"regex(.*a.b)", {"acb"}, 0},
      {"**b", {"ab"}, 0},
      {"*a\\b", {"a\\b", "ab"}, 1},
      {"a*", {"ba", "ab"}, 1},
      {"REGEX(.*B)", {"xb"}, 0},  // Contract: the form is told without regard to case here
      {"regex(()", {"("}, -1},
      {"", {"a", ""}, 1},
  };
  for (const FindRow& row : rows) {
    SCOPED_TRACE(row.pattern + testing::PrintToString(row.list));
    CUnicodeString pattern(row.pattern);
    for (const VariantType type : {VariantType::StringList, VariantType::RegexList,
                                   VariantType::MediaTypeList, VariantType::SSOConnectorList}) {
      EXPECT_EQ(ListOf(row.list, type)->FindExpression(&pattern), row.position);
    }
  }
}

TEST(CVariantRegex, FindsNothingInListsOfOtherThings) {
  CUnicodeString pattern("*");
  CVariant longs(VariantType::LongList);
  longs.AddToList(std::int64_t{1});
  EXPECT_EQ(longs.FindExpression(&pattern), -1);
  EXPECT_EQ(CVariant(VariantType::MixedList).FindExpression(&pattern), -1);
  EXPECT_EQ(CVariant(VariantType::IPList).FindExpression(&pattern), -1);
  EXPECT_EQ(ValueOf(VariantType::String, "a")->FindExpression(&pattern), -1);
  EXPECT_EQ(ListOf({"a", ""}, VariantType::StringList)->FindExpression(nullptr), 1);
}

}  // namespace
