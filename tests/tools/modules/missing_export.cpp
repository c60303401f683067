// Declares a function that it does not export.
#define MODULE_DEFINITION " CONST_FUNCTION NUMBER Absent (NUMBER) : sample_Absent"
#include "tests/tools/modules/ModuleFrame.h"
