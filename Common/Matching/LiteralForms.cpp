#include "Common/Matching/LiteralForms.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Common/Matching/ByteFold.h"
#include "Common/Matching/CharacterClasses.h"

namespace Matching {

namespace {

using Forms = std::vector<LiteralForm>;

using Meanings = std::vector<LiteralForms::SetMeaning>;

constexpr bool IsLetter(unsigned char folded) {
  return folded >= 'a' && folded <= 'z';
}

LiteralForms::SetMeaning MeaningOf(const ByteSet& set) {
  constexpr std::size_t kMaxBytes = 8;
  const std::size_t count = set.Count();
  if (count > 2 * kMaxBytes) return {set == kDotBytes, false, {}};
  if (count == 0) return {false, true, {}};

  const unsigned char first = set.First();
  const unsigned char folded = kFoldedByte[first];
  const std::string single(1, static_cast<char>(folded));
  if (count == 1 && !IsLetter(folded)) return {false, true, single};
  if (count == 2 && IsLetter(folded) && set.Contains(folded)) return {false, true, single};

  std::string bytes;
  for (int c = first; c < 256; ++c) {
    const auto byte = static_cast<unsigned char>(c);
    if (!set.Contains(byte)) continue;
    const unsigned char lower = kFoldedByte[byte];
    const auto upper = static_cast<unsigned char>(lower - 'a' + 'A');
    if (IsLetter(lower) && !(set.Contains(lower) && set.Contains(upper))) return {};
    if (lower == byte) bytes += static_cast<char>(byte);
  }
  if (bytes.size() > kMaxBytes) return {};
  return {false, true, bytes};
}

// A form under construction, read from left to right. Once it has ended, only what matches the
// empty text may follow.
struct Draft {
  LiteralForm form;
  bool ended = false;

  bool HasPieces() const { return !form.pieces.empty(); }
};

// Reads parts of a tree into drafts; gives up where literals and gaps do not reach.
class Reader {
public:
  Reader(const SyntaxTree& tree, const Meanings& meanings) : fTree(tree), fMeanings(meanings) {}

  bool Read(NodeId id, std::size_t depth = 0) {
    if (depth > LiteralForms::kMaxDepth) return false;
    const Node& node = fTree[id];
    switch (node.kind) {
      case NodeKind::Empty:
        return true;
      case NodeKind::Bytes:
        return ReadBytes(fMeanings[node.value]);
      case NodeKind::Group:
        return Read(node.firstChild, depth + 1);
      case NodeKind::Concat:
        for (NodeId child = ReadSingles(node.firstChild); child != kNoNode;
             child = ReadSingles(fTree[child].nextSibling)) {
          if (!Read(child, depth + 1)) return false;
        }
        return true;
      case NodeKind::Alternate:
        return ReadAlternate(node, depth);
      case NodeKind::Repeat:
        return ReadRepeat(node, depth);
      case NodeKind::LineBegin:
        ReadLineBegin();
        return true;
      case NodeKind::LineEnd:
        for (Draft& draft : fDrafts) draft.ended = true;
        fHaveEnds = true;
        return true;
      default:
        return false;
    }
  }

  // The same for a run that may end anywhere: what it cannot read leaves it as it was.
  bool TryRead(NodeId id) {
    if (fTree[id].kind == NodeKind::Bytes) return ReadBytes(fMeanings[fTree[id].value]);
    if (!CanCopy(1)) return false;
    std::vector<Draft> before = fDrafts;
    if (Read(id)) return true;
    fDrafts = std::move(before);
    return false;
  }

  Forms Take() {
    Forms forms;
    forms.reserve(fDrafts.size());
    for (Draft& draft : fDrafts) {
      if (std::find(forms.begin(), forms.end(), draft.form) == forms.end()) {
        forms.push_back(std::move(draft.form));
      }
    }
    return forms;
  }

private:
  // The single bytes that a chain of nodes begins with; gives the node behind them.
  //
  // Perf: nearly all that a list has to read, and one block of memory; see list_bench, build_s.
  NodeId ReadSingles(const NodeId first) {
    std::size_t count = 0;
    NodeId behind = first;
    for (; behind != kNoNode && IsSingle(fTree[behind]); behind = fTree[behind].nextSibling)
      ++count;
    if (count == 0) return behind;
    DropEnded();
    for (Draft& draft : fDrafts) {
      std::string& piece = OpenPiece(draft.form);
      piece.reserve(piece.size() + count);
      for (NodeId id = first; id != behind; id = fTree[id].nextSibling) {
        piece += fMeanings[fTree[id].value].bytes.front();
      }
    }
    return behind;
  }

