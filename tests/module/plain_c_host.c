/* A host in C, linked without a C++ runtime: loads the module named by its argument, asks it for its
   definition, and closes it. Ends with 0 when all of that worked. */

#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

typedef const char* (*Getter)(void);

static int Fail(const char* what) {
  fprintf(stderr, "%s: %s\n", what, dlerror());
  return 1;
}

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) return 2;

  void* module = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
  if (!module) return Fail("load");

  Getter define = (Getter)dlsym(module, "GetModuleDefinition");
  if (!define) return Fail("find");
  if (strncmp(define(), " TYPE Tessarin : ", 17) != 0) {
    fprintf(stderr, "unexpected definition: %s\n", define());
    return 1;
  }
  return dlclose(module) == 0 ? 0 : Fail("close");
}
