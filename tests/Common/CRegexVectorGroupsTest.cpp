// How lists are merged where every list is grouped by shared beginnings. The size from which that
// happens is read at load, so these run with QRX_REGEX_OPTIMIZE_MIN_LIST_SIZE=0, as ctest sets it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/Common/HolderSupport.h"
#include "tests/Common/QuestionedHost.h"

namespace {

using HolderSupport::Diagnostics;
using HolderSupport::DumpOf;
using HolderSupport::FindIn;
using HolderSupport::ListOf;
using HolderSupport::PatternsOf;
using HolderSupport::Strings;
using testing::ElementsAre;

class HolderGroups : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_EQ(GetRegexOptimizeMinListSize(), 0u) << "run this through ctest";
  }
  Strings Messages() const {
    Strings messages;
    for (const PrintedLine& line : fHost->fPrinted) messages.push_back(line.message);
    return messages;
  }

  const HostInSlot fHost{Gates{.level = false}};  // lets level 1 through alone
};

std::string Form(const std::string& expression) {
  return "regex(" + expression + ")";
}

// So many expressions with one beginning that the tree has no reason to look for longer ones.
Strings Alike(const std::string& beginning, int count = 20) {
  Strings elements;
  for (int i = 0; i < count; ++i) {
    elements.push_back(Form(beginning + std::string(1, static_cast<char>('A' + i))));
  }
  return elements;
}

Strings AlikeWildcards() {
  Strings elements;
  for (char c = 'A'; c < 'U'; ++c) elements.push_back(std::string("xy") + c + "*");
  return elements;
}

// Expressions whose common beginning ends within an escape.
Strings Escapes() {
  Strings elements;
  for (const char c : std::string(".-,;:#!%&=@^$*+?/<>~")) {
    elements.push_back(Form(std::string("ab\\") + c));
  }
  return elements;
}

// The expressions of a scanner's list, with brackets around each.
std::string Alternatives(char from, char to) {
  std::string text;
  for (char c = from; c <= to; ++c) {
    if (c > from) text += '|';
    text += std::string("(") + c + ")";
  }
  return text;
}

Strings With(Strings elements, const Strings& more) {
  elements.insert(elements.end(), more.begin(), more.end());
  return elements;
}

TEST_F(HolderGroups, WriteASharedBeginningOnce) {
  const CRegexVectorHolder holder(ListOf(Alike("ab")));
  EXPECT_THAT(PatternsOf(holder), ElementsAre("(ab(" + Alternatives('A', 'J') + "))",
                                              "(ab(" + Alternatives('K', 'T') + "))"));
  EXPECT_EQ(holder.Entries()[0].FirstAlternativeGroup(), 3u);
  EXPECT_EQ(FindIn(holder, "abd"), "regex(abD)");
  EXPECT_EQ(FindIn(holder, "ABT"), "regex(abT)");
  EXPECT_EQ(FindIn(holder, "abZ"), std::nullopt);
  EXPECT_EQ(FindIn(holder, "d"), std::nullopt);
}

TEST_F(HolderGroups, WrapWildcardsAroundTheBeginning) {
  Strings elements;
  for (char c = 'A'; c < 'U'; ++c) elements.push_back(std::string("x.") + c + "*");
  for (char c = 'A'; c < 'U'; ++c) elements.push_back(std::string("*y") + c);
  const CRegexVectorHolder holder(ListOf(elements));
  const Strings patterns = PatternsOf(holder);
  ASSERT_EQ(patterns.size(), 4u);
  EXPECT_TRUE(patterns[0].starts_with("^(x\\.((A.*)|(B.*)")) << patterns[0];
  EXPECT_TRUE(patterns[0].ends_with("|(J.*)))$")) << patterns[0];
  EXPECT_EQ(patterns[3], "^.*(y(" + Alternatives('K', 'T') + "))$");
  EXPECT_EQ(FindIn(holder, "x.kk"), "x.K*");
  EXPECT_EQ(FindIn(holder, "zzyb"), "*yB");
}

