#pragma once

#include "host/IEvent.h"

namespace Tovrin {

// An event that its owner fires by hand.
class TOVRIN_API IGenericEvent : public IEvent {
public:
  void Signal() { Interface_Signal(); }

protected:
  ~IGenericEvent() = default;

private:  // Contract: the host calls this by position, behind those of IEvent
  virtual void Interface_Signal() = 0;
};

}  // namespace Tovrin
