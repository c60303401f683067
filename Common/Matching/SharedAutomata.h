#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "Common/Matching/LazyDfa.h"
#include "Common/Matching/SyntaxTree.h"

namespace Matching {

// Which is the first of many expressions that matches a whole text? As a rule one run over the text
// tells, of an automaton that all of them share and that is built as texts ask for it.
//
// Expressions together can need many more states than each alone. So the members are halved, and
// the halves again, down to single ones. A text for which the budget of a common automaton does not
// suffice goes to those of the two halves, and one that fails too often is left alone: a list that
// is bad to merge costs a few runs a text, and in the end what it costs to run each by itself.
//
// Members are numbered in their order. Immutable to the outside; any number of threads may ask. The
// automata are built at first use, and published by compare-and-swap.
class SharedAutomata {
public:
  // Adds the members from `first` up to and without `end` to the tree, and their nodes to the
  // roots. They hold no look-aheads and no back-references.
  using AddMembers = std::function<void(std::uint32_t first, std::uint32_t end, SyntaxTree& tree,
                                        std::vector<NodeId>& roots)>;

  // The allowance is as in LazyDfa::Setup.
  SharedAutomata(std::uint32_t memberCount, std::size_t budget, MemoryAllowance* allowance);
  SharedAutomata(const SharedAutomata&) = delete;
  SharedAutomata& operator=(const SharedAutomata&) = delete;
  ~SharedAutomata();

  static constexpr std::size_t kBudget = std::size_t{1} << 20;  // bytes of each automaton

  // The first member from `first` up to and without `end` that matches, or `end`. runAlone(member)
  // says whether one does.
  template <class RunAlone>
  std::uint32_t FindFirst(std::string_view text, std::uint32_t first, std::uint32_t end,
                          const AddMembers& addMembers, RunAlone runAlone) const;

  [[nodiscard]] std::size_t MemorySize() const;

private:
  static constexpr std::uint32_t kMostMembers = 64;     // of one automaton
  static constexpr std::size_t kMostStates = 4096;      // of their programs
  static constexpr std::uint32_t kMostOpen = 1U << 16;  // texts that one may leave open

  struct Automaton;
  // The members of an automaton. Behind a node of several stand those of its first half, and then
  // those of its second: as many as it has members, twice, less one.
  struct Node {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
    mutable std::atomic<std::uint32_t> open{0};  // texts that it left open
    mutable std::atomic<const Automaton*> automaton{nullptr};
  };

  // What the members of a node that match say: the first one counted from the node's, or what
  // LazyDfa::FirstAccept says instead.
  [[nodiscard]] std::uint32_t Ask(const Node& node, std::string_view text,
                                  const AddMembers& addMembers) const;
  const Automaton* Build(const Node& node, const AddMembers& addMembers) const;

  const std::size_t fBudget;
  MemoryAllowance* const fAllowance;
  std::size_t fNodeCount = 0;
  std::unique_ptr<Node[]> fNodes;
};

template <class RunAlone>
std::uint32_t SharedAutomata::FindFirst(std::string_view text, std::uint32_t first,
                                        std::uint32_t end, const AddMembers& addMembers,
                                        RunAlone runAlone) const {
  for (std::size_t i = 0; i < fNodeCount;) {
    const Node& node = fNodes[i];
    if (node.first >= end) break;
    const std::size_t behind = i + 2 * std::size_t{node.count} - 1;
    if (node.first + node.count <= first) {
      i = behind;
      continue;
    }
    if (node.count == 1) {
      if (runAlone(node.first)) return node.first;
      i = behind;
      continue;
    }
    const std::uint32_t number = Ask(node, text, addMembers);
    if (number == kNoAccept) {
      i = behind;
    } else if (number != kOpenAccept && node.first + number >= first) {
      return std::min(node.first + number, end);
    } else {
      ++i;
    }
  }
  return end;
}

}  // namespace Matching
