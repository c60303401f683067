#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CException.h"
#include "Common/CRegex.h"
#include "Common/CUseCounted.h"
#include "Common/Matching/ListMatcher.h"

class CUnicodeString;
class CVariant;
class PrefixSuffixCollector;

// A build with prefixes that did not work out; caught one level up, where it is built without them.
class CRegexVectorHolderException : public ARunTimeError {
public:
  explicit CRegexVectorHolderException(const std::string& reason)
      : ARunTimeError("RegexVector", "RegexVector", reason) {}
};

// One scanner: an expression that stands for several elements of the list.
struct RegexVectorEntry {
  CRegexPtr fScanner;
  // For each capture group of the scanner from the first alternative on: the text of the element
  // whose alternative starts at that group, or an empty text for a group inside an alternative.
  CUseCountedSharedPtr<std::vector<std::string>> fSources;

  // Behind the whole list, and with an affix the outermost group and those of the prefix.
  std::size_t FirstAlternativeGroup() const {
    return fScanner->HasAffix() ? fScanner->AffixGroups() + 3 : 2;
  }
};

// The compiled form of a Regex or RegexList value: does a text match any of its expressions, and
// which?
//
// The elements are merged into scanners of up to ten alternatives, and where the list is at least
// as long as the process asks for, grouped before that by beginnings they share. Built by one
// thread; read-only, and safe to ask from any thread, once its variant has published it. It keeps
// no hold of the variant.
//
// A list with an expression or scanner that does not compile is unusable as a whole: IsUnusable
// says so, and who asks Find all the same gets the answer of the rest.
class CRegexVectorHolder {
public:
  using ConverterFn = void (*)(const std::string& element, std::string& expression);
  using WrapperFn = std::string (*)(const std::string& merged);

  // Limits of a scanner, part of the contract: they decide which elements stand together.
  static constexpr std::size_t kMaxSeparators = 9;       // hence ten alternatives
  static constexpr std::size_t kMaxMergedLength = 8192;  // bytes; tested behind each alternative
  static constexpr std::size_t kMaxDissolvedLength =
      2048;  // a shorter rest of a group goes to the last

  // A null handle and a value of any other type give a holder that matches nothing.
  explicit CRegexVectorHolder(const CUsePtr<CVariant>& value);
  // Shares the scanners; starts without diagnostics of its own.
  CRegexVectorHolder(const CRegexVectorHolder& other);
  CRegexVectorHolder& operator=(const CRegexVectorHolder&) = delete;
  virtual ~CRegexVectorHolder();

  bool IsUnusable() const { return fInvalid; }

  // Whether the whole text matches an expression. With a source, names the first element in the
  // order of the scanners that does, in the words of the list, and leaves the handle alone on a
  // miss. Throws CRegexException when the engine fails.
  //
  // Contract: when the enclosing match is empty, the first alternative of its scanner is named,
  // whichever matched; and a group inside an alternative can be taken for one, which names "".
  bool Find(std::string_view text, CUsePtr<CUnicodeString>* source) const;

  // What a text costs beyond looking for literals: calls onRun(element, matched) for each element
  // whose expression it makes run. Throws CRegexException when the engine fails.
  using OnRun = std::function<void(const std::string& element, bool matched)>;
  void VisitRuns(std::string_view text, const OnRun& onRun) const;

  const std::vector<RegexVectorEntry>& Entries() const { return fEntries; }
  // The element of a scanner's group; for group 0 its first one.
  const std::string& ElementOf(std::size_t scanner, std::size_t group) const;
  // The matcher's view of the scanners, in their order; for diagnoses.
  std::vector<Matching::ListScanner> Scanners() const;
  // What stands behind Find; null where there is nothing to gain over asking the one scanner.
  const Matching::ListMatcher* Matcher() const { return fMatcher.get(); }

  // What the holder was built from, line by line; the target is emptied first. All but the scanners
  // need the diagnostics to have been on when the holder was built.
  void DumpTimeMeasurements(std::vector<std::string>& lines) const;
  void DumpScanners(std::vector<std::string>& lines) const;
  void DumpExtracted(std::vector<std::string>& lines) const;
  void DumpRadixTrees(std::vector<std::string>& lines) const;
  void DumpSplitted(std::vector<std::string>& lines) const;
  void DumpOriginal(std::vector<std::string>& lines) const;

private:
  class ScannerBuild;

  // Asks the entries one by one: the contract in its plainest form, and the road of a lone
  // expression.
  bool FindInEntries(std::string_view text, CUsePtr<CUnicodeString>* source) const;
  static bool FindInEntry(const RegexVectorEntry& entry, std::string_view text,
                          CUsePtr<CUnicodeString>* source);
  void BuildFromText(const std::string& text);
  void BuildFromList(const CVariant& list);
  void CompileAlone(const std::string& element, std::string_view expression);
  void ProcessRegexVector(std::vector<std::string> expressions, ConverterFn converter,
                          WrapperFn wrapper);
  void ProcessRegexVectorCore(std::vector<std::string> expressions, ConverterFn converter,
                              WrapperFn wrapper, bool optimize);
  template <class Print>
  void DumpCollectors(std::vector<std::string>& lines, const char* title, Print print) const;
  template <class RowsOf, class LineOf>
  void DumpRows(std::vector<std::string>& lines, const char* title, RowsOf rowsOf,
                LineOf lineOf) const;

  std::vector<RegexVectorEntry> fEntries;  // in the order in which Find tries them
  bool fInvalid = false;                   // an expression of the value did not compile
  bool fPrefixFailureLogged = false;       // the message is written once a holder
  // What the automata of a list take memory of, the scanners' own among them; null for a lone
  // value.
  std::shared_ptr<Matching::MemoryAllowance> fAllowance;
  // Answers for all scanners of a list at once; shared by the copies of a holder.
  std::shared_ptr<const Matching::ListMatcher> fMatcher;
  // Kept while the diagnostics are on, else null.
  std::unique_ptr<std::vector<std::unique_ptr<PrefixSuffixCollector>>> fCollectors;
};

// Smallest number of expressions for which shared beginnings are looked for: off, all bits set,
// until the environment variable QRX_REGEX_OPTIMIZE_MIN_LIST_SIZE says otherwise. Read once, at
// load; a negative number switches it off, and an empty value or one without digits counts as 0.
std::uint64_t GetRegexOptimizeMinListSize();

// Tells holders that are built from here on to keep what the dumps print, and to measure times.
// Meant for a quiet moment before values are used.
void SetRegexHolderDiagnostics(bool on);
bool GetRegexHolderDiagnostics();

// Whether an expression refers to a group of its own; merging would renumber what it refers to.
bool HasBackReference(std::string_view expression);
