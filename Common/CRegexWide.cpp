// CRegex on CUnicodeString: the text forms of values, and matching.

#include <regex>

#include "Common/CRegex.h"
#include "Common/CRegexShared.h"
#include "Common/CUnicodeString.h"
#include "Common/CompiledRegex.h"
#include "Common/DebugLog.h"

qxSource("Common\\CRegex");

namespace {

// What "regex(...)" begins and ends with. Made at the first question, which may come before main.
struct RegexFormTexts {
  const CUnicodeString begin{"regex("};
  const CUnicodeString end{")"};
};

const RegexFormTexts& RegexForm() {
  static const RegexFormTexts texts;
  return texts;
}

// UTF-8, or the bytes of a text that has no characters. Lives as long as the value.
std::string_view NarrowForm(const CUnicodeString* value) {
  return value ? value->Text().Utf8() : std::string_view("");
}

}  // namespace

bool CRegex::IsRegexForm(const CUnicodeString& text) {
  return text.StartsWithIgnoringCase(RegexForm().begin) &&
         text.EndsWithIgnoringCase(RegexForm().end);
}

CRegexPtr CRegex::CreateFromValue(const CUnicodeString* value) {
  std::string_view narrow = NarrowForm(value);
  if (!value || !IsRegexForm(*value)) return Create(narrow, true);

  // Six characters less in front and one behind: their bytes, and those in front, between and
  // behind that are none. Nothing but itself folds to a bracket.
  narrow.remove_prefix(narrow.find('(') + 1);
  narrow.remove_suffix(narrow.size() - narrow.rfind(')'));
  return Create(narrow, false);
}

bool CRegex::Matches(const CUnicodeString* text) const {
  return Guarded(kOtherMatchingFailed, [&] {
    if (fFastMode == CRegexFastMode::FastNone) {
      const std::string_view narrow = NarrowForm(text);
      return fRegex->Match(narrow.substr(0, narrow.find('\0')));
    }
    // No literal is empty, so an absent text is like an empty one: FastAny alone takes it.
    return text ? MatchesFast(*text) : fFastMode == CRegexFastMode::FastAny;
  });
}

bool CRegex::MatchesFast(const CUnicodeString& text) const {
  switch (fFastMode) {
    case CRegexFastMode::FastAny:
      return true;
    case CRegexFastMode::FastExact:
      return text.EqualsIgnoringCase(*fLiteralText);
    case CRegexFastMode::FastPrefix:
      return text.StartsWithIgnoringCase(*fLiteralText);
    case CRegexFastMode::FastSuffix:
      return text.EndsWithIgnoringCase(*fLiteralText);
    default:
      return text.FindIgnoringCase(*fLiteralText) != CText::kNotFound;
  }
}

bool CRegex::IsValid(const CUnicodeString* value) {
  const std::string_view narrow = NarrowForm(value);
  std::string expression;
  if (IsRegexForm(narrow)) {
    expression = WithoutCaseMarks(StripRegexForm(narrow));
  } else {
    GlobToExpression(narrow, true, expression);  // with its case marks, unlike in Create
  }
  try {
    const CompiledRegex engine(expression);
    return true;
  } catch (const std::regex_error& error) {
    qxDebugPrint(3, "CRegex::IsValid",
                 "String is not a valid regex: '" << narrow << "' - error: " << error.what());
    return false;
  }
}
