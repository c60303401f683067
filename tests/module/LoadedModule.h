#pragma once

#include <stdexcept>
#include <string>

#include "host/ModuleFunction.h"

// The built libtessarin.so, loaded as a host loads it: by dlopen, and symbol by symbol.
//
// Closes its handle at its end; whether that unloads the library is what some tests ask. One thread
// loads and closes, any may call.
class LoadedModule {
public:
  LoadedModule();  // throws std::runtime_error when it does not load
  ~LoadedModule();
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  // Throws std::runtime_error for a name that the library does not export.
  template <class Function>
  Function* Symbol(const std::string& name) const {
    return reinterpret_cast<Function*>(Address(name));
  }
  Tovrin::ModuleFunction Function(const std::string& name) const {
    return reinterpret_cast<Tovrin::ModuleFunction>(Address(name));
  }
  std::string Text(const std::string& getter) const { return Symbol<const char*()>(getter)(); }

  static std::string Path();
  // Whether any part of the library is mapped into this process.
  static bool IsMapped();

private:
  void* Address(const std::string& name) const;

  void* fHandle;
};
