// What asking a list leaves behind: the automata of its matcher and those of the scanners that are
// asked whole have one bound together.

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>

#include "Common/CRegexVectorHolder.h"
#include "tests/Common/HolderSupport.h"
#include "tests/support/AllocationCount.h"

namespace {

using HolderSupport::FindIn;
using HolderSupport::ListOf;
using HolderSupport::Strings;

constexpr long kBound = 128L << 20;  // bytes

// A name behind a star tells of its element only by the captures of its scanner, whose automaton
// needs a state for each byte of such a text: it remembers where each of the last "a" stood.
TEST(CRegexVectorMemory, ScannersThatAreAskedStayWithinTheBoundOfTheList) {
  constexpr int kElements = 2600;
  Strings elements;
  for (int i = 0; i < kElements; ++i) {
    elements.push_back("*a" + std::string(24, '?') + "*." + std::to_string(10'000 + i));
  }
  const CRegexVectorHolder holder(ListOf(elements));
  std::mt19937 random(3);
  std::string text;
  while (text.size() < 2200) text += "ab"[random() % 2];

  const long before = AllocatedBytes();
  for (int i = 0; i < kElements; i += 10) {
    ASSERT_EQ(FindIn(holder, text + "." + std::to_string(10'000 + i)), elements[i]);
    ASSERT_EQ(FindIn(holder, text.substr(text.size() - 20) + "." + std::to_string(10'000 + i)),
              std::nullopt);
  }
  const long taken = AllocatedBytes() - before;
  // Programs and trees are apart: they grow with the list's text alone.
  constexpr long kPrograms = kElements * 8'000L;
  EXPECT_LT(taken, kBound + kPrograms);
  EXPECT_GT(taken, kBound / 2) << "the bound was never met";
}

}  // namespace
