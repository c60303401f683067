#include "Common/Matching/ListMatcher.h"

#include <algorithm>
#include <utility>

#include "Common/Matching/LiteralChance.h"
#include "Common/Matching/LiteralChoice.h"
#include "Common/Matching/Parser.h"

namespace Matching {

namespace {

// The tree of a scanner taken apart: what stands around its alternatives, and these.
struct Shape {
  std::vector<NodeId> before;
  std::vector<NodeId> alternatives;
  std::vector<NodeId> after;
  bool isWhole = false;  // the tree has no such alternatives, and is taken as one

  std::vector<NodeId> PartsOf(NodeId alternative) const {
    std::vector<NodeId> parts;
    parts.reserve(before.size() + 1 + after.size());
    parts.insert(parts.end(), before.begin(), before.end());
    parts.push_back(alternative);
    parts.insert(parts.end(), after.begin(), after.end());
    return parts;
  }
};

std::vector<NodeId> ChildrenOf(const SyntaxTree& tree, NodeId id) {
  std::vector<NodeId> children;
  for (NodeId child = tree[id].firstChild; child != kNoNode; child = tree[child].nextSibling) {
    children.push_back(child);
  }
  return children;
}

// Finds the group that encloses the alternatives. A scanner whose brackets have closed each other
// has another shape, and is taken as one alternative.
Shape ShapeOf(const SyntaxTree& tree, std::uint32_t firstGroup) {
  const Shape whole{{}, {tree.Root()}, {}, true};
  if (firstGroup == 0) return whole;
  Shape shape;
  for (NodeId id = tree.Root();;) {
    const Node& node = tree[id];
    if (node.kind == NodeKind::Concat) {
      const std::vector<NodeId> children = ChildrenOf(tree, id);
      // Groups are numbered as they open, so the one that holds the group asked for is the last
      // that opens no later.
      const auto holder = std::find_if(children.rbegin(), children.rend(), [&](NodeId child) {
        return tree[child].kind == NodeKind::Group && tree[child].value < firstGroup;
      });
      if (holder == children.rend()) return whole;
      shape.before.insert(shape.before.end(), children.begin(), holder.base() - 1);
      shape.after.insert(shape.after.begin(), holder.base(), children.end());
      id = *holder;
    } else if (node.kind == NodeKind::Group && node.value + 1 == firstGroup) {
      const bool isMany = tree[node.firstChild].kind == NodeKind::Alternate;
      shape.alternatives =
          isMany ? ChildrenOf(tree, node.firstChild) : std::vector<NodeId>{node.firstChild};
      return shape;
    } else if (node.kind == NodeKind::Group) {
      id = node.firstChild;
    } else {
      return whole;
    }
  }
}

// What stands for an alternative in the tree of its scanner.
std::vector<NodeId> PartsOfGroup(const SyntaxTree& tree, std::uint32_t firstGroup,
                                 std::uint32_t group) {
  const Shape shape = ShapeOf(tree, firstGroup);
  const auto alternative = std::find_if(
      shape.alternatives.begin(), shape.alternatives.end(),
      [&](NodeId id) { return tree[id].kind == NodeKind::Group && tree[id].value == group; });
  return shape.PartsOf(*alternative);
}

bool IsElement(const SyntaxTree& tree, const Shape& shape, NodeId alternative,
               const ListScanner& scanner) {
  const Node& node = tree[alternative];
  return !shape.isWhole && node.kind == NodeKind::Group &&
         node.value - scanner.firstGroup < scanner.groupCount;
}

// What one alternative's literals say.
struct Verdict {
  ListRoad road = ListRoad::Always;
  std::vector<LiteralForm> forms;     // for the roads that literals decide
  std::vector<std::uint32_t> picks;   // which piece of each is looked for; for Floating
  std::vector<std::string> required;  // for Required
  bool isCommon = false;              // many texts have those, and it may be Shared instead

