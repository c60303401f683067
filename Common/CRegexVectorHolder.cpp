#include "Common/CRegexVectorHolder.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <regex>

#include "Common/CRegexShared.h"
#include "Common/CUnicodeString.h"
#include "Common/CVariant.h"
#include "Common/DebugLog.h"
#include "Common/ErrorCatalogue.h"
#include "Common/PrefixSuffixCollector.h"

qxSource("Common\\CRegexVectorHolder");

namespace {

constinit std::atomic<bool> gRegexHolderDiagnostics{false};

// Smallest list for which prefixes are looked for, as the environment has it at load.
std::uint64_t ReadOptimizeMinListSize() {
  constexpr auto kOff = std::numeric_limits<std::uint64_t>::max();
  const char* text = std::getenv("QRX_REGEX_OPTIMIZE_MIN_LIST_SIZE");
  if (!text) return kOff;
  if (*text == '\0') return 0;
  const std::int64_t size = CUnicodeString(text).ToLong();
  return size < 0 ? kOff : static_cast<std::uint64_t>(size);
}

const std::uint64_t gRegexOptimizeMinListSize = ReadOptimizeMinListSize();

void ConvertWildcard(const std::string& element, std::string& expression) {
  CRegex::GlobToExpression(element, false, expression);
}

// Without the leading star, which the wrapper puts in front of all of them.
void ConvertSuffixWildcard(const std::string& element, std::string& expression) {
  CRegex::GlobToExpression(element, false, expression, 1);
}

void ConvertRegexForm(const std::string& element, std::string& expression) {
  expression = CRegex::StripRegexForm(element);
}

std::string MakeAnchoredWildcard(const std::string& merged) {
  return "^" + merged + "$";
}

std::string MakeAnchoredSuffixWildcard(const std::string& merged) {
  return "^.*" + merged + "$";
}

void ReportBadExpression(const std::string& element) {
  constexpr const char* kPosition = "CRegexVectorHolder::CRegexVectorHolder";
  qxReport(ErrorId::FormatError, kPosition,
           {{"onPosition", kPosition},
            {"action", "Finding Regex in String"},
            {"property", element},
            {"typeName", "not a valid regular expression"},
            {"formatType", "a valid Regex"}});
}

bool Name(std::string_view element, CUsePtr<CUnicodeString>* source) {
  *source = MakeUseCounted<CUnicodeString>(element);
  return true;
}

RegexVectorEntry EntryOf(CRegexPtr scanner, const std::string& element) {
  return {std::move(scanner),
          CUseCountedSharedPtr<std::vector<std::string>>(new std::vector<std::string>{element})};
}

}  // namespace

std::uint64_t GetRegexOptimizeMinListSize() {
  return gRegexOptimizeMinListSize;
}

void SetRegexHolderDiagnostics(bool on) {
  gRegexHolderDiagnostics.store(on, std::memory_order_relaxed);
}

bool GetRegexHolderDiagnostics() {
  return gRegexHolderDiagnostics.load(std::memory_order_relaxed);
}

bool HasBackReference(std::string_view expression) {
  constexpr auto kNone = std::string_view::npos;
  for (std::size_t i = expression.find('\\'); i != kNone; i = expression.find('\\', i + 2)) {
    if (i + 1 == expression.size()) break;
    if (expression[i + 1] >= '1' && expression[i + 1] <= '9') return true;
  }
  return false;
}

CRegexVectorHolder::CRegexVectorHolder(const CUsePtr<CVariant>& value) {
  if (GetRegexHolderDiagnostics()) {
    fCollectors = std::make_unique<std::vector<std::unique_ptr<PrefixSuffixCollector>>>();
  }
  if (!value) return;
  if (value->GetType() == VariantType::Regex) {
    BuildFromText(std::string(Utf8Of(value->GetText().Get())));
  }
  if (value->GetType() == VariantType::RegexList) BuildFromList(*value);
}

