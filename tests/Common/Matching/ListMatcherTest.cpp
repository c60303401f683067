#include "Common/Matching/ListMatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Common/Matching/ByteFold.h"

namespace {

using Matching::ListMatcher;
using Matching::ListRoad;
using Matching::ListScanner;
using Strings = std::vector<std::string>;

// Scanners as a list makes them, beside the same ones compiled by the standard library.
class Scanners {
public:
  // The alternatives without their brackets, between what stands before and behind all of them.
  void Add(const std::string& before, const Strings& alternatives, const std::string& after,
           std::uint32_t groupsBefore = 0) {
    std::string pattern = before + "(";
    for (const std::string& alternative : alternatives) {
      pattern += (pattern.back() == ')' ? "|(" : "(") + alternative + ")";
    }
    AddWhole(pattern + ")" + after, groupsBefore + 2);
  }
  void AddWhole(const std::string& pattern, std::uint32_t firstGroup) {
    fPatterns.push_back(pattern);
    fFirstGroups.push_back(firstGroup);
    fRegexes.emplace_back(pattern, std::regex::ECMAScript | std::regex::icase);
  }

  std::vector<ListScanner> List() const {
    std::vector<ListScanner> list;
    for (std::size_t i = 0; i < fPatterns.size(); ++i) {
      const auto groups = static_cast<std::uint32_t>(fRegexes[i].mark_count());
      list.push_back({fPatterns[i], fFirstGroups[i], groups + 1 - fFirstGroups[i]});
    }
    return list;
  }
  bool Matches(std::size_t scanner, std::string_view text) const {
    return std::regex_match(text.begin(), text.end(), fRegexes[scanner]);
  }
  std::string_view Pattern(std::size_t scanner) const { return fPatterns[scanner]; }
  // The group of the alternative that the captures name, by the rule of a list's Find.
  std::uint32_t NamedGroup(std::size_t scanner, const std::string& text) const {
    std::smatch captures;
    EXPECT_TRUE(std::regex_match(text, captures, fRegexes[scanner]));
    const std::uint32_t first = fFirstGroups[scanner];
    for (std::uint32_t group = first; group < captures.size(); ++group) {
      if (captures[group].str() == captures[first - 1].str()) return group;
    }
    return 0;
  }
  std::string Show() const {
    std::string text;
    for (const std::string& pattern : fPatterns) text += pattern + "\n";
    return text;
  }

private:
  Strings fPatterns;
  std::vector<std::uint32_t> fFirstGroups;
  std::vector<std::regex> fRegexes;
};

// Scanners that nobody may ask.
struct Forbidden {
  bool Matches(std::size_t, std::string_view) const { throw std::logic_error("asked"); }
  std::string_view Pattern(std::size_t) const { throw std::logic_error("asked"); }
};

// Scanners whose texts alone may be read.
struct Patterns {
  const Scanners& scanners;
  bool Matches(std::size_t, std::string_view) const { throw std::logic_error("asked"); }
  std::string_view Pattern(std::size_t scanner) const { return scanners.Pattern(scanner); }
};

// Scanners that match nothing and count how often they are asked.
struct Counting {
  mutable int asked = 0;
  bool Matches(std::size_t, std::string_view) const {
    ++asked;
    return false;
  }
  std::string_view Pattern(std::size_t) const { throw std::logic_error("asked"); }
};

std::shared_ptr<Matching::MemoryAllowance> AllowanceOf(std::size_t bytes) {
  return std::make_shared<Matching::MemoryAllowance>(bytes);
}

const Matching::ListOptions kAllOptions[] = {
    {},
    {.useAnchored = false},
    {.useFloating = false},
    {.useRequired = false},
    {.useShared = false},
    {.useChance = false},
    {.useLoad = false},
    {.useChance = false, .useLoad = false},
    {.useFew = false},
    {.useVectors = false},
    {.mergePasses = false},
    {.useFew = false, .useVectors = false, .mergePasses = false},
    {.useAnchored = false, .useFloating = false},
    {.useAnchored = false, .useFloating = false, .useRequired = false},
    {.useAnchored = false, .useFloating = false, .useRequired = false, .useShared = false},
    // Automata for all of the list, of which some or all have no room for most texts.
    {.useAnchored = false, .useFloating = false, .useRequired = false, .sharedBudget = 2000},
    {.useAnchored = false, .useFloating = false, .useRequired = false, .sharedBudget = 0},
    {.useAnchored = false,
     .useFloating = false,
     .useRequired = false,
     .allowance = AllowanceOf(3000)},
    {.useAnchored = false, .useFloating = false, .allowance = AllowanceOf(0)},
};

void ExpectAgreement(const Scanners& scanners, const Strings& texts) {
  const std::vector<ListScanner> list = scanners.List();
  for (const auto& options : kAllOptions) {
    const ListMatcher matcher(list, options);
    for (const std::string& text : texts) {
      SCOPED_TRACE(scanners.Show() + "on '" + text + "'");
      std::optional<std::uint32_t> first;
      for (std::uint32_t i = 0; i < list.size() && !first; ++i) {
        if (scanners.Matches(i, text)) first = i;
      }
      ASSERT_EQ(matcher.Matches(text, scanners), first.has_value());
      const auto hit = matcher.FindFirst(text, scanners);
      ASSERT_EQ(hit.has_value(), first.has_value());
      if (!hit) continue;
      ASSERT_EQ(hit->scanner, *first);
      if (hit->group == 0) continue;
      ASSERT_EQ(hit->group, scanners.NamedGroup(*first, text));
    }
  }
}

TEST(ListMatcher, AgreesWithTheScannersOnNamesAndGlobs) {
  Scanners scanners;
  scanners.Add("^", {"example\\.com", "ad.*", "ex.*com", ".*mid.*", "a.c"}, "$");
  scanners.Add("^.*", {"\\.example\\.com", "com", "\\.net", "x.*\\.org"}, "$");
  scanners.Add("", {"^(.*\\.)?name\\.tld$", "^a\\d+b$", ".*needle\\d.*", "(a|b)*"}, "");
  scanners.AddWhole("(.)x\\1", 0);
  ExpectAgreement(scanners,
                  {"",        "example.com", "EXAMPLE.COM", "www.example.com", "xexample.com",
                   "ad",      "adx",         "ad\n",        "exACOM",          "a mid b",
                   "mid",     "abc",         "a\nc",        "a.net",           "net",
                   "x.y.org", "name.tld",    "a.name.tld",  "xname.tld",       "\n.name.tld",
                   "a1b",     "a12b",        "needle5",     "xx NEEDLE5 yy",   "ab",
                   "axa",     "axb",         "com",         "\ncom",           "q"});
}

TEST(ListMatcher, AgreesWhereAGapIsAllThereIs) {
  Scanners scanners;
  scanners.Add("^", {"b", ""}, "$");
  scanners.Add("^.*", {"", "a"}, "$");
  ExpectAgreement(scanners, {"", "a", "b", "\n", "a\n", "\ra", "xa"});
}

TEST(ListMatcher, AgreesWithinPrefixes) {
  Scanners scanners;
  scanners.Add("(ab", {"c", "d.*", ""}, ")", 1);
  scanners.Add("((x|y)z", {"c", "d"}, ")", 2);
  scanners.Add("((.*\\.)?", {"c", "\\.c"}, ")", 2);
  ExpectAgreement(scanners,
                  {"ab", "abc", "abd", "abdd", "xzc", "yzd", "zc", "c", ".c", "a.c", "a..c"});
}

TEST(ListMatcher, TakesAScannerOfAnotherShapeWhole) {
  Scanners scanners;
  // Two wildcards whose stray brackets close each other's.
  scanners.AddWhole("^((x[b)|([c]))$", 2);
  scanners.AddWhole("(a(b)|c)*", 2);
  ExpectAgreement(scanners, {"xb", "xc", "x|", "c", "ab", "abc", "", "cab"});
}

TEST(ListMatcher, NamesWhatBeginsLatestBehindAStar) {
  Scanners scanners;
  scanners.Add("^.*", {"ab.*c", "b.*", ".*ab", "c"}, "$");
  scanners.Add("^.*", {"x.*x.*", ".*x", "x.*y"}, "$");
  ExpectAgreement(scanners, {"abc", "abcabc", "bab", "ab", "bc", "xx", "xxx", "xaxy", "xyx", "cc"});
  const ListMatcher matcher(scanners.List());
  EXPECT_NE(matcher.FindFirst("abcabc", Forbidden())->group, 0u);
}

TEST(ListMatcher, NamesWhatTheCapturesName) {
  Scanners scanners;
  scanners.Add("^.*", {"\\.a\\.com", "om", "\\.com"}, "$");
  scanners.Add("^", {"abc", "ab.*", "a.*"}, "$");
  ExpectAgreement(scanners, {"x.a.com", "room", "x.com", "abc", "abd", "acd"});
  const ListMatcher matcher(scanners.List());
  const Forbidden none;                                      // literals decide all
  EXPECT_EQ(matcher.FindFirst("x.a.com", none)->group, 3u);  // "om": the star takes what it can
  EXPECT_EQ(matcher.FindFirst("abc", none)->group, 2u);
  EXPECT_EQ(matcher.FindFirst("acd", none)->group, 4u);
  EXPECT_FALSE(matcher.FindFirst("x", none));
}

// A name is that of the group, for whoever gave names.
TEST(ListMatcher, GivesTheNameOfTheGroupThatItNames) {
  const Strings names = {"dot a", "", "dot b"};
  const std::vector<ListScanner> list = {{"^.*((\\.(a|b)a)|(\\.b))$", 2, 3, names.data()},
                                         {"((a)|(b))", 2, 2}};
  const ListMatcher matcher(list);
  const std::pair<const char*, const char*> rows[] = {
      {"x.aa", "dot a"}, {"x.BA", "dot a"}, {".b", "dot b"}, {"a", ""}};
  for (const auto& [text, name] : rows) {
    const auto hit = matcher.FindFirst(text, Forbidden());
    ASSERT_TRUE(hit) << text;
    EXPECT_NE(hit->group, 0u) << text;
    EXPECT_EQ(hit->name, name) << text;
  }
}

// The plan: which road answers typical elements.
TEST(ListMatcher, PlansTheRoadOfEachElement) {
  const std::pair<const char*, std::pair<ListRoad, Strings>> rows[] = {
      {"example\\.com", {ListRoad::Anchored, {"example.com"}}},
      {"^(.*\\.)?name\\.tld$", {ListRoad::Anchored, {".name.tld", "name.tld"}}},
      {".*\\.name\\.tld", {ListRoad::Anchored, {".name.tld"}}},
      {"ads\\..*", {ListRoad::Anchored, {"ads."}}},
      {".*://h/p.*", {ListRoad::Floating, {"://h/p"}}},
      {".*://h/.*/track\\.js.*", {ListRoad::Floating, {"/track.js"}}},
      {"^.*GoKu-iOS/(\\d+[.\\d]+).*$", {ListRoad::Required, {"goku-ios/"}}},
      {"\\d+", {ListRoad::Always, {}}},
      {"(ab)\\1", {ListRoad::Required, {"ab"}}},
  };
  for (const auto& [pattern, expected] : rows) {
    SCOPED_TRACE(pattern);
    const auto plan = ListMatcher::Plan({{pattern}});
    ASSERT_EQ(plan.size(), 1u);
    EXPECT_EQ(plan[0].road, expected.first);
    EXPECT_THAT(plan[0].literals, testing::UnorderedElementsAreArray(expected.second));
  }
}

TEST(ListMatcher, PlansWhichElementsShareAnAutomaton) {
  const std::pair<const char*, ListRoad> rows[] = {
      {"((\\d+))", ListRoad::Shared},         {"(([a-z]\\b.*))", ListRoad::Shared},
      {"(((?=\\d)[a-z]))", ListRoad::Always}, {"(((?!\\d)[^a]))", ListRoad::Always},
      {"(([a-z])\\2)", ListRoad::Always},
  };
  for (const auto& [pattern, road] : rows) {
    const auto plan = ListMatcher::Plan({{pattern, 2, 1}});
    ASSERT_EQ(plan.size(), 1u) << pattern;
    EXPECT_EQ(plan[0].road, road) << pattern;
  }
  EXPECT_EQ(ListMatcher::Plan({{"((\\d+))", 2, 1}}, {.useShared = false})[0].road,
            ListRoad::Always);
}

// A literal that many texts have picks nothing: its element shares an automaton that is run anyway.
TEST(ListMatcher, PlansCommonLiteralsTogetherWithWhatHasNone) {
  const auto roadsOf = [](const std::vector<ListScanner>& list) {
    std::vector<ListRoad> roads;
    for (const auto& alternative : ListMatcher::Plan(list)) roads.push_back(alternative.road);
    return roads;
  };
  const ListScanner common{"((.*_\\d.*)|(.*rarity\\d.*))", 2, 2};
  const ListScanner none{"((\\d+))", 2, 1};
  using enum ListRoad;
  EXPECT_EQ(roadsOf({common}), (std::vector{Required, Required}));
  EXPECT_EQ(roadsOf({common, none}), (std::vector{Shared, Required, Shared}));
  EXPECT_EQ(roadsOf(std::vector<ListScanner>(40, common))[78], Shared);
  EXPECT_EQ(roadsOf({{"((.*e\\d.*))", 2, 1}}), (std::vector{Shared}));
}

// What a thousand elements could share is the worst choice for most of them.
TEST(ListMatcher, PlansALiteralThatFewShare) {
  const auto sharersOf = [](const char* literal, const Strings& elements,
                            const Matching::ListOptions& options) {
    std::string pattern = "(";
    for (const std::string& element : elements) {
      pattern += (pattern.back() == ')' ? "|(" : "(") + element + ")";
    }
    pattern += ")";
    const auto plan =
        ListMatcher::Plan({{pattern, 2, static_cast<std::uint32_t>(elements.size())}}, options);
    return std::ranges::count(plan, Strings{literal}, &ListMatcher::Alternative::literals);
  };
  const std::string letters = "etaosinrcd";
  Strings forms;
  Strings required;
  for (std::size_t i = 0; i < 1000; ++i) {
    const std::string own = {letters[i / 100], letters[i / 10 % 10], letters[i % 10]};
    forms.push_back(".*zq.*" + own + ".*");
    required.push_back("zq.*\\d" + own);
  }
  for (const Strings& elements : {forms, required}) {
    EXPECT_LT(sharersOf("zq", elements, {}), 100);
    EXPECT_EQ(sharersOf("zq", elements, {.useLoad = false}), 1000);
  }
  EXPECT_EQ(sharersOf("ete", {".*zq.*ete.*"}, {.useChance = false}), 1);  // the longest
}

TEST(ListMatcher, PlansWhyAScannerIsAskedAsAWhole) {
  using Dependence = ListMatcher::Dependence;
  const std::pair<const char*, Dependence> rows[] = {
      {"((\\d))", Dependence::None},
      {"((\\d)\\2)", Dependence::BackReference},
      {"\\d+", Dependence::Shape},
      {"((\\d)", Dependence::Unreadable},
  };
  for (const auto& [pattern, dependence] : rows) {
    const auto plan = ListMatcher::Plan({{pattern, 2, 1}});
    ASSERT_EQ(plan.size(), 1u) << pattern;
    EXPECT_EQ(plan[0].dependence, dependence) << pattern;
  }
}

TEST(ListMatcher, AsksAScannerOnceAboutAText) {
  Scanners scanners;
  scanners.AddWhole("(.*)key\\d\\1", 0);
  const ListMatcher matcher(scanners.List());
  const Counting counting;
  EXPECT_FALSE(matcher.Matches("key key key", counting));
  EXPECT_EQ(counting.asked, 1);
}

// However often the literal stands there that all of them share.
TEST(ListMatcher, AsksEachOfManyScannersOnceAboutAText) {
  Scanners scanners;
  for (int i = 0; i < 100; ++i) scanners.AddWhole("(.*)aq\\d\\1" + std::string(i % 7, '.'), 0);
  const ListMatcher matcher(scanners.List());
  std::string text;
  for (int i = 0; i < 300; ++i) text += "aq ";
  const Counting counting;
  EXPECT_FALSE(matcher.Matches(text, counting));
  EXPECT_EQ(counting.asked, 100);
  EXPECT_FALSE(matcher.FindFirst(text, counting));
  EXPECT_EQ(counting.asked, 200);
}

TEST(ListMatcher, BuildsAnAlternativesAutomatonOnceForAllThreads) {
  Scanners scanners;
  scanners.Add("", {".*key\\d.*", ".*word\\d.*", "\\d+"}, "");
  for (int round = 0; round < 20; ++round) {
    const ListMatcher matcher(scanners.List());
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
      threads.emplace_back([&] {
        const Patterns patterns{scanners};
        EXPECT_TRUE(matcher.Matches("a key1", patterns));
        EXPECT_TRUE(matcher.Matches("12", patterns));
        EXPECT_FALSE(matcher.Matches("a word", patterns));
      });
    }
    for (auto& thread : threads) thread.join();
  }
}