  std::size_t PickOf(std::size_t form) const { return picks.empty() ? 0 : picks[form]; }
};

// A form that a table of anchored literals serves, or that needs none.
bool IsAnchored(const LiteralForm& form) {
  return form.pieces.empty() || (form.pieces.size() == 1 && !(form.gapBefore && form.gapAfter));
}

// The literals that it takes are taken.
Verdict Judge(const LiteralForms& literals, const std::vector<NodeId>& parts,
              const ListMatcher::Options& options, LiteralChoice& choice) {
  Verdict verdict;
  if (auto forms = literals.Whole(parts)) {
    const bool isAnchored = std::all_of(forms->begin(), forms->end(), IsAnchored);
    const bool isPlain = isAnchored || std::none_of(forms->begin(), forms->end(), MixesLineEnds);
    if (isPlain && (isAnchored ? options.useAnchored : options.useFloating)) {
      verdict.road = isAnchored ? ListRoad::Anchored : ListRoad::Floating;
      verdict.forms = std::move(*forms);
      if (isAnchored) return verdict;
      for (const LiteralForm& form : verdict.forms) {
        verdict.picks.push_back(form.pieces.empty() ? 0 : choice.BestOf(form.pieces));
        if (!IsAnchored(form)) choice.Take(form.pieces[verdict.picks.back()]);
      }
      return verdict;
    }
  }
  if (options.useRequired) verdict.required = literals.Required(parts, choice);
  for (const std::string& literal : verdict.required) choice.Take(literal);
  if (!verdict.required.empty()) verdict.road = ListRoad::Required;
  return verdict;
}

// Whether a look-ahead stands in parts, or one that captures something.
bool HoldsLookAhead(const SyntaxTree& tree, const std::vector<NodeId>& parts, bool hasGroups) {
  if (!tree.Has(NodeKind::LookAhead) && !tree.Has(NodeKind::NotLookAhead)) return false;
  std::vector<std::pair<NodeId, bool>> open;  // and whether it stands in one
  for (const NodeId part : parts) open.emplace_back(part, false);
  while (!open.empty()) {
    const Node& node = tree[open.back().first];
    bool isInside = open.back().second;
    open.pop_back();
    if (isInside && node.kind == NodeKind::Group) return true;
    isInside = isInside || node.kind == NodeKind::LookAhead || node.kind == NodeKind::NotLookAhead;
    if (isInside && !hasGroups) return true;
    for (NodeId child = node.firstChild; child != kNoNode; child = tree[child].nextSibling) {
      open.emplace_back(child, isInside);
    }
  }
  return false;
}

// Whether forms are one fixed text.
bool IsFixed(const std::optional<std::vector<LiteralForm>>& forms) {
  return forms && forms->size() == 1 && !forms->front().gapBefore && !forms->front().gapAfter &&
         forms->front().pieces.size() <= 1;
}

bool IsEmptyText(const std::optional<std::vector<LiteralForm>>& forms) {
  return IsFixed(forms) && forms->front().pieces.empty();
}

// Whether parts are one greedy gap and nothing else.
bool IsGreedyGap(const SyntaxTree& tree, const std::vector<NodeId>& parts,
                 const std::optional<std::vector<LiteralForm>>& forms) {
  const bool isPlain = std::all_of(parts.begin(), parts.end(), [&tree](NodeId id) {
    const Node& part = tree[id];
    return part.kind == NodeKind::LineBegin || (part.kind == NodeKind::Repeat && part.isGreedy);
  });
  return isPlain && forms && forms->size() == 1 && forms->front().gapBefore &&
         forms->front().pieces.empty();
}

// Whether what parts match says nothing about the pieces of a form that they are a part of.
bool HasNoPieces(const std::optional<std::vector<LiteralForm>>& forms) {
  return forms && forms->size() == 1 && forms->front().pieces.empty();
}

// An alternative that took the empty text cannot be told from one that took no part.
bool IsNeverEmpty(const std::optional<std::vector<LiteralForm>>& forms) {
  return forms && std::all_of(forms->begin(), forms->end(),
                              [](const LiteralForm& form) { return !form.pieces.empty(); });
}

}  // namespace

class ListMatcher::Builder {
public:
  Builder(ListMatcher& matcher, const Options& options)
      : fMatcher(matcher), fOptions(options), fWorkspace(options) {}

