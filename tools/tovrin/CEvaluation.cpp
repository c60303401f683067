#include "tools/tovrin/CEvaluation.h"

#include <fmt/core.h>

#include <utility>
#include <vector>

#include "json/JSONWrapper.h"
#include "tools/tovrin/Failure.h"
#include "tools/tovrin/ForeignCall.h"
#include "tools/tovrin/objects/CHostContainers.h"

using Tovrin::AutoRefPtr;
using Tovrin::IVariant;
using Tovrin::TypeId;

namespace RefHost {

Variable& CScope::Define(const std::string& name, TypeId type) {
  Variable& variable = fVariables.emplace_back();
  variable.type = type;
  fByName[name] = &variable;
  return variable;
}

const Variable* CScope::Find(const std::string& name) const {
  for (const CScope* scope = this; scope != nullptr; scope = scope->fOuter) {
    const auto found = scope->fByName.find(name);
    if (found != scope->fByName.end()) return found->second;
  }
  return nullptr;
}

namespace {

using Evaluation = std::unique_ptr<AEvaluation>;
using Evaluations = std::vector<Evaluation>;

class CConstant final : public AEvaluation {
public:
  explicit CConstant(AutoRefPtr<CHostVariant> value)
      : AEvaluation(value->GetType()), fTruth(value->GetBoolean()), fValue(std::move(value)) {}

  IVariant* Evaluate() override { return fValue.get(); }
  bool EvaluateTruth() override { return fTruth; }

private:
  const bool fTruth;
  const AutoRefPtr<CHostVariant> fValue;
};

class CVariable final : public AEvaluation {
public:
  explicit CVariable(const Variable& variable) : AEvaluation(variable.type), fVariable(variable) {}

  IVariant* Evaluate() override { return fVariable.value.get(); }

private:
  const Variable& fVariable;
};

// What has a truth value of its own making, and a variant only for who wants one.
class ATruth : public AEvaluation {
public:
  explicit ATruth(const CTransaction& transaction)
      : AEvaluation(Tovrin::kTypeBoolean), fResult(transaction.NewValue(Tovrin::kTypeBoolean)) {}

  IVariant* Evaluate() final {
    fResult->AssignBoolean(EvaluateTruth());
    return fResult.get();
  }

private:
  const AutoRefPtr<CHostVariant> fResult;
};

class CNot final : public ATruth {
public:
  CNot(const CTransaction& transaction, Evaluation part)
      : ATruth(transaction), fPart(std::move(part)) {}

  bool EvaluateTruth() override { return !fPart->EvaluateTruth(); }

private:
  const Evaluation fPart;
};

// A row of `and` or of `or`: goes on while the parts answer as the row's word wants, and asks no
// part whose answer cannot matter.
class CRow final : public ATruth {
public:
  CRow(const CTransaction& transaction, bool goesOnWhile, Evaluations parts)
      : ATruth(transaction), fGoesOnWhile(goesOnWhile), fParts(std::move(parts)) {}

  bool EvaluateTruth() override {
    for (const Evaluation& part : fParts) {
      if (part->EvaluateTruth() != fGoesOnWhile) return !fGoesOnWhile;
    }
    return fGoesOnWhile;
  }

private:
  const bool fGoesOnWhile;
  const Evaluations fParts;
};

// A vector of values that are evaluated anew each time. Each element gets a variant of its own,
// since the vector may be kept.
class CVector final : public AEvaluation {
public:
  CVector(const CTransaction& transaction, TypeId elementType, Evaluations elements)
      : AEvaluation(elementType + Tovrin::kVectorOf),
        fElementType(elementType),
        fElements(std::move(elements)),
        fTransaction(transaction),
        fResult(transaction.NewValue(Type())) {}

