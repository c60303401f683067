#include "Common/Matching/Program.h"

#include <algorithm>

#include "Common/Matching/CharacterClasses.h"

namespace Matching {
namespace {

// Compiles from the end to the beginning, so that what follows a construct is known when the
// construct is built. The work that is left stands on a stack of tasks, the next one on top.
class ProgramCompiler {
public:
  ProgramCompiler(const SyntaxTree& tree, const LookAheadNumbers& lookAheads, Direction direction)
      : fTree(tree), fLookAheads(lookAheads), fDirection(direction) {}

  Program Compile(NodeId root) {
    if (fDirection == Direction::Forward) {
      for (const NodeId id : fLookAheads.Nodes()) {
        fGroups = {};
        fGroups.start = CompilePart(fTree[id].firstChild);
        fGroups.end = static_cast<StateId>(fProgram.states.size());
        fProgram.lookAheads.push_back(fGroups);
      }
      fThen = Add({.op = Op::Accept});
      fThen = Add({.op = Op::Save, .value = 1, .next = fThen});
      Run({TaskKind::Visit, root});
      fProgram.start = Add({.op = Op::Save, .value = 0, .next = fThen});
    } else {
      fProgram.start = CompilePart(root);
    }
    return std::move(fProgram);
  }

  Program CompileMany(const std::vector<NodeId>& roots) {
    for (std::uint32_t i = 0; i < roots.size(); ++i) {
      fThen = Add({.op = Op::Accept, .value = i});
      Run({TaskKind::Visit, roots[i]});
      fValues.push_back(fThen);
    }
    Choose(static_cast<std::uint32_t>(roots.size()));
    fProgram.start = fThen;
    return std::move(fProgram);
  }

private:
  enum class TaskKind : std::uint8_t {
    Visit,         // compile node `id` in front of fThen
    SaveBegin,     // the beginning of group `id`
    Continue,      // let fThen be `id` again
    Keep,          // put fThen on fValues
    Choose,        // the alternatives, `id` of them, are the last fValues
    CloseLoop,     // the body of loop `id` is compiled; enter by the loop
    ClosePlus,     // the same; enter by the body
    CloseOptional  // the body is compiled; the way around it goes to `id`
  };
  struct Task {
    TaskKind kind;
    std::uint32_t id;
    bool isGreedy = true;
  };

  StateId CompilePart(NodeId root) {
    fThen = Add({.op = Op::Accept});
    Run({TaskKind::Visit, root});
    return fThen;
  }

  void Run(Task first) {
    fTasks.push_back(first);
    while (!fTasks.empty()) {
      const Task task = fTasks.back();
      fTasks.pop_back();
      Perform(task);
    }
  }

  void Perform(const Task& task) {
    switch (task.kind) {
      case TaskKind::Visit:
        return Visit(task.id);
      case TaskKind::SaveBegin:
        fThen = Add({.op = Op::Save, .value = 2 * task.id, .next = fThen});
        return;
      case TaskKind::Continue:
        fThen = task.id;
        return;
      case TaskKind::Keep:
        fValues.push_back(fThen);
        return;
      case TaskKind::Choose:
        return Choose(task.id);
      case TaskKind::CloseLoop:
        EnterLoop(task.id, task.isGreedy);
        fThen = task.id;
        return;
      case TaskKind::ClosePlus:
        return EnterLoop(task.id, task.isGreedy);
      case TaskKind::CloseOptional:
        fThen = Add(LoopState(task.isGreedy, fThen, task.id));
        return;
    }
  }

