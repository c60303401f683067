#include "tools/tovrin/COwnLog.h"

#include "host/HostSlot.h"
#include "tools/tovrin/objects/CHostServices.h"

namespace RefHost {

COwnLog::COwnLog(const LogSettings& settings) {
  Tovrin::HostSlot.store(new CHostServices(settings), std::memory_order_release);
}

COwnLog::~COwnLog() {
  if (auto* const host = Tovrin::HostSlot.exchange(nullptr, std::memory_order_acq_rel)) {
    host->Release();
  }
}

}  // namespace RefHost
