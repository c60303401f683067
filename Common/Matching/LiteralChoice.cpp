#include "Common/Matching/LiteralChoice.h"

#include <algorithm>
#include <cmath>

#include "Common/Matching/LiteralChance.h"

namespace Matching {

double LiteralChoice::CostOf(std::string_view literal) const {
  const double chance =
      fOptions.useChance ? ChanceOf(literal) : 1 / static_cast<double>(literal.size());
  const std::uint32_t taken = fTaken.Find(literal);
  return taken == LiteralPool::kNone ? chance : chance * (1.0 + fLoads[taken]);
}

double LiteralChoice::CostOfAny(const std::vector<std::string>& literals) const {
  double cost = 0;
  for (const std::string& literal : literals) cost += CostOf(literal);
  return cost;
}

std::uint32_t LiteralChoice::BestOf(const std::vector<std::string>& literals) const {
  const auto best = std::ranges::min_element(
      literals, {}, [this](const auto& literal) { return CostOf(literal); });
  return static_cast<std::uint32_t>(best - literals.begin());
}

void LiteralChoice::Take(std::string_view literal) {
  if (!fOptions.useLoad) return;
  const std::uint32_t number = fTaken.Add(literal);
  if (number == LiteralPool::kNone) return;
  if (number == fLoads.size()) fLoads.push_back(0);
  ++fLoads[number];
}

}  // namespace Matching
