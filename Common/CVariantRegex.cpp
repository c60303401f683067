// Matching texts against a Regex or RegexList, and searching lists of texts by an expression.

#include <optional>
#include <string>

#include "Common/CRegex.h"
#include "Common/CRegexException.h"
#include "Common/CRegexVectorHolder.h"
#include "Common/CUnicodeString.h"
#include "Common/CVariant.h"
#include "Common/CVariantReports.h"

qxSource("Common\\CVariant");

namespace {

// Removes the backslashes of a pattern's escapes. Nothing when the pattern is no plain text: one of
// the special characters stands in it without a backslash, or a backslash before anything else.
std::optional<std::string> PlainText(std::string_view pattern, std::string_view special) {
  std::string plain;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '\\') {
      ++i;
      if (i == pattern.size()) return std::nullopt;
      if (pattern[i] != '\\' && special.find(pattern[i]) == std::string_view::npos) {
        return std::nullopt;
      }
    } else if (special.find(pattern[i]) != std::string_view::npos) {
      return std::nullopt;
    }
    plain += pattern[i];
  }
  return plain;
}

// What a text must end with to match, where the pattern is one of the two forms of such a test.
std::optional<std::string> PlainEnd(std::string_view pattern) {
  constexpr std::string_view kForm = "regex(.*";
  if (pattern.starts_with(kForm) && pattern.ends_with(")")) {
    pattern = pattern.substr(kForm.size(), pattern.size() - kForm.size() - 1);
    while (pattern.ends_with("$")) pattern.remove_suffix(1);
    return PlainText(pattern, "$()*+.?[^{|");
  }
  if (pattern.starts_with("*")) return PlainText(pattern.substr(1), "*?[");
  return std::nullopt;
}

// The text as the engine takes it: in UTF-8, or its bytes where each of them is a character.
std::string EngineText(Selvane::IUnicodeString& text) {
  const CText handle(TextOf(&text));
  if (OutputBytesPerCharacter(EncodingId(text.GetEncodingName())) > 1) {
    return std::string(handle.Utf8());
  }
  return std::string(handle.Bytes());
}

}  // namespace

void CVariant::DeleteRegexHolder() {
  // A writer has no reader beside it, so nothing is published here.
  delete fRegexHolder.load(std::memory_order_relaxed);
  fRegexHolder.store(nullptr, std::memory_order_relaxed);
}

// Built outside of any lock: two threads may both build, and the one that comes second drops its
// own.
const CRegexVectorHolder* CVariant::RegexHolder() const {
  if (CRegexVectorHolder* holder = fRegexHolder.load(std::memory_order_acquire)) return holder;

  auto built = std::make_unique<CRegexVectorHolder>(ShareUse(const_cast<CVariant*>(this)));
  CRegexVectorHolder* holder = nullptr;
  // Release publishes the holder's content to the acquire above, and acquire takes the winner's.
  if (fRegexHolder.compare_exchange_strong(holder, built.get(), std::memory_order_acq_rel,
                                           std::memory_order_acquire)) {
    return built.release();
  }
  return holder;
}

template <class Ask>
std::int32_t CVariant::AskHolder(const char* function, const char* onPosition, Ask ask) const {
  if (!TypeFamily::Regexes.Has(fType)) return 0;
  const CRegexVectorHolder* holder = RegexHolder();
  if (holder->IsUnusable()) return -1;
  try {
    return ask(*holder) ? 1 : 0;
  } catch (const CRegexException& failure) {
    qxReport(ErrorId::GenericCVariantError, function,
             {{"onPosition", onPosition}, {"reason", failure.Reason()}});
    return 0;
  }
}

std::int32_t CVariant::Matches(std::string_view text) const {
  return AskHolder("CVariant::Matches", "CVariant: Matches",
                   [text](const CRegexVectorHolder& holder) { return holder.Find(text, nullptr); });
}

std::int32_t CVariant::TriggerRegexBuild() const {
  return Matches("thisisjustatrigger");
}

std::int32_t CVariant::Matches(Selvane::IUnicodeString* text, Selvane::IUnicodeString* out) const {
  if (!text) return 0;
  return AskHolder(
      "CVariant::IFMatches", "CVariant: IFMatches", [&](const CRegexVectorHolder& holder) {
        CUsePtr<CUnicodeString> source;
        const bool found = holder.Find(EngineText(*text), &source);
        if (!out) return found;
        if (found && source && !source->IsEmpty()) {
          out->Assign(source->GetBytes(), source->GetByteSize(), source->GetEncodingName());
        } else {
          out->Clear();
        }
        return found;
      });
}

std::int64_t CVariant::FindMatching(const CRegex* regex) const {
  if (!regex) return -1;
  for (std::uint64_t i = 0; i < SizeOfList(); ++i) {
    bool ok = false;
    const CUnicodeString element{CText(GetTextListElem(static_cast<std::int64_t>(i), ok))};
    if (regex->Matches(&element)) return static_cast<std::int64_t>(i);
  }
  return -1;
}

bool CVariant::FindFirstMatching(const IVariant* regex, IVariant** result, CRegex* compiled) const {
  if (!regex || !result || !compiled) return false;
  if (fType != VariantType::StringList || regex->GetType() != VariantType::Regex) return false;
  const std::int64_t position = FindMatching(compiled);
  if (position < 0) return false;
  bool ok = false;
  *result = GetMixedListElem(position, ok);
  return true;
}

std::int64_t CVariant::FindExpression(Selvane::IUnicodeString* text) const {
  if (!TypeFamily::StringLists.Has(fType)) return -1;
  const CUnicodeString pattern{CText(TextOf(text))};
  const auto end = PlainEnd(pattern.Text().Utf8());
  if (!end) return FindMatching(CRegex::CreateFromValue(&pattern).Get());

  const CText wanted(*end);
  for (std::uint64_t i = 0; i < SizeOfList(); ++i) {
    bool ok = false;
    const CText element(GetTextListElem(static_cast<std::int64_t>(i), ok));
    if (element.EndsWithIgnoringCase(wanted)) return static_cast<std::int64_t>(i);
  }
  return -1;
}
