#include "Common/Matching/Expression.h"

#include <algorithm>
#include <utility>

#include "Common/Matching/CaptureMatcher.h"
#include "Common/Matching/ExactMatcher.h"
#include "Common/Matching/ExpressionAutomata.h"
#include "Common/Matching/ExpressionTraits.h"
#include "Common/Matching/FormMatch.h"
#include "Common/Matching/LazyDfa.h"
#include "Common/Matching/LiteralFilter.h"
#include "Common/Matching/LiteralForms.h"
#include "Common/Matching/LookAheads.h"
#include "Common/Matching/Parser.h"
#include "Common/Matching/Program.h"
#include "Common/Matching/Trail.h"

namespace Matching {

// What the searches of one walk over a text find out for those that follow. The flags of a search
// without a byte in front of it are those of the first, which shares nothing but the literals.
struct Expression::Notes {
  // What is known of the rest of the text.
  struct Rest {
    std::optional<LookAheadTable> lookAheads;
    std::unique_ptr<ATrail> trail;
    MergedWays ways;  // along it
  };

  // Searches that refuse empty matches, those of look-aheads too, know another rest.
  Rest& RestFor(bool refusesEmpty) {
    auto& rest = rests[refusesEmpty ? 1 : 0];
    if (!rest) rest = std::make_unique<Rest>();
    return *rest;
  }

  std::size_t literalsFrom = 0;    // from here on, literals must be looked for again
  std::uint64_t steps = 0;         // that they have taken together on Road::Exact
  std::size_t searches[2] = {};    // that asked for the trail of each rest so far
  std::unique_ptr<Rest> rests[2];  // null where a walk is too short to need it
};

// All that one expression compiles to.
class Expression::Engine {
public:
  Engine(SyntaxTree tree, const Options& options)
      : fTree(std::move(tree)),
        fOptions(options),
        fClasses(ClassifyBytes(fTree)),
        fLookAheadNumbers(fTree),
        fProgram(CompileProgram(fTree, fTree.Root(), fLookAheadNumbers, Direction::Forward)),
        fLookAheads(fTree, fLookAheadNumbers, fClasses, options.automatonBudget, options.allowance),
        fStartsAtBegin(StartsAtBegin(fProgram)),
        fTakesMostBytes(CountFirstBytes(fProgram, fTree) > kManyBytes),
        fAutomata({fTree, fClasses, fLookAheadNumbers, fProgram, fUnrolled},
                  options.automatonBudget, options.allowance) {
    if (options.useLiterals) {
      const LiteralForms literals(fTree);
      fForms = FormsOf(fTree, literals);
      fLiterals = LiteralFilter(literals.Required({fTree.Root()}));
    }
    if (options.unrollEmptyPasses) fUnrolled = UnrollEmptyPasses(fProgram);
    if (fTree.Has(NodeKind::BackReference) || !AreLookAheadCapturesPlain(fTree)) {
      fUnrolled.reset();
    }
  }

  [[nodiscard]] const SyntaxTree& Tree() const { return fTree; }

  [[nodiscard]] Road RoadTaken() const {
    if (fTree.Has(NodeKind::BackReference)) return Road::Exact;
    if (!fLookAheads.IsEmpty()) return fUnrolled ? Road::Threads : Road::Exact;
    return fUnrolled ? Road::Automaton : Road::Exact;
  }

  [[nodiscard]] std::size_t AutomatonMemory() const {
    return fLookAheads.AutomatonMemory() + fAutomata.MemoryUsed();
  }

  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  bool IsMatch(std::string_view text) const {
    if (fForms) return IsMatchByForms(text);
    if (!MayMatchWhole(text)) return false;
    if (MayUseAutomata()) return IsMatchByAutomata(text);
    Captures captures;
    return RunWhole(text, captures);
  }

  bool Search(std::string_view text) const {
    if (!fLiterals.MayMatch(text)) return false;
    if (MaySearchByAutomata()) return IsFoundByAutomata(text);
    Captures captures;
    return SearchCaptures(text, 0, {}, captures);
  }