  static constexpr double kCommon = 0.2;  // chance of literals that many texts have

  // What a scanner's text says of its alternatives.
  struct Reading {
    struct Alternative {
      std::uint32_t group = 0;  // 0: its captures must be asked for the name
      Dependence dependence = Dependence::Unreadable;
      Verdict verdict;
    };
    std::vector<Alternative> alternatives;
    Naming naming = Naming::ByCaptures;
    bool mayFail = false;  // it is asked itself, and can run out of steps
  };

  // What reading a scanner takes; the next one uses the memory again, and chooses its literals by
  // what was taken.
  //
  // Perf: blocks of this size, taken and given back for each scanner, were a third of a large
  // list's building; see list_bench, build_s.
  struct Workspace {
    explicit Workspace(const Options& options) : choice({options.useChance, options.useLoad}) {}

    ParseResult parsed;
    LiteralForms literals;
    LiteralChoice choice;
  };

  static Reading Read(const ListScanner& scanner, const Options& options, Workspace& workspace) {
    ParseResult& parsed = workspace.parsed;
    parsed = Parse(scanner.pattern, std::move(parsed.tree));
    Reading reading;
    if (parsed.error) {  // asked about every text
      reading.mayFail = true;
      reading.alternatives.emplace_back();
      return reading;
    }
    const SyntaxTree& tree = parsed.tree;
    reading.mayFail = tree.Has(NodeKind::BackReference);
    const Shape shape = ShapeOf(tree, scanner.firstGroup);
    LiteralForms& literals = workspace.literals;
    literals.TurnTo(tree);
    const auto before = literals.Whole(shape.before);
    const auto after = literals.Whole(shape.after);
    const bool isBare = HasNoPieces(before) && HasNoPieces(after);
    const bool areElements = std::ranges::all_of(
        shape.alternatives, [&](NodeId id) { return IsElement(tree, shape, id, scanner); });
    // A match that names nobody hands the question on to later scanners, among whose literals are
    // those that this one's would hide. An expression that stands alone has but one name.
    Options judged = options;
    if (scanner.firstGroup != 0 && !areElements) judged.useAnchored = judged.useFloating = false;
    reading.alternatives.reserve(shape.alternatives.size());
    bool isDecided = true;  // by literals, all of them
    for (const NodeId id : shape.alternatives) {
      const bool isElement = IsElement(tree, shape, id, scanner);
      const std::vector<NodeId> parts = shape.PartsOf(id);
      Verdict verdict = Judge(literals, parts, judged, workspace.choice);
      isDecided = isDecided && verdict.road <= ListRoad::Floating &&
                  (isBare ? IsNeverEmpty(verdict.forms) : IsNeverEmpty(literals.Whole({id})));
      const Dependence dependence = tree.Has(NodeKind::BackReference) ? Dependence::BackReference
                                    : isElement                       ? Dependence::None
                                                                      : Dependence::Shape;
      const bool canShare = options.useShared && verdict.road >= ListRoad::Required &&
                            dependence == Dependence::None && !HoldsLookAhead(tree, parts, false);
      if (canShare && verdict.road == ListRoad::Always) verdict.road = ListRoad::Shared;
      verdict.isCommon = canShare && verdict.road == ListRoad::Required && options.useChance &&
                         ChanceOfAny(verdict.required) >= kCommon;
      reading.alternatives.push_back(
          {isElement ? tree[id].value : 0, dependence, std::move(verdict)});
    }
    if (areElements && IsFixed(after)) {
      const bool isAlone = IsEmptyText(before) && IsEmptyText(after);
      reading.naming = NamingOf(tree, shape, before, isAlone, isDecided);
    }
    return reading;
  }

