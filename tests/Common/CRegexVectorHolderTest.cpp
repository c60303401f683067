#include "Common/CRegexVectorHolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Common/CUnicodeString.h"
#include "Common/CVariant.h"
#include "tests/Common/HolderSupport.h"
#include "tests/Common/QuestionedHost.h"

namespace {

using HolderSupport::Diagnostics;
using HolderSupport::Dump;
using HolderSupport::DumpOf;
using HolderSupport::FindIn;
using HolderSupport::ListOf;
using HolderSupport::PatternsOf;
using HolderSupport::Strings;
using HolderSupport::ValueOf;
using testing::ElementsAre;

// ---- what it is built from

TEST(CRegexVectorHolder, IsEmptyAndUsableForWhatHoldsNoExpressions) {
  const CRegexVectorHolder null{CUsePtr<CVariant>()};
  const CRegexVectorHolder text(ValueOf(VariantType::String, "regex(a)"));
  const CRegexVectorHolder none(ListOf({}));
  const CRegexVectorHolder empties(ListOf({"", ""}));
  const CRegexVectorHolder lone(ValueOf(VariantType::Regex, ""));
  for (const auto* holder : {&null, &text, &none, &empties}) {
    EXPECT_TRUE(holder->Entries().empty());
    EXPECT_FALSE(holder->IsUnusable());
    EXPECT_EQ(FindIn(*holder, "a"), std::nullopt);
    EXPECT_EQ(FindIn(*holder, ""), std::nullopt);
  }
  // A lone empty value is a wildcard, and matches the empty text.
  EXPECT_EQ(lone.Entries().size(), 1u);
  EXPECT_TRUE(lone.Find("", nullptr));
}

TEST(CRegexVectorHolder, KeepsALoneValueAsItIs) {
  const CRegexVectorHolder wildcard(ValueOf(VariantType::Regex, "a*"));
  EXPECT_EQ(PatternsOf(wildcard), Strings{"^a.*$"});
  EXPECT_EQ(FindIn(wildcard, "ABC"), "a*");
  // Contract: the fast path of a lone wildcard knows no line ends, the engine of a list does.
  EXPECT_EQ(FindIn(wildcard, "a\n"), "a*");
  EXPECT_EQ(FindIn(CRegexVectorHolder(ListOf({"a*"})), "a\n"), std::nullopt);

  const CRegexVectorHolder expression(ValueOf(VariantType::Regex, "regex(a+)"));
  EXPECT_EQ(FindIn(expression, "AAA"), "regex(a+)");
}

// Contract: an element is asked for its form as bytes, so capitals make a wildcard.
TEST(CRegexVectorHolder, TakesAFormInCapitalsForAWildcard) {
  EXPECT_EQ(FindIn(CRegexVectorHolder(ValueOf(VariantType::Regex, "REGEX(a*)")), "regex(ab)"),
            "REGEX(a*)");
  const CRegexVectorHolder list(ListOf({"REGEX(a*)"}));
  EXPECT_EQ(PatternsOf(list), Strings{"^((REGEX\\(a.*\\)))$"});
}

TEST(CRegexVectorHolder, ReadsElementsOfEveryEncodingAndSkipsThoseThatAreNone) {
  CUnicodeString latin("caf\xE9", Charset::Latin1);
  CUnicodeString wide(std::string_view("b\0\xE9\0", 4), Charset::Utf16LE);
  CUnicodeString raw("c\xE9", Charset::Raw);
  const auto list = MakeUseCounted<CVariant>(VariantType::RegexList);
  for (CUnicodeString* element : {&latin, &wide, &raw}) list->AddToList(element);
  list->AddToList(static_cast<CStringImpl*>(nullptr));
  EXPECT_EQ(PatternsOf(CRegexVectorHolder(list)), Strings{"^((caf\xC3\xA9)|(b\xC3\xA9)|(c\xE9))$"});

  const auto lone = MakeUseCounted<CVariant>();
  lone->SetString(VariantType::Regex, &latin);
  EXPECT_EQ(PatternsOf(CRegexVectorHolder(lone)), Strings{"^caf\xC3\xA9$"});
}

TEST(CRegexVectorHolder, LeavesTheSourceAloneOnAMiss) {
  const auto before = MakeUseCounted<CUnicodeString>("before");
  for (const auto& value : {ValueOf(VariantType::Regex, "a"), ListOf({"a", "*b", "regex(c(d)?)"}),
                            ListOf({"regex((a)\\1)"}), ListOf({})}) {
    CUsePtr<CUnicodeString> source = before;
    EXPECT_FALSE(CRegexVectorHolder(value).Find("x", &source));
    EXPECT_EQ(source, before);
  }
}

TEST(CRegexVectorHolder, SortsElementsIntoFourKinds) {
  const CRegexVectorHolder holder(
      ListOf({"regex(e1)", "*s1", "p1", "", "regex((b)\\1)", "regex(e2)", "*s2", "p2*"}));
  EXPECT_THAT(PatternsOf(holder),
              ElementsAre("(b)\\1", "^((p1)|(p2.*))$", "^.*((s1)|(s2))$", "((e1)|(e2))"));
  EXPECT_EQ(FindIn(holder, "bb"), "regex((b)\\1)");
  EXPECT_EQ(FindIn(holder, "p2x"), "p2*");
  EXPECT_EQ(FindIn(holder, "xs2"), "*s2");
  EXPECT_EQ(FindIn(holder, "E2"), "regex(e2)");
  EXPECT_EQ(FindIn(holder, "x"), std::nullopt);
}

TEST(CRegexVectorHolder, FollowsTheOrderOfTheKindsAndNotOfTheList) {
  const CRegexVectorHolder holder(ListOf({"regex(.*)", "*", "aa", "regex((a)\\1)"}));
  EXPECT_EQ(FindIn(holder, "aa"), "regex((a)\\1)");
  const CRegexVectorHolder without(ListOf({"regex(.*)", "*a", "aa"}));
  EXPECT_EQ(FindIn(without, "aa"), "aa");
  EXPECT_EQ(FindIn(without, "ba"), "*a");
  EXPECT_EQ(FindIn(without, "b"), "regex(.*)");
}

TEST(CRegexVectorHolder, NamesElementsOfMergedScanners) {
  const CRegexVectorHolder holder(ListOf({"*.a.com", "b*", "regex(c+)"}));
  EXPECT_EQ(FindIn(holder, "x.a.com"), "*.a.com");
  EXPECT_EQ(FindIn(holder, "CCC"), "regex(c+)");
}

// Contract: the star takes what it can, so the element with the shortest end is named.
TEST(CRegexVectorHolder, NamesTheShortestEndOfStarWildcards) {
  const CRegexVectorHolder holder(ListOf({"*.a.com", "*om"}));
  EXPECT_EQ(FindIn(holder, "x.a.com"), "*om");
}

// Contract: an alternative that took the empty text cannot be told from one that took no part.
TEST(CRegexVectorHolder, NamesTheFirstAlternativeOfAnEmptyMatch) {
  const CRegexVectorHolder holder(ListOf({"regex(a)", "regex(b*)"}));
  EXPECT_EQ(FindIn(holder, ""), "regex(a)");
  EXPECT_EQ(FindIn(holder, "b"), "regex(b*)");
}

// Contract: a group inside an alternative can hold the enclosing text and is then taken for one.
TEST(CRegexVectorHolder, TakesAGroupInsideAnAlternativeForOne) {
  const CRegexVectorHolder holder(ListOf({"regex((?=(ab))x)", "regex(ab)"}));
  EXPECT_EQ(FindIn(holder, "ab"), "");
}

TEST(CRegexVectorHolder, MatchesTextsWithZeroBytes) {
  const CRegexVectorHolder holder(ListOf({"a*b", "regex(x.y)"}));
  EXPECT_EQ(FindIn(holder, std::string_view("a\0b", 3)), "a*b");
  EXPECT_EQ(FindIn(holder, std::string_view("x\0y", 3)), "regex(x.y)");
}

// ---- merged scanners and their limits

TEST(CRegexVectorHolder, MergesTenElementsIntoAScanner) {
  for (const auto& [count, alternatives] : {std::pair<int, std::vector<std::size_t>>{9, {9}},
                                            {10, {10}},
                                            {11, {10, 1}},
                                            {20, {10, 10}},
                                            {21, {10, 10, 1}},
                                            {25, {10, 10, 5}}}) {
    Strings elements;
    for (int i = 0; i < count; ++i) elements.push_back("regex(e" + std::to_string(i) + ")");
    const CRegexVectorHolder holder(ListOf(elements));
    std::vector<std::size_t> sources;
    for (const auto& entry : holder.Entries()) sources.push_back(entry.fSources->size());
    EXPECT_EQ(sources, alternatives) << count;
    for (const std::string& element : elements) {
      EXPECT_EQ(FindIn(holder, element.substr(6, element.size() - 7)), element);
    }
  }
  EXPECT_EQ(PatternsOf(CRegexVectorHolder(ListOf({"regex(x)"}))), Strings{"((x))"});
}

TEST(CRegexVectorHolder, ClosesAScannerThatHasGrownLong) {
  // "(" and "(...)" around the element: the merged text has that many bytes more.
  for (const auto& [size, scanners] :
       {std::pair<std::size_t, std::size_t>{8188, 1}, {8189, 2}, {8190, 2}, {20000, 2}}) {
    const std::string literal(size, 'a');
    const CRegexVectorHolder holder(ListOf({"regex(" + literal + ")", "regex(b)"}));
    EXPECT_EQ(holder.Entries().size(), scanners) << size;
    EXPECT_EQ(FindIn(holder, literal), "regex(" + literal + ")");
    EXPECT_EQ(FindIn(holder, "b"), "regex(b)");
  }
}

TEST(CRegexVectorHolder, KeepsAnEmptySourceForEachGroupOfAnAlternative) {
  const CRegexVectorHolder holder(ListOf({"regex((a)(b))", "regex(c)"}));
  EXPECT_THAT(*holder.Entries().at(0).fSources, ElementsAre("regex((a)(b))", "", "", "regex(c)"));
  EXPECT_EQ(FindIn(holder, "ab"), "regex((a)(b))");
  EXPECT_EQ(FindIn(holder, "c"), "regex(c)");
}

// ---- what does not compile

TEST(CRegexVectorHolder, IsUnusableWithOneBadExpression) {
  const HostInSlot host(Gates{.level = false});
  const CRegexVectorHolder holder(ListOf({"regex(()", "regex(good)", "good*"}));
  EXPECT_TRUE(holder.IsUnusable());
  EXPECT_EQ(PatternsOf(holder), (Strings{"^((good.*))$", "((good))"}));  // the rest is built
  EXPECT_TRUE(CRegexVectorHolder(holder).IsUnusable());                  // and a copy is no better
  EXPECT_EQ(host->fPrinted.size(), 1u);
}

// What does not compile, and by whom and in which words the log is told of it, once each.
TEST(CRegexVectorHolder, TellsWhatDoesNotCompile) {
  const struct {
    CUsePtr<CVariant> value;
    const char* function;
    const char* position;
    const char* culprit;
  } rows[] = {
      {ValueOf(VariantType::Regex, "regex(()"), "CRegexVectorHolder", "CRegexVectorHolder",
       "regex(()"},
      {ValueOf(VariantType::Regex, "[b"), "CRegexVectorHolder", "CRegexVectorHolder", "[b"},
      {ListOf({"regex((a)\\1()"}), "CRegexVectorHolder", "CRegexVectorHolder", "regex((a)\\1()"},
      {ListOf({"regex(()"}), "ProcessRegexVectorCore", "ProcessRegexVector", "regex(()"},
      // Of a scanner the merged text, without what stands around it.
      {ListOf({"a", "[b"}), "ProcessRegexVectorCore", "ProcessRegexVector", "((a)|([b))"},
      {ListOf({"*[b"}), "ProcessRegexVectorCore", "ProcessRegexVector", "(([b))"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.culprit);
    const HostInSlot host(Gates{.level = false});
    const CRegexVectorHolder holder(row.value);
    EXPECT_TRUE(holder.IsUnusable());
    EXPECT_TRUE(holder.Entries().empty());
    ASSERT_EQ(host->fPrinted.size(), 1u);
    const PrintedLine& line = host->fPrinted[0];
    EXPECT_EQ(line.className, "CRegexVectorHolder");
    EXPECT_EQ(line.function, row.function);
    EXPECT_EQ(line.file, "Common\\CRegexVectorHolder");
    EXPECT_EQ(line.message,
              std::string("'CRegexVectorHolder::") + row.position +
                  "': 'Finding Regex in String' failed. Type of '" + row.culprit +
                  "' is 'not a valid regular expression', but it has to be 'a valid Regex'.");
  }
}

TEST(CRegexVectorHolder, IsBuiltWhateverTheLogThrows) {
  for (const Throwing kind : {Throwing::Standard, Throwing::Other}) {
    const HostInSlot host(Gates{});
    host->ThrowFromAll(kind);
    const CRegexVectorHolder holder(
        ListOf({"regex(()", "regex((a)\\1()", "regex(good)", "[b", "*c"}));
    EXPECT_TRUE(holder.IsUnusable());
    EXPECT_EQ(PatternsOf(holder), (Strings{"^.*((c))$", "((good))"}));
    EXPECT_TRUE(CRegexVectorHolder(ValueOf(VariantType::Regex, "regex(()")).IsUnusable());
  }
}

// Contract: a wildcard is not checked by itself; one with an open bracket takes its scanner along.
TEST(CRegexVectorHolder, LosesTheScannerOfABadWildcard) {
  const CRegexVectorHolder holder(ListOf({"a", "[b", "*c"}));
  EXPECT_TRUE(holder.IsUnusable());
  EXPECT_EQ(PatternsOf(holder), Strings{"^.*((c))$"});
}

// Contract: two open brackets can close each other's.
TEST(CRegexVectorHolder, ReadsStrayBracketsAsTheScannerHasThem) {
  const CRegexVectorHolder holder(ListOf({"x[b", "[c]"}));
  EXPECT_FALSE(holder.IsUnusable());
  EXPECT_TRUE(holder.Find("xb", nullptr));
  EXPECT_TRUE(holder.Find("xc", nullptr));
  EXPECT_TRUE(holder.Find("x|", nullptr));
  EXPECT_FALSE(holder.Find("c", nullptr));
}

// Contract: a scanner that fails leaves its sources to the next; such a list is not used.
TEST(CRegexVectorHolder, KeepsTheSourcesOfAFailedScanner) {
  const HostInSlot quiet(Gates{.level = false});
  Strings elements = {"[b"};
  for (int i = 1; i < 12; ++i) elements.push_back("e" + std::to_string(i));
  const CRegexVectorHolder holder(ListOf(elements));
  EXPECT_TRUE(holder.IsUnusable());
  ASSERT_EQ(PatternsOf(holder), Strings{"^((e10)|(e11))$"});
  EXPECT_EQ(*holder.Entries()[0].fSources, elements);
}

// An expression has a limit of states, and so of length; the rest of the list is built.
TEST(CRegexVectorHolder, IsUnusableWithAnElementOfAMebibyte) {
  const std::string longest(90'000, 'a');
  const CRegexVectorHolder usable(ListOf({"b" + longest, "*c" + longest, "regex(x)"}));
  EXPECT_FALSE(usable.IsUnusable());
  EXPECT_EQ(FindIn(usable, "B" + longest), "b" + longest);
  EXPECT_EQ(FindIn(usable, "zzc" + longest), "*c" + longest);
  EXPECT_EQ(FindIn(usable, "X"), "regex(x)");
  EXPECT_EQ(FindIn(usable, longest), std::nullopt);

  const std::string tooLong(std::size_t{1} << 20, 'a');
  for (const std::string& element : {tooLong, "*" + tooLong, "regex(" + tooLong + ")"}) {
    const HostInSlot host(Gates{.level = false});
    const CRegexVectorHolder holder(ListOf({element, "regex(x)", "y", "*z"}));
    EXPECT_TRUE(holder.IsUnusable());
    EXPECT_EQ(FindIn(holder, "X"), "regex(x)");
    const bool isReported =
        std::any_of(host->fPrinted.begin(), host->fPrinted.end(), [&](const PrintedLine& line) {
          return line.message.find("not a valid regular expression") != std::string::npos &&
                 line.message.find(tooLong) != std::string::npos;
        });
    EXPECT_TRUE(isReported);
  }
}

TEST(CRegexVectorHolder, FailsWhereEachElementCompilesAndTheirScannerDoesNot) {
  Strings elements(9, "regex([a-z]{9000})");
  EXPECT_FALSE(CRegexVectorHolder(ListOf(elements)).IsUnusable());
  elements.push_back("regex([a-z]{20000})");
  EXPECT_TRUE(CRegexVectorHolder(ListOf(elements)).IsUnusable());
}

TEST(HasBackReference, LooksForADigitBehindAnUnescapedBackslash) {
  for (const char* yes : {"\\1", "a\\9b", "\\\\\\1", "(a)\\1"})
    EXPECT_TRUE(HasBackReference(yes)) << yes;
  for (const char* no : {"", "\\", "\\0", "\\\\1", "a1", "\\a1"}) {
    EXPECT_FALSE(HasBackReference(no)) << no;
  }
}

// ---- diagnostics

constexpr Dump kCollectorDumps[] = {
    &CRegexVectorHolder::DumpTimeMeasurements, &CRegexVectorHolder::DumpExtracted,
    &CRegexVectorHolder::DumpRadixTrees,       &CRegexVectorHolder::DumpSplitted,
    &CRegexVectorHolder::DumpOriginal,
};

TEST(HolderDiagnostics, PrintNothingButScannersWhileTheyAreOff) {
  const CRegexVectorHolder holder(ListOf({"a", "regex(b)"}));
  for (const Dump dump : kCollectorDumps) EXPECT_EQ(DumpOf(holder, dump), Strings());
  EXPECT_THAT(DumpOf(holder, &CRegexVectorHolder::DumpScanners),
              ElementsAre("Generated merged scanners: #2 entries:", "^((a))$", "((b))"));
}

TEST(HolderDiagnostics, PrintEachStepOfAList) {
  const Diagnostics on;
  const CRegexVectorHolder holder(ListOf({"a*", "*b", "regex(c)"}));
  EXPECT_THAT(DumpOf(holder, &CRegexVectorHolder::DumpOriginal),
              ElementsAre("Original regexes:", "Collector #1: #1 entries:", "a.*",
                          "Collector #2: #1 entries:", "b", "Collector #3: #1 entries:", "c"));
  EXPECT_THAT(
      DumpOf(holder, &CRegexVectorHolder::DumpExtracted),
      ElementsAre("Extracted [prefix, suffix] elements:", "Collector #1: #1 entries:", "'' / ''",
                  "Collector #2: #1 entries:", "'' / ''", "Collector #3: #1 entries:", "'' / ''"));
  EXPECT_THAT(DumpOf(holder, &CRegexVectorHolder::DumpRadixTrees),
              ElementsAre("Radix Tree data:", "Collector #1: no data!", "Collector #2: no data!",
                          "Collector #3: no data!"));
  EXPECT_THAT(DumpOf(holder, &CRegexVectorHolder::DumpSplitted),
              ElementsAre("Splitted regexes:", "Collector #1: #0 entries!",
                          "Collector #2: #0 entries!", "Collector #3: #0 entries!"));
  const Strings times = DumpOf(holder, &CRegexVectorHolder::DumpTimeMeasurements);
  ASSERT_EQ(times.size(), 7u);
  EXPECT_EQ(times[0], "Time Measurements:");
  EXPECT_EQ(times[1], "Collector #1:");
  EXPECT_TRUE(times[2].starts_with("PrefixSuffixCollection:")) << times[2];
  EXPECT_TRUE(times[2].ends_with(" ms")) << times[2];
}

TEST(HolderDiagnostics, KnowThreeCollectorsOfAnEmptyListAndNoneOfALoneValue) {
  const Diagnostics on;
  const struct {
    Dump dump;
    const char* title;
    const char* nothing;  // of one collector of an empty list
  } rows[] = {
      {&CRegexVectorHolder::DumpOriginal, "Original regexes:", ": #0 entries!"},
      {&CRegexVectorHolder::DumpSplitted, "Splitted regexes:", ": #0 entries!"},
      {&CRegexVectorHolder::DumpRadixTrees, "Radix Tree data:", ": no data!"},
  };
  const CRegexVectorHolder empty(ListOf({}));
  const CRegexVectorHolder lone(ValueOf(VariantType::Regex, "a"));
  for (const auto& row : rows) {
    Strings expected = {row.title};
    for (const char* number : {"1", "2", "3"}) {
      expected.push_back(std::string("Collector #") + number + row.nothing);
    }
    EXPECT_EQ(DumpOf(empty, row.dump), expected);
    EXPECT_EQ(DumpOf(lone, row.dump), Strings{row.title});
  }
  EXPECT_THAT(
      DumpOf(empty, &CRegexVectorHolder::DumpExtracted),
      ElementsAre("Extracted [prefix, suffix] elements:", "Collector #1: #1 entries:", "'' / ''",
                  "Collector #2: #1 entries:", "'' / ''", "Collector #3: #1 entries:", "'' / ''"));
  EXPECT_THAT(DumpOf(lone, &CRegexVectorHolder::DumpExtracted),
              ElementsAre("Extracted [prefix, suffix] elements:"));
  EXPECT_EQ(DumpOf(empty, &CRegexVectorHolder::DumpTimeMeasurements).size(), 7u);
  EXPECT_THAT(DumpOf(lone, &CRegexVectorHolder::DumpTimeMeasurements),
              ElementsAre("Time Measurements:"));
  EXPECT_THAT(DumpOf(empty, &CRegexVectorHolder::DumpScanners),
              ElementsAre("Generated merged scanners: #0 entries:"));
  EXPECT_THAT(DumpOf(lone, &CRegexVectorHolder::DumpScanners),
              ElementsAre("Generated merged scanners: #1 entries:", "^a$"));
}

// The switch is read when a holder is built, and never again.
TEST(HolderDiagnostics, StayAsTheyWereWhenTheHolderWasBuilt) {
  const auto build = [] { return CRegexVectorHolder(ListOf({"a"})); };
  const CRegexVectorHolder quiet = build();
  SetRegexHolderDiagnostics(true);
  EXPECT_EQ(DumpOf(quiet, &CRegexVectorHolder::DumpOriginal), Strings());
  const CRegexVectorHolder kept = build();
  SetRegexHolderDiagnostics(false);
  EXPECT_EQ(DumpOf(kept, &CRegexVectorHolder::DumpOriginal).size(), 5u);
  EXPECT_EQ(FindIn(kept, "a"), "a");
}

TEST(HolderDiagnostics, StayWithTheOriginalOfACopy) {
  const CRegexVectorHolder quiet(ListOf({"a"}));
  const Diagnostics on;
  const CRegexVectorHolder holder(ListOf({"a"}));
  const CRegexVectorHolder copy(holder);
  EXPECT_EQ(DumpOf(copy, &CRegexVectorHolder::DumpOriginal), Strings{"Original regexes:"});
  EXPECT_EQ(copy.Entries().at(0).fScanner, holder.Entries().at(0).fScanner);  // shared
  EXPECT_EQ(FindIn(copy, "A"), "a");
  EXPECT_EQ(DumpOf(quiet, &CRegexVectorHolder::DumpOriginal), Strings());
  EXPECT_EQ(DumpOf(CRegexVectorHolder(quiet), &CRegexVectorHolder::DumpOriginal),
            Strings{"Original regexes:"});

  SetRegexHolderDiagnostics(false);
  EXPECT_EQ(DumpOf(CRegexVectorHolder(holder), &CRegexVectorHolder::DumpOriginal), Strings());
}

// ---- size and threads

TEST(CRegexVectorHolder, AnswersForAHundredThousandElements) {
  Strings elements;
  for (int i = 0; i < 100'000; ++i)
    elements.push_back("*.host" + std::to_string(i) + ".example.com");
  const CRegexVectorHolder holder(ListOf(elements));
  EXPECT_FALSE(holder.IsUnusable());
  EXPECT_EQ(holder.Entries().size(), 10'000u);
  EXPECT_EQ(FindIn(holder, "www.HOST77777.example.com"), "*.host77777.example.com");
  EXPECT_EQ(FindIn(holder, "www.host100000.example.com"), std::nullopt);
}

TEST(CRegexVectorHolder, AnswersFromEightThreads) {
  const CRegexVectorHolder holder(ListOf({"*.a.com", "b*", "regex(c\\d+)", "regex((d)\\1)"}));
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&holder] {
      for (int k = 0; k < 200; ++k) {
        EXPECT_EQ(FindIn(holder, "x.a.com"), "*.a.com");
        EXPECT_EQ(FindIn(holder, "c12"), "regex(c\\d+)");
        EXPECT_EQ(FindIn(holder, "dd"), "regex((d)\\1)");
        EXPECT_EQ(FindIn(holder, "q"), std::nullopt);
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

}  // namespace