  bool MatchCaptures(std::string_view text, Captures& captures) const {
    const bool isSure = fForms || MayUseAutomata();
    if (isSure ? !IsMatch(text) : !MayMatchWhole(text)) return false;
    if (isSure && fTree.GroupCount() == 0) {
      captures.assign(1, {0, text.size(), true});
      return true;
    }
    return RunWhole(text, captures);
  }

  bool SearchCaptures(std::string_view text, std::size_t from, const SearchFlags& flags,
                      Captures& captures) const {
    Notes notes;
    return SearchCaptures(text, from, flags, notes, captures);
  }

  bool SearchCaptures(std::string_view text, std::size_t from, const SearchFlags& flags,
                      Notes& notes, Captures& captures) const {
    if (from >= notes.literalsFrom) {
      const std::size_t place = fLiterals.Next(text, from);
      if (place == LiteralFilter::kNowhere) return false;
      notes.literalsFrom = place + 1;
    }
    const Subject subject{text, from, flags.hasPrevious};
    const bool isAnchored = flags.onlyNonEmptyHere || fStartsAtBegin;
    if (fUnrolled && fLookAheads.IsEmpty() && fOptions.useAutomata) {
      return SearchByAutomata(subject, isAnchored, flags, notes, captures);
    }
    const bool isWholeText = from == 0 && !flags.hasPrevious && !flags.onlyNonEmptyHere;
    if (isWholeText && MaySearchByAutomata() && !IsFoundByAutomata(text)) return false;
    const std::size_t lastStart = isAnchored ? from : text.size();
    if (!fUnrolled) {
      return RunExact(subject, from, lastStart, false, flags.onlyNonEmptyHere, notes, captures);
    }
    CaptureQuery query{.subject = subject,
                       .start = fUnrolled->start,
                       .firstStart = from,
                       .lastStart = lastStart,
                       .end = text.size(),
                       .refusesEmpty = flags.onlyNonEmptyHere};
    if (fLookAheads.AskForBegin() && !flags.hasPrevious) {
      // The first place is the only one at which look-aheads see no byte in front of the match.
      query.lastStart = from;
      if (RunCaptures(query, notes, captures)) return true;
      if (lastStart == from) return false;
      return SearchCaptures(text, from + 1, {true, false}, notes, captures);
    }
    return RunCaptures(query, notes, captures);
  }

private:
  using enum AutomatonKind;

  // A matcher and, while nobody works in it, the memory that it keeps.
  struct SpareMatcher {
    SpareMatcher(const Program& program, const SyntaxTree& tree, MemoryAllowance* allowance)
        : matcher(program, tree), memory(allowance) {}

    CaptureMatcher matcher;
    MemoryShare memory;
  };

  static constexpr std::size_t kManyBytes = 64;
  static constexpr std::size_t kMostKept = std::size_t{1} << 20;  // bytes in a spare matcher

  // A whole match that fails mostly fails at its first bytes, sooner than literals are looked for,
  // unless nearly every byte will do there.
  [[nodiscard]] bool MayMatchWhole(std::string_view text) const {
    return !fTakesMostBytes || fLiterals.MayMatch(text);
  }

  // For yes and no.
  [[nodiscard]] bool MayUseAutomata() const {
    return fOptions.useAutomata && !fTree.Has(NodeKind::BackReference);
  }
  // A look-ahead's own beginning is one thing to a match at the first place, and another to others.
  [[nodiscard]] bool MaySearchByAutomata() const {
    return MayUseAutomata() && !fLookAheads.AskForBegin();
  }
  [[nodiscard]] bool IsMatchByAutomata(std::string_view text) const {
    const Subject subject{text, 0, false};
    return (fLookAheads.IsEmpty()
                ? fAutomata.Of(WholeForward).Run(subject, 0)
                : fAutomata.Of(WholeBySuffixes).Run(subject, text.size())) != kNowhere;
  }
  [[nodiscard]] bool IsFoundByAutomata(std::string_view text) const {
    const Subject subject{text, 0, false};
    return (fLookAheads.IsEmpty()
                ? fAutomata.Of(AnyForward).Run(subject, 0)
                : fAutomata.Of(AnyBySuffixes).Run(subject, text.size())) != kNowhere;
  }
  [[nodiscard]] bool IsMatchByForms(std::string_view text) const {
    LineEnds lineEnds(text);
    return std::ranges::any_of(*fForms, [&](const LiteralForm& form) {
      return (!HasGap(form) || lineEnds.None()) && HasForm(text, form);
    });
  }