  bool IsSingle(const Node& node) const {
    return node.kind == NodeKind::Bytes && fMeanings[node.value].bytes.size() == 1;
  }

  bool ReadBytes(const LiteralForms::SetMeaning& set) {
    if (!set.isFew) return false;
    DropEnded();
    if (set.bytes.size() == 1) {
      for (Draft& draft : fDrafts) OpenPiece(draft.form) += set.bytes;
      return true;
    }
    if (!CanCopy(set.bytes.size())) return false;
    std::vector<Draft> longer;
    for (const Draft& draft : fDrafts) {
      for (const char byte : set.bytes) {
        longer.push_back(draft);
        OpenPiece(longer.back().form) += byte;
      }
    }
    fDrafts = std::move(longer);
    return true;
  }

  // A byte behind the end of the text: no text is like that.
  void DropEnded() {
    if (fHaveEnds) std::erase_if(fDrafts, [](const Draft& draft) { return draft.ended; });
  }

  // The piece that the next byte belongs to.
  static std::string& OpenPiece(LiteralForm& form) {
    if (form.pieces.empty() || form.gapAfter) form.pieces.emplace_back();
    form.gapAfter = false;
    return form.pieces.back();
  }

  void ReadGap() {
    for (Draft& draft : fDrafts) {
      if (draft.ended) continue;
      if (!draft.HasPieces()) draft.form.gapBefore = true;
      draft.form.gapAfter = true;
    }
  }

  void ReadLineBegin() {
    // A byte before the beginning of the text, again.
    std::erase_if(fDrafts, [](const Draft& draft) { return draft.HasPieces(); });
    for (Draft& draft : fDrafts) draft.form.gapBefore = draft.form.gapAfter = false;
  }

  bool ReadAlternate(const Node& node, std::size_t depth) {
    if (!CanCopy(2)) return false;
    const std::vector<Draft> before = fDrafts;
    std::vector<Draft> all;
    for (NodeId child = node.firstChild; child != kNoNode; child = fTree[child].nextSibling) {
      fDrafts = before;
      if (!Read(child, depth + 1)) return false;
      std::move(fDrafts.begin(), fDrafts.end(), std::back_inserter(all));
      if (all.size() > LiteralForms::kMaxForms) return false;
    }
    fDrafts = std::move(all);
    return true;
  }

  bool ReadRepeat(const Node& node, std::size_t depth) {
    const Node& child = fTree[node.firstChild];
    if (node.min == 0 && node.max == kUnlimited && child.kind == NodeKind::Bytes &&
        fMeanings[child.value].isDot) {
      ReadGap();
      return true;
    }
    constexpr std::uint32_t kMaxTimes = 8;
    if (node.max > kMaxTimes || (node.min != node.max && !CanCopy(2))) return false;
    std::vector<Draft> all;
    for (std::uint32_t times = 0; times < node.max; ++times) {
      if (times >= node.min) all.insert(all.end(), fDrafts.begin(), fDrafts.end());
      if (!Read(node.firstChild, depth + 1)) return false;
    }
    std::move(all.begin(), all.end(), std::back_inserter(fDrafts));
    return fDrafts.size() <= LiteralForms::kMaxForms;
  }

  // Whether so many copies of what was read so far stay within the limits.
  bool CanCopy(std::size_t times) const {
    std::size_t size = 0;
    for (const Draft& draft : fDrafts) {
      for (const std::string& piece : draft.form.pieces) size += piece.size();
    }
    return fDrafts.size() * times <= LiteralForms::kMaxForms && size <= LiteralForms::kMaxSize;
  }

  const SyntaxTree& fTree;
  const Meanings& fMeanings;
  std::vector<Draft> fDrafts{1};
  bool fHaveEnds = false;  // some draft has ended, perhaps one that is gone
};

// Finds the best set of required literals in parts of a tree.
class Requirement {
public:
  Requirement(const SyntaxTree& tree, const Meanings& meanings, const LiteralChoice& choice)
      : fTree(tree), fMeanings(meanings), fChoice(choice) {}