// Scanners that answer as told: 'y', 'n', or 'f' for a failure.
struct Told {
  const Scanners& scanners;
  std::string answers;
  bool Matches(std::size_t scanner, std::string_view) const {
    if (answers[scanner] == 'f') throw std::logic_error("failed");
    return answers[scanner] == 'y';
  }
  std::string_view Pattern(std::size_t scanner) const { return scanners.Pattern(scanner); }
};

// A failure is an answer like a match: the first scanner that gives one decides, by whatever road
// the others are answered and in whatever order the text leads to them.
TEST(ListMatcher, FailsWhereTheFirstScannerThatAnswersDoes) {
  Scanners scanners;
  scanners.AddWhole("(.)\\1.*", 0);        // asked about every text
  scanners.AddWhole("(.).*late.*\\1", 0);  // picked by its literal, late in the text
  scanners.AddWhole("(.)soon.*\\1", 0);    // and soon
  scanners.Add("", {".*sure"}, "");        // decided by a literal
  for (const auto& options : kAllOptions) {
    const ListMatcher matcher(scanners.List(), options);
    for (int row = 0; row < 27; ++row) {
      const char kinds[] = {'y', 'n', 'f'};
      const std::string asked = {kinds[row % 3], kinds[row / 3 % 3], kinds[row / 9]};
      for (const bool isSure : {false, true}) {
        const std::string text = isSure ? "soon late sure" : "soon late";
        const Told told{scanners, asked + (isSure ? 'y' : 'n')};
        SCOPED_TRACE(told.answers);
        const std::size_t first = told.answers.find_first_of("yf");
        if (first != std::string::npos && told.answers[first] == 'f') {
          EXPECT_THROW(matcher.Matches(text, told), std::logic_error);
          EXPECT_THROW(matcher.FindFirst(text, told), std::logic_error);
          continue;
        }
        EXPECT_EQ(matcher.Matches(text, told), first != std::string::npos);
        const auto hit = matcher.FindFirst(text, told);
        ASSERT_EQ(hit.has_value(), first != std::string::npos);
        if (hit) {
          EXPECT_EQ(hit->scanner, first);
        }
      }
    }
  }
}

