// The way to the functions for programs that are linked with the module's objects. Such a program
// shows them to its loader as the module does.

#include <dlfcn.h>

#include <stdexcept>

#include "tests/module/ModuleCalls.h"

void* ModuleSymbol(const std::string& name) {
  if (void* const found = dlsym(RTLD_DEFAULT, name.c_str())) return found;
  throw std::runtime_error("the module does not have " + name);
}
