#include "tools/tovrin/HostFunctions.h"

#include <string>

#include "host/IContext.h"
#include "tools/tovrin/CHost.h"
#include "tools/tovrin/CLineBlocks.h"
#include "tools/tovrin/SourceText.h"

using Tovrin::AutoRefPtr;
using Tovrin::IVariant;
using Tovrin::IVectorGeneric;

namespace RefHost {

void AddHostFunctions(CHost& host) {
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

}  // namespace RefHost
