#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/Matching/AnchoredLiterals.h"
#include "Common/Matching/Expression.h"
#include "Common/Matching/FloatingLiterals.h"
#include "Common/Matching/FormMatch.h"
#include "Common/Matching/ListParts.h"
#include "Common/Matching/LiteralForms.h"
#include "Common/Matching/MemoryAllowance.h"
#include "Common/Matching/SharedAutomata.h"
#include "Common/Matching/SyntaxTree.h"

namespace Matching {

// One scanner of a list, as the list matcher takes it: an expression whose alternatives are
// elements.
struct ListScanner {
  std::string_view pattern;
  std::uint32_t firstGroup = 0;  // number of the first alternative's group; 0: there is none
  std::uint32_t groupCount = 0;  // groups from that one on that stand for an element or are in one
  // What each of these groups is called; null where nobody asks.
  const std::string* names = nullptr;
};

// How an alternative of a list is answered.
enum class ListRoad : std::uint8_t {
  Anchored,  // its literals are all of it: the text is one, or begins or ends with one
  Floating,  // pieces with gaps between them, found by one and then compared
  Required,  // a literal that every match has picks it; an automaton of its own then confirms
  Shared,    // an automaton that it shares with others is asked about every text
  Always,    // one of its own is
};

// Roads that a test can close; a closed one is answered by the next slower. No answer depends on
// it.
struct ListOptions {
  bool useAnchored = true;
  bool useFloating = true;
  bool useRequired = true;
  bool useShared = true;
  bool useChance = true;  // for the choice of literals
  bool useLoad = true;    // the same
  bool useFew = true;     // and those below: FloatingOptions
  bool useVectors = true;
  bool mergePasses = true;
  std::size_t sharedBudget = SharedAutomata::kBudget;
  // For all automata of the list, and what others take of it; null for one of its own.
  std::shared_ptr<MemoryAllowance> allowance = nullptr;
};

// Answers for a whole list of scanners at once which of them match a text, without asking each.
//
// The texts of the scanners are the authority: each is read as the engine reads it, and its
// alternatives are sorted by what their trees say about literals (ListRoad). One pass over the text
// finds those that literals decide and those that literals pick; only the latter cost a run of an
// automaton, and those without any literal one run together (SharedAutomata). Automata are built at
// their first run, from the scanners' texts again, and published by compare-and-swap; where an
// alternative cannot stand alone (it refers back, or the scanner has another shape) its scanner is
// asked.
//
// The answer is that of asking one scanner after the other: a scanner that fails is an answer as
// good as one that matches, and the first of both is given.
//
// Immutable to the outside; any number of threads may ask.
class ListMatcher {
public:
  using Options = ListOptions;

  // Bytes of all automata of a list.
  static constexpr std::size_t kAutomataBudget = std::size_t{128} << 20;

  // The first scanner in the order of the list that matches.
  struct Hit {
    std::uint32_t scanner;
    std::uint32_t group;         // of the alternative that its own captures would name; 0: ask them
    std::string_view name = {};  // of that group; the matcher's
  };

  explicit ListMatcher(const std::vector<ListScanner>& scanners, const Options& options = {});

  ListMatcher(const ListMatcher&) = delete;
  ListMatcher& operator=(const ListMatcher&) = delete;
  ~ListMatcher();

  // scanners.Matches(i, text) says whether a scanner matches the text, scanners.Pattern(i) is what
  // the matcher was made of. What the former throws passes unless an earlier scanner matches, and
  // an automaton throws std::regex_error.
  template <class Scanners>
  bool Matches(std::string_view text, const Scanners& scanners) const;
  // From a scanner on, by its number.
  template <class Scanners>
  std::optional<Hit> FindFirst(std::string_view text, const Scanners& scanners,
                               std::uint32_t from = 0) const;

  // Why an alternative has no automaton of its own, so that its scanner is asked as a whole.
  enum class Dependence : std::uint8_t {
    None,
    BackReference,  // somewhere in the scanner a group is referred back to
    Shape,          // the scanner has no alternatives where its elements should stand
    Unreadable,     // it does not compile
  };

