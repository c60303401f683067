#include "tools/tovrin/CListPlan.h"

#include <fmt/format.h>

#include <algorithm>

#include "Common/Matching/LiteralChance.h"

namespace RefHost {
namespace {

using Matching::ListMatcher;
using Matching::ListRoad;
using Matching::LiteralForm;
using Dependence = ListMatcher::Dependence;

const char* WordsFor(Dependence dependence) {
  switch (dependence) {
    case Dependence::BackReference:
      return "its scanner is asked: it refers back";
    case Dependence::Shape:
      return "its scanner is asked: brackets close across elements";
    case Dependence::Unreadable:
      return "its scanner is asked: it does not compile";
    default:
      return "";
  }
}

}  // namespace

CListPlan::CListPlan(const CRegexVectorHolder& holder) : fHolder(holder) {
  for (const auto& alternative : ListMatcher::Plan(holder.Scanners())) {
    const Road road = RoadOf(alternative);
    const bool runs = road >= Road::Required;
    fRows.push_back({road, &holder.ElementOf(alternative.scanner, alternative.group),
                     fmt::format("{}", fmt::join(alternative.literals, " ")),
                     runs ? WordsFor(alternative.dependence) : "",
                     ChanceOf(road, alternative.literals)});
    ++fCounts[static_cast<std::size_t>(road)];
  }
}

CListPlan::Road CListPlan::RoadOf(const ListMatcher::Alternative& alternative) {
  if (alternative.road == ListRoad::Required) return Road::Required;
  if (alternative.road == ListRoad::Shared) return Road::Shared;
  if (alternative.road == ListRoad::Always) return Road::Always;
  if (alternative.forms.size() != 1) return Road::Literals;
  const LiteralForm& form = alternative.forms.front();
  if (form.pieces.size() > 1) return Road::Pieces;
  if (form.gapBefore) return form.gapAfter ? Road::Inside : Road::End;
  return form.gapAfter ? Road::Beginning : Road::Exact;
}

double CListPlan::ChanceOf(Road road, const std::vector<std::string>& literals) {
  constexpr double kShare = 0.1;  // of a run for many
  if (road == Road::Always) return 1;
  if (road == Road::Shared) return kShare;
  return road == Road::Required ? Matching::ChanceOfAny(literals) : 0;
}

const char* CListPlan::NameOf(Road road) {
  constexpr std::array<const char*, kRoadCount> kNames = {
      "exact", "end", "beginning", "inside", "pieces", "literals", "required", "shared", "always"};
  return kNames[static_cast<std::size_t>(road)];
}

std::string CListPlan::Describe() const {
  std::string text;
  for (const Row& row : fRows) {
    text += fmt::format("{}\t{}\t{}", NameOf(row.road), *row.element, row.literals);
    text += *row.dependence ? fmt::format("\t{}\n", row.dependence) : "\n";
  }
  for (std::size_t i = 0; i < kRoadCount; ++i) {
    text += fmt::format("{}: {}\n", NameOf(static_cast<Road>(i)), fCounts[i]);
  }
  return text + DescribeMemory() + DescribeCosts();
}

std::string CListPlan::DescribeMemory() const {
  if (!fHolder.Matcher()) return {};
  const ListMatcher::Memory memory = fHolder.Matcher()->MemoryUse();
  return fmt::format(
      "memory: {} bytes for whole texts and ends, {} for beginnings, {} for literals inside, {} "
      "for "
      "elements, {} for automata so far\n",
      memory.ends, memory.beginnings, memory.floating, memory.alternatives, memory.automata);
}

std::string CListPlan::DescribeCosts() const {
  std::vector<const Row*> rows;
  for (const Row& row : fRows) {
    if (row.chance > 0) rows.push_back(&row);
  }
  std::stable_sort(rows.begin(), rows.end(), [](const Row* a, const Row* b) {
    return a->chance != b->chance ? a->chance > b->chance : a->element->size() > b->element->size();
  });
  if (rows.empty()) return "no element needs more than its literals\n";
  std::string text = "likely to cost most:\n";
  for (std::size_t i = 0; i < rows.size() && i < kMostCostly; ++i) {
    text += fmt::format("  {}\t{}\n", NameOf(rows[i]->road), *rows[i]->element);
  }
  return text;
}

}  // namespace RefHost
