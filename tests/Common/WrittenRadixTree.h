#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Common/CRadixTree.h"

// The radix tree as its contract writes it down, step by step and by recursion: the oracle of the
// one that is used. Its printed form is the same.
class WrittenRadixTree {
public:
  void Insert(const std::vector<RadixKey>& keys) {
    std::string text;
    for (std::size_t i = 0; i < keys.size(); ++i) {
      text += keys[i].text;
      Insert({text, keys[i].kind, 0}, fRoot, nullptr, 0, i + 1 == keys.size());
    }
  }

  std::vector<std::string> Nodes() const {
    std::vector<std::string> lines;
    if (fRoot) Print(*fRoot, "", lines);
    return lines;
  }

  std::vector<std::string> Prefixes(float fraction) const {
    std::vector<std::string> prefixes;
    if (!fRoot) return prefixes;
    auto minimum = static_cast<std::uint64_t>(static_cast<float>(fRoot->count) * fraction);
    if (minimum == 0) minimum = 1;
    std::uint8_t kind = 0;
    Visit(*fRoot, minimum, kind, prefixes);
    return prefixes;
  }

private:
  struct Node {
    std::string label;
    std::map<std::string, Node*> children;  // by the first byte of their label
    Node* parent = nullptr;                 // the root's is itself
    std::uint8_t flags = 0;                 // 1 root, 2 inner, 4 a key ends here
    std::uint8_t kind = 0;
    bool isCounted = false;
    std::uint64_t count = 0;
  };

  Node* NewNode(const std::string& label, std::uint8_t flags, std::uint8_t kind) {
    fNodes.push_back(std::make_unique<Node>());
    Node* const node = fNodes.back().get();
    node->label = label;
    node->flags = flags;
    node->kind = kind;
    return node;
  }

  static void Merge(Node& node, const RadixKey& key) {
    if (node.isCounted) node.kind |= key.kind;
    node.isCounted = false;
  }

  Node* AddChild(Node& node, const RadixKey& key, const std::string& label, std::uint8_t flags,
                 std::uint64_t count) {
    Node* const child = NewNode(label, flags, key.kind);
    child->count = count;
    Merge(node, key);
    node.flags |= 2;
    node.children[label.substr(0, 1)] = child;
    child->parent = &node;
    return child;
  }

  Node* Split(Node& node, std::size_t at, const RadixKey& key, std::uint8_t flags) {
    const std::string rest = key.text.substr(at);
    Node* const upper = NewNode(key.text.substr(0, at), flags | 2, key.kind | node.kind);
    upper->count = node.count;
    node.label.erase(0, at);
    if (!rest.empty()) {
      upper->flags &= ~4;
      AddChild(*upper, key, rest, flags, flags == 4 ? 1 : 0);
    }
    if (&node == fRoot) {
      upper->flags |= 1;
      node.flags &= ~1;
      upper->parent = fRoot = upper;
    } else {
      upper->parent = node.parent;
      node.parent->children[upper->label.substr(0, 1)] = upper;
    }
    node.parent = upper;
    upper->children[node.label.substr(0, 1)] = &node;
    return upper;
  }

  // Gives the parent of what it changed, with which the caller goes on counting.
  Node* Insert(RadixKey key, Node* node, Node* parent, std::size_t matched, bool isLast) {
    const std::uint8_t flags = isLast ? 4 : 2;
    if (!node && !parent) {
      fRoot = NewNode(key.text, isLast ? 5 : 1, key.kind);
      fRoot->parent = fRoot;
      fRoot->isCounted = isLast;
      fRoot->count = isLast ? 1 : 0;
      return fRoot;
    }
    if (!node) {
      const bool isBelow = matched == parent->label.size() && key.text.size() > matched;
      return isBelow ? AddChild(*parent, key, key.text.substr(matched), flags, 0)
                     : Split(*parent, matched, key, flags);
    }
    if (node->label == key.text) {
      Merge(*node, key);
      if (isLast) {
        node->flags |= 4;
        node->isCounted = true;
        if (node == fRoot) ++node->count;
      }
      return node;
    }
    std::size_t common = 0;
    while (common < node->label.size() && common < key.text.size() &&
           node->label[common] == key.text[common]) {
      ++common;
    }
    Node* child = nullptr;
    if (common == node->label.size() && key.text.size() > common) {
      const auto found = node->children.find(key.text.substr(common, 1));
      if (found != node->children.end()) {
        child = found->second;
        key.text.erase(0, common);
        Merge(*node, key);
      }
    }
    Node* const result = Insert(key, child, node, common, isLast);
    if (isLast) {
      ++result->count;
      result->isCounted = true;
      if (node == fRoot && result != node) {
        ++node->count;
        node->isCounted = true;
      }
    }
    return result->parent;
  }

  static void Print(const Node& node, const std::string& indent, std::vector<std::string>& lines) {
    static const char* const kFlags[] = {"U  ", "R  ", "I  ", "RI ", "L  ", "RL ", "IL ", "RIL"};
    lines.push_back(indent + kFlags[node.flags] + "(" + std::to_string(node.flags) + ")/" +
                    RadixKindName(node.kind) + "(" + std::to_string(node.kind) + ") " + node.label +
                    " #" + std::to_string(node.count));
    for (const auto& [first, child] : node.children) Print(*child, indent + " ", lines);
  }

  // Gives how many expressions the prefixes below cover, and the kind that the node hands up.
  static std::uint64_t Visit(const Node& node, std::uint64_t minimum, std::uint8_t& kind,
                             std::vector<std::string>& prefixes) {
    kind = node.kind;
    std::uint64_t covered = 0;
    std::uint8_t childKinds = 2;
    for (const auto& [first, child] : node.children) {
      std::uint8_t childKind = 0;
      covered += Visit(*child, minimum, childKind, prefixes);
      childKinds |= childKind;
    }
    if (node.count - covered < minimum) return covered;
    if ((node.kind & 1) != 0 && (childKinds & 1) != 0) return covered;
    std::string path = node.label;
    for (const Node* at = &node; at->parent != at;) {
      at = at->parent;
      path.insert(0, at->label);
    }
    prefixes.push_back(path);
    return node.count;
  }

  std::vector<std::unique_ptr<Node>> fNodes;  // all of them
  Node* fRoot = nullptr;
};
