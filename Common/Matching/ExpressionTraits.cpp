#include "Common/Matching/ExpressionTraits.h"

#include <algorithm>

#include "Common/Matching/ByteSet.h"
#include "Common/Matching/FormMatch.h"
#include "Common/Matching/Simulation.h"

namespace Matching {

bool AreLookAheadCapturesPlain(const SyntaxTree& tree) {
  struct Visit {
    NodeId id;
    bool inLookAhead;
    bool isConditional;  // some way to a match does not set its groups
  };
  std::vector<Visit> open{{tree.Root(), false, false}};
  while (!open.empty()) {
    const Visit visit = open.back();
    open.pop_back();
    const Node& node = tree[visit.id];
    if (node.kind == NodeKind::Group && visit.inLookAhead && visit.isConditional) return false;
    const bool isBranch = node.kind == NodeKind::Alternate || node.kind == NodeKind::Repeat ||
                          node.kind == NodeKind::NotLookAhead;
    const bool isLookAhead =
        node.kind == NodeKind::LookAhead || node.kind == NodeKind::NotLookAhead;
    for (NodeId child = node.firstChild; child != kNoNode; child = tree[child].nextSibling) {
      open.push_back({child, visit.inLookAhead || isLookAhead, visit.isConditional || isBranch});
    }
  }
  return true;
}

std::size_t CountFirstBytes(const Program& program, const SyntaxTree& tree) {
  ByteSet bytes;
  StateSet seen(program.states.size());
  std::vector<StateId> open{program.start};
  while (!open.empty()) {
    const StateId id = open.back();
    open.pop_back();
    if (!seen.Insert(id)) continue;
    const State& state = program.states[id];
    if (state.op == Op::Bytes) bytes.Add(tree.Set(state.value));
    if (state.op == Op::Bytes || state.op == Op::Accept) continue;
    open.push_back(state.next);
    if (state.op == Op::Split) open.push_back(state.other);
  }
  return bytes.Count();
}

bool StartsAtBegin(const Program& program) {
  StateId id = program.start;
  while (program.states[id].op == Op::Save || program.states[id].op == Op::Jump) {
    id = program.states[id].next;
  }
  return program.states[id].op == Op::LineBegin;
}

std::optional<std::vector<LiteralForm>> FormsOf(const SyntaxTree& tree,
                                                const LiteralForms& literals) {
  constexpr std::size_t kMaxForms = 8;
  auto forms = literals.Whole({tree.Root()});
  if (!forms || forms->size() > kMaxForms || std::ranges::any_of(*forms, MixesLineEnds)) return {};
  return forms;
}

}  // namespace Matching
