#pragma once

#include <string>

// The definition text: what the module is to the host. One line that declares the types, functions
// and procedures with their signatures and exports; the module keeps no other table of them.
//
// Put together from the table in Definition.cpp by a static initialiser of priority 200, so it is
// whole before any export can be called. As built, most entries carry an empty last argument slot
// ("(Tessarin.List,NUMBER,) :"); CleanDefinition takes these out.
extern std::string ModuleDefinition;

// Takes empty argument slots out of the text, in place. Text that has none is left alone, and its
// address stays. No lock: the first call on a text must not race with another.
void CleanDefinition(std::string& definition);
