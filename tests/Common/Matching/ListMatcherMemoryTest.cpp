// What a list matcher says that it takes, held against what it has allocated.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Common/Matching/ListMatcher.h"
#include "tests/support/AllocationCount.h"

namespace {

using Matching::ListMatcher;
using Matching::ListScanner;
using Strings = std::vector<std::string>;

// A scanner for each ten elements, which are made by their numbers.
template <class Element>
Strings PatternsOf(std::size_t count, const std::string& before, Element element) {
  Strings patterns;
  for (std::size_t i = 0; i < count; i += 10) {
    std::string merged = before + "(";
    for (std::size_t j = i; j < i + 10; ++j) {
      merged += (j == i ? "(" : "|(") + element(std::to_string(j)) + ")";
    }
    patterns.push_back(merged + ")");
  }
  return patterns;
}

TEST(ListMatcherMemory, IsWhatWasAllocated) {
  const std::pair<const char*, Strings> rows[] = {
      {"ends", PatternsOf(20'000, ".*", [](auto n) { return "\\.name" + n + "\\.example\\.tld"; })},
      {"whole texts", PatternsOf(5'000, "", [](auto n) { return n + "\\.tld"; })},
      {"beginnings", PatternsOf(5'000, "", [](auto n) { return "www" + n + "\\..*"; })},
      {"inside", PatternsOf(5'000, "", [](auto n) { return ".*/path" + n + "/.*"; })},
      {"pieces", PatternsOf(5'000, "", [](auto n) { return ".*/path" + n + ".*\\.js.*"; })},
      {"required", PatternsOf(5'000, "", [](auto n) { return ".*key" + n + "=\\d+"; })},
      {"always", PatternsOf(1'000, "", [](auto n) { return "\\d{" + n + "}"; })},
  };
  for (const auto& [name, patterns] : rows) {
    std::vector<ListScanner> scanners;
    for (const std::string& pattern : patterns) scanners.push_back({pattern, 2, 10});
    const long before = AllocatedBytes();
    const auto matcher = std::make_unique<const ListMatcher>(scanners);
    const auto allocated = static_cast<double>(AllocatedBytes() - before);
    EXPECT_NEAR(static_cast<double>(matcher->MemorySize()), allocated, allocated / 50) << name;
  }
}

}  // namespace
