#pragma once

#include <cstdint>

#include "host/Forward.h"

namespace Tovrin {

// 0 for success, else the position of the argument that was refused (from 1), shifted left by 16,
// and a code below it.
using FunctionStatus = std::uint32_t;
inline constexpr FunctionStatus kSuccess = 0;

enum FunctionStatusCode : std::uint32_t {
  kArgumentMissing = 1,
  kWrongArgument = 2,
  kInvalidObject = 4
};

constexpr FunctionStatus MakeStatus(std::uint32_t position, FunctionStatusCode code) {
  return position << 16 | code;
}
constexpr std::uint32_t StatusPosition(FunctionStatus status) {
  return status >> 16;
}
constexpr std::uint32_t StatusCode(FunctionStatus status) {
  return status & 0xffff;
}

// The one form of a function or procedure that a module exports. Everything is borrowed.
extern "C" {
using ModuleFunction = FunctionStatus (*)(std::uint32_t argumentCount, IVariant* const* arguments,
                                          IVariant* result, IModuleInfo* moduleInfo,
                                          IContext* context);
}

}  // namespace Tovrin
