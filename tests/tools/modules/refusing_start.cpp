// Says at its start that it cannot be used.
#define MODULE_DEFINITION " CONST_FUNCTION NUMBER Zero () : sample_Zero"
#define MODULE_REGISTER 3
#include "tests/tools/modules/ModuleFrame.h"

MODULE_FUNCTION(sample_Zero) {
  return 0;
}