  // For a scanner whose alternatives are all elements. The library tries them in order, and the
  // first group that holds as much as the one around all of them is named: that of the alternative
  // that matches, unless all of them are empty or what a look-ahead captured stays.
  static Naming NamingOf(const SyntaxTree& tree, const Shape& shape,
                         const std::optional<std::vector<LiteralForm>>& before, bool isAlone,
                         bool isDecided) {
    const bool isPlain =
        !tree.Has(NodeKind::BackReference) && !HoldsLookAhead(tree, {tree.Root()}, true);
    if (isAlone && isPlain) return Naming::InOrder;
    if (isDecided && IsFixed(before)) return Naming::InOrder;
    if (isDecided && IsGreedyGap(tree, shape.before, before)) return Naming::Latest;
    return Naming::ByCaptures;
  }

  // Whether elements with literals that many texts have are worth an automaton for all of them: one
  // is run anyway, or theirs would be at least as often.
  static bool SharesCommon(bool areOthers, double chances) { return areOthers || chances >= 1; }

  void Add(std::uint32_t number, const ListScanner& scanner) {
    const Reading reading = Read(scanner, fOptions, fWorkspace);
    fMatcher.fMayFail = fMatcher.fMayFail || reading.mayFail;
    for (const Reading::Alternative& alternative : reading.alternatives) {
      const Part part{number, alternative.group, reading.naming};
      const bool hasName = scanner.names != nullptr && part.group != 0;
      const std::string_view name =
          hasName ? scanner.names[part.group - scanner.firstGroup] : std::string_view();
      const std::uint32_t id = fMatcher.fParts.Add(part, name);
      Add(id, alternative.verdict,
          alternative.dependence == Dependence::None ? scanner.firstGroup : kNone);
    }
  }

  void Finish() {
    FinishCommon();
    fMatcher.fTails.Freeze();
    fMatcher.fHeads.Freeze();
    fMatcher.fFloating.Freeze();
    fMatcher.fParts.Freeze();
    fMatcher.fTargets.shrink_to_fit();
    fMatcher.fForms.shrink_to_fit();
    fMatcher.fConfirmed.shrink_to_fit();
    fMatcher.fShared.shrink_to_fit();
    fMatcher.fSharedAutomata =
        std::make_unique<SharedAutomata>(static_cast<std::uint32_t>(fMatcher.fShared.size()),
                                         fOptions.sharedBudget, fMatcher.fAllowance.get());
    fMatcher.fAutomata =
        std::make_unique<std::atomic<const Expression*>[]>(fMatcher.fConfirmed.size());
  }

private:
  std::uint32_t AddConfirmed(std::uint32_t part, std::uint32_t firstGroup) {
    fMatcher.fConfirmed.push_back({part, firstGroup});
    return static_cast<std::uint32_t>(fMatcher.fConfirmed.size() - 1);
  }

  void Add(std::uint32_t id, const Verdict& verdict, std::uint32_t firstGroup) {
    bool fits = verdict.road < ListRoad::Shared;
    for (std::size_t i = 0; i < verdict.forms.size() && fits; ++i) {
      fits = AddForm(verdict.forms[i], verdict.PickOf(i), id);
    }
    if (fits && verdict.road <= ListRoad::Floating) return;
    const std::uint32_t number = AddConfirmed(id, firstGroup);
    if (verdict.road == ListRoad::Shared) {
      fMatcher.fShared.push_back(number);
    } else if (!fits) {
      fMatcher.fAlways.push_back(number);  // what a table had no room for, too
    } else if (verdict.isCommon) {
      fCommon.push_back({number, verdict.required});
    } else {
      AddRequired(number, verdict.required);
    }
  }

