#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Common/Matching/AnchoredLiterals.h"
#include "Common/Matching/FloatingLiterals.h"
#include "Common/Matching/LiteralForms.h"
#include "Common/Matching/SyntaxTree.h"

namespace Matching {

// One scanner of a list, as the list matcher takes it: an expression whose alternatives are
// elements.
struct ListScanner {
  std::string_view pattern;
  std::uint32_t firstGroup = 0;  // number of the first alternative's group
};

// How an alternative of a list is answered.
enum class ListRoad : std::uint8_t {
  Anchored,  // its literals are all of it: the text is one, or begins or ends with one
  Floating,  // pieces with gaps between them, found by one and then compared
  Required,  // a literal that every match has picks it; its scanner then confirms
  Always,    // its scanner is asked about every text
};

// Roads that a test can close; a closed one is answered by the next slower. No answer depends on
// it.
struct ListOptions {
  bool useAnchored = true;
  bool useFloating = true;
  bool useRequired = true;
};

// Answers for a whole list of scanners at once which of them match a text, without asking each.
//
// The texts of the scanners are the authority: each is read as the engine reads it, and its
// alternatives are sorted by what their trees say about literals (ListRoad). One pass over the text
// finds those that literals decide and those that literals pick; only the latter, and those without
// any literal, cost a run of their scanner.
//
// Immutable once built; any number of threads may ask.
class ListMatcher {
public:
  using Options = ListOptions;

  // The first scanner in the order of the list that matches.
  struct Hit {
    std::uint32_t scanner;
    std::uint32_t group;  // of the alternative that its own captures would name; 0: ask them
  };

  explicit ListMatcher(const std::vector<ListScanner>& scanners, const Options& options = {});

  // confirm(scanner) says whether that scanner matches the text; what it throws passes.
  template <class Confirm>
  bool Matches(std::string_view text, Confirm confirm) const;
  template <class Confirm>
  std::optional<Hit> FindFirst(std::string_view text, Confirm confirm) const;

  // What the roads are, for diagnoses and tests: an alternative each, in the order of the list.
  struct Alternative {
    std::uint32_t scanner;
    std::uint32_t group;
    ListRoad road;
    std::vector<std::string> literals;  // that decide or pick it
  };
  static std::vector<Alternative> Plan(const std::vector<ListScanner>& scanners,
                                       const Options& options = {});
  std::size_t MemorySize() const;

private:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  // An alternative; its index is its id, and follows the order of the list.
  struct Part {
    std::uint32_t scanner;
    std::uint32_t group;
  };
  // What a floating literal stands for.
  struct Target {
    std::uint32_t part;
    std::uint32_t form;  // index in fForms, or kNone: the scanner confirms
  };
  // How a scanner's captures choose among its alternatives, as far as literals can tell.
  enum class Naming : std::uint8_t {
    ByCaptures,  // literals cannot
    InOrder,     // the first that matches
    Shortest,    // a star stands before all of them and takes what it can: the shortest end
  };

  class Builder;

  // Where line ends stand in a text, looked for once it matters: gaps do not go over them.
  class LineEnds {
  public:
    explicit LineEnds(std::string_view text) : fText(text) {}
    bool NoneIn(std::size_t from, std::size_t to) {
      if (!fKnown) Find();
      return to <= fFirst || from > fLast || NoneBetween(from, to);
    }
    bool None() { return NoneIn(0, fText.size()); }

  private:
    void Find();
    bool NoneBetween(std::size_t from, std::size_t to) const;

    std::string_view fText;
    bool fKnown = false;
    std::size_t fFirst = 0;  // the text's size when there is none
    std::size_t fLast = 0;
  };

  // The scanners that were asked about a text already.
  class Asked {
  public:
    // Whether this is the first time for the scanner.
    bool Add(std::uint32_t scanner) {
      for (std::size_t i = 0; i < fCount; ++i) {
        if (fSmall[i] == scanner) return false;
      }
      if (fCount < kSmall) {
        fSmall[fCount++] = scanner;
        return true;
      }
      return AddToMany(scanner);
    }

  private:
    static constexpr std::size_t kSmall = 16;
    bool AddToMany(std::uint32_t scanner);

    std::uint32_t fSmall[kSmall];
    std::size_t fCount = 0;
    std::vector<bool> fMany;  // beyond the first few, by number
  };

