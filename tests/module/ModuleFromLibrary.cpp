// The way to the functions for programs that test the built library.

#include "tests/module/LoadedModule.h"
#include "tests/module/ModuleCalls.h"

void* ModuleSymbol(const std::string& name) {
  static const LoadedModule module;
  return reinterpret_cast<void*>(module.Function(name));
}
