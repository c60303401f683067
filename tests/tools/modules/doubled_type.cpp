// Declares a type that the host has already.
#define MODULE_DEFINITION " TYPE STRING : sample_CreateString"
#include "tests/tools/modules/ModuleFrame.h"

MODULE_EXPORT Tovrin::IUserDefinedType* sample_CreateString(std::uint32_t) {
  return nullptr;
}
