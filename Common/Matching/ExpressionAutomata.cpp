#include "Common/Matching/ExpressionAutomata.h"

#include <memory>

#include "Common/Matching/BuiltOnce.h"

namespace Matching {
namespace {

Goal GoalOf(AutomatonKind kind) {
  switch (kind) {
    case AutomatonKind::WholeForward:
    case AutomatonKind::WholeBySuffixes:
    case AutomatonKind::UpToEndBySuffixes:
      return Goal::Whole;
    case AutomatonKind::FirstForward:
    case AutomatonKind::FirstForwardAnchored:
      return Goal::First;
    case AutomatonKind::LongestBackward:
      return Goal::Longest;
    default:
      return Goal::Any;
  }
}

}  // namespace

ExpressionAutomata::~ExpressionAutomata() {
  for (const auto& automaton : fAutomata) delete automaton.load(std::memory_order_relaxed);
  delete fBackward.load(std::memory_order_relaxed);
}

const LazyDfa& ExpressionAutomata::Of(AutomatonKind kind) const {
  return BuiltOnce(fAutomata[static_cast<std::size_t>(kind)],
                   [&] { return std::make_unique<const LazyDfa>(SetupOf(kind)); });
}

LookAheadRules ExpressionAutomata::RulesOf(AutomatonKind kind) {
  return {.hasPrevious = kind >= AutomatonKind::AllBySuffixes,
          .refuseEmpty = kind == AutomatonKind::AllOfNonEmptyBySuffixes};
}

std::size_t ExpressionAutomata::MemoryUsed() const {
  std::size_t used = 0;
  for (const auto& automaton : fAutomata) {
    const LazyDfa* const built = automaton.load(std::memory_order_acquire);
    if (built != nullptr) used += built->MemoryUsed();
  }
  return used;
}

LazyDfa::Setup ExpressionAutomata::SetupOf(AutomatonKind kind) const {
  const Goal goal = GoalOf(kind);
  const bool asksSuffixes = kind >= AutomatonKind::WholeBySuffixes;
  const bool isBackward = kind == AutomatonKind::LongestBackward || asksSuffixes;
  const bool ordersWays = goal == Goal::First || kind >= AutomatonKind::UpToEndBySuffixes;
  const bool isAnchored = kind != AutomatonKind::AnyForward && kind != AutomatonKind::FirstForward;
  return {.program = kind == AutomatonKind::LongestBackward ? BackwardProgram()
                     : ordersWays                           ? *fSource.unrolled
                                                            : fSource.program,
          .tree = fSource.tree,
          .classes = fSource.classes,
          .goal = goal,
          .isAnchored = isAnchored,
          .direction = isBackward ? Direction::Backward : Direction::Forward,
          .asksSuffixes = asksSuffixes,
          .lookAheads = RulesOf(kind),
          .budget = fBudget,
          .allowance = fAllowance};
}

const Program& ExpressionAutomata::BackwardProgram() const {
  return BuiltOnce(fBackward, [this] {
    return std::make_unique<const Program>(CompileProgram(
        fSource.tree, fSource.tree.Root(), fSource.lookAheadNumbers, Direction::Backward));
  });
}

}  // namespace Matching
