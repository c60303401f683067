#pragma once

#include <cstdint>

#include "host/IEvent.h"

namespace Tovrin {

// An event of a file descriptor that became ready.
class TOVRIN_API IFDEvent : public IEvent {
public:
  std::int32_t GetFD() const { return Interface_GetFD(); }
  NotifyFlags GetNotificationFlags() const { return Interface_GetNotificationFlags(); }

protected:
  ~IFDEvent() = default;

private:  // Contract: the host calls these by position, behind those of IEvent
  virtual std::int32_t Interface_GetFD() const = 0;
  virtual NotifyFlags Interface_GetNotificationFlags() const = 0;
};

}  // namespace Tovrin