TEST(ListMatcher, FindsFromAScannerOn) {
  Scanners scanners;
  scanners.Add("", {".*aa", "\\d+aa"}, "");
  scanners.Add("", {"[12]+aa"}, "");
  scanners.Add("", {"1.*"}, "");
  const ListMatcher matcher(scanners.List());
  for (std::uint32_t from = 0; from < 3; ++from) {
    const auto hit = matcher.FindFirst("1aa", scanners, from);
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->scanner, from);
  }
  EXPECT_FALSE(matcher.FindFirst("1aa", scanners, 3));
}

// A group that is no element's, and one that stands for none, is never named.
TEST(ListMatcher, NamesNoGroupBeyondTheElements) {
  Scanners scanners;
  scanners.AddWhole("(abc|x(()|(abc|x)))", 3);
  ExpectAgreement(scanners, {"abc", "x", "xabc", "xx", ""});
  const ListMatcher matcher(scanners.List());
  EXPECT_EQ(matcher.FindFirst("abc", scanners)->group, 0u);

  Scanners three;
  three.AddWhole("^((a)|(b)|(c))$", 2);
  std::vector<ListScanner> list = three.List();
  list[0].groupCount = 2;
  const ListMatcher narrow(list);
  for (const char* text : {"a", "b", "c"}) {
    EXPECT_EQ(narrow.FindFirst(text, three)->group, 0u);  // literals cannot tell all of them
  }
  for (const auto& alternative : ListMatcher::Plan(list)) EXPECT_LE(alternative.group, 3u);
}

