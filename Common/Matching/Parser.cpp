#include "Common/Matching/Parser.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Common/Matching/BracketParser.h"
#include "Common/Matching/CharacterClasses.h"
#include "Common/Matching/Scanner.h"

namespace Matching {
namespace {

using namespace std::regex_constants;

constexpr SyntaxError kParenthesis{error_paren, "Mismatched '(' and ')' in regular expression"};
constexpr SyntaxError kBadBrace{error_badbrace, "Invalid range in '{}' in regular expression"};

// A chain of sibling nodes that is being built.
struct Chain {
  NodeId first = kNoNode;
  NodeId last = kNoNode;
  std::uint32_t count = 0;
};

// One construct that is open: the whole expression, or a parenthesis.
struct Frame {
  Token kind = Token::End;  // the token that opened it; End: the whole expression
  std::uint32_t group = 0;
  Chain alternatives;                 // the finished ones
  Chain items;                        // of the alternative that is being read
  std::uint64_t disjunctionCost = 0;  // states in a copy of the finished alternatives
  std::uint64_t itemCost = 0;         // states in a copy of the items
};

// Reads one expression. The stack of open constructs is its own, so nesting costs heap and no
// stack.
//
// Besides the tree it keeps the library's books: how many states the automaton has so far, and how
// many a copy of each construct takes, since braces copy what they repeat and leave the original
// behind, unused but counted. The limit is tested at the moments at which the library would.
class Parser {
public:
  Parser(std::string_view expression, bool keepsTree, SyntaxTree&& storage)
      : fScanner(expression), fKeepsTree(keepsTree), fTree(std::move(storage)) {
    fTree.Clear();
    fFrames.reserve(kUsualDepth);
  }

  ParseResult Parse() {
    Spend(1);  // the beginning of group 0
    fFrames.emplace_back();
    while (ParseStep()) {
    }
    if (fScanner.Current() != Token::End) throw kParenthesis;
    Spend(2);  // the end of group 0, and the accepting state

    ParseResult result;
    fTree.SetRoot(Collapse(NodeKind::Alternate, fFrames.back().alternatives));
    fTree.SetGroupCount(fGroupCount);
    result.tree = std::move(fTree);
    result.stateCount = fStateCount;
    return result;
  }

private:
  static constexpr std::size_t kUsualDepth = 8;  // of what is open at the same time

  // Reads one term or ends one alternative; false at the end of the whole expression.
  bool ParseStep() {
    if (ParseTerm()) return true;

    EndAlternative();
    if (Take(Token::Or)) return true;
    if (fFrames.size() == 1) return false;
    if (!Take(Token::GroupEnd)) throw kParenthesis;
    CloseParenthesis();
    return true;
  }

  bool ParseTerm() {
    switch (const Token token = fScanner.Current()) {
      case Token::LineBegin:
        return ParseAssertion(NodeKind::LineBegin);
      case Token::LineEnd:
        return ParseAssertion(NodeKind::LineEnd);
      case Token::WordBoundary:
        return ParseAssertion(NodeKind::WordBoundary);
      case Token::NotWordBoundary:
        return ParseAssertion(NodeKind::NotWordBoundary);
      case Token::GroupBegin:
      case Token::PlainGroupBegin:
      case Token::LookAheadBegin:
      case Token::NotLookAheadBegin:
        OpenParenthesis(token);
        return true;
      case Token::AnyByte:
        fScanner.Advance();
        return ParseBytes(kDotBytes);
      case Token::Literal: {
        const unsigned char byte = fScanner.Byte();
        fScanner.Advance();
        return ParseByte(byte);
      }
      case Token::Literals: {
        const std::string_view bytes = fScanner.Text();
        fScanner.Advance();
        return AddBytes(bytes);
      }
      case Token::HexLiteral: {
        const auto byte = static_cast<unsigned char>(*WrappingValue(fScanner.Text(), 16));
        fScanner.Advance();
        return ParseByte(byte);
      }
      case Token::QuotedClass: {
        const unsigned char letter = fScanner.Byte();
        fScanner.Advance();
        return ParseBytes(QuotedClass(letter));
      }
      case Token::BracketBegin:
      case Token::NotBracketBegin:
        fScanner.Advance();
        return ParseBytes(ParseBracket(fScanner, token == Token::NotBracketBegin));
      case Token::BackReference:
        return ParseBackReference();
      default:
        return false;
    }
  }

