#include "Common/RegexSplitter.h"

#include <utility>

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// One pass over one expression. Every failure is final: the caller then takes the text whole.
class Cursor {
public:
  explicit Cursor(std::string_view text) : fText(text) {}

  enum class Outcome { Tokens, Alternation, Failure };

  Outcome ReadAll(std::vector<RegexToken>& tokens) {
    while (!AtEnd()) {
      const std::size_t start = fPos;
      Outcome outcome = Outcome::Tokens;
      if (Here() == '(' || Here() == '[') {
        if (!(Here() == '(' ? SkipGroup() : SkipBracket())) return Outcome::Failure;
        tokens.push_back({RegexTokenKind::Unit, Slice(start, fPos)});
      } else {
        outcome = ReadLiteralRun(tokens);
      }
      if (outcome != Outcome::Tokens) return outcome;
      if (fPos == start) return Outcome::Failure;  // a ")" or "]" that closes nothing
    }
    return Outcome::Tokens;
  }

private:
  enum class Quantifier { None, Taken, Malformed };

  bool AtEnd() const { return fPos == fText.size(); }
  char Here() const { return fText[fPos]; }
  std::string Slice(std::size_t from, std::size_t to) const {
    return std::string(fText.substr(from, to - from));
  }

  bool SkipDigits() {
    const std::size_t start = fPos;
    while (!AtEnd() && IsDigit(Here())) ++fPos;
    return fPos != start;
  }

  // A backslash with the byte behind it, or any other byte.
  bool SkipAtom() {
    const std::size_t size = Here() == '\\' ? 2 : 1;
    if (fText.size() - fPos < size) return false;
    fPos += size;
    return true;
  }

  // The part between "{" and its end. A byte that is neither "," nor "}" ends it and stays.
  bool SkipCount() {
    if (!SkipDigits() || AtEnd()) return false;
    if (Here() == ',') {
      ++fPos;
      if (!SkipDigits() || AtEnd() || Here() != '}') return false;
    }
    if (Here() == '}') ++fPos;
    return true;
  }

  // Leaves the cursor in the middle of one that is malformed.
  Quantifier ReadQuantifier() {
    if (AtEnd()) return Quantifier::None;
    const char first = Here();
    if (first != '*' && first != '+' && first != '?' && first != '{') return Quantifier::None;
    ++fPos;
    if (first == '{' && !SkipCount()) return Quantifier::Malformed;
    if (!AtEnd() && (Here() == '+' || Here() == '?')) ++fPos;
    return Quantifier::Taken;
  }

  // From "[" to behind its quantifier; a "]" directly behind the "[" closes it.
  bool SkipBracket() {
    ++fPos;
    while (!AtEnd() && Here() != ']') {
      if (!SkipAtom()) return false;
    }
    if (AtEnd()) return false;
    ++fPos;
    return ReadQuantifier() != Quantifier::Malformed;
  }

  // From "(" to behind its quantifier, with all that is nested in it. A "]" that closes nothing
  // ends every group that is open without closing it, and so fails the expression here already.
  bool SkipGroup() {
    std::size_t open = 0;
    do {
      if (AtEnd()) return false;
      switch (Here()) {
        case '(':
          ++open;
          ++fPos;
          break;
        case ')':
          --open;
          ++fPos;
          if (ReadQuantifier() == Quantifier::Malformed) return false;
          break;
        case '[':
          if (!SkipBracket()) return false;
          break;
        case ']':
          return false;
        default:
          if (!SkipAtom()) return false;
      }
    } while (open != 0);
    return true;
  }

  // Up to a bracket or parenthesis, the end, or an alternation.
  Outcome ReadLiteralRun(std::vector<RegexToken>& tokens) {
    std::size_t start = fPos;
    while (!AtEnd() && std::string_view("()[]").find(Here()) == std::string_view::npos) {
      if (Here() == '|') return Outcome::Alternation;
      const std::size_t atom = fPos;
      if (!SkipAtom()) return Outcome::Failure;
      const std::size_t behindAtom = fPos;
      if (ReadQuantifier() != Quantifier::Taken) {
        fPos = behindAtom;  // "{" of a malformed one is an atom of the run
        continue;
      }
      // Contract: a run of exactly one byte in front of the atom is emitted by nobody.
      if (behindAtom - start > behindAtom - atom + 1) {
        tokens.push_back({RegexTokenKind::Literal, Slice(start, atom)});
      }
      tokens.push_back({RegexTokenKind::Unit, Slice(atom, fPos)});
      start = fPos;
    }
    if (fPos != start) tokens.push_back({RegexTokenKind::Literal, Slice(start, fPos)});
    return Outcome::Tokens;
  }

  std::string_view fText;
  std::size_t fPos = 0;
};

}  // namespace

const char* RegexTokenKindName(RegexTokenKind kind) {
  switch (static_cast<std::uint32_t>(kind)) {
    case 1:
      return "U";
    case 2:
      return "B";
    case 4:
      return "X";
    default:
      return "?";
  }
}

bool RegexSplitter::Split(std::string_view expression) {
  std::vector<RegexToken> tokens;
  const Cursor::Outcome outcome = Cursor(expression).ReadAll(tokens);
  if (outcome != Cursor::Outcome::Tokens) {
    tokens.assign(1, {RegexTokenKind::Unit, std::string(expression)});
  }
  fTokenLists.push_back(std::move(tokens));
  return outcome != Cursor::Outcome::Failure;
}
