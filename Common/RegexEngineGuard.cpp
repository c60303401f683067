#include "Common/RegexEngineGuard.h"

#include <utility>

#include "Common/RegexExpressionSize.h"

namespace {

// What a frame of the engine takes, measured and rounded up; a sanitizer widens all of them.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define qxSanitized 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define qxSanitized 1
#endif
#endif

#if defined(qxSanitized)
constexpr std::uint64_t kFrameScale = 4;
constexpr std::uint64_t kReserve = 128 * 1024;
#else
constexpr std::uint64_t kFrameScale = 1;
constexpr std::uint64_t kReserve = 48 * 1024;
#endif

// Kept free at match time for what the engine calls from its deepest frame, the unwinder most of
// all: kReserve. In bytes, as are the others.
constexpr std::uint64_t kEmptyStepFrame = 224 * kFrameScale;
constexpr std::uint64_t kCompilerReserve = 32 * 1024 * kFrameScale;
constexpr std::uint64_t kTermFrame = 160 * kFrameScale;
constexpr std::uint64_t kGroupFrame = 600 * kFrameScale;

constexpr auto kSyntax = std::regex::ECMAScript | std::regex::icase;

// The lowest address that keeps so many bytes of this thread's stack free, or 0, below every frame,
// when the present frame lies in no stack that the system knows, as on a fibre.
std::uintptr_t StackLimit(std::uint64_t freeBytes) {
  const StackBounds stack = CurrentThreadStack();
  if (!stack.Holds(CurrentFrameAddress())) return 0;
  const std::uintptr_t size = stack.high - stack.low;
  return freeBytes < size ? stack.low + freeBytes : stack.high;
}

// Matchers within matchers, of which each may take 2.4 MiB for the 100,000 states that the library
// allows an expression.
constexpr std::uint64_t kMaxLookAheads = 100;

// The size of an expression that may be compiled here: its numbers and look-aheads are not too many
// for the library, and its compilation fits into this thread's stack.
RegexExpressionSize MeasureToCompile(std::string_view expression) {
  const RegexExpressionSize size = MeasureExpression(expression);
  if (size.hasHugeNumber) throw std::regex_error(std::regex_constants::error_badbrace);
  if (size.lookAheads > kMaxLookAheads) {
    throw std::regex_error(std::regex_constants::error_complexity);
  }
  const std::uint64_t needed =
      kTermFrame * size.openTerms + kGroupFrame * size.openGroups + kCompilerReserve;
  if (CurrentFrameAddress() < StackLimit(needed)) {
    throw std::regex_error(std::regex_constants::error_stack);
  }
  return size;
}

// An engine call under way: the text between guarded iterators.
class GuardedText {
public:
  GuardedText(std::string_view text, std::uint64_t emptySteps) : fText(text), fContext(emptySteps) {
    fContext.Begin();
  }

  RegexTextIterator begin() { return {fText.data(), &fContext}; }
  RegexTextIterator end() { return {fText.data() + fText.size(), &fContext}; }

private:
  std::string_view fText;
  RegexEngineContext fContext;
};

using Results = std::match_results<RegexTextIterator>;

std::string_view TextOf(const std::sub_match<RegexTextIterator>& capture) {
  return {capture.first.Position(), static_cast<std::size_t>(capture.length())};
}

// The results point into iterators whose context ends with the call, the captures into the text.
void CopyCaptures(const Results& results, std::string_view text, CRegexCaptures& captures) {
  for (const auto& capture : results) {
    captures.Append(capture.matched ? CRegexCapture{true, TextOf(capture)} : CRegexCapture{});
  }
  captures.SetSurroundings(text);
}

}  // namespace

void RegexEngineContext::Begin() {
  fSteps = 0;
  fStackLimit = StackLimit(kReserve + kEmptyStepFrame * fEmptySteps);
  Step();
}

void RegexEngineContext::ThrowStack() {
  throw std::regex_error(std::regex_constants::error_stack);
}

void RegexEngineContext::ThrowComplexity() {
  throw std::regex_error(std::regex_constants::error_complexity);
}

RegexEngine::RegexEngine(std::string_view expression)
    : fEmptySteps(MeasureToCompile(expression).emptySteps),
      fRegex(expression.data(), expression.size(), kSyntax) {}

bool RegexEngine::Match(std::string_view text) const {
  GuardedText guarded(text, fEmptySteps);
  return std::regex_match(guarded.begin(), guarded.end(), fRegex);
}

bool RegexEngine::Match(std::string_view text, CRegexCaptures& captures) const {
  captures.Clear();
  GuardedText guarded(text, fEmptySteps);
  Results results;
  if (!std::regex_match(guarded.begin(), guarded.end(), results, fRegex)) return false;
  CopyCaptures(results, text, captures);
  return true;
}

bool RegexEngine::Search(std::string_view text) const {
  GuardedText guarded(text, fEmptySteps);
  return std::regex_search(guarded.begin(), guarded.end(), fRegex);
}

bool RegexEngine::Search(std::string_view text, CRegexCaptures& captures) const {
  captures.Clear();
  GuardedText guarded(text, fEmptySteps);
  Results results;
  if (!std::regex_search(guarded.begin(), guarded.end(), results, fRegex)) return false;
  CopyCaptures(results, text, captures);
  return true;
}

std::string RegexEngine::Replace(std::string_view text, const std::string& format, bool all) const {
  auto flags = std::regex_constants::format_sed;
  if (!all) flags |= std::regex_constants::format_first_only;

  GuardedText guarded(text, fEmptySteps);
  std::string out;
  std::regex_replace(std::back_inserter(out), guarded.begin(), guarded.end(), fRegex, format,
                     flags);
  return out;
}

RegexEngine::Walk::Walk(const RegexEngine& engine, std::string_view text)
    : fContext(engine.fEmptySteps) {
  fContext.Begin();
  fNext = {RegexTextIterator(text.data(), &fContext),
           RegexTextIterator(text.data() + text.size(), &fContext), engine.fRegex};
}

bool RegexEngine::Walk::Next(std::string_view& match) {
  const std::regex_iterator<RegexTextIterator> end;
  if (fNext == end) return false;
  if (!fIsFirst) {
    fContext.Begin();  // every step of the walk is a call of its own, perhaps on another thread
    auto next = std::exchange(fNext, {});  // a failure ends the walk
    fNext = ++next;
  }
  fIsFirst = false;
  if (fNext == end) return false;
  match = TextOf((*fNext)[0]);
  return true;
}