  bool ParseAssertion(NodeKind kind) {
    fScanner.Advance();
    Spend(1);
    AddItem(NewNode({.kind = kind}), 1);
    return true;
  }

  bool ParseBytes(const ByteSet& set) { return ParseIndex(fKeepsTree ? fTree.Intern(set) : 0); }

  bool ParseIndex(std::uint32_t set) {
    Spend(1);
    return Quantify(NewBytes(set), 1);
  }

  // Perf: nearly all of a list's nodes are such literals; see list_bench, build_s.
  bool AddBytes(std::string_view bytes) {
    Spend(bytes.size());
    for (const char byte : bytes) {
      AddItem(NewBytes(IndexOfByte(static_cast<unsigned char>(byte))), 1);
    }
    return true;
  }

  bool ParseByte(unsigned char byte) { return ParseIndex(IndexOfByte(byte)); }

  std::uint32_t IndexOfByte(unsigned char byte) { return fKeepsTree ? fTree.InternByte(byte) : 0; }

  bool ParseBackReference() {
    // A number that turns negative is beyond all groups; one that has no value stands for group 0.
    const auto index =
        static_cast<std::uint64_t>(std::int64_t{WrappingValue(fScanner.Text(), 10).value_or(0)});
    fScanner.Advance();
    if (index > fGroupCount) {
      throw SyntaxError{error_backref,
                        "Back-reference index exceeds current sub-expression count."};
    }
    // Group 0 is open all the time.
    if (index == 0 || fIsOpen[index - 1]) {
      throw SyntaxError{error_backref, "Back-reference referred to an opened sub-expression."};
    }
    Spend(1);
    return Quantify(
        NewNode({.kind = NodeKind::BackReference, .value = static_cast<std::uint32_t>(index)}), 1);
  }

  void OpenParenthesis(Token token) {
    fScanner.Advance();
    Frame frame;
    frame.kind = token;
    if (token == Token::GroupBegin) {
      frame.group = ++fGroupCount;
      fIsOpen.push_back(true);
    }
    if (token == Token::GroupBegin || token == Token::PlainGroupBegin) Spend(1);
    fFrames.push_back(frame);
  }

  void EndAlternative() {
    Frame& frame = fFrames.back();
    Spend(1);
    Append(frame.alternatives, Collapse(NodeKind::Concat, frame.items));
    frame.disjunctionCost += frame.itemCost + 1;
    frame.items = {};
    frame.itemCost = 0;
    if (frame.alternatives.count == 1) return;
    Spend(2);
    frame.disjunctionCost += 2;
  }

  void CloseParenthesis() {
    const Frame frame = fFrames.back();
    fFrames.pop_back();
    const NodeId content = Collapse(NodeKind::Alternate, frame.alternatives);
    switch (frame.kind) {
      case Token::PlainGroupBegin:
        Quantify(content, frame.disjunctionCost + 1);
        return;
      case Token::GroupBegin: {
        Spend(1);
        fIsOpen[frame.group - 1] = false;
        const NodeId group =
            NewNode({.kind = NodeKind::Group, .value = frame.group, .firstChild = content});
        Quantify(group, frame.disjunctionCost + 2);
        return;
      }
      default: {
        Spend(2);
        const auto kind =
            frame.kind == Token::LookAheadBegin ? NodeKind::LookAhead : NodeKind::NotLookAhead;
        AddItem(NewNode({.kind = kind, .firstChild = content}), frame.disjunctionCost + 2);
        return;
      }
    }
  }

  // Wraps the node into every quantifier that follows, and adds it to the alternative.
  bool Quantify(NodeId node, std::uint64_t cost) {
    for (;;) {
      const Token token = fScanner.Current();
      if (token == Token::BraceBegin) {
        fScanner.Advance();
        node = ParseBraces(node, cost);
        continue;
      }
      if (token != Token::Star && token != Token::Plus && token != Token::Question) break;

      fScanner.Advance();
      const bool isGreedy = !Take(Token::Question);
      const std::uint64_t extra = token == Token::Question ? 2 : 1;
      Spend(extra);
      cost += extra;
      node = NewNode({.kind = NodeKind::Repeat,
                      .isGreedy = isGreedy,
                      .isPlus = token == Token::Plus,
                      .min = token == Token::Plus ? 1U : 0U,
                      .max = token == Token::Question ? 1U : kUnlimited,
                      .firstChild = node});
    }
    AddItem(node, cost);
    return true;
  }

