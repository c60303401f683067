// Its definition text ends in the middle of an entry.
#define MODULE_DEFINITION " CONST_FUNCTION NUMBER Zero () : sample_Zero CONST_FUNCTION NUMBER Ze"
#include "tests/tools/modules/ModuleFrame.h"

MODULE_FUNCTION(sample_Zero) {
  return 0;
}