std::string RandomOf(std::mt19937& random, const Strings& parts, std::size_t most) {
  std::string text;
  for (std::size_t i = random() % (most + 1); i > 0; --i) text += parts[random() % parts.size()];
  return text;
}

// The first alternative that matches is named without its captures, whatever answers it.
TEST(ListMatcher, NamesTheFirstAlternativeThatMatches) {
  Scanners scanners;
  scanners.Add("", {"[ab]+", "(a|x)\\d", ".*key\\d", "a.*"}, "");
  scanners.Add("^", {".*key.", "\\w+", "ab"}, "$");
  ExpectAgreement(scanners, {"", "a", "b", "a1", "key1", "akey1", "akeys", "-key-", "word", "-"});
  const ListMatcher matcher(scanners.List());
  const Patterns patterns{scanners};
  const std::pair<const char*, std::pair<std::uint32_t, std::uint32_t>> rows[] = {
      {"ab", {0, 2}},   {"x1", {0, 3}},    {"1key1", {0, 5}}, {"akey1", {0, 5}},
      {"akey", {0, 6}}, {"-key-", {1, 2}}, {"word", {1, 3}},
  };
  for (const auto& [text, expected] : rows) {
    const auto hit = matcher.FindFirst(text, patterns);
    ASSERT_TRUE(hit) << text;
    EXPECT_EQ(hit->scanner, expected.first) << text;
    EXPECT_EQ(hit->group, expected.second) << text;
  }
}

