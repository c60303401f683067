#include "Libs/Platform/ErrorStream.h"

#include <iostream>

std::ostream& ErrorStream() {
  static std::ios_base::Init streams;
  return std::cerr;
}
