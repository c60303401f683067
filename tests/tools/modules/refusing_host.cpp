// Does not take the host that it is given.
#define MODULE_DEFINITION " FUNCTION BOOLEAN Sample.SetIHost (DATAREF) : sample_SetIHost"
#include "tests/tools/modules/ModuleFrame.h"

MODULE_FUNCTION(sample_SetIHost) {
  result->AssignBoolean(false);
  return 0;
}
