#pragma once

#include <cstdint>

// How far the local time of the process is ahead of UTC at that time since 1970; in seconds,
// daylight saving included. 0 when the system does not know.
std::int64_t SecondsEastOfUtc(std::int64_t seconds);