// The first alternative's group stands behind those of the beginning.
TEST_F(HolderGroups, CountTheGroupsOfABeginning) {
  const std::pair<const char*, std::size_t> rows[] = {{"ab", 3}, {"(a)b", 4}, {"(a)(b)c", 5}};
  for (const auto& [beginning, first] : rows) {
    SCOPED_TRACE(beginning);
    Strings elements = Alike(beginning);
    elements.push_back(Form(std::string(beginning) + "(Z)z"));
    const CRegexVectorHolder holder(ListOf(elements));
    ASSERT_EQ(holder.Entries().size(), 3u);
    EXPECT_EQ(holder.Entries()[0].FirstAlternativeGroup(), first);
    const std::string begin = first == 5 ? "abc" : "ab";
    EXPECT_EQ(FindIn(holder, begin + "a"), Form(std::string(beginning) + "A"));
    EXPECT_EQ(FindIn(holder, begin + "T"), Form(std::string(beginning) + "T"));
    EXPECT_EQ(FindIn(holder, begin + "zz"), Form(std::string(beginning) + "(Z)z"));
  }
}

TEST_F(HolderGroups, DissolveThemselvesInAShortList) {
  const CRegexVectorHolder holder(ListOf({"regex(abcx)", "regex(abcy)", "regex(abcz)"}));
  EXPECT_THAT(PatternsOf(holder), ElementsAre("((abcx)|(abcy)|(abcz))"));
}

// What is left of a group behind its last full scanner stays one when it is long.
TEST_F(HolderGroups, KeepARestThatIsLong) {
  constexpr std::size_t kAround = 6;  // "(ab(" and "(" and ")"
  for (const std::size_t merged : {2048u, 2049u}) {
    const std::string rest(merged - kAround, 'z');
    const CRegexVectorHolder holder(ListOf(With(Alike("ab"), {Form("ab" + rest)})));
    ASSERT_EQ(holder.Entries().size(), 3u);
    EXPECT_EQ(PatternsOf(holder)[2],
              merged == 2048 ? "((ab" + rest + "))" : "(ab((" + rest + ")))");
    EXPECT_EQ(FindIn(holder, "ab" + rest), Form("ab" + rest));
  }
}

// A rest that is no expression of its own is tried again whole; the log tells of the first.
TEST_F(HolderGroups, TryARestThatDoesNotCompileWhole) {
  const std::pair<std::string, std::string> rows[] = {
      {"*", "xwww"}, {"+", "xwww"}, {"?", "x"}, {"{2}", "xww"}};
  for (const auto& [quantifier, text] : rows) {
    SCOPED_TRACE(quantifier);
    fHost->fPrinted.clear();
    const std::string element = Form("xw" + quantifier);
    const std::string longer = Form("xw" + quantifier + "z");
    const CRegexVectorHolder holder(ListOf(With(With({element}, Alike("xw")), {longer})));
    EXPECT_FALSE(holder.IsUnusable());
    EXPECT_EQ(PatternsOf(holder).back(), "((xw" + quantifier + ")|(xw" + quantifier + "z))");
    EXPECT_EQ(FindIn(holder, text), element);
    EXPECT_EQ(FindIn(holder, text + "z"), longer);
    EXPECT_EQ(FindIn(holder, "xwc"), "regex(xwC)");
    ASSERT_EQ(fHost->fPrinted.size(), 1u);
    EXPECT_EQ(fHost->fPrinted[0].className, "CRegexVectorHolder");
    EXPECT_EQ(fHost->fPrinted[0].function, "ProcessRegexVectorCore");
    EXPECT_EQ(fHost->fPrinted[0].message,
              "'CRegexVectorHolder::ProcessRegexVector: failed to apply prefix 'xw' for '" +
                  quantifier + "' continue w/o optimization'");
  }
}

