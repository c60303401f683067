#include "tools/tovrin/HostFunctions.h"

#include <string>

#include "host/IContext.h"
#include "tools/tovrin/CHost.h"
#include "tools/tovrin/CLineBlocks.h"
#include "tools/tovrin/SourceText.h"
#include "tools/tovrin/objects/CHostJson.h"

using Tovrin::AutoRefPtr;
using Tovrin::IVariant;
using Tovrin::IVectorGeneric;

namespace RefHost {
namespace {

// Either answer is a function, since what a module calls has no state but the arguments.
template <bool kAnswer>
Tovrin::FunctionStatus AnswerPolicy(std::uint32_t, IVariant* const*, IVariant* result,
                                    Tovrin::IModuleInfo*, Tovrin::IContext*) {
  if (result != nullptr) result->AssignBoolean(kAnswer);
  return 0;
}

void GiveJson(IVariant* result, CHostJson::Value value, const Tovrin::IContext& context) {
  if (result == nullptr) return;
  result->SetUserDefined(AutoRefPtr<Tovrin::IUserDefinedType>(
      new CHostJson(context.FindType("JSON"), std::move(value))));
}

}  // namespace

void AddPolicyFunction(CHost& host, bool isCustomers) {
  host.AddFunction(
      " CONST_FUNCTION BOOLEAN QRX.InCustomerControlledPolicy () : InCustomerControlledPolicy",
      isCustomers ? &AnswerPolicy<true> : &AnswerPolicy<false>);
}

void AddHostFunctions(CHost& host) {
  host.Tables().types->Add("JSON", &CHostJson::Create);
  host.AddFunction(" CONST_FUNCTION JSON JSON.CreateEmptyObject () : HostCreateEmptyJson",
                   HostCreateEmptyJson);
  host.AddFunction(" CONST_FUNCTION JSON JSON.FromString (STRING) : HostJsonFromString",
                   HostJsonFromString);
  host.AddFunction(" CONST_FUNCTION STRING ToString (JSON) : HostJsonToString", HostJsonToString);
  host.AddFunction(" CONST_FUNCTION VECTOR<STRING> lines (STRING) : HostLines", HostLines);
}

Tovrin::FunctionStatus HostLines(std::uint32_t argumentCount, IVariant* const* arguments,
                                 IVariant* result, Tovrin::IModuleInfo* /*moduleInfo*/,
                                 Tovrin::IContext* context) {
  if (argumentCount < 1) return Tovrin::MakeStatus(1, Tovrin::kArgumentMissing);
  const IVariant* path = arguments[0];
  if (path == nullptr || path->GetType() != Tovrin::kTypeString) {
    return Tovrin::MakeStatus(1, Tovrin::kWrongArgument);
  }

  AutoRefPtr<const IVectorGeneric> lines = context->CreateStringVector();
  const std::string source =
      CleanSource(ReadSource(std::string(path->GetString(), path->GetStringSize())));
  ForEachLine(source, [&](std::string_view line) {
    const AutoRefPtr<IVariant> element = context->CreateInstance(Tovrin::kTypeString);
    element->AssignString(line.data(), line.size());
    lines = lines->Append(element);
    return true;
  });
  if (result != nullptr) result->AssignVector(lines);
  return 0;
}

Tovrin::FunctionStatus HostCreateEmptyJson(std::uint32_t /*argumentCount*/,
                                           IVariant* const* /*arguments*/, IVariant* result,
                                           Tovrin::IModuleInfo* /*moduleInfo*/,
                                           Tovrin::IContext* context) {
  GiveJson(result, Tovrin::JSON::JSONWrapper::CreateObject(), *context);
  return 0;
}

Tovrin::FunctionStatus HostJsonFromString(std::uint32_t argumentCount, IVariant* const* arguments,
                                          IVariant* result, Tovrin::IModuleInfo* /*moduleInfo*/,
                                          Tovrin::IContext* context) {
  if (argumentCount < 1) return Tovrin::MakeStatus(1, Tovrin::kArgumentMissing);
  const IVariant* text = arguments[0];
  CHostJson::Value value;
  if (text != nullptr && text->GetType() == Tovrin::kTypeString) {
    value = Tovrin::JSON::JSONWrapper::FromString({text->GetString(), text->GetStringSize()}, true);
  }
  if (!value) return Tovrin::MakeStatus(1, Tovrin::kWrongArgument);
  GiveJson(result, std::move(value), *context);
  return 0;
}

Tovrin::FunctionStatus HostJsonToString(std::uint32_t argumentCount, IVariant* const* arguments,
                                        IVariant* result, Tovrin::IModuleInfo* /*moduleInfo*/,
                                        Tovrin::IContext* /*context*/) {
  if (argumentCount < 1) return Tovrin::MakeStatus(1, Tovrin::kArgumentMissing);
  const auto object = arguments[0] != nullptr ? arguments[0]->GetUserDefined()
                                              : AutoRefPtr<Tovrin::IUserDefinedType>();
  if (dynamic_cast<const CHostJson*>(object.get()) == nullptr) {
    return Tovrin::MakeStatus(1, Tovrin::kInvalidObject);
  }
  if (result != nullptr) result->AssignString(object->Serialize()->ToString());
  return 0;
}

}  // namespace RefHost
