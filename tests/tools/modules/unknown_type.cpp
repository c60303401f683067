// Uses a type that nobody declares.
#define MODULE_DEFINITION " CONST_FUNCTION NUMBER Count (Basket) : sample_Count"
#include "tests/tools/modules/ModuleFrame.h"

MODULE_FUNCTION(sample_Count) {
  return 0;
}
