#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tools/tovrin/CEvaluation.h"
#include "tools/tovrin/Expression.h"
#include "tools/tovrin/Failure.h"

namespace RefHost {

// A rules file, read, checked and with its `let` values made. Constant from then on, so that any
// number of engines, each on its own thread, may work by it.
class CRuleSet {
public:
  struct Entry {
    Position where;
    Expression condition;
    std::size_t verdict;  // index into Verdicts
  };

  // Throws CSourceError for a text that cannot be read, CCallFailure for a `let` that fails; both
  // know their place in the text.
  CRuleSet(std::string_view source, const CTransaction& transaction);

  const std::vector<Entry>& Rules() const { return fRules; }
  const CScope& Values() const { return fValues; }

  // The verdicts that a line can get, each once: those of the file in its order, then those of the
  // run itself that the file does not give too.
  const std::vector<std::string>& Verdicts() const { return fVerdicts; }
  std::size_t OwnVerdictCount() const { return fOwnVerdictCount; }  // of the file
  std::size_t NoVerdict() const { return fNoVerdict; }              // "none": no rule was true
  std::size_t ErrorVerdict() const { return fErrorVerdict; }        // "error": a rule failed

  static constexpr std::string_view kLineVariable = "text";

private:
  std::size_t VerdictIndex(const std::string& verdict);  // adds what is new

  CScope fValues;
  std::vector<Entry> fRules;
  std::vector<std::string> fVerdicts;
  std::unordered_map<std::string, std::size_t> fVerdictIndexes;
  std::size_t fOwnVerdictCount = 0;
  std::size_t fNoVerdict = 0;
  std::size_t fErrorVerdict = 0;
};

// The rules made ready for one thread: evaluates them on one line after another.
class CRuleEngine {
public:
  // A line's verdict; where a rule failed on it, also that rule and what became of the call.
  struct Judgement {
    std::size_t verdict = 0;
    const CRuleSet::Entry* failedRule = nullptr;
    std::string words;
  };

  CRuleEngine(const CRuleSet& rules, const CTransaction& transaction);

  // What the line before it raised as errors in the transaction is forgotten: a run has no end that
  // would do it.
  Judgement Judge(std::string_view line);

private:
  const CRuleSet& fRules;
  const Tovrin::AutoRefPtr<Tovrin::IContext> fContext;
  CScope fScope;  // the line, and behind it the values of the file
  Tovrin::AutoRefPtr<CHostVariant> fLine;
  std::vector<std::unique_ptr<AEvaluation>> fConditions;  // one a rule
};

}  // namespace RefHost