  IVariant* Evaluate() override {
    CHostVector::Elements elements;
    elements.reserve(fElements.size());
    for (const Evaluation& element : fElements) {
      AutoRefPtr<CHostVariant> value = fTransaction.NewValue(fElementType);
      value->Assign(element->Evaluate());
      elements.emplace_back(value.release());
    }
    fResult->AssignVector(AutoRefPtr<const Tovrin::IVectorGeneric>(
        new CHostVector(fElementType, std::move(elements))));
    return fResult.get();
  }

private:
  const TypeId fElementType;
  const Evaluations fElements;
  const CTransaction fTransaction;
  const AutoRefPtr<CHostVariant> fResult;
};

CCallFailure FailureAt(Position where, const std::string& words) {
  CCallFailure failure(ExitStatus::FailureStatus, words);
  failure.where = where;
  return failure;
}

// Runs a call into a module; who says whose, should an exception come out of it.
template <class Call>
auto CallModule(Position where, const std::string& who, Call call) {
  return CallForeign(call, [&](const std::string& words) {
    CCallFailure failure = ExceptionFailure(who, words);
    failure.where = where;
    return failure;
  });
}

class CCall final : public AEvaluation {
public:
  CCall(const CTransaction& transaction, const BoundFunction& function, Position where,
        Evaluations arguments)
      : AEvaluation(function.result),
        fFunction(function),
        fTitle(function.Title()),
        fWhere(where),
        fContext(transaction.context),
        fParts(std::move(arguments)),
        fArguments(fParts.size()) {
    if (!function.IsProcedure()) fResult = transaction.NewValue(function.result);
  }

  IVariant* Evaluate() override {
    for (std::size_t i = 0; i < fParts.size(); ++i) fArguments[i] = fParts[i]->Evaluate();
    // A function may leave its result alone: nothing of the call before must be seen in it.
    if (fResult) fResult->Reset(fFunction.result);
    const Tovrin::FunctionStatus status = CallModule(fWhere, fTitle, [&] {
      return fFunction.address(static_cast<std::uint32_t>(fArguments.size()), fArguments.data(),
                               fResult.get(), fFunction.info, fContext.get());
    });
    if (status != 0) throw FailureAt(fWhere, fFunction.WordsFor(status));
    return fResult.get();
  }

private:
  const BoundFunction& fFunction;
  const std::string fTitle;  // made once: an evaluation allocates nothing
  const Position fWhere;
  const AutoRefPtr<Tovrin::IContext> fContext;
  const Evaluations fParts;
  std::vector<IVariant*> fArguments;  // what fParts gave last, borrowed from them
  AutoRefPtr<CHostVariant> fResult;   // none for a procedure
};

// Save(value): the serialised form of an object, as text.
class CSave final : public AEvaluation {
public:
  CSave(const CTransaction& transaction, Position where, Evaluation value)
      : AEvaluation(Tovrin::kTypeString),
        fWhere(where),
        fTransaction(transaction),
        fValue(std::move(value)),
        fResult(transaction.NewValue(Type())) {}

  IVariant* Evaluate() override {
    const IVariant* value = fValue->Evaluate();
    const bool hasText = CallModule(fWhere, fTransaction.types->TitleOf(fValue->Type()), [&] {
      const auto json = value->Serialize(fTransaction.context.get());
      if (json) fResult->SetText(json->ToString());
      return static_cast<bool>(json);
    });
    if (!hasText) throw FailureAt(fWhere, "nothing to save");
    return fResult.get();
  }

private:
  const Position fWhere;
  const CTransaction fTransaction;
  const Evaluation fValue;
  const AutoRefPtr<CHostVariant> fResult;
};

// Load(type, json): a new object of the type, restored from its serialised form.
class CLoad final : public AEvaluation {
public:
  CLoad(const CTransaction& transaction, Position where, TypeId type, Evaluation text)
      : AEvaluation(type), fTransaction(transaction), fWhere(where), fText(std::move(text)) {}