  void Visit(NodeId id) {
    const Node& node = fTree[id];
    switch (node.kind) {
      case NodeKind::Empty:
        return;
      case NodeKind::Bytes:
        return Prepend(Op::Bytes, node.value);
      case NodeKind::BackReference:
        return Prepend(Op::BackReference, node.value);
      case NodeKind::LineBegin:
        return Prepend(Op::LineBegin, 0);
      case NodeKind::LineEnd:
        return Prepend(Op::LineEnd, 0);
      case NodeKind::WordBoundary:
        return Prepend(Op::WordBoundary, 0);
      case NodeKind::NotWordBoundary:
        return Prepend(Op::NotWordBoundary, 0);
      case NodeKind::LookAhead:
        return VisitLookAhead(Op::LookAhead, id);
      case NodeKind::NotLookAhead:
        return VisitLookAhead(Op::NotLookAhead, id);
      case NodeKind::Group:
        if (fDirection == Direction::Forward) {
          Prepend(Op::Save, 2 * node.value + 1);
          IncludeGroups(node.value, node.value + 1);
          fTasks.push_back({TaskKind::SaveBegin, node.value});
        }
        fTasks.push_back({TaskKind::Visit, node.firstChild});
        return;
      case NodeKind::Concat:
        return VisitConcat(node);
      case NodeKind::Alternate:
        return VisitAlternate(node);
      case NodeKind::Repeat:
        return VisitRepeat(node);
    }
  }

  void VisitLookAhead(Op op, NodeId id) {
    const std::uint32_t number = fLookAheads.Of(id);
    Prepend(op, number);
    if (fDirection == Direction::Backward) return;
    const LookAheadPart& part = fProgram.lookAheads[number];
    if (part.HasGroups()) IncludeGroups(part.firstGroup, part.endGroup);
  }

  void IncludeGroups(std::uint32_t first, std::uint32_t end) {
    fGroups.firstGroup = fGroups.HasGroups() ? std::min(fGroups.firstGroup, first) : first;
    fGroups.endGroup = std::max(fGroups.endGroup, end);
  }

  // The child that the text meets last is compiled first, so it ends on top of the tasks.
  void VisitConcat(const Node& node) {
    const std::size_t first = fTasks.size();
    for (NodeId child = node.firstChild; child != kNoNode; child = fTree[child].nextSibling) {
      fTasks.push_back({TaskKind::Visit, child});
    }
    if (fDirection == Direction::Backward) {
      std::reverse(fTasks.begin() + static_cast<std::ptrdiff_t>(first), fTasks.end());
    }
  }

  void VisitAlternate(const Node& node) {
    const std::size_t choose = fTasks.size();
    fTasks.push_back({TaskKind::Choose, 0});
    for (NodeId child = node.firstChild; child != kNoNode; child = fTree[child].nextSibling) {
      fTasks.push_back({TaskKind::Keep, 0});
      fTasks.push_back({TaskKind::Visit, child});
      fTasks.push_back({TaskKind::Continue, fThen});
      ++fTasks[choose].id;
    }
  }

  // The first alternative was compiled last, and is the last value.
  void Choose(std::uint32_t count) {
    const auto first = fValues.end() - count;
    fThen = *first;
    for (auto value = first + 1; value != fValues.end(); ++value) {
      fThen = Add({.op = Op::Split, .next = *value, .other = fThen});
    }
    fValues.erase(first, fValues.end());
  }

  void VisitRepeat(const Node& node) {
    const Task body{TaskKind::Visit, node.firstChild};
    if (node.isPlus) {
      fThen = AddLoop(fThen, node.isGreedy);
      fTasks.push_back({TaskKind::ClosePlus, fThen, node.isGreedy});
      fTasks.push_back(body);
      return;
    }
    fTasks.insert(fTasks.end(), node.min, body);
    if (node.max == kUnlimited) {
      fThen = AddLoop(fThen, node.isGreedy);
      fTasks.push_back({TaskKind::CloseLoop, fThen, node.isGreedy});
      fTasks.push_back(body);
      return;
    }
    for (std::uint32_t i = node.min; i < node.max; ++i) {
      fTasks.push_back({TaskKind::CloseOptional, fThen, node.isGreedy});
      fTasks.push_back(body);
    }
  }

  // A loop that goes to exit either way until it is entered.
  StateId AddLoop(StateId exit, bool isGreedy) { return Add(LoopState(isGreedy, exit, exit)); }

  // The body of the loop has just been compiled.
  void EnterLoop(StateId loop, bool isGreedy) {
    State& state = fProgram.states[loop];
    (isGreedy ? state.next : state.other) = fThen;
  }

