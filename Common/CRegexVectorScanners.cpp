#include <algorithm>
#include <utility>

#include "Common/CRegexVectorHolder.h"
#include "Common/DebugLog.h"
#include "Common/ErrorCatalogue.h"
#include "Common/PrefixSuffixCollector.h"

qxSource("Common\\CRegexVectorHolder");

namespace {

constexpr const char* kFunction = "CRegexVectorHolder::ProcessRegexVectorCore";

void ReportBadExpression(const char* position, const std::string& expression) {
  qxReport(ErrorId::FormatError, kFunction,
           {{"onPosition", position},
            {"action", "Finding Regex in String"},
            {"property", expression},
            {"typeName", "not a valid regular expression"},
            {"formatType", "a valid Regex"}});
}

}  // namespace

// The writing of one vector's scanners, group by group. A scanner reads "((A1)|(A2))", or
// "(P((A1)|(A2))S)" in a group with a prefix P and a suffix S, with the vector's wrapper around it.
class CRegexVectorHolder::ScannerBuild {
public:
  ScannerBuild(CRegexVectorHolder& holder, WrapperFn wrapper, bool optimize)
      : fHolder(holder), fWrapper(wrapper), fOptimize(optimize) {}

  // The last group takes back what the others cannot serve, and so grows while they are handled.
  void Run(std::vector<PrefixGroup>& groups) {
    for (PrefixGroup& group : groups) ProcessGroup(group, groups.back());
  }

private:
  void ProcessGroup(PrefixGroup& group, PrefixGroup& last) {
    Open(group);
    const bool isLast = &group == &last;
    std::size_t resume = 0;  // first item behind the last scanner
    for (std::size_t i = 0; i < group.Items().size(); ++i) {
      AddItem(group, group.Items()[i], last);
      if (fSeparators < kMaxSeparators && fMerged.size() < kMaxMergedLength) continue;
      Flush();
      resume = i + 1;
    }
    if (HasAlternatives()) {
      if (!isLast && fMerged.size() <= kMaxDissolvedLength) {
        HandOver(group, resume, last);
      } else {
        Flush();
      }
    }
    fSources.clear();
  }

  void Open(const PrefixGroup& group) {
    fHasAffix = group.HasAffix();
    if (fHasAffix) {
      const CRegexPtr prefix = CRegex::Create(group.Prefix(), false);
      if (!prefix) FailPrefix(group.Prefix());
      fAffixGroups = prefix->GetCaptureCount();
    }
    fOpen = fHasAffix ? "(" + group.Prefix() + "(" : "(";
    fClose = fHasAffix ? ")" + group.Suffix() + ")" : ")";
    StartScanner();
  }

  void StartScanner() {
    fMerged = fOpen;
    fSeparators = 0;
    fSources.reserve(kMaxSeparators + 1);
  }

  bool HasAlternatives() const { return fMerged.size() > fOpen.size(); }

  // Wildcards are not checked one by one: a bad one shows in its scanner.
  void AddItem(const PrefixGroup& group, RegexWithSource& item, PrefixGroup& last) {
    if (CRegex::IsWildcardForm(item.fSource)) {
      WriteAlternative(item, 0, &group == &last);
    } else if (const CRegexPtr alone = CRegex::Create(item.fExpression, false)) {
      WriteAlternative(item, alone->GetCaptureCount(), &group == &last);
    } else if (fOptimize && &group != &last) {
      last.AddToGroup(group.Prefix() + item.fExpression, item.fSource);
      WarnOfPrefix(group.Prefix(), item.fExpression);
    } else {
      ReportBadExpression("CRegexVectorHolder::ProcessRegexVector", item.fSource);
      fHolder.fInvalid = true;
    }
  }

  // The last group's items are handed over to none, and give their source away.
  void WriteAlternative(RegexWithSource& item, std::uint64_t captureCount, bool isLast) {
    if (HasAlternatives()) {
      fMerged += '|';
      ++fSeparators;
    }
    fMerged += '(';
    fMerged += item.fExpression;
    fMerged += ')';
    fSources.push_back(isLast ? std::move(item.fSource) : item.fSource);
    fSources.resize(fSources.size() + captureCount);
  }

  // A rest that is not worth a scanner of its own. What was handed over before goes twice, which
  // harms nobody.
  void HandOver(const PrefixGroup& group, std::size_t resume, PrefixGroup& last) {
    for (std::size_t i = resume; i < group.Items().size(); ++i) {
      const RegexWithSource& item = group.Items()[i];
      last.AddToGroup(group.Prefix() + item.fExpression, item.fSource);
    }
  }

  void Flush() {
    if (!HasAlternatives()) return;  // a long prefix alone reaches the limit of length
    fMerged += fClose;
    CRegexPtr scanner =
        CRegex::Create(fWrapper ? fWrapper(fMerged) : fMerged, false, fHolder.fAllowance);
    if (scanner) {
      scanner->SetAffixInfo(fHasAffix, fAffixGroups);
      fHolder.fEntries.push_back(
          {std::move(scanner), CUseCountedSharedPtr<std::vector<std::string>>(
                                   new std::vector<std::string>(std::move(fSources)))});
      fSources.clear();
    } else {
      // Contract: the sources stay for the next scanner of the group; such a holder is not used.
      ReportBadExpression("CRegexVectorHolder::ProcessRegexVector", fMerged);
      if (fOptimize) {
        throw CRegexVectorHolderException("regex compilation with optimization failed");
      }
      fHolder.fInvalid = true;
    }
    StartScanner();
  }

  // The normal end of a try with a prefix that a cut has made into bad syntax.
  [[noreturn]] void FailPrefix(const std::string& prefix) {
    ReportBadExpression("CRegexVectorHolder::ProcessRegexVectorCore #642", prefix);
    throw CRegexVectorHolderException("regex compilation with optimization failed for prefix");
  }

  void WarnOfPrefix(const std::string& prefix, const std::string& rest) {
    if (std::exchange(fHolder.fPrefixFailureLogged, true)) return;
    qxReport(ErrorId::InternalWarning, kFunction,
             {{"msg", "CRegexVectorHolder::ProcessRegexVector: failed to apply prefix '" + prefix +
                          "' for '" + rest + "' continue w/o optimization"}});
  }

  CRegexVectorHolder& fHolder;
  const WrapperFn fWrapper;  // may be null
  const bool fOptimize;

  // Of the group.
  std::string fOpen;
  std::string fClose;
  bool fHasAffix = false;
  std::uint64_t fAffixGroups = 0;  // capture groups in the prefix; read with fHasAffix alone

  // Of the scanner.
  std::string fMerged;
  std::size_t fSeparators = 0;        // "|" between its alternatives
  std::vector<std::string> fSources;  // parallel to its groups from the first alternative on
};

void CRegexVectorHolder::ProcessRegexVectorCore(std::vector<std::string> expressions,
                                                ConverterFn converter, WrapperFn wrapper,
                                                bool optimize) {
  auto collector = std::make_unique<PrefixSuffixCollector>(GetRegexHolderDiagnostics());
  collector->Reserve(expressions.size());
  for (std::string& element : expressions) {
    std::string expression;
    if (converter) {
      converter(element, expression);
    } else {
      expression = element;
    }
    collector->Add(std::move(expression), std::move(element));
  }
  collector->Calculate(optimize);
  ScannerBuild(*this, wrapper, optimize).Run(collector->Groups());
  if (fCollectors) fCollectors->push_back(std::move(collector));
}
