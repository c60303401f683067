#include "Common/CRadixTree.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <utility>

namespace {

std::size_t CommonLength(std::string_view a, std::string_view b) {
  const auto end = std::mismatch(a.begin(), a.begin() + std::min(a.size(), b.size()), b.begin());
  return static_cast<std::size_t>(end.first - a.begin());
}

// The key's kind joins the node's, and the node waits for the next expression to pass.
void MergeKind(RadixNode& node, std::uint8_t kind) {
  if (!node.fCounted) return;
  node.fKind |= kind;
  node.fCounted = false;
}

RadixNode* ChildUnder(const RadixNode& node, char first) {
  const auto child = node.fChildren.find(static_cast<unsigned char>(first));
  return child == node.fChildren.end() ? nullptr : child->second.get();
}

// Visits the tree in map order: enter(node, depth) on the way down, leave(node) on the way up.
template <class Enter, class Leave>
void Walk(const RadixNode* root, Enter enter, Leave leave) {
  if (!root) return;
  struct Frame {
    const RadixNode* node;
    decltype(RadixNode::fChildren)::const_iterator next;
  };
  std::vector<Frame> path;
  const auto descend = [&](const RadixNode* node) {
    enter(*node, path.size());
    path.push_back({node, node->fChildren.begin()});
  };
  descend(root);
  while (!path.empty()) {
    Frame& top = path.back();
    if (top.next != top.node->fChildren.end()) {
      descend((top.next++)->second.get());
      continue;
    }
    leave(*top.node);
    path.pop_back();
  }
}

std::string PathText(const RadixNode& node) {
  std::vector<std::string_view> labels;
  for (const RadixNode* at = &node;; at = at->fParent) {
    labels.push_back(at->fLabel);
    if (at->fParent == at) break;
  }
  std::string text;
  for (auto label = labels.rbegin(); label != labels.rend(); ++label) text += *label;
  return text;
}

std::string FlagsName(std::uint8_t flags) {
  static constexpr std::array<const char*, 8> kNames = {"U", "R",  "I",  "RI",
                                                        "L", "RL", "IL", "RIL"};
  return flags < kNames.size() ? kNames[flags] : "?";
}

// What both printed forms say of a node in front of its label.
std::string NodeHead(const RadixNode& node, std::size_t flagsWidth) {
  std::string name = FlagsName(node.fNodeFlags);
  name.resize(std::max(name.size(), flagsWidth), ' ');
  return name + "(" + std::to_string(node.fNodeFlags) + ")/" + RadixKindName(node.fKind) + "(" +
         std::to_string(node.fKind) + ")";
}

}  // namespace

const char* RadixKindName(std::uint8_t kind) {
  static constexpr std::array<const char*, 4> kNames = {"?", "U", "B", "X"};
  return kind < kNames.size() ? kNames[kind] : "?";
}

// From the leaves up and by the way the parents show, so that it asks for no memory: what ended the
// filling may have been the want of it.
CRadixTree::~CRadixTree() {
  RadixNode* node = fRoot.get();
  while (node) {
    if (!node->fChildren.empty()) {
      node = node->fChildren.begin()->second.get();
    } else if (node == fRoot.get()) {
      return;
    } else {
      node = node->fParent;
      node->fChildren.erase(node->fChildren.begin());
    }
  }
}

void CRadixTree::insert(const std::vector<RadixKey>& keys) {
  std::string text;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    text += keys[i].text;
    InsertKey(text, keys[i].kind, keys[i].flag, i + 1 == keys.size());
  }
}