CRegexVectorHolder::CRegexVectorHolder(const CRegexVectorHolder& other)
    : fEntries(other.fEntries),
      fInvalid(other.fInvalid),
      fPrefixFailureLogged(other.fPrefixFailureLogged),
      fMatcher(other.fMatcher) {
  if (GetRegexHolderDiagnostics()) {
    fCollectors = std::make_unique<std::vector<std::unique_ptr<PrefixSuffixCollector>>>();
  }
}

CRegexVectorHolder::~CRegexVectorHolder() = default;

// A lone expression needs no merging, so a wildcard keeps the fast path of its own form.
void CRegexVectorHolder::BuildFromText(const std::string& text) {
  if (CRegexPtr scanner = CRegex::CreateFromValue(text)) {
    fEntries.push_back(EntryOf(std::move(scanner), text));
    return;
  }
  ReportBadExpression(text);
  fInvalid = true;
}

void CRegexVectorHolder::BuildFromList(const CVariant& list) {
  fAllowance = std::make_shared<Matching::MemoryAllowance>(Matching::ListMatcher::kAutomataBudget);
  std::vector<std::string> plainWildcards;
  std::vector<std::string> starWildcards;
  std::vector<std::string> expressions;
  for (std::uint64_t i = 0; i < list.SizeOfList(); ++i) {
    bool ok = false;
    std::string element(Utf8Of(list.GetTextListElem(static_cast<std::int64_t>(i), ok).Get()));
    if (element.empty()) continue;
    if (CRegex::IsWildcardForm(element)) {
      (element.front() == '*' ? starWildcards : plainWildcards).push_back(std::move(element));
      continue;
    }
    const std::string_view expression = CRegex::StripRegexForm(element);
    if (HasBackReference(expression)) {
      CompileAlone(element, expression);
    } else {
      expressions.push_back(std::move(element));
    }
  }
  ProcessRegexVector(std::move(plainWildcards), ConvertWildcard, MakeAnchoredWildcard);
  ProcessRegexVector(std::move(starWildcards), ConvertSuffixWildcard, MakeAnchoredSuffixWildcard);
  ProcessRegexVector(std::move(expressions), ConvertRegexForm, nullptr);
  if (fEntries.empty()) return;
  const Matching::ListMatcher::Options options{.allowance = fAllowance};
  fMatcher = std::make_shared<const Matching::ListMatcher>(Scanners(), options);
}

void CRegexVectorHolder::CompileAlone(const std::string& element, std::string_view expression) {
  if (CRegexPtr scanner = CRegex::Create(expression, false, fAllowance)) {
    fEntries.push_back(EntryOf(std::move(scanner), element));
    return;
  }
  ReportBadExpression(element);
  fInvalid = true;
}

void CRegexVectorHolder::ProcessRegexVector(std::vector<std::string> expressions,
                                            ConverterFn converter, WrapperFn wrapper) {
  if (expressions.size() >= GetRegexOptimizeMinListSize()) {
    const bool invalid = fInvalid;
    const std::size_t entries = fEntries.size();
    const std::size_t collectors = fCollectors ? fCollectors->size() : 0;
    try {
      return ProcessRegexVectorCore(expressions, converter, wrapper, true);
    } catch (const CRegexVectorHolderException&) {
      fInvalid = invalid;
      fEntries.resize(entries);
      if (fCollectors) fCollectors->resize(collectors);
    }
  }
  ProcessRegexVectorCore(std::move(expressions), converter, wrapper, false);
}

std::vector<Matching::ListScanner> CRegexVectorHolder::Scanners() const {
  std::vector<Matching::ListScanner> scanners;
  scanners.reserve(fEntries.size());
  for (const RegexVectorEntry& entry : fEntries) {
    Matching::ListScanner scanner{entry.fScanner->Pattern()};
    // An expression that stands alone has no alternatives to tell apart.
    if (entry.fSources->size() > 1 || !HasBackReference(scanner.pattern)) {
      scanner.firstGroup = static_cast<std::uint32_t>(entry.FirstAlternativeGroup());
      scanner.groupCount = static_cast<std::uint32_t>(entry.fSources->size());
      scanner.names = entry.fSources->data();
    }
    scanners.push_back(scanner);
  }
  return scanners;
}