  void AddRequired(std::uint32_t number, const std::vector<std::string>& literals) {
    const std::uint32_t part = fMatcher.fConfirmed[number].part;
    for (const std::string& literal : literals) {
      if (AddFloating(literal, {part, kNone, number})) continue;
      fMatcher.fAlways.push_back(number);
      return;
    }
  }

  void FinishCommon() {
    double chances = 0;
    for (const Common& common : fCommon) chances += ChanceOfAny(common.literals);
    const bool isShared = SharesCommon(!fMatcher.fShared.empty(), chances);
    for (const Common& common : fCommon) {
      if (isShared) {
        fMatcher.fShared.push_back(common.number);
      } else {
        AddRequired(common.number, common.literals);
      }
    }
    std::ranges::sort(fMatcher.fShared);
    std::ranges::sort(fMatcher.fAlways);
  }

  bool AddForm(const LiteralForm& form, std::size_t pick, std::uint32_t id) {
    if (form.pieces.empty()) {
      std::uint32_t& first = form.gapBefore ? fMatcher.fAnythingPart : fMatcher.fEmptyPart;
      first = std::min(first, id);
      return true;
    }
    if (!IsAnchored(form)) {
      fMatcher.fForms.push_back(form);
      return AddFloating(form.pieces[pick],
                         {id, static_cast<std::uint32_t>(fMatcher.fForms.size() - 1), kNone});
    }
    const std::string& piece = form.pieces.front();
    if (form.gapBefore) return fMatcher.fTails.AddAnchored(piece, id);
    if (form.gapAfter) return fMatcher.fHeads.AddAnchored(piece, id);
    return fMatcher.fTails.AddWhole(piece, id);
  }

  // What is found is compared or run as a whole, so the beginning of a very long literal will do,
  // and a text that nearly holds it everywhere costs no more than that at each place.
  bool AddFloating(std::string_view literal, const Target& target) {
    constexpr std::size_t kMostSize = 256;
    const auto id = static_cast<std::uint32_t>(fMatcher.fTargets.size());
    if (!fMatcher.fFloating.Add(literal.substr(0, kMostSize), id)) return false;
    fMatcher.fTargets.push_back(target);
    return true;
  }

  // An alternative whose literals many texts have, by its number in fConfirmed.
  struct Common {
    std::uint32_t number;
    std::vector<std::string> literals;
  };

