#pragma once

#include <atomic>

#include "host/AutoRefPtr.h"
#include "host/IHost.h"

namespace Tovrin {

// The process's services object, or null. Written once, early, by whoever hands the host over; the
// slot then owns one reference, which static tear-down drops. Readers go through GetHost.
extern std::atomic<IHost*> HostSlot;

// The host with a reference for the time of one use; empty when there is none.
AutoRefPtr<IHost> GetHost();

}  // namespace Tovrin
