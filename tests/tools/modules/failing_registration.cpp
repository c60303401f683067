// Cannot finish its registration.
#define MODULE_DEFINITION " CONST_FUNCTION NUMBER Zero () : sample_Zero"
#define MODULE_REGISTRATION 1
#include "tests/tools/modules/ModuleFrame.h"

MODULE_FUNCTION(sample_Zero) {
  return 0;
}
