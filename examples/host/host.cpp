#include <dlfcn.h>

#include <cstdio>

#include "host/IUserDefinedType.h"

int main() {
  void* module = dlopen(TESSARIN_MODULE, RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) return std::puts(dlerror()), 1;
  using Factory = Tovrin::IUserDefinedType*(Tovrin::TypeId);
  auto* create = reinterpret_cast<Factory*>(dlsym(module, "tovrin_module_CreateTessarin"));
  const Tovrin::AutoRefPtr<Tovrin::IUserDefinedType> expression(create(21));
  std::printf("%s\n", expression->GetName());
}
