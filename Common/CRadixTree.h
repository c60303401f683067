#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// How a token ends a key; a node's kind is a set of these.
inline constexpr std::uint8_t kRadixUnit = 1;     // a token that must stay whole
inline constexpr std::uint8_t kRadixLiteral = 2;  // a token that may be cut anywhere

// "U", "B" and "X" for the kinds 1, 2 and 3, "?" for anything else.
const char* RadixKindName(std::uint8_t kind);

// One token of an expression, as the tree takes it.
struct RadixKey {
  std::string text;
  std::uint8_t kind = 0;  // kRadixUnit or kRadixLiteral
  std::uint8_t flag = 0;  // becomes the mark of the node that the key makes; 0 on entry
};

struct RadixNode {
  static constexpr std::uint8_t kRoot = 1;
  static constexpr std::uint8_t kInner = 2;
  static constexpr std::uint8_t kLeaf = 4;  // a key ends here

  std::string fLabel;  // text of the edge into this node; may be empty
  std::map<unsigned char, std::unique_ptr<RadixNode>>
      fChildren;                 // by the first byte of their label
  RadixNode* fParent = nullptr;  // the root's is itself
  std::uint8_t fNodeFlags = 0;
  std::uint8_t fKind = 0;    // which kinds of token ended here
  bool fCounted = false;     // an expression passed or ended here since the kind was last merged
  std::uint64_t fCount = 0;  // whole expressions that end here or below

  bool IsRoot() const { return (fNodeFlags & kRoot) != 0; }
};

// A compressed prefix tree over the growing beginnings of expressions: which beginnings do many of
// them share, and may an expression be cut there? The prefix grouping of a list asks; the printed
// forms serve the diagnostics.
//
// Filled first, then read; used by one thread. Nothing here recurses: the depth of the tree is
// decided by the expressions.
//
// Invariants: a child's label is not empty and begins with the byte that the child is kept under;
// the label of a node is no beginning shared by two of its siblings.
class CRadixTree {
public:
  CRadixTree() = default;
  CRadixTree(const CRadixTree&) = delete;
  CRadixTree& operator=(const CRadixTree&) = delete;
  ~CRadixTree();

  // The tokens of one expression. "ab", "(c)", "d" inserts the keys "ab", "ab(c)" and "ab(c)d", of
  // which the last one alone counts as an expression. No tokens insert nothing.
  void insert(const std::vector<RadixKey>& keys);

  // Contract: this is not "was inserted". A key that ends inside the label of a node where another
  // key ends is found, and one that ends where only inner tokens ended is not.
  bool Contains(const std::vector<RadixKey>& keys) const;

  // Appends the beginnings that at least this share of the expressions run through, deep ones
  // before shallow ones: what a deeper one covers no longer counts for a shorter one.
  void GetPrefixes(float fraction, std::vector<std::string>& result) const;

  bool IsEmpty() const { return fRoot == nullptr; }

  // Printed forms, appended line by line: every key as its labels, and every node.
  void GetList(std::vector<std::string>& result) const;
  void GetTree(std::vector<std::string>& result) const;
  void Dump(std::ostream& stream, const std::string& title) const;
  // The whole tree on one line, for traces.
  std::string Compact() const;

private:
  void InsertKey(std::string_view text, std::uint8_t kind, std::uint8_t flag, bool isLast);
  RadixNode* AddChild(RadixNode& node, std::string_view label, std::uint8_t kind, std::uint8_t flag,
                      std::uint8_t nodeFlags, std::uint64_t count);
  RadixNode* Split(RadixNode& node, std::size_t at, std::string_view key, std::uint8_t kind,
                   std::uint8_t flag, std::uint8_t nodeFlags);
  std::unique_ptr<RadixNode>& SlotOf(RadixNode& node);

  std::unique_ptr<RadixNode> fRoot;  // null while the tree is empty; an insertion may replace it
};
