#pragma once

#include <string>
#include <vector>

#include "host/ModuleFunction.h"
#include "tests/support/HostContext.h"
#include "tests/support/HostValues.h"

using Values = std::vector<Tovrin::AutoRefPtr<TestVariant>>;  // entries may be empty

// What one call of a module function gave.
struct Answer {
  Tovrin::FunctionStatus status;
  Tovrin::AutoRefPtr<TestVariant> result;

  const std::vector<std::string>& Changes() const { return result->Changes(); }
  bool Boolean() const { return result->GetBoolean(); }
  std::string Text() const;
  std::vector<std::string> Texts() const { return TextsOf(result->GetVector()); }
  Tovrin::AutoRefPtr<Tovrin::IUserDefinedType> Object() const { return result->GetUserDefined(); }
};

// Calls it with a fresh result, whose type is of no matter to the module. The context may be null.
Answer CallFunction(Tovrin::ModuleFunction function, const Values& arguments,
                    Tovrin::IContext* context);
// The same with nowhere to put the answer: the status.
Tovrin::FunctionStatus CallFunctionWithoutResult(Tovrin::ModuleFunction function,
                                                 const Values& arguments,
                                                 Tovrin::IContext* context);
