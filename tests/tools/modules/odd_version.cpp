// Its version range cannot be read.
#define MODULE_DEFINITION " CONST_FUNCTION NUMBER Zero () : sample_Zero"
#define MODULE_SDK_RANGE "1.18 or later"
#include "tests/tools/modules/ModuleFrame.h"

MODULE_FUNCTION(sample_Zero) {
  return 0;
}
