#include "Common/RegexExpressionSize.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace {

// Far above the number of states at which the library refuses an expression, and small enough for
// the product of two such numbers.
constexpr std::uint64_t kMany = std::uint64_t{1} << 30;

// A look-ahead runs a matcher of its own, which is worth as many states.
constexpr std::uint64_t kMatcherSteps = 4;

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

// What a part of an expression adds to the depth of a match.
struct Depth {
  std::uint64_t states = 0;  // states that take no character
  std::uint64_t steps = 0;   // passes through them on one path, without taking a character
  std::uint64_t aside = 0;   // of the deepest look-ahead, which is over before the path goes on

  void Add(Depth other) {
    states = std::min(kMany, states + other.states);
    steps = std::min(kMany, steps + other.steps);
    aside = std::max(aside, other.aside);
  }
  void Multiply(std::uint64_t copies) {
    states = std::min(kMany, states * copies);
    steps = std::min(kMany, steps * copies);
  }
  // At one place of the text the library goes round a loop twice, and through every state within.
  void Loop() { steps = std::min(kMany, steps + 2 * states); }
};

struct Group {
  std::uint64_t terms = 0;  // of its present alternative
  Depth depth;              // of what it holds, its last term excepted
  Depth last;               // of its last term, which a quantifier may still change
  Depth own;                // what the brackets themselves add
  bool isLookAhead = false;
};

class Measurer {
public:
  explicit Measurer(std::string_view expression) : fRest(expression) {}

  RegexExpressionSize Measure() {
    while (!fRest.empty() && ReadToken()) {
    }
    while (fGroups.size() > 1) CloseGroup();
    Group& whole = fGroups.front();
    whole.depth.Add(whole.last);
    fSize.emptySteps = whole.depth.steps + whole.depth.aside;
    return fSize;
  }

private:
  // False where the compiler gives up as well.
  bool ReadToken();
  void OpenGroup();
  void CloseGroup();
  void AddTerm(Depth depth);
  bool IsEmptyEscape() const;
  bool SkipEscape();
  bool SkipBracket();
  bool SkipClass(char mark);
  bool ReadBraces();
  std::uint64_t ReadCount();
  void Quantify(std::uint64_t copies, bool isLoop);

  char Take() {
    const char character = fRest.front();
    fRest.remove_prefix(1);
    return character;
  }
  bool TakeIf(std::string_view text) {
    if (!fRest.starts_with(text)) return false;
    fRest.remove_prefix(text.size());
    return true;
  }

  std::string_view fRest;
  RegexExpressionSize fSize;
  std::uint64_t fOpenTerms = 0;  // of all groups that are open
  std::uint64_t fOpenLookAheads = 0;
  std::vector<Group> fGroups{{}};  // the whole expression, and the groups that are open
};

bool Measurer::ReadToken() {
  constexpr Depth kNothing;
  constexpr Depth kOne{1, 1, 0};

  switch (Take()) {
    case '(':
      OpenGroup();
      return true;
    case ')':
      if (fGroups.size() == 1) return false;
      CloseGroup();
      return true;
    case '[':
      AddTerm(kNothing);
      return SkipBracket();
    case '\\':
      AddTerm(IsEmptyEscape() ? kOne : kNothing);
      return SkipEscape();
    case '^':
    case '$':
      AddTerm(kOne);
      return true;
    case '|': {
      Group& group = fGroups.back();
      fOpenTerms -= group.terms;
      group.terms = 0;
      group.depth.Add(group.last);
      group.depth.Add(kOne);
      group.last = {};
      return true;
    }
    case '*':
    case '+':
      Quantify(1, true);
      return true;
    case '?':
      Quantify(1, false);
      return true;
    case '{':
      return ReadBraces();
    default:
      AddTerm(kNothing);
      return true;
  }
}

