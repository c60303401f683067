#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "Common/CRegexVectorHolder.h"

namespace RefHost {

// How a list is answered, element by element and summed up, before any text is asked about.
//
// The holder outlives it.
class CListPlan {
public:
  explicit CListPlan(const CRegexVectorHolder& holder);

  // A line an element (road, element, literals, and why it cannot run alone), the number of
  // elements a road, what takes memory, and the elements that are likely to cost most.
  std::string Describe() const;

private:
  // What answers an element.
  enum class Road : std::uint8_t {
    Exact,
    End,
    Beginning,
    Inside,
    Pieces,
    Literals,
    Required,
    Shared,
    Always
  };
  static constexpr std::size_t kRoadCount = 9;
  static constexpr std::size_t kMostCostly = 10;

  struct Row {
    Road road;
    const std::string* element;
    std::string literals;  // with a space between them
    const char* dependence;
    double chance;  // that a text makes it run, by how its literals look
  };

  static Road RoadOf(const Matching::ListMatcher::Alternative& alternative);
  static const char* NameOf(Road road);
  static double ChanceOf(Road road, const std::vector<std::string>& literals);
  std::string DescribeMemory() const;
  std::string DescribeCosts() const;

  const CRegexVectorHolder& fHolder;
  std::vector<Row> fRows;
  std::array<std::size_t, kRoadCount> fCounts{};
};

}  // namespace RefHost
