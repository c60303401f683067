#pragma once

#include <cstdint>

#include "host/Forward.h"

namespace Tovrin {

using FunctionStatus = std::uint32_t;  // 0, or position (1-based) << 16 | code
enum FunctionStatusCode : std::uint32_t {
  kArgumentMissing = 1,
  kWrongArgument = 2,
  kInvalidObject = 4
};
constexpr FunctionStatus MakeStatus(std::uint32_t position, FunctionStatusCode code) {
  return position << 16 | code;
}

extern "C" {
typedef FunctionStatus (*ModuleFunction)(std::uint32_t argumentCount, IVariant* const* arguments,
                                         IVariant* result, IModuleInfo* moduleInfo,
                                         IContext* context);
}

}  // namespace Tovrin
