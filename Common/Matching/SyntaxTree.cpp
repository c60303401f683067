#include "Common/Matching/SyntaxTree.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "Common/Matching/CharacterClasses.h"

namespace Matching {
namespace {

constexpr const char* kKindNames[] = {"empty",
                                      "bytes",
                                      "back-reference",
                                      "line-begin",
                                      "line-end",
                                      "word-boundary",
                                      "not-word-boundary",
                                      "look-ahead",
                                      "not-look-ahead",
                                      "group",
                                      "concat",
                                      "alternate",
                                      "repeat"};

void DumpSet(std::ostream& out, const ByteSet& set) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (int byte = 0; byte < 256; ++byte) {
    if (!set.Contains(static_cast<unsigned char>(byte))) continue;
    int last = byte;
    while (last < 255 && set.Contains(static_cast<unsigned char>(last + 1))) ++last;
    for (const int end : {byte, last}) {
      if (end > 0x20 && end < 0x7F) {
        out << static_cast<char>(end);
      } else {
        out << "\\x" << kDigits[end >> 4] << kDigits[end & 15];
      }
      if (byte == last) break;
      if (end == byte) out << '-';
    }
    byte = last;
  }
}

}  // namespace

void SyntaxTree::Clear() {
  constexpr std::size_t kMostKept = 256;
  fNodes.clear();
  if (fSets.size() > kMostKept) {
    fSets.clear();
    fSetIndex.clear();
    fByteSets.clear();
  }
  std::fill(std::begin(fKindCounts), std::end(fKindCounts), 0);
  fRoot = kNoNode;
  fGroupCount = 0;
}

std::uint32_t SyntaxTree::Intern(const ByteSet& set) {
  const auto [place, isNew] = fSetIndex.emplace(set, static_cast<std::uint32_t>(fSets.size()));
  if (isNew) fSets.push_back(set);
  return place->second;
}

std::uint32_t SyntaxTree::InternNewByte(unsigned char byte) {
  fByteSets.resize(256);
  const std::uint32_t index = Intern(BothCases(byte));
  fByteSets[byte] = index + 1;
  return index;
}

void SyntaxTree::Dump(std::ostream& out) const {
  std::vector<std::pair<NodeId, std::size_t>> open{{fRoot, 0}};
  while (!open.empty()) {
    const auto [id, depth] = open.back();
    open.pop_back();
    const Node& node = fNodes[id];
    out << std::string(2 * depth, ' ') << kKindNames[static_cast<int>(node.kind)];
    switch (node.kind) {
      case NodeKind::Bytes:
        out << ' ';
        DumpSet(out, fSets[node.value]);
        break;
      case NodeKind::BackReference:
      case NodeKind::Group:
        out << ' ' << node.value;
        break;
      case NodeKind::Repeat:
        out << ' ' << node.min << ',';
        if (node.max != kUnlimited) out << node.max;
        if (!node.isGreedy) out << " lazy";
        break;
      default:
        break;
    }
    out << '\n';
    if (node.nextSibling != kNoNode) open.emplace_back(node.nextSibling, depth);
    if (node.firstChild != kNoNode) open.emplace_back(node.firstChild, depth + 1);
  }
}

// One node without its children; a group is what it holds.
SyntaxTree::Copied SyntaxTree::Copy(const SyntaxTree& from, NodeId id) {
  while (from[id].kind == NodeKind::Group) id = from[id].firstChild;
  Node node = from[id];
  node.firstChild = node.nextSibling = kNoNode;
  if (node.kind == NodeKind::Bytes) node.value = Intern(from.Set(node.value));
  Count(node.kind);
  return {id, Add(node)};
}

void SyntaxTree::Append(NodeId parent, NodeId& last, NodeId child) {
  (last == kNoNode ? fNodes[parent].firstChild : fNodes[last].nextSibling) = child;
  last = child;
}

NodeId SyntaxTree::AddParts(const SyntaxTree& from, const std::vector<NodeId>& parts) {
  std::vector<Copied> open;
  NodeId root = kNoNode;
  if (parts.size() == 1) {
    open.push_back(Copy(from, parts.front()));
    root = open.back().to;
  } else {
    Node whole;
    whole.kind = parts.empty() ? NodeKind::Empty : NodeKind::Concat;
    Count(whole.kind);
    root = Add(whole);
    NodeId last = kNoNode;
    for (const NodeId part : parts) {
      open.push_back(Copy(from, part));
      Append(root, last, open.back().to);
    }
  }
  while (!open.empty()) {
    const Copied parent = open.back();
    open.pop_back();
    NodeId last = kNoNode;
    for (NodeId child = from[parent.from].firstChild; child != kNoNode;
         child = from[child].nextSibling) {
      open.push_back(Copy(from, child));
      Append(parent.to, last, open.back().to);
    }
  }
  return root;
}

}  // namespace Matching
