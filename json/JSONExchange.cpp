#include "json/JSONExchange.h"

#include <atomic>
#include <memory>
#include <string>

#include "host/IContext.h"
#include "host/ImportedFunctionBridge.h"

namespace Tovrin::JSON {
namespace {

using HostObject = AutoRefPtr<IUserDefinedType>;

constexpr char kHostType[] = "JSON";

struct CreateEmptyObject {
  using Result = HostObject;
  static constexpr ImportedFunctionNames kNames{"JSON.CreateEmptyObject", "JSON_CreateEmptyObject",
                                                kHostType, ""};
};
struct ObjectFromString {
  using Result = HostObject;
  static constexpr ImportedFunctionNames kNames{"JSON.FromString", "JSON_FromString", kHostType,
                                                "STRING"};
};
struct ObjectToString {
  using Result = std::string;
  static constexpr ImportedFunctionNames kNames{"ToString", "JSON_ToString", "STRING", kHostType};
};

// Starts set; the first warning of the process clears it.
std::atomic<bool> gWarns{true};

void WarnOnce(IContext* context) {
  if (!context || !gWarns.exchange(false, std::memory_order_relaxed)) return;
  context->ErrorLog("JSONWrapper",
                    "JSON module implementation is not compatible with JSONWrapper implementation, "
                    "leading to performance inefficiencies.");
}

std::string TextOf(const HostObject& object, IContext& context) {
  const AutoRefPtr<IVariant> argument = context.CreateInstance(context.FindType(kHostType));
  if (!argument) return {};
  argument->SetUserDefined(object);
  return ImportedFunctionBridge<ObjectToString>::Call(&context, {argument.get()});
}

HostObject ObjectOf(const std::string& text, IContext& context) {
  const AutoRefPtr<IVariant> argument = MakeValue<std::string>(context, text);
  if (!argument) return {};
  return ImportedFunctionBridge<ObjectFromString>::Call(&context, {argument.get()});
}

}  // namespace

AutoRefPtr<JSONWrapper> FromHostObject(const HostObject& object, IContext* context) {
  if (!object) return {};
  void* data = nullptr;
  if (object->ToBinaryData(&data, kJSONDataFormat) == sizeof data && data) {
    return AutoRefPtr<JSONWrapper>(new JSONWrapper(static_cast<const JSONData*>(data)->Root));
  }
  WarnOnce(context);
  if (!context) return {};
  return JSONWrapper::FromString(TextOf(object, *context), true);
}

HostObject ToHostObject(const JSONWrapper& wrapper, IContext* context) {
  const std::shared_ptr<JSONData>& data = wrapper.SharedData();
  if (!data || !context) return {};
  const HostObject object = ImportedFunctionBridge<CreateEmptyObject>::Call(context);
  if (object && object->FromBinaryData(data.get(), sizeof(void*), kJSONDataFormat)) return object;
  WarnOnce(context);
  return ObjectOf(wrapper.ToString(""), *context);
}

}  // namespace Tovrin::JSON
