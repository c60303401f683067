#include "host/ImportedFunctionBridge.h"

#include "host/IModuleInfo.h"

namespace Tovrin {
namespace {

constexpr char kNamespace[] = "Tovrin";

}  // namespace

std::string StatusMessage(FunctionStatus status, std::string_view kind, std::string_view name) {
  const std::string position = std::to_string(StatusPosition(status));
  std::string text;
  switch (StatusCode(status)) {
    case kWrongArgument:
      text = "invalid parameter " + position + " in ";
      break;
    case kInvalidObject:
      text = "invalid object used for parameter " + position + " in ";
      break;
    default:
      text = "runtime error from ";
  }
  return text.append(kind).append(" '").append(name).append("'");
}

ImportedFunction::ImportedFunction(const ImportedFunctionNames& names, IContext& context,
                                   std::uint64_t instanceId)
    : fNames(names) {
  Resolve(context, instanceId);
}

void ImportedFunction::Resolve(IContext& context, std::uint64_t instanceId) {
  const char* const types[] = {fNames.resultType, fNames.argumentTypes};
  AutoRefPtr<IModuleInfo> info;
  fFunction.store(context.GetFunction(fNames.name, 2, types, &info, 1), std::memory_order_relaxed);
  fModuleInfo.store(info.get(), std::memory_order_relaxed);
  fInstanceId.store(instanceId, std::memory_order_relaxed);
}

std::string ImportedFunction::Title() const {
  return std::string("Tovrin function ") + fNames.name + " (imported as " + fNames.importedAs + ")";
}

bool ImportedFunction::Prepare(IContext& context, std::uint64_t instanceId) {
  if (instanceId != fInstanceId.load(std::memory_order_relaxed)) Resolve(context, instanceId);

  if (!fFunction.load(std::memory_order_relaxed)) {
    context.TriggerErrorHandler(ErrorSeverity::Severity2, kNamespace,
                                "Error.Tovrin.InvalidFunction",
                                ("Imported " + Title() + " doesn't exist!").c_str());
    return false;
  }
  // Contract: neither state keeps the call from being made.
  if (context.HasError()) {
    context.DebugLog(kNamespace, 0,
                     "Error calling imported " + Title() + ", context has error \"" +
                         context.GetErrorMessage() + "\", backtrace: " + context.PrintCallStack());
  }
  if (context.IsInterrupted()) {
    context.DebugLog(
        kNamespace, 0,
        "Error calling imported " + Title() +
            ", context is already interrupted, backtrace: " + context.PrintCallStack());
  }
  return true;
}

void ImportedFunction::Call(IContext& context, std::span<IVariant* const> arguments,
                            IVariant* result) const {
  const ModuleFunction function = fFunction.load(std::memory_order_relaxed);
  if (!function) return;  // another thread resolved anew, for a host that lacks it

  const FunctionStatus status = function(static_cast<std::uint32_t>(arguments.size()),
                                         arguments.empty() ? nullptr : arguments.data(), result,
                                         fModuleInfo.load(std::memory_order_relaxed), &context);
  if (status == 0) return;
  context.TriggerErrorHandler(ErrorSeverity::Severity2, kNamespace, "Error.Tovrin.InvalidArgument",
                              StatusMessage(status, "function", fNames.name).c_str());
}

}  // namespace Tovrin
