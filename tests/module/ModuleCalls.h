#pragma once

#include <string>
#include <vector>

#include "tests/module/Answer.h"

// Calls of the module's functions as a host makes them. The programs that use this are linked with
// one of two ways to the functions: as objects of the program, or out of the built library.

// Throws std::runtime_error for a name that the module does not have.
void* ModuleSymbol(const std::string& name);

template <class Function>
Function* ModuleSymbolAs(const std::string& name) {
  return reinterpret_cast<Function*>(ModuleSymbol(name));
}

inline constexpr Tovrin::TypeId kTestTessarinId = 21;  // what the tests' host calls the two types
inline constexpr Tovrin::TypeId kTestListId = 25;

// One call with a fresh context and a fresh result. The result's type is of no matter to the
// module.
Answer Call(const std::string& function, const Values& arguments);
Answer CallIn(Tovrin::IContext* context, const std::string& function, const Values& arguments);
// The status of a call that has nowhere to put its answer.
Tovrin::FunctionStatus CallWithoutResult(const std::string& function, const Values& arguments);

// A Tessarin argument with that expression, made by the module.
Tovrin::AutoRefPtr<TestVariant> Expression(const std::string& expression);
Tovrin::AutoRefPtr<TestVariant> Text(std::string_view text);
Tovrin::AutoRefPtr<TestVariant> Number(double value);
Tovrin::AutoRefPtr<TestVariant> Boolean(bool value);
// A user-defined argument that has lost its object.
Tovrin::AutoRefPtr<TestVariant> WithoutObject(Tovrin::TypeId type = kTestTessarinId);
