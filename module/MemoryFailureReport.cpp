// What the allocator says when memory is exhausted goes to the host. The allocator knows nobody
// above it, so the module sets the way.

#include "host/HostSlot.h"
#include "memory/Allocator.h"

namespace {

bool ReportToHost(const char* text) {
  const auto host = Tovrin::GetHost();
  if (!host) return false;

  host->ReportFatalError(text);
  return true;
}

struct ReporterSetter {
  ReporterSetter() { SetMemoryFailureReporter(&ReportToHost); }
};
const ReporterSetter gReporterSetter;

}  // namespace