// What a look-ahead captured stays when its alternative fails, and can be taken for the element.
TEST(ListMatcher, AsksTheCapturesWhereALookAheadMayHaveLeftSome) {
  Scanners scanners;
  scanners.Add("", {"(?=(.*))b", "[ab]+", "ab"}, "");
  ExpectAgreement(scanners, {"b", "ab", "aab", "c", ""});
  EXPECT_EQ(ListMatcher(scanners.List()).FindFirst("ab", scanners)->group, 0u);

  Scanners without;  // groups in them
  without.Add("", {"(?=a.*)b", "(?!b)[ab]+", "ab"}, "");
  ExpectAgreement(without, {"b", "ab", "aab", "c", ""});
  EXPECT_EQ(ListMatcher(without.List()).FindFirst("ab", without)->group, 3u);
}

// Many elements that only automata decide, so that halves of them and halves of those are asked.
TEST(ListMatcher, AgreesWhereManyElementsShareAutomata) {
  std::mt19937 random(45);
  const Strings parts = {"[ab]", "\\d",     "[^a]", ".*",  "a?",       "(a|[bc])",
                         "^",    "[b1]{2}", "\\b",  "\\w", "(?=[ab])", "$"};
  const Strings textParts = {"a", "B", "1", "\n", "b", " ", "c"};
  for (int round = 0; round < 12; ++round) {
    Scanners scanners;
    for (std::size_t count = 1 + random() % 9; count > 0; --count) {
      Strings alternatives;
      for (std::size_t i = 1 + random() % 10; i > 0; --i) {
        alternatives.push_back(RandomOf(random, parts, 4));
      }
      scanners.Add(random() % 4 == 0 ? "^.*" : "", alternatives, random() % 4 == 0 ? "$" : "");
    }
    Strings texts;
    for (int i = 0; i < 30; ++i) texts.push_back(RandomOf(random, textParts, 6));
    ExpectAgreement(scanners, texts);
    if (HasFatalFailure()) return;
  }
}

