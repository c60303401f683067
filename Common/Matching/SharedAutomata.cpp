#include "Common/Matching/SharedAutomata.h"

#include <utility>

#include "Common/Matching/Program.h"

namespace Matching {

struct SharedAutomata::Automaton {
  Automaton(SyntaxTree members, const std::vector<NodeId>& roots, std::size_t budget,
            MemoryAllowance* allowance)
      : tree(std::move(members)),
        classes(ClassifyBytes(tree)),
        program(CompileMany(tree, roots)),
        states({.program = program,
                .tree = tree,
                .classes = classes,
                .budget = budget,
                .allowance = allowance}) {}

  const SyntaxTree tree;
  const ByteClasses classes;
  const Program program;
  const LazyDfa states;
};

SharedAutomata::SharedAutomata(std::uint32_t memberCount, std::size_t budget,
                               MemoryAllowance* allowance)
    : fBudget(budget),
      fAllowance(allowance),
      fNodeCount(memberCount == 0 ? 0 : 2 * std::size_t{memberCount} - 1) {
  if (fNodeCount == 0) return;
  fNodes = std::make_unique<Node[]>(fNodeCount);
  fNodes[0].count = memberCount;
  for (std::size_t i = 0; i < fNodeCount; ++i) {
    const Node& node = fNodes[i];
    if (node.count > kMostMembers) node.open.store(kMostOpen, std::memory_order_relaxed);
    if (node.count == 1) continue;
    const std::uint32_t half = node.count / 2;
    Node& left = fNodes[i + 1];
    left.first = node.first;
    left.count = half;
    Node& right = fNodes[i + 2 * std::size_t{half}];
    right.first = node.first + half;
    right.count = node.count - half;
  }
}

SharedAutomata::~SharedAutomata() {
  for (std::size_t i = 0; i < fNodeCount; ++i) {
    delete fNodes[i].automaton.load(std::memory_order_relaxed);
  }
}

std::uint32_t SharedAutomata::Ask(const Node& node, std::string_view text,
                                  const AddMembers& addMembers) const {
  // The count is a hint and orders nothing.
  if (node.open.load(std::memory_order_relaxed) >= kMostOpen) return kOpenAccept;
  // The acquire pairs with the release that published the automaton.
  const Automaton* automaton = node.automaton.load(std::memory_order_acquire);
  if (automaton == nullptr) automaton = Build(node, addMembers);
  const std::uint32_t number = automaton ? automaton->states.FirstAccept(text) : kOpenAccept;
  if (number == kOpenAccept) node.open.fetch_add(1, std::memory_order_relaxed);
  return number;
}

// Null when they are too many states for one.
const SharedAutomata::Automaton* SharedAutomata::Build(const Node& node,
                                                       const AddMembers& addMembers) const {
  SyntaxTree tree;
  std::vector<NodeId> roots;
  addMembers(node.first, node.first + node.count, tree, roots);
  auto built = std::make_unique<Automaton>(std::move(tree), roots, fBudget, fAllowance);
  if (built->program.states.size() > kMostStates) {
    node.open.store(kMostOpen, std::memory_order_relaxed);
    return nullptr;
  }
  const Automaton* automaton = nullptr;
  if (node.automaton.compare_exchange_strong(automaton, built.get(), std::memory_order_acq_rel,
                                             std::memory_order_acquire)) {
    return built.release();
  }
  return automaton;
}

std::size_t SharedAutomata::MemorySize() const {
  return fNodeCount * sizeof(Node);
}

}  // namespace Matching