namespace {

// An alternative's own automaton fails as its scanner would.
[[noreturn]] void FailAsScanner(const std::regex_error& failure) {
  throw EngineFailure(kMatchingFailed, failure);
}

// The entries as the list matcher asks them. Which operation of a scanner answers shows in the
// words of its failure: a name among several is told by captures.
struct AskedEntries {
  const std::vector<RegexVectorEntry>& entries;
  bool isNameWanted = false;

  bool Matches(std::uint32_t scanner, std::string_view text) const {
    const RegexVectorEntry& entry = entries[scanner];
    if (!isNameWanted || entry.fSources->size() == 1) return entry.fScanner->Matches(text);
    CRegexCaptures captures;
    return entry.fScanner->MatchCaptures(text, captures);
  }
  std::string_view Pattern(std::uint32_t scanner) const {
    return entries[scanner].fScanner->Pattern();
  }
};

}  // namespace

const std::string& CRegexVectorHolder::ElementOf(std::size_t scanner, std::size_t group) const {
  const RegexVectorEntry& entry = fEntries[scanner];
  return (*entry.fSources)[group == 0 ? 0 : group - entry.FirstAlternativeGroup()];
}

bool CRegexVectorHolder::Find(std::string_view text, CUsePtr<CUnicodeString>* source) const {
  if (!fMatcher) return FindInEntries(text, source);

  try {
    const AskedEntries scanners{fEntries, source != nullptr};
    if (!source) return fMatcher->Matches(text, scanners);
    std::uint32_t from = 0;
    while (const auto hit = fMatcher->FindFirst(text, scanners, from)) {
      if (hit->group != 0) return Name(hit->name, source);
      if (FindInEntry(fEntries[hit->scanner], text, source)) return true;
      from = hit->scanner + 1;
    }
    return false;
  } catch (const std::regex_error& failure) {
    FailAsScanner(failure);
  }
}

void CRegexVectorHolder::VisitRuns(std::string_view text, const OnRun& onRun) const {
  if (!fMatcher) return;
  try {
    fMatcher->VisitRuns(text, AskedEntries{fEntries},
                        [&](std::uint32_t scanner, std::uint32_t group, bool matched) {
                          onRun(ElementOf(scanner, group), matched);
                        });
  } catch (const std::regex_error& failure) {
    FailAsScanner(failure);
  }
}

bool CRegexVectorHolder::FindInEntries(std::string_view text,
                                       CUsePtr<CUnicodeString>* source) const {
  return std::any_of(fEntries.begin(), fEntries.end(), [&](const RegexVectorEntry& entry) {
    return FindInEntry(entry, text, source);
  });
}

// Contract: a match in which no alternative's group holds what the group around them holds is none
// when a name is asked for.
bool CRegexVectorHolder::FindInEntry(const RegexVectorEntry& entry, std::string_view text,
                                     CUsePtr<CUnicodeString>* source) {
  if (!entry.fScanner || !entry.fSources) return false;
  const std::vector<std::string>& sources = *entry.fSources;
  if (!source || sources.size() == 1) {
    return entry.fScanner->Matches(text) && (!source || Name(sources.front(), source));
  }
  CRegexCaptures captures;
  if (!entry.fScanner->MatchCaptures(text, captures)) return false;
  const std::size_t first = entry.FirstAlternativeGroup();
  if (captures.Size() <= first) return false;
  const std::string_view enclosing = captures[first - 1];
  const std::size_t end = std::min(captures.Size(), first + sources.size());
  for (std::size_t group = first; group < end; ++group) {
    if (captures[group].Text() == enclosing) return Name(sources[group - first], source);
  }
  return false;
}
