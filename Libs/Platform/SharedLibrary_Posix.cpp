#include "Libs/Platform/SharedLibrary.h"

#include <dlfcn.h>

namespace {

std::string LoaderWords() {
  const char* words = dlerror();
  return words != nullptr ? words : "no reason given";
}

}  // namespace

CSharedLibrary::CSharedLibrary(const std::filesystem::path& path)
    // A name without a folder would be looked up along the loader's search path.
    : fHandle(dlopen(std::filesystem::absolute(path).c_str(), RTLD_LOCAL | RTLD_NOW)) {
  if (fHandle == nullptr) throw CSharedLibraryError(LoaderWords());
}

CSharedLibrary::~CSharedLibrary() {
  dlclose(fHandle);
}

void* CSharedLibrary::Find(const std::string& name) const {
  return dlsym(fHandle, name.c_str());
}

std::string SharedLibraryFileName(const std::string& name) {
#ifdef __APPLE__
  return "lib" + name + ".dylib";
#else
  return "lib" + name + ".so";
#endif
}
