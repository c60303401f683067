// Sound as far as the loader sees; then every function throws, and so does its stop.
#define MODULE_DEFINITION                                \
  " CONST_FUNCTION NUMBER Standard () : sample_Standard" \
  " CONST_FUNCTION BOOLEAN Odd (STRING) : sample_Odd"    \
  " PROCEDURE Step () : sample_Step"
#define MODULE_SHUTDOWN Throw<int>("will not stop")
#include "tests/tools/modules/ModuleFrame.h"

MODULE_FUNCTION(sample_Standard) {
  return Throw<Tovrin::FunctionStatus>("broken inside");
}
MODULE_FUNCTION(sample_Odd) {
  throw 42;
}
MODULE_FUNCTION(sample_Step) {
  return Throw<Tovrin::FunctionStatus>("slipped");
}