  // The whole text, which may match.
  bool RunWhole(std::string_view text, Captures& captures) const {
    const Subject subject{text, 0, false};
    Notes notes;
    if (!fUnrolled) return RunExact(subject, 0, 0, true, false, notes, captures);
    CaptureQuery query{
        .subject = subject, .start = fUnrolled->start, .end = text.size(), .mustReachEnd = true};
    if (fLookAheads.IsEmpty() && MayUseAutomata()) query.suffixes = Suffixes();
    return RunCaptures(query, notes, captures);
  }

  // Of an expression without look-aheads; null where a test does without.
  [[nodiscard]] const LazyDfa* Suffixes() const {
    return fOptions.useTrails ? &fAutomata.Of(UpToEndBySuffixes) : nullptr;
  }

  // What lies behind a match may have been read to its end to tell, so a walk of many searches has
  // the rest of the text read once for all that follow. Null where a walk is not so far.
  ATrail* TrailOfAll(const Subject& subject, bool refusesEmpty, Notes& notes) const {
    const std::size_t alone =
        fLookAheads.IsEmpty() ? fOptions.searchesAlone : fOptions.searchesAloneWithLookAheads;
    std::size_t& searches = notes.searches[refusesEmpty ? 1 : 0];
    if (!fOptions.useTrails || searches++ < alone) return nullptr;
    Notes::Rest& rest = notes.RestFor(refusesEmpty);
    if (searches == alone + 1) rest.trail = ReadTrail(subject, refusesEmpty);
    return rest.trail.get();
  }

  // By the automaton as far as its budget goes. Null where so large a program needs too much.
  std::unique_ptr<ATrail> ReadTrail(const Subject& subject, bool refusesEmpty) const {
    const auto kind = refusesEmpty ? AllOfNonEmptyBySuffixes : AllBySuffixes;
    auto trail = std::make_unique<LazyDfa::Trail>();
    if (trail->Read(fAutomata.Of(kind), subject, subject.from, subject.text.size())) return trail;
    auto stepped =
        std::make_unique<SteppedTrail>(*fUnrolled, fTree, ExpressionAutomata::RulesOf(kind));
    if (stepped->Read(subject)) return stepped;
    return nullptr;
  }

  // First where the match ends, then where it begins, then the groups in between.
  bool SearchByAutomata(const Subject& subject, bool isAnchored, const SearchFlags& flags,
                        Notes& notes, Captures& captures) const {
    if (ATrail* const trail = TrailOfAll(subject, false, notes)) {
      const CaptureQuery query{.subject = subject,
                               .start = fUnrolled->start,
                               .firstStart = subject.from,
                               .lastStart = isAnchored ? subject.from : subject.text.size(),
                               .end = subject.text.size(),
                               .refusesEmpty = flags.onlyNonEmptyHere,
                               .trail = trail};
      return RunMatcher(query, captures);
    }
    const auto kind = isAnchored ? FirstForwardAnchored : FirstForward;
    const std::size_t end = fAutomata.Of(kind).Run(subject, subject.from, flags.onlyNonEmptyHere);
    if (end == kNowhere) return false;
    std::size_t begin = subject.from;
    if (!isAnchored) begin = fAutomata.Of(LongestBackward).Run(subject, end);
    if (fTree.GroupCount() == 0) {
      captures.assign(1, {begin, end, true});
      return true;
    }
    const CaptureQuery query{.subject = subject,
                             .start = fUnrolled->start,
                             .firstStart = begin,
                             .lastStart = begin,
                             .end = end,
                             .mustReachEnd = true,
                             .refusesEmpty = flags.onlyNonEmptyHere,
                             .suffixes = Suffixes()};
    return RunMatcher(query, captures);
  }