  ListMatcher& fMatcher;
  const Options fOptions;
  Workspace fWorkspace;
  std::vector<Common> fCommon;  // left for Finish
};

ListMatcher::ListMatcher(const std::vector<ListScanner>& scanners, const Options& options)
    : fFloating({options.useFew, options.useVectors, options.mergePasses}),
      fAllowance(options.allowance ? options.allowance
                                   : std::make_shared<MemoryAllowance>(kAutomataBudget)) {
  Builder builder(*this, options);
  for (std::uint32_t i = 0; i < scanners.size(); ++i) builder.Add(i, scanners[i]);
  builder.Finish();
}

ListMatcher::~ListMatcher() {
  for (std::size_t i = 0; i < fConfirmed.size(); ++i) {
    delete fAutomata[i].load(std::memory_order_relaxed);
  }
}

void ListMatcher::AddShared(std::uint32_t first, std::uint32_t end, const PatternOf& patternOf,
                            SyntaxTree& tree, std::vector<NodeId>& roots) const {
  ParseResult parsed;
  std::uint32_t scanner = kNone;  // whose tree that is
  for (std::uint32_t i = first; i < end; ++i) {
    const Confirmed& confirmed = fConfirmed[fShared[i]];
    const Part part = fParts[confirmed.part];
    if (part.scanner != scanner) parsed = Parse(patternOf(part.scanner));
    scanner = part.scanner;
    roots.push_back(
        tree.AddParts(parsed.tree, PartsOfGroup(parsed.tree, confirmed.firstGroup, part.group)));
  }
}

const Expression* ListMatcher::BuildAutomaton(std::uint32_t number,
                                              std::string_view pattern) const {
  const Confirmed& confirmed = fConfirmed[number];
  const ParseResult parsed = Parse(pattern);
  Expression::Options options;
  options.useLiterals = false;  // the list has found one already, or there is none
  options.allowance = fAllowance.get();
  auto built = Expression::FromTree(
      SyntaxTree::OfParts(parsed.tree, PartsOfGroup(parsed.tree, confirmed.firstGroup,
                                                    fParts[confirmed.part].group)),
      options);
  // Release publishes what was built to the acquire in Confirms; whoever comes second drops his
  // own.
  const Expression* automaton = nullptr;
  if (fAutomata[number].compare_exchange_strong(automaton, built.get(), std::memory_order_acq_rel,
                                                std::memory_order_acquire)) {
    return built.release();
  }
  return automaton;
}

bool ListMatcher::Asked::AddToMany(std::uint32_t number) {
  if (fMany.size() <= number) fMany.resize(std::size_t{number} + 1);
  if (fMany[number]) return false;
  fMany[number] = true;
  return true;
}

std::vector<ListMatcher::Alternative> ListMatcher::Plan(const std::vector<ListScanner>& scanners,
                                                        const Options& options) {
  std::vector<Alternative> plan;
  Builder::Workspace workspace(options);
  std::vector<std::size_t> common;  // in the plan
  double chances = 0;
  bool isAnyShared = false;
  for (std::uint32_t i = 0; i < scanners.size(); ++i) {
    Builder::Reading reading = Builder::Read(scanners[i], options, workspace);
    for (Builder::Reading::Alternative& alternative : reading.alternatives) {
      Verdict& verdict = alternative.verdict;
      isAnyShared = isAnyShared || verdict.road == ListRoad::Shared;
      if (verdict.isCommon) {
        common.push_back(plan.size());
        chances += ChanceOfAny(verdict.required);
      }
      std::vector<std::string> texts = std::move(verdict.required);
      for (std::size_t k = 0; k < verdict.forms.size(); ++k) {
        const std::vector<std::string>& pieces = verdict.forms[k].pieces;
        if (!pieces.empty()) texts.push_back(pieces[verdict.PickOf(k)]);
      }
      plan.push_back({i, alternative.group, verdict.road, std::move(texts),
                      std::move(verdict.forms), alternative.dependence});
    }
  }
  if (!Builder::SharesCommon(isAnyShared, chances)) common.clear();
  for (const std::size_t i : common) plan[i].road = ListRoad::Shared;
  return plan;
}

ListMatcher::Memory ListMatcher::MemoryUse() const {
  Memory memory;
  memory.ends = fTails.MemorySize();
  memory.beginnings = fHeads.MemorySize();
  memory.floating = fFloating.MemorySize() + fTargets.capacity() * sizeof(Target) +
                    fForms.capacity() * sizeof(LiteralForm);
  for (const LiteralForm& form : fForms) {
    memory.floating += form.pieces.capacity() * sizeof(std::string);
    for (const std::string& piece : form.pieces) {
      const bool isOutside = piece.capacity() > std::string().capacity();
      memory.floating += isOutside ? piece.capacity() + 1 : 0;
    }
  }
  const std::size_t tables = sizeof fTails + sizeof fHeads + sizeof fFloating;  // count their own
  memory.alternatives = sizeof *this - tables + fParts.MemorySize() +
                        (fShared.capacity() + fAlways.capacity()) * sizeof(std::uint32_t) +
                        sizeof *fSharedAutomata + fSharedAutomata->MemorySize() +
                        fConfirmed.capacity() * sizeof(Confirmed) +
                        fConfirmed.size() * sizeof(fAutomata[0]);
  memory.automata = fAllowance->Taken();
  return memory;
}

std::size_t ListMatcher::MemorySize() const {
  const Memory memory = MemoryUse();
  return memory.ends + memory.beginnings + memory.floating + memory.alternatives;
}

}  // namespace Matching
