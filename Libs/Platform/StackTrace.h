#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

// The symbol that an address belongs to. Where the system knows none, the name is empty and the
// address 0.
struct StackSymbol {
  std::string name;            // demangled, as far as it can be
  std::uintptr_t address = 0;  // where the symbol begins
};

// Return addresses of the calling thread's stack, the innermost first, beginning with the caller's
// own frame; as many as there are or as frames holds. Returns their count.
std::size_t CaptureStack(std::span<std::uintptr_t> frames);

// Looks only at dynamic symbols, so a function with internal linkage has no name.
StackSymbol FindSymbol(std::uintptr_t address);