  bool RunExact(const Subject& subject, std::size_t firstStart, std::size_t lastStart,
                bool mustReachEnd, bool refusesEmpty, Notes& notes, Captures& captures) const {
    const std::uint64_t most =
        fOptions.maxSteps + 16 * static_cast<std::uint64_t>(subject.text.size());
    ExactMatcher::Limits limits;
    limits.steps = most - std::min(most, notes.steps);
    ExactMatcher matcher(fProgram, fTree, subject, limits);
    bool isFound = false;
    for (std::size_t start = firstStart; start <= lastStart && !isFound; ++start) {
      isFound = matcher.Run(start, mustReachEnd, refusesEmpty);
    }
    notes.steps += matcher.Steps();
    if (isFound) CopyCaptures(matcher.Slots(), captures);
    return isFound;
  }

  bool RunCaptures(CaptureQuery& query, Notes& notes, Captures& captures) const {
    if (fLookAheads.IsEmpty()) return RunMatcher(query, captures);
    Notes own;
    const bool isShared = query.subject.hasPrevious;
    Notes::Rest& rest = (isShared ? notes : own).RestFor(query.refusesEmpty);
    if (!rest.lookAheads) {
      rest.lookAheads = fLookAheads.Evaluate(query.subject, query.refusesEmpty);
    }
    query.table = &*rest.lookAheads;
    if (isShared && fOptions.useAutomata) {
      query.trail = TrailOfAll(query.subject, query.refusesEmpty, notes);
    }
    return RunMatcher(query, captures, query.trail == nullptr ? nullptr : &rest.ways);
  }

  bool RunMatcher(const CaptureQuery& query, Captures& captures, MergedWays* ways = nullptr) const {
    auto spare = fSpareMatcher.Take();
    if (!spare) {
      spare = std::make_unique<SpareMatcher>(*fUnrolled, fTree, fOptions.allowance);
      if (!fOptions.useBacktracking) spare->matcher.ForbidBacktracking();
    }
    spare->memory.GiveBack();
    CaptureMatcher& matcher = spare->matcher;
    std::vector<std::size_t> slots;
    const bool found = matcher.Run(query, slots);
    if (found) {
      CaptureLookAheads(matcher, query, ways, slots);
      CopyCaptures(slots, captures);
    }
    const std::size_t kept = matcher.MemoryKept();
    if (kept <= kMostKept && spare->memory.Take(kept)) fSpareMatcher.Give(std::move(spare));
    return found;
  }

  // Fills in the groups of the look-aheads that the match has passed, from the outer to the inner.
  void CaptureLookAheads(CaptureMatcher& matcher, const CaptureQuery& query, MergedWays* ways,
                         std::vector<std::size_t>& slots) const {
    std::vector<std::size_t> inner;
    for (std::size_t i = fUnrolled->lookAheads.size(); i-- > 0;) {
      const LookAheadPart& part = fUnrolled->lookAheads[i];
      const std::size_t pos = slots[matcher.FirstLookAheadSlot() + i];
      if (!part.HasGroups() || pos == kNowhere) continue;
      const Subject subject{query.subject.text, pos, query.subject.hasPrevious};
      const CaptureQuery partQuery{.subject = subject,
                                   .table = query.table,
                                   .start = part.start,
                                   .firstStart = pos,
                                   .lastStart = pos,
                                   .end = subject.text.size(),
                                   .refusesEmpty = query.refusesEmpty,
                                   .trail = query.trail,
                                   .ways = ways};
      if (!matcher.Run(partQuery, inner)) continue;
      for (std::size_t slot = 0; slot < slots.size(); ++slot) {
        if (inner[slot] != kNowhere) slots[slot] = inner[slot];
      }
    }
  }

