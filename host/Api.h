#pragma once

// What the compilers spell differently at the border to the host.

// A class whose members are exported from the module.
#if defined(_WIN32)
#define TOVRIN_API __declspec(dllexport)
#else
#define TOVRIN_API __attribute__((visibility("default")))
#endif

// The place of a namespace-scope object in the order of initialisation: lower comes earlier, and is
// torn down later; without a number comes last. Where the compiler has no such order it is ignored.
#if defined(__has_cpp_attribute) && __has_cpp_attribute(gnu::init_priority)
#define TOVRIN_INIT_PRIORITY(number) [[gnu::init_priority(number)]]
#else
#define TOVRIN_INIT_PRIORITY(number)
#endif
