#pragma once

#include <cstdint>

// Bytes of physical memory in this machine, 0 when the system does not say.
std::uint64_t PhysicalMemorySize();