TEST_F(HolderGroups, MayHandAnElementOverTwice) {
  // "*" goes at once, and with the short rest that stands behind it once more.
  const CRegexVectorHolder holder(ListOf(With(Alike("ab"), {"regex(ab*)", "regex(abU)"})));
  EXPECT_EQ(PatternsOf(holder).back(), "((ab*)|(ab*)|(abU))");
  EXPECT_EQ(FindIn(holder, "abbb"), "regex(ab*)");
  EXPECT_EQ(FindIn(holder, "abu"), "regex(abU)");
}

// A cut through an escape is no expression: the list is built without beginnings after all.
TEST_F(HolderGroups, AreGivenUpForABeginningThatDoesNotCompile) {
  const Diagnostics on;
  const CRegexVectorHolder holder(ListOf(With({"regex(()"}, Escapes())));
  const Strings patterns = PatternsOf(holder);
  ASSERT_EQ(patterns.size(), 2u);
  EXPECT_TRUE(patterns[0].starts_with("((ab\\.)|(ab\\-)")) << patterns[0];
  EXPECT_EQ(FindIn(holder, "ab~"), "regex(ab\\~)");
  EXPECT_TRUE(holder.IsUnusable());  // for its own reason

  // The failed attempt leaves no collector, and nothing but its messages.
  const Strings lines = DumpOf(holder, &CRegexVectorHolder::DumpExtracted);
  EXPECT_THAT(lines, testing::Contains("Collector #3: #1 entries:"));
  EXPECT_THAT(lines, testing::Not(testing::Contains("Collector #4: #1 entries:")));
  const auto isBad = [](const std::string& position, const std::string& culprit) {
    return "'CRegexVectorHolder::" + position + "': 'Finding Regex in String' failed. Type of '" +
           culprit + "' is 'not a valid regular expression', but it has to be 'a valid Regex'.";
  };
  EXPECT_THAT(Messages(),
              ElementsAre("'PrefixSuffixCollector::Calculate: failed parsing regex '(' continue "
                          "w/o optimization'",
                          isBad("ProcessRegexVectorCore #642", "ab\\"),
                          isBad("ProcessRegexVector", "regex(()")));
}

// Contract: the failure that ends a try with shared beginnings is caught, but it logs itself.
TEST_F(HolderGroups, LeaveTheFailureOfATryInTheLog) {
  const HostInSlot host(Gates{});
  const auto endOfTry = [&host](const Strings& elements) {
    host->fPrinted.clear();
    const CRegexVectorHolder holder(ListOf(elements));
    Strings ends;
    for (const PrintedLine& line : host->fPrinted) {
      if (line.className == "ARunTimeError") ends.push_back(line.message);
    }
    return ends;
  };
  EXPECT_THAT(endOfTry(Alike("ab")), ElementsAre());
  EXPECT_THAT(endOfTry(Escapes()),
              ElementsAre("RegexVector 'RegexVector' with reason: 'regex compilation with "
                          "optimization failed for prefix'"));
  EXPECT_THAT(endOfTry(With(AlikeWildcards(), {"[b"})),
              ElementsAre("RegexVector 'RegexVector' with reason: 'regex compilation with "
                          "optimization failed'"));
}

TEST_F(HolderGroups, LeaveAListUsableThatIsBuiltWithoutThem) {
  const CRegexVectorHolder holder(ListOf(Escapes()));
  EXPECT_FALSE(holder.IsUnusable());
  EXPECT_EQ(FindIn(holder, "ab."), "regex(ab\\.)");
}