  static State LoopState(bool isGreedy, StateId body, StateId exit) {
    return {.op = Op::Split,
            .isLoop = true,
            .isGreedy = isGreedy,
            .next = isGreedy ? body : exit,
            .other = isGreedy ? exit : body};
  }

  void Prepend(Op op, std::uint32_t value) {
    fThen = Add({.op = op, .value = value, .next = fThen});
  }

  StateId Add(const State& state) {
    fProgram.hasAssertions |= state.IsAssertion();
    fProgram.hasWordBoundaries |= state.op == Op::WordBoundary || state.op == Op::NotWordBoundary;
    fProgram.states.push_back(state);
    return static_cast<StateId>(fProgram.states.size() - 1);
  }

  const SyntaxTree& fTree;
  const LookAheadNumbers& fLookAheads;
  const Direction fDirection;
  Program fProgram;
  std::vector<Task> fTasks;
  std::vector<StateId> fValues;
  LookAheadPart fGroups;  // the look-ahead that is being compiled, and its groups so far
  StateId fThen = 0;      // what follows the construct that is compiled next
};

}  // namespace

Program CompileProgram(const SyntaxTree& tree, NodeId root, const LookAheadNumbers& lookAheads,
                       Direction direction) {
  return ProgramCompiler(tree, lookAheads, direction).Compile(root);
}

Program CompileMany(const SyntaxTree& tree, const std::vector<NodeId>& roots) {
  return ProgramCompiler(tree, LookAheadNumbers(tree), Direction::Forward).CompileMany(roots);
}

LookAheadNumbers::LookAheadNumbers(const SyntaxTree& tree) {
  if (!tree.Has(NodeKind::LookAhead) && !tree.Has(NodeKind::NotLookAhead)) return;
  std::vector<NodeId> open{tree.Root()};
  while (!open.empty()) {
    const NodeId id = open.back();
    open.pop_back();
    const Node& node = tree[id];
    if (node.kind == NodeKind::LookAhead || node.kind == NodeKind::NotLookAhead) {
      fNodes.push_back(id);
    }
    for (NodeId child = node.firstChild; child != kNoNode; child = tree[child].nextSibling) {
      open.push_back(child);
    }
  }
  std::ranges::reverse(fNodes);  // a node was listed before everything below it
  for (std::uint32_t i = 0; i < fNodes.size(); ++i) fNumbers[fNodes[i]] = i;
}

ByteClasses ClassifyBytes(const SyntaxTree& tree) {
  ByteClasses classes;
  const auto refine = [&classes](const ByteSet& set) {
    // Each class falls into its part outside the set, which keeps the number, and its part inside.
    std::array<int, 256> inside{};
    std::array<bool, 256> hasOutside{};
    inside.fill(-1);
    for (int byte = 0; byte < 256; ++byte) {
      if (!set.Contains(static_cast<unsigned char>(byte))) hasOutside[classes.classOf[byte]] = true;
    }
    for (int byte = 0; byte < 256; ++byte) {
      const auto old = classes.classOf[byte];
      if (!hasOutside[old] || !set.Contains(static_cast<unsigned char>(byte))) continue;
      if (inside[old] < 0) inside[old] = static_cast<int>(classes.count++);
      classes.classOf[byte] = static_cast<std::uint8_t>(inside[old]);
    }
  };
  for (const ByteSet& set : tree.Sets()) refine(set);
  if (tree.Has(NodeKind::WordBoundary) || tree.Has(NodeKind::NotWordBoundary)) {
    ByteSet words;
    for (int byte = 0; byte < 256; ++byte) {
      if (IsWordByte(static_cast<unsigned char>(byte))) words.Add(static_cast<unsigned char>(byte));
    }
    refine(words);
  }
  for (int byte = 0; byte < 256; ++byte) {
    classes.example[classes.classOf[byte]] = static_cast<std::uint8_t>(byte);
  }
  return classes;
}

}  // namespace Matching