  // What the roads are, for diagnoses and tests: an alternative each, in the order of the list.
  struct Alternative {
    std::uint32_t scanner;
    std::uint32_t group;
    ListRoad road;
    std::vector<std::string> literals;  // that decide or pick it
    std::vector<LiteralForm> forms;     // for the roads that literals decide
    Dependence dependence = Dependence::None;
  };
  static std::vector<Alternative> Plan(const std::vector<ListScanner>& scanners,
                                       const Options& options = {});
  // Bytes of each part.
  struct Memory {
    std::size_t ends = 0;          // whole texts and what they end with
    std::size_t beginnings = 0;    // what they begin with
    std::size_t floating = 0;      // literals that may stand anywhere, and the forms made of them
    std::size_t alternatives = 0;  // what stands for the elements
    std::size_t automata = 0;      // taken of the allowance so far, as texts have asked for it
  };
  Memory MemoryUse() const;
  // Bytes, but for what grows while it is asked: the automata of single alternatives.
  std::size_t MemorySize() const;

  // Calls onRun(scanner, group, matched) for each alternative that the text makes run by itself,
  // whatever else matches. Throws what a run throws.
  template <class Scanners, class OnRun>
  void VisitRuns(std::string_view text, const Scanners& scanners, OnRun onRun) const;

private:
  using Part = ListPart;
  using Naming = ListNaming;
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  // What a floating literal stands for: a form of an alternative, or one that is to be confirmed.
  struct Target {
    std::uint32_t part;
    std::uint32_t form;       // index in fForms, or kNone
    std::uint32_t confirmed;  // index in fConfirmed where there is no form
  };
  // An alternative that a run decides.
  struct Confirmed {
    std::uint32_t part;
    std::uint32_t firstGroup;  // of its scanner; kNone when the scanner itself is to be asked
  };
  class Builder;

  // What was run on a text already.
  class Asked {
  public:
    // Whether this is the first time for that number.
    bool Add(std::uint32_t number) {
      for (std::size_t i = 0; i < fCount; ++i) {
        if (fSmall[i] == number) return false;
      }
      if (fCount < kSmall) {
        fSmall[fCount++] = number;
        return true;
      }
      return AddToMany(number);
    }

  private:
    static constexpr std::size_t kSmall = 16;
    bool AddToMany(std::uint32_t number);

    std::uint32_t fSmall[kSmall];
    std::size_t fCount = 0;
    std::vector<bool> fMany;  // beyond the first few, by number
  };

  template <class Scanners>
  bool Confirms(std::uint32_t number, std::string_view text, const Scanners& scanners) const {
    const Confirmed& confirmed = fConfirmed[number];
    const std::uint32_t scanner = fParts[confirmed.part].scanner;
    if (confirmed.firstGroup == kNone) return scanners.Matches(scanner, text);
    // The acquire pairs with the release that published the automaton.
    const Expression* automaton = fAutomata[number].load(std::memory_order_acquire);
    if (!automaton) automaton = BuildAutomaton(number, scanners.Pattern(scanner));
    return automaton->IsMatch(text);
  }
  const Expression* BuildAutomaton(std::uint32_t number, std::string_view pattern) const;

  // The first of the alternatives that share automata which matches and stands before a part, or
  // kNone; none of a scanner before `from`.
  template <class Scanners>
  std::uint32_t FindShared(std::string_view text, const Scanners& scanners, std::uint32_t from,
                           std::uint32_t before) const;
  // How many of them, from the first on, have a part that comes before some place.
  template <class IsBefore>
  std::uint32_t CountShared(IsBefore isBefore) const {
    const auto end = std::partition_point(
        fShared.begin(), fShared.end(),
        [&](std::uint32_t number) { return isBefore(fConfirmed[number].part); });
    return static_cast<std::uint32_t>(end - fShared.begin());
  }
  using PatternOf = std::function<std::string_view(std::uint32_t scanner)>;
  void AddShared(std::uint32_t first, std::uint32_t end, const PatternOf& patternOf,
                 SyntaxTree& tree, std::vector<NodeId>& roots) const;

  // Call onHit(part, form or null, size) for the alternatives that literals decide, the size being
  // that of the literal where there is no form, and onCandidate(number in fConfirmed) for those
  // that they pick, until one gives true. What wants(part) says no to is not compared.
  template <class OnHit>
  bool VisitAnchored(std::string_view text, OnHit onHit) const;
  template <class Wants, class OnHit, class OnCandidate>
  bool VisitFloating(std::string_view text, Wants wants, OnHit onHit,
                     OnCandidate onCandidate) const;
  // What was found of the scanners from some one on.
  struct Best {
    std::uint32_t scanner = kNone;  // the first found to match or to fail
    std::uint32_t part = kNone;     // its alternative to name, or any where literals do not tell
    std::size_t start = 0;          // where that begins, as far as it matters
    bool hasFailed = false;
  };
  // Takes an alternative that literals decide, as VisitAnchored tells of it, if it is better.
  void Offer(std::string_view text, std::uint32_t from, std::uint32_t part, const LiteralForm* form,
             std::size_t size, Best& best) const;
  // The rest of FindFirst, apart from it since all that it sets up costs as much as finding a name.
  template <class Scanners>
  void FindBeyondAnchored(std::string_view text, const Scanners& scanners, std::uint32_t from,
                          Best& best) const;
  // VisitAnchored decides about all alternatives, and there is nothing else to ask.
  bool IsAllAnchored() const { return fTargets.empty() && fConfirmed.empty(); }