  std::vector<std::string> Of(const std::vector<NodeId>& parts, std::size_t depth = 0) {
    if (depth > LiteralForms::kMaxDepth) return {};
    std::vector<std::string> best;
    double bestCost = 0;
    const auto offer = [&](std::vector<std::string> literals) {
      if (literals.size() > LiteralForms::kMaxRequired) return;
      if (literals.empty()) return;
      const double cost = fChoice.CostOfAny(literals);
      if (!best.empty() && cost >= bestCost) return;
      best = std::move(literals);
      bestCost = cost;
    };

    // The longest runs of parts that literals and gaps can say, and each of the others by itself.
    for (std::size_t from = 0; from < parts.size();) {
      Reader run(fTree, fMeanings);
      std::size_t to = from;
      while (to < parts.size() && !IsPosition(parts[to]) && run.TryRead(parts[to])) ++to;
      if (to > from) {
        offer(BestPieces(run.Take()));
        from = to;
      } else {
        offer(OfNode(parts[from], depth));
        ++from;
      }
    }
    return best;
  }

private:
  // Positions say nothing about literals, and mean something else in the middle of an expression.
  bool IsPosition(NodeId id) const {
    return fTree[id].kind == NodeKind::LineBegin || fTree[id].kind == NodeKind::LineEnd;
  }

  // The best piece of each form; nothing when one of them has none.
  std::vector<std::string> BestPieces(const Forms& forms) const {
    std::vector<std::string> literals;
    for (const LiteralForm& form : forms) {
      if (form.pieces.empty()) return {};
      const std::string& best = form.pieces[fChoice.BestOf(form.pieces)];
      if (std::ranges::find(literals, best) == literals.end()) literals.push_back(best);
    }
    return literals;
  }

  std::vector<std::string> OfNode(NodeId id, std::size_t depth) {
    const Node& node = fTree[id];
    switch (node.kind) {
      case NodeKind::Group:
        return Of({node.firstChild}, depth + 1);
      case NodeKind::Concat: {
        std::vector<NodeId> parts;
        for (NodeId child = node.firstChild; child != kNoNode; child = fTree[child].nextSibling) {
          parts.push_back(child);
        }
        return Of(parts, depth + 1);
      }
      case NodeKind::Repeat:
        return node.min > 0 ? Of({node.firstChild}, depth + 1) : std::vector<std::string>();
      case NodeKind::Alternate: {
        std::vector<std::string> literals;
        for (NodeId child = node.firstChild; child != kNoNode; child = fTree[child].nextSibling) {
          const auto more = Of({child}, depth + 1);
          if (more.empty()) return {};
          literals.insert(literals.end(), more.begin(), more.end());
          if (literals.size() > LiteralForms::kMaxRequired) return {};
        }
        return literals;
      }
      default:
        return {};
    }
  }

  const SyntaxTree& fTree;
  const Meanings& fMeanings;
  const LiteralChoice& fChoice;
};

}  // namespace

void LiteralForms::TurnTo(const SyntaxTree& tree) {
  fTree = &tree;
  const std::vector<ByteSet>& sets = tree.Sets();
  const auto same = std::ranges::mismatch(fSets, sets).in1 - fSets.begin();
  fSets.resize(static_cast<std::size_t>(same));
  fMeanings.resize(fSets.size());
  for (std::size_t i = fSets.size(); i < sets.size(); ++i) {
    fSets.push_back(sets[i]);
    fMeanings.push_back(MeaningOf(sets[i]));
  }
}

std::optional<Forms> LiteralForms::Whole(const std::vector<NodeId>& parts) const {
  Reader reader(*fTree, fMeanings);
  for (const NodeId part : parts) {
    if (!reader.Read(part)) return std::nullopt;
  }
  return reader.Take();
}

std::vector<std::string> LiteralForms::Required(const std::vector<NodeId>& parts,
                                                const LiteralChoice& choice) const {
  return Requirement(*fTree, fMeanings, choice).Of(parts);
}

}  // namespace Matching
