#pragma once

#include <cstdint>

#include "host/AutoRefPtr.h"
#include "host/Forward.h"
#include "host/IEvent.h"
#include "host/IFDEvent.h"
#include "host/IGenericEvent.h"
#include "host/IObject.h"

namespace Tovrin {

// Waits for events and calls back when they fire. Times are in milliseconds.
class TOVRIN_API IEventScheduler : public IObject {
public:
  AutoRefPtr<IGenericEvent> CreateGenericEvent(EventCallback callback, void* data,
                                               std::uint64_t timeout, bool flag) {
    return AutoRefPtr<IGenericEvent>(Interface_CreateGenericEvent(callback, data, timeout, flag));
  }
  AutoRefPtr<IEvent> CreateTimerEvent(EventCallback callback, void* data, std::uint64_t interval,
                                      bool flag) {
    return AutoRefPtr<IEvent>(Interface_CreateTimerEvent(callback, data, interval, flag));
  }
  AutoRefPtr<IFDEvent> CreateFDEvent(EventCallback callback, void* data, std::int32_t fd,
                                     std::uint64_t timeout, NotifyFlags flags) {
    return AutoRefPtr<IFDEvent>(Interface_CreateFDEvent(callback, data, fd, timeout, flags));
  }
  void RemoveEvent(const AutoRefPtr<IEvent>& event) { Interface_RemoveEvent(event.get()); }
  bool MakeSocketNonBlocking(std::int32_t fd) { return Interface_MakeSocketNonBlocking(fd); }

protected:
  ~IEventScheduler() = default;

private:  // Contract: the host calls these by position
  virtual IGenericEvent* Interface_CreateGenericEvent(EventCallback callback, void* data,
                                                      std::uint64_t timeout, bool flag) = 0;
  virtual IEvent* Interface_CreateTimerEvent(EventCallback callback, void* data,
                                             std::uint64_t interval, bool flag) = 0;
  virtual IFDEvent* Interface_CreateFDEvent(EventCallback callback, void* data, std::int32_t fd,
                                            std::uint64_t timeout, NotifyFlags flags) = 0;
  virtual void Interface_RemoveEvent(IEvent* event) = 0;
  virtual bool Interface_MakeSocketNonBlocking(std::int32_t fd) = 0;
};

}  // namespace Tovrin
