#include "tests/module/LoadedModule.h"

#include <dlfcn.h>

#include <algorithm>

#include "tests/support/SharedData.h"

LoadedModule::LoadedModule() : fHandle(dlopen(Path().c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (!fHandle) throw std::runtime_error(dlerror());
}

LoadedModule::~LoadedModule() {
  dlclose(fHandle);
}

std::string LoadedModule::Path() {
  return BinDir() / "libtessarin.so";
}

bool LoadedModule::IsMapped() {
  const auto maps = ReadLines("/proc/self/maps");
  return std::ranges::any_of(
      maps, [](const std::string& line) { return line.ends_with("/libtessarin.so"); });
}

void* LoadedModule::Address(const std::string& name) const {
  void* const address = dlsym(fHandle, name.c_str());
  if (!address) throw std::runtime_error("the module does not export " + name);
  return address;
}
