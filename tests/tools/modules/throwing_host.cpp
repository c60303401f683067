// Throws when it is given the host.
#define MODULE_DEFINITION " FUNCTION BOOLEAN Sample.SetIHost (DATAREF) : sample_SetIHost"
#include "tests/tools/modules/ModuleFrame.h"

MODULE_FUNCTION(sample_SetIHost) {
  return Throw<Tovrin::FunctionStatus>("no host");
}
