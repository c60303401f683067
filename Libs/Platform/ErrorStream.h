#pragma once

#include <ostream>

// Standard error, usable at any time: before the initialisers of the standard library's streams
// have run as well as behind their destructors. std::cerr by itself crashes an early initialiser.
//
// It is std::cerr, so a replaced stream buffer and a redirected descriptor both take effect.
std::ostream& ErrorStream();