  void CopyCaptures(const std::vector<std::size_t>& slots, Captures& captures) const {
    captures.resize(std::size_t{fTree.GroupCount()} + 1);
    for (std::size_t i = 0; i < captures.size(); ++i) {
      const bool matched = slots[2 * i + 1] != kNowhere;
      captures[i] = matched ? Span{slots[2 * i], slots[2 * i + 1], true} : Span{};
    }
  }

  const SyntaxTree fTree;
  const Options fOptions;
  const ByteClasses fClasses;
  const LookAheadNumbers fLookAheadNumbers;
  const Program fProgram;
  std::optional<Program> fUnrolled;  // absent when only following the library's order will do
  const LookAheads fLookAheads;
  const bool fStartsAtBegin;   // no match begins behind the first place
  const bool fTakesMostBytes;  // there is hardly a byte that no match begins with
  std::optional<std::vector<LiteralForm>> fForms;  // say all of what a whole text matches
  LiteralFilter fLiterals;

  const ExpressionAutomata fAutomata;
  mutable SpareSlot<SpareMatcher> fSpareMatcher;
};

Expression::Expression(std::unique_ptr<Engine> engine) : fEngine(std::move(engine)) {}

Expression::~Expression() = default;

std::variant<std::unique_ptr<Expression>, SyntaxError> Expression::Compile(std::string_view pattern,
                                                                           const Options& options) {
  ParseResult parsed = Parse(pattern);
  if (parsed.error) return *parsed.error;
  return std::unique_ptr<Expression>(
      new Expression(std::make_unique<Engine>(std::move(parsed.tree), options)));
}

std::unique_ptr<Expression> Expression::FromTree(SyntaxTree tree, const Options& options) {
  return std::unique_ptr<Expression>(
      new Expression(std::make_unique<Engine>(std::move(tree), options)));
}

bool Expression::IsMatch(std::string_view text) const {
  return fEngine->IsMatch(text);
}

bool Expression::Search(std::string_view text) const {
  return fEngine->Search(text);
}

bool Expression::MatchCaptures(std::string_view text, Captures& captures) const {
  return fEngine->MatchCaptures(text, captures);
}

bool Expression::SearchCaptures(std::string_view text, std::size_t from, const SearchFlags& flags,
                                Captures& captures) const {
  return fEngine->SearchCaptures(text, from, flags, captures);
}

std::size_t Expression::GroupCount() const {
  return fEngine->Tree().GroupCount();
}

const SyntaxTree& Expression::Tree() const {
  return fEngine->Tree();
}

Road Expression::RoadTaken() const {
  return fEngine->RoadTaken();
}

std::size_t Expression::AutomatonMemory() const {
  return fEngine->AutomatonMemory();
}

MatchIterator::MatchIterator(const Expression& expression, std::string_view text)
    : fExpression(expression), fText(text), fNotes(std::make_unique<Expression::Notes>()) {}

MatchIterator::~MatchIterator() = default;

bool MatchIterator::Next(Captures& captures) {
  if (fIsDone) return false;
  fIsDone = true;  // a search that throws ends the walk
  if (!FindNext(captures)) return false;
  fIsDone = false;
  fFrom = captures[0].end;
  fWasEmpty = captures[0].begin == fFrom;
  return true;
}

bool MatchIterator::FindNext(Captures& captures) {
  if (fIsFirst) {
    fIsFirst = false;
    return Search({}, captures);
  }
  if (fWasEmpty) {
    if (fFrom == fText.size()) return false;
    if (Search({fHasPrevious, true}, captures)) return true;
    ++fFrom;
  }
  fHasPrevious = true;
  return Search({fHasPrevious, false}, captures);
}

bool MatchIterator::Search(const SearchFlags& flags, Captures& captures) {
  return fExpression.fEngine->SearchCaptures(fText, fFrom, flags, *fNotes, captures);
}

}  // namespace Matching