void CRadixTree::InsertKey(std::string_view text, std::uint8_t kind, std::uint8_t flag,
                           bool isLast) {
  if (!fRoot) {
    fRoot = std::make_unique<RadixNode>();
    fRoot->fLabel = text;
    fRoot->fParent = fRoot.get();
    fRoot->fNodeFlags = RadixNode::kRoot | (isLast ? RadixNode::kLeaf : 0);
    fRoot->fKind = kind;
    fRoot->fCounted = flag != 0 || isLast;
    fRoot->fCount = isLast ? 1 : 0;
    return;
  }

  const std::uint8_t nodeFlags = isLast ? RadixNode::kLeaf : RadixNode::kInner;
  std::vector<RadixNode*> path;  // the nodes above the one where the key ends
  RadixNode* result = nullptr;
  for (RadixNode* node = fRoot.get(); !result;) {
    if (node->fLabel == text) {
      MergeKind(*node, kind);
      if (isLast) {
        node->fNodeFlags |= RadixNode::kLeaf;
        node->fCounted = true;
        if (node->IsRoot()) ++node->fCount;
      }
      result = node;
      break;
    }
    path.push_back(node);
    const std::size_t common = CommonLength(node->fLabel, text);
    const bool runsOn = common == node->fLabel.size() && text.size() > common;
    if (RadixNode* child = runsOn ? ChildUnder(*node, text[common]) : nullptr) {
      text.remove_prefix(common);
      MergeKind(*node, kind);
      node = child;
    } else if (runsOn) {
      result = AddChild(*node, text.substr(common), kind, flag, nodeFlags, 0);
    } else {
      result = Split(*node, common, text, kind, flag, nodeFlags);
    }
  }

  // Passes the count up. After a split the result of a level is that level's own node, since the
  // upper half took the place of the node that was split.
  for (auto node = path.rbegin(); node != path.rend(); ++node) {
    if (isLast) {
      ++result->fCount;
      result->fCounted = true;
      if ((*node)->IsRoot() && result != *node) {
        ++(*node)->fCount;
        (*node)->fCounted = true;
      }
    }
    result = result->fParent;
  }
}

RadixNode* CRadixTree::AddChild(RadixNode& node, std::string_view label, std::uint8_t kind,
                                std::uint8_t flag, std::uint8_t nodeFlags, std::uint64_t count) {
  auto child = std::make_unique<RadixNode>();
  child->fLabel = label;
  child->fParent = &node;
  child->fNodeFlags = nodeFlags;
  child->fKind = kind;
  child->fCounted = flag != 0;
  child->fCount = count;
  MergeKind(node, kind);
  node.fNodeFlags |= RadixNode::kInner;
  RadixNode* const added = child.get();
  node.fChildren[static_cast<unsigned char>(label.front())] = std::move(child);
  return added;
}

// Puts an upper node with the first bytes of the label in the place of the node, which goes below
// it with the rest of its label, beside a new child for the rest of the key. Gives the upper node.
//
// All that can fail comes before the tree is touched: one that is left halfway is still destroyed.
RadixNode* CRadixTree::Split(RadixNode& node, std::size_t at, std::string_view key,
                             std::uint8_t kind, std::uint8_t flag, std::uint8_t nodeFlags) {
  auto fresh = std::make_unique<RadixNode>();
  RadixNode& upper = *fresh;
  const std::string_view rest = key.substr(at);

  upper.fLabel = key.substr(0, at);
  upper.fNodeFlags = RadixNode::kInner | nodeFlags;
  upper.fKind = kind | node.fKind;
  upper.fCounted = flag != 0;
  upper.fCount = node.fCount;
  if (!rest.empty()) {
    upper.fNodeFlags &= static_cast<std::uint8_t>(~RadixNode::kLeaf);
    AddChild(upper, rest, kind, flag, nodeFlags, nodeFlags == RadixNode::kLeaf ? 1 : 0);
  }
  std::unique_ptr<RadixNode>& below = upper.fChildren[static_cast<unsigned char>(node.fLabel[at])];

  std::unique_ptr<RadixNode>& slot = SlotOf(node);
  below = std::move(slot);
  slot = std::move(fresh);
  if (node.IsRoot()) {
    upper.fNodeFlags |= RadixNode::kRoot;
    node.fNodeFlags &= static_cast<std::uint8_t>(~RadixNode::kRoot);
    upper.fParent = &upper;
  } else {
    upper.fParent = node.fParent;
  }
  node.fLabel.erase(0, at);
  node.fParent = &upper;
  return &upper;
}