  IVariant* Evaluate() override {
    const IVariant* text = fText->Evaluate();
    const auto json =
        Tovrin::JSON::JSONWrapper::FromString({text->GetString(), text->GetStringSize()}, true);
    if (!json) throw FailureAt(fWhere, "what is loaded is no JSON");
    const auto& types = *fTransaction.types;
    const auto object = CallModule(fWhere, types.TitleOf(Type()), [&] {
      AutoRefPtr<Tovrin::IUserDefinedType> made(types.FactoryOf(Type())(Type()));
      if (made && !made->Deserialize(json.get(), fTransaction.context.get())) made.reset();
      return made;
    });
    if (!object) {
      throw FailureAt(fWhere, fmt::format("a {} cannot be loaded from this", types.NameOf(Type())));
    }
    fResult = fTransaction.NewValue(Type());  // a new one, since the value before may be kept
    fResult->SetUserDefined(object);
    return fResult.get();
  }

private:
  const CTransaction fTransaction;
  const Position fWhere;
  const Evaluation fText;
  AutoRefPtr<CHostVariant> fResult;
};

// Walks an expression, which the parser keeps shallow enough for that.
class CCompiler {
public:
  CCompiler(const CScope& scope, const CTransaction& transaction)
      : fScope(scope), fTransaction(transaction) {}

  Evaluation Any(const Expression& expression) const;
  Evaluation Value(const Expression& expression) const;
  Evaluation Condition(const Expression& expression) const;

private:
  Evaluation Constant(AutoRefPtr<CHostVariant> value) const {
    return std::make_unique<CConstant>(std::move(value));
  }
  Evaluation Variable(const Expression& expression) const;
  Evaluation Vector(const Expression& expression) const;
  Evaluation Call(const Expression& expression) const;
  Evaluation Save(const Expression& expression) const;
  Evaluation Load(const Expression& expression) const;
  Evaluations Conditions(const Expression& expression) const;
  Evaluations Values(const Expression& expression) const;

