// Throws instead of giving its definition text.
#define MODULE_DEFINITION Throw<const char*>("no text")
#include "tests/tools/modules/ModuleFrame.h"