  ListParts fParts;
  AnchoredLiterals fTails{AnchoredLiterals::Side::Tail};
  AnchoredLiterals fHeads{AnchoredLiterals::Side::Head};
  FloatingLiterals fFloating;
  std::vector<Target> fTargets;
  std::vector<LiteralForm> fForms;
  std::uint32_t fEmptyPart = kNone;     // the first that is the empty text
  std::uint32_t fAnythingPart = kNone;  // the first that is every text without line ends
  std::vector<Confirmed> fConfirmed;
  bool fMayFail = false;                            // a scanner that is asked itself can fail
  std::vector<std::uint32_t> fShared;               // numbers in fConfirmed, ascending
  std::shared_ptr<MemoryAllowance> fAllowance;      // of all automata
  std::unique_ptr<SharedAutomata> fSharedAutomata;  // its members are those of fShared
  std::vector<std::uint32_t> fAlways;               // numbers in fConfirmed, ascending
  // One for each confirmed alternative; null until its first run.
  mutable std::unique_ptr<std::atomic<const Expression*>[]> fAutomata;
};

template <class OnHit>
bool ListMatcher::VisitAnchored(std::string_view text, OnHit onHit) const {
  LineEnds lineEnds(text);
  if (fEmptyPart != kNone && text.empty() && onHit(fEmptyPart, nullptr, 0)) return true;
  if (fAnythingPart != kNone && lineEnds.None() && onHit(fAnythingPart, nullptr, 0)) return true;
  if (fTails.Visit(text, [&](std::uint32_t part, std::size_t size) {
        return lineEnds.NoneBefore(text.size() - size) && onHit(part, nullptr, size);
      })) {
    return true;
  }
  return fHeads.Visit(text, [&](std::uint32_t part, std::size_t size) {
    return lineEnds.NoneFrom(size) && onHit(part, nullptr, size);
  });
}

template <class Wants, class OnHit, class OnCandidate>
bool ListMatcher::VisitFloating(std::string_view text, Wants wants, OnHit onHit,
                                OnCandidate onCandidate) const {
  LineEnds lineEnds(text);
  Asked found;  // literals; one may stand everywhere in the text
  return fFloating.Visit(text, [&](std::uint32_t literal, std::size_t) {
    if (!found.Add(literal)) return false;
    for (const std::uint32_t id : fFloating.IdsOf(literal)) {
      const Target& target = fTargets[id];
      if (target.form == kNone) {
        if (onCandidate(target.confirmed)) return true;
        continue;
      }
      const LiteralForm& form = fForms[target.form];
      if (wants(target.part) && lineEnds.None() && HasForm(text, form) &&
          onHit(target.part, &form, 0)) {
        return true;
      }
    }
    return false;
  });
}

template <class Scanners, class OnRun>
void ListMatcher::VisitRuns(std::string_view text, const Scanners& scanners, OnRun onRun) const {
  Asked asked;
  const auto run = [&](std::uint32_t number) {
    if (!asked.Add(number)) return false;
    const Part part = fParts[fConfirmed[number].part];
    onRun(part.scanner, part.group, Confirms(number, text, scanners));
    return false;
  };
  const auto wantsNone = [](std::uint32_t) { return false; };
  VisitFloating(
      text, wantsNone, [](std::uint32_t, const LiteralForm*, std::size_t) { return false; }, run);
  for (const std::uint32_t number : fAlways) run(number);
}

template <class Scanners>
bool ListMatcher::Matches(std::string_view text, const Scanners& scanners) const {
  if (fMayFail) return FindFirst(text, scanners).has_value();  // the first one counts
  const auto onHit = [](std::uint32_t, const LiteralForm*, std::size_t) { return true; };
  if (VisitAnchored(text, onHit)) return true;
  if (IsAllAnchored()) return false;
  Asked asked;
  const auto confirms = [&](std::uint32_t number) {
    return asked.Add(number) && Confirms(number, text, scanners);
  };
  const auto wantsAll = [](std::uint32_t) { return true; };
  if (VisitFloating(text, wantsAll, onHit, confirms)) return true;
  if (FindShared(text, scanners, 0, kNone) != kNone) return true;
  for (const std::uint32_t number : fAlways) {
    if (confirms(number)) return true;
  }
  return false;
}

template <class Scanners>
std::uint32_t ListMatcher::FindShared(std::string_view text, const Scanners& scanners,
                                      std::uint32_t from, std::uint32_t before) const {
  if (fShared.empty()) return kNone;
  const std::uint32_t first =
      from == 0 ? 0 : CountShared([&](std::uint32_t part) { return fParts[part].scanner < from; });
  const std::uint32_t end = CountShared([&](std::uint32_t part) { return part < before; });
  const auto pattern = [&](std::uint32_t scanner) { return scanners.Pattern(scanner); };
  const std::uint32_t found = fSharedAutomata->FindFirst(
      text, first, end,
      [&](std::uint32_t begin, std::uint32_t behind, SyntaxTree& tree, std::vector<NodeId>& roots) {
        AddShared(begin, behind, pattern, tree, roots);
      },
      [&](std::uint32_t member) { return Confirms(fShared[member], text, scanners); });
  return found == end ? kNone : fConfirmed[fShared[found]].part;
}

template <class Scanners>
std::optional<ListMatcher::Hit> ListMatcher::FindFirst(std::string_view text,
                                                       const Scanners& scanners,
                                                       std::uint32_t from) const {
  Best best;
  VisitAnchored(text, [&](std::uint32_t part, const LiteralForm* form, std::size_t size) {
    Offer(text, from, part, form, size, best);
    return false;
  });
  if (!IsAllAnchored()) FindBeyondAnchored(text, scanners, from, best);
  if (best.part == kNone) return std::nullopt;
  const Part named = fParts[best.part];
  if (named.naming == Naming::ByCaptures || text.empty()) return Hit{named.scanner, 0};
  return Hit{named.scanner, named.group, fParts.NameOf(best.part)};
}

inline void ListMatcher::Offer(std::string_view text, std::uint32_t from, std::uint32_t part,
                               const LiteralForm* form, std::size_t size, Best& best) const {
  const Part hit = fParts[part];
  if (hit.scanner > best.scanner || hit.scanner < from) return;
  std::size_t start = 0;
  if (hit.naming == Naming::Latest) {
    start = form ? LatestStart(text, *form) : text.size() - size;
  }
  const bool isBetter = hit.scanner < best.scanner || best.hasFailed || start > best.start ||
                        (start == best.start && part < best.part);
  if (isBetter) best = {hit.scanner, part, start, false};
}

template <class Scanners>
void ListMatcher::FindBeyondAnchored(std::string_view text, const Scanners& scanners,
                                     std::uint32_t from, Best& best) const {
  Asked asked;
  std::exception_ptr failure;  // what the best one failed with, if it did
  const auto wants = [&](std::uint32_t part) {
    const std::uint32_t scanner = fParts[part].scanner;
    return scanner <= best.scanner && scanner >= from;
  };
  const auto onHit = [&](std::uint32_t part, const LiteralForm* form, std::size_t size) {
    Offer(text, from, part, form, size, best);
    return false;
  };
  const auto onCandidate = [&](std::uint32_t number) {
    const std::uint32_t part = fConfirmed[number].part;
    const Part asking = fParts[part];
    const std::uint32_t scanner = asking.scanner;
    if (scanner > best.scanner || scanner < from) return false;
    if (scanner == best.scanner && (asking.naming != Naming::InOrder || part >= best.part)) {
      return false;
    }
    if (!asked.Add(number)) return false;
    try {
      if (Confirms(number, text, scanners)) best = {scanner, part, 0, false};
    } catch (...) {
      failure = std::current_exception();
      best = {scanner, part, 0, true};
    }
    return false;
  };
  VisitFloating(text, wants, onHit, onCandidate);
  const std::uint32_t shared = FindShared(text, scanners, from, best.part);
  if (shared != kNone) best = {fParts[shared].scanner, shared, 0, false};
  for (const std::uint32_t number : fAlways) {
    if (fParts[fConfirmed[number].part].scanner > best.scanner) break;
    onCandidate(number);
  }
  if (best.hasFailed) std::rethrow_exception(failure);
}

}  // namespace Matching
