#include "Common/CompiledRegex.h"

#include <locale>
#include <regex>
#include <utility>
#include <variant>

#include "Common/Matching/BuiltOnce.h"
#include "Common/Matching/Expression.h"
#include "Common/Matching/Parser.h"
#include "Common/RegexEngineGuard.h"

namespace {

using Matching::Captures;
using Matching::Expression;
using Matching::MatchIterator;

// The library's error with the library's words, which only the library itself can put there.
class ExpressionError : public std::regex_error {
public:
  explicit ExpressionError(const Matching::SyntaxError& error)
      : std::regex_error(error.code), fMessage(error.message) {}

  const char* what() const noexcept override { return fMessage; }

private:
  const char* fMessage;  // static text
};

std::string_view TextOf(const Matching::Span& span, std::string_view text) {
  return text.substr(span.begin, span.end - span.begin);
}

void CopyCaptures(const Captures& spans, std::string_view text, CRegexCaptures& captures) {
  for (const Matching::Span& span : spans) {
    captures.Append(span.matched ? CRegexCapture{true, TextOf(span, text)} : CRegexCapture{});
  }
  captures.SetSurroundings(text);
}

// Appends what the format says of one match.
void AppendFormatted(std::string_view format, const Captures& spans, std::string_view text,
                     std::string& out) {
  const auto appendGroup = [&](std::size_t group) {
    if (group < spans.size() && spans[group].matched) out += TextOf(spans[group], text);
  };
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] == '&') {
      appendGroup(0);
    } else if (format[i] != '\\' || i + 1 == format.size()) {
      out += format[i];
    } else if (const char next = format[++i]; next >= '0' && next <= '9') {
      appendGroup(static_cast<std::size_t>(next - '0'));
    } else {
      out += next;
    }
  }
}

}  // namespace

CompiledRegex::CompiledRegex(std::string_view expression,
                             std::shared_ptr<Matching::MemoryAllowance> allowance)
    : fExpression(expression), fAllowance(std::move(allowance)) {
  if (std::locale() != std::locale::classic()) {
    fLibrary = std::make_unique<const RegexEngine>(expression);
    fMarkCount = fLibrary->MarkCount();
    return;
  }
  const Matching::ParseResult parsed = Matching::Validate(expression);
  if (parsed.error) throw ExpressionError(*parsed.error);
  fMarkCount = parsed.tree.GroupCount();
}

CompiledRegex::~CompiledRegex() {
  delete fLinear.load(std::memory_order_relaxed);
}

const Expression& CompiledRegex::Linear() const {
  return Matching::BuiltOnce(fLinear, [this] {
    auto compiled = Expression::Compile(fExpression, {.allowance = fAllowance.get()});
    // Valid, or we would not exist.
    return std::move(std::get<std::unique_ptr<Expression>>(compiled));
  });
}

bool CompiledRegex::Match(std::string_view text) const {
  return fLibrary ? fLibrary->Match(text) : Linear().IsMatch(text);
}

bool CompiledRegex::Match(std::string_view text, CRegexCaptures& captures) const {
  if (fLibrary) return fLibrary->Match(text, captures);
  captures.Clear();
  Captures spans;
  if (!Linear().MatchCaptures(text, spans)) return false;
  CopyCaptures(spans, text, captures);
  return true;
}

bool CompiledRegex::Search(std::string_view text) const {
  return fLibrary ? fLibrary->Search(text) : Linear().Search(text);
}

bool CompiledRegex::Search(std::string_view text, CRegexCaptures& captures) const {
  if (fLibrary) return fLibrary->Search(text, captures);
  captures.Clear();
  Captures spans;
  if (!Linear().SearchCaptures(text, 0, {}, spans)) return false;
  CopyCaptures(spans, text, captures);
  return true;
}

std::string CompiledRegex::Replace(std::string_view text, std::string_view format, bool all) const {
  if (fLibrary) return fLibrary->Replace(text, std::string(format), all);
  std::string out;
  std::size_t copied = 0;  // bytes of the text that are dealt with
  Captures spans;
  MatchIterator walk(Linear(), text);
  while (walk.Next(spans)) {
    out += text.substr(copied, spans[0].begin - copied);
    AppendFormatted(format, spans, text, out);
    copied = spans[0].end;
    if (!all) break;
  }
  out += text.substr(copied);
  return out;
}

struct CompiledRegex::Walk::Linear {
  Linear(const Expression& expression, std::string_view walked)
      : next(expression, walked), text(walked), hasMatch(next.Next(spans)) {}

  Captures spans;  // of the match that the walk stands on
  MatchIterator next;
  std::string_view text;
  bool hasMatch;
  bool isGiven = false;  // that match, by Next
};

struct CompiledRegex::Walk::Library {
  RegexEngine::Walk next;
};

CompiledRegex::Walk::Walk(const CompiledRegex& regex, std::string_view text) {
  if (regex.fLibrary) {
    fLibrary.reset(new Library{RegexEngine::Walk(*regex.fLibrary, text)});
  } else {
    fLinear = std::make_unique<Linear>(regex.Linear(), text);
  }
}

CompiledRegex::Walk::~Walk() = default;

bool CompiledRegex::Walk::Next(std::string_view& match) {
  if (fLibrary) return fLibrary->next.Next(match);
  Linear& walk = *fLinear;
  if (walk.isGiven) {
    walk.hasMatch = false;  // a failure ends the walk
    walk.hasMatch = walk.next.Next(walk.spans);
  }
  walk.isGiven = true;
  if (!walk.hasMatch) return false;
  match = TextOf(walk.spans[0], walk.text);
  return true;
}
