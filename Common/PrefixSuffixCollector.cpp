#include "Common/PrefixSuffixCollector.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <stdexcept>

#include "Common/DebugLog.h"
#include "Common/ErrorCatalogue.h"

qxSource("Common\\CRegexVectorHolder");

namespace {

constexpr const char* kFunction = "PrefixSuffixCollector::Calculate";

std::vector<RadixKey> KeysOf(const std::vector<RegexToken>& tokens) {
  std::vector<RadixKey> keys;
  keys.reserve(tokens.size());
  for (const RegexToken& token : tokens) {
    keys.push_back(
        {token.text, token.kind == RegexTokenKind::Literal ? kRadixLiteral : kRadixUnit});
  }
  return keys;
}

// Longer first, and of one length in byte order; each once.
void SortPrefixes(std::vector<std::string>& prefixes) {
  std::sort(prefixes.begin(), prefixes.end(), [](const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() > b.size() : a < b;
  });
  prefixes.erase(std::unique(prefixes.begin(), prefixes.end()), prefixes.end());
}

}  // namespace

void PrefixGroup::AddToGroup(std::string expression, std::string source) {
  expression.resize(expression.size() - fSuffix.size());
  expression.erase(0, fPrefix.size());
  fItems.push_back({std::move(expression), std::move(source)});
}

bool PrefixGroup::TryAddToGroup(std::string&& expression, std::string&& source) {
  if (expression.size() < AffixLength()) return false;
  if (!expression.starts_with(fPrefix) || !expression.ends_with(fSuffix)) return false;
  AddToGroup(std::move(expression), std::move(source));
  return true;
}

void PrefixSuffixCollector::Add(std::string expression, std::string source) {
  fInputs.push_back({std::move(expression), std::move(source)});
}

void PrefixSuffixCollector::Calculate(bool optimize) {
  if (optimize) {
    // Whatever the grouping meets, the build goes on as if nobody had asked for it.
    try {
      FindPrefixes();
    } catch (const std::out_of_range& failure) {
      ReportFailure(std::string("out_of_range: ") + failure.what());
    } catch (const std::exception& failure) {
      ReportFailure(failure.what());
    } catch (...) {
      ReportFailure("unkown");
    }
  }
  fGroups.emplace_back("", "");
  if (fMeasure) Restart();
  Distribute();
  Measure("PrefixSuffixCollection");
}

void PrefixSuffixCollector::FindPrefixes() {
  if (fMeasure) Restart();
  Parse();
  Measure("RegexSplitter");

  if (fMeasure) Restart();
  for (const auto& tokens : fTokenLists) fTree.insert(KeysOf(tokens));
  Measure("RadixTree");

  std::vector<std::string> prefixes;
  fTree.GetPrefixes(kShare, prefixes);
  SortPrefixes(prefixes);
  for (std::string& prefix : prefixes) fGroups.emplace_back(std::move(prefix), "");
}

void PrefixSuffixCollector::Parse() {
  const std::size_t count = fInputs.size();
  const bool sampled = count > kSampleLimit;
  const double ratio =
      sampled ? static_cast<double>(kSampleLimit) / static_cast<double>(count) : 1.0;
  RegexSplitter splitter(sampled ? kSampleLimit / 10 + kSampleLimit : count);

  for (const RegexWithSource& input : fInputs) {
    if (sampled) {
      // The range is that of a generator of 15 bits, whatever this platform's own is.
      const double drawn = (std::rand() & 0x7fff) / 32767.0;
      if (ratio < drawn) continue;
    }
    const bool readable = splitter.Split(input.fExpression);
    if (!readable && !fParseFailed) WarnOfParsing(input.fExpression);
    // Contract: a sample warns of its first expression alone, a whole run of the first bad one.
    if (!readable || sampled) fParseFailed = true;
  }
  splitter.TakeTokens(fTokenLists);
}

void PrefixSuffixCollector::Distribute() {
  if (!fMeasure && fGroups.size() == 1) return fGroups.front().TakeAll(std::exchange(fInputs, {}));
  for (RegexWithSource& input : fInputs) {
    RegexWithSource taken = fMeasure ? input : std::move(input);
    for (PrefixGroup& group : fGroups) {
      if (group.TryAddToGroup(std::move(taken.fExpression), std::move(taken.fSource))) break;
    }
  }
  if (!fMeasure) fInputs.clear();
}

void PrefixSuffixCollector::ReportFailure(const std::string& text) {
  qxReport(ErrorId::InternalError, kFunction,
           {{"msg", "CRadixTree::insert(): exception: " + text}});
  fGroups.clear();
}

void PrefixSuffixCollector::WarnOfParsing(const std::string& expression) {
  qxReport(ErrorId::InternalWarning, kFunction,
           {{"msg", "PrefixSuffixCollector::Calculate: failed parsing regex '" + expression +
                        "' continue w/o optimization"}});
}

void PrefixSuffixCollector::Measure(const char* step) {
  if (!fMeasure) return;
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - fTimer);
  fMeasurements.push_back(std::string(step) + ":" + std::to_string(elapsed.count()) + " ms");
}