// Each element needs a thousand states and more, on each of three roads.
TEST(ListMatcher, AutomataOfAListStayWithinOneBudget) {
  constexpr std::size_t kBudget = 100'000;
  Scanners scanners;
  for (int i = 0; i < 20; ++i) {
    const std::string number = std::to_string(100 + i);
    scanners.Add(
        "",
        {"[ab]*a[ab]{10}" + number, "\\d[ab]*b[ab]{10}\\d", "(?=c|[ab]*a[ab]{9}c)\\w+" + number},
        "");
  }
  std::mt19937 random(7);
  for (const bool useShared : {true, false}) {
    const ListMatcher matcher(scanners.List(),
                              {.useShared = useShared, .allowance = AllowanceOf(kBudget)});
    const Patterns patterns{scanners};
    for (int i = 0; i < 60; ++i) {
      std::string text;
      while (text.size() < 200) text += "ab"[random() % 2];
      const std::string number = std::to_string(100 + i % 20);
      for (const std::string& asked : {text + number, "1" + text + "2", text + "c" + number}) {
        const auto hit = matcher.FindFirst(asked, patterns);
        std::optional<std::uint32_t> first;
        for (std::uint32_t k = 0; k < 20 && !first; ++k) {
          if (scanners.Matches(k, asked)) first = k;
        }
        ASSERT_EQ(hit ? std::optional(hit->scanner) : std::nullopt, first) << asked;
      }
    }
    EXPECT_LE(matcher.MemoryUse().automata, kBudget);
    EXPECT_GT(matcher.MemoryUse().automata, kBudget / 2);
  }
}

