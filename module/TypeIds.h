#pragma once

#include <atomic>
#include <cstdint>

// The host's ids of the module's two types, 0 until RegistrationDoneWithReturn has fetched them.
// Objects that the module makes by itself are stamped with these; what the host makes through a
// factory gets the id that the host passes.
//
// Written by the host's start-up, read by any thread afterwards. Relaxed: an id publishes nothing
// else.
extern std::atomic<std::uint32_t> TessarinTypeId;
extern std::atomic<std::uint32_t> TessarinListTypeId;
