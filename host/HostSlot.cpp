#include "host/HostSlot.h"

#include "host/Api.h"

namespace Tovrin {

constinit std::atomic<IHost*> HostSlot{nullptr};

namespace {

// Drops the slot's reference behind everything that may still report to the host.
struct HostSlotOwner {
  ~HostSlotOwner() {
    if (IHost* host = HostSlot.exchange(nullptr, std::memory_order_acq_rel)) host->Release();
  }
};
TOVRIN_INIT_PRIORITY(150) HostSlotOwner gHostSlotOwner;

}  // namespace

AutoRefPtr<IHost> GetHost() {
  return Share(HostSlot.load(std::memory_order_acquire));
}

}  // namespace Tovrin