TEST(ListMatcher, SharesAutomataAmongThreads) {
  Scanners scanners;
  for (const char* byte : {"x", "y", "z", "u", "v"}) {
    scanners.Add("", {std::string("\\d+[12]") + byte, std::string("[ab]+\\d") + byte}, "");
  }
  for (const std::size_t budget : {std::size_t{1500}, Matching::SharedAutomata::kBudget}) {
    for (int round = 0; round < 10; ++round) {
      const ListMatcher matcher(scanners.List(), {.useRequired = false, .sharedBudget = budget});
      std::vector<std::thread> threads;
      for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
          const Patterns patterns{scanners};
          EXPECT_EQ(matcher.FindFirst("ab1y", patterns)->scanner, 1u);
          EXPECT_EQ(matcher.FindFirst("3332z", patterns)->scanner, 2u);
          EXPECT_TRUE(matcher.Matches("aaaaab7v", patterns));
          EXPECT_FALSE(matcher.Matches("aaaaab7w", patterns));
        });
      }
      for (auto& thread : threads) thread.join();
    }
  }
}

TEST(ListMatcher, AgreesWithTheScannersOnRandomLists) {
  std::mt19937 random(44);
  const Strings globParts = {"a", "b", "\\.", ".*", "ab", ".", "\n"};
  const Strings regexParts = {"a",     "b",        "\\.", ".*", "[ab]", "\\d",
                              "(a|b)", "(.*\\.)?", "^",   "$",  "a?"};
  const Strings textParts = {"a", "B", ".", "ab", "1", "\n", "b"};
  for (int round = 0; round < 150; ++round) {
    Scanners scanners;
    for (std::size_t count = 1 + random() % 3; count > 0; --count) {
      const int kind = static_cast<int>(random() % 3);
      Strings alternatives;
      for (std::size_t i = 1 + random() % 4; i > 0; --i) {
        alternatives.push_back(RandomOf(random, kind == 2 ? regexParts : globParts, 4));
      }
      scanners.Add(kind == 0 ? "^" : kind == 1 ? "^.*" : "", alternatives, kind == 2 ? "" : "$");
    }
    Strings texts;
    for (int i = 0; i < 25; ++i) texts.push_back(RandomOf(random, textParts, 5));
    ExpectAgreement(scanners, texts);
    if (HasFatalFailure()) return;
  }
}

}  // namespace
