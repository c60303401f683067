// The function by which the host hands over its process-wide services.

#include <atomic>

#include "host/HostSlot.h"
#include "host/IDataRef.h"
#include "host/IHost.h"
#include "module/Exports.h"
#include "module/types/ArgumentCursor.h"
#include "module/types/ResultWriters.h"

using namespace Tovrin;

namespace {

// The reference holds the bytes of an object pointer. False only when it has as many and does not
// give them; what has another size is no pointer, and stands for no host.
bool ReadHost(const IDataRef& data, IHost*& host) {
  if (data.GetSize() != sizeof host) return true;
  if (data.Read(&host, sizeof host, 0) == sizeof host) return true;

  host = nullptr;
  return false;
}

// The first host wins for the life of the process, also against one that comes at the same time.
void Install(AutoRefPtr<IHost> host) {
  IHost* none = nullptr;
  if (HostSlot.compare_exchange_strong(none, host.get(), std::memory_order_acq_rel)) host.release();
}

bool SetHost(const AutoRefPtr<IDataRef>& data) {
  if (HostSlot.load(std::memory_order_acquire)) return true;

  IHost* host = nullptr;
  if (data && !ReadHost(*data.get(), host)) return false;

  // Contract: true without a host too. The slot is empty still, and a later call may fill it.
  if (host) Install(Share(host));
  return true;
}

}  // namespace

qxModuleFunction(tovrin_module_TessarinSetIHost) {  // BOOLEAN Tessarin.SetIHost (DATAREF)
  ArgumentCursor cursor(argumentCount, arguments, moduleInfo, context);
  const auto data = cursor.ReadData();
  if (cursor.Failed()) return cursor.Fail(result, false);

  WriteBoolean(result, SetHost(data));
  return kSuccess;
}
