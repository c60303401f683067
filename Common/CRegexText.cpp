// The text forms of CRegex and their conversions; nothing here touches the engine.

#include <string>
#include <string_view>

#include "Common/CRegex.h"

namespace {

constexpr std::string_view kRegexFormStart = "regex(";

void AppendLiteral(char character, std::string& expression) {
  if (CRegex::IsRegexMetaChar(character)) expression += '\\';
  expression += character;
}

// Of the characters in front that stand for themselves.
std::size_t PlainSize(std::string_view glob) {
  std::size_t size = 0;
  while (size < glob.size() && !CRegex::IsRegexMetaChar(glob[size])) ++size;
  return size;
}

constexpr std::size_t kUsualEscapes = 8;  // bytes that they add to nearly all wildcards

enum class GlobState {
  Outside,        // of any bracket
  BracketStart,   // behind "[" and its "!"
  InsideBracket,  // behind the first character of a bracket, up to its "]"
};

// True when the byte at that place of an expression is neither escaped nor in a bracket. A bracket
// without its end is none.
bool IsReal(std::string_view expression, std::size_t position) {
  if (position > 0 && expression[position - 1] == '\\') return false;
  const std::size_t open = expression.rfind('[', position);
  if (open == std::string_view::npos) return true;
  const std::size_t close = expression.find(']', open);
  return close == std::string_view::npos || close < position;
}

// Hands each real occurrence of the pair to the replacement, which answers where to go on.
template <class Replacement>
void ForEachReal(std::string& expression, std::string_view pair, Replacement replacement) {
  std::size_t position = expression.find(pair);
  while (position != std::string::npos) {
    const std::size_t next = IsReal(expression, position) ? replacement(position) : position + 1;
    position = expression.find(pair, next);
  }
}

// Contract: looks at the ends alone, so "a\|" ends with a bar here, and no longer compiles.
void NormalizeEnds(std::string& expression) {
  const bool startsWithBar = expression.front() == '|';
  const bool endsWithBar = expression.back() == '|';
  if (startsWithBar && endsWithBar && expression.size() >= 3) {
    expression.front() = '(';
    expression.back() = ')';
    expression += '?';
  } else if (startsWithBar) {
    expression.front() = '(';
    expression += ")?";
  } else if (endsWithBar) {
    expression.back() = ')';
    expression.insert(0, 1, '(');
    expression += '?';
  }
}

}  // namespace

bool CRegex::IsRegexForm(std::string_view text) {
  return text.starts_with(kRegexFormStart) && text.ends_with(')');
}

std::string_view CRegex::StripRegexForm(std::string_view text) {
  if (!IsRegexForm(text)) return {};
  return text.substr(kRegexFormStart.size(), text.size() - kRegexFormStart.size() - 1);
}

bool CRegex::IsRegexMetaChar(char character) {
  switch (character) {
    case '$':
    case '(':
    case ')':
    case '*':
    case '+':
    case '.':
    case '?':
    case '[':
    case '\\':
    case ']':
    case '^':
    case '{':
    case '|':
    case '}':
      return true;
    default:
      return false;
  }
}

void CRegex::GlobToExpression(std::string_view glob, bool anchored, std::string& out,
                              std::size_t start) {
  std::string expression;  // first of all: glob may be a view into out
  expression.reserve(glob.size() + kUsualEscapes);
  if (anchored) expression += '^';

  GlobState state = GlobState::Outside;
  for (std::size_t i = start; i < glob.size(); ++i) {
    const char character = glob[i];
    switch (state) {
      case GlobState::Outside:
        if (const std::size_t size = PlainSize(glob.substr(i)); size > 0) {
          expression.append(glob, i, size);
          i += size - 1;
        } else if (character == '*') {
          expression += ".*";
        } else if (character == '?') {
          expression += '.';
        } else if (character == '[') {
          expression += '[';
          state = GlobState::BracketStart;
        } else if (character == '\\') {
          if (++i < glob.size()) AppendLiteral(glob[i], expression);
        } else {
          AppendLiteral(character, expression);
        }
        break;
      case GlobState::BracketStart:
        // Contract: a "]" here is written and ends nothing, and every "!" becomes a "^".
        expression += character == '!' ? '^' : character;
        if (character != '!') state = GlobState::InsideBracket;
        break;
      case GlobState::InsideBracket:
        expression += character;
        if (character == ']') state = GlobState::Outside;
        break;
    }
  }

  if (anchored) expression += '$';
  out = std::move(expression);
}

void CRegex::EscapeForRegex(std::string_view source, bool anchors, std::size_t start,
                            std::string& out) {
  std::string expression;  // first of all: source may be a view into out
  if (anchors) expression += '^';
  for (std::size_t i = start; i < source.size(); ++i) AppendLiteral(source[i], expression);
  if (anchors) expression += '$';
  out = std::move(expression);
}

std::string CRegex::NormalizeEmptyAlternatives(const std::string& value) {
  if (!IsRegexForm(value) || StripRegexForm(value).empty()) return value;

  std::string expression(StripRegexForm(value));
  NormalizeEnds(expression);
  ForEachReal(expression, "|)", [&](std::size_t position) {
    const bool isOptional = position + 2 < expression.size() && expression[position + 2] == '?';
    expression.replace(position, 2, isOptional ? ")" : ")?");
    return position + 2;
  });
  // Contract: "(|a)" becomes "(a)", and loses its empty alternative.
  ForEachReal(expression, "(|", [&](std::size_t position) {
    expression.erase(position + 1, 1);
    return position + 1;
  });
  ForEachReal(expression, "||", [&](std::size_t position) {
    expression.erase(position, 1);
    return position + 1;
  });
  return std::string(kRegexFormStart) + expression + ")";
}
