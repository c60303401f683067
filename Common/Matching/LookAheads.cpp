#include "Common/Matching/LookAheads.h"

#include <algorithm>
#include <iterator>
#include <regex>

namespace Matching {

LookAheads::LookAheads(const SyntaxTree& tree, const LookAheadNumbers& numbers,
                       const ByteClasses& classes, std::size_t budget, MemoryAllowance* allowance)
    : fTree(tree) {
  const std::vector<NodeId>& nodes = numbers.Nodes();
  fItems.resize(nodes.size());  // first of all: the automata refer to the programs in it
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    Item& item = fItems[i];
    item.program = CompileProgram(tree, tree[nodes[i]].firstChild, numbers, Direction::Backward);
    const auto has = [&item](auto... ops) {
      return std::ranges::any_of(item.program.states,
                                 [=](const State& state) { return ((state.op == ops) || ...); });
    };
    item.asksForBegin = has(Op::LineBegin, Op::WordBoundary, Op::NotWordBoundary);
    fAskForBegin |= item.asksForBegin;
    if (has(Op::LookAhead, Op::NotLookAhead) || nodes.size() > kMaxAutomata) continue;
    item.automaton = std::make_unique<LazyDfa>(LazyDfa::Setup{.program = item.program,
                                                              .tree = tree,
                                                              .classes = classes,
                                                              .goal = Goal::Every,
                                                              .isAnchored = false,
                                                              .direction = Direction::Backward,
                                                              .budget = budget / nodes.size(),
                                                              .allowance = allowance});
  }
}

std::size_t LookAheads::AutomatonMemory() const {
  std::size_t used = 0;
  for (const Item& item : fItems) used += item.automaton ? item.automaton->MemoryUsed() : 0;
  return used;
}

LookAheadTable LookAheads::Evaluate(const Subject& subject, bool refusesEmpty) const {
  const std::size_t places = subject.text.size() - subject.from + 1;
  if (places > kMaxTableBits / std::max<std::size_t>(fItems.size(), 1)) {
    throw std::regex_error(std::regex_constants::error_complexity);
  }
  LookAheadTable table(fItems.size(), subject.from, subject.text.size());
  for (std::uint32_t i = 0; i < fItems.size(); ++i) {
    const Item& item = fItems[i];
    if (item.automaton && !refusesEmpty && !(item.asksForBegin && !subject.hasPrevious)) {
      item.automaton->MarkEvery(subject, subject.text.size(), table, i);
    } else {
      EvaluateOne(i, subject, refusesEmpty, table);
    }
  }
  return table;
}

// Keeps apart what was reached by consuming and what begins here, and looks at each place twice: as
// the beginning of the look-ahead, and as a place inside of it.
void LookAheads::EvaluateOne(std::uint32_t number, const Subject& subject, bool refusesEmpty,
                             LookAheadTable& table) const {
  const Program& program = fItems[number].program;
  Simulation simulation(program, fTree, Goal::Every, true);
  Kernel fresh;
  simulation.Begin(fresh);
  std::ranges::sort(fresh.states);
  Kernel consumed;
  Kernel both;
  for (std::size_t pos = subject.text.size();; --pos) {
    Boundary inside = subject.BoundaryAt(pos);
    inside.isBegin = false;
    inside.isWordLeft = pos > 0 && IsWordByte(subject.At(pos - 1));
    Boundary begin = inside;
    if (!subject.hasPrevious) {
      begin.isBegin = true;
      begin.isWordLeft = false;
    }
    std::ranges::sort(consumed.states);
    both.states.clear();
    std::ranges::set_union(consumed.states, fresh.states, std::back_inserter(both.states));
    const Kernel& ended = refusesEmpty ? consumed : both;
    if (simulation.FirstAccept(ended, begin, &table, pos) != kNoAccept) table.Set(number, pos);
    if (pos == subject.from) return;
    simulation.Step(both, inside, subject.At(pos - 1), consumed, &table, pos);
  }
}

}  // namespace Matching
