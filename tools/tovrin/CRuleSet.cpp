#include "tools/tovrin/CRuleSet.h"

#include <fmt/core.h>

#include "tools/tovrin/Parser.h"

namespace RefHost {

CRuleSet::CRuleSet(std::string_view source, const CTransaction& transaction) {
  const std::string lineVariable(kLineVariable);
  CScope lineScope(&fValues);
  lineScope.Define(lineVariable, Tovrin::kTypeString);

  for (Clause& clause : ParseRules(source)) {
    if (clause.isRule) {
      CompileCondition(clause.rule.condition, lineScope,
                       transaction);  // only to see that it can be
      fRules.push_back(
          {clause.rule.where, std::move(clause.rule.condition), VerdictIndex(clause.rule.verdict)});
      continue;
    }
    if (clause.let.name == lineVariable) {
      throw CSourceError(clause.let.where, fmt::format("'{}' is the input line", lineVariable));
    }
    if (fValues.Find(clause.let.name) != nullptr) {
      throw CSourceError(clause.let.where,
                         fmt::format("'{}' has a value already", clause.let.name));
    }
    const auto value = CompileValue(clause.let.value, fValues, transaction);
    const Tovrin::AutoRefPtr<Tovrin::IVariant> result = Tovrin::Share(value->Evaluate());
    fValues.Define(clause.let.name, value->Type()).value = result;
  }
  fOwnVerdictCount = fVerdicts.size();
  fNoVerdict = VerdictIndex("none");
  fErrorVerdict = VerdictIndex("error");
}

std::size_t CRuleSet::VerdictIndex(const std::string& verdict) {
  const auto [entry, isNew] = fVerdictIndexes.emplace(verdict, fVerdicts.size());
  if (isNew) fVerdicts.push_back(verdict);
  return entry->second;
}

CRuleEngine::CRuleEngine(const CRuleSet& rules, const CTransaction& transaction)
    : fRules(rules),
      fContext(transaction.context),
      fScope(&rules.Values()),
      fLine(transaction.NewValue(Tovrin::kTypeString)) {
  fScope.Define(std::string(CRuleSet::kLineVariable), Tovrin::kTypeString).value =
      Tovrin::Share<Tovrin::IVariant>(fLine.get());
  for (const CRuleSet::Entry& rule : rules.Rules()) {
    fConditions.push_back(CompileCondition(rule.condition, fScope, transaction));
  }
}

CRuleEngine::Judgement CRuleEngine::Judge(std::string_view line) {
  fContext->ClearError();
  fLine->SetText(line);
  std::size_t at = 0;
  try {
    for (; at < fConditions.size(); ++at) {
      if (fConditions[at]->EvaluateTruth()) return {fRules.Rules()[at].verdict, nullptr, {}};
    }
  } catch (const CCallFailure& failure) {
    return {fRules.ErrorVerdict(), &fRules.Rules()[at], failure.what()};
  }
  return {fRules.NoVerdict(), nullptr, {}};
}

}  // namespace RefHost
