#include "module/Definition.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "module/Exports.h"
#include "tests/module/DefinitionEntries.h"
#include "tests/support/SharedData.h"

namespace {

std::size_t Count(std::string_view text, std::string_view what) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string_view::npos; ++at) ++count;
  return count;
}

// Looks at the text before the initialisers of any later priority have run.
struct EarlyReader {
  const std::size_t size = ModuleDefinition.size();
};
[[gnu::init_priority(201)]] const EarlyReader gEarlyReader;

// What a host was given once, byte for byte.
std::string GoldenText() {
  return ReadWholeFile(SourceDir() / "tests/module/definition.txt");
}

// Each test has a process of its own, so this one sees the text before anybody cleaned it.
TEST(Definition, IsBuiltWithEmptyLastSlotsThatTheFirstCallTakesOut) {
  EXPECT_EQ(Count(ModuleDefinition, ",)"), 24u);
  EXPECT_EQ(ModuleDefinition.size(), 3283u + 24u);

  const std::string text = GetModuleDefinition();
  EXPECT_EQ(Count(text, ",)"), 0u);
  EXPECT_EQ(Count(text, ",,"), 0u);
  EXPECT_EQ(text, GoldenText());
}

TEST(Definition, IsWholeBeforeAnythingElseIsBuilt) {
  EXPECT_EQ(gEarlyReader.size, 3283u + 24u);
}

TEST(Definition, IsTheSameTextAtTheSameAddressOnEveryCall) {
  const char* const first = GetModuleDefinition();
  const std::string text = first;
  EXPECT_EQ(static_cast<const void*>(GetModuleDefinition()), first);
  EXPECT_EQ(first, text);
}

TEST(Definition, IsOneLineOf37EntriesThatBeginsWithABlank) {
  const std::string text = GetModuleDefinition();
  EXPECT_EQ(text.front(), ' ');
  EXPECT_EQ(text.find_first_of("\r\n\t"), std::string::npos);

  const auto entries = ReadDefinition(text);
  ASSERT_EQ(entries.size(), 37u);
  std::multiset<std::string> keywords;
  std::set<std::string> functions;
  for (const auto& entry : entries) {
    keywords.insert(entry.keyword);
    functions.insert(entry.function);
  }
  EXPECT_EQ(keywords.count("TYPE"), 2u);
  EXPECT_EQ(keywords.count("CONST_FUNCTION"), 32u);
  EXPECT_EQ(keywords.count("FUNCTION"), 1u);
  EXPECT_EQ(keywords.count("PROCEDURE"), 2u);
  EXPECT_EQ(functions.size(), 37u) << "an export implements two entries";
}

TEST(Definition, TellsItsEntriesFromEachOther) {
  const auto entries = ReadDefinition(GetModuleDefinition());
  EXPECT_EQ(entries.front().keyword, "TYPE");
  EXPECT_EQ(entries.front().name, "Tessarin");
  EXPECT_EQ(entries.front().function, "tovrin_module_CreateTessarin");
  EXPECT_EQ(entries.back().keyword, "FUNCTION");
  EXPECT_EQ(entries.back().result, "BOOLEAN");
  EXPECT_EQ(entries.back().name, "Tessarin.SetIHost");
  EXPECT_EQ(entries.back().arguments, std::vector<std::string>{"DATAREF"});
  EXPECT_EQ(entries.back().function, "tovrin_module_TessarinSetIHost");
}

struct CleanRow {
  const char* name;
  const char* built;
  const char* cleaned;
};

constexpr CleanRow kCleanRows[] = {
    {"NothingToDo", " PROCEDURE P (A,B) : e", " PROCEDURE P (A,B) : e"},
    {"EmptyText", "", ""},
    {"EmptyLastSlot", " PROCEDURE P (A,) : e", " PROCEDURE P (A) : e"},
    {"EmptyMiddleSlot", "(A,,B)", "(A,B)"},
    {"TwoEmptyLastSlots", "(A,,)", "(A)"},
    {"EmptyFirstSlot", "(,A)", "( A)"},
    {"EmptyFirstSlots", "(,,A)", "( A)"},
    {"BlankBeforeComma", "( ,A)", "( A)"},
    {"OnlyEmptySlots", "(,)", "()"},
    // Contract: a pass goes on behind what it wrote, so of three commas two stay.
    {"ThreeCommas", "(A,,,B)", "(A,,B)"},
    {"FourCommas", "(A,,,,B)", "(A,,B)"},
    // The third pass makes the form that the fourth looks for.
    {"ThirdPassFeedsTheFourth", "(,,,A)", "( A)"},
};

TEST(Definition, LosesItsEmptySlotsInFourPasses) {
  for (const CleanRow& row : kCleanRows) {
    std::string text = row.built;
    CleanDefinition(text);
    EXPECT_EQ(text, row.cleaned) << row.name;
  }
}

TEST(DefinitionEntries, RefusesWhatIsNoDefinition) {
  const char* const texts[] = {
      "TYPE A : b",           " KIND A : b",        " TYPE A",
      " PROCEDURE P () : e",  " TYPE A : ",         " PROCEDURE P (A,) : e",
      " FUNCTION P (A) : e ", " PROCEDURE P(A) : e"};
  for (const char* text : texts) EXPECT_THROW(ReadDefinition(text), std::runtime_error) << text;
}

}  // namespace