// A scanner that fails with beginnings fails without them too, and its list is built once.
TEST_F(HolderGroups, EndWithTheSameResultForABadWildcard) {
  const CRegexVectorHolder holder(ListOf(With(AlikeWildcards(), {"[b", "*c"})));
  EXPECT_TRUE(holder.IsUnusable());
  const Strings patterns = PatternsOf(holder);
  ASSERT_EQ(patterns.size(), 3u);
  EXPECT_TRUE(patterns[0].starts_with("^((xyA.*)|")) << patterns[0];
  EXPECT_TRUE(patterns[1].starts_with("^((xyK.*)|")) << patterns[1];
  EXPECT_EQ(patterns[2], "^.*((c))$");
}

TEST_F(HolderGroups, KeepOneOfABadExpressionOut) {
  const CRegexVectorHolder holder(ListOf(With(Alike("ab"), {"regex(()"})));
  EXPECT_TRUE(holder.IsUnusable());
  EXPECT_EQ(holder.Entries().size(), 2u);
  EXPECT_EQ(FindIn(holder, "abA"), "regex(abA)");
}

TEST_F(HolderGroups, ServeAHundredThousandElementsWithOneBeginning) {
  Strings elements;
  for (int i = 0; i < 100'000; ++i)
    elements.push_back("regex(www\\.host" + std::to_string(i) + ")");
  const CRegexVectorHolder holder(ListOf(elements));
  EXPECT_FALSE(holder.IsUnusable());
  EXPECT_EQ(FindIn(holder, "www.HOST77777"), "regex(www\\.host77777)");
  EXPECT_EQ(FindIn(holder, "www.host100000"), std::nullopt);
  const std::string pattern = holder.Entries().front().fScanner->Pattern();
  EXPECT_TRUE(pattern.starts_with("(www\\.host")) << pattern;
}

TEST_F(HolderGroups, ShowInTheDiagnostics) {
  const Diagnostics on;
  const CRegexVectorHolder holder(ListOf({"a*", "regex(abcd)", "regex(abef)"}));
  EXPECT_THAT(
      DumpOf(holder, &CRegexVectorHolder::DumpScanners),
      ElementsAre("Generated merged scanners: #2 entries:", "^((a.*))$", "((abcd)|(abef))"));
  EXPECT_THAT(DumpOf(holder, &CRegexVectorHolder::DumpExtracted),
              ElementsAre("Extracted [prefix, suffix] elements:", "Collector #1: #2 entries:",
                          "'.*' / ''", "'' / ''", "Collector #2: #1 entries:", "'' / ''",
                          "Collector #3: #3 entries:", "'abcd' / ''", "'abef' / ''", "'' / ''"));
  EXPECT_THAT(DumpOf(holder, &CRegexVectorHolder::DumpRadixTrees),
              ElementsAre("Radix Tree data:", "Collector #1: as list: #1 entries:", ".*",
                          "Collector #1: as tree:", "RL (5)/U(1) .* #1", "Collector #2: no data!",
                          "Collector #3: as list: #2 entries:", "ab cd", "ab ef",
                          "Collector #3: as tree:", "RI (3)/B(2) ab #2", " L  (4)/B(2) cd #1",
                          " L  (4)/B(2) ef #1"));
  EXPECT_THAT(DumpOf(holder, &CRegexVectorHolder::DumpSplitted),
              ElementsAre("Splitted regexes:", "Collector #1: #1 entries:", "U:.*, ",
                          "Collector #2: #0 entries!", "Collector #3: #2 entries:", "B:abcd, ",
                          "B:abef, "));
  const Strings times = DumpOf(holder, &CRegexVectorHolder::DumpTimeMeasurements);
  ASSERT_EQ(times.size(), 13u);
  EXPECT_EQ(times[1], "Collector #1:");
  EXPECT_TRUE(times[2].starts_with("RegexSplitter:")) << times[2];
  EXPECT_TRUE(times[3].starts_with("RadixTree:")) << times[3];
  EXPECT_TRUE(times[4].starts_with("PrefixSuffixCollection:")) << times[4];
  EXPECT_EQ(times[5], "Collector #2:");
}

}  // namespace
