#pragma once

#include <deque>
#include <memory>
#include <string>
#include <unordered_map>

#include "host/IVariant.h"
#include "tools/tovrin/CHost.h"
#include "tools/tovrin/Expression.h"

namespace RefHost {

// A named value. The type is known when the text is compiled, the value once it was evaluated.
struct Variable {
  Tovrin::TypeId type = 0;
  Tovrin::AutoRefPtr<Tovrin::IVariant> value;  // the object itself, not a copy
};

// The names that an expression sees: its own, then those of the scope around it. A name that is
// defined again means the newer variable from there on. Variables keep their addresses.
class CScope {
public:
  explicit CScope(const CScope* outer = nullptr) : fOuter(outer) {}

  Variable& Define(const std::string& name, Tovrin::TypeId type);
  const Variable* Find(const std::string& name) const;

private:
  const CScope* fOuter;
  std::deque<Variable> fVariables;
  std::unordered_map<std::string, Variable*> fByName;
};

// One node of a compiled expression: its functions bound, its variants and argument arrays made, so
// that evaluating it again and again allocates nothing of its own.
//
// Belongs to one thread. Throws CCallFailure when a call fails.
class AEvaluation {
public:
  virtual ~AEvaluation() = default;

  // The value, borrowed until the next evaluation; null for a procedure.
  virtual Tovrin::IVariant* Evaluate() = 0;
  virtual bool EvaluateTruth() { return Evaluate()->GetBoolean(); }  // of a BOOLEAN

  Tovrin::TypeId Type() const { return fType; }  // 0 for a procedure

protected:
  explicit AEvaluation(Tovrin::TypeId type) : fType(type) {}

private:
  const Tovrin::TypeId fType;
};

// Looks up the names of an expression and picks its functions. Throws CSourceError for a name that
// does not exist and for a value that does not fit where it stands; arguments of a call are the
// function's own business.
//
// What it returns holds on to the transaction and refers to the scope, which must outlive it.
std::unique_ptr<AEvaluation> Compile(const Expression& expression, const CScope& scope,
                                     const CTransaction& transaction);

// As Compile, and refuses what is not a BOOLEAN, or has no value at all.
std::unique_ptr<AEvaluation> CompileCondition(const Expression& expression, const CScope& scope,
                                              const CTransaction& transaction);
std::unique_ptr<AEvaluation> CompileValue(const Expression& expression, const CScope& scope,
                                          const CTransaction& transaction);

}  // namespace RefHost
