#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <ostream>
#include <unordered_map>
#include <vector>

#include "Common/Matching/ByteSet.h"

namespace Matching {

using NodeId = std::uint32_t;
inline constexpr NodeId kNoNode = std::numeric_limits<NodeId>::max();
inline constexpr std::uint32_t kUnlimited = std::numeric_limits<std::uint32_t>::max();

enum class NodeKind : std::uint8_t {
  Empty,          // matches the empty text
  Bytes,          // one byte out of Set(value)
  BackReference,  // what group `value` holds, without regard to case
  LineBegin,      // the beginning of the text
  LineEnd,        // the end of the text
  WordBoundary,
  NotWordBoundary,
  LookAhead,     // its only child matches from here on; what that captures stays
  NotLookAhead,  // it does not
  Group,         // its only child, captured as group `value`, from 1
  Concat,        // its children one after the other; at least two
  Alternate,     // the first child that leads to a match; at least two
  Repeat,        // its only child, `min` to `max` times
};

// One node; children are a chain from firstChild along nextSibling.
struct Node {
  NodeKind kind = NodeKind::Empty;
  bool isGreedy = true;  // Repeat: rather more than fewer
  // Repeat: written as "+". The same as {1,} in what it matches, but both passes run through one
  // copy of the child, which the rule of empty passes can tell apart.
  bool isPlus = false;
  std::uint32_t value = 0;  // index of a set, or number of a group
  std::uint32_t min = 0;
  std::uint32_t max = 0;  // kUnlimited: no limit
  NodeId firstChild = kNoNode;
  NodeId nextSibling = kNoNode;
};

// The syntax tree of one expression, and what matching and literal analysis both start from.
//
// Says what the expression means, not how it was spelt: a non-capturing group is its content, a
// literal is the set of its two cases. The tree may be as deep as the expression nests, so whoever
// walks it keeps a stack of his own.
//
// Built by the parser; read-only afterwards, and then safe from any thread.
class SyntaxTree {
public:
  // Empties the tree. Its memory serves the next one, and so do its sets as long as they are few.
  void Clear();
  NodeId Add(const Node& node) {
    fNodes.push_back(node);
    return static_cast<NodeId>(fNodes.size() - 1);
  }
  // The same for one byte out of a set, and counted.
  //
  // Perf: written in place; to read a copy back from the stack is to wait for the smaller pieces
  // that it was written in. See list_bench, build_s.
  NodeId AddBytes(std::uint32_t set) {
    Count(NodeKind::Bytes);
    Node& node = fNodes.emplace_back();
    node.kind = NodeKind::Bytes;
    node.value = set;
    return static_cast<NodeId>(fNodes.size() - 1);
  }
  // A node that matches what the parts of another tree match one behind the other, and captures
  // nothing.
  NodeId AddParts(const SyntaxTree& from, const std::vector<NodeId>& parts);
  // A tree of just that.
  static SyntaxTree OfParts(const SyntaxTree& from, const std::vector<NodeId>& parts) {
    SyntaxTree tree;
    tree.SetRoot(tree.AddParts(from, parts));
    return tree;
  }

  // The index of a set equal to this one; equal sets share an index.
  std::uint32_t Intern(const ByteSet& set);
  // The same for a byte in both its cases.
  std::uint32_t InternByte(unsigned char byte) {
    const bool isKnown = !fByteSets.empty() && fByteSets[byte] != 0;
    return isKnown ? fByteSets[byte] - 1 : InternNewByte(byte);
  }
  void SetRoot(NodeId root) { fRoot = root; }
  void SetGroupCount(std::uint32_t count) { fGroupCount = count; }

  [[nodiscard]] NodeId Root() const { return fRoot; }
  [[nodiscard]] const Node& operator[](NodeId id) const { return fNodes[id]; }
  [[nodiscard]] Node& operator[](NodeId id) { return fNodes[id]; }
  [[nodiscard]] std::size_t NodeCount() const { return fNodes.size(); }
  [[nodiscard]] const ByteSet& Set(std::uint32_t index) const { return fSets[index]; }
  [[nodiscard]] const std::vector<ByteSet>& Sets() const { return fSets; }
  // Groups without the whole match.
  [[nodiscard]] std::uint32_t GroupCount() const { return fGroupCount; }
  [[nodiscard]] bool Has(NodeKind kind) const { return fKindCounts[static_cast<int>(kind)] > 0; }
  void Count(NodeKind kind) { ++fKindCounts[static_cast<int>(kind)]; }

  // One node a line, indented by depth.
  void Dump(std::ostream& out) const;

private:
  struct Copied {
    NodeId from;
    NodeId to;
  };
  Copied Copy(const SyntaxTree& from, NodeId id);
  void Append(NodeId parent, NodeId& last, NodeId child);
  std::uint32_t InternNewByte(unsigned char byte);

  struct HashSet {
    std::size_t operator()(const ByteSet& set) const { return set.Hash(); }
  };

  std::vector<Node> fNodes;
  std::vector<ByteSet> fSets;
  std::unordered_map<ByteSet, std::uint32_t, HashSet> fSetIndex;  // where a set stands in fSets
  std::vector<std::uint32_t> fByteSets;  // by byte, the index that InternByte gave + 1; or empty
  std::uint32_t fKindCounts[static_cast<int>(NodeKind::Repeat) + 1] = {};
  NodeId fRoot = kNoNode;
  std::uint32_t fGroupCount = 0;
};

}  // namespace Matching