std::unique_ptr<RadixNode>& CRadixTree::SlotOf(RadixNode& node) {
  if (node.IsRoot()) return fRoot;
  return node.fParent->fChildren[static_cast<unsigned char>(node.fLabel.front())];
}

bool CRadixTree::Contains(const std::vector<RadixKey>& keys) const {
  const auto found = [this](std::string_view text) {
    const RadixNode* node = fRoot.get();
    while (node) {
      const std::size_t common = CommonLength(node->fLabel, text);
      if (common == 0 && !node->fLabel.empty()) return false;
      text.remove_prefix(common);
      if (text.empty()) return (node->fNodeFlags & RadixNode::kLeaf) != 0;
      node = ChildUnder(*node, text.front());
    }
    return false;
  };

  std::string text;
  return std::all_of(keys.begin(), keys.end(), [&](const RadixKey& key) {
    text += key.text;
    return found(text);
  });
}

void CRadixTree::GetPrefixes(float fraction, std::vector<std::string>& result) const {
  if (!fRoot) return;
  const float share = static_cast<float>(fRoot->fCount) * fraction;
  const auto minimum = std::max<std::uint64_t>(static_cast<std::uint64_t>(share), 1);

  struct Visit {
    std::uint64_t covered = 0;                // expressions that a deeper prefix serves already
    std::uint8_t childKinds = kRadixLiteral;  // what the children hand up
  };
  std::vector<Visit> visits;
  Walk(
      fRoot.get(), [&](const RadixNode&, std::size_t) { visits.emplace_back(); },
      [&](const RadixNode& node) {
        Visit visit = visits.back();
        visits.pop_back();
        // Units on both sides of this border: it lies inside a group or bracket, and would cut it.
        const bool cutsUnit = (node.fKind & kRadixUnit) && (visit.childKinds & kRadixUnit);
        if (node.fCount - visit.covered >= minimum && !cutsUnit) {
          result.push_back(PathText(node));
          visit.covered = node.fCount;
        }
        if (visits.empty()) return;
        visits.back().covered += visit.covered;
        visits.back().childKinds |= node.fKind;
      });
}

void CRadixTree::GetList(std::vector<std::string>& result) const {
  std::string labels;  // of the nodes above, each with a blank behind it
  Walk(
      fRoot.get(),
      [&](const RadixNode& node, std::size_t) {
        if (node.fNodeFlags & RadixNode::kLeaf) result.push_back(labels + node.fLabel);
        labels += node.fLabel + ' ';
      },
      [&](const RadixNode& node) { labels.resize(labels.size() - node.fLabel.size() - 1); });
}

void CRadixTree::GetTree(std::vector<std::string>& result) const {
  Walk(
      fRoot.get(),
      [&](const RadixNode& node, std::size_t depth) {
        result.push_back(std::string(depth, ' ') + NodeHead(node, 3) + " " + node.fLabel + " #" +
                         std::to_string(node.fCount));
      },
      [](const RadixNode&) {});
}

void CRadixTree::Dump(std::ostream& stream, const std::string& title) const {
  std::vector<std::string> lines;
  GetList(lines);
  stream << title << "\nList:\n";
  for (const auto& line : lines) stream << line << '\n';
  lines.clear();
  GetTree(lines);
  stream << "\n\nTree:\n";
  for (const auto& line : lines) stream << line << '\n';
  stream.flush();
}

std::string CRadixTree::Compact() const {
  std::string text;
  Walk(
      fRoot.get(),
      [&](const RadixNode& node, std::size_t) {
        text += NodeHead(node, 0) + node.fLabel + "#" + std::to_string(node.fCount) + "{";
      },
      [&](const RadixNode&) { text += '}'; });
  return text;
}
