// Throws from its registration.
#define MODULE_DEFINITION " CONST_FUNCTION NUMBER Zero () : sample_Zero"
#define MODULE_REGISTRATION Throw<int>("not today")
#include "tests/tools/modules/ModuleFrame.h"

MODULE_FUNCTION(sample_Zero) {
  return 0;
}
