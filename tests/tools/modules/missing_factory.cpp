// Declares a type whose factory it does not export.
#define MODULE_DEFINITION " TYPE Absent : sample_CreateAbsent"
#include "tests/tools/modules/ModuleFrame.h"
