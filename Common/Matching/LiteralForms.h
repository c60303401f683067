#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Common/Matching/LiteralChoice.h"
#include "Common/Matching/SyntaxTree.h"

namespace Matching {

// What an expression made of literals and gaps asks of a whole text: the pieces stand in it one
// behind the other, and what lies between them is free but for line ends (a gap is what ".*"
// reads). No pieces and no gap is the empty text. Pieces are folded and not empty.
struct LiteralForm {
  std::vector<std::string> pieces;
  bool gapBefore = false;  // the first piece need not stand at the beginning
  bool gapAfter = false;   // the last one need not stand at the end

  bool operator==(const LiteralForm&) const = default;
};

// What follows from the tree of an expression, or a part of it, about the literals of its matches.
//
// An optional part or an alternation gives several forms, of which a text must have one; none at
// all says that no text matches. Reads the tree it was made for, or turned to, which must outlive
// it.
class LiteralForms {
public:
  static constexpr std::size_t kMaxForms = 32;      // of one expression
  static constexpr std::size_t kMaxSize = 4096;     // bytes in front of what makes several forms
  static constexpr std::size_t kMaxDepth = 64;      // of nodes that are looked into
  static constexpr std::size_t kMaxRequired = 256;  // literals of which one is required

  LiteralForms() = default;  // for TurnTo alone
  explicit LiteralForms(const SyntaxTree& tree) { TurnTo(tree); }
  void TurnTo(const SyntaxTree& tree);

  // The forms that say all of what the parts one behind the other match, or nothing when literals
  // and gaps cannot say it. Positions count: parts are the whole of the expression.
  std::optional<std::vector<LiteralForm>> Whole(const std::vector<NodeId>& parts) const;

  // Folded literals of which every match of the parts has one somewhere; empty when no such set of
  // literals is known. Of several sets, the one that costs least.
  std::vector<std::string> Required(const std::vector<NodeId>& parts,
                                    const LiteralChoice& choice = LiteralChoice()) const;

  // What the sets of a tree are to literals: their folded bytes where they do not tell the cases
  // apart and are few, or what "." reads.
  struct SetMeaning {
    bool isDot = false;
    bool isFew = false;
    std::string bytes;
  };

private:
  const SyntaxTree* fTree = nullptr;
  // By the index of the set. Trees that use each other's memory begin with the same sets.
  std::vector<ByteSet> fSets;
  std::vector<SetMeaning> fMeanings;
};

}  // namespace Matching
