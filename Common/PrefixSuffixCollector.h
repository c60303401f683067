#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/CRadixTree.h"
#include "Common/RegexSplitter.h"

// An expression, or what a group left of it, and the text of the list element that it comes from.
struct RegexWithSource {
  std::string fExpression;
  std::string fSource;
};

// Expressions that begin with the same text (and end with the same text), kept without it.
class PrefixGroup {
public:
  PrefixGroup(std::string prefix, std::string suffix)
      : fPrefix(std::move(prefix)), fSuffix(std::move(suffix)) {}

  const std::string& Prefix() const { return fPrefix; }
  const std::string& Suffix() const { return fSuffix; }
  bool HasAffix() const { return AffixLength() != 0; }
  const std::vector<RegexWithSource>& Items() const { return fItems; }

  // Takes the expression without its prefix and suffix. The caller knows that it has both.
  void AddToGroup(std::string expression, std::string source);
  // Takes it if it is long enough and begins and ends as the group does, byte for byte; else both
  // texts stay as they are.
  bool TryAddToGroup(std::string&& expression, std::string&& source);

  // Takes all of them, for a group without prefix and suffix that is still empty.
  void TakeAll(std::vector<RegexWithSource>&& items) { fItems = std::move(items); }

  // For the builder of scanners, which may drop what it has built.
  std::vector<RegexWithSource>& Items() { return fItems; }

private:
  std::size_t AffixLength() const { return fPrefix.size() + fSuffix.size(); }

  std::string fPrefix;
  std::string fSuffix;
  std::vector<RegexWithSource> fItems;
};

// Sorts a vector of expressions into groups, one for each literal beginning that a good share of
// them has in common, and a last one without a beginning for the rest.
//
// Add for every expression, then Calculate once; used by one thread. It works on the text of the
// expressions, so a prefix is a piece of expression syntax with its escapes as written. Above
// kSampleLimit expressions only a random sample of about that many decides on the prefixes; the
// distribution looks at every one, so each lands in exactly one group, the one with the longest
// prefix that fits.
class PrefixSuffixCollector {
public:
  static constexpr std::uint64_t kSampleLimit = 5000;
  static constexpr float kShare = 0.1f;  // of the expressions must have a beginning in common

  explicit PrefixSuffixCollector(bool measure) : fMeasure(measure) {}

  // Makes room for so many expressions.
  void Reserve(std::size_t count) { fInputs.reserve(count); }
  void Add(std::string expression, std::string source);
  // Without optimisation there is one group, the last. A failure while grouping is reported and has
  // the same result.
  void Calculate(bool optimize);

  // The last group has no prefix and takes whatever no other took.
  std::vector<PrefixGroup>& Groups() { return fGroups; }

  // What the diagnostics print. The inputs are in the groups unless times are measured.
  const std::vector<RegexWithSource>& Inputs() const { return fInputs; }
  const std::vector<std::vector<RegexToken>>& TokenLists() const { return fTokenLists; }
  const CRadixTree& Tree() const { return fTree; }
  const std::vector<PrefixGroup>& Groups() const { return fGroups; }
  const std::vector<std::string>& Measurements() const { return fMeasurements; }

private:
  void FindPrefixes();
  void Parse();
  void Distribute();
  void ReportFailure(const std::string& text);
  void WarnOfParsing(const std::string& expression);
  void Restart() { fTimer = std::chrono::steady_clock::now(); }
  void Measure(const char* step);

  std::vector<RegexWithSource> fInputs;
  std::vector<std::vector<RegexToken>> fTokenLists;
  CRadixTree fTree;
  std::vector<PrefixGroup> fGroups;
  bool fMeasure;
  std::chrono::steady_clock::time_point fTimer;  // read while fMeasure is set
  std::vector<std::string> fMeasurements;
  bool fParseFailed = false;  // no further warning about an expression that could not be read
};