void Measurer::OpenGroup() {
  Group group;
  if (TakeIf("?=") || TakeIf("?!")) {
    group.isLookAhead = true;
    fSize.lookAheads = std::max(fSize.lookAheads, ++fOpenLookAheads);
  } else if (!TakeIf("?:")) {
    group.own = {2, 2, 0};
  }
  AddTerm({});
  fGroups.push_back(group);
  fSize.openGroups = std::max<std::uint64_t>(fSize.openGroups, fGroups.size() - 1);
}

void Measurer::CloseGroup() {
  Group closed = fGroups.back();
  fGroups.pop_back();
  fOpenTerms -= closed.terms;
  closed.depth.Add(closed.last);
  closed.depth.Add(closed.own);
  if (closed.isLookAhead) {
    --fOpenLookAheads;
    const std::uint64_t aside = closed.depth.steps + closed.depth.aside + kMatcherSteps;
    closed.depth = {1, 1, std::min(kMany, aside)};
  }
  fGroups.back().last = closed.depth;
}

void Measurer::AddTerm(Depth depth) {
  Group& group = fGroups.back();
  group.depth.Add(group.last);
  group.last = depth;
  ++group.terms;
  fSize.openTerms = std::max(fSize.openTerms, ++fOpenTerms);
}

// Behind a backslash: a word boundary, or a back-reference to a group that may have taken nothing.
bool Measurer::IsEmptyEscape() const {
  return !fRest.empty() && std::string_view("bB123456789").find(fRest.front()) != fRest.npos;
}

// The character behind a backslash, and the one more of a control character, or the whole number of
// a back-reference. The digits of a character code are left to count as terms, which errs on the
// safe side.
bool Measurer::SkipEscape() {
  if (fRest.empty()) return false;
  if (IsDigit(fRest.front())) {
    ReadCount();
    return true;
  }
  if (Take() != 'c') return true;
  if (fRest.empty()) return false;
  Take();
  return true;
}

// Contract: the first "]" ends a bracket even directly behind its "[".
bool Measurer::SkipBracket() {
  while (!fRest.empty()) {
    const char character = Take();
    if (character == ']') return true;
    if (character == '\\' && !SkipEscape()) return false;
    if (character != '[' || fRest.empty()) continue;
    const char mark = fRest.front();
    if ((mark == '.' || mark == ':' || mark == '=') && !SkipClass(mark)) return false;
  }
  return false;
}

// The rest of "[:name:]" and its like.
bool Measurer::SkipClass(char mark) {
  Take();
  const std::size_t end = fRest.find(mark);
  if (end == std::string_view::npos) return false;
  fRest.remove_prefix(end + 1);
  return TakeIf("]");
}

// Wraps around to 32 bits as the library does; a negative count is none.
std::uint64_t Measurer::ReadCount() {
  constexpr std::uint64_t kRoom = std::numeric_limits<std::int64_t>::max();
  std::uint64_t count = 0;
  while (!fRest.empty() && IsDigit(fRest.front())) {
    const auto digit = static_cast<std::uint64_t>(Take() - '0');
    if (count > (kRoom - digit) / 10) {
      fSize.hasHugeNumber = true;
      count = 0;
    }
    count = count * 10 + digit;
  }
  const auto wrapped = static_cast<std::int32_t>(static_cast<std::uint32_t>(count));
  return wrapped < 0 ? 0 : static_cast<std::uint64_t>(wrapped);
}

bool Measurer::ReadBraces() {
  std::uint64_t copies = ReadCount();
  bool isLoop = false;
  if (TakeIf(",")) {
    isLoop = TakeIf("}");
    if (isLoop) {
      ++copies;
      Quantify(copies, isLoop);
      return true;
    }
    copies = std::max(copies, ReadCount());
  }
  if (!TakeIf("}")) return false;
  Quantify(copies, isLoop);
  return true;
}

// The state of a quantifier is two frames deep, and a loop comes back to it.
void Measurer::Quantify(std::uint64_t copies, bool isLoop) {
  Depth& term = fGroups.back().last;
  term.Add({2, 2, 0});
  if (isLoop) term.Loop();
  term.Multiply(copies);
}

}  // namespace

RegexExpressionSize MeasureExpression(std::string_view expression) {
  return Measurer(expression).Measure();
}
