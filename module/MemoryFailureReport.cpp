// What the allocator says when memory is exhausted goes to the host. The allocator knows nobody
// above it, so the module sets the way.

#include "host/HostSlot.h"
#include "memory/Allocator.h"

namespace {

// The process ends behind this, so a host that throws must not get its exception past it.
bool ReportToHost(const char* text) {
  bool isReported = false;
  try {
    // By hand: no destructor may come upon a host that throws from Release, too.
    Tovrin::IHost* const host = Tovrin::GetHost().release();
    if (!host) return false;
    host->ReportFatalError(text);
    isReported = true;
    host->Release();
  } catch (...) {
    // Where the host did not take the text, the allocator prints it.
  }
  return isReported;
}

struct ReporterSetter {
  ReporterSetter() { SetMemoryFailureReporter(&ReportToHost); }
};
const ReporterSetter gReporterSetter;

}  // namespace
