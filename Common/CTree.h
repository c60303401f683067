#pragma once

#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "Common/CUseCounted.h"

// Base of the nodes of a tree: each node owns its children by key. Node derives from this, from
// CUseCounted, and adds what a node holds.
//
// One thread at a time. A tree of any depth can be destroyed: the children are taken apart in a
// loop, not by each other.
template <class Node, class Key, class Less = std::less<Key>>
class CTree {
public:
  using Children = std::map<Key, CUsePtr<Node>, Less>;

  CTree() = default;
  CTree(const CTree&) = delete;
  CTree& operator=(const CTree&) = delete;

  const Children& GetChildren() const { return fChildren; }
  Node* Find(const Key& key) const {  // borrowed; null when there is none
    const auto found = fChildren.find(key);
    return found == fChildren.end() ? nullptr : found->second.Get();
  }
  // The child of that key, made from the arguments if there is none yet; borrowed.
  template <class... Arguments>
  Node* Add(const Key& key, Arguments&&... arguments) {
    CUsePtr<Node>& child = fChildren[key];
    if (!child) child = MakeUseCounted<Node>(std::forward<Arguments>(arguments)...);
    return child.Get();
  }
  void Remove(const Key& key) { fChildren.erase(key); }

protected:
  ~CTree() {
    std::vector<CUsePtr<Node>> dying;
    TakeChildren(dying);
    while (!dying.empty()) {
      const CUsePtr<Node> node = std::move(dying.back());
      dying.pop_back();
      // A node that somebody else holds keeps its own.
      if (node->UseCount() == 1) static_cast<CTree&>(*node).TakeChildren(dying);
    }
  }

private:
  void TakeChildren(std::vector<CUsePtr<Node>>& out) {
    for (auto& child : fChildren) out.push_back(std::move(child.second));
    fChildren.clear();
  }

  Children fChildren;
};
