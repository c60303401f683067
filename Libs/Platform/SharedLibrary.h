#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

// A shared library that could not be loaded; the text is the loader's own.
class CSharedLibraryError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A library loaded into this process, unloaded by the destructor.
//
// All its symbols are bound at once, so a missing one shows here and not in the middle of a call,
// and none is offered to libraries loaded later. Whoever keeps an address from Find drops it before
// the library goes.
class CSharedLibrary {
public:
  explicit CSharedLibrary(const std::filesystem::path& path);  // throws CSharedLibraryError
  ~CSharedLibrary();
  CSharedLibrary(const CSharedLibrary&) = delete;
  CSharedLibrary& operator=(const CSharedLibrary&) = delete;

  // The address of an exported symbol, null when there is none of that name.
  void* Find(const std::string& name) const;

private:
  void* fHandle = nullptr;  // never null once constructed
};

// What a library of that name is called here: "tessarin" gives "libtessarin.so".
std::string SharedLibraryFileName(const std::string& name);