  // Reads a repetition in braces behind its "{"; cost is what a copy takes, before and after.
  NodeId ParseBraces(NodeId node, std::uint64_t& cost) {
    if (fScanner.Current() != Token::Count) throw kBadBrace;
    const std::int64_t min = ReadCount();
    Spend(1);
    bool isUnlimited = false;
    std::int64_t optional = 0;  // copies beyond min
    if (Take(Token::Comma)) {
      isUnlimited = fScanner.Current() != Token::Count;
      if (!isUnlimited) {
        optional = ReadCount() - min;
      }
    }
    if (!Take(Token::BraceEnd)) {
      throw SyntaxError{error_brace, "Mismatched '{' and '}' in regular expression"};
    }
    const bool isGreedy = !Take(Token::Question);

    // Contract: a number too large wraps and may turn negative; then there are no copies at all.
    const auto copies = static_cast<std::uint64_t>(std::max<std::int64_t>(min, 0));
    SpendCopies(copies, cost);
    std::uint64_t newCost = 1 + copies * cost;
    if (isUnlimited) {
      Spend(cost + 1);
      newCost += cost + 1;
    } else {
      if (optional < 0) throw kBadBrace;
      Spend(1);
      SpendCopies(static_cast<std::uint64_t>(optional), cost + 1);
      newCost += 1 + static_cast<std::uint64_t>(optional) * (cost + 1);
    }
    cost = newCost;
    const auto low = static_cast<std::uint32_t>(copies);
    return NewNode({.kind = NodeKind::Repeat,
                    .isGreedy = isGreedy,
                    .min = low,
                    .max = isUnlimited ? kUnlimited : low + static_cast<std::uint32_t>(optional),
                    .firstChild = node});
  }

  std::int64_t ReadCount() {
    const auto count = WrappingValue(fScanner.Text(), 10);
    if (!count) throw kBadBrace;
    fScanner.Advance();
    return *count;
  }

  bool Take(Token token) {
    if (fScanner.Current() != token) return false;
    fScanner.Advance();
    return true;
  }

  void Spend(std::uint64_t states) {
    fStateCount += states;
    if (fStateCount <= kStateLimit) return;
    throw SyntaxError{error_space,
                      "Number of NFA states exceeds limit. Please use shorter regex string, or use "
                      "smaller brace expression, or make _GLIBCXX_REGEX_STATE_LIMIT larger."};
  }

  // Saturates where the product does not fit; copies are at most 2^32, and a cost never exceeds the
  // limit, for what a copy takes was spent before.
  void SpendCopies(std::uint64_t copies, std::uint64_t cost) { Spend(copies * cost); }

  NodeId NewBytes(std::uint32_t set) { return fKeepsTree ? fTree.AddBytes(set) : 0; }

  NodeId NewNode(const Node& node) {
    if (!fKeepsTree) return 0;
    fTree.Count(node.kind);
    return fTree.Add(node);
  }

  void AddItem(NodeId node, std::uint64_t cost) {
    Append(fFrames.back().items, node);
    fFrames.back().itemCost += cost;
  }

  void Append(Chain& chain, NodeId node) {
    if (chain.count == 0) {
      chain.first = node;
    } else if (fKeepsTree) {
      fTree[chain.last].nextSibling = node;
    }
    chain.last = node;
    ++chain.count;
  }

  // The chain as one node: nothing is empty, one is itself, more are children of a node of that
  // kind.
  NodeId Collapse(NodeKind kind, const Chain& chain) {
    if (chain.count == 0) return NewNode({.kind = NodeKind::Empty});
    if (chain.count == 1) return chain.first;
    return NewNode({.kind = kind, .firstChild = chain.first});
  }

  Scanner fScanner;
  const bool fKeepsTree;  // else every node is number 0, and there is none
  SyntaxTree fTree;
  std::vector<Frame> fFrames;
  std::vector<bool> fIsOpen;  // by group number less 1
  std::uint32_t fGroupCount = 0;
  std::uint64_t fStateCount = 0;
};

ParseResult Read(std::string_view expression, bool keepsTree, SyntaxTree&& storage) {
  try {
    return Parser(expression, keepsTree, std::move(storage)).Parse();
  } catch (const SyntaxError& error) {
    ParseResult refused;
    refused.error = error;
    return refused;
  }
}

}  // namespace

ParseResult Parse(std::string_view expression, SyntaxTree storage) {
  return Read(expression, true, std::move(storage));
}

ParseResult Validate(std::string_view expression) {
  return Read(expression, false, SyntaxTree());
}

}  // namespace Matching
