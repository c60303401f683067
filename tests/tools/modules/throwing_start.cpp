// Throws when it is started.
#define MODULE_DEFINITION " CONST_FUNCTION NUMBER Zero () : sample_Zero"
#define MODULE_REGISTER Throw<int>("no start")
#include "tests/tools/modules/ModuleFrame.h"

MODULE_FUNCTION(sample_Zero) {
  return 0;
}
