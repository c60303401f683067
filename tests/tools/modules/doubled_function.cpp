// Declares one function twice.
#define MODULE_DEFINITION \
  " CONST_FUNCTION NUMBER Zero () : sample_Zero CONST_FUNCTION STRING Zero () : sample_Zero"
#include "tests/tools/modules/ModuleFrame.h"

MODULE_FUNCTION(sample_Zero) {
  return 0;
}
