#pragma once

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "host/AutoRefPtr.h"
#include "host/IContext.h"
#include "host/ModuleFunction.h"
#include "host/ValueForm.h"

namespace Tovrin {

// The words for a failure status: "invalid parameter 2 in function 'Tessarin.Search'". The kind is
// "function" or "procedure".
std::string StatusMessage(FunctionStatus status, std::string_view kind, std::string_view name);

// What a function of another module is asked for by.
struct ImportedFunctionNames {
  const char* name;           // as the host knows it: "JSON.FromString"
  const char* importedAs;     // as messages show it beside the name: "JSON_FromString"
  const char* resultType;     // "BOOLEAN"
  const char* argumentTypes;  // all in one text; empty for none
};

// A function of another module, resolved through a context and again whenever a context belongs to
// another host instance.
//
// Lives as long as the process. Any thread may use it: the three values are plain words, and the
// last thread that resolves wins.
class ImportedFunction {
public:
  ImportedFunction(const ImportedFunctionNames& names, IContext& context, std::uint64_t instanceId);

  // Ready to be called: resolved for this instance, which is the context's, with the state of the
  // context noted in the debug log. A function that does not exist is raised in the context, and
  // gives false.
  bool Prepare(IContext& context, std::uint64_t instanceId);

  // Calls, and raises a failure status in the context. Only after Prepare gave true.
  void Call(IContext& context, std::span<IVariant* const> arguments, IVariant* result) const;

private:
  void Resolve(IContext& context, std::uint64_t instanceId);
  std::string Title() const;  // "Tovrin function NAME (imported as ALIAS)"

  const ImportedFunctionNames& fNames;
  // Relaxed: no thread draws a conclusion from one about another.
  std::atomic<std::uint64_t> fInstanceId{0};
  std::atomic<ModuleFunction> fFunction{nullptr};
  // Contract: a plain pointer whose reference was dropped; the host keeps its modules' infos alive.
  std::atomic<IModuleInfo*> fModuleInfo{nullptr};
};

// How an imported function's result is made and read; by the value's form where its type has an id.
template <class T>
struct ImportedResult {
  static AutoRefPtr<IVariant> Make(IContext& context, const ImportedFunctionNames&) {
    return MakeValue<T>(context, T{});
  }
};
// A user-defined type is known to the host by name; its variant comes without an object.
template <class T>
struct ImportedResult<AutoRefPtr<T>> {
  static AutoRefPtr<IVariant> Make(IContext& context, const ImportedFunctionNames& names) {
    return context.CreateInstance(context.FindType(names.resultType));
  }
};

// Calls a function that another module exports to the host, with results of one C++ type.
//
// Function tells which one:
//   struct CreateEmptyObject {
//     using Result = AutoRefPtr<IUserDefinedType>;
//     static constexpr ImportedFunctionNames kNames{"JSON.CreateEmptyObject", ...};
//   };
//   ImportedFunctionBridge<CreateEmptyObject>::Call(context);
//
// A null context, a function that the host does not know and a result variant that it does not give
// all answer the neutral value. After a failure status the answer is what the result variant holds.
template <class Function>
class ImportedFunctionBridge {
public:
  using Result = typename Function::Result;

  static Result Call(IContext* context, std::initializer_list<IVariant*> arguments = {}) {
    if (!context) return Result{};
    const std::uint64_t instanceId = context->GetTovrinInstanceId();
    static ImportedFunction imported(Function::kNames, *context, instanceId);
    if (!imported.Prepare(*context, instanceId)) return Result{};

    const AutoRefPtr<IVariant> result = ImportedResult<Result>::Make(*context, Function::kNames);
    imported.Call(*context, {arguments.begin(), arguments.size()}, result.get());
    return ReadValue<Result>(result);
  }
};

}  // namespace Tovrin