  const CScope& fScope;
  const CTransaction& fTransaction;
};

Evaluation CCompiler::Any(const Expression& expression) const {
  switch (expression.kind) {
    case Expression::Kind::Text: {
      auto value = fTransaction.NewValue(Tovrin::kTypeString);
      value->SetText(expression.text);
      return Constant(std::move(value));
    }
    case Expression::Kind::Number: {
      auto value = fTransaction.NewValue(Tovrin::kTypeNumber);
      value->AssignNumber(expression.number);
      return Constant(std::move(value));
    }
    case Expression::Kind::Boolean: {
      auto value = fTransaction.NewValue(Tovrin::kTypeBoolean);
      value->AssignBoolean(expression.truth);
      return Constant(std::move(value));
    }
    case Expression::Kind::Vector:
      return Vector(expression);
    case Expression::Kind::Variable:
      return Variable(expression);
    case Expression::Kind::Call:
      return Call(expression);
    case Expression::Kind::And:
      return std::make_unique<CRow>(fTransaction, true, Conditions(expression));
    case Expression::Kind::Or:
      return std::make_unique<CRow>(fTransaction, false, Conditions(expression));
    case Expression::Kind::Not:
      return std::make_unique<CNot>(fTransaction, Condition(expression.parts.front()));
  }
  throw CSourceError(expression.where, "this has no meaning");
}

Evaluation CCompiler::Value(const Expression& expression) const {
  Evaluation value = Any(expression);
  if (value->Type() == 0) {
    throw CSourceError(expression.where,
                       fmt::format("procedure '{}' has no result", expression.text));
  }
  return value;
}

Evaluation CCompiler::Condition(const Expression& expression) const {
  Evaluation condition = Value(expression);
  if (condition->Type() != Tovrin::kTypeBoolean) {
    throw CSourceError(expression.where,
                       fmt::format("a condition is a BOOLEAN, and this is a {}",
                                   fTransaction.types->NameOf(condition->Type())));
  }
  return condition;
}

Evaluations CCompiler::Conditions(const Expression& expression) const {
  Evaluations conditions;
  for (const Expression& part : expression.parts) conditions.push_back(Condition(part));
  return conditions;
}

Evaluations CCompiler::Values(const Expression& expression) const {
  Evaluations values;
  for (const Expression& part : expression.parts) values.push_back(Value(part));
  return values;
}

Evaluation CCompiler::Variable(const Expression& expression) const {
  const auto* variable = fScope.Find(expression.text);
  if (variable == nullptr) {
    const bool isFunction = fTransaction.functions->Has(expression.text);
    const std::string reason =
        isFunction ? fmt::format("'{}' is a function and takes brackets", expression.text)
                   : fmt::format("there is no variable '{}'", expression.text);
    throw CSourceError(expression.where, reason);
  }
  return std::make_unique<CVariable>(*variable);
}

Evaluation CCompiler::Vector(const Expression& expression) const {
  Evaluations elements = Values(expression);
  const TypeId type = elements.empty() ? Tovrin::kTypeString : elements.front()->Type();
  if (ScalarOf(type) != type) {
    throw CSourceError(expression.parts.front().where, "a vector holds no containers");
  }
  for (std::size_t i = 1; i < elements.size(); ++i) {
    if (elements[i]->Type() == type) continue;
    throw CSourceError(
        expression.parts[i].where,
        fmt::format("a {} in a vector of {}", fTransaction.types->NameOf(elements[i]->Type()),
                    fTransaction.types->NameOf(type)));
  }
  return std::make_unique<CVector>(fTransaction, type, std::move(elements));
}

Evaluation CCompiler::Save(const Expression& expression) const {
  if (expression.parts.size() != 1) {
    throw CSourceError(expression.where, "Save takes the value to save");
  }
  Evaluation value = Value(expression.parts.front());
  if (!IsUserDefined(value->Type()) || ScalarOf(value->Type()) != value->Type()) {
    throw CSourceError(
        expression.parts.front().where,
        fmt::format("a {} has no saved form", fTransaction.types->NameOf(value->Type())));
  }
  return std::make_unique<CSave>(fTransaction, expression.where, std::move(value));
}

// The type is a text of its own, since it is the type of the whole.
Evaluation CCompiler::Load(const Expression& expression) const {
  const auto& parts = expression.parts;
  if (parts.size() != 2 || parts[0].kind != Expression::Kind::Text) {
    throw CSourceError(expression.where, "Load takes a type's name in quotes and the saved form");
  }
  const TypeId type = fTransaction.types->Find(parts[0].text);
  if (fTransaction.types->FactoryOf(type) == nullptr) {
    throw CSourceError(parts[0].where, fmt::format("there is no type '{}' to load", parts[0].text));
  }
  Evaluation text = Value(parts[1]);
  if (text->Type() != Tovrin::kTypeString) {
    throw CSourceError(parts[1].where, "the saved form is a STRING");
  }
  return std::make_unique<CLoad>(fTransaction, expression.where, type, std::move(text));
}

// Save and Load are the host's own words, unless a module brings functions of their names.
Evaluation CCompiler::Call(const Expression& expression) const {
  if (!fTransaction.functions->Has(expression.text)) {
    if (expression.text == "Save") return Save(expression);
    if (expression.text == "Load") return Load(expression);
    throw CSourceError(expression.where, fmt::format("there is no function '{}'", expression.text));
  }
  Evaluations arguments = Values(expression);
  std::vector<TypeId> types;
  for (const Evaluation& argument : arguments) types.push_back(argument->Type());
  return std::make_unique<CCall>(fTransaction,
                                 *fTransaction.functions->Choose(expression.text, types),
                                 expression.where, std::move(arguments));
}

}  // namespace

Evaluation Compile(const Expression& expression, const CScope& scope,
                   const CTransaction& transaction) {
  return CCompiler(scope, transaction).Any(expression);
}

Evaluation CompileCondition(const Expression& expression, const CScope& scope,
                            const CTransaction& transaction) {
  return CCompiler(scope, transaction).Condition(expression);
}

Evaluation CompileValue(const Expression& expression, const CScope& scope,
                        const CTransaction& transaction) {
  return CCompiler(scope, transaction).Value(expression);
}

}  // namespace RefHost