  static bool HasForm(std::string_view text, const LiteralForm& form);

  // Calls onHit(part, size of the literal or 0) for the alternatives that literals decide, and
  // onCandidate(part) for those that they pick, until one gives true.
  template <class OnHit, class OnCandidate>
  bool VisitLiterals(std::string_view text, OnHit onHit, OnCandidate onCandidate) const;

  std::vector<Part> fParts;
  std::vector<Naming> fNaming;  // by scanner
  AnchoredLiterals fTails{AnchoredLiterals::Side::Tail};
  AnchoredLiterals fHeads{AnchoredLiterals::Side::Head};
  FloatingLiterals fFloating;
  std::vector<Target> fTargets;
  std::vector<LiteralForm> fForms;
  std::uint32_t fEmptyPart = kNone;     // the first that is the empty text
  std::uint32_t fAnythingPart = kNone;  // the first that is every text without line ends
  std::vector<std::uint32_t> fAlways;   // scanners, ascending
};

template <class OnHit, class OnCandidate>
bool ListMatcher::VisitLiterals(std::string_view text, OnHit onHit, OnCandidate onCandidate) const {
  LineEnds lineEnds(text);
  if (fEmptyPart != kNone && text.empty() && onHit(fEmptyPart, 0)) return true;
  if (fAnythingPart != kNone && lineEnds.None() && onHit(fAnythingPart, 0)) return true;
  if (fTails.Visit(text, [&](std::uint32_t part, std::size_t size) {
        return lineEnds.NoneIn(0, text.size() - size) && onHit(part, size);
      })) {
    return true;
  }
  if (fHeads.Visit(text, [&](std::uint32_t part, std::size_t size) {
        return lineEnds.NoneIn(size, text.size()) && onHit(part, size);
      })) {
    return true;
  }
  return fFloating.Visit(text, [&](std::uint32_t id, std::size_t) {
    const Target& target = fTargets[id];
    if (target.form == kNone) return onCandidate(target.part);
    return lineEnds.None() && HasForm(text, fForms[target.form]) && onHit(target.part, 0);
  });
}

template <class Confirm>
bool ListMatcher::Matches(std::string_view text, Confirm confirm) const {
  Asked asked;
  if (VisitLiterals(
          text, [](std::uint32_t, std::size_t) { return true; },
          [&](std::uint32_t part) {
            const std::uint32_t scanner = fParts[part].scanner;
            return asked.Add(scanner) && confirm(scanner);
          })) {
    return true;
  }
  for (const std::uint32_t scanner : fAlways) {
    if (asked.Add(scanner) && confirm(scanner)) return true;
  }
  return false;
}

template <class Confirm>
std::optional<ListMatcher::Hit> ListMatcher::FindFirst(std::string_view text,
                                                       Confirm confirm) const {
  Asked asked;
  std::uint32_t best = kNone;      // the first scanner found to match
  std::uint32_t bestPart = kNone;  // what literals say of its alternatives
  std::size_t bestSize = 0;
  VisitLiterals(
      text,
      [&](std::uint32_t part, std::size_t size) {
        const std::uint32_t scanner = fParts[part].scanner;
        if (scanner > best) return false;
        const bool better =
            scanner < best || bestPart == kNone ||
            (fNaming[scanner] == Naming::Shortest && size != bestSize ? size < bestSize
                                                                      : part < bestPart);
        if (!better) return false;
        best = scanner;
        bestPart = part;
        bestSize = size;
        return false;
      },
      [&](std::uint32_t part) {
        const std::uint32_t scanner = fParts[part].scanner;
        if (scanner >= best || !asked.Add(scanner) || !confirm(scanner)) return false;
        best = scanner;
        bestPart = kNone;
        return false;
      });
  for (const std::uint32_t scanner : fAlways) {
    if (scanner >= best) break;
    if (!asked.Add(scanner) || !confirm(scanner)) continue;
    best = scanner;
    bestPart = kNone;
  }
  if (best == kNone) return std::nullopt;
  const bool isNamed = bestPart != kNone && fNaming[best] != Naming::ByCaptures;
  return Hit{best, isNamed ? fParts[bestPart].group : 0};
}

}  // namespace Matching
